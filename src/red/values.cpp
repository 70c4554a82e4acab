#include "red/values.h"

#include <algorithm>
#include <cstdio>

#include "common/hexrow.h"
#include "common/values.h"

const char *redstring(int most, Bytes b, uint64_t offset) {
    return printable_text(b.from(offset), static_cast<uint64_t>(std::max(most, 0)), '?');
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
    char *text = get_buffer();
    char *p = text;
    unsigned n = 0;
    for (const uint8_t byte : b.span(offset, static_cast<uint64_t>(std::clamp(length, 0, kMost)))) {
        if (n > 0) *p++ = ' ';
        if (n > 0 && n % 16 == 0) *p++ = ' ';
        p = write_hex(p, byte);
        n++;
    }
    *p = '\0';
    return text;
}

void redhexdump(Bytes b, uint32_t base) {
    constexpr HexRow kRow{.first_printable = 0x21};
    LineBuffer out;
    put_hexrows(out, b, kRow, [&](LineBuffer &row, uint64_t i) {
        row.hex(base + static_cast<uint32_t>(i), 8);
        row.put(' ');
    });
}
