#include "companions/arguments.h"

#include <algorithm>
#include <charconv>

#include "companions/command.h"
#include "companions/safe_text.h"
#include "main/command_line.h"

bool Arguments::next() {
    if (failed_ || ++at_ >= argc_) return false;
    if (is("--")) {
        at_++;
        return false;
    }
    return argv_[at_][0] == '-' && argv_[at_][1] != '\0';
}

bool Arguments::takes(std::string_view name, std::string &value) {
    const std::string_view argument = argv_[at_];
    if (!argument.starts_with(name)) return false;
    const std::string_view rest = argument.substr(name.size());
    if (rest.empty()) {
        if (at_ + 1 == argc_) {
            refuse();
        } else {
            value = argv_[++at_];
        }
        return true;
    }
    const bool is_letter = name.size() == 2;
    if (!is_letter && rest[0] != '=') return false;
    value = is_letter ? rest : rest.substr(1);
    return true;
}

bool Arguments::takes_jobs(unsigned &jobs) {
    constexpr unsigned kMost = 1024;
    std::string text;
    const int before = at_;
    if (!takes("-j", text)) return false;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), jobs);
    if (!failed_ && (error != std::errc() || *end != '\0' || jobs < 1 || jobs > kMost)) {
        at_ = before;
        refuse();
    }
    return true;
}

bool Arguments::sets(DumpOptions &options) const {
    const std::string_view argument = argv_[at_];
    return !argument.starts_with("-ms") && !argument.starts_with("--") && parse_switch(options, argv_[at_]);
}

bool Arguments::refuse() {
    complain("unknown or wrong switch " + safe_name(argv_[at_]));
    failed_ = true;
    return false;
}

void add_names(const std::string &list, std::vector<std::string> &names) {
    for (size_t at = 0; at <= list.size();) {
        const size_t end = std::min(list.find(',', at), list.size());
        if (end > at) names.push_back(list.substr(at, end - at));
        at = end + 1;
    }
}
