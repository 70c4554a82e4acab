#include "common/field_rows.h"

#include <cstdio>

#include "common/values.h"

namespace {

void print_number(const char *label, uint32_t value) {
    std::printf("%s%d\n", label, static_cast<int32_t>(value));
}
void print_text(const char *label, const char *text) { std::printf("%s%s\n", label, text); }

void print_field_row(OrderedBytes field, const FieldRow &row) {
    const uint32_t word = field.u32(0);
    switch (row.kind) {
        case Field::dec8: print_number(row.label, field.u8(0)); break;
        case Field::hex8: std::printf("%s%02x\n", row.label, field.u8(0)); break;
        case Field::dec16: print_number(row.label, field.u16(0)); break;
        case Field::hex16: std::printf("%s%04x\n", row.label, field.u16(0)); break;
        case Field::dec32: print_number(row.label, word); break;
        case Field::hex32: std::printf("%s%08x\n", row.label, word); break;
        case Field::dec64: std::printf("%s%lld\n", row.label, static_cast<long long>(field.s64(0))); break;
        case Field::hex64:
            std::printf("%s%016llx\n", row.label, static_cast<unsigned long long>(field.u64(0)));
            break;
        case Field::set_dec8: print_text(row.label, checkuint8(field.u8(0))); break;
        case Field::set_dec32: print_text(row.label, checkuint32(word, 0)); break;
        case Field::set_hex32: print_text(row.label, checkuint32(word, 1)); break;
        case Field::set_real: print_text(row.label, checkreal(float_of_bits(word))); break;
        case Field::set_cineon_real: print_text(row.label, cineonreal(float_of_bits(word))); break;
        case Field::ascii: print_text(row.label, checkascii(field.bytes, row.width)); break;
    }
}

}  // namespace

void print_field_rows(OrderedBytes header, std::span<const FieldRow> rows) {
    for (const FieldRow &row : rows) print_field_row(header.from(row.offset), row);
}
