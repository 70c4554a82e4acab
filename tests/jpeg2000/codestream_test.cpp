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
    w.u16(0).u32(64, 48, 0, 0, 32, 24, 0, 0).u16(components);
    for (uint32_t i = 0; i < std::min(components, 3U); i++) w.u8(i == 1 ? 0x8B : 7, 1, 2);
    return marker("51", w.str());
}
std::string sot(uint32_t length, const std::string &header = "") {
    return marker("90", big().u16(3).u32(length).u8(0, 2).str()) + header;
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
    Transcript transcript;
    const std::string cod = marker("52", hex("07 02 0002 01 01 04 03 30 01 8877"));
    const std::string qcd = marker("5C", hex("40 48 50 50 58"));
    const std::string stream = kSoc + siz(3) + cod + qcd + sot(14 + 4) + kSod + "data" + kEoc;
    SHOW(dump_of(stream));
    ByteWriter size = big().u16(1).u32(2, 3, 4, 5, 6, 7, 8, 9).u16(1);
    SHOW(lines_from(dump_of(kSoc + marker("51", size.u8(10, 11, 12).str())), "00000002"));
}

TEST(Codestream, CodingStyles) {
    Transcript transcript;
    SHOW(lines_from(one(marker("52", hex("20 07 0001 00 00 1D FF 00 05 11 22 33"))), " Scod"));
    SHOW(lines_from(one(marker("53", hex("02 01 05 04 04 00 00"))), " data", 7));
    SHOW(lines_from(one(marker("53", hex("0102 06 05 04 04 00 00")), 300), " data", 5));
}

TEST(Codestream, NamesOfStyles) {
    Transcript transcript;
    std::string styles;
    for (unsigned i = 0; i < 7; i++) {
        const std::string modes = hex_digits(i ? 1U << (i - 1) : 0);
        styles += one(
            marker("52", hex(hex_digits(i) + hex_digits(i) + "0001 00 05 04 04" + modes + hex_digits(i))));
        styles +=
            one(marker("5F", hex("00 00 0002 06 03" + hex_digits(i) + "00 00 0002 06 03" + hex_digits(i))));
    }
    SHOW(styles);
}

TEST(Codestream, Quantization) {
    Transcript transcript;
    SHOW(one(marker("5C", hex("42 6F00 6EE0 0001 F800"))));
    EXPECT_EQ(one(marker("5C", hex("FF"))), " - guardbits           7\n - sQCD                ?/0xff\n");
    SHOW(lines_from(one(marker("5C", hex("00 08 08 08 08 08 08 08 08 08 08"))), " - value 2HL"));
    SHOW(one(marker("5D", hex("01 21 6F00"))));
    SHOW(one(marker("5D", hex("01 20 11 22"))));
}

TEST(Codestream, TilePartLengthsAndProgressions) {
    Transcript transcript;
    SHOW(one(marker("55", hex("01 60 0001 00000010 0002 00000020"))));
    SHOW(one(marker("55", hex("00 00 0007"))));
    SHOW(lines_from(one(marker("55", hex("00 10 01 0002 03"))), " - failure"));
    SHOW(lines_from(one(marker("55", hex("00 30 01 0002 03 04"))), " tilepart 1:"));
    const std::string progressions = hex("00 00 0002 06 03 01  01 02 0003 04 05 09");
    SHOW(one(marker("5F", progressions)));
    EXPECT_EQ(one(marker("5F", hex("00 00 0002 06 03 01"))), " - failure !!! POC marker wrong length\n");
    SHOW(one(marker("5F", hex("00 0102 0002 06 0304 04  00 0000 0000 00 0000 00")), 257));
}

TEST(Codestream, CommentsAndMarkersWithoutFields) {
    Transcript transcript;
    SHOW(one(marker("64", hex("0001") + "made\there")));
    EXPECT_EQ(one(marker("64", hex("0000 FF"))), " coding     binary Comment Data\n");
    std::string headers;
    for (unsigned code = 0x4E; code <= 0x94; code++) {
        const std::string lines = segments(marker(hex_digits(code), std::string(13, '\0')) + kEnd);
        headers += lines.substr(0, lines.find('\n') + 1);
    }
    SHOW(headers);
    SHOW(segments(hex("FF30")).substr(8));
}

