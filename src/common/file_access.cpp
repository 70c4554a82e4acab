#include "common/file_access.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

OpenFile open_again(const char *name) {
    const int fd = open(name, O_RDONLY | O_CLOEXEC | O_NONBLOCK);
    return {fd < 0 ? nullptr : fdopen(fd, "rb"), std::fclose};
}

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
