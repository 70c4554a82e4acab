// The way to a file's system: what it costs, and what is asked of it before it is needed.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "common/read_ahead.h"

// Opens a file by its name for reading, or once more the descriptor that the name stands for; -1 where that
// fails.
int open_named(const char *name);

// What the inputs of a run share. Reads are timed; where one took as long as a round trip and the file's
// system is a network's, what follows is announced to the system.
class Link {
 public:
    Link() = default;
    ~Link();
    Link(const Link &) = delete;
    Link &operator=(const Link &) = delete;

    // Around each read: where it begins, and the count read, below 0 at an error.
    void before_read(int fd, uint64_t offset, uint64_t n);
    void after_read(int fd, int64_t count);

    // Has a regular file opened, and its first n bytes under way, that is the next input, where files are
    // slow to reach.
    void announce_file(const char *name, uint64_t n);
    // The descriptor of the next input when it was announced under that name, else -1. What was planned for
    // the input before is forgotten.
    int take_announced(const char *name);

 private:
    // After so many the system is asked whether it is worth timing more.
    static constexpr uint64_t kFastReads = 16;

    enum { unknown, local, remote } place_ = unknown;
    uint64_t fast_reads_ = 0;
    LinkCost cost_;
    std::optional<ReadAhead> ahead_;  // of the current input
    double started_ = 0;              // the current read, in seconds of the monotonic clock
    std::string announced_name_;
    int announced_ = -1;
};
