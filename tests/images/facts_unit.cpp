#include <gtest/gtest.h>

#include "support/bytes_of.h"
#include "support/command.h"
#include "support/facts_text.h"

TEST(ImageFacts, Samples) {
    Transcript transcript;
    SHOW(facts_of_samples("images"));
}

// Versions other than the one that keldump dumps; YUV and TGA have no magic number.
TEST(ImageFacts, Softimage) {
    Transcript transcript;
    for (const float version : {3.0F, 3.71F})
        SHOW(facts_of(big()
                          .hex("5380F634")
                          .f32(version)
                          .text("comment", 80)
                          .text("PICT")
                          .u16(1920, 1080)
                          .f32(1)
                          .u16(3, 0)
                          .hex("010802E0 00080210")
                          .zeros(64)
                          .str()));
    SHOW(facts_of(std::string(100, 'x'), "noise.tga"));
}

// Two images with delays, data of 300 bytes in blocks; behind the trailer may be anything.
TEST(ImageFacts, BlocksOfGif) {
    const auto image = [](const char *delay) {
        return hex("21F904 00") + hex(delay) + hex("00 00 2C 00000000 4001F200 80 010101020202 08 FF") +
               std::string(255, 'd') + hex("2D") + std::string(45, 'd') + hex("00");
    };
    const std::string head = "GIF89a" + hex("4001 F200 80 00 31 000000 FFFFFF 21FE 03 61623B 00");
    const std::string whole = head + image("0400") + image("0400") + ";";
    const std::string shown = "GIF | 320x242 LZW palette 1 bits ";
    EXPECT_EQ(facts_of(whole), shown + "25 fps 2 frames | 2/25 s | whole");
    EXPECT_EQ(facts_of(head + image("0400") + image("0600") + ";behind"),
              shown + "20 vfr 2 frames | 1/10 s | whole");
    EXPECT_EQ(facts_of(head + image("0400") + ";"), shown + "1 frames | whole");
    for (const size_t cut : {whole.size() - 1, whole.size() - 2, whole.size() - 20, size_t{40}, size_t{13}}) {
        EXPECT_EQ(extent_of(whole.substr(0, cut), "a.gif"),
                  cut + 1 == whole.size() ? "unknown" : "cut the picture's end");
        EXPECT_EQ(extent_of(whole.substr(0, cut) + std::string(whole.size() - cut, '\0'), "a.gif"),
                  "cut the end holds zeros");
    }
}

// Of what is longer than is walked the blocks of the end lead to the trailer, or behind the end.
TEST(ImageFacts, LongGif) {
    std::string blocks;
    while (blocks.size() < 4400000) blocks += '\xFE' + std::string(254, 'd');
    const std::string file = "GIF89a" + hex("4001F200 00 00 00 2C 00000000 4001F200 81") +
                             std::string(12, 'c') + hex("08") + blocks;
    EXPECT_EQ(facts_of(file + hex("003B")), "GIF | 320x242 LZW palette 2 bits | whole");
    EXPECT_EQ(extent_of(file + hex("003B") + "behind", "a.gif"), "whole");
    EXPECT_EQ(extent_of(file.substr(0, file.size() - 100), "a.gif"), "cut the picture's end");
    EXPECT_EQ(extent_of(file, "a.gif"), "cut the picture's end");
    EXPECT_EQ(extent_of(file + hex("00"), "a.gif"), "unknown");  // some writers leave the trailer out
}

// How long each frame is shown: a denominator of 0 stands for 100.
TEST(ImageFacts, TimesOfPng) {
    const auto chunk = [](const char *type, const std::string &data) {
        return big().u32(data.size()).text(type).raw(data).u32(0).str();
    };
    const auto animation = [&](const char *first, const char *second) {
        std::string file = hex("89504E470D0A1A0A") + chunk("IHDR", big().u32(2, 1).hex("0802000000").str()) +
                           chunk("acTL", big().u32(2, 0).str());
        for (const char *delay : {first, second})
            file += chunk("fcTL", std::string(20, '\0') + hex(delay) + hex("0000")) + chunk("fdAT", "data");
        return facts_of(file + chunk("IEND", "")).substr(29);
    };
    EXPECT_EQ(animation("03E97530", "03E97530"), "30000/1001 fps 2 frames | 1001/15000 s | whole");
    EXPECT_EQ(animation("00040000", "00040064"), "25 fps 2 frames | 2/25 s | whole");
    EXPECT_EQ(animation("00040000", "00060000"), "20 vfr 2 frames | 1/10 s | whole");
    EXPECT_EQ(animation("000107D0", "000107D0"), "2000 fps 2 frames | 1/1000 s | whole");
    EXPECT_EQ(animation("00000001", "00000001"), "2 frames | whole");
}

