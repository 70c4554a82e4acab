#include "common/elementary.h"

#include <gtest/gtest.h>

#include "support/bytes_of.h"
#include "support/command.h"
#include "support/facts_text.h"

namespace {

std::string told(const char *codec, const std::string &data, const std::string &setup = "") {
    Facts facts;
    facts.picture().codec = codec;
    const bool is_known =
        stream_picture(Bytes(data.data(), data.size()), facts.picture(), Bytes(setup.data(), setup.size()));
    return is_known ? text_of(facts).substr(3) : "nothing";
}

std::string bytes(std::string_view hex) { return big().hex(hex).str(); }

std::string dv(uint8_t system, uint8_t application, uint8_t display) {
    return big()
        .u8(0x1F)
        .at(3)
        .u8(system, application)
        .at(320)
        .hex("804F000000")
        .at(343)
        .u8(0x61, 0, display)
        .at(480)
        .u8(0)
        .str();
}

}  // namespace

// Heads of streams as encoders write them.
TEST(Elementary, Pictures) {
    Transcript transcript;
    const std::string parameters =
        bytes("00000001 67640015acd941410fcb808800000300080000030190f8a14cb0 00000001 68fba3cb22c0");
    SHOW(told("H.264", parameters + bytes("000001 060101328000000165")));
    SHOW(told("H.264", parameters + bytes("000001 060101428000000165")));
    SHOW(told("H.264", parameters));
    SHOW(told("MPEG-4", bytes("000001b001 000001b58913 00000100 00000120 00c48d8800cd0a041e1443")));
    SHOW(told("CineForm", bytes("00010009000200030000557800005e2000004cbc000a0000000b0001000c000300540003000d"
                                "000300140140001500f00046000c")));
    SHOW(told("FFV1", bytes("f4c75731a9e8e97710017c70fda2086bb56a6d00043caf00003fffaaaaaaaaaa")));
    SHOW(told("FFV1", bytes("89375d2074906d7640e9ae3a38dd07acb806161e")));
    SHOW(told("HuffYUV", "", bytes("00102000422425")));
    SHOW(told("HuffYUV", "", bytes("00912101422425")));
    SHOW(told("HuffYUV", "", ""));
    SHOW(told("PNG", bytes("89504e470d0a1a0a 0000000d49484452 00000140 000000f0 1002")));
    SHOW(told("DV", dv(0xBF, 0x78, 2)));
    SHOW(told("DV", dv(0x3F, 0x79, 0)));
    SHOW(told("uncompressed", parameters));
}

// Pictures whose sequence may have fields: frames of one time, or of two; fields.
TEST(Elementary, FieldsOfH264) {
    const auto scan = [](const char *pictures, const char *slice) {
        const std::string sets = "00000001 674d401eda02d0916022000003000200000300641e2c5d40 00000001 ";
        const std::string text = told("H.264", bytes(sets + pictures + "000001" + slice));
        return text.substr(text.find("bits ") + 5, 3);
    };
    EXPECT_EQ(scan("68ce0fc8", "6588821d0630"), "p 2");
    EXPECT_EQ(scan("68de0fc8", "6588821d0630"), "i 2");
    EXPECT_EQ(scan("68ce0fc8", "6588841d0630"), "tff");
    EXPECT_EQ(scan("68ce0fc8", "6588861d0630"), "bff");
}

// Of units with lengths the first of which looks like a start code.
TEST(Elementary, LengthsOfUnits) {
    const std::string record =
        bytes("014d401effe1 0017 674d401eda02d0916022000003000200000300641e2c5d40 01 0004 68ce0fc8");
    const std::string units = bytes("00000105 06") + std::string(260, 'x') + bytes("00000006 6588841d0630");
    EXPECT_NE(told("H.264", units, record).find(" tff "), std::string::npos);
}

