// Value readers of GXF files. Packet headers, maps and media preambles are big-endian, field locator tables
// little-endian; UMF data comes in either order. Bytes beyond the window are 0.
#pragma once

#include <cstdint>

#include "common/values.h"

inline uint16_t gxfint16(Bytes b, uint64_t offset, bool little) {
    return little ? little16(b, offset) : big16(b, offset);
}
inline uint32_t gxfuint32(Bytes b, uint64_t offset, bool little) {
    return little ? little32(b, offset) : big32(b, offset);
}
inline int32_t gxfint32(Bytes b, uint64_t offset, bool little) {
    return static_cast<int32_t>(gxfuint32(b, offset, little));
}
inline uint64_t gxfint64(Bytes b, uint64_t offset) { return big64(b, offset); }

// A printable ASCII character as itself, any other byte as "?".
inline char gxfchar(uint8_t byte) { return is_printable(byte) ? static_cast<char>(byte) : '?'; }

// A text of up to n bytes (255 at most) that ends early at a zero byte, bytes that are not printable ASCII as
// "."; in a buffer of the print ring.
const char *gxfstring(Bytes b, uint64_t offset, unsigned n);

constexpr uint64_t kPayloadRead = 65536;  // bytes of a payload that a dump looks at

// The part of a payload that a dump looks at; false when the file does not hold all of it.
bool payload_of(Bytes rest, int64_t size, Bytes &payload);
