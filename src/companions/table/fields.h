// Dumps whose fields stand one a line: which become which column is a table.
#pragma once

#include <span>

#include "companions/table/reader.h"

// The first value of a label that converts to a text is the column's. A section is a line that begins with
// its name (behind a file position) and ends with the next line that is not indented; "" is any. A field
// without a label stands for the line that opens its section.
struct DumpField {
    const char *section;
    const char *label;
    Column column;
    std::string (*convert)(std::string_view value);
};

struct FieldFormat {
    const char *name;
    std::span<const DumpField> fields;
    const char *last = nullptr;           // a line that begins so ends what is wanted
    void (*compute)(Row &row) = nullptr;  // what is left to do when all is read
};

std::unique_ptr<DumpReader> field_reader(const FieldFormat &format);
