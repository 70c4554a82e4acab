#include "quicktime/movie_of.h"

namespace {

std::string picture(const std::string &codec, const std::string &boxes, unsigned depth = 24) {
    const std::string text =
        facts_of(movie(track("vide", picture_entry(codec, boxes, depth), media_header(24000, 10010))));
    return text.substr(6, text.find(" fps") - 6);
}

std::string sound(const std::string &entry) {
    const std::string text = facts_of(movie(track("soun", entry, media_header(48000, 10010))));
    return text.substr(6, text.rfind(' ', text.find(" samples") - 1) - 6);
}

}  // namespace

TEST(MovieFacts, Pictures) {
    EXPECT_EQ(picture("apch", ""), "1920x1080 ProRes 422 HQ 4:2:2 10 bits 24000/1001");
    EXPECT_EQ(picture("ap4h", "", 32), "1920x1080 ProRes 4444 4:4:4:4 12 bits 24000/1001");
    EXPECT_EQ(picture("raw ", "", 32), "1920x1080 uncompressed RGBA 8 bits 24000/1001");
    EXPECT_EQ(picture("xd5c", ""), "1920x1080 XDCAM HD422 4:2:2 8 bits 24000/1001");
    EXPECT_EQ(picture("v210", atom("fiel", "\x02\x09") + atom("pasp", big().u32(8, 6).str()) +
                                  atom("colr", "nclc" + big().u16(9, 16, 9).str())),
              "1920x1080 uncompressed 4:2:2 10 bits tff aspect 4/3 colour 9,16,9,-1 24000/1001");
    // High 4:2:2 at 10 bits, 1920x1088 cropped to 1080.
    EXPECT_EQ(picture("avc1",
                      atom("avcC",
                           hex("017A0028 FFE1 0019 677A0028B6CD940780227E5C04400000FA40002EE03C60C6580001"))),
              "1920x1080 (1920x1088) H.264 4:2:2 10 bits p 24000/1001");
    EXPECT_EQ(picture("av01", atom("av1C", hex("81004C00"))), "1920x1080 AV1 4:2:0 10 bits 24000/1001");
    const std::string display =
        atom("mdcv", hex("33C2 86C4 1D4C 0BB8 84D0 3E80 3D13 4042 00989680 00000032"));
    const std::string graded =
        facts_of(movie(track("vide", picture_entry("hvc1", display), media_header(24000, 10010))));
    EXPECT_NE(graded.find("mastering display: P3 D65, 0.005 to 1000 cd/m2"), std::string::npos) << graded;
    EXPECT_EQ(picture("WxYz", ""), "1920x1080 WxYz 24000/1001");
}

