#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <thread>

#include "support/bytes_of.h"
#include "support/command.h"

namespace {

std::string first_line(const std::string &content, const std::string &name = "file.bin") {
    const std::string dump = dump_of(content, name);
    return dump.substr(0, dump.find('\n'));
}

}  // namespace

TEST(Dispatch, FormatsThatAreOnlyNamed) {
    EXPECT_EQ(dump_of("\xFF\xFB\x90\x00" + std::string(20, '\0')), "Fileformat:MP3\n");
    EXPECT_EQ(dump_of(std::string("\xFF\xFF\x00\x00", 4)), "Fileformat:MP3\n");
    EXPECT_EQ(dump_of("\xFF\xF0"), "Fileformat:MP3\n");
    EXPECT_EQ(dump_of("{\\rtf1"), "Fileformat:RTF - Rich Text Format\n");
    EXPECT_EQ(dump_of("%PDF-1.4"), "Fileformat:PDF\n");
    EXPECT_EQ(dump_of("PK\x03\x04"), "Fileformat:ZIP\n");
    EXPECT_EQ(dump_of("GIF89a"), "Fileformat:GIF\n");
    // A GIF stays one even with the sync bytes of a transport stream.
    EXPECT_EQ(dump_of(big().text("GIF89a").at(188).u8(0x47).at(376).u8(0x47).at(564).u8(0x47).str()),
              "Fileformat:GIF\n");
}

// Every magic number, and each with its last byte changed.
TEST(Dispatch, MagicNumbers) {
    Transcript transcript;
    std::istringstream magics(
        "000001B3 B3010000 000001BA BA010000 762F3101 01312F76 060E2B34 41525249 49525241 53445058 58504453 "
        "802A5FD7 D75F2A80 0003 424D 01DA 464F524D 52494646 52463634 53545245414D4552 4949 4D4D "
        "0000000C6A5020200D0A870A 0000111152454431 0000111152454432 0000000001222222333333334444E1E2 "
        "FF4FFF51 FFFFFFF0 FFD8 FFFE FFF0 7B5C727466 FEFF EFBBBF 255044462D 474946 89504E470D0A1A0A "
        "8A4D4E470D0A1A0A 50310A 50360A 3C3F786D6C 5380F63440400000 504B");
    std::string names;
    for (std::string magic; magics >> magic;) {
        std::string bytes = hex(magic);
        names += magic + " " + first_line(bytes);
        bytes.back() = static_cast<char>(bytes.back() ^ 0x80);
        names += " | " + first_line(bytes) + "\n";
    }
    SHOW(names);
}

TEST(Dispatch, UnknownFiles) {
    EXPECT_EQ(dump_of(""), "Unknown fileformat of file 'file.bin' 00 00 00 00\n");
    EXPECT_EQ(dump_of("ab"), "Unknown fileformat of file 'file.bin' 61 62 00 00\n");
    for (const char *near :
         {"IM\x2A", "MX", "{\\rt", "%PDF", "GIX", "P0\n", "P7\n", "P1 ", "<?xm", "\xEF\xBB", "\xFE\xFE",
          "\xFF\x4F\xFF\x50", "\x89PNG\r\n", "S\x80\xF6\x34\x40\x41", "RIFX", "\x00\x01"}) {
        EXPECT_EQ(first_line(near).substr(0, 29), "Unknown fileformat of file 'f") << near;
    }
    // The signature box of JP2 cut short, and executables without a PE header in the bytes read.
    EXPECT_EQ(first_line(std::string("\0\0\0\x0CjP  \r\n", 10)).substr(0, 7), "Unknown");
    for (const size_t at : {0x4000 - 4, 0x4000 - 3}) {
        const std::string dump = first_line(little().text("MZ").at(60).u32(at).at(at).text("PE", 4).str());
        EXPECT_EQ(dump.starts_with("Unknown"), at > 0x4000 - 4) << dump;
    }
    EXPECT_EQ(first_line(little().text("MZ").at(60).u32(0xFFFFFFFE).str()).substr(0, 7), "Unknown");
}

