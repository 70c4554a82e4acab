// Body items and the walk.
#include <gtest/gtest.h>

#include "klv_items.h"

namespace {

std::string element(const std::string &bytes12_to_15, const std::string &value = "essence") {
    return item("060E2B34 01020101 0D010301" + bytes12_to_15, value);
}
std::string system_item(const std::string &bytes12_to_15, const std::string &value) {
    return item("060E2B34 02430101 0D010301" + bytes12_to_15, value);
}

const std::string kLength7 = " Length             0x00000007\n";

// The lines behind the length line.
std::string detail(const std::string &content) { return body(content).substr(kLength7.size()); }

}  // namespace

TEST(Essence, ElementsOfTheGenericContainer) {
    EXPECT_EQ(body(element("15010501")),
              kLength7 + "  GC Picture\n   MPEG - Frame Wrapped Picture Element - SMPTE381\n");
    EXPECT_EQ(detail(element("15010101")), "  GC Picture\n   D11 - SMPTE367\n");
    EXPECT_EQ(detail(element("15010A01")),
              "  GC Picture\nMXFERROR @ 0x00000000 mxf_generic_data - gc picture\n");
    EXPECT_EQ(detail(element("16010C01")), "  GC Sound\n   AES - Custom-Wrapped Element - SMPTE382\n");
    EXPECT_EQ(detail(element("16010D01")), "  GC Sound\nMXFERROR @ 0x00000000 mxf_generic_data - gc sound\n");
    EXPECT_EQ(detail(element("17010A01")),
              "  GC Data\n   Uncompressed - Line Wrapped HANC Data Element - SMPTE384\n");
    EXPECT_EQ(detail(element("17010101")), "  GC Data\nMXFERROR @ 0x00000000 mxf_generic_data - gc data\n");
    EXPECT_EQ(detail(element("18010201")), "  GC Compound\n   DV - Clip Wrapped - SMPTE383\n");
    EXPECT_EQ(detail(element("18010301")),
              "  GC Compound\nMXFERROR @ 0x00000000 mxf_generic_data - gc compound - dv\n");
    EXPECT_EQ(detail(element("14010002")),
              "  GC System Item\n   Uncompressed picture Line wrapped system scheme - SMPTE384\n"
              "    Start of Line - SMPTE384\n");
    EXPECT_EQ(detail(element("14020002")), "  GC System Item\nMXFERROR @ 0x00000000 mxf_generic_data\n");
    EXPECT_EQ(detail(element("02100101")), "  Essence Container\n   AVC byte stream\n");
    EXPECT_EQ(detail(element("02010101")),
              "  Essence Container\nMXFERROR @ 0x00000000 mxf_generic_data - essence container\n");
    EXPECT_EQ(detail(element("05010601")), "  CP Picture\n   D10 - 30Mbps, 525/60\n");
    EXPECT_EQ(detail(element("06011001")), "  CP Sound\n   8Channel AES Audio - SMPTE331\n");
    EXPECT_EQ(detail(element("07010101")), "  CP Data\n");
    EXPECT_EQ(detail(element("00010101")), "  DataFormatUndefined\n");
    EXPECT_EQ(detail(element("66010101")), "MXFERROR @ 0x00000000 mxf_generic_data\n");
    EXPECT_EQ(body(element("15010501", "")), " Length             0x00000000\n");
}

TEST(Essence, SystemItems) {
    const std::string timecode = hex("81 24 45 59 63 01 23 45 67 0000000000000000");
    const std::string head = hex("71 07 5C 0001 002A 060E2B34 04010101 0D010201 01010900");
    EXPECT_EQ(lines_from(body(system_item("04010100", head + timecode + hex("87 0102 00"))), "  System"),
              recorded("mxf/expected/essence-system-items.txt"));
    const std::string empty = body(system_item("04010100", hex("00 3F") + std::string(55, '\0') + "x"));
    EXPECT_EQ(lines_from(empty, "   Bitmap"), recorded("mxf/expected/essence-system-items-2.txt"));
    std::string dirty(57, '\0');
    dirty[8] = dirty[56] = 1;
    EXPECT_EQ(lines_from(body(system_item("04010100", dirty)), "MXFERROR @ 0x0000001c"),
              "MXFERROR @ 0x0000001c mxf_check_for_zero\nMXFERROR @ 0x0000004c mxf_check_for_zero\n");
    EXPECT_EQ(detail(system_item("14010100", "x")),
              "  System metadata pack\n  Generic Container System Item\n");
    EXPECT_EQ(detail(system_item("04010200", hex("83 0001"))),
              "  Package metadata set\n   SMPTE UMID metadata\n");
    EXPECT_EQ(detail(system_item("04010200", hex("66"))),
              "  Package metadata set\nMXFERROR @ 0x00000014 mxf_print_smpte326 elementype 102 not known\n"
              "MXFERROR @ 0x00000014 mxf_print_smpte326 - not implemented\n");
    EXPECT_EQ(detail(system_item("04010700", "x")), "  Control metadata set\n");
    EXPECT_EQ(detail(system_item("04010800", "x")),
              "MXFERROR @ 0x00000000 mxf_generic_container, wrong type\n");
}

