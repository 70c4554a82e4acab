#include "companions/table/reader.h"

#include <algorithm>

#include "companions/table/values.h"

namespace {

constexpr size_t kLongestLine = 4096;
constexpr size_t kShortestPosition = 5;

bool is_hex_digit(char c) { return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'f'); }

// Rates and counts give the duration where no field does.
void compute_duration(Row &row) {
    const double rate = ratio_in(row[Column::frame_rate]);
    const double frames = ratio_in(row[Column::frames]);
    if (rate > 0 && frames > 0) row.offer(Column::duration, seconds_text(frames / rate));
}

}  // namespace

std::string_view without_position(std::string_view line) {
    size_t digits = 0;
    while (digits < line.size() && is_hex_digit(line[digits])) digits++;
    if (digits < kShortestPosition || digits == line.size()) return line;
    const char behind = line[digits];
    if (behind != ':' && behind != ' ' && behind != '/') return line;
    return trimmed(line.substr(digits + 1));
}

bool DumpLines::add(std::string_view piece) {
    while (!piece.empty()) {
        const size_t end = piece.find('\n');
        const std::string_view part = piece.substr(0, end);
        if (end == std::string_view::npos || !rest_.empty()) {
            rest_.append(part.substr(0, kLongestLine - std::min(kLongestLine, rest_.size())));
            if (end == std::string_view::npos) return true;
            lines_.add(rest_);
            rest_.clear();
        } else {
            lines_.add(part.substr(0, kLongestLine));
        }
        if (reader_ && reader_->done()) return false;
        piece.remove_prefix(end + 1);
    }
    return true;
}

void DumpLines::take(std::string_view line) {
    if (reader_) {
        reader_->line(line);
    } else if (have_first_) {
        reader_ = reader_for(first_, line);
    } else {
        first_ = line;
        have_first_ = true;
    }
}

void DumpLines::finish(Row &row) {
    if (!(reader_ && reader_->done())) {
        if (!rest_.empty()) lines_.add(rest_);
        lines_.finish();
    }
    if (!reader_) reader_ = reader_for(first_, "");
    reader_->finish(row);
    compute_duration(row);
    row.offer(Column::timecode, bcd_timecode_text(row[Column::bcd], ratio_in(row[Column::frame_rate])));
}
