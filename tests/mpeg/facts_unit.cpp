#include <gtest/gtest.h>

#include "support/bytes_of.h"
#include "support/command.h"
#include "support/facts_text.h"

TEST(MpegFacts, Samples) {
    Transcript transcript;
    const std::string directory = std::string(KELDUMP_SAMPLES) + "/mpeg/";
    for (const char *name : {"program.vob", "program1.mpg", "transport.ts", "video.m2v", "video1.m1v"}) {
        const std::string content = content_of(directory + name);
        SHOW(name + std::string(": ") + facts_of(content));
        SHOW(facts_of(content.substr(0, content.size() - 100)));
        SHOW(facts_of(content.substr(0, content.size() / 2) + std::string(content.size() / 2, '\0')));
    }
}

// Packets that are longer: a time code before each, or parity behind it.
TEST(MpegFacts, TransportPackets) {
    const std::string packets = content_of(std::string(KELDUMP_SAMPLES) + "/mpeg/transport.ts");
    const std::string plain = facts_of(packets);
    std::string timed;
    std::string protected_ones;
    for (size_t at = 0; at + 188 <= packets.size(); at += 188) {
        timed += "time" + packets.substr(at, 188);
        protected_ones += packets.substr(at, 188) + std::string(16, 'p');
    }
    for (const size_t cut : {1U, 100U, 187U}) {
        EXPECT_EQ(facts_of(packets.substr(cut)).substr(0, 7), "MPEG-TS") << cut;
        EXPECT_EQ(facts_of(packets.substr(188 - cut, cut) + packets), plain) << cut;
    }
    EXPECT_EQ(facts_of(timed), "MPEG-TS 192-byte packets" + plain.substr(7));
    EXPECT_EQ(facts_of(protected_ones), "MPEG-TS 204-byte packets" + plain.substr(7));
}

namespace {

std::string replaced(std::string text, const std::string &from, const std::string &to, size_t start = 0) {
    for (size_t at = start; (at = text.find(from, at)) != std::string::npos; at += to.size())
        text.replace(at, from.size(), to);
    return text;
}

}  // namespace

// Streams as private data, which the ids of their packets and their first bytes tell; sectors of discs that
// are filled up with zeros.
TEST(MpegFacts, PrivateStreamsAndStuffing) {
    const std::string packets = content_of(std::string(KELDUMP_SAMPLES) + "/mpeg/transport.ts");
    const std::string hidden = replaced(replaced(packets, "\x02\xE1", "\x06\xE1"), "\x03\xE1", "\x06\xE1");
    EXPECT_NE(hidden, packets);
    EXPECT_EQ(facts_of(hidden), facts_of(packets));
    const std::string program = content_of(std::string(KELDUMP_SAMPLES) + "/mpeg/program.vob");
    const std::string pack("\0\0\1\xBA", 4);
    EXPECT_EQ(facts_of(replaced(program, pack, std::string(20, '\0') + pack, 4)), facts_of(program));
}

// Opus, whose channels a descriptor of the map tells.
TEST(MpegFacts, Descriptors) {
    const auto packet = [](const char *head, const char *section) {
        const std::string bytes = big().hex(head).hex(section).str();
        return bytes + std::string(188 - bytes.size(), '\xFF');
    };
    const std::string null = packet("471FFF10", "");
    EXPECT_EQ(
        facts_of(packet("4740001000", "00B00D0001C100000001E100 00000000") +
                 packet("4741001000", "02B01C0001C10000E101F000 06E101F00A 05044F707573 7F028002 00000000") +
                 null + null),
        "MPEG-TS | 2ch 48000 Hz Opus stereo");
    // A map of data alone is a map.
    const std::string map = packet("4741001000", "02B0120001C10000E101F000 06E101F000 00000000");
    const std::string association = packet("4740001000", "00B00D0001C100000001E100 00000000");
    EXPECT_EQ(facts_of(association + map + null + null), "MPEG-TS");
    // Splice information has the type of DTS.
    const std::string splice = packet("4741001000", "02B0120001C10000E101F000 86E101F000 00000000");
    EXPECT_EQ(facts_of(association + splice + packet("4741011000", "FC302000") + null), "MPEG-TS");
    EXPECT_EQ(facts_of(null + null + null + null), "MPEG-TS | ! no program map");
}

// Video of a program stream, which its first start code tells.
TEST(MpegFacts, VideoOfPrograms) {
    const auto video = [](const char *begin) {
        const std::string data = hex("800000") + hex(begin) + std::string(20, 'x');
        return facts_of(hex("000001BA 4400040004010000 03F8 000001E0") + big().u16(data.size()).str() + data);
    };
    EXPECT_EQ(video("000001B0 01"), "MPEG program stream | 0x0 MPEG-4");
    EXPECT_EQ(video("00000001 4001"), "MPEG program stream | 0x0 HEVC");
    EXPECT_EQ(video("00000001 09F0"), "MPEG program stream | 0x0 H.264");
    EXPECT_EQ(video("00000101"), "MPEG program stream | 0x0 MPEG-2");
}

