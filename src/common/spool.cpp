#include "common/spool.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/types.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <vector>

#include "common/file_access.h"

namespace {

constexpr size_t kBlock = 1 << 20;
constexpr uint64_t kMostInMemory = uint64_t{256} << 20;

int memory_file() {
#ifdef MFD_CLOEXEC
    return memfd_create("keldump input", MFD_CLOEXEC);
#else
    return -1;
#endif
}

int disk_file() {
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

// Whether all n bytes were written at an offset.
bool write_at(int fd, uint64_t offset, const uint8_t *data, size_t n) {
    while (n > 0) {
        const ssize_t count = pwrite(fd, data, n, static_cast<off_t>(offset));
        if (count < 0 && errno == EINTR) continue;
        if (count <= 0) return false;
        data += count;
        offset += static_cast<uint64_t>(count);
        n -= static_cast<size_t>(count);
    }
    return true;
}

// Moves the bytes written so far to a file on disk; false, and all stays as it is, where it cannot hold them.
bool move_to_disk(int &fd, uint64_t size) {
    const int disk = disk_file();
    if (disk < 0) return false;
    std::vector<uint8_t> block(kBlock);
    for (uint64_t done = 0; done < size;) {
        const uint64_t count = read_at(fd, done, block.data(), block.size());
        if (count == 0 || !write_at(disk, done, block.data(), count)) {
            close(disk);
            return false;
        }
        done += count;
    }
    close(fd);
    fd = disk;
    return true;
}

}  // namespace

int spool(int input) {
    int fd = memory_file();
    bool may_move = fd >= 0;
    if (fd < 0) fd = disk_file();
    if (fd < 0) return -1;
    std::vector<uint8_t> block(kBlock);
    uint64_t size = 0;
    while (const uint64_t count = read_fully(input, block.data(), block.size())) {
        bool written =
            (!may_move || size + count <= kMostInMemory) && write_at(fd, size, block.data(), count);
        if (!written && may_move) {
            may_move = false;
            written = move_to_disk(fd, size) && write_at(fd, size, block.data(), count);
        }
        if (!written) {
            close(fd);
            return -1;
        }
        size += count;
    }
    return fd;
}
