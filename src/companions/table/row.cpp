#include "companions/table/row.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <iterator>

#include "companions/packing.h"
#include "companions/registers/decode.h"

namespace {

constexpr ColumnRow kColumns[] = {
    {Column::file, "file", ColumnRow::text},
    {Column::format, "format", ColumnRow::text},
    {Column::width, "width", ColumnRow::number},
    {Column::height, "height", ColumnRow::number},
    {Column::bit_depth, "bit_depth", ColumnRow::number},
    {Column::codec, "codec", ColumnRow::text},
    {Column::frame_rate, "frame_rate", ColumnRow::number},
    {Column::duration, "duration", ColumnRow::number},
    {Column::channels, "channels", ColumnRow::number},
    {Column::sample_rate, "sample_rate", ColumnRow::number},
    {Column::timecode, "timecode", ColumnRow::text},
    {Column::keycode, "keycode", ColumnRow::text},
    {Column::reel, "reel", ColumnRow::text},
    {Column::problem, "problem", ColumnRow::text},
    {Column::variant, "variant", ColumnRow::text},
    {Column::rate, "rate", ColumnRow::text},
    {Column::constant_rate, "constant_rate", ColumnRow::truth},
    {Column::frames, "frames", ColumnRow::number},
    {Column::components, "components", ColumnRow::text},
    {Column::floating, "floating", ColumnRow::truth},
    {Column::coded_width, "coded_width", ColumnRow::number},
    {Column::coded_height, "coded_height", ColumnRow::number},
    {Column::scan, "scan", ColumnRow::text},
    {Column::pixel_aspect, "pixel_aspect", ColumnRow::text},
    {Column::display_aspect, "display_aspect", ColumnRow::number},
    {Column::primaries, "primaries", ColumnRow::text},
    {Column::transfer, "transfer", ColumnRow::text},
    {Column::matrix, "matrix", ColumnRow::text},
    {Column::range, "range", ColumnRow::text},
    {Column::video_tracks, "video_tracks", ColumnRow::number},
    {Column::audio_tracks, "audio_tracks", ColumnRow::number},
    {Column::audio_codec, "audio_codec", ColumnRow::text},
    {Column::audio_bits, "audio_bits", ColumnRow::number},
    {Column::audio_layout, "audio_layout", ColumnRow::text},
    {Column::languages, "languages", ColumnRow::text},
    {Column::samples, "samples", ColumnRow::number},
    {Column::timecode_frames, "timecode_frames", ColumnRow::number},
    {Column::timecode_base, "timecode_base", ColumnRow::number},
    {Column::timecode_drop, "timecode_drop", ColumnRow::truth},
    {Column::timecode_end, "timecode_end", ColumnRow::text},
    {Column::timecodes, "timecodes", ColumnRow::text},
    {Column::extent, "extent", ColumnRow::text},
    {Column::bytes_claimed, "bytes_claimed", ColumnRow::number},
    {Column::missing, "missing", ColumnRow::text},
    {Column::writer, "writer", ColumnRow::text},
    {Column::date, "date", ColumnRow::text},
    {Column::size, "size", ColumnRow::number},
    {Column::bit_rate, "bit_rate", ColumnRow::number},
    {Column::first_frame, "first_frame", ColumnRow::text},
    {Column::last_frame, "last_frame", ColumnRow::text},
    {Column::frames_missing, "frames_missing", ColumnRow::number},
    {Column::video_bit_rate, "video_bit_rate", ColumnRow::number},
    {Column::audio_bit_rate, "audio_bit_rate", ColumnRow::number},
    {Column::rotation, "rotation", ColumnRow::number},
};
static_assert(std::size(kColumns) == static_cast<size_t>(Column::count));

std::string positive(uint64_t number) { return number == 0 ? "" : std::to_string(number); }
std::string known(int64_t number) { return number < 0 ? "" : std::to_string(number); }
const char *truth(bool value) { return value ? "true" : "false"; }

// Up to so many decimals, without zeros at the end.
std::string decimals(double number, int most) {
    char text[64];
    std::snprintf(text, sizeof text, "%.*f", most, number);
    std::string trimmed = text;
    if (trimmed.find('.') == std::string::npos) return trimmed;
    trimmed.erase(trimmed.find_last_not_of('0') + 1);
    if (trimmed.ends_with('.')) trimmed.pop_back();
    return trimmed;
}

std::string ratio_text(Ratio ratio, char between) {
    return ratio.is_set() ? std::to_string(ratio.n) + between + std::to_string(ratio.d) : "";
}

const char *scan_text(Scan scan) {
    switch (scan) {
        case Scan::progressive: return "progressive";
        case Scan::interlaced: return "interlaced";
        case Scan::top_first: return "top field first";
        case Scan::bottom_first: return "bottom field first";
        case Scan::unknown: break;
    }
    return "";
}

const char *extent_text(Extent::State state) {
    switch (state) {
        case Extent::whole: return "whole";
        case Extent::cut: return "cut";
        case Extent::open: return "open";
        case Extent::unknown: break;
    }
    return "";
}

// Names of ITU-T H.273 codes, as people say them.
struct ColourName {
    int code;
    const char *name;
};
constexpr ColourName kPrimaries[] = {{1, "BT.709"},     {4, "BT.470M"}, {5, "BT.601 625"}, {6, "BT.601 525"},
                                     {7, "SMPTE 240M"}, {8, "film"},    {9, "BT.2020"},    {10, "XYZ"},
                                     {11, "DCI-P3"},    {12, "P3-D65"}, {22, "EBU 3213"}};
constexpr ColourName kTransfers[] = {
    {1, "BT.709"},      {4, "gamma 2.2"}, {5, "gamma 2.8"},  {6, "BT.601"},
    {7, "SMPTE 240M"},  {8, "linear"},    {9, "log 100:1"},  {10, "log 316:1"},
    {11, "xvYCC"},      {12, "BT.1361"},  {13, "sRGB"},      {14, "BT.2020 10"},
    {15, "BT.2020 12"}, {16, "PQ"},       {17, "SMPTE 428"}, {18, "HLG"}};
constexpr ColourName kMatrices[] = {{0, "RGB"},         {1, "BT.709"},     {4, "FCC"},   {5, "BT.601"},
                                    {6, "BT.601"},      {7, "SMPTE 240M"}, {8, "YCgCo"}, {9, "BT.2020"},
                                    {10, "BT.2020 CL"}, {14, "ICtCp"}};

// 2 is "unspecified".
std::string colour_name(std::span<const ColourName> names, int code) {
    if (code < 0 || code == 2) return "";
    const auto found = std::ranges::find(names, code, &ColourName::code);
    return found == names.end() ? std::to_string(code) : found->name;
}

void add_picture(const Picture &picture, Row &row) {
    row[Column::width] = positive(picture.width);
    row[Column::height] = positive(picture.height);
    row[Column::bit_depth] = positive(picture.bits);
    const bool plain = picture.codec == "uncompressed" && !picture.components.empty();
    row[Column::codec] = plain ? picture.components : picture.codec;
    if (picture.rate.is_set()) row[Column::frame_rate] = decimals(picture.rate.value(), 3);
    row[Column::rate] = ratio_text(picture.rate, '/');
    if (picture.constant_rate) row[Column::constant_rate] = truth(*picture.constant_rate);
    row[Column::frames] = known(picture.shown());
    row[Column::video_bit_rate] = known(picture.bit_rate);
    row[Column::components] = picture.components;
    if (picture.bits > 0) row[Column::floating] = truth(picture.floating);
    row[Column::coded_width] = positive(picture.coded_width ? picture.coded_width : picture.width);
    row[Column::coded_height] = positive(picture.coded_height ? picture.coded_height : picture.height);
    row[Column::scan] = scan_text(picture.scan);
    row[Column::pixel_aspect] = ratio_text(picture.pixel_aspect, ':');
    if (picture.pixel_aspect.is_set() && picture.height > 0)
        row[Column::display_aspect] =
            decimals(picture.width * picture.pixel_aspect.value() / picture.height, 3);
    row[Column::primaries] = colour_name(kPrimaries, picture.colour.primaries);
    row[Column::transfer] = colour_name(kTransfers, picture.colour.transfer);
    row[Column::matrix] = colour_name(kMatrices, picture.colour.matrix);
    if (picture.colour.full_range >= 0) row[Column::range] = picture.colour.full_range ? "full" : "narrow";
}

// The values of all tracks, those that are one joined by "; "; tracks without one say nothing.
template <typename Text>
std::string of_all(const std::vector<Sound> &sounds, Text text) {
    std::vector<std::string> values;
    for (const Sound &sound : sounds) {
        std::string value = text(sound);
        if (!value.empty()) values.push_back(std::move(value));
    }
    const bool all_alike =
        std::ranges::all_of(values, [&](const std::string &value) { return value == values.front(); });
    if (all_alike) return values.empty() ? "" : values.front();
    std::string joined;
    for (const std::string &value : values) append(joined, value, "; ");
    return joined;
}

// What the file says, or what uncompressed samples make.
int64_t bit_rate_of(const Sound &sound) {
    const bool is_plain = sound.codec.starts_with("PCM") || sound.codec.ends_with("-law");
    if (sound.bit_rate >= 0 || !is_plain || sound.bits == 0 || !sound.rate.is_set() || sound.channels == 0)
        return sound.bit_rate;
    const uint32_t stored = (sound.bits + 7) / 8 * 8;
    return std::llround(sound.rate.value() * sound.channels * stored);
}

void add_sounds(const std::vector<Sound> &sounds, Row &row) {
    if (sounds.empty()) return;
    uint64_t channels = 0;
    for (const Sound &sound : sounds) channels += sound.channels;
    row[Column::channels] = positive(channels);
    row[Column::sample_rate] = of_all(sounds, [](const Sound &sound) {
        return sound.rate.is_set() ? decimals(sound.rate.value(), 3) : "";
    });
    row[Column::audio_codec] = of_all(sounds, [](const Sound &sound) { return sound.codec; });
    row[Column::audio_bits] = of_all(sounds, [](const Sound &sound) { return positive(sound.bits); });
    row[Column::audio_layout] = of_all(sounds, [](const Sound &sound) { return sound.layout; });
    std::vector<std::string> languages;
    for (const Sound &sound : sounds) {
        if (!sound.language.empty() && std::ranges::find(languages, sound.language) == languages.end())
            languages.push_back(sound.language);
    }
    for (const std::string &language : languages) append(row[Column::languages], language, "; ");
    row[Column::samples] = of_all(sounds, [](const Sound &sound) { return known(sound.samples); });
    row[Column::audio_bit_rate] = known(bit_rate_of(sounds.front()));
    // Of what has no picture the sound's are the file's.
    if (!row[Column::width].empty() || !row[Column::codec].empty()) return;
    row[Column::codec] = row[Column::audio_codec];
    row[Column::bit_depth] = row[Column::audio_bits];
}

void add_timecodes(const Facts &facts, Row &row) {
    const auto valid = std::ranges::find_if(facts.timecodes, &FileTimecode::is_valid);
    if (valid == facts.timecodes.end()) return;
    const FileTimecode &start = *valid;
    row[Column::timecode] = start.text();
    for (const FileTimecode &timecode : facts.timecodes)
        row[Column::timecodes] +=
            (row[Column::timecodes].empty() ? "" : "; ") + timecode.text() + " " + timecode.place;
    if (start.frames < 0 || start.base == 0) return;
    row[Column::timecode_frames] = std::to_string(start.frames);
    row[Column::timecode_base] = std::to_string(start.base);
    row[Column::timecode_drop] = truth(start.drop);
    const int64_t frames = facts.pictures.empty() ? -1 : facts.pictures.front().shown();
    if (frames > 0) {
        FileTimecode last = start;
        last.frames += frames - 1;
        row[Column::timecode_end] = last.text();
    }
}

double seconds_of(const Facts &facts) {
    return facts.duration.d > 0
               ? static_cast<double>(facts.duration.n) / static_cast<double>(facts.duration.d)
               : -1;
}

}  // namespace

