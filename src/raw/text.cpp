#include <algorithm>
#include <cstdio>

#include "common/line_buffer.h"
#include "common/print.h"
#include "raw/raw.h"

namespace {

constexpr uint64_t kMaxSize = 0x100000;
constexpr uint64_t kPiece = 0x10000;  // that is decoded in one go
constexpr size_t kLongest = 4;        // bytes of a character

enum class Encoding { bytes, utf8, utf16_little, utf16_big };

struct Mark {
    Encoding encoding;
    uint64_t size;
    const char *name;
};

Mark find_mark(Bytes text) {
    if (bytes_are(text, 0, "\xFF\xFE")) return {Encoding::utf16_little, 2, "UTF-16 (LE)"};
    if (bytes_are(text, 0, "\xFE\xFF")) return {Encoding::utf16_big, 2, "UTF-16 (BE)"};
    if (bytes_are(text, 0, "\xEF\xBB\xBF")) return {Encoding::utf8, 3, "UTF-8"};
    return {Encoding::bytes, 0, nullptr};
}

using Block = std::span<const uint8_t>;

// Decodes the character at the start of a UTF-8 text and returns the bytes that it takes. A byte that begins
// no sequence, or one whose sequence the end of the text cuts, is "?".
size_t utf8_character(Block text, uint32_t &code) {
    const uint32_t lead = text[0];
    const size_t size = lead < 0x80             ? 1
                        : (lead & 0xE0) == 0xC0 ? 2
                        : (lead & 0xF0) == 0xE0 ? 3
                        : (lead & 0xF8) == 0xF0 ? 4
                                                : 0;
    if (size == 0 || size > text.size()) {
        code = '?';
        return 1;
    }
    code = size == 1 ? lead : lead & (0x7FU >> size);
    for (size_t i = 1; i < size; i++) code = code << 6 | (text[i] & 0x3FU);
    return size;
}

// Decodes a piece of a text, but of one that goes on no character that may be cut: `put` gets each character
// and the bytes that it takes. Returns the bytes decoded; 0 where the text ends.
template <typename Put>
size_t decode(Block piece, bool goes_on, Encoding encoding, Put put) {
    Block rest = piece;
    const size_t least = goes_on ? kLongest : 1;
    switch (encoding) {
        case Encoding::bytes:
            for (const uint8_t byte : rest) put(byte, 1);
            return piece.size();
        case Encoding::utf8:
            for (uint32_t code = 0; rest.size() >= least;) {
                const size_t n = utf8_character(rest, code);
                put(code, n);
                rest = rest.subspan(n);
            }
            break;
        case Encoding::utf16_little:
            for (; rest.size() >= 2; rest = rest.subspan(2))
                put(rest[0] | static_cast<uint32_t>(rest[1]) << 8, 2);
            break;
        case Encoding::utf16_big:
            for (; rest.size() >= 2; rest = rest.subspan(2))
                put(rest[1] | static_cast<uint32_t>(rest[0]) << 8, 2);
            break;
    }
    return piece.size() - rest.size();
}

template <typename Put>
void for_each_character(Bytes text, Encoding encoding, Put put) {
    for (size_t n = 1; n > 0; text = text.from(n)) {
        const Block piece = text.span(0, kPiece);
        from(FileRange{});  // a line is of its characters, not of the piece
        n = decode(piece, piece.size() < text.size(), encoding, put);
    }
}

// A character as it is shown, written behind what is there: at most kLongest bytes. The place behind it.
using WriteCharacter = char *(char *to, uint32_t code);

char *write_utf8(char *to, uint32_t code) {
    const auto put = [&](uint32_t byte) { *to++ = static_cast<char>(byte); };
    if (code < 0x80) {
        put(code);
        return to;
    }
    if (code < 0x800) {
        put(0xC0 | code >> 6);
    } else {
        if (code < 0x10000) {
            put(0xE0 | code >> 12);
        } else {
            put(0xF0 | code >> 18);
            put(0x80 | (code >> 12 & 0x3F));
        }
        put(0x80 | (code >> 6 & 0x3F));
    }
    put(0x80 | (code & 0x3F));
    return to;
}

// Printable ASCII with TAB and LF; CR is left out, anything else (the space, too) is ".".
char *write_ascii(char *to, uint32_t code) {
    const bool shown = code == '\t' || code == '\n' || (code > 32 && code < 128);
    *to = shown ? static_cast<char>(code) : '.';
    return to + (code != '\r');
}

template <WriteCharacter write>
void put_characters(LineBuffer &out, Bytes text, Encoding encoding) {
    char piece[4096];
    char *end = piece;
    for_each_character(text, encoding, [&](uint32_t code, size_t) {
        end = write(end, code);
        if (end <= piece + sizeof piece - kLongest) return;
        out.append({piece, end});
        end = piece;
    });
    out.append({piece, end});
}

// Line feeds end lines, each of which is made of its characters: of those that can be told from the line, not
// of what is a full stop like any other.
template <WriteCharacter write>
void tell_lines(LineBuffer &out, Bytes text, Encoding encoding) {
    uint64_t offset = 0;
    for_each_character(text, encoding, [&](uint32_t code, size_t n) {
        char character[kLongest];
        const char *end = write(character, code);
        const bool is_stand_in = end != character && character[0] == '.' && code != '.';
        if (code != '\n' && end != character) out.text({character, end});
        if (!is_stand_in) also(text, offset, n);
        if (code == '\n') out.end_line();
        offset += n;
    });
}

template <WriteCharacter write>
void put_text(LineBuffer &out, Bytes text, Encoding encoding) {
    if (listening) {
        tell_lines<write>(out, text, encoding);
    } else {
        put_characters<write>(out, text, encoding);
    }
}

}  // namespace

void dumpfile(DumpOptions &opts, Input &input) {
    uint64_t size = input.size();
    if (size > kMaxSize) {
        print("Max filesize set to 0x100000\n");
        size = kMaxSize;
    }
    if (!check_buffer(size)) return;
    const Bytes text = input.present(0, size);
    const Mark mark = find_mark(text);
    if (mark.name) print("Fileformat: %s\n", mark.name);
    LineBuffer out;
    if (mark.name && opts.flag_u) out.literal("\xEF\xBB\xBF");
    if (opts.flag_u) {
        put_text<write_utf8>(out, text.from(mark.size), mark.encoding);
    } else {
        put_text<write_ascii>(out, text.from(mark.size), mark.encoding);
    }
}

void xmldump(DumpOptions &, Input &) { print("Fileformat:XML\n"); }
