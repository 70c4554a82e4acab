#include "common/file_access.h"

#include <fcntl.h>
#include <sys/stat.h>
#ifdef __linux__
#include <sys/vfs.h>
#endif
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstring>
#include <optional>
#include <string>
#include <utility>

#include "common/read_ahead.h"
#include "common/spool.h"

namespace {

// The one input that may be open at a time.
struct Input {
    std::string name;
    int fd = -1;  // of the file, or of what was spooled; the stream's that open_input gave
    enum { unknown, local, remote } place = unknown;
    LinkCost link;
    std::optional<ReadAhead> ahead;
} input;

// The file that is to be opened next, when it was announced.
struct Announced {
    std::string name;
    int fd = -1;
} announced;

OpenFile stream_of(int fd) { return {fd < 0 ? nullptr : fdopen(fd, "rb"), std::fclose}; }

int duplicate(int fd) { return fcntl(fd, F_DUPFD_CLOEXEC, 0); }

// The descriptor that a name stands for: a socket cannot be opened by such a name.
int descriptor_named(const char *name) {
    int fd = -1;
    if (std::strcmp(name, "/dev/stdin") == 0) return 0;
    if (std::sscanf(name, "/dev/fd/%d", &fd) == 1 || std::sscanf(name, "/proc/self/fd/%d", &fd) == 1)
        return fd;
    return -1;
}

int open_named(const char *name) {
    const int fd = open(name, O_RDONLY | O_CLOEXEC);
    return fd < 0 && errno == ENXIO ? duplicate(descriptor_named(name)) : fd;
}

bool is_positionable(int fd) { return lseek(fd, 0, SEEK_CUR) >= 0; }

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

// One request of the system's own size at a time; it waits for none of them.
void announce(int fd, FileRange range) {
    constexpr uint64_t kRequest = 128 << 10;
    for (uint64_t at = range.offset; at < range.end(); at += kRequest) {
        posix_fadvise(fd, static_cast<off_t>(at), static_cast<off_t>(std::min(kRequest, range.end() - at)),
                      POSIX_FADV_WILLNEED);
    }
}

void announce_ahead(int fd, uint64_t offset, uint64_t n) {
    if (!input.ahead) {
        input.ahead.emplace(file_size(fd));
        // The system's own reading ahead would fetch what is skipped.
        posix_fadvise(fd, 0, 0, POSIX_FADV_RANDOM);
    }
    for (const FileRange &range : input.ahead->before_read(offset, n, input.link)) announce(fd, range);
}

using Clock = std::chrono::steady_clock;

void measure(int fd, uint64_t n, Clock::duration time) {
    input.link.measured(n, std::chrono::duration<double>(time).count());
    if (input.link.is_slow() && input.place == Input::unknown) {
        input.place = is_remote(fd) ? Input::remote : Input::local;
    }
}

ssize_t read_once(int fd, void *data, uint64_t n, uint64_t offset) {
    for (;;) {
        const ssize_t count = pread(fd, data, n, static_cast<off_t>(offset));
        if (count >= 0 || errno != EINTR) return count;
    }
}

}  // namespace

void announce_input(const char *name) {
    constexpr FileRange kHead{0, 16384};
    if (input.place != Input::remote || announced.fd >= 0) return;
    struct stat status;
    if (stat(name, &status) != 0 || !S_ISREG(status.st_mode)) return;
    announced = {name, open_named(name)};
    if (announced.fd >= 0) announce(announced.fd, kHead);
}

OpenFile open_input(const char *name) {
    int fd = announced.name == name ? std::exchange(announced.fd, -1) : -1;
    if (fd < 0) fd = open_named(name);
    if (fd >= 0 && !is_positionable(fd)) {
        const int pipe = fd;
        fd = spool(pipe);
        close(pipe);
    }
    input.name = name;
    input.fd = fd;
    input.ahead.reset();
    return stream_of(fd);
}

int open_descriptor_again(const char *name) {
    return input.name == name ? duplicate(input.fd) : open_named(name);
}

OpenFile open_again(const char *name) { return stream_of(open_descriptor_again(name)); }

bool seek_to(std::FILE *file, int64_t offset) { return lseek(fileno(file), offset, SEEK_SET) >= 0; }

uint64_t file_size(int fd) {
    struct stat status;
    if (fstat(fd, &status) != 0) return 0;
    if (S_ISREG(status.st_mode)) return static_cast<uint64_t>(status.st_size);
    if (!S_ISBLK(status.st_mode)) return 0;
    const off_t here = lseek(fd, 0, SEEK_CUR);
    const off_t end = lseek(fd, 0, SEEK_END);
    lseek(fd, here, SEEK_SET);
    return end > 0 ? static_cast<uint64_t>(end) : 0;
}

uint64_t file_size(std::FILE *file) { return file_size(fileno(file)); }

uint64_t read_at(int fd, uint64_t offset, void *data, uint64_t n) {
    uint64_t got = 0;
    if (input.place == Input::remote) announce_ahead(fd, offset, n);
    while (got < n && offset + got <= static_cast<uint64_t>(INT64_MAX)) {
        const auto start = input.place == Input::local ? Clock::time_point() : Clock::now();
        const ssize_t count = read_once(fd, static_cast<uint8_t *>(data) + got, n - got, offset + got);
        if (count <= 0) break;
        got += static_cast<uint64_t>(count);
        if (input.place != Input::local) measure(fd, static_cast<uint64_t>(count), Clock::now() - start);
    }
    return got;
}

uint64_t read_fully(int fd, void *data, uint64_t n) {
    uint64_t got = 0;
    while (got < n) {
        const ssize_t count = read(fd, static_cast<uint8_t *>(data) + got, n - got);
        if (count < 0 && errno == EINTR) continue;
        if (count <= 0) break;
        got += static_cast<uint64_t>(count);
    }
    return got;
}
