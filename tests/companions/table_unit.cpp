#include <gtest/gtest.h>

#include "companions/table/row.h"
#include "companions/table/sequence.h"
#include "companions/table/terminal.h"

namespace {

Row movie(const std::string &file) {
    Facts facts;
    facts.format = "MOV";
    facts.extent.present = 6200000000;
    Picture &picture = facts.picture();
    picture.width = 3840;
    picture.height = 2160;
    picture.bits = 10;
    picture.codec = "ProRes 422 HQ";
    picture.rate = {24000, 1001};
    picture.frames = 293;
    facts.lasts(293, picture.rate);
    facts.sounds.push_back({2, {48000, 1}, 24, "PCM", "", ""});
    facts.reel = "A001";
    return row_of(facts, file);
}

std::string table_of(size_t width, const std::vector<Row> &rows, const Selection &selection = {}) {
    std::string text;
    TerminalTable table(width, selection, [&](const std::string &part) { text += part; });
    for (const Row &row : rows) table.add(row);
    table.finish();
    return text;
}

TEST(TerminalTable, FitsItsWidth) {
    Row cut = movie("A001C003.mov");
    cut[Column::problem] = "cut: 3.1 of 6.2 GB\x1b";
    EXPECT_EQ(
        table_of(0, {movie("A001C001.mov"), cut}),
        "  FORMAT  SIZE         RATE  CODEC          BITS  DURATION     SOUND       REEL  FILE\n"
        "  MOV     3840x2160  23.976  ProRes 422 HQ    10  00:00:12:05  2ch 24/48k  A001  A001C001.mov\n"
        "! MOV     3840x2160  23.976  ProRes 422 HQ    10  00:00:12:05  2ch 24/48k  A001  A001C003.mov\n"
        "    cut: 3.1 of 6.2 GB\\x1b\n");
    const std::string name = "/Volumes/card/reel \u00e9\u00e9\u00e9/DCIM/A001C001_long_name.mov";
    for (const size_t width : {60U, 80U, 100U, 132U}) {
        const std::string text = table_of(width, {movie(name)});
        for (size_t at = 0; at < text.size(); at = text.find('\n', at) + 1) {
            size_t characters = 0;
            for (size_t i = at; text[i] != '\n'; i++) characters += (text[i] & 0xC0) != 0x80;
            EXPECT_LE(characters, width) << text;
        }
        EXPECT_NE(text.find("name.mov\n"), std::string::npos) << text;
    }
}

// A column that the first fifty rows did not need comes with a heading of its own.
TEST(TerminalTable, ColumnsOfLaterRows) {
    std::vector<Row> rows(51, movie("a"));
    for (Row &row : rows) row[Column::reel].clear();
    rows[50][Column::reel] = "B";
    const std::string text = table_of(0, rows);
    const size_t second = text.find("FORMAT", text.find("FORMAT") + 1);
    ASSERT_NE(second, std::string::npos);
    EXPECT_EQ(text.substr(0, second).find("REEL"), std::string::npos);
    EXPECT_NE(text.find("REEL", second), std::string::npos);
    EXPECT_EQ(std::count(text.begin(), text.end(), '\n'), 53);
}

TEST(Rows, PassFromProcessToProcess) {
    Row row = movie("a\nb");
    row.more = {{"gamma", "2.2"}, {"", ""}};
    row.fields = {{"x/y", "1"}, {"x/y", "2"}};
    const Row again = Row::unpacked(row.packed());
    for (const ColumnRow &column : table_columns()) EXPECT_EQ(again[column.column], row[column.column]);
    EXPECT_EQ(again.more, row.more);
    EXPECT_EQ(again.named("x/y") + again.named("gamma") + again.named("none"), "1; 22.2");
    EXPECT_TRUE(again.is_known);
    const std::string packed = row.packed();
    for (size_t n = 0; n < packed.size(); n++) Row::unpacked(packed.substr(0, n));
}

TEST(Rows, ProblemsInWords) {
    Facts facts;
    const auto problem = [&](uint64_t claimed, uint64_t present) {
        facts.cut(claimed, "the end");
        facts.extent.present = present;
        return problem_of(facts);
    };
    EXPECT_EQ(problem(6200000000, 3100000000), "cut: 3.1 of 6.2 GB, the end");
    EXPECT_EQ(problem(6200000000, 6199999999), "cut: 6,199,999,999 of 6,200,000,000 bytes, the end");
    EXPECT_EQ(problem(20000, 999), "cut: 999 bytes of 20 KB, the end");
    EXPECT_EQ(problem(0, 5), "cut: the end");
    facts.open("no footer");
    EXPECT_EQ(problem_of(facts), "open: no footer");
    facts.whole();
    EXPECT_EQ(problem_of(facts), "");
    EXPECT_EQ(size_text(1) + " " + size_text(9999) + " " + size_text(10000) + " " + size_text(999499999) +
                  " " + size_text(UINT64_MAX),
              "1 byte 9,999 bytes 10 KB 999 MB 18 EB");
    EXPECT_EQ(ranges_text({-2, -1, 0, 5, 7, 8}), "-2-0, 5, 7-8");
}

}  // namespace
