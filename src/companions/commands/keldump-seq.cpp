// What breaks in sequences of DPX and Cineon frames.
#include <strings.h>

#include <algorithm>
#include <atomic>
#include <filesystem>
#include <map>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include "common/name_pattern.h"
#include "companions/command.h"
#include "companions/files.h"
#include "companions/safe_text.h"
#include "companions/sequence/check.h"

namespace fs = std::filesystem;

namespace {

constexpr char kUsage[] =
    "usage: keldump-seq [--] PATTERN|DIRECTORY|FILES\n"
    "\n"
    "Reads the headers of DPX and Cineon sequences and reports what breaks: missing frames, files without "
    "header\n"
    "or cut short, time codes and keycodes that do not go on frame by frame, and changes of resolution, bit\n"
    "depth, packing, descriptor, frame rate, reel and the like. One line a finding, one summary a sequence.\n"
    "\n"
    "  PATTERN    a name with one number, e.g. shot.%05d.dpx: all files in its directory that it makes\n"
    "  DIRECTORY  every sequence of .dpx, .cin and .cineon files in it and below\n"
    "  FILES      sequences by their names, whatever their order\n"
    "\n"
    "Exit status: 0 for clean sequences, 1 when something was found, 2 for trouble.\n";

// A name taken apart at its last number, which counts the frames.
struct FrameName {
    std::string stem;  // the name with "#" for the number
    int64_t number = 0;
    bool has_number = false;
};

FrameName take_apart(const std::string &path) {
    constexpr const char *kDigits = "0123456789";
    constexpr size_t kMostDigits = 18;
    const size_t name = path.rfind('/') == std::string::npos ? 0 : path.rfind('/') + 1;
    const size_t dot = path.rfind('.');
    const size_t end = dot == std::string::npos || dot < name ? path.size() : dot;
    const size_t last = end == 0 ? std::string::npos : path.find_last_of(kDigits, end - 1);
    if (last == std::string::npos || last < name) return {path};
    const size_t before = path.find_last_not_of(kDigits, last);
    const size_t first = std::max(before == std::string::npos ? 0 : before + 1, name);
    if (last + 1 - first > kMostDigits) return {path};
    return {path.substr(0, first) + "#" + path.substr(last + 1),
            std::stoll(path.substr(first, last + 1 - first)), true};
}

bool is_frame_name(const std::string &path) {
    const std::string extension = fs::path(path).extension();
    return std::ranges::any_of(std::vector<const char *>{".dpx", ".cin", ".cineon"},
                               [&](const char *e) { return strcasecmp(extension.c_str(), e) == 0; });
}

// The files of its directory that a pattern makes.
std::vector<std::string> files_of_pattern(const std::string &pattern) {
    const std::string directory = fs::path(pattern).parent_path();
    std::vector<std::string> files;
    std::error_code error;
    for (const auto &entry : fs::directory_iterator(directory.empty() ? "." : directory, error)) {
        const std::string file = (fs::path(directory) / entry.path().filename()).native();
        const FrameName name = take_apart(file);
        if (!name.has_number || name.number > INT32_MAX) continue;
        if (file == name_from_pattern(pattern.c_str(), static_cast<int32_t>(name.number)))
            files.push_back(file);
    }
    return files;
}

// Whether a pattern makes names whose last number, which counts the frames, is the one that is put in.
bool counts_frames(const std::string &pattern) {
    constexpr int32_t kProbe = 10;
    return take_apart(name_from_pattern(pattern.c_str(), kProbe)).number == kProbe;
}

// Adds the files that an operand stands for; false, behind a message, where some cannot be told.
bool add_operand(const std::string &operand, std::vector<std::string> &files) {
    const auto refuse = [&](const char *why) {
        complain(safe_name(operand) + ": " + why);
        return false;
    };
    std::error_code ignored;
    const size_t before = files.size();
    bool complete = true;
    if (fs::exists(operand, ignored)) {
        const bool directory = fs::is_directory(operand, ignored);
        const FileList list = list_files({operand});
        for (const std::string &problem : list.problems) {
            complain(problem);
            complete = false;
        }
        std::copy_if(list.files.begin(), list.files.end(), std::back_inserter(files),
                     [&](const std::string &file) { return !directory || is_frame_name(file); });
    } else if (operand.find('%') == std::string::npos || !valid_name_pattern(operand.c_str())) {
        return refuse("No such file or directory");
    } else if (!counts_frames(operand)) {
        return refuse("its names do not end with a decimal number (%d)");
    } else {
        const std::vector<std::string> made = files_of_pattern(operand);
        files.insert(files.end(), made.begin(), made.end());
    }
    return files.size() == before && complete ? refuse("no frames") : complete;
}

bool parse(int argc, char **argv, std::vector<std::string> &files, bool &complete) {
    int next = 1;
    if (next < argc && std::string(argv[next]) == "--") {
        next++;
    } else if (next < argc && argv[next][0] == '-') {
        complain("unknown or wrong switch " + safe_name(argv[next]));
        return false;
    }
    if (next == argc) return false;
    for (; next < argc; next++) {
        if (!add_operand(argv[next], files)) complete = false;
    }
    // A file counts once, however often it is named.
    std::set<std::string> seen;
    std::erase_if(files, [&](const std::string &file) { return !seen.insert(file).second; });
    return true;
}

// Files that a thread takes at a time.
constexpr size_t kBatch = 64;

void read_frames(const std::vector<std::string> &files, std::vector<Frame> &frames) {
    std::atomic<size_t> next{0};
    const auto read = [&] {
        for (size_t from; (from = next.fetch_add(kBatch)) < files.size();) {
            for (size_t i = from; i < std::min(from + kBatch, files.size()); i++)
                frames[i] = read_frame(files[i]);
        }
    };
    // More than there are processors: on a share most of the time is waiting.
    std::vector<std::thread> threads;
    for (unsigned i = 1; i < std::min<size_t>(4 * core_count(), files.size() / kBatch + 1); i++)
        threads.emplace_back(read);
    read();
    for (std::thread &thread : threads) thread.join();
}

}  // namespace

int main(int argc, char **argv) {
    start_companion("keldump-seq");
    if (answered(argc, argv, kUsage)) return kFine;
    std::vector<std::string> files;
    bool complete = true;
    if (!parse(argc, argv, files, complete)) return usage_error(kUsage);

    std::vector<Frame> frames(files.size());
    read_frames(files, frames);
    std::map<std::string, std::vector<SequenceFrame>, decltype(&natural_less)> sequences(&natural_less);
    std::set<std::string> unnumbered;
    for (size_t i = 0; i < files.size(); i++) {
        const FrameName name = take_apart(files[i]);
        sequences[name.stem].push_back({name.number, std::move(frames[i])});
        if (!name.has_number) unnumbered.insert(name.stem);
    }

    bool clean = true;
    for (auto &[stem, sequence] : sequences) {
        std::ranges::stable_sort(sequence, {}, &SequenceFrame::number);
        const Report report = check_sequence(sequence, !unnumbered.contains(stem));
        std::string text;
        for (const std::string &finding : report.findings) text += safe_name(stem) + ": " + finding + "\n";
        const size_t count = report.findings.size();
        text += safe_name(stem) + ": " + report.summary + ": " +
                (count == 0 ? "clean" : std::to_string(count) + (count == 1 ? " finding" : " findings")) +
                "\n";
        write_out(text);
        clean = clean && count == 0;
    }
    if (!complete) return kTrouble;
    return clean ? kFine : kFound;
}
