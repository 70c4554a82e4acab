#include <gtest/gtest.h>

#include "support/bytes_of.h"
#include "support/command.h"
#include "support/facts_text.h"

TEST(Jpeg2000Facts, Samples) {
    Transcript transcript;
    SHOW(facts_of_samples("jpeg2000"));
    SHOW(facts_of_samples("jpeg"));
}

// The second of two pictures is cut; an index that has nothing where it points was left by what rewrote the
// first.
TEST(JpegFacts, MultiplePictures) {
    const auto file = [](uint64_t second) {
        const std::string head =
            hex("FFD8 FFE2 0040 4D504600 4D4D002A 00000008 0001 B002 0007 00000020 0000001A") +
            std::string(24, '\0') + big().u32(1000).u64(second << 32).str() +
            hex("FFC0 000B 08 0001 0001 01 01 11 00 FFDA 0008 01 01 00 003F00");
        return std::pair(head + "data" + hex("FFD9"), hex("FFD8") + std::string(996, 'p') + hex("FFD9"));
    };
    const auto [first, next] = file(0);
    const std::string one = file(first.size() - 10).first;
    EXPECT_EQ(extent_of(one + next, "a.jpg"), "whole");
    EXPECT_EQ(extent_of(one + next.substr(0, 999), "a.jpg"), "cut picture 2");
    EXPECT_EQ(extent_of(one, "a.jpg"), "whole");
    EXPECT_EQ(extent_of(one + "anything", "a.jpg"), "whole");
    const std::string cut = one + next.substr(0, 999);
    EXPECT_EQ(facts_changed(cut, "24=00000010 24=0000001F", "a.jpg"),
              "24=00000010: - cut picture 2 - pictures: 2 - 1097 bytes + whole + 97 bytes\n"
              "24=0000001F: - cut picture 2 - pictures: 2 - 1097 bytes + whole + 97 bytes\n");
}

// Chroma that is halved downwards alone; four components, of which one is alpha.
TEST(Jpeg2000Facts, Components) {
    const auto components = [](const std::string &sizes, uint32_t count, uint32_t space) {
        const std::string siz = hex("FF4F FF51") + big().u16(38 + 3 * count, 0).str() +
                                hex("00000008 00000008 0000000000000000 00000008 00000008 0000000000000000") +
                                big().u16(count).hex(sizes).str() + hex("FF90");
        const std::string header = hex("00000016 69686472 00000008 00000008") + big().u16(count).str() +
                                   hex("07070000 0000000F 636F6C72 010000") + big().u32(space).str();
        const auto box = [](const char *type, const std::string &data) {
            return big().u32(8 + data.size()).text(type).raw(data).str();
        };
        const std::string text =
            facts_of(hex("0000000C6A5020200D0A870A") + box("jp2h", header) + box("jp2c", siz));
        return text.substr(0, text.find(" bits"));
    };
    EXPECT_EQ(components("070101 070102 070102", 3, 18), "JP2 | 8x8 JPEG 2000 4:4:0 8");
    EXPECT_EQ(components("070101 070101 070101 070101", 4, 18), "JP2 | 8x8 JPEG 2000 4:4:4:4 8");
    EXPECT_EQ(components("070101 070101 070101 070101", 4, 16), "JP2 | 8x8 JPEG 2000 RGBA 8");
    EXPECT_EQ(components("070101 070101 070101 070101 070101", 5, 16), "JP2 | 8x8 JPEG 2000 5 channels 8");
}

// Pixels twice as wide as high on a display, colours by codes; a codestream with extensions has no profile.
TEST(Jpeg2000Facts, ResolutionAndCodes) {
    const std::string siz = hex("FF4F FF51 0029 8003 00000008 00000008 0000000000000000 00000008 00000008") +
                            hex("0000000000000000 0001 070101 FF90");
    const std::string header = hex("00000012 636F6C72 050000 0009 0010 0009 80") +
                               hex("0000002C 72657320 00000012 72657363 0048 0001 0048 0001 00 00") +
                               hex("00000012 72657364 0002 0001 000A 0001 02 01");
    const std::string file = hex("0000000C6A5020200D0A870A 00000014 66747970 6A706820 00000000 6A706820") +
                             big().u32(8 + header.size()).text("jp2h").raw(header).str() +
                             big().u32(8 + siz.size()).text("jp2c").raw(siz).str();
    EXPECT_EQ(facts_of(file).substr(0, 69),
              "JP2 JPH | 8x8 JPEG 2000 Y 8 bits aspect 2 colour 9,16,9,1 1 frames | ");
    EXPECT_NE(facts_of(file).find("profile: part 2 extensions"), std::string::npos);
}

// Lines that follow the scan; data of JPEG-LS that end before the image does.
TEST(JpegFacts, Processes) {
    const std::string scan = hex("0003 01 01 11 00 FFDA 0008 01 01 00 003F00 112233");
    EXPECT_EQ(facts_of(hex("FFD8 FFC1 000B 0C 0000") + scan + hex("FFDC 0004 0010 FFD9")),
              "JPEG extended | 3x16 JPEG Y 12 bits 1 frames | whole");
    const std::string lossless = hex("FFD8 FFF7 000B 10 0002") + scan + hex("FF7F");
    EXPECT_EQ(facts_of(lossless + hex("FFD9")), "JPEG JPEG-LS | 3x2 JPEG-LS Y 16 bits 1 frames | whole");
    EXPECT_EQ(extent_of(lossless, "a.jpg"), "cut the end of the image");
}

// Boxes with sizes of 64 bits; a component's own coding makes a picture lossy.
TEST(Jpeg2000Facts, SizesAndOverrides) {
    const std::string plain = content_of(std::string(KELDUMP_SAMPLES) + "/jpeg2000/plain.jp2");
    std::string wide = plain.substr(0, 32);
    for (size_t at = 32; at + 8 <= plain.size();) {
        size_t size = 0;
        for (size_t i = 0; i < 4; i++) size = size << 8 | static_cast<uint8_t>(plain[at + i]);
        wide += big()
                    .u32(1)
                    .text(plain.substr(at + 4, 4))
                    .u64(size + 8)
                    .raw(plain.substr(at + 8, size - 8))
                    .str();
        at += size;
    }
    EXPECT_EQ(facts_of(wide), facts_of(plain));
    std::string stream = plain.substr(plain.find("\xFF\x4F\xFF\x51"));
    EXPECT_NE(facts_of(stream).find("JPEG 2000 5/3"), std::string::npos);
    stream.insert(stream.find("\xFF\x52"), big().hex("FF53 0009 02 00 01 04 04 00 00").str());
    EXPECT_NE(facts_of(stream).find("JPEG 2000 9/7"), std::string::npos);
}
