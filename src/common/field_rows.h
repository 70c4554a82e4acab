// Header fields that differ only in offset, label and rendering: a section is a table of rows in the order of
// the published layout.
#pragma once

#include <cstdint>
#include <span>

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
    upper_hex32,  // 0x and upper-case digits
    real,         // float with six decimals
    set_dec8,
    set_dec16,
    set_dec32,  // signed
    set_hex32,
    set_real,  // float
    set_cineon_real,
    text,         // up to its first zero byte
    quoted_text,  // the same in quotes
    ascii,        // the same, checked: empty, or a note of bytes that are no text (checkascii)
};

// What stands between the values of a row that has several: every `group` values something else.
struct Between {
    const char *values = " ";
    unsigned group = 0;  // 0: never
    const char *groups = "";
};

struct FieldRow {
    uint16_t offset;
    Field kind;
    const char *label;   // the line up to its value
    uint16_t count = 1;  // of values behind each other; of a text, its width in bytes
    Between between = {};
};

// Prints one line a row; offsets count from the start of `header`.
void print_field_rows(OrderedBytes header, std::span<const FieldRow> rows);
