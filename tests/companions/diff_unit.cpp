#include <gtest/gtest.h>

#include "companions/diff/compare.h"
#include "support/bytes_of.h"
#include "support/command.h"

namespace {

Outcome diff(const Workplace &place, const std::vector<std::string> &arguments) {
    return place.run(arguments, "keldump-diff");
}

std::string differences(const std::string &one, const std::string &other, bool everything = false) {
    return compare_dumps(parse_dump(one, everything), parse_dump(other, everything));
}

std::string sample(const std::string &name) { return std::string(KELDUMP_SAMPLES "/") + name; }

}  // namespace

TEST(KeldumpDiff, Samples) {
    Transcript transcript;
    const auto fields = [](const std::string &one, const std::string &other) {
        const Workplace place;
        const Outcome run = diff(place, {sample(one), sample(other)});
        EXPECT_EQ(run.status, 1);
        return run.out.substr(run.out.find('\n', run.out.find("\n+++") + 1) +
                              1);  // names lead to this directory
    };
    SHOW(fields("dpx/film10-big.dpx", "dpx/film10-little.dpx"));
    SHOW(fields("audio/stereo16.wav", "audio/broadcast.wav"));
    SHOW(fields("quicktime/h264-aac.mov", "quicktime/mjpeg.qt"));
    SHOW(fields("mxf/op1a-mpeg2.mxf", "mxf/op1a-jpeg2000.mxf").substr(0, 3000));
    SHOW(fields("tiff/exif.tif", "tiff/pyramid.tif").substr(0, 1500));
}

TEST(KeldumpDiff, PositionsDatesAndIdentifiersDoNotCount) {
    const std::string one =
        "00000010 06.0e.2b.34.01.01.01.01-0d.01.02.01.01.02.04.00 - MXF Set\n"
        " Length 0x00000010 (until 0x00000020)\n"
        "  Tag 3c0a/16 Instance\n"
        "   UUID   00.11.22.33.44.55.66.77-88.99.aa.bb.cc.dd.ee.ff\n"
        " offsetimage    C : 00002000\n"
        " creationtime     : '2026:11:24'\n"
        "MXFERROR @ 0x00000020 wrong\n";
    const std::string other =
        "000000a0 06.0e.2b.34.01.01.01.01-0d.01.02.01.01.02.04.00 - MXF Set\n"
        " Length 0x00000011 (until 0x000000b0)\n"
        "  Tag 3c0a/17 Instance\n"
        "   UUID   99.11.22.33.44.55.66.77-88.99.aa.bb.cc.dd.ee.ff\n"
        " offsetimage    C : 00001000\n"
        " creationtime     : '2025:11:24'\n"
        "MXFERROR @ 0x00000029 wrong\n";
    EXPECT_EQ(differences(one, other), "");
    EXPECT_NE(differences(one, other, true), "");
    // The offset of a keycode and the labels of the registers do.
    EXPECT_EQ(differences("film\n offset           : '12'\n", "film\n offset           : '16'\n"),
              "film\n  offset: '12' -> '16'\n");
    EXPECT_EQ(differences(" xoffset : 1\n data[0].offset=-1\n", " xoffset : 2\n data[0].offset=-2\n"),
              "xoffset: 1 -> 2\ndata[0].offset: -1 -> -2\n");
    EXPECT_EQ(differences("  Tag 0x40   3 filename   '/a'\n", "  Tag 0x40   3 filename   '/b'\n"),
              "Tag 0x40: 3 filename   '/a' -> 3 filename   '/b'\n");
    // A text of several lines is one value.
    EXPECT_EQ(differences("  text  'one\ntwo: 2\n'\n x: 1\n", "  text  'one\ntwo: 3\n'\n x: 1\n"),
              "text: 'one\\x0atwo: 2\\x0a' -> 'one\\x0atwo: 3\\x0a'\n");
    EXPECT_EQ(differences("  text  'open\n x: 1\n", "  text  'open\n x: 2\n"), "x: 1 -> 2\n");
    EXPECT_NE(differences(" UL 06.0e.2b.34.01.01.01.01-0d.01.02.01.01.02.04.00\n",
                          " UL 06.0e.2b.34.01.01.01.01-0d.01.02.01.01.02.05.00\n"),
              "");
}

TEST(KeldumpDiff, WhatOneSideHasMoreDoesNotMoveTheRest) {
    std::string one;
    std::string other;
    for (int i = 0; i < 100000; i++) {
        const std::string section =
            "section " + std::string(1, static_cast<char>('a' + i % 7)) + "\n width: 5\n";
        one += section;
        other += section;
        if (i == 500) one += "only here\n depth: 8\n mode: 1\n";
        if (i == 90000) other += " more: \x1B[2J\n";
    }
    EXPECT_EQ(differences(one, other), "- only here (2 lines below)\nsection b\n  + more: \\x1b[2J\n");
    EXPECT_EQ(differences("", "a: 1\n"), "+ a: 1\n");
    EXPECT_EQ(differences("a: \n", "a: 1\n"), "a: (empty) -> 1\n");
}

TEST(KeldumpDiff, Statuses) {
    const Workplace place;
    place.write("-a", "%PDF-");
    place.write("b%s", "GIF8");
    EXPECT_EQ(diff(place, {"--", "-a", "-a"}).status, 0);
    const Outcome run = diff(place, {"--", "-a", "b%s"});
    EXPECT_EQ(run.out, "--- -a\n+++ b%s\nFileformat: PDF -> GIF\n");
    EXPECT_EQ(run.status, 1);
    place.write("unknown", "????");
    for (const std::vector<std::string> &arguments : {std::vector<std::string>{},
                                                      {"b%s"},
                                                      {"-x", "b%s", "b%s"},
                                                      {"b%s", "unknown"},
                                                      {"b%s", "missing"}}) {
        const Outcome trouble = diff(place, arguments);
        EXPECT_EQ(trouble.status, 2);
        EXPECT_NE(trouble.err, "");
    }
}
