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

std::string directory(std::initializer_list<std::array<uint32_t, 3>> entries) {
    ByteWriter out = little().u16(entries.size());
    for (const auto &[tag, type, value] : entries) out.u16(tag).u16(type).u32(1).u32(value);
    return out.u32(0).str();
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
