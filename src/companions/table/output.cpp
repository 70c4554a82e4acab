#include "companions/table/output.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

#include "companions/safe_text.h"
#include "companions/table/values.h"

namespace {

constexpr size_t kWidest = 32;  // characters of a column of the aligned table

struct Heading {
    Column column;
    const char *name;   // in CSV and JSON
    const char *title;  // in the aligned table
    bool number;
};

constexpr Heading kHeadings[] = {
    {Column::file, "file", "FILE", false},
    {Column::format, "format", "FORMAT", false},
    {Column::width, "width", "WIDTH", true},
    {Column::height, "height", "HEIGHT", true},
    {Column::bit_depth, "bit_depth", "BITS", true},
    {Column::codec, "codec", "CODEC", false},
    {Column::frame_rate, "frame_rate", "RATE", true},
    {Column::duration, "duration", "DURATION", true},
    {Column::channels, "channels", "CH", true},
    {Column::sample_rate, "sample_rate", "HZ", true},
    {Column::timecode, "timecode", "TIMECODE", false},
    {Column::keycode, "keycode", "KEYCODE", false},
    {Column::reel, "reel", "REEL", false},
    {Column::problem, "problem", "PROBLEM", false},
};

std::string csv_field(const std::string &text) {
    std::string safe;
    SafeText converter;
    converter.add(text, safe);
    converter.finish(safe);
    if (safe.find_first_of(",\"\r\n") == std::string::npos) return safe;
    std::string quoted = "\"";
    for (const char c : safe) {
        if (c == '"') quoted += '"';
        quoted += c;
    }
    return quoted + '"';
}

void append_escaped(unsigned code, std::string &out) {
    char text[16];
    std::snprintf(text, sizeof text, "\\u%04x", code);
    out += text;
}

std::string json_text(std::string_view text) {
    std::string out = "\"";
    while (!text.empty()) {
        const size_t length = utf8_length(text);
        const uint8_t byte = static_cast<uint8_t>(text[0]);
        size_t done = 1;
        if (length == 0 || length > text.size()) {
            append_escaped(0xDC00U + byte, out);
        } else if (byte < 0x20 || byte == 0x7F) {
            append_escaped(byte, out);
        } else if (byte == 0xC2 && static_cast<uint8_t>(text[1]) < 0xA0) {  // C1 controls
            append_escaped(static_cast<uint8_t>(text[1]), out);
            done = 2;
        } else {
            if (byte == '"' || byte == '\\') out += '\\';
            out.append(text, 0, length);
            done = length;
        }
        text.remove_prefix(done);
    }
    return out + '"';
}

// The aligned table's text of a column.
std::string shown(const Row &row, Column column) {
    const std::string &text = row[column];
    if (column == Column::format && text.empty()) return "?";
    if (column == Column::duration && !text.empty()) {
        const int64_t milliseconds = std::llround(ratio_in(text) * 1000);
        char clock[64];
        std::snprintf(
            clock, sizeof clock, "%02lld:%02lld:%02lld.%03lld",
            static_cast<long long>(milliseconds / 3600000), static_cast<long long>(milliseconds / 60000 % 60),
            static_cast<long long>(milliseconds / 1000 % 60), static_cast<long long>(milliseconds % 1000));
        return clock;
    }
    return safe_name(text);
}

size_t characters(std::string_view text) {
    return static_cast<size_t>(std::count_if(
        text.begin(), text.end(), [](char c) { return (static_cast<uint8_t>(c) & 0xC0) != 0x80; }));
}

// The first characters of a text, with an ellipsis where there are more.
std::string cut(const std::string &text) {
    if (characters(text) <= kWidest) return text;
    size_t end = 0;
    for (size_t i = 0; i + 1 < kWidest; i++) end += utf8_length(std::string_view(text).substr(end));
    return text.substr(0, end) + "\u2026";
}

class AlignedColumn {
 public:
    AlignedColumn(const Heading &heading, const std::vector<Row> &rows) : heading_(heading) {
        width_ = characters(heading.title);
        for (const Row &row : rows) {
            used_ = used_ || !text(row).empty();
            width_ = std::max(width_, characters(text(row)));
        }
    }
    bool used() const { return used_; }
    std::string title() const { return padded(heading_.title); }
    std::string cell(const Row &row) const { return padded(text(row)); }

 private:
    std::string text(const Row &row) const { return cut(shown(row, heading_.column)); }
    std::string padded(const std::string &text) const {
        const std::string blanks(width_ - std::min(width_, characters(text)), ' ');
        return (heading_.number ? blanks + text : text + blanks) + "  ";
    }

    const Heading &heading_;
    size_t width_ = 0;
    bool used_ = false;
};

}  // namespace

std::string csv_header() {
    std::string line;
    for (const Heading &heading : kHeadings) line += std::string(line.empty() ? "" : ",") + heading.name;
    return line + "\r\n";
}

std::string csv_line(const Row &row) {
    std::string line;
    for (const Heading &heading : kHeadings) {
        if (heading.column != Column::file) line += ',';
        line += csv_field(row[heading.column]);
    }
    return line + "\r\n";
}

std::string json_object(const Row &row) {
    std::string object = "{";
    for (const Heading &heading : kHeadings) {
        const std::string &text = row[heading.column];
        if (object.size() > 1) object += ", ";
        object += std::string("\"") + heading.name + "\": ";
        object += text.empty() ? "null" : heading.number ? text : json_text(text);
    }
    return object + "}";
}

std::string aligned_table(const std::vector<Row> &rows) {
    std::vector<AlignedColumn> columns;
    for (const Heading &heading : kHeadings) {
        if (heading.column == Column::file || heading.column == Column::problem) continue;
        const AlignedColumn column(heading, rows);
        if (column.used()) columns.push_back(column);
    }
    std::string table;
    for (const AlignedColumn &column : columns) table += column.title();
    table += "FILE\n";
    for (const Row &row : rows) {
        for (const AlignedColumn &column : columns) table += column.cell(row);
        table += shown(row, Column::file) + "\n";
    }
    return table;
}
