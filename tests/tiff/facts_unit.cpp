#include <gtest/gtest.h>

#include <array>

#include "support/bytes_of.h"
#include "support/command.h"
#include "support/facts_text.h"

TEST(TiffFacts, Samples) {
    Transcript transcript;
    SHOW(facts_of_samples("tiff"));
}

namespace {

std::string directory(std::initializer_list<std::array<uint32_t, 3>> entries, bool is_big = false) {
    ByteWriter out = little();
    const auto number = [&](uint64_t value) { is_big ? out.u64(value) : out.u32(value); };
    is_big ? out.u64(entries.size()) : out.u16(entries.size());
    for (const auto &[tag, type, value] : entries) {
        out.u16(tag, type);
        number(1);
        number(value);
    }
    number(0);
    return out.str();
}

}  // namespace

// A raw picture below a small first one; a directory of zeros, which was never written.
TEST(TiffFacts, Directories) {
    Transcript transcript;
    const std::string first = directory({{254, 4, 1},
                                         {256, 4, 8},
                                         {257, 4, 8},
                                         {258, 3, 8},
                                         {259, 3, 1},
                                         {262, 3, 2},
                                         {277, 3, 3},
                                         {330, 4, 256},
                                         {50706, 1, 0x401}});
    const std::string raw = directory({{254, 4, 0},
                                       {256, 4, 3516},
                                       {257, 4, 2328},
                                       {258, 3, 16},
                                       {259, 3, 1},
                                       {262, 3, 32803},
                                       {273, 4, 512},
                                       {277, 3, 1},
                                       {279, 4, 3516 * 2328 * 2}});
    SHOW(facts_of(little().text("II*").u8(0).u32(8).raw(first).at(256).raw(raw).at(512).u8(0).str()));
    SHOW(facts_of(little().text("II*").u8(0).u32(64).zeros(500).str()));
    // A preview may be as large.
    std::string large = first;
    large.replace(22, 4, little().u32(3516).str()).replace(34, 4, little().u32(2328).str());
    EXPECT_EQ(facts_of(little().text("II*").u8(0).u32(8).raw(large).at(256).raw(raw).str()).substr(0, 42),
              "TIFF | 3516x2328 uncompressed Bayer 16 bit");
}

// Bits of three samples behind the directory, which were never written or are not there.
TEST(TiffFacts, ValuesOfZeros) {
    std::string file =
        little()
            .text("II*")
            .u8(0)
            .u32(8)
            .raw(directory({{256, 4, 1}, {257, 4, 1}, {258, 3, 100}, {262, 3, 2}, {273, 4, 8}, {277, 3, 3}}))
            .str();
    file[8 + 2 + 2 * 12 + 4] = 3;
    file.resize(100);
    EXPECT_EQ(extent_of(file + hex("080008000800"), "a.tif"), "whole");
    EXPECT_EQ(extent_of(file + hex("000000000000"), "a.tif"),
              "cut values of the directory: zeros in their place");
    EXPECT_EQ(facts_of(file + hex("08")).substr(0, 48), "TIFF | 1x1 uncompressed RGB 1 frames | cut value");
}

// What is shown of a raw picture and what makes its pixels square; tiles; a fourth sample is alpha.
TEST(TiffFacts, ShownOfRaw) {
    const auto tiff = [](std::initializer_list<std::array<uint32_t, 3>> entries, const std::string &behind) {
        return little().text("II*").u8(0).u32(8).raw(directory(entries)).at(200).raw(behind).str();
    };
    EXPECT_EQ(
        facts_of(tiff({{256, 4, 64},
                       {257, 4, 48},
                       {258, 3, 12},
                       {259, 3, 7},
                       {262, 3, 32803},
                       {322, 4, 32},
                       {323, 4, 16},
                       {324, 4, 200},
                       {325, 4, 20}},
                      std::string(20, 'd'))),
        "TIFF tiled | 64x48 JPEG Bayer 12 bits 1 frames | whole | byte order: little-endian | tiles: 32x16");
    std::string file =
        tiff({{256, 4, 64}, {257, 4, 48}, {277, 3, 4}, {262, 3, 2}, {50718, 5, 200}, {50720, 5, 216}},
             hex("02000000 01000000 01000000 01000000 3C000000 01000000 28000000 01000000"));
    for (const size_t at : {file.find(hex("1EC6 0500")), file.find(hex("20C6 0500"))}) file[at + 4] = 2;
    EXPECT_EQ(facts_of(file),
              "TIFF | 60x40 (64x48) uncompressed RGBA 1 bits aspect 2 1 frames | byte order: little-endian");
}

// Strips that are not compressed have what they need, whatever their counts say.
TEST(TiffFacts, CountsOfStrips) {
    const auto strip = [](uint32_t tag, uint32_t count) {
        const std::string first = directory({{256, 4, 10},
                                             {257, 4, 10},
                                             {258, 3, 8},
                                             {259, 3, 1},
                                             {262, 3, 1},
                                             {273, 4, 200},
                                             {tag, 4, count}});
        return little().text("II*").u8(0).u32(8).raw(first).at(200).text("d", 100).str();
    };
    for (const uint32_t count : {0U, 100U, 101U, 0x7FFFFFFFU, 0xFFFFFFFFU}) {
        EXPECT_EQ(extent_of(strip(279, count), "a.tif"), "whole") << count;
        EXPECT_EQ(extent_of(strip(279, count).substr(0, 299), "a.tif"), "cut picture data") << count;
    }
    EXPECT_EQ(extent_of(strip(280, 1), "a.tif"), "whole");
}

// Offsets of 64 bits; a strip of zeros, which no compression makes.
TEST(TiffFacts, BigTiff) {
    const auto tiff = [](uint32_t compression, const std::string &data) {
        const std::string first = directory({{256, 4, 8}, {257, 4, 8}, {330, 18, 256}}, true);
        const std::string below = directory({{256, 16, 300},
                                             {257, 16, 200},
                                             {258, 3, 16},
                                             {259, 3, compression},
                                             {273, 16, 600},
                                             {279, 16, 500}},
                                            true);
        return little()
            .text("II+")
            .u8(0)
            .u16(8, 0)
            .u64(16)
            .raw(first)
            .at(256)
            .raw(below)
            .at(600)
            .raw(data)
            .str();
    };
    const std::string written(500, 's');
    const std::string zeros(500, '\0');
    const std::string text = facts_of(tiff(8, written));
    EXPECT_EQ(text.substr(0, text.find(" | 8x8")), "TIFF BigTIFF | 300x200 Deflate Y 16 bits 1 frames");
    EXPECT_EQ(extent_of(tiff(8, written), "a.tif"), "whole");
    EXPECT_EQ(extent_of(tiff(8, zeros), "a.tif"), "cut the end of the picture data holds zeros");
    EXPECT_EQ(extent_of(tiff(8, written.substr(100) + zeros.substr(400)), "a.tif"),
              "cut the end of the picture data holds zeros");
    EXPECT_EQ(extent_of(tiff(7, written.substr(100) + zeros.substr(400)), "a.tif"), "whole");
    EXPECT_EQ(extent_of(tiff(1, zeros), "a.tif"), "whole");
    EXPECT_EQ(extent_of(tiff(8, std::string(499, 's')), "a.tif"), "cut picture data");
}
