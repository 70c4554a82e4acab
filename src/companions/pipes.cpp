#include "companions/pipes.h"

#include <unistd.h>

#include <cerrno>

bool write_whole(int fd, const char *data, size_t n) {
    while (n > 0) {
        const ssize_t count = write(fd, data, n);
        if (count < 0 && errno == EINTR) continue;
        if (count <= 0) return false;
        data += count;
        n -= static_cast<size_t>(count);
    }
    return true;
}

bool read_whole(int fd, char *data, size_t n) {
    while (n > 0) {
        const ssize_t count = read(fd, data, n);
        if (count < 0 && errno == EINTR) continue;
        if (count <= 0) return false;
        data += count;
        n -= static_cast<size_t>(count);
    }
    return true;
}
