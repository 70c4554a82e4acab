// The printed forms of metadata values.
#pragma once

#include "common/budget.h"
#include "common/bytes.h"
#include "main/dump_options.h"
#include "mxf/value_kind.h"

// Prints a value of `length` bytes at an offset of the item by its kind, whatever its length; bytes beyond
// the item are 0, and arrays end with it. The arrays of one set share the budget of their elements' bytes:
// counts that reach beyond their values would list the rest of the set again and again.
void mxf_print_rp210data(DumpOptions &opts, Bytes buffer, uint64_t offset, uint32_t length, ValueKind kind,
                         Budget &budget);
// A value by itself, at most what its item holds.
void mxf_print_rp210data(DumpOptions &opts, Bytes buffer, uint64_t offset, uint32_t length, ValueKind kind);
