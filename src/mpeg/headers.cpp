#include "mpeg/headers.h"

#include "common/print.h"

uint32_t print_bits(mpeg_reader &reader, const char *label, int count) {
    const uint32_t value = mpegbits(reader, count);
    print("%s%d\n", label, static_cast<int32_t>(value));
    return value;
}

void print_bit_rows(mpeg_reader &reader, std::span<const BitRow> rows) {
    for (const BitRow &row : rows) {
        if (row.label) {
            print_bits(reader, row.label, row.bits);
        } else if (row.bits) {
            mpegbits(reader, row.bits);
        } else {
            markerbit(reader);
        }
    }
}
