#include <gtest/gtest.h>

#include <algorithm>

#include "companions/diff/diff.h"
#include "companions/diff/facts.h"
#include "support/bytes_of.h"
#include "support/command.h"

namespace {

class Heard : public JobOutput {
 public:
    void out(std::string_view piece) override { text += piece; }
    void complain(const std::string &message) override { complaint += message; }
    std::string text;
    std::string complaint;
};

Outcome diff(const Workplace &place, const std::vector<std::string> &arguments) {
    return place.run(arguments, "keldump-diff");
}

std::string sample(const std::string &name) { return std::string(KELDUMP_SAMPLES "/") + name; }

// What differs, without the two lines with the files' names.
std::string differences(const std::string &one, const std::string &other, const DiffOptions &options = {}) {
    Heard heard;
    const int status = diff_files(one, other, options, heard);
    EXPECT_EQ(heard.complaint, "");
    EXPECT_EQ(status, heard.text.empty() ? 0 : 1);
    const size_t names = heard.text.find("\n+++ ");
    return names == std::string::npos ? heard.text : heard.text.substr(heard.text.find('\n', names + 1) + 1);
}

// The same of a file and a copy in which bytes were replaced, each at the place behind the first mark of its
// kind or, where that is empty, from the start on.
struct Patch {
    std::string behind;
    int skip;
    std::string bytes;
};
std::string patched(const std::string &name, const std::vector<Patch> &patches,
                    const DiffOptions &options = {}) {
    std::string content = content_of(sample(name));
    const Workplace place;
    const std::string ending = name.substr(name.rfind('.'));
    place.write("one" + ending, content);
    for (const Patch &patch : patches) {
        const size_t at = content.find(patch.behind);
        EXPECT_NE(at, std::string::npos) << patch.behind;
        content.replace(at + patch.behind.size() + static_cast<size_t>(patch.skip), patch.bytes.size(),
                        patch.bytes);
    }
    place.write("other" + ending, content);
    return differences(place.path("one" + ending), place.path("other" + ending), options);
}

std::string bytes(std::initializer_list<int> values) {
    std::string text;
    for (const int value : values) text += static_cast<char>(value);
    return text;
}

}  // namespace

TEST(KeldumpDiff, Samples) {
    Transcript transcript;
    const auto fields = [](const std::string &one, const std::string &other) {
        return differences(sample(one), sample(other));
    };
    SHOW(fields("dpx/film10-big.dpx", "dpx/film10-little.dpx"));
    SHOW(fields("audio/stereo16.wav", "audio/broadcast.wav"));
    SHOW(fields("quicktime/h264-aac.mov", "quicktime/mjpeg.qt"));
    SHOW(fields("mxf/op1a-mpeg2.mxf", "mxf/op1a-jpeg2000.mxf"));
    SHOW(fields("gxf/dv.gxf", "gxf/mpeg2.gxf"));
    SHOW(fields("exr/attributes.exr", "exr/tiled.exr"));
}

// That field is told, with what it says of the file, and nothing else.
TEST(KeldumpDiff, OneFieldOfEachFormat) {
    Transcript transcript;
    SHOW(patched("dpx/film10-big.dpx", {{"", 768, bytes({0, 3})}}));  // orientation
    SHOW(patched("dpx-cineon/film.cin", {{"", 680, bytes({1})}}));    // interleave
    SHOW(patched("exr/attributes.exr", {{"gamma", 11, bytes({0, 0, 0, 0x40})}}));
    SHOW(patched("tiff/little.tif", {{bytes({0x12, 1, 3, 0, 1, 0, 0, 0}), 0, bytes({6})}}));  // orientation
    SHOW(patched("audio/broadcast.wav", {{"harbour, take ", 0, "2"}}));
    SHOW(patched("audio/mono16.aiff", {{"COMM", 11, bytes({24})}}));  // bits
    SHOW(patched("quicktime/h264-aac.mov", {{"VideoHandler", -12, "Sound"}}));
    SHOW(patched("quicktime/h264-aac.mov", {{"mdhd", 20, bytes({0x15, 0xC7})}}));            // language
    SHOW(patched("mxf/op1a-mpeg2.mxf", {{bytes({0x32, 0x03, 0, 4}), 2, bytes({0, 120})}}));  // stored width
    SHOW(patched("mxf/d10.mxf", {{bytes({0x3F, 0x05, 0, 4}), 3, bytes({1})}}));              // edit unit
    SHOW(patched("gxf/mpeg2.gxf", {{"ES.M0", 1, ""}, {bytes({0x50, 4}), 3, bytes({5})}}));   // rate
    SHOW(patched("jpeg2000/plain.jp2", {{bytes({0xFF, 0x52}), 2, bytes({0, 1})}}));
    SHOW(patched("jpeg/baseline.jpg", {{"JFIF", 3, bytes({1})}}));  // units
    SHOW(patched("images/ancillary.png", {{"pHYs", 8, bytes({0})}}));
    SHOW(patched("images/raw.tga", {{"", 17, bytes({0x10})}}));
    SHOW(patched("text/latin1.edl", {{"Klappe", 2, "3"}}));
    SHOW(patched("quicktime/h264-aac.mov", {{"mp4a", 27, bytes({1})}}));  // less than the decimals show
    SHOW(patched("exr/attributes.exr", {{"dataWindow", 11, bytes({1})}}));
    SHOW(
        patched("mxf/op1a-mpeg2.mxf", {{bytes({0x32, 0x01, 0, 0x10}), 7, bytes({9})}}));  // a label's version
}

