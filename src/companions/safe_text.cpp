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
        const bool passes = length > 1 && length <= rest.size() && !steers_unseen(rest.substr(0, length));
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

bool steers_unseen(std::string_view character) {
    const auto byte = [&](size_t i) { return byte_of(character[i]); };
    if (character.size() == 2) return (byte(0) == 0xC2 && byte(1) < 0xA0) || character == "\u061C";
    if (character.size() != 3 || byte(0) != 0xE2) return false;
    if (byte(1) == 0x80) return byte(2) == 0x8E || byte(2) == 0x8F || (byte(2) >= 0xA8 && byte(2) <= 0xAE);
    return byte(1) == 0x81 && byte(2) >= 0xA6 && byte(2) <= 0xA9;
}

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
