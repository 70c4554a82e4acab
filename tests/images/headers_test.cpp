#include <gtest/gtest.h>

#include "support/bytes_of.h"
#include "support/command.h"

TEST(FixedHeaders, EveryField) {
    Transcript transcript;
    const std::string bytes = counting(200);
    SHOW(dump_of(little().raw(bytes).at(0).text("BM").str()));
    SHOW(dump_of(little().raw(bytes).at(0).text("BM").at(14).u32(39).str()));
    for (const unsigned type : {1, 2, 9, 10, 3})
        SHOW(dump_of(big().raw(bytes).at(2).u8(type).str(), "a.tga"));
    for (const unsigned storage : {0, 1, 2}) SHOW(dump_of(big().raw(bytes).at(0).u16(474).u8(storage).str()));
    SHOW(dump_of(big().raw(bytes).at(0).hex("5380F634 40400000").str()));
}

TEST(Bmp, InfoHeaderOfTopDownImage) {
    Transcript transcript;
    auto w = little().text("BM").u32(0x80000000, 0, 54, 40, 640, 0xFFFFFE20).u16(1, 32);
    w.u32(3, 1228800, 2835, 0xFFFFFFFF, 5, 6);
    SHOW(dump_of(w.str()));
}

TEST(Sgi, NameStopsAtItsField) {
    auto w = big().u16(474).u8(2, 1).u16(3, 512, 256, 3).u32(0xFFFFFFFF, 255);
    w.at(24).text(std::string(80, 'n')).u32(2);
    EXPECT_EQ(lines_from(dump_of(w.str()), " pixmax"),
              " pixmax:          255\n name:            " + std::string(79, 'n') + "\n colormap:        2\n");
}

TEST(Softimage, ChainedChannelPackets) {
    Transcript transcript;
    auto w = big().hex("5380F634 40400000").text(std::string(80, 'c'));
    w.at(92).u16(720, 576).f32(1.0667F).u16(3);
    w.at(104).hex("01080290 01080060 0110070F 00080110").fill(0xFF, 4);
    SHOW(dump_of(w.str()));
    w.at(104).fill(0xFF, 100);
    SHOW(lines_from(dump_of(w.str()), "  ch7"));
}

TEST(Ppm, NumbersAsFormattedInputReadsThem) {
    const std::string raw = "Fileformat:PPM - Portable Pixmap\n";
    EXPECT_EQ(dump_of("P6\n \t\r\n+0640\n\n-480 255\n"), raw + " xsize 640\n ysize -480\n");
    EXPECT_EQ(dump_of("P6\n# a comment\n640 480\n"), raw + " xsize 0\n ysize 0\n");
    EXPECT_EQ(dump_of("P6\n640"), raw + " xsize 640\n ysize 0\n");
    EXPECT_EQ(dump_of("P6\n4294967297 99999999999999999999"), raw + " xsize 1\n ysize -1\n");
    EXPECT_EQ(dump_of("P4\n" + std::string(1 << 20, ' ') + "1 1"),
              "Fileformat:PBM - Portable Bitmap\n xsize 0\n ysize 0\n");
}

// The neighbours of white space and digits, of the largest number, and of the end of what is read.
TEST(Ppm, EdgesOfCharactersAndNumbers) {
    const auto size = [](const std::string &text) { return lines_from(dump_of("P6\n" + text), " xsize", 1); };
    EXPECT_EQ(size("\t\r7"), " xsize 7\n");
    for (const char *other : {"\b7",
                              "\x0E"
                              "7",
                              "/7", ":7"})
        EXPECT_EQ(size(other), " xsize 0\n") << other;
    EXPECT_EQ(lines_from(dump_of("P6\n12:9 5"), " xsize"), " xsize 12\n ysize 0\n");
    EXPECT_EQ(lines_from(dump_of("P6\n12/9 5"), " xsize"), " xsize 12\n ysize 0\n");
    EXPECT_EQ(size(" 9223372036854775800"), " xsize -8\n");
    EXPECT_EQ(size(" 9223372036854775810"), " xsize -1\n");
    constexpr size_t kHeadSize = 64 * 1024;
    EXPECT_EQ(size(std::string(kHeadSize - 4, ' ') + "12"), " xsize 1\n");
    EXPECT_EQ(size(std::string(kHeadSize - 3, ' ') + "12"), " xsize 0\n");
}

