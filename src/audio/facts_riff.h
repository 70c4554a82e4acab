// What the readers of RIFF files share.
#pragma once

#include <cstdint>

#include "common/facts.h"
#include "common/input.h"
#include "main/facts_of.h"

// A chunk of a RIFF or IFF file; `end` is where its header says that it ends, without a pad byte.
struct Chunk {
    uint32_t type = 0;  // as a big-endian number
    uint64_t start = 0;
    uint64_t end = 0;
    Bytes data;  // what there is of it
};

// Goes through the chunks from `at` to `end`, 48 at most; `use` may move a chunk's end, and says whether to
// go on.
template <typename Use>
void each_chunk(Bytes file, uint64_t at, uint64_t end, bool big_endian, Use use) {
    const auto is_type = [&](uint64_t place) {
        for (uint64_t i = 0; i < 4; i++) {
            if (file[place + i] < 0x20 || file[place + i] > 0x7E) return false;
        }
        return true;
    };
    for (int i = 0; i < 48 && at < end && file.has(at, 8); i++) {
        const uint64_t size = big_endian ? big32(file, at + 4) : little32(file, at + 4);
        Chunk chunk{big32(file, at), at + 8, at + 8 + size, file.sub(at + 8, size)};
        if (!is_type(at) || !use(chunk)) return;
        // A pad byte that should be there is left out by some writers.
        const bool odd = (chunk.end - chunk.start) % 2 != 0;
        at = chunk.end + (odd && (is_type(chunk.end + 1) || !is_type(chunk.end)) ? 1 : 0);
    }
}

// Whether the last bytes before an offset were never written: coded sound has no such zeros.
inline bool is_unwritten(Input &input, uint64_t start, uint64_t end) {
    return ends_in_zeros(input, start, end, 64, 2048);
}

// WAVEFORMAT and its extensions: codec, channels, rate, bits, layout. Returns bytes of a sample of all
// channels, 0 for compressed sound.
uint64_t wave_format(Bytes format, Sound &sound);

void avi_facts(Input &input, Facts &facts);
