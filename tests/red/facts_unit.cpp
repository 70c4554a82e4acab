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
    const std::string first =
        chunk("RED1", big().at(44).u32(4096, 2304, 24000).u16(1001).u8(2).text("A001.R3D", 257).str());
    const std::string frame = chunk("REDV", big().zeros(5).raw(kRecords).str());
    const std::string sound = chunk("REDA", big().u32(0, 48000).zeros(500).str());
    const std::string file1 =
        first + frame + sound + frame + chunk("REOB", big().zeros(16).u32(2, 1).zeros(12).str());
    const std::string second =
        chunk("RED2", big().at(68).u32(5120, 2700).u16(0, 1).u32(25).at(200).raw(kRecords).str());
    const std::string file2 = aligned(second) + aligned(frame) + aligned(frame) +
                              chunk("REOB", big().zeros(84).u32(2).zeros(36).str());
    for (const std::string &file : {file1, file2}) {
        SHOW(facts_of(file));
        SHOW(extent_of(file.substr(0, file.size() - 1), "a.r3d"));
        SHOW(extent_of(file.substr(0, file.size() / 2), "a.r3d"));
    }
}

TEST(RedFacts, Edges) {
    Transcript transcript;
    const std::string frame = chunk("REDV", big().zeros(5).raw(kRecords).str());
    const std::string sound = chunk("REDA", big().u32(0, 48000).zeros(500).str());
    const std::string first =
        chunk("RED1", big().at(44).u32(4096, 2304, 24000).u16(1001).u8(2).text("A001.R3D", 257).str()) +
        frame + sound + chunk("REOB", big().zeros(16).u32(2, 1).zeros(12).str());
    // Rates, channels, the file's name; the sound's rate; the first record, its length, the kinds of its
    // followers.
    ROWS("first", facts_changed(first, rows));
    // Kinds of the end, its length, its count of frames.
    const std::string at = std::to_string(first.size() - 44);
    const auto end = [&](const std::string &step) {
        const size_t sign = step.find('=');
        return std::to_string(first.size() - 44 + std::stoul(step.substr(0, sign))) + step.substr(sign);
    };
    SHOW(facts_changed(first, end("7=53") + " " + end("7=46") + " " + end("7=32") + " " + end("7=43") + " " +
                                  end("3=2B") + " " + end("3=2D") + " " + end("24=00000000") + " " +
                                  end("24=05F5E0FF") + " " + end("24=05F5E100")));
    SHOW(facts_changed(first, "<" + at + " <" + std::to_string(first.size() - 43) + " <" +
                                  std::to_string(first.size() - 40) + " >65491 >65492 >65493"));
}

// Chunks follow each other at multiples of 4096.
TEST(RedFacts, WithoutAnEnd) {
    Transcript transcript;
    const std::string second =
        chunk("RED2", big().at(68).u32(5120, 2700).u16(0, 1).u32(25).at(200).raw(kRecords).str());
    const std::string frame = chunk("REDV", big().zeros(4088).str());
    const std::string file = aligned(second) + frame + frame;
    ROWS("file", facts_changed(file, rows));
}
