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
    set_dec8,
    set_dec32,  // signed
    set_hex32,
    set_real,  // float
    set_cineon_real,
    ascii,  // text in quotes
};

struct FieldRow {
    uint16_t offset;
    Field kind;
    const char *label;   // the line up to its value
    uint16_t width = 0;  // of a text, in bytes
};

// Prints one line a row; offsets count from the start of `header`.
void print_field_rows(OrderedBytes header, std::span<const FieldRow> rows);