std::span<const ColumnRow> table_columns() { return kColumns; }

std::string grouped(uint64_t number) {
    std::string digits = std::to_string(number);
    for (size_t at = digits.size(); at > 3; at -= 3) digits.insert(at - 3, ",");
    return digits;
}

std::string size_text(uint64_t bytes) {
    constexpr const char *kUnits[] = {"KB", "MB", "GB", "TB", "PB", "EB"};
    if (bytes < 10000) return grouped(bytes) + (bytes == 1 ? " byte" : " bytes");
    double value = static_cast<double>(bytes) / 1000;
    size_t unit = 0;
    while (value >= 999.5 && unit + 1 < std::size(kUnits)) {
        value /= 1000;
        unit++;
    }
    char text[32];
    std::snprintf(text, sizeof text, value < 10 ? "%.1f %s" : "%.0f %s", value, kUnits[unit]);
    return text;
}

std::string problem_of(const Facts &facts) {
    if (!facts.problem.empty()) return facts.problem;
    const Extent &extent = facts.extent;
    if (extent.state == Extent::open) return "open: " + extent.missing;
    if (extent.state != Extent::cut) return "";
    if (extent.claimed <= extent.present) return "cut: " + extent.missing;
    std::string present = size_text(extent.present);
    const std::string claimed = size_text(extent.claimed);
    // A cut of a few bytes does not show in rounded numbers.
    if (present == claimed)
        return "cut: " + grouped(extent.present) + " of " + grouped(extent.claimed) + " bytes, " +
               extent.missing;
    if (present.substr(present.find(' ')) == claimed.substr(claimed.find(' ')))
        present.erase(present.find(' '));
    return "cut: " + present + " of " + claimed + ", " + extent.missing;
}

