#include <gtest/gtest.h>

#include "support/bytes_of.h"
#include "support/command.h"

namespace {

// A header in which every word holds its own offset, as a float where the layout has one.
ByteWriter arri(uint32_t version) {
    ByteWriter w = little();
    for (uint32_t at = 0; at < 4096; at += 4) w.u32(at);
    w.at(0).text("ARRI").u32(0x78563412).u32(4096).u32(version);
    for (const auto &[first, last] : {std::pair{96, 108}, {128, 180}, {196, 196}, {252, 288}}) {
        w.at(static_cast<size_t>(first));
        for (int at = first; at <= last; at += 4) w.f32(static_cast<float>(at) + 0.5F);
    }
    w.at(204).text("film look", 32).at(292).text(std::string(60, 'r'));
    return w.at(432).u32(0x80000019);
}

}  // namespace

TEST(Arri, LongHeader) {
    const std::string text = dump_of(arri(3).str());
    EXPECT_EQ(lines_from(text, "Fileformat", 7),
              "Fileformat:ARRIRAW V3\nRoot Information\nMagicNum:                  0x49525241 ARRI_MAGIC\n"
              "ByteOrder:                 0x78563412 ARRI_LITTLEEND\nHeaderSize:                4096\n"
              "VersionNumber:             3\nImage Data Information\n");
    EXPECT_EQ(lines_from(text, "DataSpace", 6),
              "DataSpace:                 32\nActiveImage:               36|40, 44|48\n"
              "FullImage:                 52|56, 60|64\nImageDataOffset:           68\n"
              "ImageDataSize:             72\nReserved:                  76,80\n");
    EXPECT_EQ(lines_from(text, "ColorMatrix:", 2),
              "ColorMatrix:               128.500000, 132.500000, 136.500000, 140.500000 | 144.500000, "
              "148.500000, 152.500000, 156.500000 | 160.500000, 164.500000, 168.500000, 172.500000\n"
              "ColorMatrixDesatGain:      176.500000\n");
    EXPECT_EQ(lines_from(text, "Flip", 2),
              "Flip:                      200\nLookFile:                  film look\n");
    EXPECT_EQ(lines_from(text, "CdlPower", 4),
              "CdlPower:                  280.500000, 284.500000, 288.500000\nReserved:                  " +
                  std::string(60, 'r') + "\nCamera Device Information\nValid:                     352\n");
    EXPECT_EQ(lines_from(text, "UserDate", 2),
              "UserDate:                  0x00000184, 0x00000188\nExposureTime:              396\n");
    EXPECT_EQ(lines_from(text, "ProjectFps", 7),
              "ProjectFps:                420\nMaster_TC:\n    TimeCode:              0x000001A8\n"
              "    FrameCounter:          428\n    TimeBase:              25\n    DropFrameFlag:         1\n"
              "    UserBits:              436\n");
    EXPECT_EQ(
        lines_from(text, "RecRunRegen_TC:"),
        "RecRunRegen_TC:\n    TimeCode:              0x00000218\n    FrameCounter:          540\n"
        "    TimeBase:              544\n    DropFrameFlag:         0\n    UserBits:              548\n");
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
