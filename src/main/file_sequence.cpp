#include "main/file_sequence.h"

#include <cstdio>

#include "common/file_access.h"
#include "common/name_pattern.h"
#include "main/dispatch.h"
#include "raw/raw.h"

namespace {

constexpr size_t kNameSize = 4096;

void dump_file(DumpOptions &opts, const char *name, int range_flag, const char *next_name) {
    const OpenFile file = open_input(name);
    if (next_name) announce_input(next_name);
    if (!file) {
        std::printf("Could not open file '%s'\n", name);
    } else if (opts.hex_dump) {
        hexdumpfile(opts, file.get(), opts.hex_start, opts.hex_length);
    } else if (opts.file_dump) {
        dumpfile(opts, file.get());
    } else if (opts.string_search) {
        stringsearchfile(opts, file.get());
    } else {
        dispatch(opts, file.get(), name, range_flag);
    }
}

// The range's second number counts from the first; negative ones stand for a single frame.
void dump_range(CommandLine &line) {
    char names[2][kNameSize];  // of the frame and of the next one, in turn
    const auto name_of_frame = [&](int32_t counter) {
        const uint32_t frame = static_cast<uint32_t>(line.start) + static_cast<uint32_t>(counter);
        char *name = names[counter & 1];
        expand_name_pattern(name, kNameSize, line.name, static_cast<int32_t>(frame));
        return name;
    };
    const char *name = name_of_frame(0);
    for (int32_t counter = 0;; counter++) {
        const char *next = counter < line.end ? name_of_frame(counter + 1) : nullptr;
        dump_file(line.opts, name, 1, next);
        if (!next) return;
        name = next;
    }
}

}  // namespace

void dump_files(CommandLine &line) {
    if (line.range_flag) {
        dump_range(line);
        return;
    }
    char name[kNameSize];
    std::snprintf(name, sizeof name, "%s", line.name);
    dump_file(line.opts, name, 0, nullptr);
}
