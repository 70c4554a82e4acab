#pragma once

#include <cstdint>

// The raster that a count of pixels stands for: 1 and its width and height, or 0 for a count that is none's.
int yuvguess(int pixels, uint32_t *width, uint32_t *height);
