// Names of coded values.
#pragma once

#include <cstddef>
#include <cstdint>

struct CodeName {
    uint32_t code;
    const char *name;
};

// The first row of a table that has a key (a member, or what a function gives of a row); null for none.
template <typename Row, size_t N, typename Key, typename KeyOf>
constexpr const Row *row_of(const Row (&rows)[N], const Key &key, KeyOf key_of) {
    for (const Row &row : rows) {
        if constexpr (requires { row.*key_of; }) {
            if (row.*key_of == key) return &row;
        } else {
            if (key_of(row) == key) return &row;
        }
    }
    return nullptr;
}

// The names of a field's codes: rows searched in order, or a table indexed by code; and what any other code
// is called.
class Names {
 public:
    constexpr Names() = default;
    template <size_t N>
    constexpr Names(const CodeName (&rows)[N], const char *other = "") : rows_(rows), n_(N), other_(other) {}
    template <size_t N>
    constexpr Names(const char *const (&table)[N], const char *other = "")
        : table_(table), n_(N), other_(other) {}

    constexpr bool empty() const { return n_ == 0; }
    constexpr const char *operator[](uint64_t code) const {
        if (table_) return code < n_ ? table_[code] : other_;
        for (size_t i = 0; i < n_; i++) {
            if (rows_[i].code == code) return rows_[i].name;
        }
        return other_;
    }

 private:
    const CodeName *rows_ = nullptr;
    const char *const *table_ = nullptr;
    size_t n_ = 0;
    const char *other_ = "";
};

// The name of a code in a table indexed by code; `other` for a code beyond the table.
template <size_t N>
constexpr const char *name_at(const char *const (&table)[N], uint64_t code, const char *other = "") {
    return Names(table, other)[code];
}

// The name of a code in rows searched in order; `other` for a code that no row has.
template <size_t N>
constexpr const char *name_of(const CodeName (&rows)[N], uint32_t code, const char *other = "") {
    return Names(rows, other)[code];
}
