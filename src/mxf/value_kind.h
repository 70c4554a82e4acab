// How the values of local sets print.
#pragma once

#include <cstdint>

// The kinds of RP 210 rows and of declared tags.
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
