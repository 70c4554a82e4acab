#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <set>

#include "companions/shown_width.h"
#include "companions/table/names.h"
#include "companions/table/odd.h"
#include "companions/table/output.h"
#include "companions/table/row.h"
#include "companions/table/sequence.h"
#include "companions/table/terminal.h"
#include "main/facts.h"
#include "support/command.h"

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

// Whatever the width nothing is wider: names in two columns a character, problems, remarks.
TEST(TerminalTable, NoLineIsWider) {
    Row row = movie("/card/\u65e5\u672c\u8a9e\u306e\u9577\u3044\u540d\u524d\u3067\u3059/\u65e5.mov");
    row[Column::problem] = "cut: 3.1 of 6.2 GB, data of tracks 1 and 2";
    for (const size_t width : {20U, 40U, 80U}) {
        std::string text;
        TerminalTable table(width, {}, [&](const std::string &part) { text += part; });
        table.add(row, {"CODEC ProRes 422 LT (1 of 47; others ProRes 422 HQ)"});
        table.finish();
        EXPECT_NE(text.find("\u65e5.mov\n"), std::string::npos) << text;
        for (size_t at = 0; at < text.size(); at = text.find('\n', at) + 1)
            EXPECT_LE(shown_width(text.substr(at, text.find('\n', at) - at)), width) << text;
    }
}

