#include "main/file_sequence.h"

#include <string>

#include "common/input.h"
#include "common/link.h"
#include "common/name_pattern.h"
#include "common/print.h"
#include "main/dispatch.h"
#include "raw/raw.h"

namespace {

bool is_raw_view(const DumpOptions &opts) { return opts.hex_dump || opts.file_dump || opts.string_search; }

void dump_open(DumpOptions &opts, Input &input, int range_flag) {
    if (opts.hex_dump) {
        hexdumpfile(opts, input, opts.hex_start, opts.hex_length);
    } else if (opts.file_dump) {
        dumpfile(opts, input);
    } else if (opts.string_search) {
        stringsearchfile(opts, input);
    } else {
        dispatch(opts, input, input.name(), range_flag);
    }
}

void dump_named(DumpOptions &opts, const char *name, int range_flag, Link &link, const char *next_name) {
    Input input(name, &link);
    if (next_name) link.announce_file(next_name, kDetectionSize);
    dump_input(opts, input, range_flag);
}

// The range's second number counts from the first; negative ones stand for a single frame.
void dump_range(CommandLine &line, Link &link) {
    const auto name_of_frame = [&](int32_t counter) {
        const uint32_t frame = static_cast<uint32_t>(line.start) + static_cast<uint32_t>(counter);
        return name_from_pattern(line.name, static_cast<int32_t>(frame));
    };
    std::string name = name_of_frame(0);
    for (int32_t counter = 0; counter < line.end; counter++) {
        std::string next = name_of_frame(counter + 1);
        dump_named(line.opts, name.c_str(), 1, link, next.c_str());
        name.swap(next);
    }
    dump_named(line.opts, name.c_str(), 1, link, nullptr);
}

}  // namespace

// The head is read first where the format is to be recognised.
void dump_input(DumpOptions &opts, Input &input, int range_flag) {
    if (input.open(is_raw_view(opts) ? 0 : kDetectionSize)) {
        dump_open(opts, input, range_flag);
    } else {
        print("Could not open file '%s'\n", input.name());
    }
}

void dump_files(CommandLine &line) {
    standard_output.goes_on_without(line.opts.save_frames != 0);
    Link link;
    if (line.range_flag) {
        dump_range(line, link);
    } else {
        dump_named(line.opts, line.name, 0, link, nullptr);
    }
}
