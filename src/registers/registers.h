// The SMPTE metadata registers of today (elements, groups, labels, types). What a dump prints ends at older
// versions of them, as its contract says; companions say more. The tables in data/ become arrays while
// building.
#pragma once

#include <cstdint>
#include <span>
#include <string_view>

struct RegisterEntry {
    uint8_t label[16];
    const char *symbol;
    const char *name;
    const char *type;  // of an element; empty for others
};

// A type of the register: "Integer" of `size` bytes, "Rename", "Enumeration", "FixedArray" of `size`,
// "VariableArray", "Set" of `base`, "String" of characters of `base`, "Record", references, ...
struct RegisterType {
    const char *symbol;
    const char *kind;
    uint32_t size;
    const char *base;
};

// By a label of 16 bytes, whatever its version (byte 8): elements (byte 5 is 1), groups (2, in any coding) or
// labels (4). Null where the register has none.
const RegisterEntry *find_register_entry(std::span<const uint8_t> label);
const RegisterType *find_register_type(std::string_view symbol);
