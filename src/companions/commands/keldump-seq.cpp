// What breaks in sequences of frames.
#include <strings.h>
#include <unistd.h>

#include <algorithm>
#include <set>
#include <string>
#include <vector>

#include "common/name_pattern.h"
#include "companions/arguments.h"
#include "companions/command.h"
#include "companions/files.h"
#include "companions/frame_groups.h"
#include "companions/printing.h"
#include "companions/progress.h"
#include "companions/safe_text.h"
#include "companions/sequence/check.h"
#include "companions/sequence/report.h"
#include "companions/workers.h"
#include "main/facts.h"

namespace {

constexpr char kUsage[] =
    "usage: keldump-seq [--frames FIRST-LAST] [--ignore KIND,...] [--quiet] [--json] [-j N] [--]\n"
    "                   PATTERN|DIRECTORY|FILES\n"
    "\n"
    "Reads the headers of sequences of frames (DPX, Cineon, OpenEXR, TIFF, DNG, JPEG 2000, ARRI) and reports "
    "what\n"
    "breaks: missing frames, files without header or cut short, time codes and keycodes that do not go on "
    "frame by\n"
    "frame, and changes of what should stay the same. One line a finding, one summary a sequence.\n"
    "\n"
    "  --frames FIRST-LAST  the frames that should be there\n"
    "  --ignore KIND,...    leaves out findings: missing, duplicate, padding, unreadable, header, cut, "
    "open,\n"
    "                       timecode, drop, keycode, position, name, user-bits, swapped, repeated, holds, "
    "size,\n"
    "                       format, layout, colour, aspect, rate, reel, creator, text, field, size-field, "
    "trailing\n"
    "  --quiet              only sequences with findings\n"
    "  --json               an array of objects, one a sequence\n"
    "  -j N                 N files at a time (four times as many as there are processors)\n"
    "  PATTERN              a name with one number, e.g. shot.%05d.dpx: all files in its directory that it "
    "makes\n"
    "  DIRECTORY            every sequence of frames in it and below\n"
    "  FILES                sequences by their names, whatever their order\n"
    "\n"
    "Exit status: 0 for clean sequences, 1 when something was found, 2 for trouble.\n";

struct Request {
    SequenceQuestion question;
    bool quiet = false;
    bool json = false;
    unsigned jobs = 4 * core_count();  // on a share most of the time is waiting
    std::vector<std::string> operands;
};

constexpr std::string_view kKinds[] = {
    "missing",  "duplicate", "padding", "unreadable", "header", "cut",        "open",
    "timecode", "drop",      "keycode", "position",   "name",   "user-bits",  "swapped",
    "repeated", "holds",     "size",    "format",     "layout", "colour",     "aspect",
    "rate",     "reel",      "creator", "text",       "field",  "size-field", "trailing",
};

// Says which name is none.
bool are_kinds(const std::vector<std::string> &names) {
    for (const std::string &name : names) {
        if (std::ranges::find(kKinds, name) != std::end(kKinds)) continue;
        std::string message = "--ignore " + safe_name(name) + ": no kind of finding; there are";
        for (const std::string_view kind : kKinds) message += " " + std::string(kind);
        complain(message);
        return false;
    }
    return true;
}

bool parse(Arguments arguments, Request &request) {
    std::string value;
    while (arguments.next()) {
        if (arguments.is("--quiet")) {
            request.quiet = true;
        } else if (arguments.is("--json")) {
            request.json = true;
        } else if (arguments.takes("--ignore", value)) {
            add_names(value, request.question.ignored);
            if (!arguments.failed() && !are_kinds(request.question.ignored)) return false;
        } else if (arguments.takes("--frames", value)) {
            if (!arguments.failed() && !parse_frames(value, request.question)) return arguments.refuse();
        } else if (!arguments.takes_jobs(request.jobs)) {
            return arguments.refuse();
        }
    }
    request.operands = arguments.operands();
    return !arguments.failed() && !request.operands.empty();
}

bool any_name(std::string_view) { return true; }

bool is_frame_name(std::string_view path) {
    constexpr const char *kExtensions[] = {".dpx", ".cin", ".cineon", ".exr", ".tif", ".tiff",
                                           ".dng", ".jp2", ".j2k",    ".j2c", ".jpc", ".ari"};
    const std::string_view name = path.substr(path.rfind('/') + 1);
    const size_t dot = name.rfind('.');
    if (dot == std::string_view::npos || dot == 0) return false;
    const std::string extension(name.substr(dot));
    return std::ranges::any_of(kExtensions,
                               [&](const char *known) { return strcasecmp(extension.c_str(), known) == 0; });
}

// The files of its directory that a pattern makes.
std::vector<std::string> files_of_pattern(const std::string &pattern) {
    const std::string directory = pattern.substr(0, pattern.rfind('/') + 1);
    std::vector<std::string> files;
    for (const std::string &name : names_in(directory.empty() ? "." : directory)) {
        const std::string file = directory + name;
        for (const FrameNumber &number : numbers_of(file)) {
            if (number.value <= INT32_MAX && number.value >= INT32_MIN &&
                file == name_from_pattern(pattern.c_str(), static_cast<int32_t>(number.value))) {
                files.push_back(file);
                break;
            }
        }
    }
    return files;
}

// Whether a pattern makes names that have the number that is put in.
bool counts_frames(const std::string &pattern) {
    constexpr int32_t kProbe = 1234567;
    const std::string name = name_from_pattern(pattern.c_str(), kProbe);
    return std::ranges::any_of(numbers_of(name),
                               [](const FrameNumber &number) { return number.value == kProbe; });
}

// Adds the files that an operand stands for; false, behind a message, where some cannot be told.
bool add_operand(const std::string &operand, std::vector<std::string> &files) {
    const auto refuse = [&](const char *why) {
        complain(safe_name(operand) + ": " + why);
        return false;
    };
    const size_t before = files.size();
    bool complete = true;
    if (is_there(operand)) {
        const bool directory = is_directory(operand);
        const FileList list = list_files({operand});
        complete = !report_problems(list);
        std::ranges::copy_if(list.files, std::back_inserter(files),
                             [&](const std::string &file) { return !directory || is_frame_name(file); });
    } else if (operand.find('%') == std::string::npos || !valid_name_pattern(operand.c_str())) {
        return refuse("No such file or directory");
    } else if (!counts_frames(operand)) {
        return refuse("its names have no decimal number (%d)");
    } else {
        const std::vector<std::string> made = files_of_pattern(operand);
        files.insert(files.end(), made.begin(), made.end());
    }
    return files.size() == before && complete ? refuse("no frames") : complete;
}

// Judges each sequence when its last frame is read.
class Sequences : public JobsReader {
 public:
    // `told`: the user says what the frames are.
    Sequences(const Request &request, const std::vector<std::string> &files,
              const std::vector<FrameGroup> &groups, bool told)
        : request_(request),
          files_(files),
          groups_(groups),
          told_(told),
          progress_(files.size(), !isatty(STDOUT_FILENO)) {
        if (request.json) write_out("[");
    }