Row row_of(const Facts &facts, std::string_view file) {
    Row row;
    row.is_known = !facts.format.empty();
    row[Column::file] = file;
    row[Column::format] = facts.format;
    row[Column::variant] = facts.variant;
    if (!facts.pictures.empty()) {
        add_picture(facts.pictures.front(), row);
        row[Column::video_tracks] = std::to_string(facts.pictures.size());
    }
    if (facts.duration.d > 0 || !facts.sounds.empty())
        row[Column::audio_tracks] = std::to_string(facts.sounds.size());
    add_sounds(facts.sounds, row);
    add_timecodes(facts, row);
    const double seconds = seconds_of(facts);
    if (seconds >= 0) {
        char text[64];
        std::snprintf(text, sizeof text, "%.3f", seconds);
        row[Column::duration] = text;
    }
    row[Column::keycode] = facts.keycode;
    row[Column::reel] = facts.reel;
    row[Column::problem] = problem_of(facts);
    row[Column::extent] = extent_text(facts.extent.state);
    row[Column::bytes_claimed] = positive(facts.extent.claimed);
    row[Column::missing] = facts.extent.missing;
    row[Column::writer] = facts.writer;
    row[Column::date] = facts.date;
    row[Column::size] = std::to_string(facts.extent.present);
    row[Column::bit_rate] = known(bit_rate_of(facts.extent.present, facts.duration));
    row.more = facts.more;
    for (auto &[name, value] : row.more) {
        value = with_register_names(value);
        if (name == "rotation" && row[Column::rotation].empty()) row[Column::rotation] = value;
    }
    return row;
}

