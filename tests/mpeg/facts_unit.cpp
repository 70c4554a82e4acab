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

// A packet of MPEG-2 and one of MPEG-1, with a time of 33 bits or (-1) none.
std::string pes(int id, int64_t time, const std::string &data) {
    const uint64_t t = static_cast<uint64_t>(time);
    const std::string stamp =
        time < 0 ? "" : big().u8(0x21 | t >> 30 << 1).u16(t >> 15 << 1 | 1, t << 1 | 1).str();
    const std::string packet = big().u8(0x80, time < 0 ? 0 : 0x80, stamp.size()).raw(stamp).raw(data).str();
    return big().u24(1).u8(static_cast<uint64_t>(id)).u16(packet.size()).raw(packet).str();
}
std::string pes_1(const std::string &packet) {
    return big().hex("000001E0").u16(packet.size()).raw(packet).str();
}

// A packet of a transport stream, filled up.
std::string transport(const std::string &head, const std::string &payload) {
    const std::string bytes = hex(head) + payload;
    return bytes + std::string(188 - bytes.size(), '\xFF');
}
const std::string kAssociation = transport("4740001000", hex("00B00D0001C100000001E100 00000000"));
// A map of streams.
std::string map_of(const std::string &streams) {
    const std::string rows = hex(streams);
    return transport("4741001000", hex("02B0") + big().u8(13 + rows.size()).str() +
                                       hex("0001C10000E101F000") + rows + hex("00000000"));
}
std::string streams_of(const std::string &streams, const std::string &more = "") {
    const std::string null = transport("471FFF10", "");
    return facts_of(kAssociation + map_of(streams) + more + null + null);
}

}  // namespace

TEST(MpegFacts, EdgesOfIds) {
    Transcript transcript;
    std::string lines;
    for (const int id : {0xBC, 0xBF, 0xC0, 0xDF, 0xE0, 0xEF, 0xF0})
        lines += std::to_string(id) + ": " + facts_of(kPack + pes(id, 0, id < 0xE0 ? "" : kSequence)) + "\n";
    SHOW(lines);
    lines.clear();
    for (const int id : {0x7F, 0x80, 0x87, 0x88, 0x8F, 0x90, 0x9F, 0xA0, 0xAF, 0xB0, 0xBF, 0xC0, 0xCF, 0xD0})
        lines +=
            std::to_string(id) + ": " +
            facts_of(kPack + pes(0xBD, 0, big().u8(static_cast<uint64_t>(id)).hex("010001 00 0180").str())) +
            "\n";
    SHOW(lines);
    lines.clear();
    for (const int format : {0x00, 0x01, 0x02, 0x07, 0x51, 0xA1, 0xF1})
        lines += std::to_string(format) + ": " +
                 facts_of(kPack +
                          pes(0xBD, 0,
                              hex("A0 010001 00") + big().u8(static_cast<uint64_t>(format)).str() + "\x80")) +
                 "\n";
    SHOW(lines);
}

TEST(MpegFacts, EdgesOfTimes) {
    Transcript transcript;
    std::string lines;
    const auto times = [](int64_t first, int64_t last, const std::string &more = "",
                          const char *second = "00000100 0048") {
        return facts_of(kPack + pes(0xE0, first, kSequence) + pes(0xE0, last, hex(second)) + more) + "\n";
    };
    SHOW(times(0, 3600));
    SHOW(times(3600, 3600));
    SHOW(times(3600, 3601));
    SHOW(times(-1, 3600));
    SHOW(times(3600, 0, "", "00000100 0008"));
    SHOW(times(0, 5400));
    // Clocks that come round.
    SHOW(times((int64_t{1} << 33) - 3600, 0));
    SHOW(times((int64_t{1} << 33) - 3600, 3600));
    SHOW(times((int64_t{1} << 33) - 3600, 1800));
    SHOW(times(int64_t{1} << 31, (int64_t{1} << 32) + (int64_t{1} << 30)));
    SHOW(times((int64_t{1} << 32) + 3600, int64_t{1} << 31));
    // Others' times count where those of the pictures do not.
    const std::string sound = pes(0xC0, 0, "") + pes(0xC0, 90000, "");
    SHOW(times(-1, -1, sound));
    SHOW(times(0, -1, sound));
    SHOW(times(-1, -1, sound + pes(0xC1, 0, "") + pes(0xC1, 45000, "")));
    SHOW(times(0, 3600, sound));
    // Packets of MPEG-1 have up to 16 bytes of stuffing before their times.
    const auto stuffed = [](size_t n) {
        return facts_of(hex("000001BA 2100010001800001") + pes_1(hex("21000100E1") + kSequence) +
                        pes_1(std::string(n, '\xFF') + hex("2100011D21") + hex("00000100 0048"))) +
               "\n";
    };
    lines.clear();
    for (const size_t n : {0, 1, 15, 16, 17}) lines += std::to_string(n) + ": " + stuffed(n);
    SHOW(lines);
}

