// The chunks of an R3D file: a 32-bit size, which counts these 8 bytes, and a type of 4 characters, then the
// payload.
#pragma once

#include <cstdint>

#include "common/bytes.h"
#include "common/input.h"
#include "main/dump_options.h"

constexpr uint32_t kChunkHeader = 8;

struct RedChunk {
    uint64_t position;
    uint32_t size;
    Bytes held;  // from the chunk's first byte on, as far as the walk looks at a chunk

    uint32_t offset() const { return static_cast<uint32_t>(position); }  // as lines show it
    uint32_t payload_held() const { return static_cast<uint32_t>(held.size()) - kChunkHeader; }
};

// Whether a chunk's type is, or begins with, a text.
template <size_t N>
bool is_type(const RedChunk &chunk, const char (&type)[N]) {
    return bytes_are(chunk.held, 4, type);
}

// Reads chunk after chunk, of each only what is looked at.
class ChunkReader {
 public:
    // `most`: payload bytes that a walk looks at; `alignment`: a power of two.
    ChunkReader(Input &input, uint32_t most, uint64_t alignment)
        : input_(input), most_(most), alignment_(alignment) {}

    // The header at a position; false when the file holds no whole one.
    bool read_header(uint64_t position, RedChunk &chunk);
    // Extends `held` by the payload; false when the file ends in what is to be looked at.
    bool read_payload(RedChunk &chunk);
    // Where the chunk behind begins.
    uint64_t behind(const RedChunk &chunk) const {
        return (chunk.position + chunk.size + alignment_ - 1) & ~(alignment_ - 1);
    }

 private:
    Input &input_;
    uint32_t most_;
    uint64_t alignment_;
};

// Prints a chunk's line: its offset, the first characters of its type, and its size.
void print_chunk_line(const RedChunk &chunk, int characters);

// Prints the metadata records of a header or frame chunk. A block's records begin where the first record of
// a run, 15 bytes long with type 0x10 and id 0, is found in its first 256 bytes. `size` is the chunk's size.
// Records are printed from verbosity 1 on, the timecodes among them always.
void redinfodump(const DumpOptions &opts, Bytes block, uint32_t size);
