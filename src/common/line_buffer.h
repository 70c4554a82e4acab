// Output of dumps that print per byte or per sample, without a formatter call a piece.
#pragma once

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <span>
#include <string_view>

#include "common/print.h"
#include "common/stream.h"

// Appends to standard output, in turn with print.
class LineBuffer {
 public:
    // Text of ours.
    template <size_t N>
    void literal(const char (&text)[N]) {
        own({text, N - 1});
    }
    void own(std::string_view s) {
        append(s);
        if (listening) tell({.kind = Piece::literal}, s.size());
    }
    // The end of a line, and of a row of a listing.
    void end_line() { end(false); }
    void end_row() { end(true); }

    // Characters and texts of the file.
    void put(char c) {
        *claim(1) = c;
        if (listening) tell({.kind = Piece::text}, 1);
    }
    void text(std::string_view s) {
        append(s);
        if (listening) tell({.kind = Piece::text}, s.size());
    }
    void append(std::string_view s) {
        if (s.size() <= kPiece) {
            std::memcpy(claim(s.size()), s.data(), s.size());
        } else {
            standard_output.write(s);
        }
    }
    void bytes(std::span<const uint8_t> b) {
        for (; b.size() > kPiece; b = b.subspan(kPiece)) std::copy_n(b.data(), kPiece, claim(kPiece));
        std::copy(b.begin(), b.end(), claim(b.size()));
        if (listening) tell({.kind = Piece::text}, b.size());
    }
    // Padding of ours.
    void blanks(size_t n) {
        fill(' ', n);
        if (listening) tell({.kind = Piece::literal}, n);
    }
    void fill(char c, size_t n) {
        for (; n > kPiece; n -= kPiece) std::memset(claim(kPiece), c, kPiece);
        std::memset(claim(n), c, n);
    }

    // Lower-case hexadecimal, at least `width` digits, padded with zeros or as given ("%08x", "%16llx").
    void hex(uint64_t value, unsigned width, char pad = '0') {
        digits(value, 'a', width, pad);
        if (listening) tell({.kind = Piece::hexadecimal, .number = value}, digits_of(value, width, pad));
    }
    // Upper-case hexadecimal without leading zeros ("%X").
    void upper_hex(uint64_t value) {
        digits(value, 'A', 1, '0');
        if (listening) tell({.kind = Piece::hexadecimal, .number = value}, digits_of(value, 1, '0'));
    }
    // Decimal ("%u", "%03u", "%4u").
    void decimal(uint64_t value, unsigned width = 1, char pad = ' ');
    // Signed decimal ("%d", "%4d").
    void signed_decimal(int64_t value, unsigned width = 1);

    // Room for n characters (64 KiB at most) at the end; the caller fills all of them.
    char *claim(size_t n) { return standard_output.claim(n); }

 private:
    static constexpr size_t kPiece = 4096;

    void end(bool is_row) {
        if (listening) {
            stream::end_line(is_row);
        } else {
            *claim(1) = '\n';
        }
    }
    // Tells the last n characters.
    static void tell(Piece piece, size_t n);

    // Eight hexadecimal digits as characters, the first in the highest byte: the nibbles are spread over
    // eight bytes, and those above 9 become letters.
    static uint64_t eight_digits(uint32_t value, char letter_a) {
        uint64_t x = value;
        x = (x << 16 | x) & 0x0000FFFF0000FFFF;
        x = (x << 8 | x) & 0x00FF00FF00FF00FF;
        x = (x << 4 | x) & 0x0F0F0F0F0F0F0F0F;
        const uint64_t letters = (x + 0x0606060606060606) >> 4 & 0x0101010101010101;
        return x + 0x3030303030303030 + letters * static_cast<uint64_t>(letter_a - '0' - 10);
    }

    static size_t digits_of(uint64_t value, unsigned width, char pad) {
        const size_t n = (static_cast<size_t>(std::bit_width(value | 1)) + 3) / 4;
        return pad == '0' ? std::max<size_t>(n, width) : n;
    }
    void digits(uint64_t value, char letter_a, unsigned width, char pad) {
        unsigned n = (static_cast<unsigned>(std::bit_width(value | 1)) + 3) / 4;
        if (n < width) {
            if (pad == '0') {
                n = width;
            } else {
                std::memset(claim(width - n), pad, width - n);
            }
        }
        if (value <= UINT32_MAX && n <= 8) {
            const uint64_t characters = eight_digits(static_cast<uint32_t>(value), letter_a) << 8 * (8 - n);
            char *room = claim(8);
            for (unsigned i = 0; i < 8; i++) room[i] = static_cast<char>(characters >> (56 - 8 * i));
            standard_output.give_back(8 - n);
            return;
        }
        char *room = claim(n);
        for (unsigned i = n; i-- > 0; value >>= 4) {
            const int digit = static_cast<int>(value & 15);
            room[i] = static_cast<char>(digit < 10 ? '0' + digit : letter_a + digit - 10);
        }
    }
};
