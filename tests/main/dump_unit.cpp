// Dumps as they are heard, several in one process.
#include "main/dump.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <map>
#include <random>

#include "support/bytes_of.h"
#include "support/command.h"

namespace fs = std::filesystem;

namespace {

// The text of a dump, and how many lines it has.
struct Heard : Listener {
    std::string text;
    size_t lines = 0;
    bool literal_holds_line_feed = false;

    void line(const Line &line) override {
        text += line.text;
        if (line.ends) text += '\n';
        lines += !line.goes_on;
        for (const Piece &piece : line.pieces) {
            literal_holds_line_feed |=
                piece.kind == Piece::literal &&
                line.text.substr(piece.start, piece.size).find('\n') != std::string_view::npos;
        }
    }
};

Heard hear(const std::string &path, const DumpOptions &options = {}) {
    Heard heard;
    dump(path.c_str(), options, &heard);
    return heard;
}

bool is_in_word(const std::string &text, size_t at) {
    const std::string around = text.substr(at < 3 ? 0 : at - 3, 7);
    return std::ranges::all_of(around, [](unsigned char c) { return std::isalpha(c) || c == ' '; });
}

std::vector<fs::path> samples() {
    std::vector<fs::path> files;
    for (const auto &entry : fs::recursive_directory_iterator(KELDUMP_SAMPLES)) {
        const std::string extension = entry.path().extension();
        if (entry.is_regular_file() && extension != ".txt" && extension != ".sh") files.push_back(entry);
    }
    std::ranges::sort(files);
    return files;
}

}  // namespace

// What one dump learns does not reach the next, in whatever order, with damaged files between.
TEST(Dump, TwoInOneProcessAreLikeTwoProcesses) {
    std::vector<fs::path> files = samples();
    const Workplace place;
    place.write("cut.mxf", content_of(std::string(KELDUMP_SAMPLES) + "/mxf/op1a-mpeg2.mxf").substr(0, 3000));
    std::map<fs::path, std::string> alone;
    for (const fs::path &file : files) alone[file] = place.run({file}).out;
    for (const bool backwards : {false, true}) {
        if (backwards) std::ranges::reverse(files);
        for (const fs::path &file : files) {
            EXPECT_EQ(hear(file).text, alone[file]) << file;
            hear(place.path("cut.mxf"));
        }
    }
}

// A range is one run: the names of one file's tags and sets serve the next one.
TEST(Dump, ARangeKeepsWhatItLearnt) {
    const Workplace place;
    const std::string whole = content_of(std::string(KELDUMP_SAMPLES) + "/mxf/op1a-mpeg2.mxf");
    place.write("a0", whole);
    place.write("a1", whole.substr(0, 0x200) + whole.substr(0xA00));  // without its primer pack
    const std::string alone = place.run({"a1"}).out;
    const std::string first = place.run({"a0"}).out;
    const std::string range = place.run({"a%d", "0", "1"}).out;
    EXPECT_EQ(range.substr(0, first.size()), first);
    EXPECT_NE(range.substr(first.size()), alone);
    EXPECT_NE(range.find("  Tag 8000/4 Bit Rate", first.size()), std::string::npos);
    EXPECT_NE(alone.find("  Tag 8000/4 unknown"), std::string::npos);
}

// Only text of ours ends a line: a line feed in the file is worth what any other byte is.
TEST(Dump, ALineFeedOfTheFileEndsNoLine) {
    const Workplace place;
    std::mt19937 random(7);
    for (const fs::path &file : samples()) {
        const std::string content = content_of(file);
        if (content.size() > 100'000) continue;
        const std::string name = "copy" + file.extension().string();
        for (int i = 0; i < 200; i++) {
            // In a text: numbers of the file would lead elsewhere.
            const size_t at = random() % std::min<size_t>(content.size(), i % 2 ? 2048 : content.size());
            if (!is_in_word(content, at)) continue;
            std::string changed = content;
            changed[at] = '\n';
            place.write(name, changed);
            const Heard feed = hear(place.path(name));
            changed[at] = '\v';
            place.write(name, changed);
            const Heard other = hear(place.path(name));
            const bool is_text =
                file.extension() == ".txt" || file.string().find("/text/") != std::string::npos;
            if (!is_text) {
                EXPECT_EQ(feed.lines, other.lines) << file << " at " << at;
            }
            EXPECT_FALSE(feed.literal_holds_line_feed);
        }
    }
}

TEST(Dump, Outcomes) {
    const Workplace place;
    place.write("f", "no format");
    Heard heard;
    EXPECT_EQ(dump(place.path("f").c_str(), {}, &heard).end, DumpOutcome::unknown);
    EXPECT_EQ(dump(place.path("none").c_str(), {}, &heard).end, DumpOutcome::unopened);
    place.write("clip%s.ppm", "P6\n4 3\n");
    EXPECT_EQ(hear(place.path("clip%s.ppm")).text, "Fileformat:PPM - Portable Pixmap\n xsize 4\n ysize 3\n");
}
