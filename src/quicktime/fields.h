// Fields of a payload that differ only in offset, label and rendering: an atom is a table of rows in the
// order of the published layout.
#pragma once

#include <cstdint>
#include <span>

#include "quicktime/atom.h"

enum class QtField {
    u8,             // "=%u (0x%X)"
    u16,            // "=%u (0x%X)"
    u32,            // "=%u (0x%X)"
    d32,            // "=%d (0x%X)"
    fixed,          // 16.16 fixed point, "=%f (0x%X)"
    fourcc,         // four characters, "=%4.4s (0x%05X)"
    version_flags,  // a version byte and three bytes of flags
    matrix,         // three rows of three 32-bit numbers
    pstring,        // a length byte and characters
    hexdump,        // `count` bytes
};

struct QtRow {
    uint8_t offset;  // from the start of the data
    QtField kind;
    const char *label = "";
    uint8_t count = 0;  // of a field that is an array: its lines show the index
};

// One line a field from the data of the atom's last read; what lies beyond it shows as 0.
void print_qt_rows(const QtAtom &atom, std::span<const QtRow> rows);

// A 16.16 fixed-point number in single precision.
float qt_fixed(uint32_t value);
