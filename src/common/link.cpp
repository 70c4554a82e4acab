#include "common/link.h"

#include <fcntl.h>
#include <sys/stat.h>
#ifdef __linux__
#include <sys/vfs.h>
#endif
#include <unistd.h>

#include <algorithm>
#include <ctime>
#include <utility>

namespace {

double seconds() {
    timespec now;
    clock_gettime(CLOCK_MONOTONIC, &now);
    return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) * 1e-9;
}

// File systems whose requests go to another machine, or to a process that may pass them on.
bool is_remote(int fd) {
#ifdef __linux__
    struct statfs status;
    if (fstatfs(fd, &status) != 0) return false;
    switch (static_cast<uint32_t>(status.f_type)) {
        case 0x00006969:  // NFS
        case 0x0000517B:  // SMB
        case 0xFE534D42:  // SMB2
        case 0xFF534D42:  // CIFS
        case 0x65735546:  // FUSE
        case 0x01021997:  // 9P
        case 0x5346414F:  // AFS
        case 0x6B414653:
        case 0x00C36400:  // Ceph
        case 0x0BD00BD0:  // Lustre
        case 0x19830326:  // BeeGFS
        case 0x47504653:  // GPFS
        case 0x7461636F:  // OCFS2
        case 0x01161970:  // GFS2
            return true;
        default: return false;
    }
#else
    (void)fd;
    return false;
#endif
}

uint64_t regular_size(int fd) {
    struct stat status;
    return fstat(fd, &status) == 0 && S_ISREG(status.st_mode) ? static_cast<uint64_t>(status.st_size) : 0;
}

// One request of the system's own size at a time; it waits for none of them.
void announce(int fd, FileRange range) {
    constexpr uint64_t kRequest = 128 << 10;
    for (uint64_t at = range.offset; at < range.end(); at += kRequest) {
        posix_fadvise(fd, static_cast<off_t>(at), static_cast<off_t>(std::min(kRequest, range.end() - at)),
                      POSIX_FADV_WILLNEED);
    }
}

}  // namespace

Link::~Link() {
    if (announced_ >= 0) close(announced_);
}

void Link::before_read(int fd, uint64_t offset, uint64_t n) {
    if (place_ == local) return;
    if (place_ == remote) {
        if (!ahead_) {
            ahead_.emplace(regular_size(fd));
            // The system's own reading ahead would fetch what is skipped.
            posix_fadvise(fd, 0, 0, POSIX_FADV_RANDOM);
        }
        for (const FileRange &range : ahead_->before_read(offset, n, cost_)) announce(fd, range);
    }
    started_ = seconds();
}

void Link::after_read(int fd, int64_t count) {
    if (place_ == local || count <= 0) return;
    cost_.measured(static_cast<uint64_t>(count), seconds() - started_);
    if (place_ != unknown || (!cost_.is_slow() && ++fast_reads_ != kFastReads)) return;
    if (!is_remote(fd)) {
        place_ = local;
    } else if (cost_.is_slow()) {
        place_ = remote;
    }
}

void Link::announce_file(const char *name, uint64_t n) {
    if (place_ != remote || announced_ >= 0) return;
    struct stat status;
    if (stat(name, &status) != 0 || !S_ISREG(status.st_mode)) return;
    announced_name_ = name;
    announced_ = open_named(name);
    if (announced_ >= 0) announce(announced_, {0, n});
}

int Link::take_announced(const char *name) {
    ahead_.reset();
    return announced_name_ == name ? std::exchange(announced_, -1) : -1;
}
