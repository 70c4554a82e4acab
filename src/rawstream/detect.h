// The raster of captured serial digital video words.
#pragma once

#include <cstdint>

#include "common/bytes.h"

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
