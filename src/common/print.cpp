#include "common/print.h"

#include <poll.h>
#include <unistd.h>

#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <string>

#include "common/end_of_run.h"
#include "common/heard.h"
#include "common/stream.h"

constinit Output standard_output;

void print(const char *format, ...) {
    va_list arguments;
    va_start(arguments, format);
    if (listening) {
        print_heard(format, arguments);
        va_end(arguments);
        return;
    }
    va_list again;
    va_copy(again, arguments);
    const std::span<char> room = standard_output.room();
    const int length = std::vsnprintf(room.data(), room.size(), format, arguments);
    const size_t needed = length < 0 ? 0 : static_cast<size_t>(length);
    if (needed < room.size()) {
        standard_output.use(needed);
    } else {
        std::string text(needed, '\0');
        std::vsnprintf(text.data(), needed + 1, format, again);
        standard_output.write(text);
    }
    va_end(again);
    va_end(arguments);
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
