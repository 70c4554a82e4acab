// What differs between two dumps.
#pragma once

#include <string>

#include "companions/diff/dump_tree.h"

// The differences as text, safe for a terminal: under a line with the section each, a field with both values
// ("label: one -> other"), or what only one side has ("- label: value" of the first, "+ label: value" of the
// second, with the number of lines below it). Lines below each other are aligned by their labels, so that a
// section that one side has more does not move the others. Empty when nothing differs.
std::string compare_dumps(const DumpNode &one, const DumpNode &other);
