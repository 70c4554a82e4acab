// The parts of a TIFF directory's dump.
#pragma once

#include <cstdint>

#include "common/ordered_bytes.h"
#include "main/dump_options.h"
#include "tiff/tiff.h"

// The name of a tag, "?" for unknown ones. For compression, photometric interpretation and sample format it
// depends on the first 16-bit value in the value field.
const char *tifftag(uint16_t tag, uint32_t value, ByteOrder order);

// Renders the values of an entry as one text in a print buffer, at most 7936 characters and the element that
// passes them; stores the first value (0 where the type has none). Values beyond the file are 0.
const char *tifftype(OrderedBytes base, uint32_t type, uint32_t count, uint32_t value, uint32_t *first);

// Bytes of the value field that hold values or their offset.
uint64_t tiff_field_used(uint32_t type, uint32_t count);

// Prints a run of Photoshop image resource blocks of `length` bytes, big-endian whatever the file's order.
void photoshoptag(DumpOptions &opts, Bytes data, int64_t length, Budget &budget);

// Prints the first 100 pixels from the first strip on, as far as the file has them.
void print_pixels(const DumpOptions &opts, OrderedBytes file);
