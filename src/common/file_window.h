// An image that slides over a file.
#pragma once

#include <cstdint>
#include <cstdio>

#include "common/file_image.h"

// For walks from chunk to chunk, which look at little of each. Chunks that lie close together share what was
// read.
class FileWindow {
 public:
    // `size`: the bytes that can be looked at from one position on, in blocks as those of an image.
    FileWindow(int fd, uint64_t size, uint32_t block = FileImage::kBlock)
        : size_(size), image_(fd, 0, size + kShared, block) {}
    FileWindow(std::FILE *file, uint64_t size, uint32_t block = FileImage::kBlock)
        : FileWindow(fileno(file), size, block) {}

    bool ok() const { return image_.ok(); }
    // The bytes from a position of the file on, zeros beyond its end. What earlier calls gave may be gone.
    Bytes at(uint64_t position) {
        if (position < start_ || position - start_ > kShared) {
            start_ = position;
            image_.move_to(position);
        }
        return image_.bytes().sub(position - start_, size_);
    }

 private:
    static constexpr uint64_t kShared = 1 << 20;

    uint64_t size_;
    FileImage image_;
    uint64_t start_ = 0;
};
