// Header fields that differ only in offset, label and rendering: a section is a table of rows in the order of
// the published layout.
#pragma once

#include <cstdint>
#include <span>

#include "common/bytes.h"

enum class Field {
    u8,           // "%d"
    u16,          // "%d"
    u32,          // "%d", signed
    hex32,        // "%08x"
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