namespace {

ByteWriter png() { return big().hex("89504E470D0A1A0A"); }
void add_chunk(ByteWriter &w, const std::string &type, const std::string &data) {
    w.u32(data.size()).text(type).raw(data).u32(0);
}

}  // namespace

TEST(Png, ChunksButImageData) {
    Transcript transcript;
    ByteWriter w = png();
    add_chunk(w, "IHDR", big().u32(640, 480).u8(8, 6, 4, 3, 1).str());
    add_chunk(w, "pHYs", big().u32(2835, 0xFFFFFFFF).u8(2).str());
    add_chunk(w, "IDAT", std::string(300, 'x'));
    add_chunk(w, "a\x01\xFFz", std::string(17, 'd'));
    add_chunk(w, "IEND", "");
    const std::string header =
        "Fileformat:PNG\n00000008: IHDR 13\n xsize       640\n ysize       480\n bitdepth    8\n"
        " colortype   6\n compression 4\n filtertype  3\n interlace   1\n";
    const std::string pixels = "00000021: pHYs 9\n xpelsperunit 2835\n ypelsperunit -1\n unit        2\n";
    EXPECT_EQ(dump_of(w.str()), header + pixels + "0000016e: a..z 17\n0000018b: IEND 0\n");
    SHOW(dump_of(w.str(), "file.png", {"-v"}));
}

TEST(Png, LengthsThatLeadOutside) {
    const std::string cut = png().u32(100).text("tEXt").text("abc").str();
    EXPECT_EQ(dump_of(cut, "file.png", {"-v"}), "Fileformat:PNG\n00000008: tEXt 100\n     61 62 63 \n");
    const std::string negative = png().u32(0xFFFFFFF4).text("tEXt").zeros(20).str();
    EXPECT_EQ(dump_of(negative, "file.png", {"-v"}), "Fileformat:PNG\n00000008: tEXt -12\n");
    EXPECT_EQ(dump_of(png().str()), "Fileformat:PNG\n");
    EXPECT_EQ(dump_of(png().u8(1).str()), "Fileformat:PNG\n00000008: .... 16777216\n");
    const std::string empty = png().u32(0).text("tEXt").u32(0, 9).text("tEXt").u8(0x7F).str();
    EXPECT_EQ(dump_of(empty, "file.png", {"-v"}),
              "Fileformat:PNG\n00000008: tEXt 0\n00000014: tEXt 9\n     7f \n");
}

TEST(Png, FileBeyond4GiB) {
    const Workplace place;
    place.write_sparse("huge.png", 0x140000000, 0, png().u32(0x7FFFFFFF).text("IDAT").str());
    place.write_sparse("huge.png", 0x140000000, 0x80000013, big().u32(0x7FFFFFFF).text("IDAT").str());
    place.write_sparse("huge.png", 0x140000000, 0x10000001E, big().u32(0x3FFFFFD6).text("last").str());
    EXPECT_EQ(place.run({"huge.png"}).out, "Fileformat:PNG\n10000001e: last 1073741782\n");
}

TEST(Executable, DllAndHeaderAtTheEdge) {
    Transcript transcript;
    setenv("TZ", "UTC", 1);
    auto w = little().text("MZ").at(60).u32(128).at(128).text("PE", 4).u16(0x8664).at(150).u16(0x2022);
    SHOW(dump_of(w.str()));
    std::string platforms;
    for (const unsigned machine : {0x014C, 0x01C0, 0x0200, 0x0EBC, 0x8664, 0x8665})
        platforms += lines_from(dump_of(w.at(132).u16(machine).str()), " Platform", 1);
    SHOW(platforms);
    w.at(136).u32(0xFFFFFFFF);
    EXPECT_EQ(lines_from(dump_of(w.str()), " Time", 1), " TimeDateStamp    Wed Dec 31 23:59:59 1969\n");
    w.at(60).u32(16380).at(16380).text("PE", 4).fill(0xFF, 100);  // its fields lie beyond what is read
    SHOW(dump_of(w.str()));
}
