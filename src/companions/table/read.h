// The row of a file, read from it; no processes or lists of files.
#pragma once

#include <string>
#include <vector>

#include "companions/table/row.h"
#include "main/dump_options.h"

// A field of the dump that is wanted: "television/timecode" (companions/lines, PathPattern). Its values are
// texts as the dump has them, each once.
struct FieldRequest {
    std::vector<std::string> patterns;
    DumpOptions options{};  // for the dump that has them
};

Row read_row(const std::string &path, const FieldRequest &request);
