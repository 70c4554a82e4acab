// What was read of an input, as runs of bytes.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

class Input;

// Keeps what an input's reads gave, found by where each run begins. A byte that is not there is read with the
// block around it; use in sequence, even with short skips, reads larger and larger runs. What was read
// longest ago goes when 64 MiB or some thousand runs are held, so that even a dump of all of a huge file
// stays in that. No memory depends on what a file claims.
class BlockCache {
 public:
    explicit BlockCache(Input &input) : input_(input) {}
    ~BlockCache();
    BlockCache(const BlockCache &) = delete;
    BlockCache &operator=(const BlockCache &) = delete;

    // n bytes at an offset; null where the bytes end, or where no run holds all of them. `block` (a power of
    // two) is the least that is read. Good until another 32 MiB or 2,048 runs are read.
    const uint8_t *at(uint64_t offset, uint64_t n, uint32_t block) {
        const uint64_t inside = offset - last_.start;
        if (inside < last_.size && n <= last_.size - inside) return last_.data + inside;
        return find(offset, n, block);
    }

    // A range in one piece, zeros where the bytes end. A range over several runs is copied; it is good until
    // two more are.
    std::span<const uint8_t> gather(uint64_t offset, size_t n, uint32_t block);

    // Gives back all memory.
    void clear();

    // How many bytes from an offset on are in one piece; 0 where the bytes end. Where the first is not there,
    // `needed` bytes are read from there on, and not from a block's border.
    uint64_t load(uint64_t offset, uint64_t needed, uint32_t block);

 private:
    struct Run {
        uint64_t start = 0;
        uint64_t size = 0;
        uint8_t *data = nullptr;
        uint64_t age = 0;  // how many were read before it
    };
    struct Runs;

    Runs &runs();
    const uint8_t *find(uint64_t offset, uint64_t n, uint32_t block);
    bool look_up(uint64_t offset);
    bool read(uint64_t start, uint64_t offset, uint64_t needed, uint32_t block);
    void drop_oldest();

    void select(const Run &run);

    Input &input_;
    Run found_;  // the run found last
    Run last_;   // the same, but while somebody listens: then each look at bytes comes to be told
    Runs *runs_ = nullptr;
    uint64_t resident_ = 0;
    uint64_t ahead_ = 0;  // bytes of the next sequential read
};
