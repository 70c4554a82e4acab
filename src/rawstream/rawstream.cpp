#include "rawstream/rawstream.h"

#include <algorithm>
#include <vector>

#include "common/input.h"
#include "common/line_buffer.h"
#include "common/print.h"
#include "common/stream.h"
#include "common/values.h"
#include "rawstream/detect.h"

namespace {

constexpr uint64_t kMagicSize = 8;
constexpr int64_t kEightBits = 8;

struct Header {
    int64_t size = 0;
    int64_t bits = 0;
    bool kel_packing = false;  // the alternative 10-bit packing
    uint64_t data = 0;         // position of the first sample
    bool complete = false;     // its end was found before the file's
};

bool begins_with(Bytes line, const char *tag) {
    uint64_t i = 0;
    for (; tag[i]; i++) {
        if (line[i] != static_cast<uint8_t>(tag[i])) return false;
    }
    return true;
}

// A decimal number behind blanks, 0 when there is none; numbers too long stay at the largest.
int64_t decimal(Bytes text) {
    uint64_t i = 0;
    while (text[i] == ' ' || (text[i] >= '\t' && text[i] <= '\r')) i++;
    const bool negative = text[i] == '-';
    if (negative || text[i] == '+') i++;
    int64_t value = 0;
    for (; text[i] >= '0' && text[i] <= '9'; i++) {
        const int digit = text[i] - '0';
        value = value > (INT64_MAX - digit) / 10 ? INT64_MAX : value * 10 + digit;
    }
    return negative ? -value : value;
}

void print_unknown_tag(Bytes line) {
    from(line);
    print("Warning: Unknown tag '");
    print_text(line, 0);
    print("'\n");
}

void apply_line(Header &header, Bytes line) {
    if (line[0] == 0) return;
    if (begins_with(line, "size")) {
        header.size = decimal(line.from(5));
    } else if (begins_with(line, "nbits10kel")) {
        header.kel_packing = true;
    } else if (begins_with(line, "nbits")) {
        header.bits = decimal(line.from(6));
    } else if (!begins_with(line, "xsize") && !begins_with(line, "ysize") &&
               !begins_with(line, "field1size") && !begins_with(line, "field2size") &&
               !begins_with(line, "frequency")) {
        print_unknown_tag(line);
    }
}

// Lines up to a tab character, which drops the line it stands in.
Header read_header(Bytes file) {
    Header header;
    uint64_t line = kMagicSize;
    for (uint64_t i = line; i < file.size(); i++) {
        if (file[i] == '\t') {
            header.data = i + 1;
            header.complete = true;
            break;
        }
        if (file[i] != '\n') continue;
        apply_line(header, file.sub(line, i - line));
        line = i + 1;
    }
    return header;
}

char mark(uint16_t word) {
    switch (word) {
        case 0x000:
        case 0x3FF: return '*';  // timing references
        case 0x040:
        case 0x200: return ' ';  // black, zero colour difference
        default: return '.';
    }
}

void rawdump_hexdump(const uint16_t *words, int count, const WordPlaces &places) {
    constexpr int kColumns = 8;
    LineBuffer out;
    for (int row = 0; row < count; row += kColumns) {
        const int end = std::min(row + kColumns, count);
        if (listening) places.tell(row, end - row);
        out.hex(static_cast<uint64_t>(row), 6);
        out.literal("::");
        for (int i = row; i < end; i++) {
            out.literal(" ");
            out.hex(words[i], 3);
        }
        out.literal(" - '");
        for (int i = row; i < end; i++) out.put(mark(words[i]));
        out.literal("'");
        out.end_row();
    }
    out.end_line();
}

void print_unreadable() { print("Warning: Could not read file\n"); }

}  // namespace

void rawdump(DumpOptions &opts, const char *name) {
    print("Format: SDI Streamer\n");
    const NamedInput input(name);
    if (!input) {
        print("Warning: Could not open '%s'\n", name);
        print_unreadable();
        return;
    }
    if (!is_addressable(input->size())) {
        print_unreadable();
        return;
    }
    const Bytes bytes = input->bytes();
    if (!bytes_are(bytes, 0, "STREAMER")) {
        print("Warning: Streamer mode magic (STREAMER) wrong\n");
        print_unreadable();
        return;
    }
    const Header header = read_header(bytes);
    if (header.bits == 0 || !header.complete || header.size == 0) {
        print_unreadable();
        return;
    }
    const std::vector<uint16_t> words =
        unpack_words(bytes.from(header.data), header.bits == kEightBits, header.kel_packing);
    const WordPlaces places{bytes.from(header.data), header.bits == kEightBits};
    forget();
    const int consistent = rawdump_formatdetect(words.data(), kSignalWords, places);
    if (opts.verbose) {
        rawdump_hexdump(words.data(), kSignalWords, places);
    } else if (!consistent) {
        print("Use option -v to hexdump data\n");
    }
}
