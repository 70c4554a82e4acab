// Film transfer data after SMPTE RP 215.
#pragma once

#include <cstdint>

#include "common/bytes.h"
#include "common/values.h"

// Prints the packets of a block of `length` bytes, of which the last two are its CRC, and a line when the CRC
// does not match (not with `skip_crc`). What lies beyond the window reads as zero.
void rp215_dump(Bytes block, uint32_t length, int skip_crc);

// Two bytes as a decimal float: a signed 4-bit exponent to 10, then a 12-bit mantissa.
double rpfloat16(Bytes bytes);

// The CRC of a block: its last two bytes are left out.
uint32_t rp215_crc(Bytes block, uint32_t length);
