#include <gtest/gtest.h>

#include <algorithm>

#include "gxf/packets_test.h"
#include "support/command.h"

namespace {

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
    umf.u32(248 + user_size).u32(3).u32(127).u32(104).u32(8).u32(2).u32(112).u32(136).u32(248).u32(user_size);
    umf.at(48).u32(0xF0000001).u32(500).u32(-1U).u32(1).u32(2).u32(0x10).u32(0x20).u32(0xA).u32(0xB);
    umf.at(96).u16(4).u16(99).u16(1).u16(2).text("1M").u16(7).text("\x01z").u16(8);
    umf.at(112).u16(136).u16(2).u16(3).at(120).u32(50).at(128).u32(5).u32(6).text("clip").u8(9).text("name");
    umf.at(224).u32(4).u32(25).u32(-2U);
    return umf.at(248);
}

const std::string kDescription =
    "  Payload Description\n"
    "   size          1000\n"
    "   version       3\n"
    "   tracks        127\n"
    "   trackoffset   104\n"
    "   tracksize     8\n"
    "   segments      2\n"
    "   mediaoffset   112\n"
    "   mediasize     136\n"
    "   useroffset    248\n"
    "   usersize      752\n"
    " Material Description\n"
    "  flags         f0000001\n"
    "  maxlength     500\n"
    "  minlength     -1\n"
    "  markin        1\n"
    "  markout       2\n"
    "  tcmarkin      00000010\n"
    "  tcmarkout     00000020\n"
    "  modifiedmsb   0000000a\n"
    "  modifiedlsb   0000000b\n"
    "  audiotracks   4\n"
    "  tctracks      1\n"
    "  videotracks   2\n"
    " Track Description\n"
    "  track       M1 MPEG2 SD Video\n"
    "  segments    7\n"
    "  track       z? ?\n"
    "  segments    8\n"
    " Media Description\n"
    "  length      136\n"
    "  trackinfo   2\n"
    "  sequenceno  3\n"
    "  fieldcnt    50\n"
    "  markin      5\n"
    "  markout     6\n"
    "  filename    'clip.name'\n"
    "  type        4\n"
    "  sampling    25\n"
    "  size        -2\n"
    " User Data\n"
    "  length      600\n"
    "  position    1\n"
    "  trackno     2\n"
    "  seqno       262149\n"
    "  userkey     327684\n"
    "  length      0\n"
    "  position    0\n"
    "  trackno     0\n"
    "  seqno       0\n"
    "  userkey     0\n";

TEST(Umf, DescriptionInBothByteOrders) {
    // The sequence number and the user key share two bytes.
    auto low = description(ByteWriter::Order::little, 752);
    low.u32(600).u32(1).u16(2).u16(5).u16(4).u16(5).zeros(736);
    auto high = description(ByteWriter::Order::big, 752);
    high.u32(600).u32(1).u16(2).u16(4).u16(5).u16(4).zeros(736);
    EXPECT_EQ(lines_from(dump_of(umf_packet(3, high.str()) + kEnd), "  Payload"),
              kDescription + "000003fd end of stream 16\n");
    EXPECT_EQ(lines_from(dump_of(umf_packet(3, low.str()) + kEnd), "  Payload"),
              kDescription + "000003fd end of stream 16\n");
}

// Packets add up to one description, which every last packet prints; a cut packet adds nothing.
TEST(Umf, SeveralPackets) {
    std::string whole = description(ByteWriter::Order::little, 752).zeros(752).str();
    const std::string first = umf_packet(1, whole.substr(0, 100));
    const std::string last = umf_packet(2, whole.substr(100));
    const std::string dump = dump_of(first + last + last);
    EXPECT_EQ(lines_from(dump, "00000000 UMF", 5),
              "00000000 UMF Packet 121\n preamble\n  type      First \n  size          100\n"
              "00000079 UMF Packet 921\n");
    EXPECT_EQ(lines_from(dump, "  type      Last", 4),
              "  type      Last \n  size          900\n  Payload Description\n   size          1000\n");
    EXPECT_EQ(lines_from(dump, "00000412 UMF", 5),
              "00000412 UMF Packet 921\n preamble\n  type      Last \n  size          900\n"
              "  Payload Description\n");
    EXPECT_EQ(lines_from(dump_of(first + last.substr(0, 500)), "00000079"),
              "00000079 UMF Packet 921\n preamble\n  type      Last \n  size          900\n"
              "gxfmap: fread error\ngxftag: fread error\n");
    EXPECT_EQ(dump_of(umf_packet(1, "").substr(0, 20)),
              "Fileformat:GXF\n00000000 UMF Packet 21\ngxfmap: fread error\ngxftag: fread error\n");
}

TEST(Umf, DataBeyondTheCollectionIsDroppedAndReportedOnce) {
    std::string file;
    for (int i = 0; i < 8; i++) file += umf_packet(0, std::string(40000, 'x'));  // of each, 32768 bytes count
    const std::string full = dump_of(file + kEnd);
    EXPECT_EQ(full.find("exceeds"), std::string::npos);
    const std::string dump = dump_of(file + umf_packet(0, "y") + umf_packet(2, "z") + kEnd);
    EXPECT_EQ(lines_from(dump, " UMF data"), lines_from(dump, " UMF data exceeds 262144 bytes\n"));
    EXPECT_EQ(dump.find(" UMF data"), dump.rfind(" UMF data"));
    EXPECT_NE(dump.find("  size          1\n  Payload Description\n   size          2021161080\n"),
              std::string::npos);
}

// Sizes that point outside the data end the lists; without a user data size the rest of the payload counts.
TEST(Umf, SizesOutsideTheData) {
    auto umf = description(ByteWriter::Order::little, 0).zeros(752);
    umf.at(0).u32(1000).at(16).u32(-400U);
    EXPECT_EQ(lines_from(dump_of(umf_packet(2, umf.str()) + kEnd), " Track"),
              " Track Description\n Media Description\n User Data\n000003fd end of stream 16\n");
    umf.at(16).u32(8).at(252).u32(77);
    EXPECT_EQ(lines_from(dump_of(umf_packet(2, umf.str())), " User", 3),
              " User Data\n  length      0\n  position    77\n");
}

std::string xml_lines(const std::string &text) {
    const auto size = static_cast<uint32_t>(16 + text.size() + 400);
    auto umf = description(ByteWriter::Order::little, size);
    umf.u32(1).u32(0x01000000).zeros(8).raw(text).zeros(400);
    const std::string dump = dump_of(umf_packet(3, umf.str()) + kEnd);
    const size_t start = dump.find(" <?");
    const size_t end = dump.find("  length      0", start);
    EXPECT_NE(end, std::string::npos) << dump;
    return dump.substr(start, end - start);
}

TEST(Xml, OneLineATagIndentedByDepth) {
    EXPECT_EQ(xml_lines(utf16("<?xml v='1'?>\r\n<a x='1'>\n<b/>t\x03\xE9<c>text</c\n></a></a></a>left")),
              " <?xml v='1'?>\n"
              "  <a x='1'>\n"
              "   <b/>\n"
              "   t<c>\n"
              "   text</c>\n"
              "  </a>\n"
              " </a>\n"
              "</a>\n");
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

}  // namespace
