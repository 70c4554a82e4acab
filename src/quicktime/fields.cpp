#include "quicktime/fields.h"

#include "common/print.h"

namespace {

uint32_t unsigned_value(Bytes data, uint64_t offset, QtField kind) {
    if (kind == QtField::u8) return data[offset];
    return kind == QtField::u16 ? big16(data, offset) : big32(data, offset);
}

unsigned width_of(QtField kind) { return kind == QtField::u8 ? 1 : kind == QtField::u16 ? 2 : 4; }

void print_array(Bytes data, int indent, const QtRow &row) {
    for (unsigned i = 0; i < row.count; i++) {
        const uint32_t value = unsigned_value(data, row.offset + i * width_of(row.kind), row.kind);
        print("%*s%s[%d]=%u (0x%X)\n", indent, "", row.label, static_cast<int>(i), value, value);
    }
}

void print_version_flags(Bytes data, int indent, const QtRow &row) {
    const uint32_t version = data[row.offset];
    print("%*sversion=%u (0x%X)\n", indent, "", version, version);
    for (int i = 0; i < 3; i++) {
        const uint32_t flags = data[row.offset + 1U + static_cast<unsigned>(i)];
        print("%*sflags[%d]=%u (0x%X)\n", indent, "", i, flags, flags);
    }
}

void print_matrix(Bytes data, int indent, const QtRow &row) {
    for (int i = 0; i < 3; i++) {
        const Bytes line = data.from(row.offset + 12U * static_cast<unsigned>(i));
        print("%*smatrix[%d]= 0x%08X 0x%08X 0x%08X\n", indent, "", i, big32(line, 0), big32(line, 4),
              big32(line, 8));
    }
}

void print_fourcc(Bytes data, int indent, const QtRow &row) {
    char characters[4];
    for (unsigned i = 0; i < 4; i++) characters[i] = static_cast<char>(data[row.offset + i]);
    print("%*s%s=%4.4s (0x%05X)\n", indent, "", row.label, characters, qt_type(characters));
}

void print_pstring(Bytes data, int indent, const QtRow &row) {
    const int length = data[row.offset];
    const Text text = text_at(data, row.offset + 1U, static_cast<uint64_t>(length));
    print("%*s%s=%*.*s\n", indent, "", row.label, length, text.length, text.start);
}

void print_hexdump(Bytes data, int indent, const QtRow &row) {
    uint8_t bytes[UINT8_MAX];
    for (unsigned i = 0; i < row.count; i++) bytes[i] = data[row.offset + i];
    qt_hexdump({bytes, row.count}, indent, row.label);
}

void print_number(Bytes data, int indent, const QtRow &row) {
    const uint32_t value = unsigned_value(data, row.offset, row.kind);
    if (row.kind == QtField::d32) {
        print("%*s%s=%d (0x%X)\n", indent, "", row.label, static_cast<int32_t>(value), value);
    } else if (row.kind == QtField::fixed) {
        print("%*s%s=%f (0x%X)\n", indent, "", row.label, static_cast<double>(qt_fixed(value)), value);
    } else {
        print("%*s%s=%u (0x%X)\n", indent, "", row.label, value, value);
    }
}

void print_row(Bytes data, int indent, const QtRow &row) {
    switch (row.kind) {
        case QtField::version_flags: return print_version_flags(data, indent, row);
        case QtField::matrix: return print_matrix(data, indent, row);
        case QtField::fourcc: return print_fourcc(data, indent, row);
        case QtField::pstring: return print_pstring(data, indent, row);
        case QtField::hexdump: return print_hexdump(data, indent, row);
        case QtField::u8:
        case QtField::u16:
        case QtField::u32:
        case QtField::d32:
        case QtField::fixed:
            return row.count ? print_array(data, indent, row) : print_number(data, indent, row);
    }
}

}  // namespace

float qt_fixed(uint32_t value) {
    return static_cast<float>(value >> 16) + static_cast<float>(value & 0xFFFF) / 65536.0F;
}

void print_qt_rows(const QtAtom &atom, std::span<const QtRow> rows) {
    for (const QtRow &row : rows) print_row(atom.data, atom.indent(), row);
}
