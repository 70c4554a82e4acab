// Why a file has no dump.
#pragma once

#include <string>

#include "main/dump.h"

// The system's reason for a file that could not be opened, "empty" or "unknown format, 00 01 02 03"; nothing
// where it was dumped. To be asked right behind the dump.
std::string failure_text(const std::string &path, const DumpOutcome &outcome);
