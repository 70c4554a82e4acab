#include "main/file_sequence.h"

#include <cstdio>

#include "common/file_access.h"
#include "common/name_pattern.h"
#include "main/dispatch.h"
#include "raw/raw.h"

namespace {

constexpr size_t kNameSize = 4096;

void dump_file(DumpOptions &opts, const char *name, int range_flag) {
    const OpenFile file = open_input(name);
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

}  // namespace

void dump_files(CommandLine &line) {
    char name[kNameSize];
    if (!line.range_flag) {
        std::snprintf(name, sizeof name, "%s", line.name);
        dump_file(line.opts, name, 0);
        return;
    }
    // The range's second number counts from the first; negative ones stand for a single frame.
    for (int32_t counter = 0;; counter++) {
        const uint32_t frame = static_cast<uint32_t>(line.start) + static_cast<uint32_t>(counter);
        expand_name_pattern(name, sizeof name, line.name, static_cast<int32_t>(frame));
        dump_file(line.opts, name, 1);
        if (counter >= line.end) return;
    }
}
