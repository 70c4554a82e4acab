#include "red/values.h"

#include <algorithm>
#include <cstdio>

#include "common/hexrow.h"
#include "common/values.h"

namespace {

constexpr HexRow kRow{.first_printable = 0x21};

// The bytes of a value whose length may have come out below 0.
std::span<const uint8_t> value_span(int length, Bytes b, uint64_t offset) {
    return b.span(offset, static_cast<uint64_t>(std::max(length, 0)));
}

}  // namespace

const char *redstring(int most, Bytes b, uint64_t offset) {
    char *text = get_buffer();
    size_t n = 0;
    for (const uint8_t byte : value_span(most, b, offset)) {
        if (byte == 0) break;
        text[n++] = is_printable(byte) ? static_cast<char>(byte) : '?';
    }
    text[n] = '\0';
    return text;
}

const char *redint16(int length, Bytes b, uint64_t offset) {
    uint32_t size;
    char *text = get_buffer(&size);
    std::snprintf(text, size, "%d", length < 2 ? 0 : static_cast<int16_t>(red16(b, offset)));
    return text;
}

const char *redfloat(int length, Bytes b, uint64_t offset) {
    uint32_t size;
    char *text = get_buffer(&size);
    std::snprintf(text, size, "%f", static_cast<double>(length < 4 ? 0 : float_of_bits(red32(b, offset))));
    return text;
}

const char *redhexscan(int length, Bytes b, uint64_t offset) {
    constexpr int kMost = 256;
    constexpr char kDigits[] = "0123456789abcdef";
    char *text = get_buffer();
    char *p = text;
    unsigned n = 0;
    for (const uint8_t byte : value_span(std::min(length, kMost), b, offset)) {
        if (n > 0) *p++ = ' ';
        if (n > 0 && n % 16 == 0) *p++ = ' ';
        *p++ = kDigits[byte >> 4];
        *p++ = kDigits[byte & 15];
        n++;
    }
    *p = '\0';
    return text;
}

void redhexdump(Bytes b, uint32_t base) {
    LineBuffer out;
    put_hexrows(out, b, kRow, [&](LineBuffer &row, uint64_t i) {
        row.hex(base + static_cast<uint32_t>(i), 8);
        row.put(' ');
    });
}
