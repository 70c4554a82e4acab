// What print does while somebody listens.
#pragma once

#include <cstdarg>
#include <cstdint>
#include <string_view>

// The arguments of a print call, in a record so that functions can take from them. A number's length modifier
// has so many letters l.
struct Arguments {
    std::va_list list;

    int64_t take_signed(int longs) {
        return longs == 0 ? va_arg(list, int) : longs == 1 ? va_arg(list, long) : va_arg(list, long long);
    }
    uint64_t take_unsigned(int longs) {
        return longs == 0   ? va_arg(list, unsigned)
               : longs == 1 ? va_arg(list, unsigned long)
                            : va_arg(list, unsigned long long);
    }
};

void print_own_heard(std::string_view text);

// Prints as vprintf does, and tells the stream each piece.
void print_heard(const char *format, std::va_list arguments);
