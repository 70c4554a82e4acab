#include "common/print.h"

#include <poll.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <string>

#include "common/end_of_run.h"
#include "common/heard.h"
#include "common/line_buffer.h"
#include "common/stream.h"

constinit Output standard_output;

namespace {

// The conversions that nearly all lines are made of: numbers with a width, characters and texts without one.
// At any other nothing is printed, and false given.
bool print_plain(const char *&format, Arguments &arguments) {
    LineBuffer out;
    const char *p = format + 1;
    const char pad = *p == '0' ? '0' : ' ';
    unsigned width = 0;
    for (; *p >= '0' && *p <= '9'; p++) width = 10 * width + static_cast<unsigned>(*p - '0');
    int longs = 0;
    for (; *p == 'l'; p++) longs++;
    const unsigned least = std::max(width, 1U);
    if (*p == 'd' && pad == ' ') {
        out.signed_decimal(arguments.take_signed(longs), least);
    } else if (*p == 'u') {
        out.decimal(arguments.take_unsigned(longs), least, pad);
    } else if (*p == 'x') {
        out.hex(arguments.take_unsigned(longs), least, pad);
    } else if (*p == 'c' && width == 0) {
        out.put(static_cast<char>(va_arg(arguments.list, int)));
    } else if (*p == 's' && width == 0) {
        out.append(va_arg(arguments.list, const char *));
    } else {
        return false;
    }
    format = p + 1;
    return true;
}

// The rest of a format from a conversion on, by the standard library.
void print_rest(const char *format, Arguments &arguments) {
    std::va_list again;
    va_copy(again, arguments.list);
    const std::span<char> room = standard_output.room();
    const int length = std::vsnprintf(room.data(), room.size(), format, arguments.list);
    const size_t needed = length < 0 ? 0 : static_cast<size_t>(length);
    if (needed < room.size()) {
        standard_output.use(needed);
    } else {
        std::string text(needed, '\0');
        std::vsnprintf(text.data(), needed + 1, format, again);
        standard_output.write(text);
    }
    va_end(again);
}

}  // namespace

void print(const char *format, ...) {
    Arguments arguments;
    va_start(arguments.list, format);
    if (listening) {
        print_heard(format, arguments.list);
        va_end(arguments.list);
        return;
    }
    while (const char *conversion = std::strchr(format, '%')) {
        standard_output.write({format, conversion});
        format = conversion;
        if (!print_plain(format, arguments)) break;
    }
    if (*format == '%') {
        print_rest(format, arguments);
    } else {
        standard_output.write(format);
    }
    va_end(arguments.list);
}

void print_own(std::string_view text) {
    if (listening) {
        print_own_heard(text);
    } else {
        standard_output.write(text);
    }
}

void print_bytes(std::span<const uint8_t> bytes) {
    standard_output.write({reinterpret_cast<const char *>(bytes.data()), bytes.size()});
}

void Output::write(std::string_view text) {
    if (text.size() > kLargestPiece && !listening) {
        flush();
        write_block(text.data(), text.size());
        return;
    }
    for (; text.size() > kLargestPiece; text.remove_prefix(kLargestPiece))
        std::memcpy(claim(kLargestPiece), text.data(), kLargestPiece);
    if (!text.empty()) std::memcpy(claim(text.size()), text.data(), text.size());
}

void Output::flush() {
    if (listening) {
        stream::end_part();
        return;
    }
    const size_t n = used_;
    used_ = 0;
    if (n > 0) write_block(block_, n);
}

void Output::write_block(const char *data, size_t n) {
    if (taker_) {
        taker_->take({data, n});
        return;
    }
    while (n > 0 && !failed_) {
        const ssize_t count = ::write(STDOUT_FILENO, data, n);
        if (count > 0) {
            data += count;
            n -= static_cast<size_t>(count);
        } else if (count < 0 && (errno == EAGAIN || errno == EWOULDBLOCK)) {
            pollfd ready{STDOUT_FILENO, POLLOUT, 0};
            poll(&ready, 1, -1);
        } else if (count == 0 || errno != EINTR) {
            failed_ = true;
        }
    }
    if (failed_ && !goes_on_) end_run(0);
}
