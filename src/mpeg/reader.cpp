#include "mpeg/reader.h"

#include <algorithm>
#include <cstdio>

#include "common/print.h"
#include "common/stream.h"

namespace {

constexpr int64_t kSmallestRead = 4096;

// Makes the block hold the byte at the position; false beyond the end of the file.
bool hold_position(mpeg_reader &reader) {
    const int64_t behind = reader.block_start + reader.block_size;
    if (reader.position >= reader.block_start && reader.position < behind) return true;
    if (reader.position < 0) return false;
    // What is read in sequence, even with short skips, is read in larger and larger pieces.
    const bool sequential =
        reader.block_size > 0 && reader.position >= behind && reader.position < behind + kSmallestRead;
    const int64_t wanted =
        sequential ? std::min<int64_t>(reader.block_size * 2, sizeof reader.block) : kSmallestRead;
    reader.block_start = reader.position;
    reader.block_size = static_cast<int64_t>(reader.file->read(static_cast<uint64_t>(reader.position),
                                                               reader.block, static_cast<uint64_t>(wanted)));
    return reader.block_size > 0;
}

void load(mpeg_reader &reader) {
    if (reader.ended) {
        reader.current = 0;
    } else if (hold_position(reader)) {
        reader.current = reader.block[reader.position - reader.block_start];
    } else {
        reader.ended = true;
        reader.current = -1;
    }
}

void next_byte(mpeg_reader &reader) {
    reader.position++;
    reader.bit = 0;
    load(reader);
}

uint32_t take_bits(mpeg_reader &reader, int count) {
    uint32_t value = 0;
    while (count > 0) {
        const int left = 8 - reader.bit;
        const int taken = std::min(left, count);
        const uint32_t byte = static_cast<uint32_t>(reader.current) & 0xFF;
        value = value << taken | (byte >> (left - taken) & ((1U << taken) - 1));
        reader.bit += taken;
        count -= taken;
        if (reader.bit == 8) next_byte(reader);
    }
    return value;
}

// Bits that are no part of a field's bytes, unless they are not as expected.
uint32_t take_marker(mpeg_reader &reader, int count, uint32_t expected) {
    const int64_t start = reader.position;
    const uint32_t bits = take_bits(reader, count);
    if (listening && bits != expected) {
        also(mpegrange(reader, start));
        aside();
    }
    return bits;
}

}  // namespace

void mpegbufferinit(mpeg_reader &reader, Input &input, int64_t offset) {
    reader.file = &input;
    reader.block_size = 0;
    mpegseek(reader, offset);
}

bool mpegseek(mpeg_reader &reader, int64_t offset) {
    reader.position = offset;
    reader.bit = 0;
    reader.ended = false;
    load(reader);
    return reader.ended;
}

uint32_t mpegbitpeek(const mpeg_reader &reader) {
    return static_cast<uint32_t>(reader.current) >> (7 - reader.bit) & 1U;
}

uint32_t mpegbit(mpeg_reader &reader) { return mpegbits(reader, 1); }

uint32_t mpegbits(mpeg_reader &reader, int count) {
    if (!listening) return take_bits(reader, count);
    const int64_t start = reader.position;
    const uint32_t value = take_bits(reader, count);
    also(mpegrange(reader, start));
    return value;
}

bool mpegbytes(mpeg_reader &reader, int64_t count) {
    if (reader.bit > 0) next_byte(reader);
    if (count > 0) {
        // As if byte after byte were loaded: the first one beyond the end is all ones, the others are zeros.
        reader.position += count - 1;
        if (!reader.ended && count > 1 && !hold_position(reader)) reader.ended = true;
        next_byte(reader);
    }
    return reader.ended;
}

uint32_t markerbit(mpeg_reader &reader) {
    const uint32_t bit = take_marker(reader, 1, 1);
    if (bit != 1) print("Error marker bit not 1\n");
    return bit;
}

uint32_t markerbits(mpeg_reader &reader, int count, uint32_t expected) {
    const uint32_t bits = take_marker(reader, count, expected);
    if (bits != expected) print("Error marker bits not %d is %d\n", expected, bits);
    return bits;
}

FileRange mpegrange(const mpeg_reader &reader, int64_t start) {
    const int64_t taken = reader.position + (reader.bit > 0 ? 1 : 0);
    const int64_t end = std::min(taken, static_cast<int64_t>(reader.file->size()));
    return {static_cast<uint64_t>(start), static_cast<uint64_t>(std::max(start, end) - start)};
}

int64_t mpegoffset(const mpeg_reader &reader, int64_t n) { return reader.position + n; }
bool mpegendoffile(const mpeg_reader &reader) { return reader.ended; }

int mpegerror(const mpeg_reader &reader, const char *text) {
    aside();
    print("ERROR:%08x:%s\n", static_cast<uint32_t>(reader.position), own(text));
    return 4;
}

ByteRun mpegrun(mpeg_reader &reader) {
    if (reader.ended || !hold_position(reader)) return {nullptr, 0};
    const int64_t at = reader.position - reader.block_start;
    return {reader.block + at, reader.block_size - at};
}
