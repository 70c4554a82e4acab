#include <gtest/gtest.h>

#include "support/bytes_of.h"
#include "support/command.h"

TEST(HexDump, RowsRangesAndOffsets) {
    Transcript transcript;
    const std::string content = "0123456789abcdef\x1F ~\x7F";
    const std::string second = "1f 20 7e 7f                                      : . ~.\n";
    SHOW(dump_of(content, "f", {"-hn"}));
    EXPECT_EQ(dump_of(content, "f", {"-h=1f"}), "00000010: " + second);
    SHOW(dump_of(content, "f", {"-h=12,1"}));
    EXPECT_EQ(dump_of(content, "f", {"-hn=10", "-d"}), second);  // hexadecimal wins over text
    SHOW(dump_of(content, "f", {"-h=10", "-h=10,1", "-h"}));
    for (const char *nothing : {"-h=20", "-h=-10", "-h=-1", "-h=0,-1", "-h=7fffffffffffffff",
                                "-h=0,-7fffffffffffffff", "-h=fffffffffffffffffff,1"}) {
        EXPECT_EQ(dump_of(content, "f", {nothing}), "") << nothing;
    }
    for (const char *all : {"-h=10,5", "-h=10,7ffffffffffffff0", "-h=10,7fffffffffffffff"})
        EXPECT_EQ(dump_of(content, "f", {all}), "00000010: " + second) << all;
    EXPECT_EQ(dump_of(content, "f", {"-hn=10,fffffffffffffffff"}), second);
    EXPECT_EQ(dump_of("", "f", {"-h"}), "");
}