TEST(KeldumpDiff, WhatAnyTwoFilesDifferInIsLeftOut) {
    const std::vector<Patch> dates = {{"mvhd", 4, "dates of"}, {"stco", 8, bytes({0, 0, 1, 0})}};
    EXPECT_EQ(patched("quicktime/h264-aac.mov", dates), "");
    EXPECT_NE(
        patched("quicktime/h264-aac.mov", dates, {.everything = true}).find("moov > mvhd\n  creation: "),
        std::string::npos);
    // All of a UMID, an identifier and what refers to it; but not a label of the registers.
    const std::string umid = bytes({0x44, 0x01, 0, 0x20});
    EXPECT_EQ(patched("mxf/dv.mxf", {{umid, 13, "what a UMID says..."}}), "");
    EXPECT_NE(patched("mxf/dv.mxf", {{umid, 13, "what a UMID says..."}}, {.everything = true}), "");
    // A moved moov.
    const std::string movie = content_of(sample("quicktime/h264-aac.mov"));
    const size_t data = movie.find("mdat") - 4;
    const size_t header = movie.find("moov") - 4;
    const Workplace place;
    place.write("moved.mov",
                movie.substr(0, data) + movie.substr(header) + movie.substr(data, header - data));
    EXPECT_EQ(differences(sample("quicktime/h264-aac.mov"), place.path("moved.mov")), "");
}

TEST(KeldumpDiff, StartTimecodesAreOneLine) {
    // The sample of a movie's timecode track.
    const std::string movie = content_of(sample("quicktime/prores-timecode.mov"));
    const std::string frames = bytes({0, 1, 0x6B, 0x97});  // 01:02:03:04 of 25
    EXPECT_EQ(patched("quicktime/prores-timecode.mov", {{frames, -4, bytes({0, 1, 0x5F, 0x90})}}),
              "timecode: from 01:00:00:00 instead of 01:02:03:04\n");
    // Both packages of an MXF.
    std::string mxf = content_of(sample("mxf/d10.mxf"));
    const Workplace place;
    place.write("one.mxf", mxf);
    const std::string start = bytes({0x15, 0x01, 0, 8});
    for (size_t at = mxf.find(start); at != std::string::npos; at = mxf.find(start, at + 1))
        mxf.replace(at + 10, 2, bytes({1, 0}));
    place.write("other.mxf", mxf);
    EXPECT_EQ(differences(place.path("one.mxf"), place.path("other.mxf")),
              "timecode: from 00:00:10:06 instead of 00:00:00:00\n");
    EXPECT_EQ(patched("mxf/d10.mxf", {{start, 6, bytes({1, 0})}}),
              "timecode of material package: from 00:00:10:06 instead of 00:00:00:00\n");
}

TEST(KeldumpDiff, FactsByTheirPlaces) {
    const auto told = [](const Facts &one, const Facts &other) {
        std::string text;
        for (const FactDifference &difference : differing_facts(one, other, false))
            text += difference.text + "\n";
        return text;
    };
    Facts one;
    one.picture().width = 32;
    one.add(counted_timecode(90000, 25, false, "track 2"));
    one.sounds.resize(1);
    one.sounds[0].bit_rate = 128000;
    Facts other = one;
    other.timecodes[0].place = "track 3";
    EXPECT_EQ(told(one, other), "");
    other.timecodes.push_back(counted_timecode(90025, 25, false, "track 4"));
    EXPECT_EQ(told(one, other), "timecode of track 4: from 01:00:01:00 instead of none\n");
    other = one;
    other.sounds[0].bit_rate = 192000;
    other.add_more("programs", 2);
    EXPECT_EQ(told(one, other),
              "sound bit rate: 192000 b/s instead of 128000 b/s\nprograms: 2 instead of 1\n");
    other.sounds[0].channels = 2;  // what a rate follows from
    EXPECT_EQ(told(one, other), "channels: 2 instead of none\nprograms: 2 instead of 1\n");
}

