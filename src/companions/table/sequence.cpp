#include "companions/table/sequence.h"

#include <algorithm>
#include <charconv>
#include <cstdio>
#include <iterator>
#include <map>
#include <set>
#include <utility>

namespace {

// What frames of a sequence have in common: first the kind of picture.
constexpr Column kSharedColumns[] = {
    Column::format,       Column::width,     Column::height,   Column::bit_depth, Column::codec,
    Column::components,   Column::floating,  Column::scan,     Column::range,     Column::frame_rate,
    Column::pixel_aspect, Column::primaries, Column::transfer, Column::matrix,    Column::reel};
constexpr size_t kPicture = 6;
constexpr size_t kCodec = 4;
constexpr size_t kComponents = 5;

// What each frame has for itself.
constexpr Column kOfStart[] = {Column::timecode,      Column::timecode_frames, Column::timecode_base,
                               Column::timecode_drop, Column::timecodes,       Column::keycode,
                               Column::date};

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
        troubles_.push_back({text, {frame}, false});
    }
}

void SequenceRow::add_fields(const Row &row) {
    constexpr int64_t kMostValues = 100;
    for (const auto &field : row.fields) {
        if (std::ranges::find(fields_, field) != fields_.end()) continue;
        const int64_t n =
            std::ranges::count_if(fields_, [&](const auto &f) { return f.first == field.first; });
        if (n <= kMostValues) fields_.emplace_back(field.first, n < kMostValues ? field.second : "...");
    }
}

void SequenceRow::add(const FrameNumber &number, Row row) {
    constexpr size_t kMostKinds = 16;
    if (!numbers_.empty() && numbers_.back().value == number.value)
        add_trouble("another file with that number", number.value);
    numbers_.push_back(number);
    size_ += whole_of(row[Column::size]);
    claimed_ += std::max(whole_of(row[Column::size]), whole_of(row[Column::bytes_claimed]));
    add_fields(row);
    if (!row[Column::problem].empty()) add_trouble(kind_of(row[Column::problem]), number.value);
    // Whole are those that all are, cut those of which one is.
    const std::string &extent = row[Column::extent];
    if (numbers_.size() == 1 || (extent == "cut" && extent_ != "cut") ||
        (extent != "whole" && extent_ == "whole")) {
        extent_ = extent;
        missing_ = row[Column::missing];
    }
    // A frame without a header has nothing to compare.
    if (row[Column::width].empty()) {
        pictures_.push_back(0);
        if (numbers_.size() == 1) first_ = std::move(row);
        return;
    }
    last_timecode_ = row[Column::timecode];
    Frame frame{number.value, {}};
    std::string picture;
    for (size_t i = 0; i < kShared; i++) {
        frame.values[i] = texts_.number(row[kSharedColumns[i]]);
        if (i < kPicture) picture += std::to_string(frame.values[i]) + " ";
    }
    pictures_.push_back(texts_.number(picture));
    frames_.push_back(frame);
    if (!has_header_) first_ = row;
    has_header_ = true;
    const bool is_known =
        std::ranges::find(kinds_, frame.values, &std::pair<Values, Row>::first) != kinds_.end();
    if (!is_known && kinds_.size() < kMostKinds) kinds_.emplace_back(frame.values, std::move(row));
}

bool SequenceRow::are_frames() const { return ::are_frames(numbers_, pictures_); }

// The most frequent value of each column, of several the first.
SequenceRow::Values SequenceRow::usual_values() const {
    Values usual{};
    for (size_t i = 0; i < kShared; i++) {
        std::map<uint32_t, size_t> counts;
        for (const Frame &frame : frames_) counts[frame.values[i]]++;
        size_t most = 0;
        for (const Frame &frame : frames_) {
            if (counts[frame.values[i]] <= most) continue;
            most = counts[frame.values[i]];
            usual[i] = frame.values[i];
        }
    }
    return usual;
}