// A later value may be longer than its column: it is whole where there is room.
TEST(TerminalTable, LongValuesOfLaterRows) {
    std::vector<Row> rows(52, movie("a"));
    for (Row &row : rows) row[Column::codec] = row[Column::reel] = "";
    for (size_t i = 0; i < 50; i++) rows[i][Column::codec] = "RGB";
    rows[50][Column::codec] = rows[51][Column::codec] = "ProRes 422 HQ";
    rows[51][Column::reel] = "B";
    rows[50][Column::file] = "directory/of/a/card/A001C001.mov";
    for (const size_t width : {0U, 120U}) {
        const std::string text = table_of(width, rows);
        EXPECT_NE(text.find("23.976  ProRes 422 HQ    10"), std::string::npos) << text;
        EXPECT_NE(text.find("RATE  CODEC          BITS"), std::string::npos) << text;
    }
    const std::string narrow = table_of(66, rows);
    EXPECT_NE(narrow.find("23.976  ProR\u2026"), std::string::npos) << narrow;
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

// What was asked for stays, cut where it must be.
TEST(TerminalTable, ColumnsThatWereAskedFor) {
    Row row = movie("/Volumes/card/A001C001.mov");
    row[Column::writer] = "A writer of a long name indeed";
    const Selection selection{{"writer", "codec", "file", "duration"}, {"reel"}};
    const std::string text = table_of(50, {row}, selection);
    for (const char *title : {"WRITER", "CODEC", "FILE", "DURATION", "REEL", "\u2026", "mov"})
        EXPECT_NE(text.find(title), std::string::npos) << text;
    const std::string narrow = table_of(10, {row}, {{"writer", "codec", "duration"}, {}});
    for (const char *title : {"WRITER", "CODEC", "DURATION", "FILE", "A001C001.mov"})
        EXPECT_NE(narrow.find(title), std::string::npos) << narrow;
}

TEST(Rows, DurationsAsTheyAreCounted) {
    const auto text = [](int64_t frames, Ratio rate, bool constant, const char *drop) {
        Facts facts;
        facts.picture().rate = rate;
        facts.picture().constant_rate = constant;
        facts.lasts(frames, rate);
        Row row = row_of(facts, "");
        row[Column::timecode_drop] = drop;
        row[Column::timecode_base] = "30";
        return duration_text(row);
    };
    const Ratio ntsc{30000, 1001};
    EXPECT_EQ(text(107892, ntsc, true, "true"), "01:00:00;00");
    EXPECT_EQ(text(107892, ntsc, true, "false"), "00:59:56:12");
    EXPECT_EQ(text(50, {25, 2}, true, ""), "00:00:04.000");
    EXPECT_EQ(text(50, {25, 1}, false, ""), "00:00:02.000");
    EXPECT_EQ(text(25, {120000, 1001}, true, ""), "00:00:00:25");
}

TEST(Rows, SoundsThatDiffer) {
    Facts facts;
    facts.sounds = {{2, {48000, 1}, 24, "PCM", "", "", 96000}, {1, {44100, 1}, 16, "PCM", "", "", 5}};
    const Row row = row_of(facts, "");
    EXPECT_EQ(row[Column::samples] + " / " + row[Column::audio_bits] + " / " + row[Column::sample_rate],
              "96000; 5 / 24; 16 / 48000; 44100");
    EXPECT_EQ(sound_text(row), "3ch 24+16/48+44.1k");
    EXPECT_EQ(row[Column::audio_bit_rate], "2304000");
    EXPECT_NE(json_object(row, {}).find("\"samples\": \"96000; 5\""), std::string::npos);
}

// Further values of files have names that --columns knows and the manual page has.
TEST(Rows, NamesOfFurtherValues) {
    std::string manual = content_of(std::string(KELDUMP_SAMPLES) + "/../doc/keldump-table.1.in");
    std::ranges::replace(manual, '\n', ' ');
    std::ranges::replace(manual, ';', ',');
    const auto columns = table_columns();
    std::set<std::string> names;
    for (const auto &file : std::filesystem::recursive_directory_iterator(KELDUMP_SAMPLES)) {
        if (!file.is_regular_file()) continue;
        for (const auto &[name, value] : facts(file.path().c_str()).more) names.insert(name);
    }
    EXPECT_GT(names.size(), 20U);
    for (const std::string &name : names) {
        EXPECT_TRUE(is_table_name(name)) << name;
        const bool is_column = std::ranges::find(columns, name, &ColumnRow::name) != columns.end();
        EXPECT_TRUE(is_column || manual.find(" " + name + ",") != std::string::npos) << name;
    }
    EXPECT_EQ(table_name(" Audio Tracks"), "audio_tracks");
    EXPECT_EQ(table_name("Edit lists"), "edit lists");
    EXPECT_EQ(table_name("UMID") + table_name("Flavour"), "UMIDFlavour");
}

TEST(Odd, VotesOfOneKind) {
    const auto with = [](const char *format, const char *rate, bool is_picture) {
        Row row;
        row.is_known = true;
        row[Column::format] = format;
        row[Column::frame_rate] = rate;
        if (is_picture) row[Column::width] = row[Column::duration] = "1";
        return row;
    };
    const auto remarks = [](const std::vector<Row> &rows) {
        std::string text;
        for (const OddRow &odd : find_odd(rows).rows) {
            for (const std::string &remark : odd.remarks) text += remark + "\n";
        }
        return text;
    };
    const Row movie = with("MOV", "24", true);
    const Row side = with("XML", "", false);
    EXPECT_EQ(remarks({movie, side, movie, side, side, side}), "");
    EXPECT_EQ(remarks({movie, side, movie, with("MOV", "25", true), side, side}),
              "RATE 25 (1 of 3; others 24)\n");
    EXPECT_EQ(
        remarks({movie, with("MOV", "25", true), with("MOV", "30", true)}),
        "RATE 24 (1 of 3; no majority)\nRATE 25 (1 of 3; no majority)\nRATE 30 (1 of 3; no majority)\n");
    // What was asked for is compared, too.
    std::vector<Row> rows(3, movie);
    rows[1].fields = {{"film/type", "53"}, {"film/type", "24"}};
    EXPECT_TRUE(find_odd(rows).rows.empty());
    const Oddities odd = find_odd(rows, {"film/type"});
    ASSERT_EQ(odd.rows.size(), 1U);
    EXPECT_EQ(odd.titles, std::vector<std::string>{"FILM/TYPE"});
    EXPECT_EQ(odd.rows[0].remarks[0], "FILM/TYPE 53; 24 (1 of 3; others none)");
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
