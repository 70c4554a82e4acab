#include "companions/diff/facts.h"

#include <algorithm>
#include <charconv>
#include <iterator>
#include <span>

#include "common/timecode.h"
#include "companions/registers/decode.h"
#include "companions/table/row.h"

namespace {

struct FactRow {
    Column column;
    const char *name;
    const char *unit = "";
};
constexpr FactRow kPictureFacts[] = {
    {Column::coded_width, "stored width"},
    {Column::coded_height, "stored height"},
    {Column::codec, "codec"},
    {Column::components, "components"},
    {Column::bit_depth, "bits"},
    {Column::floating, "floating point"},
    {Column::frame_rate, "rate"},
    {Column::video_bit_rate, "bit rate", " b/s"},
    {Column::constant_rate, "constant rate"},
    {Column::scan, "scan"},
    {Column::pixel_aspect, "pixel aspect"},
    {Column::primaries, "primaries"},
    {Column::transfer, "transfer"},
    {Column::matrix, "matrix"},
    {Column::range, "range"},
};
constexpr FactRow kSoundFacts[] = {
    {Column::channels, "channels"},
    {Column::sample_rate, "sample rate"},
    {Column::audio_codec, "sound codec"},
    {Column::audio_bits, "sound bits"},
    {Column::audio_layout, "sound layout"},
    {Column::languages, "language"},
    {Column::audio_bit_rate, "sound bit rate", " b/s"},
};
constexpr FactRow kFirstFacts[] = {{Column::format, "format"}, {Column::variant, "kind"}};
constexpr FactRow kLastFacts[] = {
    {Column::duration, "duration", " s"}, {Column::keycode, "keycode"},   {Column::reel, "reel"},
    {Column::problem, "problem"},         {Column::writer, "written by"},
};
constexpr FactRow kMadeFacts[] = {{Column::date, "date"}, {Column::size, "size", " bytes"}};
// Of `more` what any two files differ in.
constexpr std::string_view kMadeMore[] = {"umid", "recorded", "image offset"};

// Facts that follow from another one.
constexpr std::string_view kFollowers[][2] = {
    {"stored width", "data window"},
    {"stored height", "data window"},
    {"display window", "data window"},
    {"stored width", "size"},
    {"stored height", "size"},
    {"data window", "size"},
    {"display window", "size"},
    {"bit rate", "codec"},
    {"bit rate", "size"},
    {"bit rate", "rate"},
    {"sound bit rate", "channels"},
    {"sound bit rate", "sample rate"},
    {"sound bit rate", "sound codec"},
    {"sound bit rate", "sound bits"},
};

// Of two files by their places, whatever the numbers of tracks.
std::vector<TimecodePair> paired(const std::vector<FileTimecode> &one,
                                 const std::vector<FileTimecode> &other) {
    const auto kind = [](const FileTimecode &timecode) {
        return timecode.place.substr(0, timecode.place.find_last_not_of(" 0123456789") + 1);
    };
    std::vector<TimecodePair> pairs;
    std::vector<bool> taken(other.size(), false);
    for (const FileTimecode &timecode : one) {
        pairs.push_back({timecode, {}});
        for (size_t i = 0; i < other.size(); i++) {
            if (taken[i] || kind(other[i]) != kind(timecode)) continue;
            pairs.back().other = other[i];
            taken[i] = true;
            break;
        }
    }
    for (size_t i = 0; i < other.size(); i++) {
        if (!taken[i]) pairs.push_back({{}, other[i]});
    }
    return pairs;
}

class FactsComparison {
 public:
    FactsComparison(const Facts &one, const Facts &other) : one_(one), other_(other) {}

    std::vector<FactDifference> run(bool everything) {
        const Row rows[2] = {row_of(one_, ""), row_of(other_, "")};
        compare(kFirstFacts, rows[0], rows[1], "");
        const bool stills = one_.duration.d == 0 && other_.duration.d == 0;
        count(stills ? "pictures" : "picture", one_.pictures.size(), other_.pictures.size());
        tracks(one_.pictures, other_.pictures, &Facts::pictures, kPictureFacts, "picture");
        count("sound", one_.sounds.size(), other_.sounds.size());
        tracks(one_.sounds, other_.sounds, &Facts::sounds, kSoundFacts, "sound");
        timecodes();
        compare(kLastFacts, rows[0], rows[1], "");
        more(everything);
        if (everything) compare(kMadeFacts, rows[0], rows[1], "");
        drop_followers();
        return std::move(differences_);
    }

