// Rows as CSV, JSON and JSON Lines.
#pragma once

#include <string>
#include <vector>

#include "companions/table/row.h"

// What of a row is shown: columns, names of `more` or patterns of --field, by their names in their order; all
// columns and fields, and in JSON all of `more`, where none are named.
struct Selection {
    std::vector<std::string> names;
    std::vector<std::string> fields;
};

// A line of comma-separated values after RFC 4180, with CRLF: texts with commas, quotes or line feeds stand
// in quotes. Other control characters and bytes that are not UTF-8 are written as \x1b and the like.
std::string csv_header(const Selection &selection);
std::string csv_line(const Row &row, const Selection &selection);

// An object on one line. Numbers are numbers, what is not known is null, the values of a field are an array.
// A byte that is not UTF-8 becomes the surrogate \udc80 to \udcff that stands for it (as Python's
// "surrogateescape" has it), so that no two names are one.
std::string json_object(const Row &row, const Selection &selection);
