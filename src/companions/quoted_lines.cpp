#include "companions/quoted_lines.h"

#include <algorithm>
#include <cctype>

namespace {

constexpr size_t kMostHeld = 64 * 1024;

bool closes_text(std::string_view line) {
    return line.ends_with('\'') || line.ends_with("' (dump truncated)");
}

// Texts that have a line of their own: iXML chunks of RIFF, and strings of OpenEXR.
bool announces_text(std::string_view line) {
    size_t digits = 0;
    while (digits < line.size() && std::isxdigit(static_cast<unsigned char>(line[digits]))) digits++;
    return line.starts_with(" Elem iXML ") ||
           (digits >= 5 && line.find(" string ") != std::string_view::npos);
}

}  // namespace

// A quote behind a blank that does not close on its line.
bool QuotedLines::opens_text(std::string_view line) const {
    const size_t blank = line.find(" '");
    if (text_alone_ && line.starts_with('\'')) return line.size() == 1 || !closes_text(line);
    if (blank == std::string_view::npos) return false;
    const std::string_view text = line.substr(blank + 2);
    return !closes_text(text) && text.find("' ") == std::string_view::npos;
}

void QuotedLines::add(std::string_view line) {
    if (first_) characters_ = line == "Fileformat:MPEG";
    first_ = false;
    if (holding_) {
        held_ += '\n';
        held_ += line;
        if (closes_text(line)) {
            holding_ = false;
            take_(held_);
        } else if (held_.size() > kMostHeld) {
            release();
        }
        return;
    }
    holding_ = !characters_ && opens_text(line);
    text_alone_ = announces_text(line);
    if (holding_) {
        held_ = line;
    } else {
        take_(line);
    }
}

void QuotedLines::finish() {
    if (holding_) release();
}

void QuotedLines::release() {
    holding_ = false;
    const std::string lines = std::move(held_);
    for (size_t at = 0; at <= lines.size();) {
        const size_t end = std::min(lines.find('\n', at), lines.size());
        take_(std::string_view(lines).substr(at, end - at));
        at = end + 1;
    }
}
