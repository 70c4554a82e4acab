// JPEG 2000 boxes and codestreams.
#include <gtest/gtest.h>

#include "support/bytes_of.h"
#include "support/command.h"

namespace {

std::string marker(const std::string &code, const std::string &fields) {
    return big().hex("FF" + code).u16(2 + fields.size()).raw(fields).str();
}

const std::string kSoc = hex("FF4F");
const std::string kSod = hex("FF93");
const std::string kEoc = hex("FFD9");

std::string siz(uint32_t components) {
    ByteWriter w = big();
    w.u16(0).u32(64).u32(48).u32(0).u32(0).u32(32).u32(24).u32(0).u32(0).u16(components);
    for (uint32_t i = 0; i < std::min(components, 3U); i++) w.u8(i == 1 ? 0x8B : 7).u8(1).u8(2);
    return marker("51", w.str());
}
std::string sot(uint32_t length, const std::string &header = "") {
    return marker("90", big().u16(3).u32(length).u8(0).u8(2).str()) + header;
}

// The dump of SOC, SIZ and further segments, from the third segment on, without hex rows.
std::string segments(const std::string &content, uint32_t components = 3) {
    const std::string start = kSoc + siz(components);
    const std::string dump = dump_of(start + content, "a.j2k");
    std::string out;
    size_t line = 0;
    bool reached = false;
    char offset[16];
    std::snprintf(offset, sizeof offset, "%08zx", start.size());
    while (line < dump.size()) {
        const size_t end = dump.find('\n', line) + 1;
        const std::string text = dump.substr(line, end - line);
        reached = reached || text.compare(0, 8, offset) == 0;
        const bool hexrow = text.size() > 3 && isxdigit(text[0]) && isxdigit(text[1]) && text[2] == ' ';
        if (reached && !hexrow) out += text;
        line = end;
    }
    return out;
}

const std::string kEnd = hex("FF4F");  // keeps the walk inside the file; its lines are cut off
std::string one(const std::string &segment, uint32_t components = 3) {
    const std::string out = segments(segment + kEnd, components);
    char next[16];
    std::snprintf(next, sizeof next, "%08zx", kSoc.size() + siz(components).size() + segment.size());
    return out.substr(out.find('\n') + 1, out.find(next) - out.find('\n') - 1);
}

}  // namespace

TEST(Codestream, FromStartToEnd) {
    const std::string cod = marker("52", hex("07 02 0002 01 01 04 03 30 01 8877"));
    const std::string qcd = marker("5C", hex("40 48 50 50 58"));
    const std::string stream = kSoc + siz(3) + cod + qcd + sot(14 + 4) + kSod + "data" + kEoc;
    EXPECT_EQ(dump_of(stream), recorded("jpeg2000/expected/codestream-from-start-to-end.txt"));
}

TEST(Codestream, CodingStyles) {
    EXPECT_EQ(lines_from(one(marker("52", hex("20 07 0001 00 00 1D FF 00 05 11 22 33"))), " Scod"),
              recorded("jpeg2000/expected/codestream-coding-styles.txt"));
    EXPECT_EQ(
        lines_from(one(marker("53", hex("02 01 05 04 04 00 00"))), " data", 7),
        " data for component 2\n Scod                  0x01\n - entropy encoder with partition (precincts)\n"
        " - No SOP marker segments are used\n - No EPH mmarker segments are used\n decomposition level   5\n"
        " codeblock width       64\n");
    EXPECT_EQ(lines_from(one(marker("53", hex("0102 06 05 04 04 00 00")), 300), " data", 5),
              " data for component 258\n Scod                  0x06\n - probably illegal Scod codeword\n"
              " - SOP marker segments are used\n - EPH marker segments are used\n");
}

TEST(Codestream, Quantization) {
    EXPECT_EQ(one(marker("5C", hex("42 6F00 6EE0 0001 F800"))),
              recorded("jpeg2000/expected/codestream-quantization.txt"));
    EXPECT_EQ(one(marker("5C", hex("FF"))), " - guardbits           7\n - sQCD                ?/0xff\n");
    EXPECT_EQ(lines_from(one(marker("5C", hex("00 08 08 08 08 08 08 08 08 08 08"))), " - value 2HL"),
              " - value 2HL           0x08\n - value 2LH           0x08\n - value 2HH           0x08\n"
              " - value 3HL           0x08\n - value 3LH           0x08\n - value 3HH           0x08\n");
    EXPECT_EQ(one(marker("5D", hex("01 21 6F00"))),
              " data for component 1\n - guardbits           1\n - sQCD                Scalar Implicit\n"
              " - value 0LL           0.000228882\n");
    EXPECT_EQ(one(marker("5D", hex("01 20 11 22"))),
              " data for component 1\n - guardbits           1\n - sQCD                No Quantization\n"
              " - value 0LL           0x11\n - value 1HL           0x22\n");
}

