#include <gtest/gtest.h>

#include "support/bytes_of.h"
#include "support/command.h"

namespace {

std::string segment(const std::string &code, const std::string &content) {
    return big().hex("FF" + code).u16(2 + content.size()).raw(content).str();
}

const std::string kSoi = hex("FFD8");
const std::string kSos = segment("DA", hex("02 01 10 02 23 00 3F 12"));

// The lines of the second segment.
std::string second(const std::string &content, const std::vector<std::string> &switches = {}) {
    return lines_from(dump_of(kSoi + content, "a.jpg", switches), "00000002");
}

}  // namespace

TEST(Jpeg, Segments) {
    Transcript transcript;
    const std::string jfif = segment("E0", std::string("JFIF\0", 5) + hex("0102 01 0048 0060 03 04"));
    const std::string frame = segment("C2", hex("08 0030 0040 02 01 22 00 02 11 01"));
    SHOW(dump_of(kSoi + jfif + segment("DB", "q") + frame + segment("C4", "h") + segment("DD", "ab") + kSos +
                 "scan"));
}

TEST(Jpeg, SegmentAtTheEndOfTheFile) {
    const std::string whole = kSoi + segment("DB", "q");
    EXPECT_EQ(dump_of(whole).find("ERROR"), std::string::npos);
    EXPECT_NE(dump_of(whole.substr(0, whole.size() - 1)).find("ERROR during decoding\n"), std::string::npos);
}

TEST(Jpeg, EveryOtherMarker) {
    Transcript transcript;
    std::string every;
    for (unsigned code = 0xBF; code <= 0xFF; code++) {
        const bool alone = code == 0xD8 || code == 0xD9;
        if (code != 0xDA)
            every +=
                alone ? hex("FF" + hex_digits(code)) : segment(hex_digits(code), "x" + std::string(7, '\0'));
    }
    SHOW(second(every));
}

TEST(Jpeg, ApplicationSegments) {
    Transcript transcript;
    SHOW(lines_from(second(segment("E1", std::string("a\x01z\0tail", 8)) + kSos), " blockid", 2));
    SHOW(lines_from(second(segment("E1", "noend") + kSos), " blockid", 2));
    const std::string units = segment("E0", std::string("JFIF\0", 5) + hex("0102 03 0048 0060 00 00"));
    EXPECT_EQ(lines_from(second(units + kSos), " units", 1), " units      03 - unknown\n");

    const std::string exif("Exif\0\0", 6);
    const std::string fixed = little().text("II").u16(42).u32(10).u16(0, 1, 274, 3).u32(1, 6, 0).str();
    SHOW(lines_from(second(segment("E1", exif + fixed) + kSos), " blockid", 7));
    const std::string big_tiff = big().text("MM").u16(42).u32(8).u16(0).u32(0).str();
    SHOW(lines_from(second(segment("E1", exif + big_tiff) + kSos), " entries", 2));
    EXPECT_EQ(lines_from(second(segment("E1", exif + "XX*") + kSos), " Unknown", 1), " Unknown type\n");
}

TEST(Jpeg, VerboseAndDamaged) {
    Transcript transcript;
    SHOW(dump_of(kSoi + segment("FE", "comment") + kSos, "a.jpg", {"-v"}).substr(0, 131));
    EXPECT_EQ(second("x"), "00000002:  Expected to find 0xff, found 0x78\n:");
    EXPECT_EQ(second(segment("FE", "comment").substr(0, 8)), "00000002: COM/fe 11\nERROR during decoding\n");
    EXPECT_EQ(lines_from(second(hex("FFC0")), " components"), " components 0\n");
}
