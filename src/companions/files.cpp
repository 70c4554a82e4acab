#include "companions/files.h"

#include <dirent.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

#include "companions/frame_groups.h"
#include "companions/safe_text.h"

namespace {

// The run of digits at a position, without its leading zeros; moves behind it.
std::string_view take_number(std::string_view text, size_t &at) {
    while (at < text.size() && text[at] == '0') at++;
    const size_t start = at;
    while (at < text.size() && is_digit(text[at])) at++;
    return text.substr(start, at - start);
}

void refuse(const std::string &name, const std::string &why, bool as_files, FileList &list) {
    if (!as_files) {
        list.problems.push_back(safe_name(name) + ": " + why);
        return;
    }
    list.refused[list.files.size()] = why;
    list.files.push_back(name);
    list.are_named.push_back(true);
}

struct Entry {
    std::string name;
    unsigned char type;  // of dirent: most systems tell it without a look at each
};

// Adds what is in a directory. Why that failed, else empty.
std::string read_directory(const std::string &directory, std::vector<Entry> &entries) {
    DIR *stream = opendir(directory.c_str());
    if (!stream) return std::strerror(errno);
    errno = 0;
    while (const dirent *entry = readdir(stream)) {
        const std::string_view name = entry->d_name;
        if (name != "." && name != "..") entries.push_back({std::string(name), entry->d_type});
        errno = 0;
    }
    std::string problem = errno == 0 ? "" : std::strerror(errno);
    closedir(stream);
    return problem;
}

// The type where the directory does not tell it; of a link that of the file it leads to, and nowhere is a
// file, too, as opening it will say so.
unsigned char type_of(const std::string &path, unsigned char type) {
    struct stat status {};
    if (type == DT_UNKNOWN && lstat(path.c_str(), &status) == 0)
        type = S_ISLNK(status.st_mode)   ? DT_LNK
               : S_ISREG(status.st_mode) ? DT_REG
               : S_ISDIR(status.st_mode) ? DT_DIR
                                         : DT_UNKNOWN;
    if (type != DT_LNK) return type;
    return stat(path.c_str(), &status) != 0 || S_ISREG(status.st_mode) ? DT_REG : DT_UNKNOWN;
}

void add_directory(const std::string &directory, bool as_files, FileList &list) {
    std::vector<Entry> entries;
    const std::string problem = read_directory(directory, entries);
    if (!problem.empty()) refuse(directory, problem, as_files, list);
    std::sort(entries.begin(), entries.end(),
              [](const Entry &a, const Entry &b) { return natural_less(a.name, b.name); });
    const std::string start = directory.ends_with('/') ? directory : directory + "/";
    for (const Entry &entry : entries) {
        if (entry.name.starts_with('.')) continue;
        const std::string path = start + entry.name;
        const unsigned char type = type_of(path, entry.type);
        if (type == DT_REG) {
            list.files.push_back(path);
            list.are_named.push_back(false);
        } else if (type == DT_DIR) {
            add_directory(path, as_files, list);
        }
    }
}

bool may_wait(const std::string &name, bool with_pipes) {
    if (name.starts_with("/dev/stdin") || name.starts_with("/dev/fd/") || name.starts_with("/proc/self/fd/"))
        return false;
    struct stat status {};
    if (stat(name.c_str(), &status) != 0) return false;
    return (S_ISFIFO(status.st_mode) && !with_pipes) || S_ISSOCK(status.st_mode) || S_ISCHR(status.st_mode);
}

}  // namespace

bool natural_less(std::string_view a, std::string_view b) {
    size_t i = 0;
    size_t j = 0;
    while (i < a.size() && j < b.size()) {
        if (is_digit(a[i]) && is_digit(b[j])) {
            const std::string_view number_a = take_number(a, i);
            const std::string_view number_b = take_number(b, j);
            if (number_a.size() != number_b.size()) return number_a.size() < number_b.size();
            if (number_a != number_b) return number_a < number_b;
        } else if (a[i] != b[j]) {
            return static_cast<unsigned char>(a[i]) < static_cast<unsigned char>(b[j]);
        } else {
            i++;
            j++;
        }
    }
    const size_t rest_a = a.size() - i;
    const size_t rest_b = b.size() - j;
    return rest_a == rest_b ? a < b : rest_a < rest_b;
}

bool is_there(const std::string &name) {
    struct stat status {};
    return stat(name.c_str(), &status) == 0;
}

bool is_directory(const std::string &name) {
    struct stat status {};
    return stat(name.c_str(), &status) == 0 && S_ISDIR(status.st_mode);
}

std::vector<std::string> names_in(const std::string &directory) {
    std::vector<Entry> entries;
    read_directory(directory, entries);
    std::vector<std::string> names;
    names.reserve(entries.size());
    for (Entry &entry : entries) names.push_back(std::move(entry.name));
    return names;
}

FileList list_files(const std::vector<std::string> &operands, bool as_files) {
    FileList list;
    for (const std::string &operand : operands) {
        if (is_directory(operand)) {
            add_directory(operand, as_files, list);
        } else if (may_wait(operand, as_files)) {
            refuse(operand, "not a regular file", as_files, list);
        } else {
            list.files.push_back(operand);
            list.are_named.push_back(true);
        }
    }
    return list;
}
