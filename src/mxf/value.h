// The printed forms of metadata values.
#pragma once

#include "common/bytes.h"
#include "main/dump_options.h"

// How a value prints: the value kinds of RP 210 rows and of declared tags.
enum class ValueKind : uint32_t {
    node = 0,
    unknown = 1,
    ascii = 2,
    unicode = 3,
    boolean = 4,
    uint16 = 5,
    uint32 = 6,
    data7 = 7,
    data8 = 8,
    uint8 = 9,
    strong_reference = 10,
    rational = 11,
    uint64 = 12,
    uuid = 13,
    version_type = 14,
    timestamp = 15,
    package_id = 16,
    weak_reference = 17,
    universal_label = 18,
    weak_reference_array = 19,
    strong_reference_array = 20,
    guid = 21,
    auid = 22,
    auid_array = 23,
    universal_label_array = 24,
    version_numbers = 25,
    index_entry_array = 26,
    generic_array = 27,
    generic_batch = 28,
};

// To be called before the values of a set of some bytes are printed: its arrays together list no more than
// four times as many.
void begin_values(uint64_t set_size);

// Prints a value of `length` bytes at an offset of the item by its kind, whatever its length; bytes beyond
// the item are 0, and arrays end with it.
void mxf_print_rp210data(DumpOptions &opts, Bytes buffer, uint64_t offset, uint32_t length, uint32_t kind);