TEST(Codestream, TilePartLengthsAndProgressions) {
    EXPECT_EQ(one(marker("55", hex("01 60 0001 00000010 0002 00000020"))),
              recorded("jpeg2000/expected/codestream-tile-part-lengths-and-progressions.txt"));
    EXPECT_EQ(
        one(marker("55", hex("00 00 0007"))),
        " TLM index           0\n tile index length   0 bytes \n length information  2 bytes \n"
        " tileparts           1\n tilepart 1:\n tile index          not defined \n tilepart length     7\n");
    EXPECT_EQ(lines_from(one(marker("55", hex("00 10 01 0002 03"))), " - failure"),
              " - failure !!! incorrect marker length or tilpart data \n"
              " tilepart 1:\n tile index          1\n tilepart length     2\n"
              " tilepart 2:\n tile index          3\n - failure !!! incorrect tilepart lenght definition\n");
    EXPECT_EQ(lines_from(one(marker("55", hex("00 30 01 0002 03 04"))), " tilepart 1:"),
              " tilepart 1:\n - failure !!! incorrect tilepart index lenght definition\n"
              " - failure !!! incorrect tilepart lenght definition\n");
    const std::string progressions = hex("00 00 0002 06 03 01  01 02 0003 04 05 09");
    EXPECT_EQ(one(marker("5F", progressions)),
              " progression 1:\n - comp  0 - 3\n - res   0 - 6\n - layer 2\n - order RLCP\n"
              " progression 2:\n - comp  2 - 5\n - res   1 - 4\n - layer 3\n - order \n");
    EXPECT_EQ(one(marker("5F", hex("00 00 0002 06 03 01"))), " - failure !!! POC marker wrong length\n");
    EXPECT_EQ(one(marker("5F", hex("00 0102 0002 06 0304 04  00 0000 0000 00 0000 00")), 257),
              " progression 1:\n - comp  258 - 772\n - res   0 - 6\n - layer 2\n - order CPRL\n"
              " progression 2:\n - comp  0 - 0\n - res   0 - 0\n - layer 0\n - order LRCP\n");
}

TEST(Codestream, CommentsAndMarkersWithoutFields) {
    EXPECT_EQ(one(marker("64", hex("0001") + "made\there")),
              " coding     IS 8859-15:1999(Latin)\n comment    'made.here'\n");
    EXPECT_EQ(one(marker("64", hex("0000 FF"))), " coding     binary Comment Data\n");
    const auto header = [](const std::string &segment) {
        return segments(segment + kEnd).substr(10, segments(segment + kEnd).find('\n') - 9);
    };
    EXPECT_EQ(header(marker("5E", "abc")), "RGB/7 - Region of interest\n");
    EXPECT_EQ(header(marker("57", "a")), "PLM/5 - packet length - main header\n");
    EXPECT_EQ(header(marker("79", "")), "??? / 4 - \n");
    EXPECT_EQ(header(marker("50", "")), "00000050: 0xff50 Unknown marker /4 \n");
    EXPECT_EQ(segments(hex("FF30")).substr(8),
              ": invalid marker code 30\n00000068: Expected to get 0xff, got 00\nERROR during decoding\n");
}

TEST(Codestream, MarkersOutOfPlace) {
    const auto failure = [](const std::string &content) {
        const std::string out = segments(content);
        const size_t at = out.find(" - failure");
        return at == std::string::npos ? "" : out.substr(at, out.find('\n', at) + 1 - at);
    };
    const auto refused = [](const std::string &name) {
        return " - failure !!! " + name + " marker is not allowed at this position\n";
    };
    EXPECT_EQ(failure(kSoc), " - failure !!! This marker is mot allowed in this Position !!!\n");
    EXPECT_EQ(failure(sot(100, siz(3))), refused("SIZ"));
    EXPECT_EQ(failure(marker("58", "a")), refused("PLT"));
    EXPECT_EQ(failure(sot(100, marker("58", "a"))), "");
    EXPECT_EQ(failure(marker("61", "a")), refused("PPT"));
    EXPECT_EQ(failure(sot(100, marker("60", "a"))), refused("PPM"));
    EXPECT_EQ(failure(sot(100) + sot(100)), refused("SOT"));
    EXPECT_EQ(failure(hex("FF92")), refused("EPH"));
    const std::string data = sot(14, kSod);
    EXPECT_EQ(failure(data + marker("52", hex("00 00 0000 00 00 04 04 00 00"))), refused("COD"));
    EXPECT_EQ(failure(data + marker("64", hex("0000"))), refused("CME"));
    EXPECT_EQ(failure(data + marker("91", "ab") + hex("FF92")), "");
    // The line of a packet shows its size and number.
    EXPECT_EQ(lines_from(dump_of(kSoc + siz(3) + marker("91", hex("0009"))), "00000006", 2),
              "00000006: SOP/10 - start of packet header \n" + refused("SOP"));
    // These say so before their fields.
    EXPECT_EQ(lines_from(segments(data + marker("5C", hex("00"))), " - failure", 2),
              refused("QCD") + " - guardbits           0\n");
    EXPECT_EQ(lines_from(segments(data + marker("5F", "a")), " - failure", 2),
              refused("POC") + " - failure !!! POC marker wrong length\n");
}

