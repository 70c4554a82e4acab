#pragma once

#include "support/bytes_of.h"

inline std::string packet(uint8_t type, const std::string &payload) {
    return big().zeros(4).u8(1).u8(type).u32(16 + payload.size()).zeros(4).hex("E1E2").raw(payload).str();
}

inline const std::string kEnd = packet(0xFB, "");
