#include "companions/table/terminal.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>

#include "companions/safe_text.h"
#include "companions/shown_width.h"

namespace {

constexpr size_t kFirstRows = 50;
constexpr std::chrono::seconds kFirstTime(1);
constexpr size_t kLeastName = 24;  // characters of a file's name
constexpr size_t kLeastCell = 6;   // of a column that was asked for
constexpr size_t kLongest = 32;    // of other columns on a terminal

// A text's start in so many columns of a terminal; 0: all of it.
std::string cut_end(const std::string &text, size_t most) {
    if (most == 0 || shown_width(text) <= most) return text;
    return std::string(fitting_start(text, most - 1)) + "\u2026";
}

// A name's end says more than its directories.
std::string cut_start(const std::string &text, size_t most) {
    if (most == 0 || shown_width(text) <= most) return text;
    return "\u2026" + std::string(fitting_end(text, most - 1));
}

std::string clock_text(double seconds, bool thousandths) {
    const int64_t milliseconds = std::llround(seconds * 1000);
    const int64_t whole = milliseconds / 1000;
    char text[64];
    int length =
        std::snprintf(text, sizeof text, "%02lld:%02lld:%02lld", static_cast<long long>(whole / 3600),
                      static_cast<long long>(whole / 60 % 60), static_cast<long long>(whole % 60));
    if (thousandths)
        std::snprintf(text + length, sizeof text - static_cast<size_t>(length), ".%03lld",
                      static_cast<long long>(milliseconds % 1000));
    return text;
}

double number_of(const std::string &text) { return std::strtod(text.c_str(), nullptr); }

std::string keycode_cell(const Row &row) { return row[Column::timecode].empty() ? "" : row[Column::keycode]; }

// "24+16" of "24; 24; 16".
std::string short_list(const std::string &list, double unit) {
    std::vector<std::string> values;
    for (size_t at = 0; at < list.size();) {
        const size_t end = std::min(list.find("; ", at), list.size());
        char text[32];
        std::snprintf(text, sizeof text, "%g", number_of(list.substr(at, end - at)) / unit);
        if (std::ranges::find(values, text) == values.end()) values.emplace_back(text);
        at = end + 2;
    }
    std::string text;
    for (const std::string &value : values) text += (text.empty() ? "" : "+") + value;
    return text;
}

}  // namespace

std::string title_of(const std::string &name) {
    std::string title = safe_name(name);
    for (char &c : title) {
        if (c == '_') c = ' ';
        if (c >= 'a' && c <= 'z') c = static_cast<char>(c - 'a' + 'A');
    }
    return title;
}

std::string picture_size(const Row &row) {
    return row[Column::width].empty() ? "" : row[Column::width] + "x" + row[Column::height];
}

// Whether seconds have whole numbers of frames, or what NTSC makes of these.
bool counts_frames(double rate) {
    const auto is_whole = [](double number) { return std::fabs(number - std::round(number)) < 0.001; };
    return rate >= 1 && (is_whole(rate) || is_whole(rate * 1.001));
}

// In frames at the numbers that a second counts where there is a rate; frames alone of numbered ones.
std::string duration_text(const Row &row) {
    if (!row[Column::first_frame].empty())
        return grouped(static_cast<uint64_t>(number_of(row[Column::frames])));
    const std::string &duration = row[Column::duration];
    if (duration.empty()) return "";
    const double rate = number_of(row[Column::frame_rate]);
    if (!counts_frames(rate) || row[Column::constant_rate] == "false")
        return clock_text(number_of(duration), true);
    const int64_t base = std::llround(rate);
    const int64_t frames = std::llround(number_of(duration) * rate);
    if (row[Column::timecode_drop] == "true" && row[Column::timecode_base] == std::to_string(base))
        return FileTimecode{frames, static_cast<uint32_t>(base), true, ""}.text();
    char text[16];
    std::snprintf(text, sizeof text, ":%02d", static_cast<int>(frames % base));
    const int64_t whole = frames / base;
    return clock_text(static_cast<double>(whole), false) + text;
}

