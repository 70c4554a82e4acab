// Header fields that differ only in offset, label and rendering: a section is a table of rows in the order of
// the published layout.
#pragma once

#include <cstdint>
#include <span>
#include <string_view>

#include "common/names.h"
#include "common/ordered_bytes.h"

// What a field prints and its width in bits. Those named set_ are empty when all bits of the field are ones
// (Cineon's real numbers: when it is positive infinity).
enum class Field {
    dec8,   // decimal
    dec16,  // decimal
    dec32,  // signed decimal
    dec64,  // signed decimal
    hex8,   // hexadecimal of as many digits as the field has
    hex16,
    hex32,
    hex64,
    blank_hex64,  // blanks instead of leading zeros
    upper_hex32,  // 0x and upper-case digits
    hex32_dec,    // hexadecimal, and signed decimal in parentheses
    hex8_slash,   // hexadecimal, and decimal behind a slash
    hex32_slash,  // the same, signed
    dec32_slash,  // signed decimal, and hexadecimal behind a slash
    kib32,        // in KiB: the bytes, decimal
    real,         // float with six decimals
    name8,        // its name only
    name16,
    lines,  // 32 bits: the lowest byte, and behind a slash the third one where it is not 0
    set_dec8,
    set_dec16,
    set_dec32,  // signed
    set_hex32,
    set_real,  // float
    set_cineon_real,
    text,            // up to its first zero byte
    quoted_text,     // the same in quotes
    padded_text,     // in quotes, filled up with blanks (getstring)
    printable_text,  // in quotes, full stops for what is no printable ASCII
    ascii,           // in quotes, checked: empty, or a note of bytes that are no text (checkascii)
};

// What stands between the values of a row that has several: every `group` values something else.
struct Between {
    const char *values = " ";
    unsigned group = 0;  // 0: never
    const char *groups = "";
};

struct FieldRow {
    constexpr FieldRow(uint16_t at, Field what, const char *before, uint16_t n = 1, Between with = {})
        : offset(at), kind(what), label(before), count(n), between(with) {}
    // A coded value: its name follows behind a blank.
    constexpr FieldRow(uint16_t at, Field what, const char *before, Names codes)
        : offset(at), kind(what), label(before), names(codes) {}

    uint16_t offset;
    Field kind;
    const char *label;   // the line up to its value
    uint16_t count = 1;  // of values behind each other; of a text, its width in bytes
    Between between = {};
    Names names = {};
};

// A field that stands alone behind a tag.
struct TaggedRow {
    uint32_t tag;
    FieldRow row;
};

// Prints one line a row; offsets count from the start of `header`. As data the lines stand `deeper` than
// their blanks say.
void print_field_rows(OrderedBytes header, std::span<const FieldRow> rows, uint32_t deeper = 0);
void print_field_row(OrderedBytes header, const FieldRow &row);

// The offset of a field by the name in its label, for what is not only printed.
template <size_t N>
consteval uint16_t offset_of(const FieldRow (&rows)[N], std::string_view name) {
    for (const FieldRow &row : rows) {
        std::string_view label = row.label;
        while (label.starts_with(' ')) label.remove_prefix(1);
        if (label.starts_with(name) && label.substr(name.size()).starts_with(' ')) return row.offset;
    }
    throw "no row has that name";
}
