#include <gtest/gtest.h>

#include "support/bytes_of.h"
#include "support/command.h"

namespace {

// A header in which every word holds its own offset, as a float where the layout has one.
ByteWriter arri(uint32_t version) {
    ByteWriter w = little();
    for (uint32_t at = 0; at < 4096; at += 4) w.u32(at);
    w.at(0).text("ARRI").u32(0x78563412, 4096, version);
    for (const auto &[first, last] : {std::pair{96, 108}, {128, 180}, {196, 196}, {252, 288}}) {
        w.at(static_cast<size_t>(first));
        for (int at = first; at <= last; at += 4) w.f32(static_cast<float>(at) + 0.5F);
    }
    w.at(204).text("film look", 32).at(292).text(std::string(60, 'r'));
    return w.at(432).u32(0x80000019);
}

}  // namespace

TEST(Arri, LongHeader) {
    Transcript transcript;
    SHOW(dump_of(arri(3).str()));
}

TEST(Arri, OtherHeaders) {
    const std::string fields =
        "49525241\n Magic2    78563412\n Offset    4096\n Width     16\n Height    20\n";
    EXPECT_EQ(dump_of(arri(2).str()), "Fileformat:ARRIRAW V2\n Magic1    " + fields);
    EXPECT_EQ(dump_of(arri(0xFFFFFFFF).str()), "Fileformat:ARRIRAW V-1\n Magic1    " + fields);
    EXPECT_EQ(dump_of(arri(3).str().substr(0, 4095)), "");
    EXPECT_EQ(lines_from(dump_of(arri(3).at(0).text("IRRA").u32(0x12345678).str()), "MagicNum", 2),
              "MagicNum:                  0x41525249\nByteOrder:                 0x12345678 ARRI_BIGEND\n");
}