// Every marker in the main header, in a tile-part header and in tile data.
TEST(Codestream, MarkersOutOfPlace) {
    Transcript transcript;
    const auto failure = [](const std::string &content) {
        const std::string out = segments(content);
        std::string lines;
        for (size_t at = out.find(" - failure"); at != std::string::npos;
             at = out.find(" - failure", at + 1)) {
            lines += out.substr(at, out.find('\n', at) + 1 - at);
        }
        return lines;
    };
    const std::string header = sot(200);
    const std::string data = sot(14, kSod);
    for (const char *code :
         {"52", "53", "55", "57", "58", "5C", "5D", "5E", "5F", "60", "61", "63", "64", "91"}) {
        const std::string segment = marker(code, std::string(11, '\0'));
        SHOW(code + ("\n" + failure(segment)) + failure(header + segment) + failure(data + segment));
    }
    for (const std::string &segment : {kSoc, siz(3), sot(100), kSod, hex("FF92"), kEoc}) {
        SHOW(failure(segment) + failure(header + segment) + failure(data + segment));
    }
    // The line of a packet shows its size and number.
    SHOW(lines_from(dump_of(kSoc + siz(3) + marker("91", hex("0009"))), "00000006", 2));
    // These say so before their fields.
    SHOW(lines_from(segments(data + marker("5C", hex("00"))), " - failure", 2));
    SHOW(lines_from(segments(data + marker("5F", "a")), " - failure", 2));
}

TEST(Codestream, TileParts) {
    Transcript transcript;
    // A length of 0 runs to the EOC marker at the end; a chance FF 90 in a comment is taken for the
    // tile-part's start.
    const std::string open = sot(0, kSod) + "0123456789" + kEoc;
    SHOW(lines_from(segments(open), "0000003f: SOD"));
    const std::string chance = marker("64", hex("0000 FF90 0000 0000 00000000"));
    SHOW(lines_from(segments(sot(500, chance + kSod) + "xx"), "0000004f: SOD", 2));
    SHOW(lines_from(segments(kSod + "xx"), "00000033: SOD"));
    SHOW(lines_from(segments(sot(12, kSod)), "0000003f: SOD"));  // no progress
    SHOW(lines_from(segments(sot(3, kSod)), "0000003f: SOD"));
}

TEST(Codestream, FatalComponents) {
    Transcript transcript;
    const Workplace place;
    place.write("a.j2k", kSoc + siz(3) + marker("53", hex("04 00 05 04 04 00 00")));
    const Outcome run = place.run({"a.j2k"});
    EXPECT_EQ(run.status, 1);
    SHOW(lines_from(run.out, "00000033"));
    place.write("b.j2k", kSoc + siz(3) + marker("5D", hex("03 00")));
    EXPECT_EQ(place.run({"b.j2k"}).status, 0);
}

namespace {

std::string box(const std::string &type, const std::string &content) {
    return big().u32(8 + content.size()).text(type).raw(content).str();
}
const std::string kSignature = box("jP  ", "\r\n\x87\n");
const std::string kImageHeader = box("ihdr", big().u32(48, 64).u16(3).u8(7, 7, 0, 1).str());

}  // namespace

TEST(Boxes, OfAFile) {
    Transcript transcript;
    const std::string type = box("ftyp", "jp2 " + hex("00000001") + "jp2 " + "jpx ");
    const std::string file = kSignature + type + box("jp2h", kImageHeader + box("colr", "abc")) +
                             box("jp2c", kSoc + kEoc + "rest");
    SHOW(dump_of(file));
    // A codestream that goes on to the end of the file.
    const std::string last = big().u32(0).text("jp2c").raw(kSoc + kEoc).str();
    SHOW(lines_from(dump_of(kSignature + box("jp2h", kImageHeader) + last), "  ip"));
}