 private:
    void add(const std::string &name, const std::string &one, const std::string &other,
             const char *begin = "", const char *unit = "") {
        if (one == other) return;
        const auto shown = [&](const std::string &value) {
            return value.empty() ? std::string("none") : begin + value + unit;
        };
        std::string text = name + ": " + shown(other) + " instead of " + (one.empty() ? "none" : one + unit);
        differences_.push_back({name, one, other, std::move(text)});
    }

    static std::pair<std::string, std::string> parted(const std::string &name) {
        const size_t of = std::min(name.find(" of "), name.size());
        return {name.substr(0, of), name.substr(of)};
    }

    void drop_followers() {
        const auto find = [&](std::string_view name) {
            return std::ranges::find(differences_, name, &FactDifference::name);
        };
        std::vector<std::string> told;
        for (const FactDifference &difference : differences_) told.push_back(difference.name);
        for (const auto &row : kFollowers) {
            std::erase_if(differences_, [&](const FactDifference &difference) {
                // "size of picture track 2" follows from what that track, or all, differ in.
                const auto [name, of] = parted(difference.name);
                const auto is_told = [&](const std::string &other) {
                    return std::ranges::find(told, other) != told.end();
                };
                const std::string cause(row[1]);
                return name == row[0] && (is_told(cause) || is_told(cause + of));
            });
        }
        // What is not compressed is called by its components.
        const auto codec = find("codec");
        const auto components = find("components");
        const bool both = codec != differences_.end() && components != differences_.end();
        if (both && codec->one == components->one && codec->other == components->other)
            differences_.erase(components);
    }

    void count(const std::string &name, size_t one, size_t other) {
        if (one == other) return;
        const auto shown = [](size_t n) { return n == 0 ? std::string("none") : std::to_string(n); };
        const bool are_tracks = !name.ends_with('s');
        std::string text = name + ": " + shown(other);
        if (are_tracks && other > 0) text += other == 1 ? " track" : " tracks";
        text += " instead of " + shown(one);
        differences_.push_back({name, std::to_string(one), std::to_string(other), std::move(text)});
    }

    void compare(std::span<const FactRow> facts, const Row &one, const Row &other, const std::string &of) {
        for (const FactRow &fact : facts)
            add(fact.name + of, one[fact.column], other[fact.column], "", fact.unit);
    }

    // The facts of each track; what all tracks differ in alike is told once.
    template <typename Track>
    void tracks(const std::vector<Track> &one, const std::vector<Track> &other,
                std::vector<Track> Facts::*member, std::span<const FactRow> facts, const std::string &kind) {
        const size_t n = std::min(one.size(), other.size());
        std::vector<Row> rows[2];
        for (size_t i = 0; i < n; i++) {
            Facts single[2];
            (single[0].*member).push_back(one[i]);
            (single[1].*member).push_back(other[i]);
            for (int side = 0; side < 2; side++) rows[side].push_back(row_of(single[side], ""));
        }
        for (size_t i = 0; i < n; i++) {
            const bool several = one.size() > 1 || other.size() > 1;
            const std::string of = several ? " of " + kind + " track " + std::to_string(i + 1) : "";
            if (kind == "picture") add("size" + of, size_of(rows[0][i]), size_of(rows[1][i]));
            for (const FactRow &fact : facts) {
                const std::string &a = rows[0][i][fact.column];
                const std::string &b = rows[1][i][fact.column];
                bool alike = several;
                for (size_t k = 0; k < n; k++)
                    alike = alike && rows[0][k][fact.column] == a && rows[1][k][fact.column] == b;
                // Stored sizes are told where they are not the shown ones.
                if (fact.column == Column::coded_width && shown_alike(rows, i, Column::width)) continue;
                if (fact.column == Column::coded_height && shown_alike(rows, i, Column::height)) continue;
                if (!alike || i == 0) add(fact.name + (alike ? "" : of), a, b, "", fact.unit);
            }
        }
    }

    static bool shown_alike(const std::vector<Row> (&rows)[2], size_t i, Column shown) {
        const Column stored = shown == Column::width ? Column::coded_width : Column::coded_height;
        return rows[0][i][shown] == rows[0][i][stored] && rows[1][i][shown] == rows[1][i][stored];
    }

    static std::string size_of(const Row &row) {
        const std::string &width = row[Column::width];
        return width.empty() ? "" : width + "x" + row[Column::height];
    }