TEST(MovieFacts, Sounds) {
    EXPECT_EQ(sound(sound_entry("raw ", 0, 2, 8, "")), "2ch 48000 Hz 8 bits PCM");
    EXPECT_EQ(sound(sound_entry("in24", 1, 2, 16, big().u32(1, 3, 6, 2).str())), "2ch 48000 Hz 24 bits PCM");
    EXPECT_EQ(sound(sound_entry("sowt", 1, 2, 16, big().u32(1, 4, 8, 2).str())), "2ch 48000 Hz 32 bits PCM");
    EXPECT_EQ(
        sound(sound_entry("lpcm", 2, 3, 16, big().u32(72).f64(96000).u32(6, 0x7F000000, 32, 9, 24, 1).str())),
        "6ch 96000 Hz 32 bits PCM float");
    EXPECT_EQ(
        sound(sound_entry("mp4a", 0, 2, 16,
                          full("esds", hex("0316 0000 00 0411 40 15 000000 00000000 00000000 0502 11B0")))),
        "6ch 48000 Hz AAC 5.1");
    EXPECT_EQ(sound(sound_entry("ac-3", 0, 2, 16, atom("dac3", hex("103DC0")))), "6ch 48000 Hz AC-3 5.1");
    EXPECT_EQ(sound(sound_entry("sowt", 0, 2, 16, full("chan", big().u32(101 << 16 | 2).zeros(8).str()))),
              "2ch 48000 Hz 16 bits PCM stereo");
    for (const auto &[places, layout] : {std::pair{"00000000 01 05 0000000000000000", "5.0"},
                                         {"00000000 01 06 0000000000000008", "PCM"},
                                         {"00000000 01 00 0001", "stereo"},
                                         {"00000000 02 02", "PCM"},
                                         {"01000000 10 06 06 00", "5.1"},
                                         {"01000000 10 06 00 06 000102030405", "5.1"},
                                         {"01000000 10 03 00 03 00010A", "L R Cs"}})
        EXPECT_TRUE(sound(sound_entry("sowt", 0, 2, 16, atom("chnl", hex(places)))).ends_with(layout))
            << places;
    const std::string alac = full("alac", hex("00001000 00 18 280a0e 06 00ff 00000000 00000000 0000bb80"));
    EXPECT_EQ(sound(sound_entry("alac", 0, 2, 16, alac)), "6ch 48000 Hz 24 bits ALAC 5.1");
    for (const auto &[tag, layout] :
         {std::pair(142U, "6.1"), {150U, "3.0"}, {184U, "5.1.2"}, {99U, "AAC"}, {200U, "AAC"}}) {
        const std::string text =
            sound(sound_entry("mp4a", 0, 2, 16, full("chan", big().u32(tag << 16).zeros(8).str())));
        EXPECT_TRUE(text.ends_with(layout)) << text;
    }
}

TEST(MovieFacts, TimeAndTracks) {
    const std::string entry = picture_entry("apcn", "");
    const std::string tmcd = atom("tmcd", big()
                                              .zeros(8)
                                              .u32(0, 1, 30000, 1001)
                                              .u8(30, 0)
                                              .raw(atom("name", big().u16(4, 0).text("A001").str()))
                                              .str());
    const std::string data = big().u32(17982).text(std::string(9996, 'x')).str();
    const std::string pictures = track("vide", entry, media_header(30000, 10010));
    EXPECT_EQ(facts_of(movie(pictures + track("tmcd", tmcd, media_header(30000, 1001), {1, 1001, 32}), "qt  ",
                             data)),
              "MOV | 1920x1080 ProRes 422 4:2:2 10 bits 30000/1001 fps 10 frames | 00:10:00;00 track 2 | "
              "reel A001 | "
              "2025-12-31T00:00:00Z | 1001/3000 s | whole | brand: qt");
    const std::string early = big().u32(0xFFFFFFFF).text(std::string(9996, 'x')).str();
    EXPECT_EQ(facts_of(movie(track("tmcd", tmcd, media_header(30000, 1001), {1, 1001, 32}), "qt  ", early))
                  .find("track 1"),
              std::string::npos);
    // A part of the media, and a pause before it.
    const std::string edits = edit_list(big().u32(1000, 0xFFFFFFFF, 0x10000, 100, 3003, 0x10000).str(), 2);
    const std::string edited =
        facts_of(movie(track("vide", entry, media_header(30000, 10010), {}, edits), "isom"));
    EXPECT_NE(edited.find("MP4 |"), std::string::npos);
    EXPECT_NE(edited.find("| edit lists: track 1: 1.000 s empty, 0.100 s from 0.100 s"), std::string::npos)
        << edited;
    EXPECT_NE(edited.find("| 11011/10000 s"), std::string::npos) << edited;
    EXPECT_NE(edited.find("10 frames (3 played)"), std::string::npos) << edited;
    const std::string slow = edit_list(big().u32(200, 0, 0x8000).str(), 1);
    const std::string slowed =
        facts_of(movie(track("vide", entry, media_header(30000, 10010), {}, slow, 1, -1)));
    EXPECT_NE(slowed.find("0.200 s from 0.000 s at 0.5 times the speed"), std::string::npos) << slowed;
    EXPECT_NE(slowed.find("| mirrored: horizontally"), std::string::npos) << slowed;
    EXPECT_EQ(slowed.find("rotation"), std::string::npos) << slowed;
    // The main picture is one that is played, with its duration.
    const std::string part = edit_list(big().u32(100, 0, 0x10000).str(), 1);
    const std::string sounds = sound_entry("raw ", 0, 2, 8, "");
    const std::string disabled =
        facts_of(movie(track("vide", entry, media_header(30000, 10010), {}, "", 0) +
                       track("vide", picture_entry("apch", ""), media_header(30000, 10010), {}, part) +
                       track("soun", sounds, media_header(48000, 48000), {}, "", 0)));
    EXPECT_TRUE(disabled.starts_with("MOV | 1920x1080 ProRes 422 HQ ")) << disabled;
    EXPECT_NE(disabled.find("| 1001/10000 s"), std::string::npos) << disabled;
    EXPECT_NE(disabled.find("| disabled tracks: 1 (picture), 3 (sound)"), std::string::npos) << disabled;
    // Durations that differ.
    Samples uneven;
    uneven.times = big().u32(3, 4, 1001, 5, 2002, 1, 1001).str();
    const std::string varied =
        facts_of(movie(track("vide", entry, media_header(30000, 15015, 0x0002), uneven)));
    EXPECT_NE(varied.find("20000/1001 vfr 10 frames |"), std::string::npos) << varied;
    // Languages: of the Macintosh, three letters, and none.
    const auto spoken = [](uint32_t code) {
        return facts_of(
            movie(track("soun", sound_entry("raw ", 0, 2, 8, ""), media_header(48000, 10010, code))));
    };
    EXPECT_NE(spoken(2).find("PCM deu"), std::string::npos) << spoken(2);
    EXPECT_NE(spoken(0x1A41).find("PCM fra"), std::string::npos) << spoken(0x1A41);
    EXPECT_NE(spoken(0x55C4).find("PCM 10010 samples"), std::string::npos) << spoken(0x55C4);  // "und"
}

