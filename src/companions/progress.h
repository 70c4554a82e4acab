// How far a run over many files is, on standard error when that is a terminal.
#pragma once

#include <chrono>
#include <cstddef>
#include <mutex>

class Progress {
 public:
    // Shown unless the run prints its answers to the same terminal while it goes on.
    Progress(size_t count, bool shown);
    // One more file is done. Safe from any thread.
    void step();
    // Removes the line, so that something else can be printed.
    void clear();

 private:
    const size_t count_;
    const bool shown_;
    std::mutex mutex_;
    size_t done_ = 0;
    bool visible_ = false;
    std::chrono::steady_clock::time_point next_{};
};
