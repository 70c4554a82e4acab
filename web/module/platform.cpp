// What WASI lacks in its library: names that are absolute, or begin with "..", reach its system as they are.
#include <fcntl.h>
#include <wasi/libc-nocwd.h>

namespace {

constexpr int kFirstDirectory = 3;  // the shim takes names below it as it would take them anywhere

}  // namespace

// Instead of open(), by the linker.
extern "C" int __wrap_open(const char *name, int flags, ...) {
    return __wasilibc_nocwd_openat_nomode(kFirstDirectory, name, flags);
}
