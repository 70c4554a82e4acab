// Names of coded values.
#pragma once

#include <cstddef>
#include <cstdint>

struct CodeName {
    uint32_t code;
    const char *name;
};

// The name of a code in a table indexed by code; `other` for a code beyond the table.
template <size_t N>
constexpr const char *name_at(const char *const (&table)[N], uint64_t code, const char *other = "") {
    return code < N ? table[code] : other;
}

// The name of a code in rows searched in order; `other` for a code that no row has.
template <size_t N>
constexpr const char *name_of(const CodeName (&rows)[N], uint32_t code, const char *other = "") {
    for (const CodeName &row : rows) {
        if (row.code == code) return row.name;
    }
    return other;
}
