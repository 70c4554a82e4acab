#pragma once

#include <cstdint>

#include "common/bytes.h"

// Prints the first 32 bytes of a range in rows of 8, as far as the file has them.
void jp2_hexdump(Bytes buf, uint64_t offset, uint64_t length);
