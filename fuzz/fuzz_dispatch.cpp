// libFuzzer target: the input's first byte chooses the switches and the name's extension, the rest is the
// file. docs/fuzzing.md has the commands.
#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <string>

#include "main/dispatch.h"
#include "mxf/registry.h"

namespace {

constexpr const char *kExtensions[] = {".bin", ".mov", ".tga", ".yuv", ".txt", ".bin", ".bin", ".bin"};

void set_switches(DumpOptions &opts, unsigned choice) {
    opts.verbose = static_cast<int32_t>(choice & 3);
    opts.flag_a = opts.flag_t = static_cast<int32_t>(choice >> 2 & 1);
    opts.flag_p = opts.mxf_flag_x = static_cast<int32_t>(choice >> 3 & 1);
    opts.mxf_flag_l = static_cast<int32_t>(choice >> 4 & 1);
}

struct EndOfDump {};
bool dumping = false;

}  // namespace

// The two places where a dump ends the program end the dump here (linked with --wrap=exit).
extern "C" [[noreturn]] void __real_exit(int status);
extern "C" [[noreturn]] void __wrap_exit(int status) {
    if (dumping) throw EndOfDump();
    __real_exit(status);
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    if (size < 1) return 0;
    // Some dumps open the file again by its name. Memory is where it lies.
    static const std::string base = "/dev/shm/keldump-fuzz-" + std::to_string(getpid());
    const std::string name = base + kExtensions[data[0] >> 5];
    std::FILE *file = std::fopen(name.c_str(), "w+b");
    if (!file) return 0;
    std::fwrite(data + 1, 1, size - 1, file);
    std::fflush(file);
    lseek(fileno(file), 0, SEEK_SET);
    DumpOptions opts{};
    set_switches(opts, data[0]);
    dumping = true;
    try {
        dispatch(opts, file, name.c_str(), 0);
    } catch (const EndOfDump &) {
    }
    dumping = false;
    mxffreedata();
    std::fclose(file);
    unlink(name.c_str());
    return 0;
}
