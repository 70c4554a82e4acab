#include "memory_file.h"

#include <fcntl.h>
#include <sanitizer/asan_interface.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdarg>
#include <cstdlib>
#include <cstring>

extern "C" {
int __real_open(const char *name, int flags, ...);
int __real_fstat(int fd, struct stat *status);
off_t __real_lseek(int fd, off_t offset, int whence);
ssize_t __real_read(int fd, void *data, size_t n);
ssize_t __real_pread(int fd, void *data, size_t n, off_t offset);
void *__real_mmap(void *address, size_t n, int protection, int flags, int fd, off_t offset);
int __real_munmap(void *address, size_t n);
int __wrap_open(const char *name, int flags, ...);
int __wrap_fstat(int fd, struct stat *status);
off_t __wrap_lseek(int fd, off_t offset, int whence);
ssize_t __wrap_read(int fd, void *data, size_t n);
ssize_t __wrap_pread(int fd, void *data, size_t n, off_t offset);
void *__wrap_mmap(void *address, size_t n, int protection, int flags, int fd, off_t offset);
int __wrap_munmap(void *address, size_t n);
}

namespace {

const uint8_t *contents;
size_t length;

// Descriptors of the file are real ones, of /dev/null, so that streams can be opened on them and closed.
constexpr int kDescriptors = 64;
struct Descriptor {
    bool in_memory = false;
    off_t position = 0;
};
std::array<Descriptor, kDescriptors> descriptors;

Descriptor *in_memory(int fd) {
    if (fd < 0 || fd >= kDescriptors || !descriptors[static_cast<size_t>(fd)].in_memory) return nullptr;
    return &descriptors[static_cast<size_t>(fd)];
}

// Maps that images gave back, for the next ones: taking a map away costs a flush of the processor's tables.
constexpr size_t kPage = 4096;
constexpr size_t kMapUnit = 128 * 1024;  // a few sizes of maps serve many sizes of images
constexpr size_t kMostPooled = 64 * 1024 * 1024;
struct Map {
    uint8_t *start = nullptr;
    size_t size = 0;
    bool used = false;
};
std::array<Map, 16> maps;
size_t next_victim = 0;

size_t map_size(size_t n) { return (n + kMapUnit - 1) / kMapUnit * kMapUnit; }

Map *new_map(Map &map, size_t size) {
    if (map.start) __real_munmap(map.start, map.size);
    map = {};
    void *start = __real_mmap(nullptr, size, PROT_READ | PROT_WRITE,
                              MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
    if (start == MAP_FAILED) return nullptr;
    map = {static_cast<uint8_t *>(start), size, false};
    return &map;
}

// A map of a size that is not used; null when there is none.
Map *free_map(size_t size) {
    for (Map &map : maps) {
        if (!map.used && map.size == size) return &map;
    }
    for (size_t i = 0; i < maps.size(); i++) {
        Map &map = maps[next_victim++ % maps.size()];
        if (!map.used) return new_map(map, size);
    }
    return nullptr;
}

// Sets the pages that were touched to zero.
void clear(const Map &map) {
    static std::array<unsigned char, kMostPooled / kPage> touched;
    if (mincore(map.start, map.size, touched.data()) != 0) std::abort();
    const unsigned char *const end = touched.data() + map.size / kPage;
    const auto next_from = [end](const unsigned char *p) {
        return static_cast<const unsigned char *>(std::memchr(p, 1, static_cast<size_t>(end - p)));
    };
    for (auto p = next_from(touched.data()); p; p = next_from(p + 1)) {
        std::memset(map.start + (p - touched.data()) * static_cast<ptrdiff_t>(kPage), 0, kPage);
    }
}

}  // namespace

void set_memory_file(const uint8_t *data, size_t size) {
    contents = data;
    length = size;
}

int __wrap_open(const char *name, int flags, ...) {
    if (std::strncmp(name, kMemoryFile, sizeof kMemoryFile - 1) == 0) {
        static const int device = __real_open("/dev/null", O_RDWR | O_CLOEXEC);
        const int fd = dup(device);
        if (fd >= 0 && fd < kDescriptors) descriptors[static_cast<size_t>(fd)] = {true, 0};
        return fd;
    }
    va_list rest;
    va_start(rest, flags);
    const int fd = __real_open(name, flags, va_arg(rest, int));
    va_end(rest);
    if (Descriptor *reused = in_memory(fd)) reused->in_memory = false;
    return fd;
}

int __wrap_fstat(int fd, struct stat *status) {
    if (!in_memory(fd)) return __real_fstat(fd, status);
    *status = {};
    status->st_mode = S_IFREG;
    status->st_size = static_cast<off_t>(length);
    return 0;
}

off_t __wrap_lseek(int fd, off_t offset, int whence) {
    Descriptor *file = in_memory(fd);
    if (!file) return __real_lseek(fd, offset, whence);
    if (whence == SEEK_CUR) offset += file->position;
    if (whence == SEEK_END) offset += static_cast<off_t>(length);
    if (offset < 0) return -1;
    return file->position = offset;
}

ssize_t __wrap_pread(int fd, void *data, size_t n, off_t offset) {
    if (!in_memory(fd)) return __real_pread(fd, data, n, offset);
    if (offset < 0) return -1;
    if (static_cast<size_t>(offset) >= length) return 0;
    n = std::min(n, length - static_cast<size_t>(offset));
    std::memcpy(data, contents + offset, n);
    return static_cast<ssize_t>(n);
}

ssize_t __wrap_read(int fd, void *data, size_t n) {
    Descriptor *file = in_memory(fd);
    if (!file) return __real_read(fd, data, n);
    const ssize_t count = __wrap_pread(fd, data, n, file->position);
    file->position += std::max<ssize_t>(count, 0);
    return count;
}

void *__wrap_mmap(void *address, size_t n, int protection, int flags, int fd, off_t offset) {
    const size_t size = map_size(n);
    Map *map = fd < 0 && size <= kMostPooled ? free_map(size) : nullptr;
    if (!map) return __real_mmap(address, n, protection, flags, fd, offset);
    map->used = true;
    ASAN_POISON_MEMORY_REGION(map->start + n, size - n);
    return map->start;
}

int __wrap_munmap(void *address, size_t n) {
    for (Map &map : maps) {
        if (!map.used || map.start != address) continue;
        ASAN_UNPOISON_MEMORY_REGION(map.start + n, map.size - n);
        clear(map);
        map.used = false;
        return 0;
    }
    return __real_munmap(address, n);
}
