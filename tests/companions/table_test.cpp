#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>

#include "support/bytes_of.h"
#include "support/command.h"

namespace {

const std::string kBitmap = little().text("BM").zeros(8).u32(54, 40, 8, 6).u16(1, 24).zeros(24 + 144).str();

Outcome table(const Workplace &place, const std::vector<std::string> &arguments) {
    return place.run(arguments, "keldump-table");
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

// Three frames of two, whose number leaves one out, and one that is cut.
TEST(KeldumpTable, Sequences) {
    const Workplace place;
    Transcript transcript;
    const std::string frame = content_of(std::string(KELDUMP_SAMPLES) + "/dpx/film10-little.dpx");
    for (const char *name : {"a.0098.dpx", "a.0099.dpx", "a.0101.dpx"}) place.write(name, frame);
    SHOW(table(place, {"."}).out);
    place.write("a.0099.dpx", frame.substr(0, 3000));
    place.write("a.0102.dpx", std::string(frame).replace(772, 1, "\x1f"));
    place.write("a.0103.dpx", frame);
    place.write("a.0104.dpx", frame);
    SHOW(table(place, {"."}).out);
    SHOW(table(place, {"--csv", "--columns", "file,frames,first_frame,last_frame,frames_missing,size", "."})
             .out);
    SHOW(table(place, {"--each", "--columns", "width,problem,file", "."}).out);
    EXPECT_EQ(table(place, {"."}).status, 1);
    // A frame of which nothing is known does not make up for one that is cut.
    place.write("a.0101.dpx", "?!..");
    EXPECT_EQ(table(place, {"--csv", "--columns=extent,missing,bit_rate", "."}).out,
              "extent,missing,bit_rate\r\ncut,the picture,1537920\r\n");
    // What most of them say is the row, whether it is the first or half that differs.
    place.write("b.-1.dpx", std::string(frame).replace(803, 1, "\x10"));
    for (const char *name : {"b.0.dpx", "b.1.dpx", "b.2.dpx"}) place.write(name, frame);
    SHOW(table(place, {"--csv", "--columns", "file,first_frame,width,bit_depth,problem", "b.-1.dpx",
                       "b.0.dpx", "b.1.dpx", "b.2.dpx"})
             .out);
    place.write("b.2.dpx", content_of(place.path("b.-1.dpx")));
    SHOW(table(place, {"b.-1.dpx", "b.0.dpx", "b.1.dpx", "b.2.dpx"}).out);
    // One that is listed twice is one frame; another of its number is a finding.
    place.write("b.01.dpx", frame);
    EXPECT_EQ(table(place, {"--csv", "--columns", "frames,problem", "b.0.dpx", "b.1.dpx", "b.0.dpx"}).out,
              "frames,problem\r\n2,\r\n");
    EXPECT_EQ(table(place, {"--csv", "--columns", "frames,problem", "b.0.dpx", "b.1.dpx", "b.01.dpx"}).out,
              "frames,problem\r\n3,frame 1: another file with that number\r\n");
    // Names alone make no frames.
    for (int i = 1; i < 5; i++)
        place.write("p" + std::to_string(i) + ".bmp",
                    std::string(kBitmap).replace(18, 1, 1, static_cast<char>(i)));
    EXPECT_EQ(table(place, {"--columns", "width", "p1.bmp", "p2.bmp", "p3.bmp", "p4.bmp"}).status, 0);
    SHOW(table(place, {"--columns", "width", "p1.bmp", "p2.bmp", "p3.bmp", "p4.bmp"}).out);
    EXPECT_EQ(table(place, {"--csv", "--columns=file", "p3.bmp", "p1.bmp", "p2.bmp"}).out,
              "file\r\np3.bmp\r\np1.bmp\r\np2.bmp\r\n");
}

TEST(KeldumpTable, WhatIsOdd) {
    const Workplace place;
    Transcript transcript;
    std::string bitmap = kBitmap;
    for (const char *name : {"a", "b", "c"}) place.write(name, kBitmap);
    place.write("wide", bitmap.replace(18, 1, "\x09"));
    SHOW(table(place, {"--odd", "."}).out);
    EXPECT_EQ(table(place, {"--odd", "a", "b", "c"}).out, "nothing odd: 3 files, 594 bytes\n");
    EXPECT_EQ(table(place, {"--odd", "--csv", "--columns", "file,odd", "."}).out,
              "file,odd\r\n./wide,SIZE 9x6 (1 of 4; others 8x6)\r\n");
}

TEST(KeldumpTable, ColumnsAndFields) {
    const Workplace place;
    Transcript transcript;
    std::filesystem::create_symlink(KELDUMP_SAMPLES, place.path("s"));
    const std::vector<std::string> files = {"s/dpx/film10-little.dpx", "s/mxf/op1a-mpeg2.mxf"};
    const auto with = [&](std::vector<std::string> switches) {
        switches.insert(switches.end(), files.begin(), files.end());
        return table(place, switches);
    };
    SHOW(with({"--csv", "--columns", "file,slate,gamma", "--field", "television/timecode", "--field",
               "Track ID/*"})
             .out);
    SHOW(with({"--lines", "--columns", "file,keycode", "--field", "*/Track ID/*", "--field", "keycode"}).out);
    SHOW(with({"--columns", "timecode,edit rate,file"}).out);
    // Of a pipe, and of frames: what any of them has, up to a hundred values.
    for (int i = 0; i < 120; i++)
        place.write("f" + std::to_string(i) + ".bmp",
                    std::string(kBitmap).replace(38, 1, 1, static_cast<char>(i < 60 ? 0 : i)));
    const std::string fields = lines_from(
        table(place, {"--lines", "--columns", "file", "--field", "xpels", "--field", "ypels", "."}).out,
        "{\"file\": \"./f", 1);
    EXPECT_TRUE(fields.starts_with("{\"file\": \"./f[0-119].bmp\", \"xpels\": [\"0\", \"60\", \"61\""))
        << fields;
    EXPECT_TRUE(fields.ends_with("\"119\"], \"ypels\": [\"0\"]}\n")) << fields;
    mkfifo(place.path("pipe").c_str(), 0600);
    system(("cat '" + place.path("f99.bmp") + "' > '" + place.path("pipe") + "' &").c_str());
    EXPECT_EQ(table(place, {"--csv", "--columns", "format,problem", "--field", "xpels", "pipe"}).out,
              "format,problem,xpels\r\nBMP,,99\r\n");
    // One that is documented needs no file that has it.
    const Outcome none = with({"--lines", "--columns", "scene,more"});
    EXPECT_EQ(none.status, 0);
    EXPECT_TRUE(none.out.starts_with("{\"scene\": null, \"more\": {\"")) << none.out;
    const Outcome wrong = with({"--columns", "flavour,file,colour!"});
    EXPECT_EQ(wrong.status, 2);
    EXPECT_EQ(wrong.err,
              "keldump-table: no file has a column 'flavour'\n"
              "keldump-table: no file has a column 'colour!'\n");
}

TEST(KeldumpTable, NamesFromAFile) {
    const Workplace place;
    for (const char *name : {"b", "a", "c\nd"}) place.write(name, kBitmap);
    place.write("list", "b\na\n\nb\n");
    place.write("list0", std::string("c\nd\0b", 6));
    EXPECT_EQ(table(place, {"--csv", "--columns=file", "--files-from", "list"}).out,
              "file\r\nb\r\na\r\nb\r\n");
    EXPECT_EQ(table(place, {"--csv", "--columns=file", "--files-from=list0", "-0", "-j1"}).out,
              "file\r\n\"c\nd\"\r\nb\r\n");
    EXPECT_EQ(table(place, {"--files-from", "none"}).err, "keldump-table: none: No such file or directory\n");
    const std::string closed = "'" + command_path("keldump-table") + "' --files-from - <&- 2> '";
    EXPECT_EQ(system((closed + place.path("err") + "'").c_str()), 2 << 8);
    EXPECT_EQ(place.read("err"), "keldump-table: -: Bad file descriptor\n");
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

// One that is named is a finding, one beside others is not.
TEST(KeldumpTable, FilesWithoutRow) {
    const Workplace place;
    mkdir(place.path("d").c_str(), 0700);
    place.write("d/what\n", "?!..");
    place.write("d/a.bmp", kBitmap);
    const Outcome run = table(place, {"--csv", "--columns", "problem,file", "d", "missing", "d/what\n"});
    EXPECT_EQ(run.out,
              "problem,file\r\n,d/a.bmp\r\nNo such file or directory,missing\r\n"
              "\"unknown format, 3f 21 2e 2e\",\"d/what\n\"\r\n");
    EXPECT_EQ(run.err,
              "keldump-table: missing: No such file or directory\n"
              "keldump-table: d/what\\x0a: unknown format, 3f 21 2e 2e\n");
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(table(place, {"d"}).out,
              "  FORMAT  SIZE  CODEC  BITS  FILE\n  BMP     8x6   RGB       8  d/a.bmp\n1 file, 198 bytes, 1 "
              "other file\n");
    EXPECT_EQ(table(place, {"d"}).status, 0);
    // What is no file is a finding in its place.
    EXPECT_EQ(table(place, {"--csv", "--columns", "problem,file", "/dev/null", "d/a.bmp"}).out,
              "problem,file\r\nnot a regular file,/dev/null\r\n,d/a.bmp\r\n");
    mkdir(place.path("e").c_str(), 0700);
    EXPECT_EQ(table(place, {"--json", "e"}).out, "[]\n");
    for (const std::vector<std::string> &wrong : {std::vector<std::string>{},
                                                  {"--csv"},
                                                  {"-x", "d"},
                                                  {"-j", "0", "d"},
                                                  {"--columns"},
                                                  {"--columns=,", "d"},
                                                  {"--field=", "d"}})
        EXPECT_EQ(table(place, wrong).status, 2);
}

}  // namespace