std::string sound_text(const Row &row) {
    if (row[Column::channels].empty()) return row[Column::audio_codec];
    std::string text = row[Column::channels] + "ch";
    const bool lossless = !row[Column::audio_bits].empty();
    if (!lossless && !row[Column::audio_codec].empty()) text += " " + row[Column::audio_codec];
    if (lossless) text += " " + short_list(row[Column::audio_bits], 1);
    if (row[Column::sample_rate].empty()) return text;
    return text + (lossless ? "/" : " ") + short_list(row[Column::sample_rate], 1000) + "k";
}

std::string start_text(const Row &row) {
    return row[Column::timecode].empty() ? row[Column::keycode] : row[Column::timecode];
}

void TableSums::add(const Row &row) {
    rows++;
    files += row[Column::first_frame].empty() ? 1 : static_cast<uint64_t>(number_of(row[Column::frames]));
    seconds += number_of(row[Column::duration]);
    bytes += static_cast<uint64_t>(number_of(row[Column::size]));
    if (!row[Column::problem].empty()) problems++;
}

std::string TableSums::text() const {
    std::string text = grouped(files) + (files == 1 ? " file" : " files");
    if (seconds > 0) text += ", " + clock_text(seconds, seconds < 60);
    text += ", " + size_text(bytes);
    if (problems > 0) text += ", " + grouped(problems) + (problems == 1 ? " problem" : " problems");
    if (others > 0) text += ", " + grouped(others) + (others == 1 ? " other file" : " other files");
    return text;
}

std::vector<TerminalTable::Cell> TerminalTable::standard_cells() {
    const auto plain = [](Column column) { return [column](const Row &row) { return row[column]; }; };
    const auto format = [](const Row &row) {
        return row[Column::format].empty() ? "?" : row[Column::format];
    };
    return {
        {"FORMAT", false, 9, kLongest, format},
        {"SIZE", false, 8, kLongest, picture_size},
        {"RATE", true, 7, kLongest, plain(Column::frame_rate)},
        {"CODEC", false, 6, 20, plain(Column::codec)},
        {"BITS", true, 2, kLongest, plain(Column::bit_depth)},
        {"DURATION", false, 4, kLongest, duration_text},
        {"SOUND", false, 3, 20, sound_text},
        {"TIMECODE", false, 5, kLongest, start_text},
        {"KEYCODE", false, 1, kLongest, keycode_cell},
        {"REEL", false, 0, 16, plain(Column::reel)},
    };
}

TerminalTable::Cell TerminalTable::cell_of(const std::string &name) {
    const auto columns = table_columns();
    const auto column = std::ranges::find(columns, name, &ColumnRow::name);
    const bool right = column != columns.end() && column->kind == ColumnRow::number;
    return {title_of(name), right, 1, kLongest, [name](const Row &row) { return row.named(name); }};
}

TerminalTable::TerminalTable(size_t width, const Selection &selection, Taker take)
    : width_(width), take_(std::move(take)) {
    if (selection.names.empty()) cells_ = standard_cells();
    for (const std::string &name : selection.names) {
        if (name == "file" && name == selection.names.back()) continue;  // it stands there anyway
        cells_.push_back(cell_of(name));
        names_file_ = names_file_ || name == "file";
        names_problem_ = names_problem_ || name == "problem";
        cells_.back().shown = cells_.back().asked = true;
    }
    for (const std::string &field : selection.fields) {
        if (std::ranges::find(selection.names, field) != selection.names.end()) continue;
        cells_.push_back(cell_of(field));
        cells_.back().shown = cells_.back().asked = true;
    }
}

void TerminalTable::keep(const std::vector<std::string> &titles) {
    std::erase_if(cells_,
                  [&](const Cell &cell) { return std::ranges::find(titles, cell.title) == titles.end(); });
}

bool TerminalTable::use(const Row &row) {
    bool is_new = false;
    for (Cell &cell : cells_) {
        if (cell.shown || cell.text(row).empty()) continue;
        cell.shown = is_new = true;
        cell.width = shown_width(cell.title);
    }
    if (started_ && !is_new) return false;
    for (Cell &cell : cells_) cell.width = std::max(cell.width, shown_width(safe_name(cell.text(row))));
    return is_new;
}

