// What was read of an input, as runs of bytes.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

class Input;

// Keeps what an input's reads gave, found by where each run begins. A byte that is not there is read with the
// block around it; use in sequence, even with short skips, reads larger and larger runs, of 256 KiB at most.
// Of 256 runs the half that was read longest ago is given back, so that even a dump of all of a huge file
// stays in 64 MiB. No memory depends on what a file claims.
class BlockCache {
 public:
    explicit BlockCache(Input &input) : input_(input) {}
    ~BlockCache();
    BlockCache(const BlockCache &) = delete;
    BlockCache &operator=(const BlockCache &) = delete;

    // n bytes at an offset; null where the bytes end, or where no run holds all of them. `block` (a power of
    // two, 256 KiB at most) is the least that is read. Good until 128 other runs are read.
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
    void forget_found();

    Input &input_;
    Run found_;   // the run found last
    Run before_;  // the one found before it: walks look at two places by turns
    Run last_;    // found_, but while somebody listens: then each look at bytes comes to be told
    Runs *runs_ = nullptr;
    uint64_t ahead_ = 0;  // bytes of the next sequential read, where one went before it
};
