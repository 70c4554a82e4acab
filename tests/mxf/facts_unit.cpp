#include <gtest/gtest.h>

#include "mxf/clip.h"
#include "support/facts_text.h"

namespace {

std::string extent(const std::string &bytes) {
    constexpr const char *kStates[] = {"unknown", "whole", "cut", "open"};
    Input input("file", bytes.data(), bytes.size());
    return kStates[facts(input).extent.state];
}

// What the partitions say comes behind it.
const std::string kFacts =
    "MXF OP-Atom | 1920x1080 (1920x1088) AVC-Intra 100 4:2:2 10 bits tff 30000/1001 fps 60 frames | 2ch "
    "48000 Hz 24 bits "
    "PCM 96096 samples | 2ch 48000 Hz 24 bits PCM 96096 samples | 01:01:00;02 tape | reel TAPE 7 | by Kel "
    "Recorder 2.1 | "
    "2024-05-06T07:08:09 | 1001/500 s | whole";

std::string clip_facts(const std::string &bytes) {
    const std::string text = facts_of(bytes);
    return text.substr(0, text.find(" | header partition"));
}

}  // namespace

TEST(MxfFacts, TracksOfBothFieldsTapeAndDropTimecode) { EXPECT_EQ(clip_facts(Clip(false).bytes), kFacts); }

// A tape's track with two edit units a frame of its timecode.
TEST(MxfFacts, EditUnitsOfTimecodes) {
    std::string bytes = Clip(false).bytes;
    const std::string half = track(32, 1, 33, 60000, 1001);
    bytes.replace(bytes.find(track(32, 1, 33, 30000, 1001)), half.size(), half);
    EXPECT_EQ(clip_facts(bytes), kFacts);
}

TEST(MxfFacts, DurationsOfAnOpenHeaderAreThoseOfTheFootersIndex) {
    EXPECT_EQ(clip_facts(Clip(true).bytes), kFacts);
}

TEST(MxfFacts, RunInBeforeTheHeader) {
    EXPECT_EQ(clip_facts(std::string(500, 'r') + Clip(false).bytes), kFacts);
}

// Items of interoperable masters, by tags that the primer declares.
TEST(MxfFacts, MasteringDisplayAndChannelLabels) {
    const std::string label = "060E2B34 0401010D ";
    const auto sound = [](int n, uint64_t channels, std::initializer_list<int> labels) {
        return set_of("48", n,
                      local(0x3D03, ratio(48000, 1)) + local(0x3D07, number(channels, 4)) +
                          local(0x3D01, number(24, 4)) + local(0x8001, refs(labels)));
    };
    const auto channel = [](int n, const char *symbol, uint64_t place) {
        return set_of("6B", n, local(0x8008, wide(symbol)) + local(0x800A, number(place, 4)));
    };
    const auto master = [&](const std::string &display) {
        const std::string sets =
            primer() +
            set_of("2F", 1, local(0x8006, big().u32(1, 16).hex(label + "0D010102 01020000").str())) +
            set_of("37", 5, local(0x4401, umid(5)) + local(0x4701, uid(20)) + local(0x4403, refs({}))) +
            set_of("44", 20, local(0x3F01, refs({21, 22, 23, 24}))) +
            set_of("29", 21,
                   local(0x3203, number(3840, 4)) + local(0x3202, number(2160, 4)) +
                       local(0x3210, hex(label + "04010101 010C0000")) +
                       local(0x3219, hex(label + "04010101 03060000")) +
                       local(0x321A, hex(label + "04010101 02070000")) + display) +
            sound(22, 6, {30}) + sound(23, 2, {31, 32, 34}) + sound(24, 2, {33}) +
            set_of("6C", 30,
                   local(0x8007, hex(label + "0D030202 01000000")) + local(0x8009, "en-GB") +
                       local(0x800B, wide("PRM"))) +
            channel(31, "chR", 2) + channel(32, "chL", 1) + channel(34, "ch", 3) +
            set_of("6C", 33, local(0x8008, wide("sgST")));
        return facts_of(partition("0204", 0, 0, sets.size()) + sets);
    };
    const std::string text =
        master(local(0x8002, hex("33C2 86C4 1D4C 0BB8 84D0 3E80")) + local(0x8003, hex("3D13 4042")) +
               local(0x8004, number(10000000, 4)) + local(0x8005, number(50, 4)));
    for (const char *part : {"colour 12,-1,14,-1", " 5.1 en-GB", " L R ch ", " stereo ",
                             "mastering display: P3 D65, 0.005 to 1000 cd/m2", "sound content: PRM",
                             "transfer label: 06.0e.2b.34.04.01.01.0d-04.01.01.01.01.0c.00.00",
                             "conforms to: 06.0e.2b.34.04.01.01.0d-0d.01.01.02.01.02.00.00"})
        EXPECT_NE(text.find(part), std::string::npos) << part << "\n" << text;
    EXPECT_NE(master(local(0x8002, hex("2710 1388 1388 2710 1388 1388")))
                  .find("mastering display: red 0.2,0.1 green 0.1,0.2 blue 0.1,0.1"),
              std::string::npos);
}

