#include "companions/json/json.h"

#include <array>
#include <charconv>

#include "companions/safe_text.h"
#include "main/dump.h"

namespace {

constexpr size_t kBlock = 32 * 1024;  // of output that is given at once
constexpr int kSchema = 1;

void append_number(std::string &out, uint64_t number) {
    char digits[24];
    out.append(digits, std::to_chars(digits, digits + sizeof digits, number).ptr);
}

// The bytes of the UTF-8 character that begins a text (RFC 3629); 0 where there is none, -1 where the text
// ends in it.
int character_size(std::string_view text) {
    const auto byte = [&](size_t i) { return static_cast<uint8_t>(text[i]); };
    const uint8_t lead = byte(0);
    if (lead < 0x80) return 1;
    const int size = lead >= 0xC2 && lead <= 0xDF   ? 2
                     : (lead & 0xF0) == 0xE0        ? 3
                     : lead >= 0xF0 && lead <= 0xF4 ? 4
                                                    : 0;
    for (int i = 1; i < size; i++) {
        if (static_cast<size_t>(i) >= text.size()) return -1;
        uint8_t low = 0x80, high = 0xBF;
        if (i == 1 && lead == 0xE0) low = 0xA0;
        if (i == 1 && lead == 0xED) high = 0x9F;
        if (i == 1 && lead == 0xF0) low = 0x90;
        if (i == 1 && lead == 0xF4) high = 0x8F;
        if (byte(static_cast<size_t>(i)) < low || byte(static_cast<size_t>(i)) > high) return 0;
    }
    return size;
}

void append_escape(std::string &out, unsigned code) {
    constexpr char kDigits[] = "0123456789abcdef";
    out += "\\u";
    for (int shift = 12; shift >= 0; shift -= 4) out += kDigits[code >> shift & 15];
}

// Of two bytes or three.
unsigned code_of(std::string_view character) {
    unsigned code = static_cast<uint8_t>(character[0]) & (character.size() == 2 ? 0x1Fu : 0xFu);
    for (const char c : character.substr(1)) code = code << 6 | (static_cast<uint8_t>(c) & 0x3Fu);
    return code;
}

void append_ascii(std::string &out, char c) {
    switch (c) {
        case '"': out += "\\\""; break;
        case '\\': out += "\\\\"; break;
        case '\n': out += "\\n"; break;
        case '\t': out += "\\t"; break;
        case '\r': out += "\\r"; break;
        default:
            if (static_cast<uint8_t>(c) < 0x20 || c == 0x7F) {
                append_escape(out, static_cast<uint8_t>(c));
            } else {
                out += c;
            }
    }
}

// How many characters at the start of a text stand for themselves in JSON.
size_t plain_characters(std::string_view text) {
    static constexpr auto kPlain = [] {
        std::array<bool, 256> plain{};
        for (unsigned c = 0x20; c < 0x7F; c++) plain[c] = c != '"' && c != '\\';
        return plain;
    }();
    size_t n = 0;
    while (n < text.size() && kPlain[static_cast<uint8_t>(text[n])]) n++;
    return n;
}

// The characters of a text without quotes around; returns how many bytes at its end may begin a character.
size_t append_characters(std::string &out, std::string_view text, bool utf8, bool is_whole) {
    while (!text.empty()) {
        const size_t plain = plain_characters(text);
        out += text.substr(0, plain);
        text.remove_prefix(plain);
        if (text.empty()) break;
        int size = character_size(text);
        if (size < 0 && !is_whole) return text.size();
        if (size <= 0) {
            if (utf8) {
                out += "\xEF\xBF\xBD";
            } else {
                append_escape(out, 0xDC00u + static_cast<uint8_t>(text[0]));
            }
            size = 1;
        } else if (size == 1) {
            append_ascii(out, text[0]);
        } else if (steers_unseen(text.substr(0, static_cast<size_t>(size)))) {
            append_escape(out, code_of(text.substr(0, static_cast<size_t>(size))));
        } else {
            out += text.substr(0, static_cast<size_t>(size));
        }
        text.remove_prefix(static_cast<size_t>(size));
    }
    return 0;
}

// JSON has no numbers with a leading zero or plus, or a bare point.
bool is_json_number(std::string_view text) {
    if (text.starts_with('-')) text.remove_prefix(1);
    if (text.empty() || text[0] < '0' || text[0] > '9') return false;
    return text[0] != '0' || text.size() == 1 || text[1] == '.' || text[1] == 'e';
}

}  // namespace

void append_json(std::string &out, std::string_view text, bool utf8) {
    out += '"';
    append_characters(out, text, utf8, true);
    out += '"';
}

JsonDump::JsonDump(const JsonStyle &style, std::string_view file, JobOutput &output)
    : style_(style), output_(output) {
    append_json(file_, file, style.utf8 || style.lines);
}

void JsonDump::format(const char *name) {
    is_mxf_ = std::string_view(name) == "MXF";
    format_.clear();
    append_json(format_, name, true);
}

void JsonDump::begin_file() {
    if (begun_) return;
    begun_ = true;
    if (style_.lines) return;
    out_ += "{\"file\": " + file_ + ", \"format\": " + format_ + ", \"schema\": ";
    append_number(out_, kSchema);
    out_ += ", \"lines\": [";
}

void JsonDump::flush() {
    output_.out(out_);
    out_.clear();
}

