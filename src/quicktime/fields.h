// Fields of a payload that differ only in offset, label and rendering: an atom is a table of rows in the
// order of the published layout. Each line shows its value twice.
#pragma once

#include <cstdint>
#include <span>
#include <string_view>

#include "common/line_buffer.h"
#include "quicktime/atom.h"

enum class QtField {
    u8,             // "%u (0x%X)"
    u16,            // "%u (0x%X)"
    u32,            // "%u (0x%X)"
    d32,            // "%d (0x%X)"
    halves,         // 64 bits, "%u_%u (0x%X%X)"
    fixed,          // 16.16 fixed point, "%f (0x%X)"
    real32,         // "%f"
    real64,         // "%f"
    fourcc,         // four characters, "%4.4s (0x%05X)"
    version_flags,  // a version byte and three bytes of flags
    matrix,         // a row of three 32-bit numbers, " 0x%08X 0x%08X 0x%08X"
    pstring,        // a length byte and characters
    hexdump,        // `count` bytes
};

// The line up to its value; where it has an empty pair of brackets, the index stands in them.
struct QtLabel {
    consteval QtLabel(const char *text) : before(text) {
        const size_t brackets = before.find("[]");
        if (brackets == std::string_view::npos) return;
        after = before.substr(brackets + 1);
        before = before.substr(0, brackets + 1);
    }
    bool is_indexed() const { return !after.empty(); }

    std::string_view before;
    std::string_view after = {};
};

struct QtRow {
    uint8_t offset;  // from the start of the data
    QtField kind;
    QtLabel label = "";
    uint8_t count = 1;  // of values behind each other, a line each
};

// One line a field from the data of the atom's last read; what lies beyond it shows as 0.
void print_qt_rows(const QtAtom &atom, std::span<const QtRow> rows);

// The same for an entry of a table, with the entry's index in the labels. Tables can have millions of
// entries: such lines are rows of a listing.
void put_qt_rows(LineBuffer &out, Bytes data, int indent, std::span<const QtRow> rows, uint64_t index = 0,
                 bool is_listing = false);
