#include <gtest/gtest.h>

#include "support/bytes_of.h"
#include "support/command.h"

TEST(Cineon, EveryField) {
    Transcript transcript;
    SHOW(dump_of(little().raw(counting(2048)).at(0).u32(0xD75F2A80).at(192).u8(3, 2).str()));
}

TEST(Cineon, UnsetValuesAndTheLastChannels) {
    Transcript transcript;
    ByteWriter w = little().u32(0xD75F2A80, 2048, 1024, 0xFFFFFFFF);
    w.at(24).text("V4.5", 8).at(132).text("2026:01:02").at(144).text("lost");
    w.at(192).u8(9, 255).at(216).u32(0x7F800000);
    w.at(420).u32(0xFFFFFFFF).f32(0.25).at(452).text(std::string(200, 'l')).at(680).u8(255, 254);
    w.at(684).u32(0x80000000).at(972).f32(1e-7F).at(1036).text(std::string(32, '\xFF'));
    w.at(196 + 254 * 28).u8(1, 2, 10).at(196 + 254 * 28 + 4).u32(0xFFFFFFFF, 7).f32(1023).zeros(12);
    const std::string text = dump_of(w.str());
    EXPECT_EQ(lines_from(text, " industryheader", 1), " industryheader   : \n");
    SHOW(lines_from(text, " creationdate", 4));
    EXPECT_EQ(lines_from(text, "  maximumdata", 1), "  maximumdata     : \n");
    SHOW(lines_from(text, " channel-254", 16));
    SHOW(lines_from(text, " interleave", 5));
    EXPECT_EQ(lines_from(text, " xpitch", 1), " xpitch           : 1e-07\n");
    EXPECT_EQ(lines_from(text, " format", 1), " format           : Error, 0xff in ascii data\n");
}
