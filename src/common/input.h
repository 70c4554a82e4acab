// The file that is dumped.
#pragma once

#include <cstdint>

#include "common/block_cache.h"
#include "common/bytes.h"

class Link;
class Spool;

// What is open: a file that can be positioned, or what a pipe, socket or terminal gave to its end (spooled at
// its first use). Its bytes are read when they are looked at and kept a while (BlockCache).
class Input {
 public:
    static constexpr uint32_t kBlock = 4096;

    // Opens a file by its name. `link` says what reading it costs and is told; it may be null.
    explicit Input(const char *name, Link *link = nullptr);
    // Bytes in memory under a name.
    Input(const char *name, const void *data, uint64_t size);
    ~Input();
    Input(const Input &) = delete;
    Input &operator=(const Input &) = delete;

    // The input that is open, for what can only name it; null when none is.
    static Input *current();

    // Whether the name could be opened, and what it gives be kept where that has to be. Reads the first n
    // bytes.
    bool open(uint64_t n = 0);
    const char *name() const { return name_; }

    // Bytes of a regular file or block device, or of what was spooled; 0 for whatever has none (directories,
    // devices).
    uint64_t size() { return sized_ ? size_ : find_size(); }
    // Where the bytes end: at the size, or before it where a read found nothing.
    uint64_t end() {
        const uint64_t size = this->size();
        return size < known_end_ ? size : known_end_;
    }

    // A window from an offset on, in blocks of at least `block` bytes. Where `start` was not read yet, a
    // block from there on is: what begins there is looked at next.
    Bytes bytes(uint64_t start, uint64_t size, uint32_t block = kBlock);
    // What there is of a range, which is read whole: it ends where the bytes do.
    Bytes present(uint64_t start, uint64_t n, uint32_t block = kBlock);
    // The same for one step after the other of a dump of all: what was read before is given back.
    Bytes next_step(uint64_t start, uint64_t n) {
        give_back();
        return present(start, n);
    }
    // Gives back all that was read: what is looked at from now on is read anew.
    void give_back() { cache_.clear(); }
    // All of the file.
    Bytes bytes(uint32_t block = kBlock) { return {cache_, 0, size(), block}; }

    // Reads up to n bytes at an offset, past the cache; the count read, less at the end or at an error.
    uint64_t read(uint64_t offset, void *data, uint64_t n);

    // Whether the file could be positioned at an offset: not before its start, nor beyond what its system can
    // address.
    bool has_place(int64_t offset);

    uint64_t bytes_read() const { return bytes_read_; }
    uint64_t reads() const { return reads_; }

 private:
    friend class BlockCache;
    uint64_t read_end() const { return known_end_; }

    uint64_t find_size();
    int64_t read_some(uint64_t offset, void *data, uint64_t n);
    int64_t read_file(uint64_t offset, void *data, uint64_t n);
    bool spool();

    const char *name_;
    Link *link_ = nullptr;
    Input *outer_;  // that was open before this one
    int fd_ = -1;
    bool failed_ = false;
    Spool *spool_ = nullptr;  // ours
    Bytes memory_;
    bool sized_ = false;
    uint64_t size_ = 0;
    uint64_t known_end_ = INT64_MAX;  // nothing is behind it
    uint64_t bytes_read_ = 0;
    uint64_t reads_ = 0;
    BlockCache cache_;
};

// The input that a name stands for: the one that is open under it, else the file of that name. For dumps that
// get a name instead of what is open.
class NamedInput {
 public:
    explicit NamedInput(const char *name);
    ~NamedInput();
    NamedInput(const NamedInput &) = delete;
    NamedInput &operator=(const NamedInput &) = delete;

    explicit operator bool() const { return input_ != nullptr; }
    Input &operator*() const { return *input_; }
    Input *operator->() const { return input_; }

 private:
    Input *opened_ = nullptr;  // ours, where the name was opened
    Input *input_ = nullptr;
};

// Whether a file can have that many bytes, and a dump look at them: always. check_buffer says where not, by
// the line "malloc of buffer %d failed" with the size.
inline bool is_addressable(uint64_t size) { return size <= INT64_MAX; }
bool check_buffer(uint64_t size);
