#include "companions/frame_groups.h"

#include <strings.h>

#include <algorithm>
#include <map>
#include <set>

namespace {

constexpr size_t kMostDigits = 18;

size_t name_start(std::string_view path) {
    const size_t slash = path.rfind('/');
    return slash == std::string_view::npos ? 0 : slash + 1;
}

bool has_sign(std::string_view path, size_t digits) {
    const size_t start = name_start(path);
    if (digits <= start || path[digits - 1] != '-') return false;
    if (digits - 1 == start) return true;
    const char before = path[digits - 2];
    return before == '.' || before == '_' || before == ' ';
}

// "shot_v2", "V012", not "rev2".
bool is_version(std::string_view path, const FrameNumber &number) {
    const size_t start = name_start(path);
    if (number.start <= start || (path[number.start - 1] | 0x20) != 'v') return false;
    const char before = number.start - 1 > start ? static_cast<char>(path[number.start - 2] | 0x20) : '.';
    return before < 'a' || before > 'z';
}

// The path around a number, its sign left out.
std::pair<std::string_view, std::string_view> around(std::string_view path, const FrameNumber &number) {
    const size_t sign = has_sign(path, number.start) ? 1 : 0;
    return {path.substr(0, number.start - sign), path.substr(number.start + number.size)};
}

// The path with each number as "#": what frames have in common, whichever number counts them.
std::string skeleton_of(std::string_view path, const std::vector<FrameNumber> &numbers) {
    std::string skeleton;
    size_t at = 0;
    for (const FrameNumber &number : numbers) {
        const size_t sign = has_sign(path, number.start) ? 1 : 0;
        skeleton += path.substr(at, number.start - sign - at);
        skeleton += '#';
        at = number.start + number.size;
    }
    skeleton += path.substr(at);
    return skeleton;
}

struct Candidate {
    size_t file;
    std::vector<FrameNumber> numbers;
};

using Groups = std::map<std::pair<std::string, std::string>, std::vector<const Candidate *>>;

// Groups of files whose names differ in their number at a place alone.
Groups grouped_by(const std::vector<std::string> &files, const std::vector<Candidate> &candidates,
                  size_t place) {
    Groups groups;
    for (const Candidate &candidate : candidates) {
        const auto [before, after] = around(files[candidate.file], candidate.numbers[place]);
        groups[{std::string(before), std::string(after)}].push_back(&candidate);
    }
    return groups;
}

void add_groups(const std::vector<std::string> &files, const std::vector<Candidate> &candidates,
                std::vector<FrameGroup> &all) {
    const size_t places = candidates.front().numbers.size();
    Groups best;
    size_t best_place = 0;
    for (size_t place = places; place-- > 0;) {
        Groups groups = grouped_by(files, candidates, place);
        if (!best.empty() && groups.size() >= best.size()) continue;
        best = std::move(groups);
        best_place = place;
    }
    for (auto &[name, members] : best) {
        std::ranges::stable_sort(members, {},
                                 [&](const Candidate *c) { return c->numbers[best_place].value; });
        FrameGroup group;
        group.before = name.first;
        group.after = name.second;
        group.is_numbered = true;
        for (const Candidate *member : members) {
            // One that is listed twice is one frame.
            if (!group.files.empty() && files[group.files.back()] == files[member->file]) continue;
            group.files.push_back(member->file);
            group.numbers.push_back(member->numbers[best_place]);
        }
        group.first = *std::ranges::min_element(group.files);
        all.push_back(std::move(group));
    }
}

}  // namespace

std::vector<FrameNumber> numbers_of(std::string_view path) {
    std::vector<FrameNumber> numbers;
    const size_t dot = path.rfind('.');
    for (size_t i = name_start(path); i < path.size();) {
        if (!is_digit(path[i]) || i > dot) {
            i++;
            continue;
        }
        FrameNumber number{i, 0, 0};
        while (i < path.size() && is_digit(path[i])) i++;
        number.size = i - number.start;
        if (number.size > kMostDigits) continue;
        for (size_t k = number.start; k < i; k++) number.value = number.value * 10 + (path[k] - '0');
        if (has_sign(path, number.start)) number.value = -number.value;
        numbers.push_back(number);
    }
    return numbers;
}

