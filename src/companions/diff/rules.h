// What of a dump's lines is compared, format by format.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "companions/lines/lines.h"

// Which of a line's values are compared; the others only tell what it is and where: positions, sizes, tags
// and codes in front of a name.
struct ValueRange {
    size_t first = 0;
    size_t end = SIZE_MAX;
};
// `text` is the line without the blanks it begins with, `depth` the number of sections around it.
ValueRange compared_values(std::string_view format, std::string_view text, size_t depth);

// Whether a field is left out because any two files differ in it: dates, positions, sizes of atoms and sets,
// identifiers.
bool is_left_out(std::string_view format, std::string_view section, std::string_view label);

// The values of a line as one text. Of a number that stands there in two notations, and of a code with its
// characters, the first counts; texts that stand in quotes have them.
std::string value_text(const Line &line, const FieldLine &field, ValueRange range);

// A text of MXF's identifiers that are none of the registers: UUIDs, and parts of UMIDs. Those that are all
// zeros say that there is none.
bool is_identifier(std::string_view value);

// Whether there is one such section a frame, packet or entry.
bool is_counted(std::string_view format, std::string_view name);
// "system items": what counted sections are called.
std::string counted_name(std::string_view format, std::string_view name, std::string_view kind,
                         uint64_t count);
// Whether the lines that follow one of this label in its section are below it.
bool opens_section(std::string_view format, std::string_view section, std::string_view label);
// Whether an MXF label only says of what type its item is.
bool is_type_name(std::string_view label);
