// The bound of what a damaged file can make a dump show.
#pragma once

#include <cstdint>

// How much a dump may show. Parts of a file that lie beside each other show every byte once. Lying on each
// other they could show the same bytes without end: after some such rounds nobody learns anything new, and a
// dump of a small file is to stay small.
class Budget {
 public:
    // Of a whole file: eight times its bytes, more than any writer refers to the same ones, and enough for
    // everything that a file of a few bytes can sensibly list.
    explicit Budget(uint64_t file_size) : left_(8 * file_size + 65536) {}
    static Budget of_bytes(uint64_t n) {
        Budget budget(0);
        budget.left_ = n;
        return budget;
    }

    bool spent() const { return left_ == 0; }
    void spend(uint64_t n) { left_ -= n < left_ ? n : left_; }
    // Spends n bytes; false, and nothing is spent, where fewer are left.
    bool take(uint64_t n) {
        if (left_ < n) return false;
        left_ -= n;
        return true;
    }

 private:
    uint64_t left_;
};