// Leaves out columns until the names of files have room; those that were asked for become narrow instead.
void TerminalTable::fit() {
    if (width_ == 0) return;
    for (Cell &cell : cells_) {
        if (cell.most > 0) cell.width = std::min(cell.width, std::max(cell.most, shown_width(cell.title)));
    }
    for (;;) {
        size_t used = 2;
        Cell *least = nullptr;
        Cell *widest = nullptr;
        for (Cell &cell : cells_) {
            if (!cell.shown) continue;
            used += cell.width + 2;
            if (!cell.asked && (!least || cell.importance < least->importance)) least = &cell;
            const bool is_wide = cell.width > std::max(kLeastCell, shown_width(cell.title));
            if (cell.asked && is_wide && (!widest || cell.width > widest->width)) widest = &cell;
        }
        if (used + (names_file_ ? 0 : kLeastName) <= width_ || (!least && !widest)) return;
        if (!least) {
            widest->width--;
            widest->narrowed = true;
            continue;
        }
        least->shown = false;
        least->text = [](const Row &) { return std::string(); };
    }
}

std::string TerminalTable::in_width(const Cell &cell, const std::string &text, size_t most) const {
    const bool is_name = cell.asked && cell.title == "FILE";
    const std::string kept = is_name ? cut_start(text, most) : cut_end(text, most);
    const std::string blanks(cell.width - std::min(cell.width, shown_width(kept)), ' ');
    return (cell.right ? blanks + kept : kept + blanks) + "  ";
}

void TerminalTable::give_heading() {
    std::string line = "  ";
    for (const Cell &cell : cells_) {
        if (cell.shown) line += in_width(cell, cell.title, 0);
    }
    if (!names_file_) line += "FILE";
    line.erase(line.find_last_not_of(' ') + 1);
    take_(line + "\n");
}

// A later value that is longer than its column moves what is behind it, where the name's place has room.
std::string TerminalTable::cells_of(const Row &row, size_t room) const {
    const auto line_of = [&](bool moves) {
        std::string line = row[Column::problem].empty() ? "  " : "! ";
        for (const Cell &cell : cells_) {
            if (!cell.shown) continue;
            const size_t most = width_ == 0 ? 0 : moves && !cell.narrowed ? cell.most : cell.width;
            line += in_width(cell, safe_name(cell.text(row)), most);
        }
        return line;
    };
    std::string line = line_of(true);
    return width_ == 0 || shown_width(line) + room <= width_ ? line : line_of(false);
}

void TerminalTable::give(const Waiting &waiting) {
    const std::string &problem = waiting.row[Column::problem];
    const std::string name = names_file_ ? "" : safe_name(waiting.row[Column::file]);
    std::string line = cells_of(waiting.row, std::min(shown_width(name), kLeastName));
    const size_t used = shown_width(line);
    const size_t least = used > 2 ? kLeastName : 1;
    line += cut_start(name, width_ == 0 ? 0 : std::max(width_ - std::min(width_, used), least));
    line.erase(line.find_last_not_of(' ') + 1);
    line += "\n";
    if (!problem.empty() && !names_problem_) line += wrapped(safe_name(problem), width_, 4);
    for (const std::string &remark : waiting.remarks) line += wrapped(safe_name(remark), width_, 4);
    take_(line);
}

void TerminalTable::start() {
    if (started_ || waiting_.empty()) return;
    for (Cell &cell : cells_) cell.width = shown_width(cell.title);
    for (const Waiting &waiting : waiting_) use(waiting.row);
    started_ = true;
    fit();
    give_heading();
    for (const Waiting &waiting : waiting_) give(waiting);
    waiting_.clear();
}

void TerminalTable::add(const Row &row, const std::vector<std::string> &remarks) {
    if (!started_) {
        waiting_.push_back({row, remarks});
        if (waiting_.size() == kFirstRows) start();
        tick();
        return;
    }
    if (use(row)) {
        fit();
        give_heading();
    }
    give({row, remarks});
}

void TerminalTable::tick() {
    if (!started_ && std::chrono::steady_clock::now() - begin_ >= kFirstTime) start();
}

void TerminalTable::finish() { start(); }
