#pragma once

#include <cstdint>

// Bytes of a file.
struct FileRange {
    uint64_t offset = 0;
    uint64_t size = 0;

    uint64_t end() const { return offset + size; }
    bool operator==(const FileRange &) const = default;
};