// Pictures behind the one whose time is told: in its packet, in one before it, behind a group's head.
TEST(MpegFacts, PicturesWithoutTime) {
    const auto pictures = [](uint32_t time, const char *codes) {
        const std::string data = big()
                                     .hex("8080 05")
                                     .u8(0x21 | time >> 30 << 1)
                                     .u16(time >> 15 << 1 | 1, time << 1 | 1)
                                     .hex(codes)
                                     .str();
        return big().hex("000001E0").u16(data.size()).raw(data).str();
    };
    const std::string head = hex("000001BA 4400040004010000 03F8") +
                             pictures(3600, "000001B3 16012013 FFFFE018 000001B800080040 00000100 0008");
    const auto frames = [&](const std::string &packets) {
        const std::string text = facts_of(head + packets);
        return text.substr(text.find("fps ") + 4, 2);
    };
    EXPECT_EQ(frames(pictures(7200, "00000100 004F")), "2 ");
    EXPECT_EQ(frames(pictures(7200, "00000100 004F 00000100 008F 00000100 00CF")), "4 ");
    EXPECT_EQ(frames(pictures(10800, "00000100 008F 00000100 010F") + pictures(7200, "00000100 004F")), "5 ");
    EXPECT_EQ(frames(pictures(7200, "00000100 004F 000001B800080040 00000100 000F 00000100 004F")), "4 ");
    EXPECT_EQ(frames(pictures(7200, "00000100 004F 00000100 014F") + pictures(14400, "00000100 00CF")), "6 ");
}

// Sound that begins behind the first MiB, and private data that its first bytes tell.
TEST(MpegFacts, LateStreams) {
    const auto packet = [](const std::string &bytes) {
        return bytes + std::string(188 - bytes.size(), '\xFF');
    };
    std::string stream = packet(hex("4740001000 00B00D0001C100000001E100 00000000")) +
                         packet(hex("4741001000 02B0170001C10000E101F000 06E102F000 81E103F000 00000000")) +
                         packet(hex("47410210 000001FD 0000 800000 42424344 00") +
                                hex("00000011 00000000 7084480442 000000000000"));
    while (stream.size() < (1U << 20) + 1000) stream += packet(hex("471FFF10"));
    stream += packet(hex("47410310 000001BD 0000 800000 0B770000 14403F00 0000"));
    stream += packet(hex("471FFF10")) + packet(hex("471FFF10"));
    EXPECT_EQ(facts_of(stream),
              "MPEG-TS | 1280x720 Dirac 4:2:2 10 bits p 60000/1001 fps | 2ch 48000 Hz AC-3 1.1");
}

// Film that is shown at 29.97 Hz, each other picture for three fields.
TEST(MpegFacts, RepeatedFields) {
    std::string video = hex("000001B3 7804383400FFE018 000001B5 144200010000");
    for (int i = 0; i < 8; i++)
        video +=
            hex("00000100 000F 000001B5 8FFFF3") + hex(i % 2 == 0 ? "8380" : "8180") + hex("00000101 22");
    const std::string text = facts_of(video + hex("000001B7"));
    EXPECT_NE(text.find("30000/1001 fps 10 frames"), std::string::npos) << text;
    EXPECT_NE(text.find("| 1001/3000 s |"), std::string::npos) << text;
}

// Zeros behind the end of a sequence fill up a sector; behind a picture they are in the place of others.
TEST(MpegFacts, ZerosBehindVideo) {
    const std::string video = content_of(std::string(KELDUMP_SAMPLES) + "/mpeg/video.m2v");
    const std::string zeros(4096, '\0');
    EXPECT_EQ(extent_of(video + big().hex("000001B7").str() + zeros, "a.m2v"), "whole");
    EXPECT_EQ(extent_of(video + big().hex("00000100").str() + zeros, "a.m2v"),
              "cut zeros where pictures would be");
}

namespace {

const std::string kPack = hex("000001BA 4400040004010000 03F8");
// A sequence of 4x2 pictures, 25 of them a second, and the first picture.
const std::string kSequence = hex("000001B3 00400213 FFFFE018 00000100 0008");

// A packet of a transport stream, filled up.
std::string transport(const std::string &head, const std::string &payload) {
    const std::string bytes = hex(head) + payload;
    return bytes + std::string(188 - bytes.size(), '\xFF');
}
const std::string kAssociation = transport("4740001000", hex("00B00D0001C100000001E100 00000000"));
}  // namespace