TEST(MovieFacts, Extent) {
    const std::string whole = movie(track("vide", picture_entry("apcn", ""), media_header(24000, 10010)));
    const auto state = [](const std::string &content) {
        const std::string text = facts_of(content);
        const size_t at = std::min(text.find("| cut"), text.find("| whole"));
        return at == std::string::npos ? text : text.substr(at + 2, text.find(" |", at) - at - 2);
    };
    EXPECT_EQ(state(whole), "whole");
    EXPECT_EQ(state(whole + std::string(100, 'x')), "whole");
    EXPECT_EQ(state(whole.substr(0, whole.size() - 1)), "cut the end of moov");
    EXPECT_EQ(state(whole.substr(0, 8000)), "cut no moov");
    // Zeros where the last tracks, or the last tables of one, would be.
    const std::string two = movie(track("soun", sound_entry("raw ", 0, 2, 8, ""), media_header(48000, 10)) +
                                  track("vide", picture_entry("apcn", ""), media_header(24000, 10010)));
    for (const char *type : {"trak", "minf", "stsz"}) {
        const size_t at = two.rfind(type) - 4;
        EXPECT_EQ(state(two.substr(0, at) + std::string(two.size() - at, '\0')),
                  "cut the end of moov (zeros)")
            << type;
    }
    EXPECT_EQ(
        state(movie(track("vide", picture_entry("apcn", ""), media_header(24000, 10010), {10, 1001, 32}),
                    "qt  ", std::string(10000, '\0'))),
        "cut data of track 1 (zeros)");
    EXPECT_EQ(
        state(movie(track("vide", picture_entry("v210", ""), media_header(24000, 10010), {10, 1001, 32}),
                    "qt  ", std::string(10000, '\0'))),
        "whole");
    const std::string beyond =
        track("vide", picture_entry("apcn", ""), media_header(24000, 10010), {10, 1001, 9000});
    EXPECT_EQ(state(movie(beyond + beyond)), "cut data of tracks 1 and 2");
    EXPECT_EQ(facts_of(atom("free", "noise") + "noise noise").substr(0, 3), " | ");
    // A first atom is its header at least.
    for (const auto &[size, is_movie] : {std::pair{2U, false}, {7U, false}, {8U, true}})
        EXPECT_EQ(facts_of(big().u32(size).text("wide").str() + whole).substr(0, 3) != " | ", is_movie)
            << size;
}

