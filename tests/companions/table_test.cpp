#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>

#include "support/bytes_of.h"
#include "support/command.h"

namespace {

const std::string kBitmap =
    little().text("BM").zeros(12).u32(40).u32(8).u32(6).u16(1).u16(24).zeros(24).str();

Outcome table(const Workplace &place, const std::vector<std::string> &arguments) {
    return place.run(arguments, "keldump-table");
}

// The table's line of comma-separated values for one file.
std::string row_of(const std::string &content, const std::string &name) {
    const Workplace place;
    place.write(name, content);
    return lines_from(table(place, {"--csv", "--", name}).out, name);
}

TEST(KeldumpTable, Samples) {
    const Workplace place;
    std::filesystem::create_symlink(KELDUMP_SAMPLES, place.path("s"));
    std::vector<std::string> files;
    for (const char *name : {"audio/broadcast.wav",
                             "audio/large.wav",
                             "audio/mono16.aiff",
                             "audio/picture.avi",
                             "audio/sowt.aifc",
                             "audio/broadcast.wav.txt",
                             "dpx/film10-little.dpx",
                             "dpx/rgb16-big.dpx",
                             "dpx-cineon/film.cin",
                             "exr/attributes.exr",
                             "exr/alpha-zip.exr",
                             "gxf/dv.gxf",
                             "gxf/mpeg2.gxf",
                             "images/ancillary.png",
                             "images/top-down.bmp",
                             "images/rle.tga",
                             "images/rle16.sgi",
                             "images/raw.ppm",
                             "jpeg/progressive.jpg",
                             "jpeg/exif.jpg",
                             "jpeg2000/plain.jp2",
                             "jpeg2000/lossy.j2k",
                             "mpeg/program.vob",
                             "mpeg/transport.ts",
                             "mpeg/video.m2v",
                             "mpeg/video1.m1v",
                             "mxf/d10.mxf",
                             "mxf/dv.mxf",
                             "mxf/op1a-mpeg2.mxf",
                             "mxf/op-atom-dnxhd.mxf",
                             "quicktime/fragments.mov",
                             "quicktime/h264-aac.mov",
                             "quicktime/prores-timecode.mov",
                             "quicktime/uyvy-float.mov",
                             "text/clip.xml",
                             "text/utf16-big",
                             "tiff/big-lzw.tif",
                             "tiff/pyramid.tif"})
        files.push_back(std::string("s/") + name);
    Transcript transcript;
    SHOW(table(place, files).out);
    files.insert(files.begin(), "--csv");
    SHOW(table(place, files).out);
}

// Formats that the samples do not have, and fields that they leave out.
TEST(KeldumpTable, BuiltFiles) {
    Transcript transcript;
    const std::string dpx = big()
                                .text("SDPX")
                                .at(8)
                                .text("V1.0", 8)
                                .at(24)
                                .u32(1664)
                                .u32(384)
                                .at(770)
                                .u16(1)
                                .u32(2048)
                                .u32(1556)
                                .at(780 + 20)
                                .u8(50)
                                .u8(2)
                                .u8(2)
                                .u8(10)
                                .u16(1)
                                .u16(1)
                                .at(1664)
                                .fill(0xFF, 384)
                                .at(1920)
                                .u32(0x10595957)
                                .at(1940)
                                .f32(29.97F)
                                .at(1972)
                                .text("A001", 76)
                                .str();
    SHOW(row_of(dpx, "run-length.dpx"));
    const std::string red = big()
                                .u32(66)
                                .text("RED1")
                                .at(52)
                                .u32(4096)
                                .u32(2304)
                                .u32(24000)
                                .u16(1001)
                                .u32(60)
                                .text("REDV")
                                .zeros(5)
                                .u8(15)
                                .hex("1000")
                                .text("10:00:00:00\x01")
                                .zeros(66 + 60)
                                .at(66 + 60)
                                .u32(44)
                                .text("REOF")
                                .zeros(16)
                                .u32(48)
                                .at(66 + 60 + 43)
                                .u8(0)
                                .str();
    SHOW(row_of(red, "a.r3d"));
    SHOW(row_of(little()
                    .text("ARRI")
                    .u32(0x78563412)
                    .u32(4096)
                    .u32(3)
                    .at(20)
                    .u32(2880)
                    .u32(1620)
                    .at(420)
                    .u32(24000)
                    .u32(0x13595923)
                    .at(4095)
                    .u8(0)
                    .str(),
                "a.ari"));
    SHOW(row_of(std::string(1920 * 1080 * 2, '\0'), "a.yuv"));
    SHOW(row_of(big()
                    .hex("5380F634 40400000")
                    .at(88)
                    .text("PICT")
                    .u16(64)
                    .u16(48)
                    .f32(1)
                    .u16(3)
                    .zeros(2)
                    .u8(0)
                    .u8(8)
                    .u8(2)
                    .u8(0xE0)
                    .zeros(500)
                    .str(),
                "a.pic"));
    SHOW(row_of(
        little()
            .hex("49492A00 08000000 0300 0001 0300 01000000 40000000 0101 0300 01000000 30000000 64C7 0500"
                 "01000000 32000000 00000000 C05D0000 E9030000")
            .str(),
        "cinema.dng"));
    SHOW(row_of(little()
                    .hex("762F3101 02000000")
                    .text("timeCode")
                    .u8(0)
                    .text("timecode")
                    .u8(0)
                    .u32(8)
                    .hex("04834201 00000000")
                    .text("keyCode")
                    .u8(0)
                    .text("keycode")
                    .u8(0)
                    .u32(28)
                    .u32(2)
                    .u32(24)
                    .u32(123456)
                    .u32(7890)
                    .u32(12)
                    .u32(4)
                    .u32(64)
                    .text("dataWindow")
                    .u8(0)
                    .text("box2i")
                    .u8(0)
                    .u32(16)
                    .u32(0xFFFFFFFE)
                    .u32(1)
                    .u32(99)
                    .u32(50)
                    .u8(0)
                    .str(),
                "negative.exr"));
    auto wave = little().text("RIFF").u32(0x1C200024).text("WAVEfmt ").u32(16).u16(1).u16(2).u32(16000);
    wave.u32(64000).u16(4).u16(16).text("data").u32(64000 * 7384 + 42664);
    SHOW(row_of(wave.str(), "cut.wav"));
    SHOW(row_of(wave.zeros(65536).str(), "two-hours.wav"));
    SHOW(row_of("Fileformat:MXF\n00000000:stream 000001b3\n xsize: 5\n", "faked.txt"));
    SHOW(row_of("%PDF-1.4", "a"));
    SHOW(row_of(big().u32(0x802A5FD7).at(193).u8(1).at(200).u32(0x01000020).u32(24).at(2047).u8(0).str(),
                "wide.cin"));
    SHOW(row_of(dpx.substr(0, 1663), "cut.dpx"));
    SHOW(row_of(dpx.substr(0, 2047), "cut.dpx"));
    SHOW(row_of("<html>404", "download.mp4"));
    // A description of several lines, and one whose quote is left open by the text itself.
    const auto described = [&](const std::string &text) {
        auto w = little().text("RIFF").u32(2000).text("WAVEfmt ").u32(16).u16(1).u16(1).u32(48000).u32(96000);
        w.u16(2).u16(16).text("bext").u32(602).text(text, 256).text("maker", 82).u64(48000 * 3600).zeros(256);
        return w.text("data").u32(4).zeros(64).str();
    };
    SHOW(row_of(described("sTAKE=1\r\nsSCENE=2\n\n Samples: 5"), "takes.wav"));
    SHOW(row_of(described("'a\n'b"), "quotes.wav"));
}

TEST(KeldumpTable, NamesOfCodes) {
    const Workplace place;
    for (const unsigned code : {1, 2, 3, 6, 7, 0x50, 0x55, 0xFF, 0xFFFE, 9}) {
        auto w = little().text("RIFF").u32(60).text("WAVEfmt ").u32(16).u16(code).u16(1).u32(8000).u32(8000);
        place.write(std::to_string(code) + ".wav", w.u16(1).u16(8).text("data").u32(4).zeros(64).str());
    }
    for (unsigned code = 0; code <= 6; code++)
        place.write(std::to_string(code) + ".bmp", little().raw(kBitmap).at(30).u32(code).str());
    for (unsigned code = 0; code <= 9; code++) {
        place.write(std::to_string(code) + ".mpg",
                    big().hex("000001B3 100100").u8(0x10 | code).zeros(8).hex("000001B7").str());
    }
    // Lines of serial digital video: EAV, SAV.
    const auto capture = [](const std::string &eav, const std::string &sav, size_t at, size_t words) {
        std::string line = hex(eav) + std::string(words, '\x80');
        line = line.substr(0, at) + hex(sav) + std::string(words, '\x80');
        return "STREAMERnbits 8\nsize 5\n\t" + line.substr(0, words) + line.substr(0, words) + line;
    };
    place.write("pal.sdi", capture("FF00009D", "FF000080", 100, 864));
    place.write("hd.sdi", capture("FFFF000000009D9D", "FFFF000000008080", 560, 5280));
    Transcript transcript;
    SHOW(table(place, {"--csv", "."}).out);
}

// Fields from a movie with a drop frame timecode whose sample stands across two rows of a hex dump.
TEST(KeldumpTable, MovieTimecode) {
    const auto atom = [](const std::string &type, const std::string &payload) {
        return big().u32(8 + payload.size()).text(type).raw(payload).str();
    };
    const std::string handler = atom("hdlr", big().u32(0).text("mhlrtmcd").zeros(12).u8(0).str());
    const std::string name = atom("name", big().u16(4).u16(0).text("A042").str());
    const std::string description =
        atom("tmcd", big().zeros(6).u16(1).u32(0).u32(1).u32(30000).u32(1001).u8(30).u8(0).raw(name).str());
    const std::string tables = atom("stsd", big().u32(0).u32(1).raw(description).str()) +
                               atom("stco", big().u32(0).u32(1).u32(14).str());
    const std::string movie =
        atom("mdat", big().zeros(6).u32(17982 + 1800).zeros(2).str()) +
        atom("moov", atom("trak", atom("mdia", handler + atom("minf", atom("stbl", tables)))));
    EXPECT_EQ(row_of(movie, "%s.mov"), "%s.mov,QuickTime,,,,,,,,,00:11:00;02,,A042,\r\n");
    const std::string sample = content_of(KELDUMP_SAMPLES "/quicktime/h264-aac.mov");
    EXPECT_EQ(row_of(sample + sample, "a.mov"), row_of(sample, "a.mov"));  // the first movie counts
    EXPECT_EQ(row_of(movie.substr(0, movie.size() - 4), "cut.mov"), "cut.mov,QuickTime,,,,,,,,,,,A042,\r\n");
}

TEST(KeldumpTable, NamesAndTextsAreSafe) {
    const Workplace place;
    const std::vector<std::string> names = {
        "-v", "a, \"b\"\n.bmp", "100%s", "e\x1b\x7F\xC2\x9B", "latin\xE9\\", "\xE2\x82\xAC\xC2\xA0"};
    std::vector<std::string> arguments = {"--csv", "--"};
    for (const std::string &name : names) {
        place.write(name, kBitmap);
        arguments.push_back(name);
    }
    Transcript transcript;
    SHOW(table(place, arguments).out);
    arguments[0] = "--json";
    SHOW(table(place, arguments).out);
    arguments[0] = "-j3";
    SHOW(table(place, arguments).out);
}

TEST(KeldumpTable, FilesWithoutRow) {
    const Workplace place;
    mkdir(place.path("d").c_str(), 0700);
    place.write("d/what\n", "?!..");
    const Outcome run = table(place, {"--csv", "d", "missing"});
    EXPECT_EQ(lines_from(run.out, "\"d/what\n"),
              "\"d/what\n\",,,,,,,,,,,,,\"unknown format, 3f 21 2e 2e\"\r\n"
              "missing,,,,,,,,,,,,,No such file or directory\r\n");
    EXPECT_EQ(table(place, {"d"}).out, "FORMAT  FILE\n?       d/what\\x0a\n");
    EXPECT_NE(run.err.find("keldump-table: d/what\\x0a: unknown format, 3f 21 2e 2e\n"), std::string::npos);
    EXPECT_NE(run.err.find("keldump-table: missing: No such file or directory\n"), std::string::npos);
    EXPECT_EQ(run.status, 1);
    mkdir(place.path("e").c_str(), 0700);
    EXPECT_EQ(table(place, {"--json", "e"}).out, "[\n]\n");
    for (const std::vector<std::string> &wrong :
         {std::vector<std::string>{}, {"--csv"}, {"-v", "d"}, {"-j", "0", "d"}})
        EXPECT_EQ(table(place, wrong).status, 2);
}

}  // namespace
