// MXF files of sets that refer to each other, built for tests.
#pragma once

#include <initializer_list>

#include "mxf/klv_items.h"

inline std::string uid(int n) { return std::string(15, '\x11') + static_cast<char>(n); }
inline std::string umid(int n) { return hex("060A2B34 01010105 01010D00 13000000") + uid(n); }
inline std::string refs(std::initializer_list<int> uids) {
    std::string all;
    for (const int n : uids) all += uid(n);
    return big().u32(uids.size(), 16).raw(all).str();
}
inline std::string number(uint64_t v, unsigned n) { return big().u64(v).str().substr(8 - n); }
inline std::string ratio(uint32_t n, uint32_t d) { return big().u32(n, d).str(); }
inline std::string wide(const std::string &text) {
    std::string out;
    for (const char c : text) out += std::string(1, '\0') + c;
    return out;
}
inline std::string set_of(const std::string &kind, int n, const std::string &items) {
    return set(kind, local(0x3C0A, uid(n)) + items);
}
inline std::string sequence(int n, int part, int kind, int64_t duration) {
    const std::string definition = hex("060E2B34 04010101 010302020" + std::to_string(kind) + "000000");
    return set_of("0F", n,
                  local(0x0201, definition) + local(0x0202, number(static_cast<uint64_t>(duration), 8)) +
                      local(0x1001, refs({part})));
}
inline std::string clip(int n, int package, int track, uint64_t start) {
    return set_of("11", n,
                  local(0x1101, package ? umid(package) : std::string(32, '\0')) +
                      local(0x1102, number(static_cast<uint64_t>(track), 4)) +
                      local(0x1201, number(start, 8)));
}
inline std::string track(int n, int id, int segment, uint32_t rate, uint32_t per) {
    return set_of("3B", n,
                  local(0x4801, number(static_cast<uint64_t>(id), 4)) + local(0x4B01, ratio(rate, per)) +
                      local(0x4803, uid(segment)));
}

// Tags of items that have no static ones.
inline std::string primer() {
    std::string rows;
    for (const auto &[tag, end] :
         std::initializer_list<std::pair<uint32_t, const char *>>{{0x8001, "06010104 06100000"},
                                                                  {0x8002, "04200401 01010000"},
                                                                  {0x8003, "04200401 01020000"},
                                                                  {0x8004, "04200401 01030000"},
                                                                  {0x8005, "04200401 01040000"},
                                                                  {0x8006, "01020210 02040000"},
                                                                  {0x8007, "01030701 01000000"},
                                                                  {0x8008, "01030701 02000000"},
                                                                  {0x8009, "03010102 03150000"},
                                                                  {0x800A, "0103040A 00000000"},
                                                                  {0x800B, "03020102 20000000"},
                                                                  {0x800C, "04010602 010B0000"},
                                                                  {0x800D, "04010603 0B000000"},
                                                                  {0x800E, "04010603 0C000000"}})
        rows += big().u16(tag).hex("060E2B34 0101010E").hex(end).str();
    return item(kPrimer, big().u32(rows.size() / 18, 18).raw(rows).str());
}

// An interlaced picture of two stored fields with two AES3 tracks, recorded from a tape.
inline std::string metadata(int64_t duration, const std::string &more) {
    const auto aes = [](int n, int id) {
        return set_of("47", n,
                      local(0x3006, number(static_cast<uint64_t>(id), 4)) + local(0x3D03, ratio(48000, 1)) +
                          local(0x3D07, number(2, 4)) + local(0x3D01, number(24, 4)));
    };
    return primer() +
           set_of(
               "36", 1,
               local(0x4401, umid(1)) + local(0x4403, refs({2})) + local(0x4405, hex("07E8050607080900"))) +
           track(2, 1, 3, 30000, 1001) + sequence(3, 4, 1, duration) + clip(4, 5, 2, 0) +
           set_of("37", 5,
                  local(0x4401, umid(5)) + local(0x4701, uid(20)) + local(0x4403, refs({6, 9, 12}))) +
           track(6, 2, 7, 30000, 1001) + sequence(7, 8, 1, duration) + clip(8, 30, 1, 1800) +
           track(9, 3, 10, 30000, 1001) + sequence(10, 11, 2, duration) + clip(11, 0, 0, 0) +
           track(12, 4, 13, 30000, 1001) + sequence(13, 14, 2, duration) + clip(14, 0, 0, 0) +
           set_of("44", 20, local(0x3F01, refs({21, 22, 23}))) +
           set_of(
               "28", 21,
               local(0x3006, number(2, 4)) + local(0x3001, ratio(30000, 1001)) + local(0x320C, number(1, 1)) +
                   local(0x3203, number(1920, 4)) + local(0x3202, number(544, 4)) +
                   local(0x3209, number(1920, 4)) + local(0x3208, number(540, 4)) +
                   local(0x320D, hex("00000002 00000004 00000015 00000248")) + local(0x320E, ratio(16, 9)) +
                   local(0x3301, number(10, 4)) + local(0x3302, number(2, 4)) +
                   local(0x3201, hex("060E2B34 0401010A 04010202 01323102")) + more) +
           aes(22, 3) + aes(23, 4) +
           set_of("37", 30,
                  local(0x4401, umid(30)) + local(0x4701, uid(31)) + local(0x4402, wide("TAPE 7")) +
                      local(0x4403, refs({32}))) +
           set_of("2E", 31, "") + track(32, 1, 33, 30000, 1001) +
           set_of("14", 33,
                  local(0x1501, number(107892, 8)) + local(0x1502, number(30, 2)) + local(0x1503, "\1")) +
           set_of("30", 40,
                  local(0x3C01, wide("Kel")) + local(0x3C02, wide("Recorder")) + local(0x3C04, wide("2.1")));
}

inline std::string partition(const std::string &kind, uint64_t place, uint64_t footer, uint64_t metadata_size,
                             uint64_t index_size = 0) {
    return item("060E2B34 02050101 0D010201 01" + kind + "00",
                big()
                    .u32(0x10002, 1)
                    .u64(place, 0, footer, metadata_size, index_size)
                    .u32(0)
                    .u64(0)
                    .u32(1)
                    .hex("060E2B34 04010101 0D010201 10000000")
                    .u32(0, 16)
                    .str());
}

inline const std::string kEssence = item("060E2B34 01020101 0D010301 15010501", std::string(3000, 'e'));

struct Clip {
    std::string bytes;
    size_t footer;
    // With items of the picture's descriptor and sets behind the others. Open files leave the durations and
    // the footer's place to the footer.
    explicit Clip(bool open, int64_t duration = 60, const std::string &more = "",
                  const std::string &behind = "") {
        const std::string sets = metadata(open ? -1 : duration, more) + behind;
        const size_t header = partition("0204", 0, 0, 0).size();
        footer = header + sets.size() + kEssence.size();
        bytes = partition(open ? "0201" : "0204", 0, open ? 0 : footer, sets.size()) + sets + kEssence;
        const std::string index = item("060E2B34 02530101 0D010201 01100100",
                                       local(0x3F0B, ratio(30000, 1001)) + local(0x3F0C, number(0, 8)) +
                                           local(0x3F0D, number(60, 8)) + local(0x3F06, number(2, 4)));
        bytes += partition("0404", footer, footer, 0, index.size()) + index;
        bytes += big().hex(kRandomIndex).u8(28).u32(1).u64(0).u32(0).u64(footer).u32(45).str();
    }
};