// Fields by the source, the sequence and the first picture; what it was mastered for.
TEST(Elementary, Hevc) {
    const auto stream = [](const std::string &source, const std::string &more) {
        const std::string first = "00000001 420101016000000300" + source;
        return told(
            "HEVC",
            bytes(first + "0000030000030 03ca00a080f16595952930bc05a1a0000030002000003003210 " + more));
    };
    const std::string fields = "000001 4e0101012180";
    EXPECT_EQ(stream("40", fields), "320x240 HEVC 4:2:0 8 bits bff colour -1,-1,-1,0 25 fps");
    EXPECT_EQ(stream("40", ""), "320x240 HEVC 4:2:0 8 bits i colour -1,-1,-1,0 25 fps");
    Picture picture;
    picture.codec = "HEVC";
    const std::string graded = bytes(
        "00000001 "
        "42010102200000030090000003000003003ca00a080f136595952930bc05a848804820000003002000000303210000"
        "000001 4e01900403e801908000 000001 4e01891833c286c41d4c0bb884d03e803d13404200989680 000003 "
        "00328000");
    EXPECT_TRUE(stream_picture(Bytes(graded.data(), graded.size()), picture));
    EXPECT_EQ(picture.scan, Scan::progressive);
    EXPECT_EQ(picture.mastering + " " + picture.light, "P3 D65, 0.005 to 1000 cd/m2 1000/400");
}

// Colours of the sequence header: RGB, which has full range by definition; a range alone; with timing.
TEST(Elementary, Av1) {
    EXPECT_EQ(told("AV1", "", bytes("81200000 0a0d200000043cffbcdaf92021a004")),
              "0x0 AV1 RGB 8 bits colour 1,13,0,1");
    EXPECT_EQ(told("AV1", "", bytes("81000c00 0a0b000000043cffbc02f80840")),
              "0x0 AV1 4:2:0 8 bits colour -1,-1,-1,1");
    EXPECT_EQ(told("AV1", bytes("0a0e000000fa1e7fde210a88101008a0"), bytes("811f0c00")),
              "0x0 AV1 4:2:0 8 bits colour -1,-1,1,0");
    EXPECT_EQ(told("AV1", "", bytes("811f0c00 0a0e000000")), "0x0 AV1 4:2:0 8 bits");
}

// Frames of one time in a sequence that may have fields, where chroma says nothing of it.
TEST(Elementary, PicturesOfMpeg2) {
    const auto scan = [](const char *flags) {
        return told("MPEG-2",
                    bytes(std::string("000001b378043833ffffe018 000001b5144400010000 000001b58fff") + flags));
    };
    EXPECT_NE(scan("f38080").find(" p "), std::string::npos) << scan("f38080");
    EXPECT_NE(scan("f38000").find(" tff "), std::string::npos) << scan("f38000");
}

TEST(Elementary, Dts) {
    const std::string dts = bytes("7ffe8001fc3c75b276c005380009ef7b");
    Sound sound;
    EXPECT_TRUE(dts_frame(Bytes(dts.data(), dts.size()), sound));
    EXPECT_EQ(sound.channels, 6U);
    EXPECT_EQ(sound.layout, "5.1");
    EXPECT_EQ(sound.bit_rate, 1413000);
    EXPECT_FALSE(dts_frame(Bytes(dts.data(), 6), sound));
}

// A substream that adds two channels at the back to 5.1; alone it is none that can be heard.
TEST(Elementary, DependentSubstreams) {
    const std::string added = bytes("0b7740073c87e011a000000000000000");
    const std::string both = bytes("0b7700033f87c000") + added;
    Sound sound;
    EXPECT_TRUE(ac3_frame(Bytes(both.data(), both.size()), sound));
    EXPECT_EQ(sound.channels, 8U);
    EXPECT_EQ(sound.layout, "7.1");
    EXPECT_FALSE(ac3_frame(Bytes(added.data(), added.size()), sound));
}

TEST(Elementary, TrueHd) {
    const std::string unit = bytes("80ddffd8f8726fba0097c00fb7520000");
    Sound sound;
    EXPECT_TRUE(truehd_frame(Bytes(unit.data(), unit.size()), sound));
    EXPECT_EQ(sound.channels, 6U);
    EXPECT_EQ(sound.layout, "5.1");
    EXPECT_EQ(sound.rate, (Ratio{48000, 1}));
    EXPECT_FALSE(truehd_frame(Bytes(unit.data(), 6), sound));
}