std::string field_name(const std::string &pattern) {
    const bool is_column = std::ranges::find(kColumns, pattern, &ColumnRow::name) != std::end(kColumns);
    return is_column || pattern == "more" ? "*/" + pattern : pattern;
}

std::string Row::named(std::string_view name) const {
    const auto column = std::ranges::find(kColumns, name, &ColumnRow::name);
    if (column != std::end(kColumns)) return (*this)[column->column];
    std::string joined;
    if (name == "more") {
        for (const auto &[key, value] : more) {
            append(joined, key, "; ");
            joined.append(": ").append(value);
        }
        return joined;
    }
    for (const auto *pairs : {&fields, &more}) {
        for (const auto &[key, value] : *pairs) {
            if (key == name) joined += (joined.empty() ? "" : "; ") + value;
        }
        if (!joined.empty()) break;
    }
    return joined;
}

std::string Row::packed() const {
    std::string out;
    for (const std::string &cell : cells) put_text(out, cell);
    put_pairs(out, more);
    put_pairs(out, fields);
    put_text(out, is_known ? "1" : "");
    return out;
}

Row Row::unpacked(std::string_view text) {
    Row row;
    for (std::string &cell : row.cells) cell = take_text(text);
    row.more = take_pairs(text);
    row.fields = take_pairs(text);
    row.is_known = !take_text(text).empty();
    return row;
}
