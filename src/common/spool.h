// Input that cannot be positioned, kept so that it can be.
#pragma once

#include <cstdint>
#include <vector>

// All bytes of a pipe, socket or terminal: in a nameless file in TMPDIR, so that however the run ends nothing
// is left behind, and what that cannot take in memory behind it, 1 GiB at most.
class Spool {
 public:
    Spool() = default;
    ~Spool();
    Spool(const Spool &) = delete;
    Spool &operator=(const Spool &) = delete;

    // Takes all of a descriptor; false where the bytes cannot be kept.
    bool take(int pipe);

    uint64_t size() const { return on_disk_ + in_memory_; }
    // Up to n bytes at an offset, from one of the two parts; the count read, 0 at the end, -1 at an error.
    int64_t read(uint64_t offset, void *data, uint64_t n) const;

 private:
    bool add(const uint8_t *data, uint64_t n);

    int fd_ = -1;
    bool disk_is_full_ = false;
    uint64_t on_disk_ = 0;
    uint64_t in_memory_ = 0;
    std::vector<std::vector<uint8_t>> blocks_;
};
