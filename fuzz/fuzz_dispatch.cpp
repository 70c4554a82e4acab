// libFuzzer target: the input's first two bytes choose the switches and the name's extension, the rest is the
// file. docs/fuzzing.md has the commands.
#include <cstdint>
#include <cstdio>
#include <string>

#include "main/file_sequence.h"
#include "memory_file.h"
#include "mxf/registry.h"

namespace {

constexpr size_t kSwitchBytes = 2;
constexpr const char *kExtensions[] = {".bin", ".mov", ".tga", ".yuv", ".txt", ".yuv10", ".yuv16", ".bin"};

// Fields of a number, from the lowest bit on.
class Choices {
 public:
    explicit Choices(unsigned number) : number_(number) {}
    int32_t next(unsigned bits) {
        const unsigned field = number_ & ((1u << bits) - 1);
        number_ >>= bits;
        return static_cast<int32_t>(field);
    }

 private:
    unsigned number_;
};

CommandLine command_line(Choices choices) {
    CommandLine line{};
    DumpOptions &opts = line.opts;
    opts.verbose = choices.next(2);
    opts.flag_a = opts.flag_t = choices.next(1);
    opts.flag_p = opts.mxf_flag_x = choices.next(1);
    opts.mxf_flag_l = choices.next(1);
    static const std::string base = kMemoryFile;
    static std::string name;
    name = base + kExtensions[choices.next(3)];
    line.name = name.c_str();

    line.range_flag = choices.next(1);
    opts.mxf_flag_c = choices.next(1);
    opts.save_frames = choices.next(1);
    std::snprintf(opts.frame_name_pattern, sizeof opts.frame_name_pattern, "/dev/null");
    opts.flag_u = opts.hex_no_offsets = choices.next(1);
    switch (choices.next(4)) {
        case 1: opts.hex_dump = 1; break;
        case 2: opts.file_dump = 1; break;
        case 3: opts.string_search = 1; break;
        default: break;
    }
    return line;
}

// Output goes nowhere, without a system call, through a buffer as large as the program's.
void discard_output() {
    static char buffer[64 * 1024];
    const cookie_io_functions_t nowhere{
        nullptr, [](void *, const char *, size_t n) { return static_cast<ssize_t>(n); }, nullptr, nullptr};
    stdout = fopencookie(nullptr, "w", nowhere);
    std::setvbuf(stdout, buffer, _IOFBF, sizeof buffer);
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

// Freed memory is still kept from reuse for the time of many inputs, but not for so long that every
// allocation touches new pages.
extern "C" const char *__asan_default_options() {
    return "quarantine_size_mb=8:malloc_context_size=8:allocator_release_to_os_interval_ms=-1";
}

extern "C" int LLVMFuzzerInitialize(int *, char ***) {
    discard_output();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    if (size < kSwitchBytes) return 0;
    set_memory_file(data + kSwitchBytes, size - kSwitchBytes);
    CommandLine line = command_line(Choices(data[0] | unsigned{data[1]} << 8));
    dumping = true;
    try {
        dump_files(line);
    } catch (const EndOfDump &) {
    }
    dumping = false;
    mxffreedata();
    return 0;
}