TEST(Dispatch, TheExtensionDecidesWhenTheMagicDoesNot) {
    EXPECT_EQ(dump_of("plain", "notes.TXT"), "plain");
    EXPECT_EQ(dump_of("plain", "list.Vamc"), "plain");
    EXPECT_EQ(dump_of("MZ", "old.txt"), "MZ");
    EXPECT_EQ(first_line("plain", "plain.text").substr(0, 7), "Unknown");
    EXPECT_EQ(dump_of("PK", "a.scc"), "PK");
    EXPECT_EQ(dump_of("\xEF\xBB\xBFplain", "notes.txt"), "Fileformat: UTF-8\nplain");
    EXPECT_EQ(dump_of("%PDF-", "notes.txt"), "Fileformat:PDF\n");
}

TEST(Dispatch, FilesThatCannotBeReadLikeFiles) {
    const Workplace place;
    mkdir(place.path("folder").c_str(), 0700);
    EXPECT_EQ(place.run({"folder"}).out, "Unknown fileformat of file 'folder' 00 00 00 00\n");
    EXPECT_EQ(place.run({"-h", "folder"}).out, "");
    EXPECT_EQ(place.run({"-s", "folder"}).out, "");
    EXPECT_EQ(place.run({"-d", "/dev/null"}).out, "");
    EXPECT_EQ(place.run({"/dev/null"}).out, "Unknown fileformat of file '/dev/null' 00 00 00 00\n");
}

namespace {

// A run on a pipe of a given name and content.
Outcome through_pipe(const std::string &name, const std::string &content,
                     std::vector<std::string> switches = {}) {
    const Workplace place;
    mkfifo(place.path(name).c_str(), 0600);
    std::thread writer([&] { std::ofstream(place.path(name)) << content; });
    switches.push_back(name);
    Outcome run = place.run(switches);
    writer.join();
    EXPECT_EQ(run.err + std::to_string(run.status), "0");
    return run;
}

}  // namespace

TEST(Pipes, ShowWhatFilesShow) {
    for (const auto &entry : std::filesystem::recursive_directory_iterator(KELDUMP_SAMPLES)) {
        const std::string extension = entry.path().extension();
        if (!entry.is_regular_file() || extension == ".txt" || extension == ".sh") continue;
        const std::string content = content_of(entry.path());
        const std::string name = entry.path().filename();
        EXPECT_EQ(through_pipe(name, content, {"-v", "-t"}).out, dump_of(content, name, {"-v", "-t"}))
            << name;
    }
    const std::string text(70000, 'x');
    for (const char *view : {"-h", "-hn=1234", "-s", "-d"}) {
        EXPECT_EQ(through_pipe("f", text, {view}).out, dump_of(text, "f", {view})) << view;
    }
}

TEST(Pipes, LongOnesMoveToTheDisk) {
    const uint64_t size = 257 << 20;
    EXPECT_EQ(through_pipe("f", std::string(size, 'x'), {"-h=100fffff,20"}).out,
              "100ffff0: 78 78 78 78 78 78 78 78 78 78 78 78 78 78 78 78  : xxxxxxxxxxxxxxxx\n");
}

TEST(Pipes, StandardInput) {
    const Workplace place;
    place.write("clip.mov", big().u32(8).text("free").str());
    const auto shell = [&](const std::string &command) {
        const std::string script = "cd '" + place.path("") + "' && " + command + " >out";
        EXPECT_EQ(std::system(("k=" + command_path() + "; " + script).c_str()), 0) << command;
        return place.read("out");
    };
    const std::string rows = place.run({"-h", "clip.mov"}).out;
    EXPECT_EQ(shell("cat clip.mov | $k -h /dev/stdin"), rows);
    EXPECT_EQ(shell("$k -h /dev/stdin <clip.mov"), rows);
    EXPECT_EQ(shell("$k -h /dev/fd/3 3<clip.mov"), rows);
    EXPECT_EQ(shell("mkfifo p.mov; cat clip.mov >p.mov & $k p.mov"), place.run({"clip.mov"}).out);
    // Every frame of a range is read anew.
    EXPECT_EQ(shell("for f in 1 2; do mkfifo $f; cat clip.mov >$f & done; $k -h %d 1 1"), rows + rows);
}
