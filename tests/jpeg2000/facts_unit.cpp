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
}

// Chroma that is halved downwards alone; four components, of which one is alpha.
TEST(Jpeg2000Facts, Components) {
    const auto components = [](const std::string &sizes, uint32_t count, uint32_t space) {
        const std::string siz = hex("FF4F FF51") + big().u16(38 + 3 * count).u16(0).str() +
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
