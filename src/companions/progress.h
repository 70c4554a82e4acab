// A line on standard error that tells how far a command is.
#pragma once

#include <cstddef>
#include <string>

// "12 of 47 files" when standard error is a terminal and it is wanted.
class Progress {
 public:
    Progress(size_t count, bool shown);
    ~Progress() { clear(); }
    Progress(const Progress &) = delete;
    Progress &operator=(const Progress &) = delete;

    void show(size_t ended);
    // Before other output to the terminal.
    void clear();

 private:
    size_t count_;
    bool shown_;
    bool visible_ = false;
};
