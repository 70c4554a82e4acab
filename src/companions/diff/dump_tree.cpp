#include "companions/diff/dump_tree.h"

#include <algorithm>
#include <cctype>

#include "companions/quoted_lines.h"

namespace {

constexpr std::string_view kBlanks = " \t";

bool is_hex(char c) { return std::isxdigit(static_cast<unsigned char>(c)) != 0; }
bool is_digit(char c) { return c >= '0' && c <= '9'; }

size_t hex_run(std::string_view text, size_t at) {
    size_t n = 0;
    while (at + n < text.size() && is_hex(text[at + n])) n++;
    return n;
}

std::string_view trimmed(std::string_view text) {
    const size_t start = text.find_first_not_of(kBlanks);
    if (start == std::string_view::npos) return {};
    return text.substr(start, text.find_last_not_of(kBlanks) + 1 - start);
}

bool contains(std::string_view text, std::string_view part) {
    return std::search(text.begin(), text.end(), part.begin(), part.end(), [](char a, char b) {
               return std::tolower(static_cast<unsigned char>(a)) == b;
           }) != text.end();
}

// "xx.xx. ... -xx. ...": sixteen bytes as MXF dumps print them.
size_t dotted_bytes(std::string_view text, size_t at) {
    constexpr size_t kLength = 16 * 3 - 1;
    if (at + kLength > text.size()) return 0;
    for (size_t i = 0; i < kLength; i++) {
        const char c = text[at + i];
        if (i % 3 == 2 ? c != '.' && c != '-' : !is_hex(c)) return 0;
    }
    return kLength;
}

// Replaces UUIDs and UMIDs, but not the labels of the SMPTE registers.
std::string without_identifiers(std::string_view text) {
    constexpr std::string_view kRegisters = "06.0e.2b.34";
    std::string result;
    for (size_t at = 0; at < text.size();) {
        const size_t length = dotted_bytes(text, at);
        if (length && !text.substr(at).starts_with(kRegisters)) {
            result += "<id>";
            at += length;
        } else {
            result += text[at++];
        }
    }
    return result;
}

// Removes a mark with what follows it, through `close`; a blank stays.
void remove_part(std::string &text, std::string_view mark, std::string_view close) {
    const size_t start = text.find(mark);
    if (start == std::string::npos) return;
    const size_t end = close.empty() ? std::string::npos : text.find(close, start + mark.size());
    text.erase(start, end == std::string::npos ? end : end + (close == " " ? 0 : close.size()) - start);
}

// A file position before the line: eight or sixteen hexadecimal digits and a colon, blank or slash.
std::string_view without_position(std::string_view line) {
    const size_t digits = hex_run(line, 0);
    if ((digits != 5 && digits != 8 && digits != 16) || digits >= line.size()) return line;
    return line[digits] == ':' || line[digits] == ' ' || line[digits] == '/'
               ? trimmed(line.substr(digits + 1))
               : line;
}

bool is_volatile(std::string_view label, std::string_view value) {
    if (contains(label, "creation") || contains(label, "modif") || contains(label, "date") ||
        contains(label, "timestamp") || contains(label, "filetime") || label == "Length")
        return true;
    // Places in a picture, in time and on a film (which are text) are none in the file.
    for (const std::string_view real : {"xoffset", "yoffset", "timeoffset", "].offset"}) {
        if (label.ends_with(real)) return false;
    }
    const bool position = contains(label, "offset") || contains(label, "position") || label == "PTR" ||
                          (contains(label, "partition") && !contains(label, "header")) ||
                          contains(label, "bytecount");
    return position && !value.starts_with('\'');
}

struct Field {
    std::string_view label;
    std::string_view value;
};

// The field of a line: "label=value", "label : value", "label: value", "label  value", "label 12" or
// "label 'text'". What stands in a text separates nothing.
Field split(std::string_view line) {
    const auto at = [&](size_t place, size_t width) {
        return Field{trimmed(line.substr(0, place)), trimmed(line.substr(place + width))};
    };
    const size_t quote = line.find(" '");
    const std::string_view head = line.substr(0, quote == std::string_view::npos ? quote : quote + 1);
    const size_t equals = head.find('=');
    if (equals != std::string_view::npos && equals < head.find(' ')) return at(equals, 1);
    const size_t spaced = head.find(" : ");
    if (spaced != std::string_view::npos) return at(spaced, 3);
    if (head.ends_with(":")) return {trimmed(head.substr(0, head.find_last_not_of(" :") + 1)), {}};
    const size_t colon = head.find(": ");
    if (colon != std::string_view::npos) return at(colon, 2);
    if (line.starts_with("Fileformat:")) return at(10, 1);
    const size_t gap = head.find("  ");
    if (gap != std::string_view::npos) return at(gap, 2);
    if (quote != std::string_view::npos) return at(quote, 1);
    const size_t last = line.rfind(' ');
    if (last != std::string_view::npos && last + 1 < line.size() &&
        (is_digit(line[last + 1]) || line[last + 1] == '-'))
        return at(last, 1);
    return {line, {}};
}

DumpNode node_of(std::string_view line, bool everything) {
    std::string text(line);
    const bool atom = line.starts_with("ATOM ");
    if (!everything) {
        text = without_position(line);
        remove_part(text, " (until 0x", ")");
        remove_part(text, " (offset:", ")");
        remove_part(text, " offset=0x", "");
        remove_part(text, " @ 0x", " ");
        // The length of a set's item, "Tag 3c0a/16 GUID".
        if (text.starts_with("Tag ") && text.find('/') == 8) remove_part(text, "/", " ");
        text = without_identifiers(text);
    }
    if (atom) {
        const size_t code = text.find(" (0x");
        const size_t size = text.find("size=");
        std::string label = text.substr(0, code);
        return {label, everything && size != std::string::npos ? text.substr(size) : "", {}};
    }
    const Field field = split(text);
    constexpr size_t kTag = 4;  // hexadecimal digits of a TIFF tag
    if (field.label == "tag" && field.value.size() > kTag) {
        return {"tag " + std::string(field.value.substr(0, kTag)),
                std::string(trimmed(field.value.substr(kTag))),
                {}};
    }
    if (!everything && field.label == "References") {
        return {std::string(field.label), std::string(without_position(field.value)), {}};
    }
    if (!everything && is_volatile(field.label, field.value)) return {std::string(field.label), "", {}};
    return {std::string(field.label), std::string(field.value), {}};
}

// The chunk offsets of a movie, and the value fields of a TIFF directory, whose values the tag's line shows.
bool holds_positions(const DumpNode &parent, const DumpNode &node) {
    return parent.label.ends_with(" stco") || parent.label.ends_with(" co64") ||
           (parent.label.starts_with("tag ") && node.label == "value");
}

}  // namespace

DumpNode parse_dump(std::string_view dump, bool everything) {
    DumpNode root;
    std::vector<std::pair<size_t, DumpNode *>> open;  // indentation of a line and its node
    QuotedLines lines([&](std::string_view line) {
        const size_t indent = line.find_first_not_of(kBlanks);
        if (indent == std::string_view::npos) return;
        while (!open.empty() && open.back().first >= indent) open.pop_back();
        DumpNode &parent = open.empty() ? root : *open.back().second;
        // Children of closed lines are complete: only the last child of each open node can grow.
        parent.children.push_back(node_of(trimmed(line), everything));
        if (!everything && holds_positions(parent, parent.children.back()))
            parent.children.back().value.clear();
        open.emplace_back(indent, &parent.children.back());
    });
    while (!dump.empty()) {
        const size_t end = std::min(dump.find('\n'), dump.size());
        lines.add(dump.substr(0, end));
        dump.remove_prefix(std::min(end + 1, dump.size()));
    }
    lines.finish();
    return root;
}
