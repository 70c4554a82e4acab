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

std::string problem_text(const std::string &name, const std::string &what) {
    return safe_name(name) + ": " + what;
}

// Names that are neither a file nor a directory, nor lead nowhere, are left out.
void add_directory(const std::string &directory, FileList &list) {
    std::vector<std::string> names;
    const std::string problem = names_in(directory, names);
    if (!problem.empty()) list.problems.push_back(problem_text(directory, problem));
    std::sort(names.begin(), names.end(), natural_less);
    for (const std::string &name : names) {
        if (name.starts_with('.')) continue;
        const std::string path = directory + (directory.ends_with('/') ? "" : "/") + name;
        struct stat own {};
        struct stat target {};
        if (lstat(path.c_str(), &own) != 0) continue;
        const bool is_link = S_ISLNK(own.st_mode);
        const bool leads_somewhere = stat(path.c_str(), &target) == 0;
        if (leads_somewhere ? S_ISREG(target.st_mode) : is_link) {
            list.files.push_back(path);
            list.are_named.push_back(false);
        } else if (S_ISDIR(own.st_mode)) {
            add_directory(path, list);
        }
    }
}

bool may_wait(const std::string &name) {
    if (name.starts_with("/dev/stdin") || name.starts_with("/dev/fd/") || name.starts_with("/proc/self/fd/"))
        return false;
    struct stat status {};
    if (stat(name.c_str(), &status) != 0) return false;
    return S_ISFIFO(status.st_mode) || S_ISSOCK(status.st_mode) || S_ISCHR(status.st_mode);
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

std::string names_in(const std::string &directory, std::vector<std::string> &names) {
    DIR *stream = opendir(directory.c_str());
    if (!stream) return std::strerror(errno);
    errno = 0;
    while (const dirent *entry = readdir(stream)) {
        const std::string_view name = entry->d_name;
        if (name != "." && name != "..") names.emplace_back(name);
        errno = 0;
    }
    const std::string problem = errno == 0 ? "" : std::strerror(errno);
    closedir(stream);
    return problem;
}

FileList list_files(const std::vector<std::string> &operands) {
    FileList list;
    for (const std::string &operand : operands) {
        if (is_directory(operand)) {
            add_directory(operand, list);
        } else if (may_wait(operand)) {
            list.problems.push_back(problem_text(operand, "not a regular file"));
        } else {
            list.files.push_back(operand);
            list.are_named.push_back(true);
        }
    }
    return list;
}
