#include <gtest/gtest.h>

#include "support/bytes_of.h"
#include "support/command.h"
#include "support/facts_text.h"

namespace {

std::string chunk(const std::string &type, const std::string &payload) {
    return big().u32(8 + payload.size()).text(type).raw(payload).str();
}

std::string aligned(const std::string &chunk) {
    return big().raw(chunk).zeros((4096 - chunk.size() % 4096) % 4096).str();
}

const std::string kRecords = big()
                                 .hex("0F1000")
                                 .text("01:02:03:04", 12)
                                 .hex("0F1001")
                                 .text("10:11:12:13", 12)
                                 .hex("08101A")
                                 .text("R001", 5)
                                 .zeros(16)
                                 .str();

}  // namespace

TEST(RedFacts, Versions) {
    Transcript transcript;
    const std::string first = chunk(
        "RED1", big().at(44).u32(4096).u32(2304).u32(24000).u16(1001).u8(2).text("A001.R3D", 257).str());
    const std::string frame = chunk("REDV", big().zeros(5).raw(kRecords).str());
    const std::string sound = chunk("REDA", big().u32(0).u32(48000).zeros(500).str());
    const std::string file1 =
        first + frame + sound + frame + chunk("REOB", big().zeros(16).u32(2).u32(1).zeros(12).str());
    const std::string second =
        chunk("RED2", big().at(68).u32(5120).u32(2700).u16(0).u16(1).u32(25).at(200).raw(kRecords).str());
    const std::string file2 = aligned(second) + aligned(frame) + aligned(frame) +
                              chunk("REOB", big().zeros(84).u32(2).zeros(36).str());
    for (const std::string &file : {file1, file2}) {
        SHOW(facts_of(file));
        SHOW(extent_of(file.substr(0, file.size() - 1), "a.r3d"));
        SHOW(extent_of(file.substr(0, file.size() / 2), "a.r3d"));
    }
}
