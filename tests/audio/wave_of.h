// Files of sound built chunk by chunk.
#pragma once

#include <gtest/gtest.h>

#include <string>

#include "support/boxes_changed.h"
#include "support/bytes_of.h"
#include "support/command.h"

inline std::string chunk(const std::string &type, const std::string &data, uint32_t size = 0) {
    return little().text(type).u32(size != 0 ? size : data.size()).raw(data).str();
}

inline std::string format(unsigned tag, unsigned channels, unsigned bits, const std::string &rest = "",
                          unsigned block = 0) {
    const unsigned bytes = block != 0 ? block : channels * bits / 8;
    return chunk("fmt ", little()
                             .u16(tag, channels)
                             .u32(48000, 48000 * bytes)
                             .u16(block == 1 ? 0 : bytes, bits)
                             .raw(rest)
                             .str());
}

inline std::string wave(const std::string &chunks, const std::string &id = "RIFF") {
    return little().text(id).u32(4 + chunks.size()).text("WAVE").raw(chunks).str();
}

inline const std::string kSilence(9600, '\0');
