#include "common/heard.h"

#include <algorithm>
#include <charconv>
#include <cstdio>
#include <cstring>
#include <string_view>

#include "common/print.h"
#include "common/stream.h"
#include "common/values.h"

#pragma GCC diagnostic ignored "-Wformat-nonliteral"

namespace {

// A conversion of a format, widths and precisions that come as arguments filled in.
struct Conversion {
    char text[48];  // for snprintf, up to its length modifier
    size_t size = 0;
    bool left = false;
    bool zeros = false;
    bool other_flags = false;
    int width = 0;
    int precision = -1;
    int longs = 0;  // 1: long, 2: long long
    bool is_size = false;
    char type = 0;

    void add(char c) {
        if (size + 4 < sizeof text) text[size++] = c;
    }
    void add_number(int n) {
        size += static_cast<size_t>(std::snprintf(text + size, sizeof text - size - 4, "%d", n));
    }
    bool is_plain() const { return !other_flags && precision < 0 && width < 24; }
    // The whole conversion, for a value of a type with a length modifier.
    const char *with(const char *modifier) {
        std::snprintf(text + size, sizeof text - size, "%s%c", modifier, type);
        return text;
    }
};

int read_number(const char *&p, Arguments &arguments) {
    if (*p == '*') {
        p++;
        return va_arg(arguments.list, int);
    }
    int n = 0;
    while (*p >= '0' && *p <= '9') n = n * 10 + (*p++ - '0');
    return n;
}

Conversion read_conversion(const char *&p, Arguments &arguments) {
    Conversion c;
    c.add('%');
    for (; *p && std::strchr("-+ #0", *p); p++) {
        c.left |= *p == '-';
        c.zeros |= *p == '0';
        c.other_flags |= *p != '0';
        c.add(*p);
    }
    c.width = read_number(p, arguments);
    if (c.width < 0) {
        c.left = true;
        c.width = -c.width;
        c.add('-');
    }
    if (c.width > 0) c.add_number(c.width);
    if (*p == '.') {
        p++;
        c.precision = read_number(p, arguments);
        if (c.precision >= 0) {
            c.add('.');
            c.add_number(c.precision);
        }
    }
    for (; *p == 'l' || *p == 'h' || *p == 'z' || *p == 'j'; p++) {
        c.longs += *p == 'l' ? 1 : *p == 'j' ? 2 : 0;
        c.is_size |= *p == 'z';
    }
    c.type = *p++;
    return c;
}

uint32_t length() { return static_cast<uint32_t>(standard_output.held().size()); }

// Text of ours: its line ends are line ends.
void put_literal(std::string_view text) {
    while (!text.empty()) {
        const size_t end = text.find('\n');
        const std::string_view piece = text.substr(0, end);
        standard_output.write(piece);
        stream::add({.start = length() - static_cast<uint32_t>(piece.size()),
                     .size = static_cast<uint32_t>(piece.size())});
        if (end == std::string_view::npos) return;
        stream::end_line(false);
        text.remove_prefix(end + 1);
    }
}

// A value as it was rendered: the blanks around a number are padding of ours.
void put_value(std::string_view text, Piece piece) {
    if (piece.kind != Piece::text && piece.kind != Piece::character) {
        const size_t first = std::min(text.find_first_not_of(' '), text.size());
        put_literal(text.substr(0, first));
        text.remove_prefix(first);
    }
    const size_t last = piece.kind == Piece::text || piece.kind == Piece::character
                            ? text.size()
                            : text.find_last_not_of(' ') + 1;
    standard_output.write(text.substr(0, last));
    piece.size = static_cast<uint32_t>(std::min<size_t>(last, length()));
    piece.start = length() - piece.size;
    stream::add(piece);
    put_literal(text.substr(last));
}

void put_blanks(size_t n) {
    constexpr std::string_view kBlanks = "                                ";
    for (; n > kBlanks.size(); n -= kBlanks.size()) put_literal(kBlanks);
    put_literal(kBlanks.substr(0, n));
}

void put_text(const Conversion &c, const char *text) {
    const size_t size =
        c.precision >= 0 ? strnlen(text, static_cast<size_t>(c.precision)) : std::strlen(text);
    const size_t padding = static_cast<size_t>(c.width) > size ? static_cast<size_t>(c.width) - size : 0;
    const std::string_view whole(text, size);
    if (!c.left) put_blanks(padding);
    if (stream::is_own(text)) {
        put_literal(whole);
    } else if (size > 0 || padding == 0 || c.precision >= 0) {
        put_value(whole, ring_value(text));
    }
    if (c.left) put_blanks(padding);
}

// Digits behind blanks or zeros, as the plain conversions that most are need no more.
void put_digits(const Conversion &c, const char *digits, size_t n, Piece piece) {
    char text[64];
    const size_t width = static_cast<size_t>(c.width);
    const size_t padding = width > n ? width - n : 0;
    std::memset(text, c.zeros ? '0' : ' ', padding);
    std::memcpy(text + padding, digits, n);
    put_value({text, padding + n}, piece);
}

void put_integer(Conversion &c, Arguments &arguments) {
    const int64_t value =
        c.is_size ? static_cast<int64_t>(va_arg(arguments.list, size_t)) : arguments.take_signed(c.longs);
    char text[128];
    if (c.is_plain() && (value >= 0 || !c.zeros)) {
        put_digits(c, text, static_cast<size_t>(std::to_chars(text, text + 24, value).ptr - text),
                   integer_piece(value));
        return;
    }
    const int n = std::snprintf(text, sizeof text, c.with("ll"), static_cast<long long>(value));
    put_value({text, static_cast<size_t>(n)}, integer_piece(value));
}

void put_unsigned(Conversion &c, Arguments &arguments) {
    const uint64_t value = c.is_size ? va_arg(arguments.list, size_t) : arguments.take_unsigned(c.longs);
    char text[128];
    const Piece piece{.kind = c.type == 'u' ? Piece::integer : Piece::hexadecimal, .number = value};
    if (c.is_plain() && (c.type == 'u' || c.type == 'x')) {
        const char *end = std::to_chars(text, text + 24, value, c.type == 'u' ? 10 : 16).ptr;
        put_digits(c, text, static_cast<size_t>(end - text), piece);
        return;
    }
    const int n = std::snprintf(text, sizeof text, c.with("ll"), static_cast<unsigned long long>(value));
    put_value({text, static_cast<size_t>(n)}, piece);
}

void put_real(Conversion &c, Arguments &arguments) {
    const double value = va_arg(arguments.list, double);
    char text[512];
    const int n = std::snprintf(text, sizeof text, c.with(""), value);
    put_value({text, static_cast<size_t>(n)}, {.kind = Piece::real, .value = value});
}

void put_character(int c) {
    const char text = static_cast<char>(c);
    put_value({&text, 1}, {.kind = Piece::character});
}

void put_conversion(Conversion &c, Arguments &arguments) {
    switch (c.type) {
        case 'd':
        case 'i': put_integer(c, arguments); break;
        case 'u':
        case 'x':
        case 'X':
        case 'o': put_unsigned(c, arguments); break;
        case 'c': put_character(va_arg(arguments.list, int)); break;
        case 's': put_text(c, va_arg(arguments.list, const char *)); break;
        case '%': put_literal("%"); break;
        default: put_real(c, arguments); break;
    }
}

}  // namespace

void print_own_heard(std::string_view text) { put_literal(text); }

void print_heard(const char *format, std::va_list list) {
    Arguments arguments;
    va_copy(arguments.list, list);
    for (const char *p = format; *p;) {
        const size_t run = std::strcspn(p, "%");
        put_literal({p, run});
        p += run;
        if (*p != '%') continue;
        p++;
        Conversion conversion = read_conversion(p, arguments);
        put_conversion(conversion, arguments);
    }
    va_end(arguments.list);
    stream::forget_own();
}
