// The printed forms of metadata values.
#pragma once

#include "common/bytes.h"
#include "main/dump_options.h"
#include "mxf/value_kind.h"

// To be called before the values of a set of some bytes are printed: its arrays together list no more than
// four times as many.
void begin_values(uint64_t set_size);

// Prints a value of `length` bytes at an offset of the item by its kind, whatever its length; bytes beyond
// the item are 0, and arrays end with it.
void mxf_print_rp210data(DumpOptions &opts, Bytes buffer, uint64_t offset, uint32_t length, ValueKind kind);
