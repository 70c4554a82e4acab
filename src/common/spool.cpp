#include "common/spool.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/types.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <string>

namespace {

constexpr uint64_t kBlock = 1 << 20;
constexpr uint64_t kMostInMemory = uint64_t{1} << 30;

int nameless_file() {
    const char *configured = std::getenv("TMPDIR");
    const std::string directory = configured && *configured ? configured : "/tmp";
#ifdef O_TMPFILE
    const int nameless = open(directory.c_str(), O_TMPFILE | O_RDWR | O_CLOEXEC, 0600);
    if (nameless >= 0) return nameless;
#endif
    // No signal may end the run while the file has a name.
    sigset_t all;
    sigset_t before;
    sigfillset(&all);
    sigprocmask(SIG_SETMASK, &all, &before);
    std::string name = directory + "/keldump-XXXXXX";
    const int fd = mkstemp(name.data());
    if (fd >= 0) unlink(name.c_str());
    sigprocmask(SIG_SETMASK, &before, nullptr);
    return fd;
}

// Up to n bytes, waiting for them where the descriptor does not; 0 at the end or at an error.
uint64_t read_some(int fd, uint8_t *data, uint64_t n) {
    for (;;) {
        const ssize_t count = ::read(fd, data, static_cast<size_t>(n));
        if (count >= 0) return static_cast<uint64_t>(count);
        if (errno == EAGAIN || errno == EWOULDBLOCK) {
            pollfd ready{fd, POLLIN, 0};
            poll(&ready, 1, -1);
        } else if (errno != EINTR) {
            return 0;
        }
    }
}

// The bytes written at an offset, fewer than n where no more could be.
uint64_t write_at(int fd, uint64_t offset, const uint8_t *data, uint64_t n) {
    uint64_t written = 0;
    while (written < n) {
        const ssize_t count = pwrite(fd, data + written, static_cast<size_t>(n - written),
                                     static_cast<off_t>(offset + written));
        if (count < 0 && errno == EINTR) continue;
        if (count <= 0) break;
        written += static_cast<uint64_t>(count);
    }
    return written;
}

}  // namespace

bool Spool::take(int pipe) {
    fd_ = nameless_file();
    disk_is_full_ = fd_ < 0;
    std::vector<uint8_t> block(kBlock);
    while (const uint64_t count = read_some(pipe, block.data(), kBlock)) {
        if (!add(block.data(), count)) return false;
    }
    return true;
}

Spool::~Spool() {
    if (fd_ >= 0) close(fd_);
}

bool Spool::add(const uint8_t *data, uint64_t n) {
    if (!disk_is_full_) {
        const uint64_t written = write_at(fd_, on_disk_, data, n);
        on_disk_ += written;
        data += written;
        n -= written;
        disk_is_full_ = n > 0;
    }
    if (in_memory_ + n > kMostInMemory) return false;
    while (n > 0) {
        const uint64_t inside = in_memory_ % kBlock;
        if (inside == 0) blocks_.emplace_back(kBlock);
        const uint64_t part = std::min(n, kBlock - inside);
        std::memcpy(blocks_.back().data() + inside, data, static_cast<size_t>(part));
        in_memory_ += part;
        data += part;
        n -= part;
    }
    return true;
}

int64_t Spool::read(uint64_t offset, void *data, uint64_t n) const {
    if (offset < on_disk_) {
        const uint64_t part = std::min(n, on_disk_ - offset);
        for (;;) {
            const ssize_t count = pread(fd_, data, static_cast<size_t>(part), static_cast<off_t>(offset));
            if (count >= 0 || errno != EINTR) return count;
        }
    }
    const uint64_t place = offset - on_disk_;
    if (place >= in_memory_) return 0;
    const uint64_t part = std::min({n, in_memory_ - place, kBlock - place % kBlock});
    const uint8_t *block = blocks_[static_cast<size_t>(place / kBlock)].data();
    std::memcpy(data, block + place % kBlock, static_cast<size_t>(part));
    return static_cast<int64_t>(part);
}