void JsonDump::put_path() {
    const bool utf8 = style_.utf8 || style_.lines;
    out_ += "\"path\": [";
    for (size_t i = 0; i < field_.path.size(); i++) {
        const PathElement &element = *field_.path[i];
        if (element.json.empty()) {
            if (!element.is_own) element.json += "{\"name\": ";
            append_json(element.json, element.name, utf8);
            if (!element.is_own) element.json += ", \"own\": false}";
        }
        if (i) out_ += ", ";
        out_ += element.json;
    }
    out_ += "], ";
    if (field_.index.empty()) return;
    out_ += "\"index\": [";
    for (size_t i = 0; i < field_.index.size(); i++) {
        if (i) out_ += ", ";
        append_number(out_, field_.index[i]);
    }
    out_ += "], ";
}

void JsonDump::put_values() {
    out_ += ", \"values\": [";
    for (size_t i = 0; i < field_.values.size(); i++) {
        const FieldValue &value = field_.values[i];
        if (i) out_ += ", ";
        if (value.kind == FieldValue::unset) {
            out_ += "null";
        } else if (value.kind == FieldValue::number && is_json_number(value.content)) {
            out_ += value.content;
        } else {
            append_json(out_, value.content, style_.utf8 || style_.lines);
        }
    }
    out_ += ']';
}

void JsonDump::begin_line(const Line &line) {
    places_.place(line, field_);
    shown_ = style_.match.empty();
    for (const PathPattern &pattern : style_.match) shown_ |= pattern.matches(field_.path);
    if (!shown_) return;
    begin_file();
    if (style_.lines) {
        out_ += "{\"file\": " + file_ + ", \"format\": " + format_ + ", ";
    } else {
        out_ += any_line_ ? ",\n{" : "\n{";
    }
    any_line_ = true;
    put_path();
    out_ += "\"text\": \"";
}

void JsonDump::put_text(std::string_view text) {
    std::string joined;
    if (!pending_.empty()) {
        joined = pending_ + std::string(text);
        text = joined;
    }
    const size_t left = append_characters(out_, text, style_.utf8 || style_.lines, false);
    pending_ = text.substr(text.size() - left);
}

void JsonDump::end_line(const Line &line) {
    append_characters(out_, pending_, style_.utf8 || style_.lines, true);
    pending_.clear();
    out_ += '"';
    if (line.is_listing) {
        out_ += ", \"listing\": true";
    } else if (long_value_) {
        out_ += ", \"values\": [null]";
    } else if (!field_.values.empty()) {
        put_values();
    }
    if (!line.at.empty()) {
        out_ += ", \"at\": [";
        for (size_t i = 0; i < line.at.size(); i++) {
            out_ += i ? ", [" : "[";
            append_number(out_, line.at[i].offset);
            out_ += ", ";
            append_number(out_, line.at[i].size);
            out_ += ']';
        }
        out_ += ']';
    }
    if (!note_.name.empty()) {
        out_ += ", \"name\": ";
        append_json(out_, note_.name, style_.utf8 || style_.lines);
    }
    if (!note_.decoded.empty()) out_ += ", \"decoded\": " + note_.decoded;
    if (!line.ends) out_ += ", \"open\": true";
    out_ += style_.lines ? "}\n" : "}";
    if (out_.size() >= kBlock) flush();
}

void JsonDump::line(const Line &line) {
    // Labels of a primer pack count whether or not its lines are shown.
    if (is_mxf_ && !in_line_) note_ = registers_.note(line);
    if (!in_line_) begin_line(line);
    long_value_ = in_line_ || line.goes_on;
    in_line_ = line.goes_on;
    if (!shown_) return;
    put_text(line.text);
    if (!line.goes_on) end_line(line);
    if (out_.size() >= kBlock) flush();
}

void JsonDump::finish(std::string_view message, int status) {
    const bool told = !message.empty() || status != 0;
    if (style_.lines && told) out_ += "{\"file\": " + file_ + ", \"format\": " + format_;
    if (!style_.lines) {
        begin_file();
        out_ += any_line_ ? "\n]" : "]";
    }
    if (!message.empty()) {
        out_ += ", \"message\": ";
        append_json(out_, message, style_.utf8 || style_.lines);
    }
    if (status != 0) {
        out_ += ", \"status\": ";
        append_number(out_, static_cast<uint64_t>(status));
    }
    if (!style_.lines) out_ += '}';
    if (style_.lines && told) out_ += "}\n";
    flush();
}

std::string JsonDump::broken_off(const JsonStyle &style, std::string_view file, bool begun,
                                 std::string_view message) {
    const bool utf8 = style.utf8 || style.lines;
    std::string out;
    if (!begun || style.lines) {
        out += "{\"file\": ";
        append_json(out, file, utf8);
        out += ", \"format\": null";
        if (!style.lines) out += ", \"lines\": [";
    }
    if (!style.lines) out += begun ? "\n]" : "]";
    out += ", \"message\": ";
    append_json(out, message, utf8);
    return out + (style.lines ? "}\n" : "}");
}

bool dump_as_json(const std::string &path, const DumpOptions &options, const JsonStyle &style,
                  JobOutput &output) {
    JsonDump json(style, path, output);
    const DumpOutcome outcome = dump(path.c_str(), options, &json);
    std::string message;
    if (outcome.end == DumpOutcome::unopened) message = "could not open file";
    if (outcome.end == DumpOutcome::unknown) message = "unknown file format";
    json.finish(message, outcome.status);
    if (!message.empty()) output.complain(message);
    return message.empty();
}