    // What all timecodes differ in alike is told once, else of which it is.
    void timecodes() {
        const std::vector<TimecodePair> pairs = paired(one_.timecodes, other_.timecodes);
        const auto is_alike = [&](const TimecodePair &pair) {
            return pair.one.text() == pairs[0].one.text() && pair.other.text() == pairs[0].other.text();
        };
        const bool all_alike = std::ranges::all_of(pairs, is_alike);
        for (const TimecodePair &pair : pairs) {
            const std::string &place = pair.one.is_set() ? pair.one.place : pair.other.place;
            const bool is_named = !all_alike && !place.empty();
            add(is_named ? "timecode of " + place : "timecode", text_of(pair.one), text_of(pair.other),
                "from ");
            if (all_alike) break;
        }
    }

    static std::string text_of(const FileTimecode &timecode) {
        return timecode.is_set() ? timecode.text() : "";
    }

    void more(bool everything) {
        std::vector<std::string> names;
        for (const auto *pairs : {&one_.more, &other_.more}) {
            for (const auto &[name, value] : *pairs) {
                if (std::ranges::find(names, name) == names.end()) names.push_back(name);
            }
        }
        for (const std::string &name : names) {
            const bool made = std::ranges::find(kMadeMore, name) != std::end(kMadeMore);
            if (!made || everything) add(name, joined(one_, name), joined(other_, name));
        }
    }

    static std::string joined(const Facts &facts, const std::string &name) {
        std::string values;
        for (const auto &[key, value] : facts.more) {
            if (key == name) values += (values.empty() ? "" : "; ") + value;
        }
        // What has but one program says nothing of it.
        if (name == "programs" && values.empty() && !facts.pictures.empty()) values = "1";
        return with_register_names(values);
    }

    const Facts &one_;
    const Facts &other_;
    std::vector<FactDifference> differences_;
};

// Frames of eight digits, "01:00:00:00" or "01000000"; -1 for any other text.
int64_t digits_frames(std::string_view text, const FileTimecode &timecode) {
    uint32_t bcd = 0;
    int count = 0;
    for (const char c : text.substr(0, text.find(' '))) {
        if (c == ':' || c == ';') continue;
        if (c < '0' || c > '9' || count++ == 8) return -1;
        bcd = bcd << 4 | static_cast<uint32_t>(c - '0');
    }
    if (count != 8) return -1;
    return frame_count(bcd, {timecode.base, timecode.drop}).value_or(-1);
}

// The frames of hours to fields in a byte each, as GXF has them; `swapped` those of auxiliary data, in the
// upper half from the frames on.
int64_t gxf_frames(std::string_view text, bool swapped, const FileTimecode &timecode) {
    uint64_t word = 0;
    std::from_chars(text.data(), text.data() + text.size(), word, 16);
    if (swapped) {
        word >>= 32;
        word = (word & 255) << 24 | (word >> 8 & 255) << 16 | (word >> 16 & 255) << 8 | (word >> 24 & 255);
    }
    const auto part = [&](int shift) { return static_cast<int64_t>(word >> shift & 255); };
    return ((part(24) & 31) * 3600 + part(16) * 60 + part(8)) * timecode.base * 2 + part(0);
}

}  // namespace

std::vector<FactDifference> differing_facts(const Facts &one, const Facts &other, bool everything) {
    return FactsComparison(one, other).run(everything);
}

ToldTimecodes::ToldTimecodes(const Facts &one, const Facts &other) {
    for (const TimecodePair &pair : paired(one.timecodes, other.timecodes)) {
        if (pair.one.is_set() && pair.other.is_set() && pair.one.text() != pair.other.text())
            pairs_.push_back({pair.one, pair.other});
    }
}

bool ToldTimecodes::has_told(std::string_view label, std::string_view one, std::string_view other) const {
    for (const TimecodePair &pair : pairs_) {
        const auto is_frames = [](std::string_view text, const FileTimecode &timecode) {
            return timecode.frames >= 0 && text == std::to_string(timecode.frames);
        };
        if (label == "Start Timecode" && is_frames(one, pair.one) && is_frames(other, pair.other))
            return true;
        if (label == "auxinfo" || label.starts_with("tcmark")) {
            const bool swapped = label == "auxinfo";
            const int64_t step = gxf_frames(other, swapped, pair.other) - gxf_frames(one, swapped, pair.one);
            const int64_t told = pair.other.frames - pair.one.frames;
            if (step == 2 * told || (told != 0 && step == told)) return true;
        }
        if (label.ends_with("imecode") && pair.one.base > 0 && pair.other.base > 0) {
            const int64_t a = digits_frames(one, pair.one);
            const int64_t b = digits_frames(other, pair.other);
            if (a >= 0 && b >= 0 && b - a == pair.other.frames - pair.one.frames) return true;
        }
    }
    return false;
}
