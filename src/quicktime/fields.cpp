#include "quicktime/fields.h"

#include <algorithm>

#include "common/print.h"

namespace {

constexpr QtRow kVersionFlags[] = {{0, QtField::u8, "version="}, {1, QtField::u8, "flags[]=", 3}};

unsigned width_of(QtField kind) {
    switch (kind) {
        case QtField::u8: return 1;
        case QtField::u16: return 2;
        case QtField::halves:
        case QtField::real64: return 8;
        case QtField::matrix: return 12;
        default: return 4;
    }
}

// A 16.16 fixed-point number in single precision.
double fixed_point(uint32_t value) {
    return static_cast<double>(static_cast<float>(value >> 16) +
                               static_cast<float>(value & 0xFFFF) / 65536.0F);
}

void put_hex(LineBuffer &out, uint32_t value) {
    out.literal(" (0x");
    out.upper_hex(value);
    out.literal(")");
}

void put_unsigned(LineBuffer &out, uint32_t value) {
    out.decimal(value);
    put_hex(out, value);
}

void put_halves(LineBuffer &out, uint32_t high, uint32_t low) {
    out.decimal(high);
    out.literal("_");
    out.decimal(low);
    out.literal(" (0x");
    out.upper_hex(high);
    out.upper_hex(low);
    out.literal(")");
}

void put_fourcc(Bytes field) {
    char characters[4];
    for (unsigned i = 0; i < 4; i++) characters[i] = static_cast<char>(field[i]);
    print("%4.4s (0x%05X)", characters, qt_type(characters));
}

void put_pstring(Bytes field) {
    const int length = field[0];
    const Text text = text_at(field, 1, static_cast<uint64_t>(length));
    from(field, 0, 1 + static_cast<uint64_t>(std::min(length, text.length + 1)));
    print("%*.*s", length, text.length, text.start);
}

void put_value(LineBuffer &out, Bytes data, uint64_t at, QtField kind) {
    const uint32_t word = big32(data, at);
    switch (kind) {
        case QtField::u8: put_unsigned(out, data[at]); break;
        case QtField::u16: put_unsigned(out, big16(data, at)); break;
        case QtField::u32: put_unsigned(out, word); break;
        case QtField::d32:
            out.signed_decimal(static_cast<int32_t>(word));
            put_hex(out, word);
            break;
        case QtField::halves: put_halves(out, word, big32(data, at + 4)); break;
        case QtField::fixed:
            print("%f", fixed_point(word));
            put_hex(out, word);
            break;
        case QtField::real32: print("%f", static_cast<double>(swap32_float(data, at))); break;
        case QtField::real64: print("%f", swap64_double(data, at)); break;
        case QtField::fourcc: put_fourcc(data.from(at)); break;
        case QtField::pstring: put_pstring(data.from(at)); break;
        case QtField::matrix:
            print(" 0x%08X 0x%08X 0x%08X", word, big32(data, at + 4), big32(data, at + 8));
            break;
        case QtField::version_flags:
        case QtField::hexdump: break;
    }
}

void put_label(LineBuffer &out, int indent, const QtLabel &label, uint64_t index) {
    out.blanks(static_cast<size_t>(indent));
    label_begins();
    out.own(label.before);
    if (label.is_indexed()) {
        out.signed_decimal(static_cast<int32_t>(index));
        out.own(label.after);
    }
    label_ends();
}

void print_hexdump(Bytes data, int indent, const QtRow &row) {
    const Bytes field = data.sub(row.offset, row.count);
    if (field.size() == row.count) return qt_hexdump(field, indent, row.label.before);
    uint8_t bytes[UINT8_MAX];
    for (unsigned i = 0; i < row.count; i++) bytes[i] = field[i];
    qt_hexdump({bytes, row.count}, indent, row.label.before);
}

void put_row(LineBuffer &out, Bytes data, int indent, const QtRow &row, uint64_t index, bool is_listing) {
    if (row.kind == QtField::hexdump) return print_hexdump(data, indent, row);
    if (row.kind == QtField::version_flags) {
        return put_qt_rows(out, data.from(row.offset), indent, kVersionFlags);
    }
    uint64_t at = row.offset;
    for (unsigned i = 0; i < row.count; i++, at += width_of(row.kind)) {
        from(data, at, width_of(row.kind));
        put_label(out, indent, row.label, index + i);
        put_value(out, data, at, row.kind);
        if (is_listing) {
            behind_position(static_cast<uint32_t>(indent));
            out.end_row();
        } else {
            out.end_line();
        }
    }
}

}  // namespace

void put_qt_rows(LineBuffer &out, Bytes data, int indent, std::span<const QtRow> rows, uint64_t index,
                 bool is_listing) {
    for (const QtRow &row : rows) put_row(out, data, indent, row, index, is_listing);
}

void print_qt_rows(const QtAtom &atom, std::span<const QtRow> rows) {
    LineBuffer out;
    put_qt_rows(out, atom.data, atom.indent(), rows);
}