TEST(Codestream, TileParts) {
    // A length of 0 runs to the EOC marker at the end; a chance FF 90 in a comment is taken for the
    // tile-part's start.
    const std::string open = sot(0, kSod) + "0123456789" + kEoc;
    EXPECT_EQ(lines_from(segments(open), "0000003f: SOD"),
              "0000003f: SOD/2 - Start of data\n - End of tile undefined\n0000004b: EOF/2 - End of file\n");
    const std::string chance = marker("64", hex("0000 FF90 0000 0000 00000000"));
    EXPECT_EQ(lines_from(segments(sot(500, chance + kSod) + "xx"), "0000004f: SOD", 2),
              "0000004f: SOD/2 - Start of data\n - End of tile undefined\n");
    EXPECT_EQ(lines_from(segments(kSod + "xx"), "00000033: SOD"),
              "00000033: SOD/2 - Start of data\nfound no SOT before the SOD marker\n0000006a: Expected to "
              "get 0xff, got 00\n"
              "ERROR during decoding\n");
    EXPECT_EQ(lines_from(segments(sot(12, kSod)), "0000003f: SOD"),
              "0000003f: SOD/2 - Start of data\n");  // no progress
    EXPECT_EQ(
        lines_from(segments(sot(3, kSod)), "0000003f: SOD"),
        "0000003f: SOD/2 - Start of data\n00000080: Expected to get 0xff, got 00\nERROR during decoding\n");
}

TEST(Codestream, FatalComponents) {
    const Workplace place;
    place.write("a.j2k", kSoc + siz(3) + marker("53", hex("04 00 05 04 04 00 00")));
    const Outcome run = place.run({"a.j2k"});
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(lines_from(run.out, "00000033"),
              "00000033: COC/11 - Coding style component\n data for component 4\n - failure !!! - max "
              "component = 3\n");
    place.write("b.j2k", kSoc + siz(3) + marker("5D", hex("03 00")));
    EXPECT_EQ(place.run({"b.j2k"}).status, 0);
}

namespace {

std::string box(const std::string &type, const std::string &content) {
    return big().u32(8 + content.size()).text(type).raw(content).str();
}
const std::string kSignature = box("jP  ", "\r\n\x87\n");
const std::string kImageHeader = box("ihdr", big().u32(48).u32(64).u16(3).u8(7).u8(7).u8(0).u8(1).str());

}  // namespace

TEST(Boxes, OfAFile) {
    const std::string type = box("ftyp", "jp2 " + hex("00000001") + "jp2 " + "jpx ");
    const std::string file = kSignature + type + box("jp2h", kImageHeader + box("colr", "abc")) +
                             box("jp2c", kSoc + kEoc + "rest");
    EXPECT_EQ(dump_of(file),
              "Fileformat:JP2\n"
              "00000000: jP   6a502020/12\n"
              "0000000c: ftyp 66747970/24\n"
              " Brand       'jp2 '\n Version     1\n Compability 'jp2 '\n Compability 'jpx '\n"
              "00000024: jp2h 6a703268/41\n"
              " 0000002c: ihdr 69686472/22\n"
              "  ysize       48\n  xsize       64\n  components  3\n  compression 7\n  compression JPEG2000\n"
              "  compression 0\n  ip          1\n"
              " 00000042: colr 636f6c72/11\n"
              " unknown box type \n"
              // A superbox's length counts its own header: the box behind it is listed inside, too.
              " 0000004d: jp2c 6a703263/16\n"
              "00000055: SOC/2 - Start of codestream\n"
              "00000057: EOC/2 - End of codestream\n"
              " - failure !!! EOC marker is not allowed at this position\n"
              " - no valid codestream data available anymore\n");
}

TEST(Boxes, LastAndDamaged) {
    const auto behind_signature = [](const std::string &content) {
        return lines_from(dump_of(kSignature + content), "0000000c");
    };
    EXPECT_EQ(behind_signature(big().u32(0).text("abcdxyz").str()),
              "0000000c: abcd 61626364/11\n unknown box type \n");
    EXPECT_EQ(behind_signature(big().u32(20).text("abcdxyz").str()),
              "0000000c: abcd 61626364/20\n unknown box type \nERROR during decoding\n");
    EXPECT_EQ(behind_signature(big().u32(7).text("abcdxyz").str()), "0000000c: abcd 61626364/7\n");
    EXPECT_EQ(behind_signature(box("ftyp", "jp2 " + hex("00000000"))),
              "0000000c: ftyp 66747970/16\n Brand       'jp2 '\n Version     0\n");
    EXPECT_EQ(behind_signature(box("jp2h", kImageHeader)).substr(0, 60),
              "0000000c: jp2h 6a703268/30\n 00000014: ihdr 69686472/22\n  ysi");
    EXPECT_EQ(
        behind_signature(box("ihdr", big().zeros(11).u8(9).zeros(2).str())).find("  compression 9/Unknown\n"),
        91U);
    std::string nested = box("jp2h", "");
    for (int i = 0; i < 100; i++) nested = box("jp2h", nested);
    EXPECT_NE(behind_signature(nested).find(std::string(64, ' ') + "0000020c: jp2h"), std::string::npos);
}
