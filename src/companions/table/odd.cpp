#include "companions/table/odd.h"

#include <algorithm>
#include <map>

#include "companions/table/terminal.h"

namespace {

// What is compared: the columns of the table that a person reads, then others.
struct Compared {
    const char *title;
    Column column;
    std::string (*text)(const Row &) = nullptr;  // instead of the column's
};

// Where it is not the size that is shown.
std::string coded_size(const Row &row) {
    const bool same =
        row[Column::coded_width] == row[Column::width] && row[Column::coded_height] == row[Column::height];
    return same ? "" : row[Column::coded_width] + "x" + row[Column::coded_height];
}

constexpr Compared kCompared[] = {
    {"FORMAT", Column::format},
    {"SIZE", Column::width, picture_size},
    {"RATE", Column::frame_rate},
    {"CODEC", Column::codec},
    {"BITS", Column::bit_depth},
    {"SOUND", Column::channels, sound_text},
    {"REEL", Column::reel},
    {"VARIANT", Column::variant},
    {"COMPONENTS", Column::components},
    {"CONSTANT RATE", Column::constant_rate},
    {"FLOATING", Column::floating},
    {"CODED SIZE", Column::coded_width, coded_size},
    {"SCAN", Column::scan},
    {"PIXEL ASPECT", Column::pixel_aspect},
    {"PRIMARIES", Column::primaries},
    {"TRANSFER", Column::transfer},
    {"MATRIX", Column::matrix},
    {"RANGE", Column::range},
    {"VIDEO TRACKS", Column::video_tracks},
    {"AUDIO TRACKS", Column::audio_tracks},
    {"AUDIO LAYOUT", Column::audio_layout},
    {"LANGUAGES", Column::languages},
    {"TIMECODE BASE", Column::timecode_base},
    {"TIMECODE DROP", Column::timecode_drop},
    {"ROTATION", Column::rotation},
    {"WRITER", Column::writer},
};

// What is compared with each other: movies, stills, sound. What has no picture and no sound is beside them.
enum class Kind { other, movie, still, sound };

Kind kind_of(const Row &row) {
    if (!row.is_known) return Kind::other;
    if (!row[Column::width].empty())
        return row[Column::duration].empty() || !row[Column::first_frame].empty() ? Kind::still : Kind::movie;
    return sound_text(row).empty() ? Kind::other : Kind::sound;
}

// The remarks on a value of the files of one kind, of which so many must agree; whether there are any.
bool compare(const std::string &title, const std::vector<std::string> &values,
             const std::vector<size_t> &files, double least, std::vector<std::vector<std::string>> &remarks) {
    std::map<std::string, size_t> counts;
    for (const size_t file : files) counts[values[file]]++;
    if (counts.size() < 2) return false;
    const auto usual = std::ranges::max_element(counts, {}, [](const auto &entry) { return entry.second; });
    if (usual->second == 1 && files.size() > 2 && title == "REEL") return false;
    if (static_cast<double>(usual->second) < least) return false;
    const bool is_majority = 2 * usual->second > files.size();
    const std::string others = std::string(counts.size() == 2 ? "; others " : "; most ") +
                               (usual->first.empty() ? "none" : usual->first);
    for (const size_t file : files) {
        const std::string &value = values[file];
        if (is_majority && value == usual->first) continue;
        remarks[file].push_back(title + " " + (value.empty() ? "none" : value) + " (" +
                                grouped(counts[value]) + " of " + grouped(files.size()) +
                                (is_majority ? others : "; no majority") + ")");
    }
    return true;
}

}  // namespace

Oddities find_odd(const std::vector<Row> &rows, const std::vector<std::string> &further, double alike) {
    Oddities odd;
    std::vector<std::vector<std::string>> remarks(rows.size());
    std::map<Kind, std::vector<size_t>> kinds;
    for (size_t i = 0; i < rows.size(); i++) kinds[kind_of(rows[i])].push_back(i);
    kinds.erase(Kind::other);
    std::vector<std::string> values(rows.size());
    const auto compare_all = [&](const std::string &title, const auto &value_of) {
        std::ranges::transform(rows, values.begin(), value_of);
        bool differs = false;
        for (const auto &[kind, files] : kinds) {
            std::vector<size_t> told = files;
            if (alike > 0) std::erase_if(told, [&](size_t file) { return values[file].empty(); });
            const double least = alike * static_cast<double>(files.size());
            differs = compare(title, values, told, least, remarks) || differs;
        }
        if (differs) odd.titles.push_back(title);
    };
    for (const Compared &compared : kCompared)
        compare_all(compared.title, [&](const Row &row) {
            return compared.text ? compared.text(row) : row[compared.column];
        });
    for (const std::string &name : further)
        compare_all(title_of(name), [&](const Row &row) { return row.named(name); });
    for (size_t i = 0; i < rows.size(); i++) {
        if (!remarks[i].empty() || !rows[i][Column::problem].empty())
            odd.rows.push_back({i, std::move(remarks[i])});
    }
    return odd;
}
