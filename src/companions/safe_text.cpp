#include "companions/safe_text.h"

#include <cstdint>

namespace {

uint8_t byte_of(char c) { return static_cast<uint8_t>(c); }

void escape(char c, std::string &out) {
    static constexpr char kDigits[] = "0123456789abcdef";
    out += "\\x";
    out += kDigits[byte_of(c) >> 4];
    out += kDigits[byte_of(c) & 15];
}

bool is_plain(char c) { return byte_of(c) >= 0x20 && byte_of(c) < 0x7F; }

// Characters that turn the direction of text or end a line, unseen: U+061C, U+200E, U+200F, U+2028 to U+202E,
// U+2066 to U+2069.
bool steers_text(std::string_view character) {
    if (character == "\u061C") return true;
    if (character.size() != 3 || character[0] != '\xE2') return false;
    const uint8_t last = byte_of(character[2]);
    if (character[1] == '\x80') return last == 0x8E || last == 0x8F || (last >= 0xA8 && last <= 0xAE);
    return character[1] == '\x81' && last >= 0xA6 && last <= 0xA9;
}

// Appends the safe text of `text` and returns how many bytes are done; at the end of a text everything is.
size_t append_safe(std::string_view text, bool running, bool at_end, std::string &out) {
    size_t i = 0;
    while (i < text.size()) {
        size_t plain = i;
        while (plain < text.size() && is_plain(text[plain])) plain++;
        out.append(text, i, plain - i);
        i = plain;
        if (i == text.size()) break;
        const std::string_view rest = text.substr(i);
        if (running && (rest[0] == '\n' || rest[0] == '\t' || rest.starts_with("\r\n"))) {
            out += text[i++];
            continue;
        }
        if (!at_end && rest == "\r") break;
        const size_t length = utf8_length(rest);
        if (length > rest.size() && !at_end) break;
        const bool control = byte_of(rest[0]) == 0xC2 && rest.size() > 1 && byte_of(rest[1]) < 0xA0;
        const bool passes =
            length > 1 && length <= rest.size() && !control && !steers_text(rest.substr(0, length));
        const size_t done = passes || (length > 1 && length <= rest.size()) ? length : 1;
        if (passes) {
            out.append(rest, 0, done);
        } else {
            for (const char c : rest.substr(0, done)) escape(c, out);
        }
        i += done;
    }
    return i;
}

}  // namespace

size_t utf8_length(std::string_view text) {
    const uint8_t first = text.empty() ? 0xFF : byte_of(text[0]);
    if (first < 0x80) return 1;
    const size_t length = first >= 0xF0 ? 4 : first >= 0xE0 ? 3 : 2;
    if (first < 0xC2 || first > 0xF4) return 0;
    for (size_t i = 1; i < length && i < text.size(); i++) {
        const uint8_t c = byte_of(text[i]);
        if ((c & 0xC0) != 0x80) return 0;
        if (i > 1) continue;
        if ((first == 0xE0 && c < 0xA0) || (first == 0xED && c > 0x9F)) return 0;
        if ((first == 0xF0 && c < 0x90) || (first == 0xF4 && c > 0x8F)) return 0;
    }
    return length;
}

std::string safe_name(std::string_view name) {
    std::string out;
    append_safe(name, false, true, out);
    return out;
}

void SafeText::add(std::string_view piece, std::string &out) {
    if (waiting_.empty()) {
        waiting_ = piece.substr(append_safe(piece, true, false, out));
        return;
    }
    waiting_ += piece;
    waiting_.erase(0, append_safe(waiting_, true, false, out));
}

void SafeText::finish(std::string &out) {
    append_safe(waiting_, true, true, out);
    waiting_.clear();
}
