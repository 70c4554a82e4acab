// Value readers of RED R3D files: all values are big-endian, bytes beyond the window are 0. Texts stand in a
// buffer of the print ring.
#pragma once

#include <cstdint>

#include "common/bytes.h"

inline uint16_t red16(Bytes b, uint64_t offset) { return big16(b, offset); }
inline uint32_t red32(Bytes b, uint64_t offset) { return big32(b, offset); }
inline uint64_t red64(Bytes b, uint64_t offset) { return big64(b, offset); }

// A text of up to `most` characters (8191 at most) that ends early at a zero byte, bytes that are not
// printable ASCII as "?".
const char *redstring(int most, Bytes b, uint64_t offset);
// A signed 16-bit number, or 0 in a value of fewer than 2 bytes.
const char *redint16(int length, Bytes b, uint64_t offset);
// A 32-bit float, or 0.000000 in a value of fewer than 4 bytes.
const char *redfloat(int length, Bytes b, uint64_t offset);
// Up to 256 bytes in hexadecimal, in groups of 16.
const char *redhexscan(int length, Bytes b, uint64_t offset);
// Rows of 16 bytes with their position, counted from `base`, and their characters.
void redhexdump(Bytes b, uint32_t base);
