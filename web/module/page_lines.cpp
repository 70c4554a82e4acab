#include "page_lines.h"

#include <algorithm>

#include "common/end_of_run.h"
#include "companions/command.h"

namespace {

enum Width : uint32_t { kWidePlaces = 1, kWideNames = 2 };  // of a block's columns
constexpr uint32_t kBlockMark = 0x4B4C4231;                 // "1BLK"
constexpr size_t kFirstLines = 128;
constexpr size_t kMostLines = 64 * 1024;
constexpr size_t kMostText = 4 << 20;
constexpr size_t kLongestLine = 1 << 20;  // longer ones are several
constexpr size_t kLooks = 16;             // lines between two looks at the clock
constexpr std::chrono::milliseconds kInterval(80);

template <typename T>
void append(std::string &out, const std::vector<T> &values) {
    out.append(reinterpret_cast<const char *>(values.data()), values.size() * sizeof(T));
}

// The same in half the room.
template <typename Narrow, typename T>
void append_as(std::string &out, const std::vector<T> &values) {
    append(out, std::vector<Narrow>(values.begin(), values.end()));
}

void append_word(std::string &out, uint32_t word) {
    out.append(reinterpret_cast<const char *>(&word), sizeof word);
}

}  // namespace

PageLines::PageLines(const PageLimits &limits)
    : limits_(limits), block_lines_(kFirstLines), written_(std::chrono::steady_clock::now()) {}

uint32_t PageLines::name_of(const PathElement &element) {
    const auto [known, is_new] =
        known_names_.try_emplace(element.name, static_cast<uint32_t>(known_names_.size() + 1));
    if (is_new) {
        append_word(new_names_, static_cast<uint32_t>(element.name.size()));
        new_names_ += element.name;
    }
    return known->second;
}

void PageLines::begin(const Line &line) {
    places_.place(line, field_);
    name_ = field_.is_labelled ? name_of(*field_.path.back()) : 0;
    if (format_ == "MXF") take_note(line);
    if (line.text.empty()) {
        depth_ = 2;  // at the end of what stands above
    } else if (!line.is_aside) {
        depth_ = static_cast<uint16_t>(field_.path.size() + (field_.is_labelled ? 0 : 1));
    }
}

void PageLines::take_note(const Line &line) {
    const RegisterNote note = registers_.note(line);
    note_ = note.name;
    if (!note.decoded.empty()) note_ += (note_.empty() ? "= " : " = ") + note.decoded;
}

void PageLines::end(const Line &line, uint8_t marks) {
    if (lines_++ < limits_.skip) {
        text_.resize(text_ends_.empty() ? 0 : text_ends_.back());
        return;
    }
    if (line.is_listing) marks |= kListing;
    if (line.is_aside) marks |= kAside;
    if (!line.ends && !line.goes_on) marks |= kOpen;
    const size_t start = text_ends_.empty() ? 0 : text_ends_.back();
    if (text_.size() == start) marks |= kBlank;
    bytes_ += text_.size() - start;
    text_ends_.push_back(static_cast<uint32_t>(text_.size()));
    const bool has_range = !line.at.empty();
    offsets_.push_back(has_range ? static_cast<double>(line.at[0].offset) : 0);
    sizes_.push_back(has_range ? static_cast<double>(line.at[0].size) : 0);
    for (size_t i = 1; i < line.at.size(); i++) {
        more_ranges_.push_back(static_cast<double>(line.at[i].offset));
        more_ranges_.push_back(static_cast<double>(line.at[i].size));
    }
    range_ends_.push_back(static_cast<uint32_t>(more_ranges_.size() / 2));
    names_.push_back(name_);
    if (!note_.empty()) {
        note_lines_.push_back(static_cast<uint32_t>(text_ends_.size() - 1));
        notes_ += note_;
        note_ends_.push_back(static_cast<uint32_t>(notes_.size()));
        note_.clear();
    }
    depths_.push_back(std::max<uint16_t>(depth_, 1));
    marks_.push_back(marks);
    write_due();
    if (lines_ - limits_.skip < limits_.lines && bytes_ < limits_.bytes) return;
    stopped_ = true;
    end_run(0);
}

void PageLines::line(const Line &line) {
    if (stopped_) return;  // the line that ended the run comes once more
    if (!in_line_) begin(line);
    in_line_ = line.goes_on;
    text_ += line.text;
    const size_t start = text_ends_.empty() ? 0 : text_ends_.back();
    if (!line.goes_on) {
        end(line, 0);
    } else if (text_.size() - start > kLongestLine) {
        end(line, kCut);
        name_ = 0;
    }
}

void PageLines::write_due() {
    const size_t lines = text_ends_.size();
    const bool full = lines >= block_lines_ || text_.size() >= kMostText;
    if (!full && (lines % kLooks != 0 || std::chrono::steady_clock::now() - written_ < kInterval)) return;
    write_block(none, 0);
    block_lines_ = std::min(block_lines_ * 4, kMostLines);
    written_ = std::chrono::steady_clock::now();
}

void PageLines::write_block(End end, uint32_t status) {
    std::string out;
    const size_t lines = text_ends_.size();
    const auto is_wide = [](double number) { return number > UINT32_MAX; };
    const uint32_t widths =
        (std::ranges::any_of(offsets_, is_wide) || std::ranges::any_of(sizes_, is_wide) ? kWidePlaces : 0) |
        (known_names_.size() > UINT16_MAX ? kWideNames : 0);
    out.reserve(48 + lines * 31 + more_ranges_.size() * 8 + new_names_.size() + format_.size() +
                text_.size());
    append_word(out, kBlockMark);
    append_word(out, static_cast<uint32_t>(lines));
    append_word(out, static_cast<uint32_t>(text_.size()));
    append_word(out, static_cast<uint32_t>(more_ranges_.size() / 2));
    append_word(out, static_cast<uint32_t>(new_names_.size()));
    append_word(out, static_cast<uint32_t>(format_.size()));
    append_word(out, end);
    append_word(out, status);
    append_word(out, static_cast<uint32_t>(note_lines_.size()));
    append_word(out, static_cast<uint32_t>(notes_.size()));
    append_word(out, widths);
    append_word(out, 0);
    append(out, more_ranges_);
    if (widths & kWidePlaces) {
        append(out, offsets_);
        append(out, sizes_);
    } else {
        append_as<uint32_t>(out, offsets_);
        append_as<uint32_t>(out, sizes_);
    }
    append(out, text_ends_);
    if (!more_ranges_.empty()) append(out, range_ends_);
    if (widths & kWideNames) append(out, names_);
    append(out, note_lines_);
    append(out, note_ends_);
    if (!(widths & kWideNames)) append_as<uint16_t>(out, names_);
    append(out, depths_);
    append(out, marks_);
    out += new_names_;
    out += format_;
    out += text_;
    out += notes_;
    write_out(out);
    offsets_.clear(), sizes_.clear(), more_ranges_.clear();
    text_ends_.clear(), range_ends_.clear(), names_.clear(), depths_.clear(), marks_.clear();
    note_lines_.clear(), note_ends_.clear();
    new_names_.clear(), text_.clear(), notes_.clear();
}

void PageLines::finish(End end, int status) { write_block(end, static_cast<uint32_t>(status)); }
