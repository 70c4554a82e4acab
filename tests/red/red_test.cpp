#include <gtest/gtest.h>

#include <algorithm>

#include "support/bytes_of.h"
#include "support/command.h"

namespace {

// A chunk with its payload filled with zeros to the size given.
std::string chunk(const std::string &type, const std::string &payload, size_t size = 0) {
    size = std::max(size, 8 + payload.size());
    return big().u32(size).text(type, 4).text(payload, size - 8).str();
}

// The same as version 2 places it: the next chunk begins at a multiple of 4096.
std::string aligned(const std::string &chunk) {
    return big().raw(chunk).zeros((4096 - chunk.size() % 4096) % 4096).str();
}

std::string record(uint8_t type, uint8_t id, const std::string &value) {
    return big().u8(3 + value.size(), type, id).raw(value).str();
}

const std::string kEdgeCode = record(0x10, 0, "01:02:03:04\x01");

// Records of every type, the last of which ends the run, and the 16 bytes that no record begins in.
std::string records() {
    return kEdgeCode + record(0x10, 1, big().text("10:00").u8(0).text("x").str()) +
           record(0x20, 7, big().f32(-1.5F).str()) + record(0x20, 8, "abc") +
           record(0x40, 9, big().u16(0xFFFE).str()) + record(0x10, 41, "") +
           record(0x30, 10, "0123456789abcdefg") + record(0x61, 255, "z") + std::string(16, '\0');
}

std::string verbose_dump(const std::string &file, size_t verbose) {
    return dump_of(file, "file.r3d", std::vector<std::string>(verbose, "-v"));
}

const std::string kMissing =
    "Marker RDVO missing\nMarker RDVS missing\nMarker RDAO missing\nMarker RDAS missing\n"
    "Marker REOB/REOF/REOS missing\n";

TEST(Records, ShownByVerbosity) {
    Transcript transcript;
    const std::string file = chunk("RED1", "") + chunk("REDV", big().zeros(5).raw(records()).str());
    SHOW(lines_from(dump_of(file), "frame 0", 4));
    SHOW(lines_from(verbose_dump(file, 1), "frame 0"));
    SHOW(lines_from(verbose_dump(file, 2), "00000005", 3));
}

// A run ends 16 bytes before the chunk does, or where the bytes end that are held of a large chunk; the scan
// for the next one goes on behind it, as far as its first 256 bytes.
TEST(Records, WhereRunsBeginAndEnd) {
    Transcript transcript;
    const auto of_frame = [](const std::string &payload, size_t size) {
        return lines_from(verbose_dump(chunk("RED1", "") + chunk("REDV", payload, size), 1), "frame 0");
    };
    SHOW(of_frame((kEdgeCode + kEdgeCode + kEdgeCode).substr(0, 38), 46));
    const std::string ended = kEdgeCode + record(0x70, 1, "");
    SHOW(of_frame(big().raw(ended + kEdgeCode + kEdgeCode).at(256).raw(kEdgeCode).str(), 400));
    std::string large;
    while (large.size() < 16400) large += kEdgeCode;
    SHOW(lines_from(of_frame(large, 20000), "00003ffc"));
}

// The last place where a run, or a record of a run, may begin; the last type that a run goes on behind;
// values that are too short for their type.
TEST(Records, Edges) {
    const auto of_frame = [](const std::string &payload, size_t size) {
        const std::string dump = verbose_dump(chunk("RED1", "") + chunk("REDV", payload, size), 1);
        return dump.substr(dump.find("frame 0") + 8, dump.find("Marker") - dump.find("frame 0") - 8);
    };
    const auto lines = [&](const std::string &payload, size_t size) {
        const std::string text = of_frame(payload, size);
        return std::count(text.begin(), text.end(), '\n');
    };
    EXPECT_EQ(lines(big().at(255).raw(kEdgeCode).str(), 400),
              3);  // with its timecode and the record of zeros
    EXPECT_EQ(lines(big().at(256).raw(kEdgeCode).str(), 400), 0);
    for (const size_t tail : {16, 17})
        EXPECT_EQ(lines(kEdgeCode + record(0x40, 9, "ab"), 15 + tail), tail == 16 ? 2 : 3) << tail;
    EXPECT_EQ(lines(kEdgeCode + record(0x60, 1, "") + record(0x40, 2, "ab"), 200), 5);
    const std::string values =
        kEdgeCode + record(0x40, 9, "a") + record(0x20, 8, "abc") + record(0x61, 7, "");
    EXPECT_EQ(lines_from(of_frame(values, 200), "0000000f"),
              "0000000f 64  4  9 '0'\n00000013 32  6  8 '0.000000'\n00000019 97  3  7 ''\n");
    // Of a large chunk 16384 bytes are held: records begin there up to the last one.
    for (const size_t last : {16383, 16384}) {
        std::string run = kEdgeCode + record(0x61 - 1, 1, std::string(last - 15 * 1091 - 3, 'x'));
        for (int i = 0; i < 1090; i++) run += kEdgeCode;
        const std::string end = of_frame(run + kEdgeCode + kEdgeCode, 20000);
        EXPECT_EQ(lines_from(end, "00003fff"), last == 16383 ? "00003fff 0 15  0 ''\n" : "");
        EXPECT_EQ(lines_from(end, "00004000"), "");
    }
}

TEST(Version1, TablesAndEnd) {
    Transcript transcript;
    const std::string file = chunk("RED1", big().at(44).u32(4096, 2304, 24000).u16(1001).str()) +
                             chunk("REDV", "", 40) + chunk("REDA", "", 10) + chunk("REDV", "", 50) +
                             chunk("RPAD", "") + chunk("RDVO", big().u32(66, 0x99, 3).str()) +
                             chunk("RDVS", big().u32(41, 50).u16(0).str()) +
                             chunk("RDAO", big().u32(106).str()) + chunk("RDAS", big().u32(10).str()) +
                             chunk("REOF", big().u32(1, 2, 3, 4, 5, -6U, 7, 80, -9U).str());
    SHOW(dump_of(file));
    for (const char *end : {"REOB", "REOS"}) {
        SHOW(lines_from(dump_of(chunk("RED1", "") + chunk(end, big().u32(1, 2).at(36).u32(3).str())), "000"));
    }
}

TEST(Version1, FirstFramesAndPackets) {
    Transcript transcript;
    std::string file = chunk("RED1", "");
    for (int i = 0; i < 12; i++) file += chunk("REDV", kEdgeCode) + chunk("REDA", "");
    SHOW(lines_from(dump_of(file), "frame 8", 9));
    EXPECT_EQ(lines_from(dump_of(file), "packet 10"), "");
    EXPECT_EQ(lines_from(verbose_dump(file, 1), "packet 11"), "packet 11\n" + kMissing);
}

TEST(Version1, HexDumps) {
    Transcript transcript;
    const std::string file =
        chunk("RED1", "") + chunk("X\x01", "a \x7F~!123456789") + chunk("RDVS", "", 5000) + chunk("RPAD", "");
    SHOW(lines_from(verbose_dump(file, 2), "00000008/", 4));
    EXPECT_EQ(lines_from(verbose_dump(file, 1), "00000008 "), "");
    EXPECT_EQ(lines_from(verbose_dump(file, 2), "00000000 "), "");
    SHOW(lines_from(verbose_dump(file, 3), "0000100e", 4));
}

// Sizes are unsigned and positions 64-bit; sizes that do not even hold the chunk's header move on by as much.
TEST(Walk, OddSizes) {
    Transcript transcript;
    Workplace place;
    const std::string rpad = big().u32(0xFFFFFFFF).text("RPAD").str();
    place.write_sparse("long.r3d", 0x200000018, 0, chunk("RED1", "") + rpad);
    place.write_sparse("long.r3d", 0x200000018, 0x100000007, rpad);
    place.write_sparse("long.r3d", 0x200000018, 0x200000006, chunk("REDA", "", 18));
    SHOW(lines_from(place.run({"long.r3d"}).out, "00000008/"));
    const std::string small = big().raw(chunk("RED1", "")).u32(7).text("AB").u8(0).zeros(16385).str();
    SHOW(lines_from(verbose_dump(small, 2), "00000008/"));
    const std::string cut = chunk("RED1", "") + chunk("REDV", "", 9).substr(0, 8);
    EXPECT_EQ(lines_from(dump_of(cut), "00000008/"), "00000008/REDV 9\n" + kMissing);
}

TEST(Version2, HeaderFramesIndexAndEnd) {
    Transcript transcript;
    const std::string head = big().at(68).u32(5120, 2700).zeros(2).u16(1001).u32(24000).raw(records()).str();
    std::string file = aligned(chunk("RED2", head, 5000));
    for (int i = 0; i < 19; i++) file += aligned(chunk("RDI\x7F", kEdgeCode));
    auto index = big().at(60).u32(2, 0x11, 300, 0x80000000, 0x22, 400, 5);
    file += aligned(chunk("RII1", index.str())) + aligned(chunk("RII1", index.str().substr(0, 68)));
    auto end = big().at(56).u64(UINT64_MAX - 1).zeros(12).u32(0xABC, 0xDEF, 19).at(96).u16(40000);
    file += chunk("REOB", end.raw(kEdgeCode).zeros(20).str());
    const std::string dump = dump_of(file);
    SHOW(lines_from(dump, "Fileformat", 10));
    SHOW(lines_from(dump, "frame               : 9", 4));
    SHOW(lines_from(dump, "00015000"));
    // Frames are never dumped in hexadecimal, other chunks from the second -v on, described or not.
    SHOW(lines_from(verbose_dump(file, 2), "00000ff0", 3));
    SHOW(lines_from(verbose_dump(file, 2), "00017080"));
}

// An entry is listed when the last of its values has a number below that of the frames and lies in the chunk.
TEST(Version2, IndexByFramesAndSize) {
    const auto entries = [](int frames, size_t values) {
        std::string file = aligned(chunk("RED2", ""));
        for (int i = 0; i < frames; i++) file += aligned(chunk("RDI", ""));
        const std::string dump = dump_of(file + chunk("RII", std::string(values, '\x01')));
        const std::string listed = lines_from(dump, " Frame ");
        return std::count(listed.begin(), listed.end(), '\n');
    };
    for (const auto &[frames, listed] : {std::pair{17, 0}, {18, 1}, {20, 1}, {21, 2}})
        EXPECT_EQ(entries(frames, 400), listed) << frames;
    EXPECT_EQ(entries(30, 4 * 18), 1);
    EXPECT_EQ(entries(30, 4 * 18 - 1), 0);
}

// Frames are counted up to 8192; what a walk looks at of a chunk must be there, 16376 bytes behind its
// header.
TEST(Version2, ManyFramesAndCutChunks) {
    std::string file = aligned(chunk("RED2", ""));
    for (int i = 0; i < 8193; i++) file += aligned(chunk("RDI", ""));
    const std::string dump = verbose_dump(file, 1);
    EXPECT_EQ(lines_from(dump, "frame               : 8191", 6),
              "frame               : 8191\n02000000/RDI 8\nframe               : 8192\n"
              "02001000/RDI 8\nframe               : 8192\n");
    EXPECT_EQ(lines_from(dump, "00000000 "), "");
    const std::string large = chunk("RED2", "", 20000);
    EXPECT_NE(lines_from(dump_of(large.substr(0, 16384)), " xsize"), "");
    EXPECT_EQ(lines_from(dump_of(large.substr(0, 16383)), " xsize"), "");
}

}  // namespace
