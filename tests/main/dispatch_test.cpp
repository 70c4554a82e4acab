#include <gtest/gtest.h>
#include <sys/stat.h>

#include <csignal>
#include <fstream>
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

TEST(Dispatch, UnknownFiles) {
    EXPECT_EQ(dump_of(""), "Unknown fileformat of file 'file.bin' 00 00 00 00\n");
    EXPECT_EQ(dump_of("ab"), "Unknown fileformat of file 'file.bin' 61 62 00 00\n");
    for (const char *near :
         {"IM\x2A", "MX", "{\\rt", "%PDF", "GIX", "P7\n", "P1 ", "<?xm", "\xEF\xBB", "\xFE\xFE",
          "\xFF\x4F\xFF\x50", "\x89PNG\r\n", "S\x80\xF6\x34\x40\x41", "RIFX", "\x00\x01"}) {
        EXPECT_EQ(first_line(near).substr(0, 29), "Unknown fileformat of file 'f") << near;
    }
    // The signature box of JP2 cut short, and executables without a PE header in the bytes read.
    EXPECT_EQ(first_line(std::string("\0\0\0\x0CjP  \r\n", 10)).substr(0, 7), "Unknown");
    EXPECT_EQ(first_line(little().text("MZ").at(60).u32(0x4000 - 3).str()).substr(0, 7), "Unknown");
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

    signal(SIGPIPE, SIG_IGN);  // a dump may end before the pipe is written
    // Pipes cannot seek: what a format needs beyond the head reads as nothing.
    mkfifo(place.path("pipe").c_str(), 0600);
    const auto through_pipe = [&](const std::vector<std::string> &arguments, const std::string &content) {
        std::thread writer([&] { std::ofstream(place.path("pipe")) << content; });
        const Outcome run = place.run(arguments);
        writer.join();
        EXPECT_EQ(run.err, "");
        EXPECT_EQ(run.status, 0);
        return run.out;
    };
    EXPECT_EQ(through_pipe({"-s", "pipe"}, "abc12 xyz123\nHELLOWORLD"), "xyz123\nHELLOWORLD\n");
    EXPECT_EQ(through_pipe({"pipe"}, "%PDF-"), "Fileformat:PDF\n");
    EXPECT_EQ(through_pipe({"-h", "pipe"}, "x"), "");
    EXPECT_EQ(through_pipe({"pipe"}, "RIFF\x10WAVEfmt"), "Error: Scanning for formattag, seek failed\n");
}
