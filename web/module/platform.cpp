// What WASI lacks in its library: names that are absolute, or begin with "..", reach its system as they are.
#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <wasi/libc-nocwd.h>

#include <cerrno>

namespace {

constexpr int kFirstDirectory = 3;  // the shim takes names below it as it would take them anywhere

}  // namespace

// Instead of the library's functions, by the linker.
extern "C" {

int __wrap_open(const char *name, int flags, ...) {
    return __wasilibc_nocwd_openat_nomode(kFirstDirectory, name, flags);
}
DIR *__wrap_opendir(const char *name) { return __wasilibc_nocwd_opendirat(kFirstDirectory, name); }
int __wrap_stat(const char *name, struct stat *status) {
    return __wasilibc_nocwd_fstatat(kFirstDirectory, name, status, 0);
}
int __wrap_lstat(const char *name, struct stat *status) {
    return __wasilibc_nocwd_fstatat(kFirstDirectory, name, status, AT_SYMLINK_NOFOLLOW);
}

// Where the native library has other words. EIDRM is what the page says of a file that changed.
char *__real_strerror(int error);
char *__wrap_strerror(int error) {
    const auto text = [](const char *words) { return const_cast<char *>(words); };
    switch (error) {
        case EIDRM: return text("changed, or can no longer be read");
        case EIO: return text("Input/output error");
        case ELOOP: return text("Too many levels of symbolic links");
        case EMFILE: return text("Too many open files");
        case ENAMETOOLONG: return text("File name too long");
        case ENOMEM: return text("Cannot allocate memory");
        default: return __real_strerror(error);
    }
}

}  // extern "C"
