// How the packets of a transport stream lie in a file.
#pragma once

#include <cstdint>
#include <utility>

#include "common/bytes.h"

struct TransportPackets {
    uint64_t size = 0;   // with a time code before each, or parity behind it; 0: there are none
    uint64_t sync = 0;   // where the sync byte is in each
    uint64_t first = 0;  // where the first one begins: behind the rest of another where the file was cut off
};

// By the sync bytes of eight packets, or of all from the start of a file that has fewer.
inline TransportPackets transport_packets(Bytes head) {
    constexpr uint64_t kMany = 8;
    constexpr std::pair<uint64_t, uint64_t> kShapes[] = {{188, 0}, {192, 4}, {204, 0}, {192, 0}};
    for (uint64_t first = 0; first < 204; first++) {
        for (const auto &[size, sync] : kShapes) {
            uint64_t n = 0;
            while (n < kMany && head[first + sync + n * size] == 0x47) n++;
            const bool is_short = first == 0 && n > 0 && !head.has(sync + n * size, 1);
            if (n == kMany || is_short) return {size, sync, first};
        }
    }
    return {};
}