TEST(MpegFacts, EdgesOfPrograms) {
    Transcript transcript;
    std::string lines;
    const std::string program = kPack + pes(0xE0, 0, kSequence) + pes(0xE0, 3600, hex("00000100 0048"));
    const std::string end = hex("000001B9");
    const std::string size = std::to_string(program.size());
    SHOW(facts_changed(program, ">1 >3 >4 >2048 <" + std::to_string(program.size() - 1)));
    lines.clear();
    for (const size_t n : {1, 3, 4, 59, 60, 61, 64, 2047, 2048, 4096})
        lines += std::to_string(n) + ":" + facts_difference(program, program + std::string(n, '\0')) + "\n";
    SHOW(lines);
    lines.clear();
    for (const size_t n : {1, 59, 60, 61, 62, 64})
        lines +=
            std::to_string(n) + ":" + facts_difference(program, program + std::string(n, '\0') + end) + "\n";
    SHOW(lines);
    SHOW("end:" + facts_difference(program, program + end) + "\n");
    SHOW("other:" + facts_difference(program, program + hex("000001B8")) + "\n");
    SHOW("end:" + facts_difference(program, program + end.substr(0, 3)) + "\n");
    SHOW("system header:" +
         facts_difference(program, kPack + hex("000001BB 0006 800001 04E1FF") + program.substr(14)) + "\n");
    // A pack with stuffing, and ids of video where packets would be.
    ROWS("program", facts_changed(program, rows));
    // The header of sound that begins in the first 16 KiB of its stream.
    lines.clear();
    for (const size_t n : {8, 9})
        lines +=
            facts_of(kPack +
                     pes(0xC0, 0, std::string(16384 - n, '\0') + hex("FFFD8404") + std::string(600, 'x'))) +
            "\n";
    SHOW(lines);
    lines.clear();
    for (const size_t n : {8, 9})
        lines += facts_of(kPack + pes(0xC0, 0,
                                      std::string(10000, '\0') + hex("FFFD8404") + std::string(n - 4, 'x'))) +
                 "\n";
    SHOW(lines);
}

TEST(MpegFacts, EdgesOfVideo) {
    Transcript transcript;
    std::string lines;
    const std::string picture = hex("00000100 000F FFF8");
    const std::string video = hex("000001B3 00400213 FFFFE018 000001B800080040") + picture;
    SHOW(facts_of(video) + "\n");
    ROWS("video", facts_changed(video, rows));
    const std::string ends = video + picture;
    SHOW("pictures:" + facts_difference(video, ends) + "\n");
    lines.clear();
    for (const size_t n : {2044, 2047, 2048, 4096})
        lines += std::to_string(n) + ":" + facts_difference(ends, ends + std::string(n, '\0')) + "\n";
    SHOW(lines);
    const std::string rate = hex("000001B3 00400213 0000A018 00000100 000F");
    EXPECT_EQ(bit_rates_of(rate), "800");
    EXPECT_EQ(bit_rates_of(video), "5600");
}

