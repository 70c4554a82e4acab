#include "companions/sequence/frame.h"

#include <algorithm>
#include <charconv>
#include <cstdlib>
#include <iterator>

#include "common/timecode.h"
#include "companions/table/row.h"

namespace {

// SharedNames of `more` that are no properties: they count with the frames, or are told as problems.
constexpr const char *kVarying[] = {"file name",    "frame position", "user bits",
                                    "keycode text", "image number",   "frame id"};

std::string ratio_text(Ratio ratio) { return ratio.is_set() ? number_text(ratio.value(), 5) : ""; }

std::string more_of(const Facts &facts, std::string_view name) {
    const auto found = std::ranges::find(facts.more, name, &std::pair<std::string, std::string>::first);
    return found == facts.more.end() ? "" : found->second;
}

std::string size_of(uint32_t width, uint32_t height) {
    return std::to_string(width) + "x" + std::to_string(height);
}

// What was not read for that says nothing.
bool is_header_cut(const Extent &extent) {
    return extent.state == Extent::cut &&
           (extent.missing == "the header's end" || extent.missing.ends_with("the directory"));
}

TextPairs properties_of(const Facts &facts) {
    TextPairs properties{{"format", facts.format}, {"variant", facts.variant}};
    const auto add = [&](const char *name, std::string value) {
        properties.emplace_back(name, std::move(value));
    };
    const Row row = row_of(facts, "");
    const Picture &picture = facts.pictures.front();
    add("codec", picture.codec);
    add("size", size_of(picture.width, picture.height));
    if (picture.coded_width > 0) add("coded size", size_of(picture.coded_width, picture.coded_height));
    for (const ColumnRow &column : table_columns()) {
        switch (column.column) {
            case Column::bit_depth:
            case Column::components:
            case Column::scan:
            case Column::pixel_aspect:
            case Column::matrix:
            case Column::range:
            case Column::reel: add(column.name, row[column.column]); break;
            default: break;
        }
    }
    if (more_of(facts, "transfer").empty()) add("transfer", row[Column::transfer]);
    if (more_of(facts, "colorimetric").empty()) add("primaries", row[Column::primaries]);
    add("frame_rate", row[Column::frame_rate]);
    add("creator", facts.writer);
    for (const auto &[name, value] : facts.more) {
        if (std::ranges::find(kVarying, name) == std::end(kVarying)) add(name.c_str(), value);
    }
    properties.insert(properties.end(), facts.held.begin(), facts.held.end());
    return properties;
}

template <typename Number>
Number number_in(std::string_view text, Number otherwise, int base = 10) {
    Number number = otherwise;
    std::from_chars(text.data(), text.data() + text.size(), number, base);
    return number;
}

// Takes the last number out of a name.
void take_name(const std::string &name, SequenceFrame &frame, SharedNames &names) {
    constexpr const char *kDigits = "0123456789";
    const size_t dot = name.rfind('.');
    const size_t last = name.find_last_of(kDigits, dot == 0 || dot == std::string::npos ? dot : dot - 1);
    if (last == std::string::npos) {
        frame.name_rest = names.number(name);
        return;
    }
    const size_t before = name.find_last_not_of(kDigits, last);
    const size_t first = before == std::string::npos ? 0 : before + 1;
    frame.name_number = number_in<int64_t>(std::string_view(name).substr(first, last + 1 - first), -1);
    frame.name_rest = names.number(name.substr(0, first) + "#" + name.substr(last + 1));
}

// "02 24 123456 7890+12".
Keycode keycode_in(const std::string &text, SharedNames &names) {
    const size_t plus = text.find('+');
    const size_t blank = text.rfind(' ', plus);
    Keycode keycode;
    if (blank == std::string::npos) return keycode;
    keycode.roll = names.number(text.substr(0, blank));
    keycode.count = number_in<int32_t>(std::string_view(text).substr(blank + 1), -1);
    if (plus != std::string::npos)
        keycode.offset = number_in<int32_t>(std::string_view(text).substr(plus + 1), -1);
    return keycode;
}

std::string empty_size(const Picture &picture) {
    if (picture.width > 0 && picture.height > 0) return "";
    return "the header has size " + size_of(picture.width, picture.height);
}

}  // namespace

std::string packed_frame(const Facts &facts) {
    std::string packed;
    const bool has_header = !facts.pictures.empty() && !is_header_cut(facts.extent);
    std::string problem = problem_of(facts);
    put_text(packed, has_header ? "1" : "");
    if (problem.empty() && !has_header) problem = "no picture";
    if (problem.empty()) problem = empty_size(facts.pictures.front());
    put_text(packed, problem);
    put_text(packed, std::to_string(facts.extent.present));
    if (!has_header) return packed;
    uint32_t bcd = kNoTimecode;
    if (!facts.timecodes.empty()) {
        const FileTimecode &timecode = facts.timecodes.front();
        bcd = timecode.bcd;
        if (bcd == kNoTimecode && timecode.is_valid() && timecode.frames >= 0)
            bcd = timecode_of(timecode.frames, {timecode.base, timecode.drop});
    }
    put_text(packed, std::to_string(bcd));
    put_text(packed, ratio_text(facts.pictures.front().rate));
    put_text(packed, facts.keycode);
    put_text(packed, more_of(facts, "frame position"));
    put_text(packed, more_of(facts, "file name"));
    put_text(packed, more_of(facts, "user bits"));
    put_text(packed, more_of(facts, "keycode text"));
    std::string properties;
    put_pairs(properties, properties_of(facts));
    put_text(packed, properties);
    return packed;
}

SequenceFrame unpacked_frame(std::string_view packed, SharedNames &names) {
    SequenceFrame frame;
    frame.has_header = !take_text(packed).empty();
    std::string problem = take_text(packed);
    frame.problem = names.number(problem);
    frame.bytes = number_in<uint64_t>(take_text(packed), 0);
    if (!frame.has_header) return frame;
    frame.timecode = number_in<uint32_t>(take_text(packed), kNoTimecode);
    frame.rate = std::strtof(take_text(packed).c_str(), nullptr);
    frame.keycode = keycode_in(take_text(packed), names);
    frame.position = number_in<int64_t>(take_text(packed), -1);
    take_name(take_text(packed), frame, names);
    frame.user_bits = number_in<uint32_t>(take_text(packed), kNoTimecode, 16);
    const std::string odd_keycode = take_text(packed);
    if (!odd_keycode.empty() && problem.empty())
        frame.problem = names.number("keycode '" + odd_keycode + "' is not valid");
    frame.properties = names.number(take_text(packed));
    return frame;
}

TextPairs properties_of(const SequenceFrame &frame, const SharedNames &names) {
    std::string_view packed = names.name(frame.properties);
    return take_pairs(packed);
}

uint32_t picture_of(const SequenceFrame &frame, SharedNames &names) {
    if (!frame.has_header) return 0;
    constexpr std::string_view kNames[] = {"format", "size", "bit_depth", "codec", "components"};
    std::string picture;
    for (const auto &[name, value] : properties_of(frame, names)) {
        if (std::ranges::find(kNames, name) == std::end(kNames)) continue;
        picture.append(name).append("=").append(value).append(" ");
    }
    return names.number(picture);
}
