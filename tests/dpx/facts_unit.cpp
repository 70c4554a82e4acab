#include <gtest/gtest.h>

#include "support/bytes_of.h"
#include "support/command.h"
#include "support/facts_text.h"

TEST(DpxFacts, Samples) {
    Transcript transcript;
    SHOW(facts_of_samples("dpx"));
    SHOW(facts_of_samples("dpx-cineon"));
}

// Numbers whose low byte is 0x80 or more.
TEST(CineonFacts, Sizes) {
    const std::string header = big()
                                   .at(0)
                                   .hex("802A5FD7")
                                   .u32(1024)
                                   .at(193)
                                   .u8(1)
                                   .at(198)
                                   .u8(10)
                                   .at(200)
                                   .u32(2176)
                                   .u32(1688)
                                   .at(1024)
                                   .u8(0)
                                   .str();
    EXPECT_EQ(facts_of(header).substr(0, 19), "Cineon | 2176x1688 ");
    // Lines of six bytes, padded or not, with a size field that is wrong.
    std::string small = header;
    small.replace(20, 4, big().u32(9000).str());
    small.replace(198, 10, big().u8(16).u8(0).u32(3).u32(2).str());
    small.resize(1024);
    for (const size_t bytes : {12, 13, 15, 16})
        EXPECT_EQ(extent_of(small + std::string(bytes, 'x'), "a.cin"),
                  bytes == 12 || bytes == 16 ? "whole" : "cut the picture's end");
}
