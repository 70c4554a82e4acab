// The one way in which a dump sees file data.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

#include "common/block_cache.h"
#include "common/file_range.h"

// A read-only window on memory or on an input's bytes. Reading outside the window gives 0 and no offset can
// overflow, so that a damaged file cannot lead a reader outside; `has` tells where a cut file ends a list.
// A window on an input must not outlive the input.
class Bytes {
 public:
    constexpr Bytes() = default;
    Bytes(const void *data, uint64_t size) : data_(static_cast<const uint8_t *>(data)), size_(size) {}
    // size bytes of an input from an offset on, read in blocks of at least `block` bytes (a power of two).
    Bytes(BlockCache &cache, uint64_t start, uint64_t size, uint32_t block)
        : start_(start),
          size_(size < UINT64_MAX - start ? size : UINT64_MAX - start),
          cache_(&cache),
          block_(block) {}

    uint64_t size() const { return size_; }
    bool empty() const { return size_ == 0; }
    bool has(uint64_t offset, uint64_t n) const { return offset <= size_ && n <= size_ - offset; }

    uint8_t operator[](uint64_t i) const {
        if (i >= size_) return 0;
        if (!cache_) return data_[i];
        const uint8_t *byte = cache_->at(start_ + i, 1, block_);
        return byte ? *byte : 0;
    }

    // The window's rest from an offset on, and n bytes from an offset on, both clamped to the window.
    Bytes from(uint64_t offset) const { return sub(offset, UINT64_MAX); }
    Bytes sub(uint64_t offset, uint64_t n) const {
        const uint64_t start = offset < size_ ? offset : size_;
        return part(start, n < size_ - start ? n : size_ - start);
    }

    // Where the window lies in its file; nothing for one on memory.
    FileRange file_range() const { return cache_ ? FileRange{start_, size_} : FileRange{}; }

    // The bytes of a range that lie inside the window, in memory: for rows, texts and comparisons. Of an
    // input's window a span is good until two more are taken.
    std::span<const uint8_t> span(uint64_t offset, uint64_t n) const {
        const Bytes part = sub(offset, n);
        const size_t size = static_cast<size_t>(part.size_);
        if (part.cache_) return part.cache_->gather(part.start_, size, block_);
        return {part.data_, size};
    }

    // n bytes (1 to 8) as an unsigned number; bytes outside the window count as 0.
    uint64_t little(uint64_t offset, unsigned n) const {
        uint64_t value = 0;
        if (const uint8_t *p = loaded(offset, n)) {
            for (unsigned i = 0; i < n; i++) value |= static_cast<uint64_t>(p[i]) << (8 * i);
        } else {
            for (unsigned i = 0; i < n; i++) value |= static_cast<uint64_t>(at(offset, i)) << (8 * i);
        }
        return value;
    }
    uint64_t big(uint64_t offset, unsigned n) const {
        uint64_t value = 0;
        if (const uint8_t *p = loaded(offset, n)) {
            for (unsigned i = 0; i < n; i++) value = value << 8 | p[i];
        } else {
            for (unsigned i = 0; i < n; i++) value = value << 8 | at(offset, i);
        }
        return value;
    }

 private:
    // Inside the window. Made field by field: a copy of all would wait for what was just stored.
    Bytes part(uint64_t start, uint64_t size) const {
        if (!cache_) return {data_ + start, size};
        Bytes part;
        part.start_ = start_ + start;
        part.size_ = size;
        part.cache_ = cache_;
        part.block_ = block_;
        return part;
    }
    // The bytes of a number in one piece; null where they are not.
    const uint8_t *loaded(uint64_t offset, unsigned n) const {
        if (!has(offset, n)) return nullptr;
        return cache_ ? cache_->at(start_ + offset, n, block_) : data_ + offset;
    }
    uint8_t at(uint64_t offset, uint64_t i) const {
        return offset > UINT64_MAX - i ? 0 : (*this)[offset + i];
    }

    union {
        const uint8_t *data_ = nullptr;
        uint64_t start_;  // in the input
    };
    uint64_t size_ = 0;
    BlockCache *cache_ = nullptr;
    uint32_t block_ = 0;
};

inline uint16_t little16(Bytes b, uint64_t offset = 0) { return static_cast<uint16_t>(b.little(offset, 2)); }
inline uint32_t little32(Bytes b, uint64_t offset = 0) { return static_cast<uint32_t>(b.little(offset, 4)); }
inline uint64_t little64(Bytes b, uint64_t offset = 0) { return b.little(offset, 8); }
inline uint16_t big16(Bytes b, uint64_t offset = 0) { return static_cast<uint16_t>(b.big(offset, 2)); }
inline uint32_t big32(Bytes b, uint64_t offset = 0) { return static_cast<uint32_t>(b.big(offset, 4)); }
inline uint64_t big64(Bytes b, uint64_t offset = 0) { return b.big(offset, 8); }

// Whether the bytes at an offset are exactly those of a text (its terminating NUL left out).
template <size_t N>
bool bytes_are(Bytes b, uint64_t offset, const char (&text)[N]) {
    if (!b.has(offset, N - 1)) return false;
    for (size_t i = 0; i < N - 1; i++) {
        if (b[offset + i] != static_cast<uint8_t>(text[i])) return false;
    }
    return true;
}

// A text inside a window, up to its first NUL, the width given or the window's end: for "%.*s".
struct Text {
    int length;
    const char *start;
};
Text text_at(Bytes b, uint64_t offset, uint64_t width);
// Whether a window begins with the bytes of a text.
bool begins_as(Bytes b, std::string_view text);
// Where the bytes of a text stand first in a window from an offset on, and last; its size where they do not.
uint64_t find_in(Bytes b, std::string_view text, uint64_t from = 0);
uint64_t find_last_in(Bytes b, std::string_view text);
inline bool contains(Bytes b, std::string_view text) { return find_in(b, text) < b.size(); }
// Whether all bytes of a window are zero.
bool is_zero(Bytes b);
