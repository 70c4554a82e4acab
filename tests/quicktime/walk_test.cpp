// The walk: headers, containers, what is skipped and what does not fit.
#include "movie.h"

namespace {

// Most atoms below are empty or "free", so that their own line is all of their dump.
std::string line(int depth, const std::string &type_and_size, const std::string &offset) {
    return std::string(2 * static_cast<size_t>(depth), ' ') + "ATOM " + std::to_string(depth) + " " +
           type_and_size + " offset=0x" + std::string(16 - offset.size(), ' ') + offset + "\n";
}

const std::string kFree8 = "free (0x65657266) size=8         (0x0000008)";

}  // namespace

TEST(QuicktimeWalk, TopLevelAtoms) {
    const std::string movie =
        atom("ftyp", "qt  \x20\x05\x03 qt  A\x7F~&") + atom("free", "xyz") + atom("mdat");
    EXPECT_EQ(movie_dump(movie + atom("wide")),
              recorded("quicktime/expected/quicktime-walk-top-level-atoms.txt"));
}

TEST(QuicktimeWalk, ContainersNestAndEntryListsShowTheirCount) {
    const std::string references = big().u32(0x01020304).u32(7).raw(atom("rsrc", counting(4))).str();
    EXPECT_EQ(
        movie_dump(atom("moov", atom("dinf", atom("dref", references)) + atom("free"))),
        line(0, "moov (0x766F6F6D) size=52        (0x0000034)", "0") +
            line(1, "dinf (0x666E6964) size=36        (0x0000024)", "8") +
            line(2, "dref (0x66657264) size=28        (0x000001C)", "10") +
            "      version=1 (0x1)\n      flags[0]=2 (0x2)\n      flags[1]=3 (0x3)\n      flags[2]=4 (0x4)\n"
            "      nentries=7 (0x7)\n" +
            line(3, "rsrc (0x63727372) size=12        (0x000000C)", "20") +
            "        version=33 (0x21)\n        flags[0]=34 (0x22)\n        flags[1]=35 (0x23)\n"
            "        flags[2]=36 (0x24)\n" +
            line(1, kFree8, "2c"));
    for (const char *type : {"trak", "mdia", "minf", "stbl", "edts", "tapt", "wave", "gmhd", "udta"}) {
        EXPECT_EQ(fields_of(type, atom("free")), line(1, kFree8, "8")) << type;
    }
}

TEST(QuicktimeWalk, TimecodeIsAContainerInABaseMediaHeaderOnly) {
    const std::string timecode = atom("tmcd", atom("free"));
    const std::string dump = movie_dump(atom("gmhd", timecode) + timecode);
    EXPECT_EQ(lines_from(dump, "  ATOM 1", 3),
              line(1, "tmcd (0x64636D74) size=16        (0x0000010)", "8") + line(2, kFree8, "10") +
                  line(0, "tmcd (0x64636D74) size=16        (0x0000010)", "18"));
    EXPECT_EQ(lines_from(dump, "  reserved", 1), "  reserved[0]=0 (0x0)\n");
}

TEST(QuicktimeWalk, UserDataTerminators) {
    EXPECT_EQ(fields_of("udta", atom("free") + std::string(4, '\0')),
              line(1, kFree8, "8") + "  Optional ending 00000000 in udta\n");
    EXPECT_EQ(fields_of("udta", atom("free") + "\x0D\x0C\x0B\x0A"),
              line(1, kFree8, "8") + "  Warning: optional ending in udta is 0A0B0C0D\n");
    EXPECT_EQ(fields_of("moov", atom("free") + std::string(4, '\0')),
              line(1, kFree8, "8") + "Warning: incorrect size(16 != 20). Pointer adjusted\n");
}

TEST(QuicktimeWalk, SizesThatDoNotFit) {
    EXPECT_EQ(movie_dump(atom("moov", atom("free"), 8)),  // 8 bytes too long, and the file ends there
              line(0, "moov (0x766F6F6D) size=24        (0x0000018)", "0") + line(1, kFree8, "8") +
                  "Warning: incorrect size(16 != 24). Pointer adjusted\n");
    EXPECT_EQ(
        movie_dump(atom("moov", atom("skip", "", 9)) + atom("free", "", 0) + atom("free")),  // too short
        line(0, "moov (0x766F6F6D) size=16        (0x0000010)", "0") +
            line(1, "skip (0x70696B73) size=17        (0x0000011)", "8") +
            "Warning: incorrect size(25 != 16). Pointer adjusted\n" + line(0, kFree8, "10") +
            line(0, kFree8, "18"));
    EXPECT_EQ(fields_of("gmin", counting(24)).substr(fields_of("gmin", counting(16)).size()),
              "  *** 8 rogue bytes ***:\n"
              "  data 0000: 31 32 33 34 35 36 37 38                         12345678\n");
}