    void out(size_t, std::string_view text) override { packed_ += text; }
    void complain(size_t, const std::string &message) override { death_ = message; }
    void progress(size_t ended) override { progress_.show(ended); }

    void done(size_t, int, const std::string &death) override {
        const FrameGroup &group = groups_[group_];
        const size_t place = frames_.size();
        SequenceFrame frame = unpacked_frame(packed_, names_);
        if (!death.empty() || !death_.empty()) frame.problem = names_.number(death.empty() ? death_ : death);
        frame.number = group.numbers[place].value;
        frame.digits = static_cast<uint16_t>(group.numbers[place].size);
        frames_.push_back(frame);
        packed_.clear();
        death_.clear();
        if (frames_.size() == group.files.size()) end_group(group);
    }

    bool finish() {
        progress_.clear();
        if (request_.json) write_out(given_ > 0 ? "\n]\n" : "]\n");
        return clean_;
    }

 private:
    void end_group(const FrameGroup &group) {
        std::vector<uint32_t> pictures;
        for (const SequenceFrame &frame : frames_) pictures.push_back(picture_of(frame, names_));
        if (told_ || are_frames(group.numbers, pictures)) {
            judge(frames_, group.stem(), group.is_numbered);
        } else {
            for (size_t i = 0; i < frames_.size(); i++) judge({frames_[i]}, files_[group.files[i]], false);
        }
        frames_.clear();
        names_ = SharedNames();
        group_++;
    }

    void judge(const std::vector<SequenceFrame> &frames, const std::string &name, bool is_numbered) {
        SequenceQuestion question = request_.question;
        question.numbered = is_numbered;
        const SequenceReport report = check_sequence(frames, names_, question);
        const bool shown = !request_.quiet || !report.findings.empty();
        clean_ = clean_ && report.findings.empty();
        progress_.clear();
        if (shown && request_.json) write_out((given_++ > 0 ? ",\n" : "\n") + report_json(name, report));
        if (shown && !request_.json) write_out(report_text(name, report, is_numbered));
    }

    const Request &request_;
    const std::vector<std::string> &files_;
    const std::vector<FrameGroup> &groups_;
    bool told_;
    Progress progress_;
    size_t group_ = 0;
    SharedNames names_;
    std::vector<SequenceFrame> frames_;  // of the group, so far
    std::string packed_;
    std::string death_;
    size_t given_ = 0;
    bool clean_ = true;
};

}  // namespace

int main(int argc, char **argv) {
    start_companion("keldump-seq");
    if (answered(argc, argv, kUsage)) return kFine;
    Request request;
    if (!parse({argc, argv}, request)) return usage_error(kUsage);
    std::vector<std::string> files;
    bool complete = true;
    for (const std::string &operand : request.operands) complete = add_operand(operand, files) && complete;
    // A file counts once, however often it is named.
    std::set<std::string> seen;
    std::erase_if(files, [&](const std::string &file) { return !seen.insert(file).second; });

    const bool told = request.question.wanted || std::ranges::none_of(request.operands, is_there);
    const std::vector<FrameGroup> groups = group_frames(files, any_name, told);
    std::vector<size_t> order;
    for (const FrameGroup &group : groups) order.insert(order.end(), group.files.begin(), group.files.end());
    Sequences sequences(request, files, groups, told);
    run_jobs(
        order.size(), request.jobs,
        [&](size_t index, JobOutput &output) {
            output.out(packed_frame(facts(files[order[index]].c_str())));
            return kFine;
        },
        sequences);
    const bool clean = sequences.finish();
    if (!complete) return kTrouble;
    return clean ? kFine : kFound;
}
