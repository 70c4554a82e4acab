#include "common/file_access.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <string>

#include "common/spool.h"

namespace {

// The one input that may be open at a time, when it had to be spooled.
struct Spooled {
    std::string name;
    int fd = -1;
} spooled;

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

void forget_spooled() {
    if (spooled.fd >= 0) close(spooled.fd);
    spooled = {};
}

}  // namespace

OpenFile open_input(const char *name) {
    forget_spooled();
    int fd = open_named(name);
    if (fd >= 0 && !is_positionable(fd)) {
        spooled = {name, spool(fd)};
        close(fd);
        fd = open_descriptor_again(name);
    }
    return stream_of(fd);
}

int open_descriptor_again(const char *name) {
    if (!spooled.name.empty() && spooled.name == name) return spooled.fd < 0 ? -1 : duplicate(spooled.fd);
    return open_named(name);
}

OpenFile open_again(const char *name) { return stream_of(open_descriptor_again(name)); }

bool can_seek(std::FILE *file, int64_t offset) { return lseek(fileno(file), offset, SEEK_SET) >= 0; }

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
    while (got < n && offset + got <= static_cast<uint64_t>(INT64_MAX)) {
        const ssize_t count =
            pread(fd, static_cast<uint8_t *>(data) + got, n - got, static_cast<off_t>(offset + got));
        if (count < 0 && errno == EINTR) continue;
        if (count <= 0) break;
        got += static_cast<uint64_t>(count);
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
