#include "main/file_sequence.h"

#include <string>

#include "common/end_of_run.h"
#include "common/input.h"
#include "common/link.h"
#include "common/name_pattern.h"
#include "common/print.h"
#include "common/run.h"
#include "main/dispatch.h"
#include "main/dump.h"
#include "raw/raw.h"

namespace {

// False, behind a line that says so, for a format that is not known.
bool dump_open(DumpOptions &opts, Input &input, int range_flag, bool by_content) {
    if (opts.hex_dump) {
        hexdumpfile(opts, input, opts.hex_start, opts.hex_length);
    } else if (opts.file_dump) {
        dumpfile(opts, input);
    } else if (opts.string_search) {
        stringsearchfile(opts, input);
    } else {
        return dispatch(opts, input, input.name(), range_flag, by_content);
    }
    return true;
}

// The head is read first where the format is to be recognised.
bool open_for_dump(const DumpOptions &opts, Input &input) {
    const bool raw = opts.hex_dump || opts.file_dump || opts.string_search;
    return input.open(raw ? 0 : kDetectionSize);
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

void dump_input(DumpOptions &opts, Input &input, int range_flag) {
    if (open_for_dump(opts, input)) {
        dump_open(opts, input, range_flag, false);
    } else {
        print("Could not open file '%s'\n", input.name());
    }
}

DumpOutcome dump(const char *path, const DumpOptions &options, Listener *listener) {
    Link link;
    Input input(path, &link);
    return dump(input, options, listener);
}

DumpOutcome dump(Input &input, const DumpOptions &options, Listener *listener) {
    const Run run;
    Listening listening_to(listener);
    DumpOptions opts = options;
    DumpOutcome outcome;
    input.give_back();  // a look at what was found last would not be told
    listening_to.to_dump_of(input);
    try {
        if (!open_for_dump(opts, input)) return {DumpOutcome::unopened};
        if (!dump_open(opts, input, 0, true)) outcome.end = DumpOutcome::unknown;
        listening_to.finish();
    } catch (const EndOfRun &end) {
        outcome.status = end.status;
        listening_to.finish();
    }
    return outcome;
}

void dump_files(CommandLine &line) {
    const Run run;
    standard_output.goes_on_without(line.opts.save_frames != 0);
    Link link;
    if (line.range_flag) {
        dump_range(line, link);
    } else {
        dump_named(line.opts, line.name, 0, link, nullptr);
    }
}
