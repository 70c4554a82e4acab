// OpenEXR images (OpenEXR file layout, version 2).
#pragma once

#include "common/input.h"
#include "main/dump_options.h"

// The attributes of the header: offset, name, type, size in bytes and value. A cut value shows what the file
// holds of it and ends the list.
void exrdump(DumpOptions &opts, Input &input);