TEST(Essence, TripletsAndDocuments) {
    const std::string id = hex("00112233445566778899AABBCCDDEEFF");
    const std::string triplet = "\x10" + id + "\x08" + hex("0000000000000102") + "\x10" + id + "\x08" +
                                hex("00000000A0B0C0D0") + hex("83000004") + "data";
    const std::string encrypted = item("060E2B34 02040107 0D010301 027E0100", triplet);
    EXPECT_EQ(body(encrypted), recorded("mxf/expected/essence-triplets-and-documents.txt"));
    const std::string xml = "060E2B34 01010105 03010220 01000000";
    EXPECT_EQ(plain(item(xml, "<a>  \n  b  c \n")),
              "06.0e.2b.34.01.01.01.05-03.01.02.20.01.00.00.00 - XML Document Text\n"
              " Length             0x0000000e\n"
              "  <a>\n    b  c\n  \n\n\n");
    EXPECT_EQ(lines_from(body(item(xml, std::string(20000, 'x'))), " Length"),
              " Length             0x00004000\n  " + std::string(16384, 'x') + "\n");

    const Workplace place;
    place.write("a.mxf", element("15010801", "frame one") + encrypted + element("15010801", "frame two"));
    EXPECT_EQ(place.run({"-ms=f%02d.j2c", "a.mxf"}).status, 0);
    EXPECT_EQ(place.read("f00.j2c"), triplet);  // both series write to the same names
    EXPECT_EQ(place.read("f01.j2c"), "frame two");
    EXPECT_EQ(place.run({"-ms", "a.mxf"}).status, 0);
    EXPECT_EQ(place.read("frame_00001.jpc"), "frame two");
    const Outcome refused = place.run({"-ms=none/f%d", "a.mxf"});
    EXPECT_EQ(refused.status, 0);
    EXPECT_EQ(lines_from(refused.out, "Cannot"), "Cannot create file 'none/f0'\n");
}

TEST(Walk, NamesOfItems) {
    const std::string legacy = item("80530800 36210804 B3B398A5 1C9011D4", "0123456789");
    EXPECT_EQ(plain(item(kFiller, "xx") + legacy),
              "06.0e.2b.34.01.01.01.02-03.01.02.10.01.00.00.00 - RP210/Filler Data\n\n"
              "80.53.08.00.36.21.08.04-b3.b3.98.a5.1c.90.11.d4 - \n"
              "00000000 80 53 08 00 36 21 08 04 b3 b3                   .S..6!....\n\n\n");
    EXPECT_EQ(plain(item("060E2B34 01010101 03010210 01000000", "x")),
              "06.0e.2b.34.01.01.01.01-03.01.02.10.01.00.00.00 - MXF Filler Data\n\n\n");
    const auto name = [](const std::string &byte4) {
        const std::string dump = plain(item("060E2B34" + byte4 + "010101 66666666 66666666", "x"));
        return dump.substr(dump.find(" - ") + 3);
    };
    EXPECT_EQ(name("01"), "RP210/Unknown\n\n");
    EXPECT_EQ(name("03"), "Wrapper/Unknown\n\n");
    EXPECT_EQ(name("04"), "RP224/Unknown\n\n");
    EXPECT_EQ(name("05"), "Unknown\n\n");
    EXPECT_EQ(plain(item(kFiller, "x") + std::string(278, 'z')),
              "06.0e.2b.34.01.01.01.02-03.01.02.10.01.00.00.00 - RP210/Filler Data\n\n"
              "7a.7a.7a.7a.7a.7a.7a.7a-7a.7a.7a.7a.7a.7a.7a.7a - Could not find KLV at expected position. "
              "00000000\n\n");
}

TEST(Walk, VerboseDumps) {
    EXPECT_EQ(plain(set("3B", local(0x4801, "abcd")), {"-v"}),
              recorded("mxf/expected/walk-verbose-dumps.txt"));
    const std::string dump = plain(item(kFiller, std::string(1000, 'x')), {"-v"});
    EXPECT_EQ(lines_from(dump, "000000f0").size(), 9U + 48 + 16 + 1 + 1);
}

TEST(Walk, PositionsAndRunIn) {
    const Workplace place;
    const uint64_t size = 0x100000000 + 60;
    place.write_sparse("a.mxf", size, 0, big().hex(kFiller).u8(0x84).u32(0x1000000 - 50).str());
    for (uint64_t at = 0x1000000 - 29; at < 0x1000000; at += size) {
        place.write_sparse("a.mxf", size, at, item(kFiller, "x"));
    }
    EXPECT_EQ(lines_from(place.run({"a.mxf"}).out, "0000000000"),
              recorded("mxf/expected/walk-positions-and-run-in.txt"));
}

TEST(Walk, DamagedAndLargeItems) {
    const std::string whole = item(kFiller, "x") + set("3B", local(0x4801, "abcd"));
    // Every pass says that the last item is cut; what there is of it is dumped.
    EXPECT_EQ(plain(whole.substr(0, whole.size() - 2)),
              recorded("mxf/expected/walk-damaged-and-large-items.txt"));
    EXPECT_EQ(plain(big().hex(kFiller).hex("887FFFFFFFFFFFFFFF").str()),
              "Invalid length (-9223372036854775784)\nInvalid length (-9223372036854775784)\n");

    const Workplace place;
    const std::string large = big().hex("060E2B34 01020101 0D010301 15010801").u8(0x84).u32(20 << 20).str();
    place.write_sparse("a.mxf", (20 << 20) + 100, 0, large);
    EXPECT_EQ(place.run({"a.mxf"}).out,
              "The filepart to load next exceeds the allocated memory (20971566)\n");
    EXPECT_EQ(lines_from(place.run({"-ml", "a.mxf"}).out, "00000000", 2),
              "00000000 06.0e.2b.34.01.02.01.01-0d.01.03.01.15.01.08.01 - MXF Generic Data\n"
              " Length             0x01400000 (until 0x01400015)\n");
}
