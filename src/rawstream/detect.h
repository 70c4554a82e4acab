// The raster of captured serial digital video words.
#pragma once

#include <cstdint>

// Finds the timing references in `count` 10-bit words and prints the raster that their distance stands for,
// or a warning. Returns 1 when a raster was named and its timing words are consistent, else 0.
int rawdump_formatdetect(const uint16_t *words, int count);