TEST(MovieFacts, Fragments) {
    const std::string sample = content_of(std::string(KELDUMP_SAMPLES) + "/quicktime/fragments.mov");
    Transcript transcript;
    SHOW(facts_of(sample));
    SHOW(facts_of(sample.substr(0, sample.size() - 200)));
    for (const char rest : {'\0', 'x'})
        EXPECT_EQ(facts_of(sample + std::string(300, rest)), facts_of(sample));
    SHOW(facts_of(content_of(std::string(KELDUMP_SAMPLES) + "/quicktime/h264-aac.mov")));
    SHOW(facts_of(content_of(std::string(KELDUMP_SAMPLES) + "/quicktime/prores-timecode.mov")));
}

// By the samples: of one size, of many, in packets, in fragments behind those of the header; what the
// description says only where samples say nothing.
TEST(MovieFacts, BitRates) {
    const std::string pictures = track("vide", picture_entry("apcn", ""), media_header(24000, 10010));
    EXPECT_EQ(bit_rates_of(movie(pictures)), "191808");
    const std::string wrong = atom("btrt", big().u32(0, 9, 9).str());
    EXPECT_EQ(bit_rates_of(movie(track("vide", picture_entry("apcn", wrong), media_header(24000, 10010)))),
              "191808");
    const std::string ima = sound_entry("ima4", 1, 2, 16, big().u32(64, 34, 68, 2).str());
    EXPECT_EQ(facts_of(movie(track("soun", ima, media_header(48000, 640)))).substr(6, 29),
              "2ch 48000 Hz 4 bits IMA ADPCM");
    const std::string samples = std::string(KELDUMP_SAMPLES) + "/quicktime/";
    EXPECT_EQ(bit_rates_of(content_of(samples + "h264-aac.mov")), "32760 129418");
    EXPECT_EQ(bit_rates_of(content_of(samples + "fragments.mov")), "115240");
}

// Boxes stand behind the palette of an entry; channels and a rate that a box tells.
TEST(MovieFacts, Entries) {
    const std::string palette = big().u32(0).u16(0, 1).zeros(16).str();
    std::string entry = picture_entry("png ", palette + atom("pasp", big().u32(4, 3).str()), 1);
    entry[85] = entry[84] = 0;  // the palette is here
    EXPECT_NE(facts_of(movie(track("vide", entry, media_header(24000, 10010)))).find("aspect 4/3"),
              std::string::npos);
    const std::string lossless = atom("dmlp", hex("1097C00FB7520000"));
    EXPECT_EQ(sound(sound_entry("mlpa", 0, 2, 16, lossless)), "6ch 96000 Hz TrueHD 5.1");
    EXPECT_EQ(sound(sound_entry("ms" + std::string("\0\x20", 2), 0, 2, 16, "")), "2ch 48000 Hz 4 bits ADPCM");
}

// Constant bit rates fill up the samples of MPEG video with zeros: a sample of zeros alone was not written.
TEST(MovieFacts, StuffedSamples) {
    const auto extent = [](const std::string &codec, size_t zeros) {
        const std::string data = std::string(10000 - zeros, 'x') + std::string(zeros, '\0');
        return extent_of(
            movie(track("vide", picture_entry(codec, ""), media_header(24000, 10010)), "qt  ", data),
            "a.mov");
    };
    EXPECT_EQ(extent("xd5c", 900), "whole");
    EXPECT_EQ(extent("xd5c", 1000), "cut data of track 1 (zeros)");
    EXPECT_EQ(extent("cvid", 1000), "cut data of track 1 (zeros)");
    EXPECT_EQ(extent("avc1", 900), "whole");  // of one size, as those of AVC-Intra
}

