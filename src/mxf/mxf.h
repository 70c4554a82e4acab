// MXF files (SMPTE 377M).
#pragma once

#include <cstdio>

#include "main/dump_options.h"

// Every KLV item of the file with its fields; the names that references point to are collected first.
void mxfdump(DumpOptions &opts, std::FILE *file);
