// The raster of captured serial digital video words.
#pragma once

#include <cstdint>
#include <vector>

#include "common/bytes.h"
#include "common/facts.h"

// Where words stand in a file: one a byte, or three in four bytes.
struct WordPlaces {
    Bytes data = {};
    bool in_bytes = false;

    // The line that is being printed is made of n words from one on.
    void tell(int first, int n) const;
};

// Finds the timing references in `count` 10-bit words and prints the raster that their distance stands for,
// or a warning. Returns 1 when a raster was named and its timing words are consistent, else 0.
int rawdump_formatdetect(const uint16_t *words, int count, const WordPlaces &places = {});

constexpr int kSignalWords = 32768;  // that are looked at

// The first words of captured data, a byte each or three in four bytes, those of timing references by their
// eight high bits alone; what the data does not hold is 0.
std::vector<uint16_t> unpack_words(Bytes data, bool in_bytes, bool kel_packing);

// A raster by the words of a line.
struct Raster {
    uint32_t line;
    const char *text;
    uint32_t width;
    uint32_t height;
    Ratio rate = {};
};

// The raster of captured words as above, without a word; nothing where it is not known.
const Raster *find_raster(const uint16_t *words, int count);
