#include "common/field_rows.h"

#include <cstdio>

#include "common/values.h"

namespace {

void print_number(const char *label, uint32_t value) {
    std::printf("%s%d\n", label, static_cast<int32_t>(value));
}
void print_text(const char *label, const char *text) { std::printf("%s%s\n", label, text); }

uint64_t uint64_at(Bytes field, int big_endian) { return big_endian ? big64(field) : little64(field); }

void print_field_row(Bytes field, int big_endian, const FieldRow &row) {
    const uint32_t word = tiffuint32(field, big_endian);
    switch (row.kind) {
        case Field::u8: print_number(row.label, field[0]); break;
        case Field::hex8: std::printf("%s%02x\n", row.label, field[0]); break;
        case Field::u16: print_number(row.label, tiffuint16(field, big_endian)); break;
        case Field::hex16: std::printf("%s%04x\n", row.label, tiffuint16(field, big_endian)); break;
        case Field::u32: print_number(row.label, word); break;
        case Field::hex32: std::printf("%s%08x\n", row.label, word); break;
        case Field::s64:
            std::printf("%s%lld\n", row.label, static_cast<long long>(uint64_at(field, big_endian)));
            break;
        case Field::hex64:
            std::printf("%s%016llx\n", row.label,
                        static_cast<unsigned long long>(uint64_at(field, big_endian)));
            break;
        case Field::set8: print_text(row.label, checkuint8(field[0])); break;
        case Field::dec: print_text(row.label, checkuint32(word, 0)); break;
        case Field::hex: print_text(row.label, checkuint32(word, 1)); break;
        case Field::real: print_text(row.label, checkreal(float_of_bits(word))); break;
        case Field::cineon_real: print_text(row.label, cineonreal(float_of_bits(word))); break;
        case Field::ascii: print_text(row.label, checkascii(field, row.width)); break;
    }
}

}  // namespace

void print_field_rows(Bytes header, int big_endian, std::span<const FieldRow> rows) {
    for (const FieldRow &row : rows) print_field_row(header.from(row.offset), big_endian, row);
}
