// What an MPEG transport stream says of its programs.
#pragma once

#include <string>

#include "companions/diff/tree.h"

// Adds its programs, each with its streams and their descriptors, as the first sections of the program
// association, program map and service description tables say them (ISO/IEC 13818-1, EN 300 468). Of a stream
// without such tables nothing. Looks at the first 8 MiB.
void add_programs(const std::string &path, FieldNode &root, TextPool &pool);
