// File data whose byte order the file itself tells.
#pragma once

#include "common/bytes.h"

enum class ByteOrder { little, big };

// A window with the order of its numbers. Reading outside gives 0, as in the window.
struct OrderedBytes {
    Bytes bytes;
    ByteOrder order = ByteOrder::little;

    uint64_t number(uint64_t offset, unsigned n) const {  // of n bytes, 1 to 8
        return is_big() ? bytes.big(offset, n) : bytes.little(offset, n);
    }
    bool is_big() const { return order == ByteOrder::big; }
    OrderedBytes from(uint64_t offset) const { return {bytes.from(offset), order}; }
    OrderedBytes sub(uint64_t offset, uint64_t n) const { return {bytes.sub(offset, n), order}; }

    uint8_t u8(uint64_t offset) const { return bytes[offset]; }
    uint16_t u16(uint64_t offset) const { return static_cast<uint16_t>(number(offset, 2)); }
    uint32_t u32(uint64_t offset) const { return static_cast<uint32_t>(number(offset, 4)); }
    uint64_t u64(uint64_t offset) const { return number(offset, 8); }
    int32_t s32(uint64_t offset) const { return static_cast<int32_t>(u32(offset)); }
    int64_t s64(uint64_t offset) const { return static_cast<int64_t>(u64(offset)); }
};

inline OrderedBytes little_endian(Bytes bytes) { return {bytes, ByteOrder::little}; }
inline OrderedBytes big_endian(Bytes bytes) { return {bytes, ByteOrder::big}; }