// Base formats with other sizes and rates, and as they are.
TEST(Elementary, Dirac) {
    const auto stream = [](const char *header) {
        return told("Dirac", bytes("00 424243440000000019 00000000") + bytes(header) + std::string(8, '\0'));
    };
    EXPECT_EQ(stream("7087 14018200e7d127250ffc"), "352x288 Dirac 4:2:2 10 bits p 25 fps");
    EXPECT_EQ(stream("7087 144060800e7d127250ffc0"), "720x576 Dirac 4:2:2 10 bits p 25 fps");
    EXPECT_EQ(stream("7084 480442"), "1280x720 Dirac 4:2:2 10 bits p 60000/1001 fps");
    EXPECT_EQ(told("Dirac", "BBCD"), "nothing");
}

// Advanced profile: with a size, an aspect, a rate and colours to be shown with; an aspect and a rate as
// numbers.
TEST(Elementary, Vc1) {
    const auto stream = [](const char *header) { return told("VC-1", bytes("00 0000010F") + bytes(header)); };
    EXPECT_EQ(stream("da003bf21f2a3bf886f1804a02020280"),
              "1920x1080 (1920x1088) VC-1 4:2:0 8 bits p colour 1,1,1,-1 24000/1001 fps");
    EXPECT_EQ(stream("da002cf21b6a2cf886ff0302c0c7c8"), "1440x1080 VC-1 4:2:0 8 bits aspect 4/3 25 fps");
    EXPECT_EQ(stream("da003b"), "nothing");
    EXPECT_EQ(stream("4a003bf21f2a3bf886f1804a02020280"), "nothing");
}

// RGB, and RGB transformed to YCbCr as the first macroblock tells.
TEST(Elementary, Vc3) {
    const auto frame = [](uint32_t id, uint8_t colour, uint8_t block) {
        return told(
            "DNx",
            big().hex("00000280 03").at(33).u8(0x58).at(40).u32(id).u8(colour).at(0x281).u8(block).str());
    };
    EXPECT_EQ(frame(1270, 0xC1, 0x2F), "0x0 DNxHR 444 RGB 10 bits p");
    EXPECT_EQ(frame(1270, 0xC1, 0x3F), "0x0 DNxHR 444 4:4:4 10 bits p");
    EXPECT_EQ(frame(1270, 0, 0x2F), "0x0 DNxHR 444 4:4:4 10 bits p");
    EXPECT_EQ(frame(1256, 0, 0x2F), "0x0 DNxHD RGB 10 bits p");
    EXPECT_EQ(frame(1271, 0, 0), "0x0 DNxHR HQX 4:2:2 10 bits p");
}

// A pair in front and one behind, told by a program config.
TEST(Elementary, AacProgram) {
    const std::string config = bytes("118004c4040021100d4c61766335392e33372e31303056e500");
    Sound sound;
    EXPECT_TRUE(aac_configuration(Bytes(config.data(), config.size()), sound));
    EXPECT_EQ(sound.channels, 4U);
    EXPECT_EQ(sound.layout, "quad");
}

// Codes across the borders of what is looked at together.
TEST(Elementary, StartCodes) {
    for (const size_t at : {0, 1, 4091, 4092, 4093, 4094, 4096, 8190}) {
        const std::string stream = std::string(at, 'x') + bytes("000001b3") + std::string(10, '\0');
        EXPECT_EQ(start_code(Bytes(stream.data(), stream.size())), at);
        EXPECT_EQ(start_code(Bytes(stream.data(), stream.size()), at + 1), stream.size());
    }
}

// The picture header and the component table of JPEG XS.
TEST(Elementary, JpegXs) {
    const auto stream = [](const char *transform, const char *components) {
        return told(
            "JPEG XS",
            bytes(std::string(
                      "ff10 ff5000040000 ff12001a 00001000 3540 2000 0780 0438 0000 0000 03 04 08 14 ") +
                  "48 " + transform + " 51 00 ff13 0008 " + components + " ff200000"));
    };
    EXPECT_EQ(stream("00", "0a11 0a21 0a21"), "1920x1080 JPEG XS 4:2:2 10 bits");
    EXPECT_EQ(stream("01", "0c11 0c11 0c11"), "1920x1080 JPEG XS RGB 12 bits");
    EXPECT_EQ(told("JPEG XS", bytes("ff10 ff50")), "nothing");
}
