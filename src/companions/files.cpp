#include "companions/files.h"

#include <algorithm>
#include <filesystem>
#include <system_error>

#include "companions/frame_groups.h"
#include "companions/safe_text.h"

namespace fs = std::filesystem;

namespace {

// The run of digits at a position, without its leading zeros; moves behind it.
std::string_view take_number(std::string_view text, size_t &at) {
    while (at < text.size() && text[at] == '0') at++;
    const size_t start = at;
    while (at < text.size() && is_digit(text[at])) at++;
    return text.substr(start, at - start);
}

bool entry_less(const fs::directory_entry &a, const fs::directory_entry &b) {
    return natural_less(a.path().native(), b.path().native());
}

std::string problem_text(const std::string &name, const std::string &what) {
    return safe_name(name) + ": " + what;
}

// A link whose target is missing: opening it will say so.
bool leads_nowhere(const fs::directory_entry &entry) {
    std::error_code ignored;
    return entry.is_symlink(ignored) && !entry.exists(ignored);
}

void add_directory(const fs::path &directory, FileList &list) {
    std::error_code error;
    std::vector<fs::directory_entry> entries;
    for (fs::directory_iterator it(directory, error), end; !error && it != end; it.increment(error)) {
        if (it->path().filename().native().front() != '.') entries.push_back(*it);
    }
    if (error) list.problems.push_back(problem_text(directory.native(), error.message()));
    std::sort(entries.begin(), entries.end(), entry_less);
    for (const fs::directory_entry &entry : entries) {
        std::error_code ignored;
        if (entry.is_regular_file(ignored) || leads_nowhere(entry)) {
            list.files.push_back(entry.path().native());
            list.are_named.push_back(false);
        } else if (!entry.is_symlink(ignored) && entry.is_directory(ignored)) {
            add_directory(entry.path(), list);
        }
    }
}

bool may_wait(const std::string &name, const fs::file_status &status) {
    if (name.starts_with("/dev/stdin") || name.starts_with("/dev/fd/") || name.starts_with("/proc/self/fd/"))
        return false;
    return fs::is_fifo(status) || fs::is_socket(status) || fs::is_character_file(status);
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

FileList list_files(const std::vector<std::string> &operands) {
    FileList list;
    for (const std::string &operand : operands) {
        std::error_code ignored;
        const fs::file_status status = fs::status(operand, ignored);
        if (fs::is_directory(status)) {
            add_directory(operand, list);
        } else if (may_wait(operand, status)) {
            list.problems.push_back(problem_text(operand, "not a regular file"));
        } else {
            list.files.push_back(operand);
            list.are_named.push_back(true);
        }
    }
    return list;
}