TEST(TransportFacts, EdgesOfMaps) {
    Transcript transcript;
    // Types, descriptors and registrations.
    SHOW(streams_of("02E101F000") + "\n");
    SHOW(streams_of("7FE101F000") + "\n");
    SHOW(streams_of("80E101F000") + "\n");
    SHOW(streams_of("81E101F000") + "\n");
    SHOW(streams_of("06E101F002 7A00") + "\n");
    SHOW(streams_of("06E101F003 6A0100") + "\n");
    SHOW(streams_of("06E101F001 7A") + "\n");
    SHOW(streams_of("7FE101F006 050441432D33") + "\n");
    SHOW(streams_of("88E101F006 050441432D33") + "\n");
    const std::string data = transport("47410110", hex("000001BD 0000 800000") + "data");
    SHOW(streams_of("88E101F006 050441432D33", data) + "\n");
    SHOW(streams_of("7FE101F006 050441432D33", data) + "\n");
    SHOW(streams_of("80E101F006 050441432D33", data) + "\n");
    SHOW(streams_of("06E101F006 050441432D33 06E102F006 0A04656E6700 06E103F008 7A00 0A04656E6700") + "\n");
    for (const char *channels : {"00", "01", "08", "09"})
        SHOW(streams_of(std::string("06E101F00A 05044F707573 7F0280") + channels) + "\n");
    // Programs of the association, and one stream in a map that is told to be shorter.
    const std::string null = transport("471FFF10", "");
    SHOW(facts_of(transport("4740001000", hex("00B0110001C100000001E1000002E200 00000000")) +
                  map_of("03E101F000 0FE102F000") + null + null) +
         "\n");
    SHOW(facts_of(kAssociation +
                  transport("4741001000", hex("02B0120001C10000E101F000 03E101F000 03E102F000 00000000")) +
                  null + null) +
         "\n");
    SHOW(facts_of(transport("4740001000", hex("00B00C0001C100000001E100 00000000")) + map_of("03E101F000") +
                  null + null) +
         "\n");
    SHOW(facts_of(kAssociation +
                  transport("4741001000", hex("02B0110001C10000E101F000 03E101F000 00000000")) + null +
                  null) +
         "\n");
    // A section that goes on in the next packet.
    for (const size_t n : {1, 2, 3, 10, 20, 21}) {
        const std::string section = map_of("03E101F000").substr(5, 21);
        const auto part = [](const char *head, const std::string &bytes) {
            return hex(head) + big().u8(183 - bytes.size(), 0).str() +
                   std::string(182 - bytes.size(), '\xFF') + bytes;
        };
        const std::string first = std::string(1, '\0') + section.substr(0, n);
        SHOW(facts_of(kAssociation + part("47410030", first) + part("47010031", section.substr(n)) + null +
                      null) +
             "\n");
    }
}

TEST(TransportFacts, EdgesOfPackets) {
    Transcript transcript;
    std::string lines;
    const auto clock = [](const char *length, uint64_t time) {
        return transport("47410120",
                         hex(length) + "\x10" + big().u32(time >> 1).u16(time << 15 & 0x8000).str());
    };
    const std::string head = kAssociation + map_of("03E101F000");
    const std::string null = transport("471FFF10", "");
    SHOW(facts_of(head + clock("07", 0) + clock("07", 9000)) + "\n");
    SHOW(facts_of(head + clock("06", 0) + clock("06", 9000)) + "\n");
    SHOW(facts_of(head + clock("B7", 0) + clock("B7", 9001)) + "\n");
    // Packets at the end that are cut, or zeros.
    std::string stream = head;
    for (int i = 0; i < 8; i++) stream += null;
    const auto end = [](const std::string &base, size_t from, const std::string &bytes) {
        const std::string changed = base.substr(0, from) + bytes;
        return std::to_string(from) + "+" + std::to_string(bytes.size()) + ":" +
               facts_difference(base, changed) + "\n";
    };
    for (const size_t n : {1, 184, 185, 187}) lines += end(stream, stream.size() - n, "");
    for (const char *bytes : {"47", "4700", "00", "000000", "00000000", "0000000000", "0000000001", "78"})
        lines += end(stream, stream.size(), hex(bytes));
    for (const size_t n : {187, 188, 376}) lines += end(stream, stream.size(), std::string(n, '\0'));
    SHOW(lines);
    lines.clear();
    std::string timed;
    for (size_t at = 0; at < stream.size(); at += 188) timed += "time" + stream.substr(at, 188);
    for (const size_t n : {1, 187, 188, 189, 191}) lines += end(timed, timed.size() - n, "");
    for (const char *bytes :
         {"74", "74696D65", "74696D6547", "74696D6500", "00000000", "0000000000", "0000000000000000"})
        lines += end(timed, timed.size(), hex(bytes));
    SHOW(lines);
}
