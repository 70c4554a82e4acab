// What differs between the headers of two files.
#pragma once

#include <string>

#include "companions/diff/report.h"
#include "companions/job.h"
#include "main/dump_options.h"

struct DiffOptions {
    bool everything = false;  // positions, dates, identifiers and sizes, too; each of what is counted
    bool json = false;
    bool same = false;  // fields that are the same, too
    DumpOptions dump{};
};

// Gives the differences as people say them, then fields under their sections, as text that is safe for a
// terminal or as a JSON object. 0 where nothing differs (no text, then), 1 where something does, 2 with a
// complaint where a file has no dump.
int diff_files(const std::string &one, const std::string &other, const DiffOptions &options,
               JobOutput &output);
// The same for another report.
int diff_files(const std::string &one, const std::string &other, const DiffOptions &options, Report &report,
               JobOutput &output);
