#include "companions/table/sequence.h"

#include <algorithm>
#include <charconv>
#include <cstdio>

namespace {

// What frames of a sequence have in common.
constexpr Column kShared[] = {Column::format, Column::width,      Column::height, Column::bit_depth,
                              Column::codec,  Column::frame_rate, Column::reel};

const char *name_of(Column column) { return table_columns()[static_cast<size_t>(column)].name; }

uint64_t whole_of(const std::string &text) {
    uint64_t number = 0;
    std::from_chars(text.data(), text.data() + text.size(), number);
    return number;
}

// "24000/1001"; not set for anything else.
Ratio ratio_in(const std::string &text) {
    const char *const end = text.data() + text.size();
    Ratio ratio;
    const auto behind = std::from_chars(text.data(), end, ratio.n).ptr;
    if (behind == end || *behind != '/') return {};
    std::from_chars(behind + 1, end, ratio.d);
    return ratio;
}

// "cut: 3 of 7 KB, the picture's end" of many frames is "cut".
std::string kind_of(const std::string &problem) { return problem.starts_with("cut:") ? "cut" : problem; }

}  // namespace

std::string ranges_text(const std::vector<int64_t> &numbers) {
    constexpr size_t kMost = 10;
    std::string text;
    size_t parts = 0;
    for (size_t i = 0; i < numbers.size(); parts++) {
        size_t last = i;
        while (last + 1 < numbers.size() && numbers[last + 1] == numbers[last] + 1) last++;
        if (!text.empty()) text += ", ";
        if (parts == kMost) return text + "...";
        text += std::to_string(numbers[i]);
        if (last > i) text += "-" + std::to_string(numbers[last]);
        i = last + 1;
    }
    return text;
}

void SequenceRow::add_trouble(const std::string &text, int64_t frame) {
    const auto found = std::ranges::find(troubles_, text, &Trouble::text);
    if (found != troubles_.end()) {
        found->frames.push_back(frame);
    } else {
        troubles_.push_back({text, {frame}});
    }
}

void SequenceRow::add(const FrameNumber &number, Row row) {
    size_ += whole_of(row[Column::size]);
    claimed_ += std::max(whole_of(row[Column::size]), whole_of(row[Column::bytes_claimed]));
    if (!row[Column::problem].empty()) add_trouble(kind_of(row[Column::problem]), number.value);
    // A frame without a header has nothing to compare.
    if (row[Column::width].empty() && begun_) return;
    last_timecode_ = row[Column::timecode];
    if (!begun_ || (row_[Column::width].empty() && !row[Column::width].empty())) {
        row_ = std::move(row);
        begun_ = true;
        return;
    }
    const auto differs = [&](Column column) { return row[column] != row_[column]; };
    if (std::ranges::any_of(kShared, differs)) unlike_++;
    for (const Column column : kShared) {
        if (differs(column))
            add_trouble(std::string(name_of(column)) + " " + (row[column].empty() ? "none" : row[column]),
                        number.value);
    }
    if (row_[Column::extent] != row[Column::extent] && row[Column::extent] != "whole")
        row_[Column::extent] = row[Column::extent];
}

Row SequenceRow::finish(const FrameGroup &group, const std::vector<std::string> &list) {
    const auto written = [&](size_t i) {
        return std::string(list[group.files[i]].substr(group.numbers[i].start, group.numbers[i].size));
    };
    const size_t frames = group.files.size();
    const int64_t missing = group.missing();
    Row row = std::move(row_);
    row.is_known = row.is_known || begun_;
    row[Column::file] = group.range_name(list);
    row[Column::frames] = std::to_string(frames);
    row[Column::first_frame] = written(0);
    row[Column::last_frame] = written(frames - 1);
    row[Column::frames_missing] = std::to_string(missing);
    row[Column::size] = std::to_string(size_);
    row[Column::bytes_claimed] = std::to_string(claimed_);
    row[Column::timecode_end] = last_timecode_;
    const Ratio rate = ratio_in(row[Column::rate]);
    if (rate.is_set()) {
        char text[64];
        std::snprintf(text, sizeof text, "%.3f", static_cast<double>(frames) / rate.value());
        row[Column::duration] = text;
    }
    std::string problem;
    if (missing > 0) problem = grouped(static_cast<uint64_t>(missing)) + " missing";
    for (const Trouble &trouble : troubles_) {
        if (!problem.empty()) problem += "; ";
        const bool one = trouble.frames.size() == 1;
        problem += (one ? "frame " : grouped(trouble.frames.size()) + " frames (") +
                   ranges_text(trouble.frames) + (one ? ": " : "): ") + trouble.text;
    }
    row[Column::problem] = problem;
    return row;
}
