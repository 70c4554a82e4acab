#include "common/file_image.h"

#include <sys/mman.h>

#include <algorithm>
#include <bit>

#include "common/file_access.h"

namespace {

constexpr uint64_t kLargestRun = 256 * 1024;          // bytes of one sequential read at most
constexpr uint64_t kMostResident = 64 * 1024 * 1024;  // bytes in memory before the oldest are given back
constexpr uint64_t kPage = 4096;

}  // namespace

void Bytes::load(uint64_t offset, uint64_t n) const { image_->require(data_ + offset, n); }

FileImage::FileImage(int fd, uint64_t start, uint64_t size, uint32_t block)
    : fd_(fd), start_(start), size_(size), shift_(static_cast<unsigned>(std::countr_zero(block))) {
    if (size_ == 0) return;
    // A 47-bit address space: anything larger cannot be mapped, and the sums below cannot overflow.
    if (size_ >= (uint64_t{1} << 47)) {
        ok_ = false;
        return;
    }
    blocks_ = (size_ + block - 1) >> shift_;
    mapped_ = (blocks_ << shift_) + blocks_;
    void *map =
        mmap(nullptr, mapped_, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
    if (map == MAP_FAILED) {
        ok_ = false;
        return;
    }
    data_ = static_cast<uint8_t *>(map);
    present_ = data_ + (blocks_ << shift_);
}

FileImage::FileImage(std::FILE *file, uint64_t start, uint64_t size, uint32_t block)
    : FileImage(fileno(file), start, size, block) {}

FileImage::FileImage(std::FILE *file) : FileImage(file, 0, file_size(file)) {}

FileImage::~FileImage() {
    if (data_) munmap(data_, mapped_);
}

Bytes FileImage::bytes() {
    Bytes all(data_, data_ ? size_ : 0);
    if (data_) all.image_ = this;
    return all;
}

void FileImage::move_to(uint64_t start) {
    start_ = start;
    ahead_ = 1;
    for (const Run &run : runs_) std::fill_n(present_ + run.block, run.count, uint8_t{0});
    runs_.clear();
    resident_ = 0;
}

void FileImage::require(const uint8_t *p, uint64_t n) {
    const uint64_t offset = static_cast<uint64_t>(p - data_);
    const uint64_t last = (offset + n - 1) >> shift_;
    for (uint64_t block = offset >> shift_; block <= last; block++) {
        if (!present_[block]) read_run(block, last - block + 1);
    }
    if (resident_ > kMostResident) give_back(offset >> shift_, last);
}

// Drops the runs read longest ago, down to half of what may stay; the blocks just asked for remain.
void FileImage::give_back(uint64_t first, uint64_t last) {
    std::deque<Run> kept;
    while (!runs_.empty() && resident_ > kMostResident / 2) {
        const Run run = runs_.front();
        runs_.pop_front();
        if (run.block <= last && first < run.block + run.count) {
            kept.push_back(run);
            continue;
        }
        // Its blocks count as unread; pages that hold nothing else go back to the system.
        std::fill_n(present_ + run.block, run.count, uint8_t{0});
        const uint64_t start = ((run.block << shift_) + kPage - 1) & ~(kPage - 1);
        const uint64_t end = ((run.block + run.count) << shift_) & ~(kPage - 1);
        if (start < end) madvise(data_ + start, end - start, MADV_DONTNEED);
        resident_ -= run.count << shift_;
    }
    runs_.insert(runs_.begin(), kept.begin(), kept.end());
}

// Reads the absent blocks from one on: as many as are needed, more when the file is read in sequence.
void FileImage::read_run(uint64_t block, uint64_t needed) {
    const bool sequential = block > 0 && present_[block - 1];
    const uint64_t ahead = sequential ? ahead_ : 1;
    const uint64_t largest = std::max<uint64_t>(kLargestRun >> shift_, 1);
    uint64_t run = std::min({std::max(ahead, needed), largest, blocks_ - block});
    ahead_ = std::min(run * 2, largest);
    for (uint64_t i = 1; i < run; i++) {
        if (present_[block + i]) run = i;
    }

    const uint64_t offset = block << shift_;
    const uint64_t wanted = std::min(run << shift_, size_ - offset);
    const uint64_t got =
        start_ <= UINT64_MAX - offset ? read_at(fd_, start_ + offset, data_ + offset, wanted) : 0;
    bytes_read_ += got;
    std::fill(data_ + offset + got, data_ + offset + wanted, uint8_t{0});
    std::fill_n(present_ + block, run, uint8_t{1});
    runs_.push_back({block, run});
    resident_ += run << shift_;
}

bool check_buffer(const FileImage &image) {
    if (!image.ok()) std::printf("malloc of buffer %d failed\n", static_cast<int>(image.size()));
    return image.ok();
}
