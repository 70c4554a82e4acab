// Header fields that differ only in offset, label and rendering: a section is a table of rows in the order of
// the published layout.
#pragma once

#include <cstdint>
#include <span>

#include "common/bytes.h"

enum class Field {
    u8,    // decimal
    u16,   // decimal
    u32,   // signed decimal
    s64,   // signed decimal
    hex8,  // hexadecimal of as many digits as the field has
    hex16,
    hex32,
    hex64,
    set8,         // decimal, empty when not set
    dec,          // 32 bits, signed decimal, empty when not set
    hex,          // 32 bits, "%08x", empty when not set
    real,         // float, empty when not set
    cineon_real,  // float with Cineon's mark for "not set"
    ascii,        // text in quotes
};

struct FieldRow {
    uint16_t offset;
    Field kind;
    const char *label;   // the line up to its value
    uint16_t width = 0;  // of a text, in bytes
};

// Prints one line a row; offsets count from the start of `header`.
void print_field_rows(Bytes header, int big_endian, std::span<const FieldRow> rows);
