#include "companions/printing.h"

#include <algorithm>

#include "companions/command.h"
#include "companions/safe_text.h"

namespace {
constexpr size_t kBlock = 64 * 1024;
}

void PrintedJobs::flush() {
    write_out(text_);
    text_.clear();
}

void PrintedJobs::out(size_t, std::string_view text) {
    text_ += text;
    if (text_.size() >= kBlock) flush();
}

void PrintedJobs::complain(size_t index, const std::string &message) {
    flush();
    ::complain(safe_name(files_[index]) + ": " + safe_name(message));
}

void PrintedJobs::done(size_t index, int status, const std::string &death) {
    if (!death.empty()) complain(index, death);
    status_ = std::max(status_, status);
    flush();
}

bool report_problems(const FileList &list) {
    for (const std::string &problem : list.problems) complain(problem);
    return !list.problems.empty();
}
