// Format recognition.
#pragma once

#include "common/input.h"
#include "main/dump_options.h"

// Bytes of the file's head that recognition reads and that header-only dumps work on.
constexpr uint32_t kDetectionSize = 16384;

// Recognises the file by its first bytes, or by its name's extension where they say nothing, and calls the
// format's dump; false, behind a line that says so, for a format that is not known. Bytes beyond the end of a
// short file count as 0. `by_content`: movies are recognised by what is in them, whatever their names.
bool dispatch(DumpOptions &opts, Input &input, const char *name, int range_flag, bool by_content = false);
