// The entries of the page for sequences. Names, rows and frames come packed by companions/packing.h.
#include <algorithm>
#include <string>
#include <string_view>
#include <vector>

#include "companions/arguments.h"
#include "companions/command.h"
#include "companions/frame_groups.h"
#include "companions/packing.h"
#include "companions/safe_text.h"
#include "companions/sequence/check.h"
#include "companions/sequence/report.h"
#include "companions/table/sequence.h"
#include "page_table.h"

namespace {

bool is_sequence(const std::vector<FrameGroup> &groups) {
    return groups.size() == 1 && groups[0].is_numbered;
}

// The place of the first frame that has a number, or one behind it.
size_t place_of(const FrameGroup &group, int64_t number) {
    const auto at = std::ranges::lower_bound(group.numbers, number, {}, &FrameNumber::value);
    return std::min<size_t>(static_cast<size_t>(at - group.numbers.begin()), group.numbers.size() - 1);
}

// {"name": what each line begins with, "text": what keldump-seq says, "findings": [[kind, place of its first
// frame], ...] of the lines but the last}.
std::string report_of(const FrameGroup &group, const std::vector<std::string> &frames,
                      const SequenceQuestion &question) {
    SharedNames names;
    std::vector<SequenceFrame> list;
    for (size_t i = 0; i < group.files.size(); i++) {
        SequenceFrame frame = unpacked_frame(frames[group.files[i]], names);
        frame.number = group.numbers[i].value;
        frame.digits = static_cast<uint16_t>(group.numbers[i].size);
        list.push_back(frame);
    }
    const SequenceReport report = check_sequence(list, names, question);
    std::string json = "{\"name\": " + json_text(safe_name(group.stem())) +
                       ", \"text\": " + json_text(report_text(group.stem(), report, true)) +
                       ", \"findings\": [";
    for (const Finding &finding : report.findings) {
        json += (&finding == report.findings.data() ? "[" : ", [") + json_text(finding.kind) + ", " +
                std::to_string(place_of(group, finding.first)) + "]";
    }
    return json + "]}";
}

}  // namespace

// The row of a sequence, of the names, the rows and the frames of its files, and its report; nothing where
// they are no frames of one.
int page_sequence_main(int, char **) {
    const std::string input = read_input();
    std::vector<std::string> names;
    std::vector<std::string> rows;
    std::vector<std::string> frames;
    for (std::string_view left = input; !left.empty();) {
        names.push_back(take_text(left));
        rows.push_back(take_text(left));
        frames.push_back(take_text(left));
    }
    const std::vector<FrameGroup> groups = group_frames(names, is_still_name);
    if (!is_sequence(groups)) return kFound;
    SequenceRow sequence;
    for (size_t i = 0; i < names.size(); i++)
        sequence.add(groups[0].numbers[i], Row::unpacked(rows[groups[0].files[i]]));
    if (!sequence.are_frames()) return kFound;
    std::string out = given(sequence.finish(groups[0], names));
    put_text(out, report_of(groups[0], frames, {}));
    write_out(out);
    return kFine;
}

// The report of a sequence, of the names and the frames of its files: [--frames FIRST-LAST] [--ignore
// KIND,...] as keldump-seq has them.
int page_report_main(int argc, char **argv) {
    SequenceQuestion question;
    std::string value;
    for (Arguments arguments(argc, argv); arguments.next();) {
        if (arguments.takes("--ignore", value)) {
            add_names(value, question.ignored);
        } else if (!arguments.takes("--frames", value) || !parse_frames(value, question)) {
            return kTrouble;
        }
    }
    const std::string input = read_input();
    std::vector<std::string> names;
    std::vector<std::string> frames;
    for (std::string_view left = input; !left.empty();) {
        names.push_back(take_text(left));
        frames.push_back(take_text(left));
    }
    const std::vector<FrameGroup> groups = group_frames(names, is_still_name);
    if (!is_sequence(groups)) return kFound;
    write_out(report_of(groups[0], frames, question));
    return kFine;
}
