#include "common/field_rows.h"

#include <algorithm>

#include "common/print.h"
#include "common/stream.h"
#include "common/values.h"

namespace {

unsigned size_of(Field kind) {
    switch (kind) {
        case Field::dec8:
        case Field::hex8:
        case Field::hex8_slash:
        case Field::name8:
        case Field::set_dec8: return 1;
        case Field::dec16:
        case Field::hex16:
        case Field::name16:
        case Field::set_dec16: return 2;
        case Field::dec64:
        case Field::hex64:
        case Field::blank_hex64: return 8;
        default: return 4;
    }
}

void put_lines(uint32_t word) {
    const uint32_t second = word >> 16 & 0xFF;
    print("%d", word & 0xFF);
    if (second) print("/%d", second);
}

void put_value(OrderedBytes field, Field kind) {
    const unsigned long long number = field.number(0, size_of(kind));
    const uint32_t word = static_cast<uint32_t>(number);
    const int32_t signed_word = static_cast<int32_t>(word);
    const double real = static_cast<double>(float_of_bits(word));
    switch (kind) {
        case Field::dec8:
        case Field::dec16:
        case Field::dec32: print("%d", signed_word); break;
        case Field::dec64: print("%lld", static_cast<long long>(number)); break;
        case Field::hex8: print("%02x", word); break;
        case Field::hex16: print("%04x", word); break;
        case Field::hex32: print("%08x", word); break;
        case Field::hex64: print("%016llx", number); break;
        case Field::blank_hex64: print("%16llx", number); break;
        case Field::upper_hex32: print("0x%08X", word); break;
        case Field::hex32_dec: print("%08x (%d)", word, signed_word); break;
        case Field::hex8_slash: print("%02x/%d", word, signed_word); break;
        case Field::hex32_slash: print("%08x/%d", word, signed_word); break;
        case Field::dec32_slash: print("%d/%08x", signed_word, word); break;
        case Field::kib32: print("%lld", static_cast<long long>(number) * 1024); break;
        case Field::real: print("%f", real); break;
        case Field::lines: put_lines(word); break;
        case Field::set_dec8: print_value(checkuint8(word)); break;
        case Field::set_dec16: print_value(checkuint16(word)); break;
        case Field::set_dec32: print_value(checkuint32(word, 0)); break;
        case Field::set_hex32: print_value(checkuint32(word, 1)); break;
        case Field::set_real: print_value(checkreal(float_of_bits(word))); break;
        case Field::set_cineon_real: print_value(cineonreal(float_of_bits(word))); break;
        default: break;
    }
}

const char *padded(Bytes field, unsigned width) {
    char *text = get_buffer();
    getstring(text, width, field);
    return text;
}

void put_text(Bytes field, Field kind, unsigned width) {
    const Text text = text_at(field, 0, width);
    from(field, 0, std::min<uint64_t>(static_cast<uint64_t>(text.length) + 1, width));
    switch (kind) {
        case Field::text: print("%.*s", text.length, text.start); break;
        case Field::quoted_text: print("'%.*s'", text.length, text.start); break;
        case Field::padded_text: print("'%s'", padded(field, width)); break;
        case Field::printable_text: print("'%s'", printable_text(field, width, '.')); break;
        default: print_value(checkascii(field, width));
    }
}

void put_values(OrderedBytes field, const FieldRow &row) {
    for (unsigned i = 0; i < row.count; i++) {
        const bool group_ends = row.between.group && i % row.between.group == 0;
        if (i > 0) print_own(group_ends ? row.between.groups : row.between.values);
        put_value(field.from(uint64_t{i} * size_of(row.kind)), row.kind);
    }
}

bool is_name(Field kind) { return kind == Field::name8 || kind == Field::name16; }
bool is_text(Field kind) { return kind >= Field::text; }

}  // namespace

void print_field_row(OrderedBytes header, const FieldRow &row) {
    const OrderedBytes field = header.from(row.offset);
    from(field.bytes, 0, uint64_t{row.count} * (is_text(row.kind) ? 1 : size_of(row.kind)));
    only_field();
    print_own(row.label);
    if (is_text(row.kind)) {
        put_text(field.bytes, row.kind, row.count);
    } else {
        put_values(field, row);
    }
    if (!row.names.empty()) {
        const char *name = row.names[field.number(0, size_of(row.kind))];
        if (!is_name(row.kind)) print_own(" ");
        if (*name) print_value(name);
    }
    print_own("\n");
}

void print_field_rows(OrderedBytes header, std::span<const FieldRow> rows, uint32_t deeper) {
    for (const FieldRow &row : rows) {
        behind_position(deeper);
        print_field_row(header, row);
    }
}