// System items whose timecode counts from `first` on.
std::string system_items(int count, int first, int wrong = -1) {
    std::string items;
    for (int i = 0; i < count; i++) {
        const int frame = i == wrong ? 0 : first + i;
        const auto bcd = [](int n) { return n / 10 * 16 + n % 10; };
        items += bytes({6, 14, 0x2B, 0x34, 2, 5, 1, 1, 13, 1, 3, 1, 4, 1, 1, 0, 0x83, 0, 0, 57});
        items += bytes({0x5C, 0x04, 0, 0, 0, 0, 0});
        items += bytes({6, 14, 0x2B, 0x34, 4, 1, 1, 1, 13, 1, 3, 1, 2, 1, 5, 1});
        items += std::string(17, '\0');
        items += bytes({0x81, bcd(frame % 25), bcd(frame / 25 % 60), bcd(frame / 1500 % 60), 0});
        items += std::string(12, '\0');
    }
    return items;
}

TEST(KeldumpDiff, WhatStandsThereForEveryFrameIsCounted) {
    const Workplace place;
    place.write("one.mxf", system_items(400, 0));
    place.write("other.mxf", system_items(400, 25));
    place.write("wrong.mxf", system_items(400, 0, 321));
    place.write("less.mxf", system_items(380, 0));
    const std::string one = place.path("one.mxf");
    EXPECT_EQ(differences(one, place.path("other.mxf")),
              "timecode of 400 system items: from 00:00:01:00 00000000 instead of 00:00:00:00 00000000\n");
    EXPECT_EQ(differences(one, place.path("wrong.mxf")),
              "timecode of 1 of 400 system items: at 321 00:00:00:00 00000000 instead of 00:00:12:21 "
              "00000000\n");
    EXPECT_EQ(differences(one, place.path("less.mxf")), "number of system items: 400 -> 380\n");
    const std::string all = differences(one, place.path("other.mxf"), {.everything = true});
    EXPECT_EQ(std::count(all.begin(), all.end(), '\n'), 400);
    EXPECT_NE(all.find("\nsystem items[399] timecode: 00:00:15:24 00000000 -> 00:00:16:24 00000000\n"),
              std::string::npos);
}

// A program with an MPEG-2 picture and, with `language`, a sound.
std::string stream(const std::string &language, int type = 2) {
    std::string map = bytes({0, 1, 0xC1, 0, 0, 0xE1, 0, 0xF0, 0, type, 0xE1, 0, 0xF0, 0});
    if (!language.empty()) map += bytes({4, 0xE1, 1, 0xF0, 6, 10, 4}) + language + '\0';
    map = bytes({2, 0xB0, static_cast<int>(map.size()) + 4}) + map + "CRC!";
    const auto packet = [](int pid, const std::string &section) {
        const std::string head = bytes({0x47, 0x40 | pid >> 8, pid & 255, 0x10, 0});
        return head + section + std::string(188 - head.size() - section.size(), '\xFF');
    };
    std::string content = packet(0, bytes({0, 0xB0, 13, 0, 1, 0xC1, 0, 0, 0, 1, 0xF0, 0}) + "CRC!");
    content += packet(0x1000, map);
    for (int i = 0; i < 100; i++) content += packet(0x100, language + std::to_string(i));
    return content;
}

TEST(KeldumpDiff, ProgramsOfTransportStreams) {
    const Workplace place;
    place.write("one.ts", stream("eng"));
    place.write("language.ts", stream("fra"));
    place.write("silent.ts", stream(""));
    place.write("type.ts", stream("eng", 0x1B));
    Transcript transcript;
    const auto fields = [&](const std::string &other) {
        std::string text = differences(place.path("one.ts"), place.path(other));
        return text.substr(std::min(text.find("program"), text.size()));
    };
    SHOW(fields("language.ts"));
    SHOW(fields("silent.ts"));
    SHOW(fields("type.ts"));
}

TEST(KeldumpDiff, Json) {
    Heard heard;
    EXPECT_EQ(diff_files(sample("images/ancillary.png"), sample("images/aspect.png"), {.json = true}, heard),
              1);
    const std::string fact =
        R"({"name": "kind", "one": "interlaced", "other": null, "text": "kind: none instead of interlaced"})";
    const std::string field = R"({"section": ["IHDR"], "field": "interlace", "one": "1", "other": "0"})";
    EXPECT_NE(heard.text.find(fact), std::string::npos) << heard.text;
    EXPECT_NE(heard.text.find(field), std::string::npos) << heard.text;
    heard.text.clear();
    EXPECT_EQ(diff_files("x", "x", {.json = true}, heard), 2);
    EXPECT_EQ(heard.text, "");
    const std::string same = sample("audio/stereo16.wav");
    EXPECT_EQ(diff_files(same, same, {.json = true}, heard), 0);
    EXPECT_NE(heard.text.find("\"facts\": [], \"fields\": []}\n"), std::string::npos);
}

TEST(KeldumpDiff, Statuses) {
    const Workplace place;
    place.write("-a", "%PDF-");
    place.write("b%s", "GIF8");
    EXPECT_EQ(diff(place, {"--", "-a", "-a"}).status, 0);
    const Outcome run = diff(place, {"--", "-a", "b%s"});
    EXPECT_EQ(run.out, "--- -a\n+++ b%s\nformat: GIF instead of PDF\n- Fileformat:PDF\n+ Fileformat:GIF\n");
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
