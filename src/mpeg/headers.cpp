#include "mpeg/headers.h"

#include "common/print.h"

uint32_t print_bits(mpeg_reader &reader, const BitRow &row) {
    if (!row.bits) return markerbit(reader);
    const uint32_t value = mpegbits(reader, row.bits);
    if (!row.label) return value;
    print_own(row.label);
    if (row.digits) {
        print("%0*x\n", row.digits, value);
    } else {
        print("%d\n", static_cast<int32_t>(value));
    }
    return value;
}

void print_bit_rows(mpeg_reader &reader, std::span<const BitRow> rows) {
    for (const BitRow &row : rows) print_bits(reader, row);
}
