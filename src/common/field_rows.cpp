#include "common/field_rows.h"

#include "common/print.h"
#include "common/values.h"

namespace {

// What stands before and behind a value in its line.
struct Frame {
    const char *before;
    const char *after;
};

void print_number(const Frame &frame, uint32_t value) {
    print("%s%d%s", frame.before, static_cast<int32_t>(value), frame.after);
}
void print_string(const Frame &frame, const char *text) { print("%s%s%s", frame.before, text, frame.after); }

uint64_t size_of(Field kind) {
    switch (kind) {
        case Field::dec8:
        case Field::hex8:
        case Field::set_dec8: return 1;
        case Field::dec16:
        case Field::hex16:
        case Field::set_dec16: return 2;
        case Field::dec64:
        case Field::hex64: return 8;
        default: return 4;
    }
}

void print_value(OrderedBytes field, Field kind, const Frame &frame) {
    const uint32_t word = field.u32(0);
    switch (kind) {
        case Field::dec8: print_number(frame, field.u8(0)); break;
        case Field::hex8: print("%s%02x%s", frame.before, field.u8(0), frame.after); break;
        case Field::dec16: print_number(frame, field.u16(0)); break;
        case Field::hex16: print("%s%04x%s", frame.before, field.u16(0), frame.after); break;
        case Field::dec32: print_number(frame, word); break;
        case Field::hex32: print("%s%08x%s", frame.before, word, frame.after); break;
        case Field::upper_hex32: print("%s0x%08X%s", frame.before, word, frame.after); break;
        case Field::dec64:
            print("%s%lld%s", frame.before, static_cast<long long>(field.s64(0)), frame.after);
            break;
        case Field::hex64:
            print("%s%016llx%s", frame.before, static_cast<unsigned long long>(field.u64(0)), frame.after);
            break;
        case Field::real:
            print("%s%f%s", frame.before, static_cast<double>(float_of_bits(word)), frame.after);
            break;
        case Field::set_dec8: print_string(frame, checkuint8(field.u8(0))); break;
        case Field::set_dec16: print_string(frame, checkuint16(field.u16(0))); break;
        case Field::set_dec32: print_string(frame, checkuint32(word, 0)); break;
        case Field::set_hex32: print_string(frame, checkuint32(word, 1)); break;
        case Field::set_real: print_string(frame, checkreal(float_of_bits(word))); break;
        case Field::set_cineon_real: print_string(frame, cineonreal(float_of_bits(word))); break;
        case Field::text:
        case Field::quoted_text:
        case Field::ascii: break;
    }
}

const char *between(const FieldRow &row, unsigned i) {
    const bool group_ends = row.between.group && i % row.between.group == 0;
    return group_ends ? row.between.groups : row.between.values;
}

void print_values(OrderedBytes field, const FieldRow &row) {
    for (unsigned i = 0; i < row.count; i++) {
        const Frame frame{i == 0 ? row.label : between(row, i), i + 1 < row.count ? "" : "\n"};
        print_value(field.from(i * size_of(row.kind)), row.kind, frame);
    }
}

void print_field_row(OrderedBytes field, const FieldRow &row) {
    if (row.kind == Field::ascii) {
        print("%s%s\n", row.label, checkascii(field.bytes, row.count));
    } else if (row.kind == Field::text || row.kind == Field::quoted_text) {
        const Text text = text_at(field.bytes, 0, row.count);
        const char *quote = row.kind == Field::text ? "" : "'";
        print("%s%s%.*s%s\n", row.label, quote, text.length, text.start, quote);
    } else {
        print_values(field, row);
    }
}

}  // namespace

void print_field_rows(OrderedBytes header, std::span<const FieldRow> rows) {
    for (const FieldRow &row : rows) print_field_row(header.from(row.offset), row);
}
