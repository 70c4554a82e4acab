// OpenEXR images.
#pragma once

#include <cstdio>

#include "main/dump_options.h"

// The attributes of the header with their values.
void exrdump(DumpOptions &opts, std::FILE *file);
