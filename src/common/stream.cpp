#include "common/stream.h"

#include <algorithm>
#include <cstring>
#include <vector>

#include "common/input.h"
#include "common/print.h"

namespace {

constexpr size_t kMostRanges = 4096;  // of a line before those that touch are joined
constexpr size_t kMostOwn = 16;       // marked arguments of a print call

// A part of a copy in memory, and where it comes from.
struct CopiedPart {
    uint64_t start;
    FileRange range;
};

// Bytes of the file in memory.
struct Copy {
    std::span<const uint8_t> bytes;
    FileRange place;
    uint32_t swapped = 0;
};

// What is known of the line that is being printed; its text is what standard output holds.
struct State {
    Listener *listener = nullptr;
    Input *file = nullptr;  // whose bytes are told
    Line line;
    std::vector<Piece> pieces;
    std::vector<FileRange> reads;
    bool exact = false;
    std::vector<FileRange> also;  // ranges that are told, whatever was read
    std::vector<CopiedPart> copied;
    const char *own[kMostOwn];
    size_t own_count = 0;
    Copy copy;
};

State state;

// What lies behind the end of the file is none of its bytes.
void clip(std::vector<FileRange> &ranges) {
    const uint64_t end = state.file ? state.file->end() : UINT64_MAX;
    while (!ranges.empty() && ranges.back().offset >= end) ranges.pop_back();
    if (!ranges.empty()) ranges.back().size = std::min(ranges.back().size, end - ranges.back().offset);
}

// In order, those that touch joined.
void normalize(std::vector<FileRange> &ranges) {
    if (ranges.size() < 2) return;
    std::ranges::sort(ranges, {}, &FileRange::offset);
    size_t kept = 0;
    for (const FileRange &range : ranges) {
        if (kept > 0 && range.offset <= ranges[kept - 1].end()) {
            FileRange &last = ranges[kept - 1];
            last.size = std::max(last.end(), range.end()) - last.offset;
        } else {
            ranges[kept++] = range;
        }
    }
    ranges.resize(kept);
}

// Adds a range, to the last one where they touch.
void add_to(std::vector<FileRange> &ranges, FileRange range) {
    if (!ranges.empty() && range.offset >= ranges.back().offset && range.offset <= ranges.back().end()) {
        FileRange &last = ranges.back();
        last.size = std::max(last.end(), range.end()) - last.offset;
        return;
    }
    if (ranges.size() >= kMostRanges) {
        normalize(ranges);
        // So many that are apart tell nobody more than where they lie.
        if (ranges.size() >= kMostRanges / 2) {
            ranges.front().size = ranges.back().end() - ranges.front().offset;
            ranges.resize(1);
        }
    }
    ranges.push_back(range);
}

// Adds a range of the copy, if one is looked at, as those of the file that it was made of.
void add_bytes(std::vector<FileRange> &ranges, FileRange range) {
    if (state.copied.empty()) return add_to(ranges, range);
    auto part = std::ranges::upper_bound(state.copied, range.offset, {}, &CopiedPart::start);
    if (part != state.copied.begin()) part--;
    for (; part != state.copied.end() && part->start < range.end(); part++) {
        const uint64_t first = std::max(range.offset, part->start);
        const uint64_t end = std::min(range.end(), part->start + part->range.size);
        if (first < end) add_to(ranges, {part->range.offset + first - part->start, end - first});
    }
}

// Where bytes in memory begin in the copy; its size for those that are none of it.
size_t place_in_copy(const Bytes &bytes) {
    const std::span<const uint8_t> copy = state.copy.bytes;
    const uint8_t *first = bytes.span(0, bytes.size()).data();
    // One below the copy is, as a number, far beyond it.
    const uintptr_t place = reinterpret_cast<uintptr_t>(first) - reinterpret_cast<uintptr_t>(copy.data());
    return std::min(size_t{place}, copy.size());
}

// Adds what bytes of the copy in memory were in the file.
void add_copied(std::vector<FileRange> &ranges, const Bytes &bytes) {
    const Copy &copy = state.copy;
    const size_t first = place_in_copy(bytes);
    for (size_t i = first; i < copy.bytes.size() && i - first < bytes.size(); i++) {
        const uint64_t at = i ^ copy.swapped;
        if (at < copy.place.size) add_to(ranges, {copy.place.offset + at, 1});
    }
}

uint32_t held_length() { return static_cast<uint32_t>(standard_output.held().size()); }

// What no piece covers is text of the file.
void cover(std::vector<Piece> &pieces, uint32_t end) {
    uint32_t at = 0;
    for (size_t i = 0; i < pieces.size(); at = pieces[i].start + pieces[i].size, i++) {
        if (pieces[i].start <= at) continue;
        const Piece text{.kind = Piece::text, .start = at, .size = pieces[i].start - at};
        pieces.insert(pieces.begin() + static_cast<ptrdiff_t>(i), text);
    }
    if (at < end) pieces.push_back({.kind = Piece::text, .start = at, .size = end - at});
}

void tell(bool ends) {
    state.reads.insert(state.reads.end(), state.also.begin(), state.also.end());
    normalize(state.reads);
    clip(state.reads);
    if (!state.line.is_listing) cover(state.pieces, held_length());
    state.line.text = standard_output.held();
    state.line.pieces = state.pieces;
    state.line.at = state.reads;
    state.line.ends = ends;
    state.listener->line(state.line);
    state.line = {};
    state.pieces.clear();
    standard_output.drop();
}

}  // namespace