TEST(Boxes, LastAndDamaged) {
    Transcript transcript;
    const auto behind_signature = [](const std::string &content) {
        return lines_from(dump_of(kSignature + content), "0000000c");
    };
    SHOW(behind_signature(big().u32(0).text("abcdxyz").str()));
    SHOW(behind_signature(big().u32(20).text("abcdxyz").str()));
    SHOW(behind_signature(big().u32(7).text("abcdxyz").str()));
    SHOW(behind_signature(big().u32(1).text("jp2c").u64(24).raw(kSoc).str()));
    SHOW(behind_signature(big().u32(0x80000000).text("ftyp").zeros(20).str()));
    SHOW(behind_signature(box("ftyp", "jp2 " + hex("00000000"))));
    SHOW(behind_signature(box("jp2h", kImageHeader)).substr(0, 60));
    SHOW(behind_signature(big().u32(100).text("jp2h").raw(kImageHeader).str()));
    SHOW(behind_signature(box("ihdr", hex("0A0B0C0D 0E0F1011 1213 14 09 15 16"))));
    std::string no_sot;  // the search for one goes over each byte once
    for (int i = 0; i < 50'000; i++) no_sot += box("jp2c", kSod);
    EXPECT_GT(behind_signature(no_sot).size(), 50'000U * 100);
    std::string nested = box("jp2h", "");
    for (int i = 0; i < 100; i++) nested = box("jp2h", nested);
    EXPECT_NE(behind_signature(nested).find(std::string(64, ' ') + "0000020c: jp2h"), std::string::npos);
}

// Both sides of the numbers that decide, and lists that the file cuts.
TEST(Codestream, EdgesOfFields) {
    const auto style = [](const std::string &digits) { return one(marker("52", hex(digits))); };
    EXPECT_EQ(lines_from(style("00 00 0001 00 00 1C 1D 00 05"), " codeblock", 2),
              " codeblock width       1073741824\n codeblock height      -2147483648\n");
    EXPECT_EQ(style("1F 00 0001 00 00 00 00 00 05").find("illegal"), std::string::npos);
    EXPECT_EQ(style("01 00 0001 00 01 00 00 00 05 11 11").find("failure"), std::string::npos);
    EXPECT_NE(style("01 00 0001 00 01 00 00 00 05 11 11 11").find("failure"), std::string::npos);
    EXPECT_NE(one(marker("53", hex("00 02 01 00 00 00 00"))).find("illegal"), std::string::npos);
    // Components have one byte up to 256 of them.
    EXPECT_EQ(lines_from(one(marker("53", hex("00 02 00 00 00 00 00")), 256), " data", 1),
              " data for component 0\n");
    EXPECT_EQ(lines_from(one(marker("53", hex("00 02 00 00 00 00 00")), 257), " data", 1),
              " data for component 2\n");
    EXPECT_EQ(lines_from(one(marker("5F", hex("00 04 0002 06 07 01 00")), 256), " - comp", 1),
              " - comp  4 - 7\n");
    EXPECT_NE(lines_from(one(marker("55", hex("00 10 01"))), " tilepart 1:"), "");
    const auto left = [](const std::string &last, size_t cut, const std::string &text) {
        const std::string content = kSoc + siz(3) + last;
        const std::string dump = dump_of(content.substr(0, content.size() - cut));
        size_t n = 0;
        for (size_t at = 0; (at = dump.find(text, at)) != std::string::npos; at++) n++;
        return n;
    };
    const std::string exponents = marker("5C", hex("00 08 08"));
    const std::string steps = marker("5C", hex("42 6F00 6EE0"));
    for (const size_t cut : {0, 1}) {
        EXPECT_EQ(left(exponents, cut, " - value"), 2 - cut);
        EXPECT_EQ(left(steps, 2 * cut, " - value"), 2 - cut);
        EXPECT_EQ(left(exponents, cut, "ERROR"), cut);
    }
    EXPECT_EQ(left(steps, 1, " - value"), 2U);
    EXPECT_EQ(left(marker("5C", hex("00 08")), 0, " - value"), 1U);
    EXPECT_EQ(left(marker("64", hex("0001") + "made"), 2, "'ma'"), 1U);
    EXPECT_EQ(left("\xFF", 0, "invalid marker code 00"), 1U);
    EXPECT_EQ(left("\xFE", 0, "Expected to get 0xff, got fe"), 1U);
}

TEST(Boxes, EdgesOfLengths) {
    const std::string signature = hex("0000000C 6A502020 0D0A870A");
    const auto count = [&](const std::string &boxes, const std::string &text) {
        const std::string dump = dump_of(signature + boxes);
        size_t n = 0;
        for (size_t at = 0; (at = dump.find(text, at)) != std::string::npos; at++) n++;
        return n;
    };
    EXPECT_EQ(count(std::string(1, '\0'), "unknown box"), 1U);
    EXPECT_EQ(count(hex("00000008 61626364 00000008 61626364"), "unknown box"), 2U);
    EXPECT_EQ(count(hex("00000009 61626364 00"), "ERROR"), 0U);
    EXPECT_EQ(count(hex("00000009 61626364"), "ERROR"), 1U);
    const std::string type = hex("00000018 66747970 61626364 00000000 61626364");
    EXPECT_EQ(count(type, " Compability"), 1U);
    EXPECT_EQ(count(type + "x", " Compability"), 2U);
    std::string nested;
    for (int i = 0; i < 70; i++) nested += hex("00000000 6A703268");
    EXPECT_EQ(count(nested, "jp2h"), 64U + 1);  // the last one without what is in it
}

// A superbox lists what begins before its length, counted from its first child; its last child may take the
// rest.
TEST(Boxes, EdgesOfSuperboxes) {
    const auto dump = [](const std::string &boxes) { return dump_of(kSignature + boxes); };
    const auto superbox = [](uint32_t length) { return big().u32(length).text("jp2h").str(); };
    const std::string child = box("abcd", "");
    const std::string rest = big().u32(0).text("rest").zeros(20).str();
    struct Case {
        std::string boxes;
        const char *line;  // of the last box
    };
    for (const Case &c : std::initializer_list<Case>{
             {superbox(16) + child + child + child, "\n00000024: abcd"},
             {superbox(17) + child + child + child, "\n 00000024: abcd"},
             {superbox(100) + child + "x", "\n 0000001c: "},
             {superbox(17) + child + rest, "\n 0000001c: rest 72657374/9\n"},
             {superbox(16) + child + rest, "\n 0000001c: rest 72657374/28\n"},
             {superbox(16) + box("abcd", "1234") + hex("00000007 61626364"), "\n00000020: abcd 61626364/7\n"},
             {box("jp2c", kSoc + "\xFF"), "invalid marker code 00"}}) {
        EXPECT_NE(dump(c.boxes).find(c.line), std::string::npos) << c.line << dump(c.boxes);
    }
    EXPECT_EQ(dump(box("jp2c", kSoc) + hex("FF520000 61626364")).find("COD"), std::string::npos);
}

TEST(Codestream, BehindAPrefix) {
    const std::string prefix = hex("FFFFFFF0") + std::string(12, '\0');
    EXPECT_NE(dump_of(prefix + kSoc + siz(3)).find("\n00000010: SOC/2"), std::string::npos);
}

TEST(Codestream, EdgesOfTileParts) {
    EXPECT_NE(segments(sot(0, kSod) + "x").find("Expected to get 0xff, got 93"), std::string::npos);
    const std::string comment = marker("64", hex("0001 FF"));  // a tile-part's length leads to its last byte
    EXPECT_EQ(segments(sot(18, comment + kSod)).find("invalid marker"), std::string::npos);
    // The start of a tile-part is looked for in the 16 MiB before its data.
    for (const uint32_t distance : {(1U << 24) - 1, 1U << 24}) {
        const Workplace place;
        const std::string head = kSignature + big().u32(distance + 8 - 8).text("abcd").raw(hex("FF90")).str();
        const std::string codestream = box("jp2c", kSod);
        const uint64_t at = kSignature.size() + distance;
        place.write_sparse("a.jp2", at + codestream.size(), 0, head);
        place.write_sparse("a.jp2", at + codestream.size(), at, codestream);
        EXPECT_EQ(place.run({"a.jp2"}).out.find("found no SOT") == std::string::npos, distance < 1U << 24);
    }
}
