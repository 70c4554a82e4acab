#include "common/line_buffer.h"

void LineBuffer::decimal(uint64_t value, unsigned width, char pad) {
    char reversed[24];
    unsigned n = 0;
    const uint64_t number = value;
    do {
        reversed[n++] = static_cast<char>('0' + value % 10);
        value /= 10;
    } while (value);
    finish(reversed, n, width, pad);
    if (listening) tell({.kind = Piece::integer, .number = number}, pad == '0' ? std::max(n, width) : n);
}

void LineBuffer::signed_decimal(int64_t value, unsigned width) {
    char reversed[24];
    unsigned n = 0;
    const uint64_t magnitude = value < 0 ? ~static_cast<uint64_t>(value) + 1 : static_cast<uint64_t>(value);
    for (uint64_t rest = magnitude; rest || n == 0; rest /= 10)
        reversed[n++] = static_cast<char>('0' + rest % 10);
    if (value < 0) reversed[n++] = '-';
    finish(reversed, n, width, ' ');
    if (listening) tell(integer_piece(value), n);
}

void LineBuffer::tell(Piece piece, size_t n) {
    piece.size = static_cast<uint32_t>(std::min(n, standard_output.held().size()));
    piece.start = static_cast<uint32_t>(standard_output.held().size()) - piece.size;
    stream::add(piece);
}
