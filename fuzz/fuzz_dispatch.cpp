// libFuzzer target: the input's first two bytes choose the switches and the name's extension, the rest is the
// file. Every second input is heard by a listener. docs/fuzzing.md has the commands.
#include <cstdint>
#include <cstdio>

#include "common/end_of_run.h"
#include "common/input.h"
#include "common/print.h"
#include "common/run.h"
#include "companions/lines/lines.h"
#include "main/facts.h"
#include "main/file_sequence.h"

namespace {

constexpr size_t kSwitchBytes = 2;
constexpr const char *kNames[] = {"f.bin", "f.mov", "f.tga", "f.yuv", "f.txt", "f.yuv10", "f.yuv16", "f.bin"};

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

struct Choice {
    DumpOptions opts{};
    const char *name = "";
    int range_flag = 0;
};

Choice chosen(Choices choices) {
    Choice choice;
    DumpOptions &opts = choice.opts;
    opts.verbose = choices.next(2);
    opts.flag_a = opts.flag_t = choices.next(1);
    opts.flag_p = opts.mxf_flag_x = choices.next(1);
    opts.mxf_flag_l = choices.next(1);
    choice.name = kNames[choices.next(3)];

    choice.range_flag = choices.next(1);
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
    return choice;
}

// Looks at all that a listener is told.
struct Ear : Listener {
    LinePlaces places;
    FieldLine field;

    void line(const Line &line) override { places.place(line, field); }
};

}  // namespace

// Freed memory is still kept from reuse for the time of many inputs, but not for so long that every
// allocation touches new pages.
extern "C" const char *__asan_default_options() {
    return "quarantine_size_mb=8:malloc_context_size=8:allocator_release_to_os_interval_ms=-1";
}

extern "C" int LLVMFuzzerInitialize(int *, char ***) {
    standard_output.discard();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    if (size < kSwitchBytes) return 0;
    Choice choice = chosen(Choices(data[0] | unsigned{data[1]} << 8));
    const Run run;
    Ear ear;
    Listening listening_to(size % 2 ? &ear : nullptr);
    Input input(choice.name, data + kSwitchBytes, size - kSwitchBytes);
    listening_to.to_dump_of(input);
    try {
        dump_input(choice.opts, input, choice.range_flag);
        listening_to.finish();
    } catch (const EndOfRun &) {
    }
    facts(input);
    return 0;
}
