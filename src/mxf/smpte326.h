// Elements of SDTI-CP content packages (SMPTE 326M).
#pragma once

#include "common/bytes.h"
#include "main/dump_options.h"

// Prints the element whose type byte stands at an offset; returns the bytes that it covers. A time code
// element leaves its line open.
uint32_t mxf_print_smpte326(DumpOptions &opts, Bytes buffer, uint64_t offset);

// The package rate coded by the byte at an offset, in packages a second; 0 for an unknown code.
double smpte326_cpp_rate(DumpOptions &opts, Bytes buffer, uint64_t offset);