// Bits by the masks of the components; the compressions of OS/2 are others; JPEG in a BMP has no palette.
TEST(ImageFacts, MasksOfBmp) {
    const auto bmp = [](uint32_t size, uint32_t depth, uint32_t compression, const char *masks) {
        const std::string text = facts_of(little()
                                              .text("BM")
                                              .at(10)
                                              .u32(138, size, 1, 1)
                                              .u16(1, depth)
                                              .u32(compression)
                                              .at(34)
                                              .u32(4)
                                              .at(54)
                                              .hex(masks)
                                              .at(138)
                                              .u32(0)
                                              .str());
        return text.substr(6, text.find(" 1 frames") - 6);
    };
    EXPECT_EQ(bmp(124, 32, 3, "0000F03F 00FC0F00 FF030000 000000C0"), "1x1 uncompressed RGBA 10 bits");
    EXPECT_EQ(bmp(40, 16, 6, "000F0000 F0000000 0F000000 00F00000"), "1x1 uncompressed RGBA 4 bits");
    EXPECT_EQ(bmp(64, 1, 3, ""), "1x1 Huffman palette 1 bits");
    EXPECT_EQ(bmp(40, 0, 4, ""), "1x1 JPEG RGB 8 bits");
}

// What stands behind the picture: EXIF of PNG, the extension of TGA 2.0.
TEST(ImageFacts, BehindThePicture) {
    const auto chunk = [](const char *type, const std::string &data) {
        return big().u32(data.size()).text(type).raw(data).u32(0).str();
    };
    const std::string exif =
        "MM" + hex("002A 00000008 0002 0112 0003 00000001 00060000 0131 0002 00000003 61620000");
    EXPECT_EQ(facts_of(hex("89504E470D0A1A0A") + chunk("IHDR", big().u32(2, 1).hex("0802000000").str()) +
                       chunk("IDAT", "data") + chunk("eXIf", exif) + chunk("IEND", "")),
              "PNG | 2x1 Deflate RGB 8 bits 1 frames | by ab | whole | orientation: 6");
    // 495 bytes: the date, what painted it, twice as wide pixels.
    const std::string extension = hex("EF01") + std::string(365, '\0') +
                                  hex("0200 1D00 E807 1700 3B00 3A00") + std::string(47, '\0') + "painter" +
                                  std::string(41, '\0') + hex("0200 0100") + std::string(17, '\0');
    EXPECT_EQ(
        facts_of(hex("000002 000000000000000000 0100 0100 18 00 010203") + extension +
                     hex("15000000 00000000") + "TRUEVISION-XFILE." + '\0',
                 "a.tga"),
        "TGA TGA 2.0 | 1x1 uncompressed RGB 8 bits aspect 2 1 frames | by painter | 2024-02-29T23:59:58 | "
        "whole | bits a pixel: 24");
}

// Two lines of two pixels, each behind a count and before a zero; the second was never written.
TEST(ImageFacts, LinesOfSgi) {
    const auto sgi = [](const std::string &last) {
        return big()
            .hex("01DA 01 01 0002")
            .u16(2, 2, 1)
            .at(512)
            .u32(528, 532, 4, 4)
            .hex("82070700")
            .raw(last)
            .str();
    };
    EXPECT_EQ(facts_of(sgi(hex("82090900"))), "SGI | 2x2 RLE Y 8 bits 1 frames | whole");
    EXPECT_EQ(extent_of(sgi(hex("000000")), "a.sgi"), "cut the picture's end");
    EXPECT_EQ(extent_of(sgi(hex("00000000")), "a.sgi"), "cut the last lines (zeros)");
}

TEST(ArriFacts, Edges) {
    Transcript transcript;
    const ByteWriter timecode = little().hex("04030201").u32(0, 24000);
    ByteWriter file_bytes = little();
    file_bytes.text("ARRI").hex("12345678").u32(4096, 3).at(20).u32(8, 4).at(44).u32(8, 4).at(68);
    file_bytes.u32(4096, 48).at(196).f32(2).at(380).hex("26112620 00595923").at(416).u32(48000, 24000);
    file_bytes.raw(timecode.str()).at(4096).fill('x', 48);
    const std::string file = file_bytes.str();
    SHOW(facts_of(file));
    ROWS("file", facts_changed(file, rows));
}