void SequenceRow::find_unlike(const Values &usual) {
    constexpr size_t kMostValues = 8;
    for (size_t i = 0; i < kShared; i++) {
        const char *const name = name_of(kSharedColumns[i]);
        std::set<uint32_t> values;
        for (const Frame &frame : frames_) values.insert(frame.values[i]);
        if (values.size() > kMostValues) {
            troubles_.push_back(
                {grouped(values.size()) + " values of " + name, {frames_.front().number}, true});
            continue;
        }
        for (const Frame &frame : frames_) {
            // The codec of what is not compressed is its components.
            const bool is_said = i == kComponents && frame.values[kCodec] == frame.values[kComponents] &&
                                 frame.values[kCodec] != usual[kCodec];
            if (frame.values[i] == usual[i] || is_said) continue;
            const std::string &value = texts_.name(frame.values[i]);
            add_trouble(std::string(name) + " " + (value.empty() ? "none" : value), frame.number);
        }
    }
    std::ranges::stable_sort(troubles_, {}, [](const Trouble &trouble) { return trouble.frames.front(); });
}

// A frame's row that says what most do.
Row SequenceRow::usual_row(const Values &usual) const {
    if (kinds_.empty()) return first_;
    const auto alike = [&](const std::pair<Values, Row> &kind) {
        size_t count = 0;
        for (size_t i = 0; i < kShared; i++) count += kind.first[i] == usual[i] ? 1 : 0;
        return count;
    };
    Row row = std::ranges::max_element(kinds_, {}, alike)->second;
    for (size_t i = 0; i < kShared; i++) row[kSharedColumns[i]] = texts_.name(usual[i]);
    for (const Column column : kOfStart) row[column] = first_[column];
    return row;
}

Row SequenceRow::finish(const FrameGroup &group, const std::vector<std::string> &list) {
    const size_t frames = group.files.size();
    const int64_t missing = group.missing();
    static_assert(std::size(kSharedColumns) == kShared);
    const Values usual = usual_values();
    find_unlike(usual);
    Row row = usual_row(usual);
    row.is_known = true;
    row.fields = fields_;
    row[Column::extent] = extent_;
    row[Column::missing] = missing_;
    row[Column::file] = group.range_name(list);
    row[Column::frames] = std::to_string(frames);
    row[Column::first_frame] = group.written(0, list);
    row[Column::last_frame] = group.written(frames - 1, list);
    row[Column::frames_missing] = std::to_string(missing);
    row[Column::size] = std::to_string(size_);
    row[Column::bytes_claimed] = std::to_string(claimed_);
    row[Column::timecode_end] = last_timecode_;
    const Ratio rate = ratio_in(row[Column::rate]);
    if (rate.is_set()) {
        char text[64];
        std::snprintf(text, sizeof text, "%.3f", static_cast<double>(frames) / rate.value());
        row[Column::duration] = text;
        const int64_t bits = bit_rate_of(size_, {static_cast<int64_t>(frames) * rate.d, rate.n});
        if (bits >= 0) row[Column::bit_rate] = std::to_string(bits);
    }
    std::string problem;
    if (missing > 0) problem = grouped(static_cast<uint64_t>(missing)) + " missing";
    const Trouble *before = nullptr;
    for (const Trouble &trouble : troubles_) {
        const bool same =
            before && !trouble.is_of_all && !before->is_of_all && before->frames == trouble.frames;
        before = &trouble;
        if (same) {
            problem += ", " + trouble.text;
            continue;
        }
        if (!problem.empty()) problem += "; ";
        if (trouble.is_of_all) {
            problem += trouble.text;
            continue;
        }
        const bool one = trouble.frames.size() == 1;
        problem += (one ? "frame " : grouped(trouble.frames.size()) + " frames (") +
                   ranges_text(trouble.frames) + (one ? ": " : "): ") + trouble.text;
    }
    row[Column::problem] = problem;
    return row;
}
