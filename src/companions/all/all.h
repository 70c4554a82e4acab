// The whole dump of a file, behind a line with its name.
#pragma once

#include <string>

#include "companions/job.h"
#include "main/dump_options.h"

// Gives "==> NAME <==", the dump, and an empty line; where there is no dump the reason, also as a complaint.
// Whether the file was dumped. Unless `raw`, what a terminal would take for more than text is escaped, and so
// is the first character of a line of the dump that begins as such a heading.
bool dump_behind_name(const std::string &path, const DumpOptions &options, bool raw, JobOutput &output);