TEST(MxfFacts, Extent) {
    const Clip closed(false);
    const Clip open(true);
    for (const size_t n :
         {size_t{1}, size_t{45}, size_t{90}, closed.bytes.size() - closed.footer, size_t{2000}})
        EXPECT_EQ(extent(closed.bytes.substr(0, closed.bytes.size() - n)), n == 45 ? "whole" : "cut") << n;
    EXPECT_EQ(extent(closed.bytes + "behind the end"), "whole");
    EXPECT_EQ(extent(open.bytes.substr(0, open.footer)), "open");
    EXPECT_EQ(extent(open.bytes.substr(0, open.footer - 1)), "cut");
    EXPECT_EQ(
        extent(open.bytes.substr(0, open.footer - 200) + std::string(200, '\0') + std::string(400, '\0')),
        "cut");
}

TEST(MxfFacts, NoPrefixLeadsOutside) {
    const std::string whole = Clip(false).bytes;
    for (size_t n = 4; n < whole.size(); n += 37) {
        facts_of(whole.substr(0, n));
        std::string damaged = whole;
        damaged[n] = '\xFF';
        facts_of(damaged);
    }
}

TEST(MxfFacts, RunIn) {
    const std::string clip = Clip(false).bytes;
    const std::string plain = facts_of(clip);
    for (const size_t length : {100, 65536, 65537})
        EXPECT_EQ(facts_of(std::string(length, 'x') + clip).substr(0, 12),
                  length > 65536 ? " | ! unknown" : plain.substr(0, 12));
}

TEST(MxfFacts, Codecs) {
    constexpr std::pair<const char *, const char *> kCodecs[] = {
        {"04010202 01040200", "MPEG-2"},        {"04010202 01020103", "IMX 40"},
        {"04010202 01323201", "AVC-Intra 200"}, {"04010202 01412001", "HEVC"},
        {"04010202 03080100", "JPEG XS"},       {"04010202 03060400", "ProRes 422 HQ"},
        {"04010202 71280000", "DNxHR LB"},      {"04010201 02010100", "ARRIRAW"},
        {"04010201 01020101", "uncompressed"}};
    const std::string clip = Clip(false).bytes;
    const size_t label = clip.find(hex("04010202 01323102"));
    for (const auto &[digits, codec] : kCodecs) {
        const std::string text = facts_of(std::string(clip).replace(label, 8, hex(digits)));
        EXPECT_NE(text.find(std::string(" (1920x1088) ") + codec + " 4:2:2"), text.npos) << text;
    }
}

// Labels of transfer and primaries: a power of 2.6 has no code, sRGB has.
TEST(MxfFacts, Colours) {
    const auto colours = [](const char *transfer) {
        const std::string text = facts_of(
            Clip(false, 60,
                 local(0x3210, hex(std::string("060E2B34 04010101 04010101 01") + transfer + "0000")) +
                     local(0x3219, hex("060E2B34 04010101 04010101 030A0000")))
                .bytes);
        return text.substr(text.find("colour"), 16);
    };
    EXPECT_EQ(colours("0D"), "colour 11,13,-1,");
    EXPECT_EQ(colours("0C"), "colour 11,-1,-1,");
}