Copied::Copied(const Bytes &copy, FileRange place, uint32_t swapped) {
    if (listening) state.copy = {copy.span(0, copy.size()), place, swapped};
}

Copied::Copied(std::span<const FileRange> parts) {
    uint64_t start = 0;
    for (size_t i = 0; listening && i < parts.size(); i++) {
        state.copied.push_back({start, parts[i]});
        start += parts[i].size;
    }
}

Copied::~Copied() {
    state.copy = {};
    state.copied.clear();
}

Listening::Listening(Listener *listener) {
    listening = listener != nullptr;
    state = {};
    state.listener = listener;
}

Listening::~Listening() {
    if (listening) standard_output.drop();
    listening = false;
    state = {};
}

void Listening::to_dump_of(Input &file) { state.file = &file; }

void Listening::finish() {
    if (listening && held_length() > 0) tell(false);
}

namespace stream {

void end_line(bool is_listing) {
    state.line.is_listing = is_listing;
    tell(true);
    clear_reads();
}

// A part of a line that is longer than the block.
void end_part() {
    state.line.goes_on = true;
    tell(false);
}

void add(const Piece &piece) {
    if (piece.size == 0 && piece.kind == Piece::literal) return;
    if (!state.pieces.empty() && (piece.kind == Piece::literal || piece.kind == Piece::text)) {
        Piece &last = state.pieces.back();
        if (last.kind == piece.kind && last.start + last.size == piece.start) {
            last.size += piece.size;
            return;
        }
    }
    state.pieces.push_back(piece);
}

void add_read(uint64_t offset, uint64_t n) {
    if (!state.exact) add_bytes(state.reads, {offset, n});
}

void add_also(FileRange range) { add_bytes(state.also, range); }

void add_also(const Bytes &bytes) {
    const FileRange range = bytes.file_range();
    if (range.size) {
        add_also(range);
    } else {
        add_copied(state.also, bytes);
    }
}

void set_exact(const Bytes &bytes) {
    const FileRange range = bytes.file_range();
    if (range.size) return set_exact(range);
    if (bytes.empty() || place_in_copy(bytes) >= state.copy.bytes.size()) return;
    set_exact(FileRange{});
    add_copied(state.reads, bytes);
}

void set_exact(FileRange range) {
    state.reads.clear();
    if (range.size) add_bytes(state.reads, range);
    state.exact = true;
}

void clear_reads() {
    state.reads.clear();
    state.also.clear();
    state.exact = false;
}

// The line is of exactly what was looked at so far.
void keep_reads() { state.exact = true; }

void add_own(const char *text) {
    if (state.own_count < kMostOwn) state.own[state.own_count++] = text;
}

bool is_own(const char *text) {
    return std::find(state.own, state.own + state.own_count, text) != state.own + state.own_count;
}

void forget_own() { state.own_count = 0; }

void mark_position(uint32_t deeper) {
    state.line.behind_position = held_length();
    state.line.deeper = deeper;
}

void mark_aside() { state.line.is_aside = true; }

void mark_field() { state.line.is_field = true; }

void mark_label(bool is_own) {
    state.line.label_is_marked = true;
    state.line.label_start = held_length();
    state.line.label_is_own = is_own;
}

void mark_label_end() {
    if (!state.line.label_is_marked) {
        state.line.label_is_marked = true;
        state.line.label_start = state.line.behind_position;
    }
    state.line.label_end = held_length();
}

void tell_format(const char *name) {
    if (listening) state.listener->format(name);
}

}  // namespace stream
