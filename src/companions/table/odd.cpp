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

    std::string of(const Row &row) const { return text ? text(row) : row[column]; }
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
    {"WRITER", Column::writer},
};

}  // namespace

Oddities find_odd(const std::vector<Row> &rows, double alike) {
    Oddities odd;
    std::vector<std::vector<std::string>> remarks(rows.size());
    for (const Compared &compared : kCompared) {
        std::map<std::string, size_t> counts;
        size_t known = 0;
        const auto is_compared = [&](const Row &row) {
            return row.is_known && (alike == 0 || !compared.of(row).empty());
        };
        for (const Row &row : rows) {
            if (!is_compared(row)) continue;
            counts[compared.of(row)]++;
            known++;
        }
        if (counts.size() < 2) continue;
        const auto usual =
            std::ranges::max_element(counts, {}, [](const auto &entry) { return entry.second; });
        if (usual->second == 1 && known > 2) continue;
        if (static_cast<double>(usual->second) < alike * static_cast<double>(rows.size())) continue;
        odd.titles.emplace_back(compared.title);
        for (size_t i = 0; i < rows.size(); i++) {
            const std::string value = compared.of(rows[i]);
            if (!is_compared(rows[i]) || value == usual->first) continue;
            const std::string others = counts.size() == 2 ? "; others " : "; most ";
            remarks[i].push_back(std::string(compared.title) + " " + (value.empty() ? "none" : value) + " (" +
                                 grouped(counts[value]) + " of " + grouped(known) + others +
                                 (usual->first.empty() ? "none" : usual->first) + ")");
        }
    }
    for (size_t i = 0; i < rows.size(); i++) {
        if (!remarks[i].empty() || !rows[i][Column::problem].empty())
            odd.rows.push_back({i, std::move(remarks[i])});
    }
    return odd;
}
