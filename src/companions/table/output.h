// Rows as CSV, JSON and a table to be read by a person.
#pragma once

#include <string>
#include <vector>

#include "companions/table/row.h"

// A line of comma-separated values after RFC 4180, with CRLF: texts with commas, quotes or line feeds stand
// in quotes. Other control characters and bytes that are not UTF-8 are written as \x1b and the like.
std::string csv_header();
std::string csv_line(const Row &row);

// An object on one line. Numbers are numbers, what the dump does not say is null. A byte that is not UTF-8
// becomes the surrogate \udc80 to \udcff that stands for it (as Python's "surrogateescape" has it), so that
// no two names are one.
std::string json_object(const Row &row);

// Columns that have a value in some row, aligned by characters; long texts are cut with an ellipsis, the
// file's name stands last and whole.
std::string aligned_table(const std::vector<Row> &rows);
