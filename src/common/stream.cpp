#include "common/stream.h"

#include <algorithm>
#include <cstring>
#include <functional>

#include "common/print.h"

namespace {

constexpr size_t kMostRanges = 4096;  // of a line before those that touch are joined
constexpr size_t kMostOwn = 16;       // marked arguments of a print call

// Bytes of the file in memory.
struct Copy {
    std::span<const uint8_t> bytes;
    FileRange place;
    uint32_t swapped = 0;
};

// What is known of the line that is being printed; its text is what standard output holds.
struct State {
    Listener *listener = nullptr;
    Line line;
    std::vector<Piece> pieces;
    std::vector<FileRange> reads;
    bool exact = false;
    const char *own[kMostOwn];
    size_t own_count = 0;
    Copy copy;
};

State state;

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

// Where bytes in memory begin in the copy; its size for those that are none of it.
size_t place_in_copy(const Bytes &bytes) {
    const std::span<const uint8_t> copy = state.copy.bytes;
    const uint8_t *first = bytes.span(0, bytes.size()).data();
    const bool inside =
        std::less_equal<>{}(copy.data(), first) && std::less<>{}(first, copy.data() + copy.size());
    return inside ? static_cast<size_t>(first - copy.data()) : copy.size();
}

uint32_t length() { return static_cast<uint32_t>(standard_output.held().size()); }

void tell(bool ends) {
    normalize(state.reads);
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

Copied::~Copied() { state.copy = {}; }

Listening::Listening(Listener *listener) {
    listening = listener != nullptr;
    state = {};
    state.listener = listener;
}

Listening::~Listening() {
    standard_output.drop();
    listening = false;
    state = {};
}

void Listening::finish() {
    if (listening && length() > 0) tell(false);
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
    if (state.exact) return;
    std::vector<FileRange> &reads = state.reads;
    if (!reads.empty() && offset >= reads.back().offset && offset <= reads.back().end()) {
        FileRange &last = reads.back();
        last.size = std::max(last.end(), offset + n) - last.offset;
        return;
    }
    if (reads.size() >= kMostRanges) normalize(reads);
    reads.push_back({offset, n});
}

void add_bytes(const Bytes &bytes) {
    const FileRange range = bytes.file_range();
    if (range.size) return add_read(range.offset, range.size);
    const Copy &copy = state.copy;
    const size_t first = place_in_copy(bytes);
    for (size_t i = first; i < copy.bytes.size() && i - first < bytes.size(); i++) {
        if ((i ^ copy.swapped) < copy.place.size) add_read(copy.place.offset + (i ^ copy.swapped), 1);
    }
}

void set_exact(const Bytes &bytes) {
    if (bytes.empty() || (!bytes.file_range().size && place_in_copy(bytes) >= state.copy.bytes.size()))
        return;
    clear_reads();
    add_bytes(bytes);
    state.exact = true;
}

void set_exact(FileRange range) {
    state.reads.assign(range.size ? 1 : 0, range);
    state.exact = true;
}

void clear_reads() {
    state.reads.clear();
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
    state.line.behind_position = length();
    state.line.deeper = deeper;
}

void mark_aside() { state.line.is_aside = true; }

void mark_field() { state.line.is_field = true; }

void mark_label(bool is_own) {
    state.line.label_is_marked = true;
    state.line.label_start = length();
    state.line.label_is_own = is_own;
}

void mark_label_end() {
    if (!state.line.label_is_marked) {
        state.line.label_is_marked = true;
        state.line.label_start = state.line.behind_position;
    }
    state.line.label_end = length();
}

void tell_format(const char *name) {
    if (listening) state.listener->format(name);
}

}  // namespace stream
