// The entries of the page's list. Packed rows and names come and go by companions/packing.h.
#include <unistd.h>

#include <iterator>
#include <string>
#include <string_view>
#include <vector>

#include "companions/command.h"
#include "companions/frame_groups.h"
#include "companions/json/json.h"
#include "companions/packing.h"
#include "companions/sequence/frame.h"
#include "companions/table/odd.h"
#include "companions/table/output.h"
#include "companions/table/terminal.h"
#include "main/facts.h"
#include "page_table.h"

namespace {

constexpr double kAlike = 0.6;  // files that must agree where others are odd: a list may hold anything

}  // namespace

std::string read_input() {
    std::string text;
    char block[64 * 1024];
    for (ssize_t n = 0; (n = read(STDIN_FILENO, block, sizeof block)) > 0;)
        text.append(block, static_cast<size_t>(n));
    return text;
}

std::string json_text(std::string_view text) {
    std::string json;
    append_json(json, text, true);
    return json;
}

std::string given(const Row &row) {
    const std::string shown[] = {row[Column::format], picture_size(row),      row[Column::frame_rate],
                                 row[Column::codec],  row[Column::bit_depth], duration_text(row),
                                 sound_text(row),     start_text(row),        row[Column::reel],
                                 row[Column::problem]};
    const Selection selection{{"width", "height", "frame_rate", "bit_depth", "duration", "channels"}, {}};
    std::string json = "{\"cells\": [";
    for (const std::string &text : shown) json += (&text == shown ? "" : ", ") + json_text(text);
    json += "], \"known\": ";
    json += row.is_known ? "true" : "false";
    json += ", \"numbers\": " + json_object(row, selection) + "}";
    std::string out;
    put_text(out, json);
    put_text(out, row.packed());
    return out;
}

// Names, each behind its size, as groups of files: [[name, [number of a file, ...]], ...].
int page_groups_main(int, char **) {
    const std::string input = read_input();
    std::vector<std::string> names;
    for (std::string_view left = input; !left.empty();) names.push_back(take_text(left));
    std::string json = "[";
    for (const FrameGroup &group : group_frames(names, is_still_name)) {
        json += json.size() > 1 ? ",\n[" : "[";
        json += json_text(group.files.size() > 1 ? group.range_name(names) : names[group.first]) + ", [";
        for (const size_t &file : group.files)
            json += (&file == group.files.data() ? "" : ", ") + std::to_string(file);
        json += "]]";
    }
    write_out(json + "]");
    return kFine;
}

// The rows of files: of each what the page shows, the row itself, and what counts where it is a frame of
// many.
int page_rows_main(int argc, char **argv) {
    for (int i = 1; i < argc; i++) {
        const Facts known = facts(argv[i]);
        std::string out = given(row_of(known, argv[i]));
        put_text(out, packed_frame(known));
        write_out(out);
    }
    return kFine;
}

// What is odd among rows: [[number of the row, [remark, ...]], ...].
int page_odd_main(int, char **) {
    const std::string input = read_input();
    std::vector<Row> rows;
    for (std::string_view left = input; !left.empty();) rows.push_back(Row::unpacked(take_text(left)));
    std::string json = "[";
    for (const OddRow &odd : find_odd(rows, {}, kAlike).rows) {
        if (odd.remarks.empty()) continue;
        json += json.size() > 1 ? ",\n[" : "[";
        json += std::to_string(odd.row) + ", [";
        for (const std::string &remark : odd.remarks)
            json += (&remark == odd.remarks.data() ? "" : ", ") + json_text(remark);
        json += "]]";
    }
    write_out(json + "]");
    return kFine;
}