// A header with samples of its own before those of the fragments.
TEST(MovieFacts, FragmentsBehindSamples) {
    const std::string extends = atom("mvex", full("trex", big().u32(1, 1, 1001, 1000, 0).str()));
    const std::string fragment =
        atom("moof", atom("traf", full("tfhd", big().u32(1).str()) + full("trun", big().u32(5).str())));
    const std::string text =
        facts_of(movie(track("vide", picture_entry("apcn", ""), media_header(24000, 10010)) + extends) +
                 fragment + atom("mdat", std::string(5000, 'x')));
    EXPECT_NE(text.find("fps 15 frames"), std::string::npos) << text;
    EXPECT_NE(text.find(" | 1001/1600 s"), std::string::npos) << text;
    const std::string cut = movie(extends + atom("udta", std::string(50, 'x')));
    EXPECT_EQ(extent_of(cut.substr(0, cut.size() - 1), "a.mov"), "cut the end of moov");
    // All samples stand in the header.
    const std::string closed =
        facts_of(movie(track("vide", picture_entry("apcn", ""), media_header(24000, 10010)) + extends));
    EXPECT_NE(closed.find("24000/1001 fps 10 frames"), std::string::npos) << closed;
}

// Of many fragments behind an index some are looked at: the first sample may last longer, and others by a
// tick.
TEST(MovieFacts, IndexedFragments) {
    const auto indexed = [](uint32_t scale, uint32_t first, uint32_t odd, uint32_t even,
                            const std::string &other = "") {
        constexpr uint32_t kFragments = 45;
        constexpr uint32_t kSize = 80000;
        std::string fragments;
        std::string entries;
        uint32_t time = 0;
        for (uint32_t i = 0; i < kFragments; i++) {
            std::string samples;
            const uint32_t start = time;
            for (uint32_t k = 0; k < 4; k++) {
                const uint32_t duration = i + k == 0 ? first : k % 2 != 0 ? odd : even;
                samples += big().u32(duration, kSize / 4).str();
                time += duration;
            }
            const std::string fragment =
                atom("moof",
                     atom("traf", full("tfhd", big().u32(1).str()) + full("tfdt", big().u32(start).str()) +
                                      full("trun", big().u32(4).raw(samples).str(), 0x300))) +
                atom("mdat", std::string(kSize, 'x'));
            fragments += fragment;
            entries += big().u32(fragment.size(), time - start, 0x90000000).str();
        }
        const std::string extends = atom("mvex", full("trex", big().u32(1, 1).zeros(12).str()));
        const std::string rate = atom("btrt", big().u32(0, 0, 9000000).str());
        const std::string index =
            full("sidx", big().u32(1, scale, 0, 0).u16(0, kFragments).raw(entries).str());
        return movie(other + track("vide", picture_entry("apcn", rate), media_header(scale, 0), {0, 0, 0}) +
                     extends) +
               index + fragments;
    };
    const std::string longer = indexed(25, 3, 1, 1);
    EXPECT_NE(facts_of(longer).find(" 25 fps 180 frames | "), std::string::npos) << facts_of(longer);
    EXPECT_EQ(bit_rates_of(longer), "3956044");
    // Of several tracks what is told, unless that is more than all of the file.
    const std::string sounds =
        track("soun", sound_entry("raw ", 0, 2, 8, ""), media_header(48000, 0), {0, 0, 0});
    EXPECT_EQ(bit_rates_of(indexed(25, 1, 1, 1, sounds)), "-1 -1");
    const std::string uneven = facts_of(indexed(36, 2, 1, 2));
    EXPECT_NE(uneven.find(" 24 fps 180 frames | "), std::string::npos) << uneven;
}
