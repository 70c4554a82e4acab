#include "common/input.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>

#include "common/link.h"
#include "common/print.h"
#include "common/spool.h"

namespace {

Input *current_input = nullptr;

// The descriptor that a name stands for: a socket cannot be opened by such a name.
int descriptor_named(const char *name) {
    int fd = -1;
    if (std::strcmp(name, "/dev/stdin") == 0) return 0;
    if (std::sscanf(name, "/dev/fd/%d", &fd) == 1 || std::sscanf(name, "/proc/self/fd/%d", &fd) == 1)
        return fd;
    return -1;
}

int64_t pread_once(int fd, void *data, uint64_t n, uint64_t offset) {
    for (;;) {
        const ssize_t count = pread(fd, data, static_cast<size_t>(n), static_cast<off_t>(offset));
        if (count >= 0 || errno != EINTR) return count;
    }
}

}  // namespace

int open_named(const char *name) {
    const int fd = ::open(name, O_RDONLY | O_CLOEXEC);
    return fd < 0 && errno == ENXIO ? fcntl(descriptor_named(name), F_DUPFD_CLOEXEC, 0) : fd;
}

Input::Input(const char *name, Link *link) : name_(name), link_(link), outer_(current_input), cache_(*this) {
    current_input = this;
    if (link_) fd_ = link_->take_announced(name);
    if (fd_ < 0) fd_ = open_named(name);
    failed_ = fd_ < 0;
}

Input::Input(const char *name, const void *data, uint64_t size)
    : name_(name),
      outer_(current_input),
      memory_(data, size),
      sized_(true),
      size_(size),
      known_end_(size),
      cache_(*this) {
    current_input = this;
}

Input::~Input() {
    delete spool_;
    if (fd_ >= 0) close(fd_);
    current_input = outer_;
}

Input *Input::current() { return current_input; }

bool Input::open(uint64_t n) {
    if (failed_) return false;
    if (n > 0) {
        bytes(0, n, static_cast<uint32_t>(n));
    } else {
        size();
    }
    return !failed_;
}

uint64_t Input::find_size() {
    if (failed_) return size_;
    sized_ = true;
    struct stat status;
    if (fstat(fd_, &status) != 0) return 0;
    if (S_ISREG(status.st_mode)) {
        size_ = static_cast<uint64_t>(status.st_size);
        if (size_ > 0) known_end_ = std::min(known_end_, size_);
    } else if (S_ISBLK(status.st_mode)) {
        const off_t end = lseek(fd_, 0, SEEK_END);
        size_ = end > 0 ? static_cast<uint64_t>(end) : 0;
    } else if (lseek(fd_, 0, SEEK_CUR) < 0 && errno == ESPIPE) {
        spool();
    }
    return size_;
}

Bytes Input::bytes(uint64_t start, uint64_t size, uint32_t block) {
    if (size > 0) cache_.load(start, block, block);
    return {cache_, start, size, block};
}

Bytes Input::present(uint64_t start, uint64_t n, uint32_t block) {
    uint64_t there = 0;
    while (there < n) {
        const uint64_t piece = cache_.load(start + there, n - there, block);
        if (piece == 0) break;
        there += std::min(piece, n - there);
    }
    return {cache_, start, there, block};
}

bool Input::has_place(int64_t offset) {
    if (offset >= 0 && (fd_ < 0 || static_cast<uint64_t>(offset) <= size())) return true;
    return fd_ >= 0 && lseek(fd_, offset, SEEK_SET) >= 0;
}

uint64_t Input::read(uint64_t offset, void *data, uint64_t n) {
    uint64_t got = 0;
    while (got < n && offset + got < known_end_) {
        const int64_t count = read_some(offset + got, static_cast<uint8_t *>(data) + got, n - got);
        reads_++;
        if (count <= 0) {
            known_end_ = std::min(known_end_, offset + got);
            break;
        }
        got += static_cast<uint64_t>(count);
    }
    bytes_read_ += got;
    return got;
}

int64_t Input::read_some(uint64_t offset, void *data, uint64_t n) {
    if (spool_) return spool_->read(offset, data, n);
    if (fd_ >= 0) return read_file(offset, data, n);
    const Bytes rest = memory_.from(offset);
    n = std::min(n, rest.size());
    if (n > 0) std::memcpy(data, rest.span(0, n).data(), static_cast<size_t>(n));
    return static_cast<int64_t>(n);
}

// The first read shows whether the file can be positioned.
int64_t Input::read_file(uint64_t offset, void *data, uint64_t n) {
    if (link_) link_->before_read(fd_, offset, n);
    const int64_t count = pread_once(fd_, data, n, offset);
    if (count < 0 && errno == ESPIPE) return spool() ? spool_->read(offset, data, n) : -1;
    if (link_) link_->after_read(fd_, count);
    return count;
}

bool Input::spool() {
    spool_ = new Spool;
    if (!spool_->take(fd_)) {
        delete spool_;
        spool_ = nullptr;
    }
    failed_ = !spool_;
    close(fd_);
    fd_ = -1;
    sized_ = true;
    size_ = spool_ ? spool_->size() : 0;
    known_end_ = size_;
    return !failed_;
}

NamedInput::NamedInput(const char *name) : input_(Input::current()) {
    if (input_ && std::strcmp(input_->name(), name) == 0) return;
    opened_ = new Input(name);
    input_ = opened_->open() ? opened_ : nullptr;
}

NamedInput::~NamedInput() { delete opened_; }

bool check_buffer(uint64_t size) {
    if (is_addressable(size)) return true;
    print("malloc of buffer %d failed\n", static_cast<int>(size));
    return false;
}