std::string FrameGroup::range_name(const std::vector<std::string> &list) const {
    if (!is_numbered || files.size() < 2) return list[files.front()];
    return before + "[" + written(0, list) + "-" + written(files.size() - 1, list) + "]" + after;
}

std::string FrameGroup::written(size_t i, const std::vector<std::string> &list) const {
    const std::string_view path = list[files[i]];
    const size_t sign = has_sign(path, numbers[i].start) ? 1 : 0;
    return std::string(path.substr(numbers[i].start - sign, numbers[i].size + sign));
}

int64_t FrameGroup::missing() const {
    int64_t distinct = 0;
    for (size_t i = 0; i < numbers.size(); i++) {
        if (i == 0 || numbers[i].value != numbers[i - 1].value) distinct++;
    }
    return is_numbered ? numbers.back().value - numbers.front().value + 1 - distinct : 0;
}

bool is_still_name(std::string_view path) {
    constexpr const char *kExtensions[] = {"dpx", "cin", "cineon", "exr",  "tif", "tiff", "dng",   "ari",
                                           "jp2", "j2k", "j2c",    "jpc",  "jpg", "jpeg", "png",   "bmp",
                                           "tga", "sgi", "rgb",    "rgba", "bw",  "ppm",  "pgm",   "pbm",
                                           "pnm", "pic", "targa",  "jpf",  "yuv", "yuv8", "yuv10", "yuv16"};
    const size_t dot = path.rfind('.');
    if (dot == std::string_view::npos || dot < name_start(path)) return false;
    const std::string extension(path.substr(dot + 1));
    return std::ranges::any_of(kExtensions,
                               [&](const char *known) { return strcasecmp(extension.c_str(), known) == 0; });
}

std::vector<FrameGroup> group_frames(const std::vector<std::string> &files,
                                     bool (*is_frame)(std::string_view), bool versions_count) {
    std::vector<FrameGroup> groups;
    std::map<std::string, std::vector<Candidate>> skeletons;
    for (size_t i = 0; i < files.size(); i++) {
        std::vector<FrameNumber> numbers;
        if (is_frame(files[i])) numbers = numbers_of(files[i]);
        if (!versions_count)
            std::erase_if(numbers, [&](const FrameNumber &number) { return is_version(files[i], number); });
        if (numbers.empty()) {
            FrameGroup group;
            group.first = i;
            group.files.push_back(i);
            group.numbers.emplace_back();
            group.before = files[i];
            groups.push_back(std::move(group));
        } else {
            const std::string skeleton = skeleton_of(files[i], numbers);
            skeletons[skeleton].push_back({i, std::move(numbers)});
        }
    }
    for (const auto &[skeleton, candidates] : skeletons) add_groups(files, candidates, groups);
    std::ranges::sort(groups, {}, &FrameGroup::first);
    return groups;
}

bool are_frames(const std::vector<FrameNumber> &numbers, const std::vector<uint32_t> &pictures) {
    const size_t count = numbers.size();
    if (count < 2 || count > kFewFrames) return true;
    std::set<uint32_t> kinds(pictures.begin(), pictures.end());
    kinds.erase(0);
    const auto known =
        static_cast<size_t>(std::ranges::count_if(pictures, [](uint32_t picture) { return picture != 0; }));
    if (known > 1 && kinds.size() == known) return false;
    size_t neighbours = 0;
    const auto is_near = [&](size_t i) { return numbers[i + 1].value - numbers[i].value <= 1; };
    for (size_t i = 0; i < count; i++) {
        if ((i > 0 && is_near(i - 1)) || (i + 1 < count && is_near(i))) neighbours++;
    }
    return 2 * neighbours >= count || (count > 2 && kinds.size() < 2);
}
