// TIFF directories (TIFF 6.0, with EXIF, DNG and Photoshop resources).
#pragma once

#include <cstdint>
#include <cstdio>

#include "common/bytes.h"
#include "main/dump_options.h"

// File header and every directory of a TIFF file; with -p the first pixels.
void tiffdump(DumpOptions &opts, std::FILE *file);

// How much of a file its directories may show. Entries, lists and resources that lie beside each other show
// every byte once; lying on each other they could show the same bytes without end.
class TiffBudget {
 public:
    explicit TiffBudget(uint64_t file_size) : left_(8 * file_size + 65536) {}
    bool spent() const { return left_ == 0; }
    void spend(uint64_t n) { left_ -= n < left_ ? n : left_; }

 private:
    uint64_t left_;
};

// One chain of directories with the sub-directories reached from it. Offsets count from the start of `base`.
// The directories of one file share a budget.
void tiffdumpifd(DumpOptions &opts, Bytes base, uint32_t ifd_offset, int big_endian, TiffBudget &budget);
