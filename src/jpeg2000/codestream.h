// Marker segments of JPEG 2000 codestreams (ISO/IEC 15444-1), and what the dumps of this directory share.
#pragma once

#include <cstdint>

#include "common/bytes.h"
#include "common/stream.h"

// Big-endian numbers at an offset; bytes beyond the file are 0.
inline uint32_t jp2_getint8(Bytes buf, uint64_t offset) { return buf[offset]; }
inline uint32_t jp2_getint16(Bytes buf, uint64_t offset) { return big16(buf, offset); }
inline uint32_t jp2_getint32(Bytes buf, uint64_t offset) { return big32(buf, offset); }

inline constexpr uint32_t kEndOfCodestream = 0xD9;  // marker code of EOC

// Prints the marker segment at an offset of a codestream that ends at `end`; returns the bytes to the next
// marker, through `end` or beyond when there is none, 0 when it cannot be told.
uint64_t jp2ffentry(Bytes buf, uint64_t offset, int depth, uint64_t end);

// The fields of the larger segments, from `offset` (the marker) to `end` (of the segment).
struct Segment {
    Bytes buf;
    uint64_t offset;
    uint64_t size;  // with the marker

    uint32_t u8(uint64_t at) const { return jp2_getint8(buf, offset + at); }
    uint32_t u16(uint64_t at) const { return jp2_getint16(buf, offset + at); }
    uint32_t u32(uint64_t at) const { return jp2_getint32(buf, offset + at); }
    // The line that is being printed is of n bytes from an offset on.
    void of(uint64_t at, uint64_t n) const { ::from(buf, offset + at, n); }
    // Whether an offset lies before the segment's end and inside the file.
    bool has(uint64_t at) const { return at < size && buf.has(offset + at, 1); }
};

// What later segments need of earlier ones. The state of the run's codestreams outlives each: a segment that
// comes before its codestream's SIZ goes by the one before.
struct CodestreamState {
    uint32_t cs_state = 0;  // place in the codestream's syntax
    uint32_t cs_numComponents = 0;
    uint32_t cs_numLevels = 0;

    // The bytes of an SOT marker nearest before a place of the file (0: none), as far as it was searched:
    // every search takes up where an earlier one ended.
    struct NearestSot {
        uint64_t searched_to = 0;
        uint64_t offset = 0;
    } nearest_sot;

    void enter_file() { nearest_sot = {}; }
    void enter_codestream() { cs_state = 0; }
};
// Of the run: it goes on from file to file.
CodestreamState &codestream();

void print_siz(CodestreamState &state, const Segment &segment);
void print_cod(CodestreamState &state, const Segment &segment);
void print_coc(CodestreamState &state, const Segment &segment);
void print_tlm(const Segment &segment);
void print_qcd(const Segment &segment);
void print_qcc(const CodestreamState &state, const Segment &segment);
void print_poc(const CodestreamState &state, const Segment &segment);
void print_cme(const Segment &segment);