TEST(HexDump, TheDefaultIs64KiB) {
    const std::string dump = dump_of(std::string(70000, 'x'), "f", {"-h"});
    EXPECT_EQ(lines_from(dump, "0000fff0: ").substr(0, 13), "0000fff0: 78 ");
    EXPECT_EQ(lines_from(dump, "00010000: "), "");
    EXPECT_EQ(lines_from(dump_of(std::string(70000, 'x'), "f", {"-h=fff5"}), "00011160: ", 1).substr(0, 13),
              "00011160: 78 ");
    // Rows stay whole over all steps of a long dump.
    const std::string row = dump_of(std::string(16, 'x'), "f", {"-hn"});
    const std::string rows = dump_of(std::string(600'000, 'x'), "f", {"-hn=0,927c0"});
    EXPECT_EQ(rows.size(), 600'000 / 16 * row.size());
    EXPECT_EQ(rows.substr(rows.size() - row.size()), row);
}

TEST(HexDump, OffsetsBeyond4GiB) {
    Transcript transcript;
    const Workplace place;
    place.write_sparse("f", 0x100000020, 0x100000010, "tail");
    SHOW(place.run({"-h=fffffff0,10", "f"}).out);
    SHOW(place.run({"-h=ffffffff,30", "f"}).out);
    EXPECT_EQ(place.run({"-h=fffffff0,11", "f"}).out.substr(0, 18), "        fffffff0: ");
}

TEST(StringSearch, RunsOfLettersAndDigits) {
    Transcript transcript;
    EXPECT_EQ(dump_of("abc12 xyz123\nHELLOWORLD", "f", {"-s"}), "xyz123\nHELLOWORLD\n");
    SHOW(
        dump_of("a_b_c@[`{/: 12345\xC3\xA9"
                "67890 six666_",
                "f", {"-s"}));
    EXPECT_EQ(dump_of("abcdef", "f", {"-s"}), "abcdef\n");
    EXPECT_EQ(dump_of("abcde", "f", {"-s"}), "");
    for (const char in : std::string("azAZ09"))
        EXPECT_EQ(dump_of(std::string("-abc") + in + "de-", "f", {"-s"}), std::string("abc") + in + "de\n");
    for (const char out : std::string("`{@[/:"))
        EXPECT_EQ(dump_of(std::string("-abc") + out + "de-", "f", {"-s"}), "") << out;
}

// Runs of every length at every place around the border of the blocks that the search reads.
TEST(StringSearch, RunsAcrossBlocks) {
    constexpr size_t kBlock = 64 * 1024;
    std::string expected;
    std::string content(3 * kBlock, '-');
    const auto run = [&](size_t at, size_t length) {
        for (size_t i = 0; i < length; i++) content[at + i] = static_cast<char>('a' + (at + i) % 26);
        if (length >= 6) expected += content.substr(at, length) + "\n";
    };
    for (size_t i = 0; i < 60; i++) run(100 + 23 * i, i % 12);
    run(kBlock - 3, 5);
    run(kBlock + 3, 6);
    run(kBlock + 10, kBlock - 5);  // through to the third block
    run(2 * kBlock + 7, 6);
    run(3 * kBlock - 8, 8);
    EXPECT_EQ(dump_of(content, "f", {"-s"}), expected);
    EXPECT_EQ(dump_of(std::string(600'000, 'q'), "f", {"-s"}), std::string(600'000, 'q') + "\n");
}

TEST(TextDump, Encodings) {
    Transcript transcript;
    EXPECT_EQ(dump_of("a\tb c\r\n\x01\x7F\x80\xE9", "a.txt"), "a\tb.c\n.\x7F..");
    EXPECT_EQ(dump_of(" !~\x7F\x80", "a.txt"), ".!~\x7F.");
    EXPECT_EQ(dump_of("a\rb\x01 \xE9", "a.txt", {"-u"}), "a\rb\x01 \xC3\xA9");
    const std::string little_text = little().u16(0xFEFF, 'A', ' ', 0xE9, '\r', '\n', 0x4E2D, 0x20AC).str();
    EXPECT_EQ(dump_of(little_text), "Fileformat: UTF-16 (LE)\nA..\n..");
    SHOW(dump_of(little_text, "f", {"-u"}));
    EXPECT_EQ(dump_of(std::string("\xFF\xFE"
                                  "A\0B",
                                  5)),
              "Fileformat: UTF-16 (LE)\nA");
    // The last character of each length in UTF-8 and the first of the next: U+007F, 0080, 07FF, 0800, FFFF,
    // 10000.
    const std::string edges = "\xEF\xBB\xBF\x7F\xC2\x80\xDF\xBF\xE0\xA0\x80\xEF\xBF\xBF\xF0\x90\x80\x80";
    EXPECT_EQ(dump_of(edges, "f", {"-u"}), "Fileformat: UTF-8\n" + edges);
    // Surrogates stay apart, and half a unit at the end is no character.
    SHOW(dump_of(big().u16(0xFEFF, 0xD83D, 0xDE00).u8(0).str(), "f", {"-u"}));
}

TEST(TextDump, DamagedUtf8) {
    Transcript transcript;
    const std::string mark = "\xEF\xBB\xBF";
    SHOW(dump_of(mark + "\xF0\x9F\x98\x80|\xC3\xA9|\xC3", "f", {"-d", "-u"}));
    SHOW(dump_of(mark + "\x80|\xFF|\xC3(|\xE2\x82", "f", {"-u"}));
    EXPECT_EQ(dump_of(mark + "\xC3\xA9\x80", "f"), "Fileformat: UTF-8\n.?");
}

TEST(TextDump, SizesAndXml) {
    EXPECT_EQ(dump_of(std::string(0x100000, 'x'), "a.txt"), std::string(0x100000, 'x'));
    EXPECT_EQ(dump_of(std::string(0x100001, 'x'), "a.txt"),
              "Max filesize set to 0x100000\n" + std::string(0x100000, 'x'));
    EXPECT_EQ(dump_of("<?xml?>"), "Fileformat:XML\n<?xml?>");
}

namespace {

ByteWriter font() {
    ByteWriter w = little();
    w.u16(0x300).u32(2000).text("(c) 1990", 60).u16(2, 10, 96, 97, 11, 1, 3);
    w.u8(1, 2, 255).u16(700).u8(0).u16(8, 16).u8(0x31).u16(7, 9);
    w.u8(65, 66, 46, 32).u16(40).u32(170, 180, 0xABCDEF01, 0x94).u8(0x77);
    w.u32(0xFFFFFFFE).u16(1, 65535, 3).u32(0x12345678).at(148);
    return w.u16(8).u32(0xA1B2C3D4).u16(9, 0x1234, 0x5678);
}

}  // namespace

TEST(FontDump, FieldsAndGlyphs) {
    Transcript transcript;
    const std::string dump = dump_of(font().at(170).text("Printer").u8(0).at(180).text("Helv").str());
    SHOW(dump);
}

TEST(FontDump, CutFontsAndOffsetsOutside) {
    Transcript transcript;
    const std::string cut = font().at(95).u8(65, 255).at(101).u32(0, 160).str();
    const std::string dump = dump_of(cut);
    SHOW(lines_from(dump, "65 "));
    EXPECT_EQ(lines_from(dump, "char   66"), "char   66 009a - 9 1234 : 5678\n");
    EXPECT_EQ(lines_from(dump_of(cut.substr(0, 155)), "char   66"), "char   66 009a - 9 0000 : 0000\n");
    SHOW(lines_from(dump_of(std::string("\0\3", 2)), "63 ", 2));
    EXPECT_EQ(lines_from(dump_of(font().at(95).u8(66, 65).str()), "char"), "");
}
