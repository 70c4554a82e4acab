#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cstdlib>
#include <filesystem>

#include "companions/safe_text.h"
#include "support/bytes_of.h"
#include "support/command.h"

namespace {

const std::string kBitmap = little().text("BM").zeros(12).u32(40, 8, 6).u16(1, 24).zeros(24).str();

Outcome all(const Workplace &place, const std::vector<std::string> &arguments) {
    return place.run(arguments, "keldump-all");
}

// Dumps of many sizes, some of them longer than what is kept ahead.
TEST(KeldumpAll, DumpsAreWholeAndInOrder) {
    const Workplace place;
    std::string expected;
    for (size_t i = 1; i <= 15; i++) {
        const std::string name = "./d/f" + std::to_string(i) + ".txt";
        if (i == 1) mkdir(place.path("d").c_str(), 0700);
        place.write(name, "\xEF\xBB\xBF" + std::string(i % 7 == 0 ? 300000 * i / 7 : i, 'x') + "\n");
        expected += "==> " + name + " <==\n" + place.run({"-h=0,60000", name}).out + "\n";
    }
    for (const char *jobs : {"-j1", "-j4"}) {
        const Outcome run = all(place, {jobs, "-h=0,60000", "./d"});
        EXPECT_TRUE(run.out == expected) << jobs;
        EXPECT_EQ(run.status, 0);
        EXPECT_EQ(run.err, "");
    }
}

TEST(KeldumpAll, NamesAreSafe) {
    const Workplace place;
    const std::vector<std::string> names = {"-v",   "verify",        "a b.bmp",   "100%s.bmp",
                                            "%n%d", "q\"'$(id).bmp", "line\nfeed"};
    std::string expected;
    for (const std::string &name : names) {
        place.write(name, kBitmap);
        expected += "==> " + safe_name(name) + " <==\n" + dump_of(kBitmap) + "\n";
    }
    std::vector<std::string> arguments = names;
    arguments.insert(arguments.begin(), "--");
    const Outcome run = all(place, arguments);
    EXPECT_EQ(run.out, expected);
    EXPECT_EQ(run.status, 0);
}

TEST(KeldumpAll, MoviesAreKnownByWhatIsInThem) {
    const Workplace place;
    const std::string movie = big().u32(8).text("free").str();
    for (const char *name : {"a.mp4", "b.M4V", "noname", "d%s.3gp"}) {
        place.write(name, movie);
        EXPECT_EQ(all(place, {name}).out,
                  "==> " + std::string(name) + " <==\n" + dump_of(movie, "a.mov") + "\n");
    }
}

TEST(KeldumpAll, ControlCharactersDoNotPass) {
    const Workplace place;
    const std::string text =
        "\xEF\xBB\xBF"
        "a\x1b[31m\x07\xC2\x9B\x7F\r\rb\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80\n";
    place.write("t.txt", text);
    const std::string raw = place.run({"-u", "t.txt"}).out;
    const Outcome run = all(place, {"-u", "t.txt"});
    for (const char c : run.out) EXPECT_TRUE(static_cast<uint8_t>(c) >= 0x20 || c == '\n') << run.out;
    EXPECT_EQ(all(place, {"--raw", "-u", "t.txt"}).out, "==> t.txt <==\n" + raw + "\n");
    EXPECT_EQ(safe_name("a\u202Eb\u2066c\u2028d\u200Ee\u061Cf\u200Dg\u2060"),
              "a\\xe2\\x80\\xaeb\\xe2\\x81\\xa6c\\xe2\\x80\\xa8d\\xe2\\x80\\x8ee\\xd8\\x9cf\u200Dg\u2060");
}

TEST(KeldumpAll, NoDumpForgesAHeading) {
    const Workplace place;
    place.write("t.wav", little()
                             .text("RIFF")
                             .u32(68)
                             .text("WAVEfmt ")
                             .u32(16)
                             .u16(1, 1)
                             .u32(48000, 96000)
                             .u16(2, 16)
                             .text("iXML")
                             .u32(32)
                             .text("a\n==> b.dpx <==\n==>\n ==> c\n==>", 32)
                             .str());
    const std::string out = all(place, {"t.wav"}).out;
    EXPECT_EQ(lines_from(out, "\\x3d", 4), "\\x3d=> b.dpx <==\n==>\n ==> c\n==>'\n") << out;
}

// The others' descriptors are not taken for those that were closed.
TEST(KeldumpAll, ClosedDescriptors) {
    const Workplace place;
    place.write("x.bmp", kBitmap);
    const std::string command =
        "'" + command_path("keldump-all") + "' '" + place.path("x.bmp") + "' '" + place.path("none") + "'";
    EXPECT_EQ(system((command + " <&- 2>&- > '" + place.path("out") + "'").c_str()), 1 << 8);
    EXPECT_EQ(lines_from(place.read("out"), "Fileformat", 9).substr(0, 14), "Fileformat:BMP");
    EXPECT_EQ(system((command + " >&- 2> '" + place.path("err") + "'").c_str()), 2 << 8);
    EXPECT_EQ(place.read("err"), "keldump-all: cannot write: Bad file descriptor\n");
}

TEST(KeldumpAll, FilesWithoutDump) {
    const Workplace place;
    mkdir(place.path("d").c_str(), 0700);
    mkfifo(place.path("d/pipe").c_str(), 0600);
    std::filesystem::create_symlink(".", place.path("d/loop"));
    std::filesystem::create_symlink("missing", place.path("d/nowhere"));
    place.write("d/.hidden.bmp", kBitmap);
    place.write("d/odd\x1b", "?!..");
    place.write("d/x.bmp", kBitmap);
    const Outcome run = all(place, {"d", "d/pipe"});
    EXPECT_EQ(
        run.out,
        "==> d/nowhere <==\nNo such file or directory\n\n==> d/odd\\x1b <==\nunknown format, 3f 21 2e 2e\n\n"
        "==> d/x.bmp <==\n" +
            dump_of(kBitmap) + "\n");
    EXPECT_EQ(lines_from(run.err, "keldump-all: d/pipe", 1), "keldump-all: d/pipe: not a regular file\n");
    EXPECT_EQ(lines_from(run.err, "keldump-all: d/odd", 1),
              "keldump-all: d/odd\\x1b: unknown format, 3f 21 2e 2e\n");
    EXPECT_EQ(run.status, 1);
}

TEST(KeldumpAll, Usage) {
    const Workplace place;
    place.write("a", kBitmap);
    for (const std::vector<std::string> &wrong : {std::vector<std::string>{},
                                                  {"-j"},
                                                  {"-j0", "a"},
                                                  {"-j", "x", "a"},
                                                  {"-ms", "a"},
                                                  {"-mq", "a"},
                                                  {"-x", "a"},
                                                  {"--rough", "a"}}) {
        const Outcome run = all(place, wrong);
        EXPECT_EQ(run.status, 2);
        EXPECT_EQ(run.out, "");
        EXPECT_NE(run.err.find("usage: keldump-all"), std::string::npos);
    }
    EXPECT_TRUE(all(place, {"--help"}).out.starts_with("usage: keldump-all"));
    EXPECT_EQ(all(place, {"--version"}).out, "keldump-all " KELDUMP_VERSION "\n");
}

}  // namespace
