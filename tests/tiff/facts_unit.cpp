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
        out.u16(tag).u16(type);
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
            .u16(8)
            .u16(0)
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
    EXPECT_EQ(extent_of(tiff(1, zeros), "a.tif"), "whole");
    EXPECT_EQ(extent_of(tiff(8, std::string(499, 's')), "a.tif"), "cut picture data");
}
