#include "common/line_buffer.h"

#include <charconv>

namespace {

constexpr size_t kMostDigits = 20;  // of a number of 64 bits, with its sign

// Writes a number's digits; their count. Most numbers are short, which is quicker.
template <typename Short, typename Number>
size_t write_number(char *room, Number value) {
    const Short less = static_cast<Short>(value);
    char *end = room + kMostDigits;
    const auto done = less == value ? std::to_chars(room, end, less) : std::to_chars(room, end, value);
    return static_cast<size_t>(done.ptr - room);
}

// Appends a number's digits behind padding; their count with zeros that count as digits.
template <typename Short, typename Number>
size_t put_number(Number value, size_t width, char pad) {
    char *room = standard_output.claim(kMostDigits);
    const size_t n = write_number<Short>(room, value);
    standard_output.give_back(kMostDigits - n);
    if (n >= width) return n;
    standard_output.give_back(n);
    char digits[kMostDigits];
    std::memcpy(digits, room, n);
    room = standard_output.claim(width);
    std::memset(room, pad, width - n);
    std::memcpy(room + width - n, digits, n);
    return pad == '0' ? width : n;
}

}  // namespace

void LineBuffer::decimal(uint64_t value, unsigned width, char pad) {
    const size_t n = put_number<uint32_t>(value, width, pad);
    if (listening) tell({.kind = Piece::integer, .number = value}, n);
}

void LineBuffer::signed_decimal(int64_t value, unsigned width) {
    const size_t n = put_number<int32_t>(value, width, ' ');
    if (listening) tell(integer_piece(value), n);
}

void LineBuffer::tell(Piece piece, size_t n) {
    piece.size = static_cast<uint32_t>(std::min(n, standard_output.held().size()));
    piece.start = static_cast<uint32_t>(standard_output.held().size()) - piece.size;
    stream::add(piece);
}
