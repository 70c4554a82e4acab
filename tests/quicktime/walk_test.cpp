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
    Transcript transcript;
    const std::string movie =
        atom("ftyp", "qt  \x20\x05\x03 qt  A\x7F~&") + atom("free", "xyz") + atom("mdat");
    SHOW(movie_dump(movie + atom("wide")));
}

TEST(QuicktimeWalk, ContainersNestAndEntryListsShowTheirCount) {
    Transcript transcript;
    const std::string references = big().u32(0x01020304, 7).raw(atom("rsrc", counting(4))).str();
    SHOW(movie_dump(atom("moov", atom("dinf", atom("dref", references)) + atom("free"))));
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
    Transcript transcript;
    SHOW(fields_of("udta", atom("free") + std::string(4, '\0')));
    SHOW(fields_of("udta", atom("free") + "\x0D\x0C\x0B\x0A"));
    SHOW(fields_of("moov", atom("free") + std::string(4, '\0')));
}

TEST(QuicktimeWalk, SizesThatDoNotFit) {
    Transcript transcript;
    SHOW(movie_dump(atom("moov", atom("free"), 8)));
    SHOW(movie_dump(atom("moov", atom("skip", "", 9)) + atom("free", "", 0) + atom("free")));
    SHOW(fields_of("gmin", counting(24)).substr(fields_of("gmin", counting(16)).size()));
}

TEST(QuicktimeWalk, OneByteTooMany) {
    EXPECT_EQ(fields_of("gmin", counting(16)).find("rogue"), std::string::npos);
    EXPECT_NE(fields_of("gmin", counting(17)).find("*** 1 rogue bytes ***"), std::string::npos);
    const std::string flags = fields_of("sdtp", big().u32(0).u8(15, 16).str());
    EXPECT_NE(flags.find("=15 (0x0F)"), std::string::npos);
    EXPECT_NE(flags.find("=16 (0x10)"), std::string::npos);
}

TEST(QuicktimeWalk, SizeForms) {
    Transcript transcript;
    const std::string wide_payload = big().u32(1).text("mdhd").u64(16 + 28).raw(counting(28)).str();
    EXPECT_EQ(movie_dump(wide_payload + atom("free")).find("rogue"), std::string::npos);
    SHOW(lines_from(movie_dump(wide_payload + atom("free")), "  quality"));
    // Size 0: to the end of the file. The payload of an unknown type is walked.
    const std::string to_the_end = big().u32(0).text("enda").u16(1).text("tail").str();
    SHOW(movie_dump(atom("free") + to_the_end));
    SHOW(movie_dump(big().u32(0).text("wide").raw(atom("free")).str()));
}

TEST(QuicktimeWalk, MediaDataBeyond4GiB) {
    Transcript transcript;
    const Workplace place;
    const uint64_t size = 5 * (uint64_t{1} << 30);
    place.write_sparse("clip.mov", size, 0, big().u32(1).text("mdat").u64(size - 8).str());
    place.write_sparse("clip.mov", size, size - 8, atom("free"));
    SHOW(place.run({"clip.mov"}).out);
}

TEST(QuicktimeWalk, AtomsThatCannotBePassedEndTheirContainer) {
    Transcript transcript;
    const std::string broken = big().u32(7).text("free").str();
    SHOW(movie_dump(atom("moov", broken + atom("mdat")) + broken + atom("free")));
    EXPECT_EQ(movie_dump(big().u32(1).text("mdat").u64(15).raw(atom("free")).str()),
              line(0, "mdat (0x7461646D) size=1         (0x0000001)", "0"));
    EXPECT_EQ(movie_dump(big().u32(1).text("mdat").u64(-1).raw(atom("free")).str()),
              line(0, "mdat (0x7461646D) size=1         (0x0000001)", "0"));
}

TEST(QuicktimeWalk, CutFiles) {
    Transcript transcript;
    EXPECT_EQ(movie_dump(""), "");
    EXPECT_EQ(movie_dump(atom("free") + atom("free").substr(0, 7)), line(0, kFree8, "0"));
    EXPECT_EQ(movie_dump(big().u32(1).text("mdat").u32(0).str()), "");
    SHOW(movie_dump(atom("wide", "abc", 20)));
    SHOW(movie_dump(atom("moov", atom("pasp", "\1\2\3\4", 4), 4)));
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

// A child that ends one byte behind its container, and what is too short for a child or an end mark.
TEST(QuicktimeWalk, EdgesOfContainers) {
    const auto has = [](const std::string &content, const std::string &text) {
        return movie_dump(content).find(text) != std::string::npos;
    };
    EXPECT_TRUE(has(atom("moov", atom("free", "", 1)) + atom("free"), "\n" + line(0, kFree8, "10")));
    EXPECT_TRUE(has(atom("moov", atom("free") + "7 bytes") + atom("free"), "incorrect size(16 != 23)"));
    EXPECT_FALSE(has(atom("udta", atom("free") + "abc", 1), "ending"));
    EXPECT_TRUE(has(atom("wide", "a"), ": 61"));
    // A child of 32 MiB less 48 bytes counts as a whole where the file cuts it, a smaller one by what is
    // there.
    constexpr uint64_t capacity = (32 << 20) - 48;
    for (const uint64_t size : {capacity - 1, capacity}) {
        const std::string cut = atom("moov", atom("wide", "", size - 8), size - 8);
        EXPECT_EQ(has(cut, "Warning: incorrect size(16 != "), size < capacity);
    }
}

// A size that leads back to the first byte, and one byte before it.
TEST(QuicktimeWalk, EdgeOfTheWayBack) {
    for (const uint64_t before : {0, 1}) {
        const ByteWriter movie = big().u32(1).text("moov").u64(0x100000000 - before).u32(7).text("free");
        const std::string dump = movie_dump(movie.str() + atom("last"));
        EXPECT_EQ(dump.find("last") != std::string::npos, before == 1);
    }
}

// Containers whose children overrun them lead back as far as 16 times the length of the file and 4096 bytes.
TEST(QuicktimeWalk, EdgesOfTheWork) {
    constexpr uint64_t length = 64 << 20;
    for (const uint64_t beyond : {15, 16}) {
        uint64_t left = 16 * (length + 4096) + beyond;
        ByteWriter movie = big();
        const auto lead_back = [&](uint64_t too_long, uint64_t counted) {
            movie.raw(atom("moov", atom("skip", "", too_long)));
            left -= counted;
        };
        lead_back(1, 1);
        lead_back(length, length - 32);  // counts to the end of the file
        for (uint64_t n = 16; n > 0; n--) lead_back(left / n, left / n);
        movie.u32(length - movie.size()).text("free");
        const Workplace place;
        place.write_sparse("a.mov", length, 0, movie.str());
        EXPECT_EQ(place.run({"a.mov"}).out.find("free") != std::string::npos, beyond == 15) << beyond;
    }
}