TEST(QuicktimeWalk, SizeForms) {
    const std::string wide_payload = big().u32(1).text("mdhd").u64(16 + 28).raw(counting(28)).str();
    EXPECT_EQ(movie_dump(wide_payload + atom("free")).find("rogue"), std::string::npos);
    EXPECT_EQ(lines_from(movie_dump(wide_payload + atom("free")), "  quality"),
              "  quality=14136 (0x3738)\n" + line(0, kFree8, "2c"));
    // Size 0: to the end of the file. The payload of an unknown type is walked.
    const std::string to_the_end = big().u32(0).text("enda").u16(1).text("tail").str();
    EXPECT_EQ(movie_dump(atom("free") + to_the_end),
              line(0, kFree8, "0") + line(0, "enda (0x61646E65) size=0         (0x0000000)", "8") +
                  "  littleendian=1 (0x1)\n");
    EXPECT_EQ(movie_dump(big().u32(0).text("wide").raw(atom("free")).str()),
              line(0, "wide (0x65646977) size=0         (0x0000000)", "0") + "  *** UNKNOWN ***\n" +
                  line(0, kFree8, "8"));
}

TEST(QuicktimeWalk, MediaDataBeyond4GiB) {
    const Workplace place;
    const uint64_t size = 5 * (uint64_t{1} << 30);
    place.write_sparse("clip.mov", size, 0, big().u32(1).text("mdat").u64(size - 8).str());
    place.write_sparse("clip.mov", size, size - 8, atom("free"));
    EXPECT_EQ(place.run({"clip.mov"}).out, "Fileformat: QT\n" +
                                               line(0, "mdat (0x7461646D) size=1         (0x0000001)", "0") +
                                               line(0, kFree8, "13ffffff8") + "\nNo problems found.\n");
}

TEST(QuicktimeWalk, AtomsThatCannotBePassedEndTheirContainer) {
    const std::string broken = big().u32(7).text("free").str();
    const std::string broken_line = "free (0x65657266) size=7         (0x0000007)";
    EXPECT_EQ(movie_dump(atom("moov", broken + atom("mdat")) + broken + atom("free")),
              line(0, "moov (0x766F6F6D) size=24        (0x0000018)", "0") + line(1, broken_line, "8") +
                  "Warning: incorrect size(16 != 24). Pointer adjusted\n" + line(0, broken_line, "18"));
    EXPECT_EQ(movie_dump(big().u32(1).text("mdat").u64(15).raw(atom("free")).str()),
              line(0, "mdat (0x7461646D) size=1         (0x0000001)", "0"));
    EXPECT_EQ(movie_dump(big().u32(1).text("mdat").u64(-1).raw(atom("free")).str()),
              line(0, "mdat (0x7461646D) size=1         (0x0000001)", "0"));
}

TEST(QuicktimeWalk, CutFiles) {
    EXPECT_EQ(movie_dump(""), "");
    EXPECT_EQ(movie_dump(atom("free") + atom("free").substr(0, 7)), line(0, kFree8, "0"));
    EXPECT_EQ(movie_dump(big().u32(1).text("mdat").u32(0).str()), "");
    EXPECT_EQ(movie_dump(atom("wide", "abc", 20)),  // the dump shows what there is
              line(0, "wide (0x65646977) size=31        (0x000001F)", "0") + "  *** UNKNOWN ***\n" +
                  "  data 0000: 61 62 63                                        abc\n");
    EXPECT_EQ(movie_dump(atom("moov", atom("pasp", "\1\2\3\4", 4), 4)),
              line(0, "moov (0x766F6F6D) size=24        (0x0000018)", "0") +
                  line(1, "pasp (0x70736170) size=16        (0x0000010)", "8") +
                  "    hspacing=16909060 (0x1020304)\n    vspacing=0 (0x0)\n    *** 4 rogue bytes ***:\n"
                  "Warning: incorrect size(20 != 24). Pointer adjusted\n");
}

TEST(QuicktimeWalk, DepthAndWorkAreLimited) {
    std::string nested;
    for (int i = 0; i < 600; i++) nested = atom("moov", nested);
    const std::string dump = movie_dump(nested);
    EXPECT_NE(dump.find("ATOM 511 moov"), std::string::npos);
    EXPECT_EQ(dump.find("ATOM 512"), std::string::npos);
    EXPECT_NE(dump.find("allocation failed"), std::string::npos);
    // Each pair leads to the end of the file and back again: twice the work with every one of them.
    std::string pairs = atom("free");
    for (int i = 0; i < 60; i++) {
        pairs = atom("moov", atom("trak", "", pairs.size())) + pairs;
    }
    EXPECT_LT(movie_dump(pairs).size(), 16U << 20);
}
