// The bound of what a damaged file can make a dump show.
#pragma once

#include <cstdint>

// How much of a file a dump may show. Parts that lie beside each other show every byte once; lying on each
// other they could show the same bytes without end.
class Budget {
 public:
    explicit Budget(uint64_t file_size) : left_(8 * file_size + 65536) {}
    bool spent() const { return left_ == 0; }
    void spend(uint64_t n) { left_ -= n < left_ ? n : left_; }

 private:
    uint64_t left_;
};
