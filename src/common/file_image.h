// A range of a file as one buffer of which only the touched blocks are read.
#pragma once

#include <cstdint>
#include <cstdio>
#include <deque>

#include "common/bytes.h"

// The buffer is address space, not memory: an anonymous map without reservation, so that an image of a
// 100 GB file costs nothing until it is looked at. A block is read with pread when one of its bytes is first
// touched; sequential use reads larger and larger runs, and what was read long ago is given back, so that
// even a dump of all of a huge file stays in some 64 MiB. (A span or text of an image is therefore to be used
// before another 32 MiB of it are read.) Bytes beyond the end of the file, behind a read error or lost by a
// file that shrinks are 0.
class FileImage {
 public:
    static constexpr uint32_t kBlock = 4096;

    // start and size in bytes; `block` (a power of two) is the smallest read. Images with blocks below 4096
    // bytes keep all that they read: they are for ranges of which little is touched.
    FileImage(int fd, uint64_t start, uint64_t size, uint32_t block = kBlock);
    FileImage(std::FILE *file, uint64_t start, uint64_t size, uint32_t block = kBlock);
    explicit FileImage(std::FILE *file);  // the whole file
    ~FileImage();
    FileImage(const FileImage &) = delete;
    FileImage &operator=(const FileImage &) = delete;

    bool ok() const { return ok_; }  // false: the address space could not be had, and every byte is 0
    uint64_t size() const { return size_; }
    uint64_t bytes_read() const { return bytes_read_; }
    Bytes bytes();

    // Turns to another range of the same size without taking new memory; what was read is forgotten.
    void move_to(uint64_t start);

 private:
    friend class Bytes;
    void require(const uint8_t *p, uint64_t n);
    void read_run(uint64_t block, uint64_t needed);
    void give_back(uint64_t first, uint64_t last);

    struct Run {
        uint64_t block;
        uint64_t count;
    };

    int fd_;
    uint64_t start_;
    uint64_t size_;
    unsigned shift_;  // log2 of the block size
    uint64_t blocks_ = 0;
    uint64_t mapped_ = 0;  // bytes of the map: the buffer, then one byte a block that says "read"
    uint8_t *data_ = nullptr;
    uint8_t *present_ = nullptr;
    uint64_t bytes_read_ = 0;
    uint64_t ahead_ = 1;  // blocks of the next sequential read
    bool ok_ = true;
    std::deque<Run> runs_;  // what is in memory, oldest first
    uint64_t resident_ = 0;
};

// False, behind the line "malloc of buffer %d failed" with the size, where an image could not get its buffer.
bool check_buffer(const FileImage &image);
