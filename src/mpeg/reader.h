// Bits of a file, most significant first.
#pragma once

#include <cstdint>

#include "common/input.h"

// A position in a file, read through a block of fixed size. Past the end of the file one byte reads as all
// ones, which sets the end-of-file state, and zeros follow.
struct mpeg_reader {
    int64_t position = 0;  // file offset of the byte in `current`
    int32_t bit = 0;       // consumed bits of `current`, 0 to 7
    Input *file = nullptr;
    int current = 0;

    // The block around the position, and the end-of-file state.
    uint8_t block[65536];
    int64_t block_start = 0;
    int64_t block_size = 0;
    bool ended = false;
};

// Begin at an offset, or move there; mpegseek returns the end-of-file state.
void mpegbufferinit(mpeg_reader &reader, Input &input, int64_t offset);
bool mpegseek(mpeg_reader &reader, int64_t offset);

uint32_t mpegbit(mpeg_reader &reader);
uint32_t mpegbitpeek(const mpeg_reader &reader);
// The next `count` bits as a number, which the line that is printed next is made of: of more than 32 the last
// 32, 0 for a count below 1.
uint32_t mpegbits(mpeg_reader &reader, int count);

// Finishes a partly consumed byte, then skips `count` bytes; returns the end-of-file state.
bool mpegbytes(mpeg_reader &reader, int64_t count);

// Read marker bits and print a line when they are not as expected; no line but that is made of them.
uint32_t markerbit(mpeg_reader &reader);
uint32_t markerbits(mpeg_reader &reader, int count, uint32_t expected);

// The bytes of the file from an offset up to the position, of a partly consumed byte all of it.
FileRange mpegrange(const mpeg_reader &reader, int64_t start);
int64_t mpegoffset(const mpeg_reader &reader, int64_t n);
bool mpegendoffile(const mpeg_reader &reader);

// Prints the position with a text; returns 4.
int mpegerror(const mpeg_reader &reader, const char *text);

// The whole bytes from the position to the end of the block, for scans; empty at the end of the file.
struct ByteRun {
    const uint8_t *bytes;
    int64_t size;
};
ByteRun mpegrun(mpeg_reader &reader);
