#include <gtest/gtest.h>

#include <algorithm>

#include "support/bytes_of.h"
#include "support/command.h"

namespace {

std::string packet(uint8_t type, const std::string &payload) {
    return big().zeros(4).u8(1, type).u32(16 + payload.size()).zeros(4).hex("E1E2").raw(payload).str();
}

const std::string kEnd = packet(0xFB, "");

std::string section(const ByteWriter &tags) { return big().u16(tags.size()).raw(tags.str()).str(); }

// A media packet with the four bytes of field information given.
std::string media(uint8_t type, const std::string &info, const std::string &data = "") {
    return packet(0xBF, big().u8(type, 2).u32(7).hex(info).u32(0xFFFFFFFF).u8(0x81, 0).raw(data).str());
}

TEST(Map, EveryTag) {
    Transcript transcript;
    auto material = big();
    material.u8(0x40, 7).text("a\tb").zeros(1).text("cut").u8(0x41, 4).u32(0xFFFFFFFF);
    material.u8(0x42, 4).u32(2).u8(0x43, 4).u32(3).u8(0x44, 4).u32(4).u8(0x45, 4).u32(0xC0000000);
    material.u8(0x46, 4).u32(6).u8(0x47, 8).u64(UINT64_MAX - 6).u8(0x60, 200).zeros(200);
    auto track = big();
    track.u8(0x4C, 2).text("f").zeros(1).u8(0x4D, 8).u64(0xAB00000000).u8(0x4E, 4).u32(1);
    track.u8(0x4F, 3).text("Br.").u8(0x50, 4).u32(3).u8(0x51, 4).u32(UINT32_MAX - 1);
    track.u8(0x52, 4).u32(2).u8(0x50, 4).u32(9).u8(0x51, 4).u32(4);
    auto tracks = big();
    tracks.u8(0x80 + 11, 0xC0 + 5).raw(section(track));
    tracks.u8(26, 0).u16(6).u8(0x50, 4).u32(UINT32_MAX);
    const std::string map = big().u8(0xE3, 0).raw(section(material)).raw(section(tracks)).str();
    SHOW(dump_of(packet(0xBC, map) + kEnd));
}

// Frame rates, line counts, media types and UMF track kinds, known or not.
TEST(Map, EveryName) {
    Transcript transcript;
    auto codes = big();
    for (uint32_t code = 0; code <= 12; code++) {
        codes.u8(0x50, 4).u32(code - 2).u8(0x51, 4).u32(code - 2);
    }
    auto tracks = big();
    for (uint32_t type = 0; type <= 27; type++) tracks.u8(0x80 + type, 0xC0).u16(2).u8(0x60, 0);
    const std::string material = section(codes);
    SHOW(dump_of(packet(0xBC, big().u8(0xE3, 0).raw(material).raw(section(tracks)).str()) + kEnd));
}

// Sections end with the payload, an empty one still has a tag, and reserved packets hold maps.
TEST(Map, Damaged) {
    Transcript transcript;
    std::string below_header = packet(0xBC, "");
    below_header[9] = 15;
    SHOW(dump_of(packet(0xFA, hex("60000000 4300")) + packet(0xFE, hex("E000FFFF 4304000000")) +
                 packet(0xFF, hex("E0")) + kEnd));
    EXPECT_EQ(lines_from(dump_of(below_header), "gxf"), "gxfmap: fread error\ngxftag: Format wrong\n");
    const std::string cut = packet(0xBC, "\xE0").substr(0, 16);
    EXPECT_EQ(lines_from(dump_of(cut), "gxf"), "gxfmap: fread error\ngxftag: fread error\n");
}

TEST(Media, FieldInformation) {
    Transcript transcript;
    const auto info = [](uint8_t type) { return lines_from(dump_of(media(type, "FF010203")), " info"); };
    const std::string next = "gxftag: fread error\n";
    EXPECT_EQ(info(10), " info      start:65281 end:515\n" + next);
    EXPECT_EQ(info(11), " info      length:66051 B-Frame \n" + next);
    EXPECT_EQ(info(13), " info      length:1044480\n" + next);
    EXPECT_EQ(info(25), " info      255 1 2 3\n" + next);
    SHOW(dump_of(media(99, "00000000") + media(20, "00000000").substr(0, 20)));
}

// Only whole entries inside the payload are shown; either drop-frame flag gives the "*".
TEST(Media, Timecodes) {
    Transcript transcript;
    const std::string codes = hex("1122334455667783 1002300940085267 24138516");
    SHOW(lines_from(dump_of(media(8, "00000005", codes) + media(24, "00010001", codes) + kEnd), " info"));
}

TEST(FieldLocator, EntriesThatAreSet) {
    Transcript transcript;
    auto table = little().u32(0x40000000, 3).zeros(4000);
    table.at(8).u32(9).at(8 + 4 * 2).u32(4).at(8 + 4 * 999).u32(0xFFFFFFFF);
    SHOW(dump_of(packet(0xFC, table.str()) + packet(0xFC, table.str().substr(8)) +
                 packet(0xFC, table.str()).substr(0, 4023)));
}

TEST(Walk, StopsAtABadHeader) {
    const std::string start = packet(0xBF, std::string(16, '\0'));
    const auto ends_with = [&](const std::string &next) { return lines_from(dump_of(start + next), "gxf"); };
    for (const size_t wrong : {0, 4, 5, 13, 14, 15}) {
        std::string header = kEnd;
        header[wrong] = '\x55';
        EXPECT_EQ(ends_with(header), "gxftag: Format wrong\n") << wrong;
    }
    EXPECT_EQ(ends_with(kEnd.substr(0, 15)), "gxftag: Format wrong\n");
    EXPECT_EQ(ends_with(""), "gxftag: fread error\n");
    EXPECT_EQ(ends_with(big().raw(kEnd).at(6).u32(0).str()), "");
    EXPECT_EQ(ends_with(kEnd + "behind the end"), "");
}

// Packet lengths are unsigned and positions 64-bit, although lines show both in 32 bits.
TEST(Walk, Beyond4GiB) {
    Workplace place;
    const std::string long_media = big().raw(media(25, "00000000")).at(6).u32(0xFFFFFFF0).str();
    place.write_sparse("long.gxf", 0x1FFFFFFF0, 0, long_media);
    place.write_sparse("long.gxf", 0x1FFFFFFF0, 0xFFFFFFF0, long_media);
    place.write_sparse("long.gxf", 0x1FFFFFFF0, 0x1FFFFFFE0, kEnd);
    EXPECT_EQ(lines_from(place.run({"long.gxf"}).out, "fffffff0").substr(0, 19), "fffffff0 media -16\n");
    EXPECT_EQ(lines_from(place.run({"long.gxf"}).out, "ffffffe0"), "ffffffe0 end of stream 16\n");
}

std::string umf_packet(uint8_t flags, const std::string &data) {
    return packet(0xFD, big().u8(flags).u32(data.size()).raw(data).str());
}

std::string utf16(const std::string &text) {
    auto out = little();
    for (const char c : text) out.u16(static_cast<uint8_t>(c));
    return out.str();
}

// A description with two tracks, one media entry and user data of the size given from offset 248 on.
ByteWriter description(ByteWriter::Order order, uint32_t user_size) {
    ByteWriter umf(order);
    umf.u32(248 + user_size, 3, 127, 104, 8, 2, 112, 136, 248, user_size);
    umf.at(48).u32(0xF0000001, 500, -1U, 1, 2, 0x10, 0x20, 0xA, 0xB);
    umf.at(96).u16(4, 99, 1, 2).text("1M").u16(7).text("\x01z").u16(8);
    umf.at(112).u16(136, 2, 3).at(120).u32(50).at(128).u32(5, 6).text("clip").u8(9).text("name");
    umf.at(224).u32(4, 25, -2U);
    return umf.at(248);
}

TEST(Umf, DescriptionInBothByteOrders) {
    Transcript transcript;
    // The sequence number and the user key share two bytes.
    auto low = description(ByteWriter::Order::little, 752);
    low.u32(600, 1).u16(2, 5, 4, 5).zeros(736);
    auto high = description(ByteWriter::Order::big, 752);
    high.u32(600, 1).u16(2, 4, 5, 4).zeros(736);
    SHOW(lines_from(dump_of(umf_packet(3, high.str()) + kEnd), "  Payload"));
    SHOW(lines_from(dump_of(umf_packet(3, low.str()) + kEnd), "  Payload"));
}

// Packets add up to one description, which every last packet prints; a cut packet adds nothing.
TEST(Umf, SeveralPackets) {
    Transcript transcript;
    const std::string whole = description(ByteWriter::Order::little, 752).zeros(752).str();
    const std::string first = umf_packet(1, whole.substr(0, 100));
    const std::string last = umf_packet(2, whole.substr(100));
    const std::string dump = dump_of(first + last + last);
    SHOW(lines_from(dump, "00000000 UMF", 10));
    SHOW(lines_from(dump, "00000412", 5));
    SHOW(lines_from(dump_of(first + last.substr(0, 500)), "00000079"));
}

TEST(Umf, DataBeyondTheCollectionIsDroppedAndReportedOnce) {
    Transcript transcript;
    std::string file;
    for (int i = 0; i < 8; i++) file += umf_packet(0, std::string(40000, 'x'));  // of each, 32768 bytes count
    EXPECT_EQ(dump_of(file + kEnd).find("exceeds"), std::string::npos);
    const std::string dump = dump_of(file + umf_packet(0, "y") + umf_packet(2, "z") + kEnd);
    SHOW(lines_from(dump, " UMF data", 5));
    EXPECT_EQ(lines_from(dump, "  Payload", 2), "  Payload Description\n   size          2021161080\n");
}

// Sizes that point outside the data end the lists.
TEST(Umf, SizesOutsideTheData) {
    auto umf = description(ByteWriter::Order::little, 0).zeros(752);
    umf.at(0).u32(1000).at(16).u32(-104U);  // the media begin with the data
    EXPECT_NE(lines_from(dump_of(umf_packet(2, umf.str()) + kEnd), " Media", 2),
              " Media Description\n User Data\n");
    umf.at(16).u32(-400U);
    EXPECT_EQ(lines_from(dump_of(umf_packet(2, umf.str()) + kEnd), " Track"),
              " Track Description\n Media Description\n User Data\n000003fd end of stream 16\n");
}

// The dump of XML in a user data entry of length 1, which reaches to the end of the payload: the user data
// size is not set.
std::string xml_lines(const std::string &text) {
    auto umf = description(ByteWriter::Order::little, 0);
    umf.at(0).u32(248 + 16 + text.size()).at(248).u32(1, 0x01000000).zeros(8).raw(text).zeros(400);
    const std::string dump = dump_of(umf_packet(3, umf.str()));
    const size_t start = dump.find(" <?");
    return dump.substr(start, dump.find("  length      0", start) - start);
}

TEST(Xml, OneLineATagIndentedByDepth) {
    EXPECT_EQ(xml_lines(utf16("<?xml v='1'?>\r\n<a x='1'>\n<b/>t\x03\xE9<c>text</c\n></a></a></a>left")),
              " <?xml v='1'?>\n  <a x='1'>\n   <b/>\n   t<c>\n   text</c>\n  </a>\n </a>\n</a>\n");
}

TEST(Xml, DeepTagsAndLongLines) {
    std::string text = "<?x>";
    std::string lines = " <?x>\n";
    for (int depth = 2; depth <= 20; depth++) {
        text += "<d>";
        lines += std::string(static_cast<size_t>(std::min(depth, 15)), ' ') + "<d>\n";
    }
    text += "<" + std::string(3000, 'n') + ">";
    lines += std::string(15, ' ') + "<" + std::string(2047, 'n') + "\n";
    EXPECT_EQ(xml_lines(utf16(text + "</d>")), lines + std::string(15, ' ') + "</d>\n");
}

size_t count_of(const std::string &dump, const std::string &text) {
    size_t n = 0;
    for (size_t at = 0; (at = dump.find(text, at)) != std::string::npos; at++) n++;
    return n;
}

// Sections, tags and tracks that end with their section or payload, or a byte before or behind.
TEST(Map, EdgesOfSections) {
    const auto count = [](const std::string &payload, const std::string &text) {
        return count_of(dump_of(packet(0xBC, hex(payload)) + kEnd), text);
    };
    for (const auto &[payload, sections, tags, tracks] :
         std::initializer_list<std::tuple<const char *, size_t, size_t, size_t>>{
             {"E0000000", 0, 0, 0},
             {"E000000060", 1, 0, 0},
             {"E0000002 6000", 1, 1, 0},
             {"E0000003 6000 6000", 1, 2, 0},
             {"E0000002 6000 00", 1, 1, 0},
             {"E0000002 6000 0000", 2, 1, 0},
             {"E0000002 6000 0000 80C00000", 2, 1, 0},
             {"E0000002 6000 0001 80C00000", 2, 1, 1},
             {"E0000002 6000 0002 80C000", 2, 1, 0},
             {"E0000002 6000 0006 80C00002 6000 80C00000", 2, 2, 1},
             {"E0000002 6000 0007 80C00002 6000 80C00000", 2, 2, 2}}) {
        EXPECT_EQ(count(payload, " sectionlength"), sections) << payload;
        EXPECT_EQ(count(payload, " Tag "), tags) << payload;
        EXPECT_EQ(count(payload, "  mediatype"), tracks) << payload;
    }
}

// A payload of nothing is one, a length below the header's none; of a long payload 64 KiB must be there.
TEST(Walk, EdgesOfPayloads) {
    EXPECT_EQ(lines_from(dump_of(packet(0xBC, "")), " Version", 1), " Version 0\n");
    const std::string below = big().raw(packet(0xBC, std::string(70000, '\0'))).at(6).u32(15).str();
    EXPECT_EQ(lines_from(dump_of(below), "gxf", 1), "gxfmap: fread error\n");
    const std::string large = packet(0xBF, std::string(70000, '\0'));
    EXPECT_EQ(lines_from(dump_of(large.substr(0, 16 + 65536)), "gxf"), "gxftag: fread error\n");
    EXPECT_EQ(lines_from(dump_of(large.substr(0, 16 + 65535)), "gxf", 1), "gxfmedia: fread error\n");
    for (const size_t bytes : {15, 16, 23, 24}) {
        const std::string dump = dump_of(media(8, "00000003", std::string(bytes, '\0')));
        EXPECT_EQ(count_of(dump, " 00:00:00:00"), bytes / 8) << bytes;
    }
}

TEST(Umf, EdgesOfPackets) {
    EXPECT_EQ(lines_from(dump_of(umf_packet(0, "")), "gxf"), "gxftag: fread error\n");
    EXPECT_EQ(lines_from(dump_of(umf_packet(0, "").substr(0, 20)), "0", 2),
              "00000000 UMF Packet 21\ngxfmap: fread error\n");
    EXPECT_EQ(lines_from(dump_of(umf_packet(0, "abc").substr(0, 23)), "gxf", 1), "gxfmap: fread error\n");
    // The values that tell the byte order: equal, or the first larger by one.
    const auto size = [](const std::string &start) {
        return lines_from(dump_of(umf_packet(2, hex(start))), "   size", 1);
    };
    EXPECT_EQ(size("01000000 00000000 00"), "   size          1\n");
    EXPECT_EQ(size("01000000 01000000 00"), "   size          16777216\n");
}

// An entry of a list is shown when the list has a byte for it and more than 128 bytes of the data follow.
TEST(Umf, EdgesOfLists) {
    const auto dump = [](uint32_t track_size, size_t fill) {
        auto umf = little().u32(1).zeros(fill - 4).at(16).u32(track_size);
        return dump_of(umf_packet(2, umf.str()));
    };
    for (const auto &[track_size, fill, tracks] : std::initializer_list<std::tuple<uint32_t, size_t, size_t>>{
             {0, 400, 0}, {1, 400, 1}, {4, 400, 1}, {5, 400, 2}, {4, 232, 0}, {4, 233, 1}}) {
        EXPECT_EQ(count_of(dump(track_size, fill), "  track       "), tracks) << track_size << " " << fill;
    }
    auto before = little().u32(1).zeros(396).at(16).u32(-105U).at(28).u32(8);  // the media begin at -1
    EXPECT_EQ(lines_from(dump_of(umf_packet(2, before.str())), " Media", 2),
              " Media Description\n User Data\n");
    auto named = description(ByteWriter::Order::little, 0).zeros(400).at(136).fill('x', 100);
    EXPECT_EQ(lines_from(dump_of(umf_packet(2, named.str())), "  filename", 1),
              "  filename    '" + std::string(88, 'x') + "'\n");
}

TEST(Xml, ClosingTagsBeyondTheRootAndHalfAUnit) {
    EXPECT_EQ(xml_lines(utf16("<?x></a></b></c></d>")), " <?x>\n </a>\n</b>\n</c>\n</d>\n");
    EXPECT_EQ(xml_lines(utf16("<?x></a") + ">"), " <?x>\n");
}

}  // namespace
