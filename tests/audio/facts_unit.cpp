#include <gtest/gtest.h>

#include "audio/wave_of.h"

TEST(WaveFacts, Formats) {
    const std::string pcm = format(1, 2, 16);
    EXPECT_EQ(facts_of(wave(pcm + chunk("data", kSilence))),
              "WAVE | 2ch 48000 Hz 16 bits PCM 2400 samples | 1/20 s | whole");
    EXPECT_EQ(facts_of(wave(format(1, 2, 16, "", 1) + chunk("data", kSilence))),
              "WAVE | 2ch 48000 Hz 16 bits PCM 2400 samples | 1/20 s | whole");
    const std::string guid = hex("0300000000001000800000AA00389B71");
    EXPECT_EQ(facts_of(wave(format(0xFFFE, 6, 32, little().u16(22, 32).u32(0x3F).raw(guid).str()) +
                            chunk("data", kSilence))),
              "WAVE | 6ch 48000 Hz 32 bits PCM float 5.1 400 samples | 1/120 s | whole");
    EXPECT_EQ(facts_of(wave(format(0xFFFE, 6, 32, little().u16(22, 32).u32(3).raw(guid).str()) +
                            chunk("data", kSilence))),
              "WAVE | 6ch 48000 Hz 32 bits PCM float 400 samples | 1/120 s | whole");
    const std::string ds64 = chunk("ds64", little().u64(0, 9600, 2400).u32(0).str());
    EXPECT_EQ(facts_of(wave(ds64 + pcm + chunk("data", kSilence, 0xFFFFFFFF), "BW64")),
              "WAVE BW64 | 2ch 48000 Hz 16 bits PCM 2400 samples | 1/20 s | whole");
    // A size in the table is that of another chunk, before the data or behind them.
    const std::string table = chunk("ds64", little().u64(0, 9600, 2400).u32(1).text("axml").u64(100).str());
    const std::string sound = chunk("data", kSilence, 0xFFFFFFFF);
    const std::string xml = chunk("axml", std::string(100, '<'), 0xFFFFFFFF);
    for (const std::string &chunks : {xml + sound, sound + xml})
        EXPECT_EQ(facts_of(wave(table + pcm + chunks, "BW64")),
                  "WAVE BW64 | 2ch 48000 Hz 16 bits PCM 2400 samples | 1/20 s | whole");
}

// Codecs by an identifier, bits by what is behind the format, a bit rate by the data.
TEST(WaveFacts, CodedSound) {
    const std::string fact = chunk("fact", little().u32(4800).str());
    const auto told = [&](const std::string &fields) {
        return facts_of(wave(fields + fact + chunk("data", std::string(4800, 'x'))));
    };
    const std::string plus = hex("AF87FBA7022D42FBA4D405CD93843BDD");
    EXPECT_EQ(told(format(0xFFFE, 2, 16, little().u16(22, 0).u32(3).raw(plus).str())),
              "WAVE | 2ch 48000 Hz E-AC-3 stereo 4800 samples | 1/10 s | whole");
    const std::string info = little().zeros(10).hex("0BB80370").zeros(20).str();
    EXPECT_EQ(told(format(0xF1AC, 2, 16, little().u16(34).raw(info).str())),
              "WAVE | 2ch 48000 Hz 24 bits FLAC stereo 4800 samples | 1/10 s | whole");
    const std::string flac = hex("ACF1000000001000800000AA00389B71");
    EXPECT_EQ(told(format(0xFFFE, 2, 16, little().u16(56, 0).u32(3).raw(flac).raw(info).str())),
              "WAVE | 2ch 48000 Hz 24 bits FLAC stereo 4800 samples | 1/10 s | whole");
    EXPECT_EQ(bit_rates_of(wave(format(0x55, 2, 0, "", 0) + fact + chunk("data", std::string(4800, 'x')))),
              "384000");
}

TEST(WaveFacts, Extent) {
    const std::string pcm = format(1, 2, 16);
    const auto state = [](const std::string &content) {
        const std::string text = facts_of(content);
        return text.substr(text.find(" s |") == std::string::npos ? text.rfind("s") : text.find(" s |") + 5);
    };
    EXPECT_EQ(state(wave(pcm + chunk("data", kSilence, 9601))), "cut the end of the data");
    EXPECT_EQ(facts_of(wave(pcm)), "WAVE | 2ch 48000 Hz 16 bits PCM | cut no data");
    for (const uint32_t streamed : {0xFFFFFFFFU, 0x7FFFF000U, 0x7F000050U})
        EXPECT_EQ(facts_of(wave(pcm + chunk("data", kSilence, streamed))),
                  "WAVE | 2ch 48000 Hz 16 bits PCM 2400 samples | 1/20 s");
    // A chunk behind the sound; some count a pad byte that is not there.
    const std::string sound = pcm + chunk("data", kSilence);
    EXPECT_EQ(state(wave(sound + chunk("LIST", "INFO", 5))), "whole");
    EXPECT_EQ(state(wave(sound + chunk("LIST", "INFO", 500))), "cut the last chunk");
    EXPECT_EQ(state(wave(sound + chunk("ZZZZ", "what lies behind", 500))), "whole");
    // An odd chunk without a pad byte.
    EXPECT_EQ(state(wave(pcm + chunk("junk", "odd") + chunk("data", kSilence))), "whole");
    EXPECT_EQ(state(wave(pcm + little().text("data").u32(0).raw(kSilence).str())), "open no sizes");
}

TEST(WaveFacts, Broadcast) {
    const std::string bext = chunk("bext", little()
                                               .text("Scene", 256)
                                               .text("RECORDER", 32)
                                               .zeros(32)
                                               .text("2026-11-2610:00:00")
                                               .u64(48000ULL * 3600 + 1601)
                                               .u16(2)
                                               .zeros(64)
                                               .u16(0xF6FC - 65536 + 65536, 500, 0x7FFF, 0x7FFF, 0x7FFF)
                                               .zeros(180)
                                               .str());
    EXPECT_EQ(facts_of(wave(format(1, 1, 16) + bext + chunk("data", kSilence))),
              "BWF | 1ch 48000 Hz 16 bits PCM 4800 samples | 01:00:00.033 bext | by RECORDER | "
              "2026-11-26T10:00:00 | 1/10 s | whole | "
              "description: Scene | originator: RECORDER | loudness: -23.08 LUFS | loudness range: 5.00 LU");
    const std::string ixml = chunk("iXML",
                                   "<BWFXML><SCENE>12&amp;A</SCENE><TAKE>3</TAKE><TAPE>R7</"
                                   "TAPE><SPEED><TIMECODE_RATE>30000/1001</TIMECODE_RATE>"
                                   "<TIMECODE_FLAG>NDF</TIMECODE_FLAG></SPEED><TRACK_LIST><TRACK><NAME>Boom</"
                                   "NAME></TRACK></TRACK_LIST></BWFXML>");
    const std::string text = facts_of(wave(format(1, 1, 16) + bext + ixml + chunk("data", kSilence)));
    EXPECT_NE(text.find("| 00:59:56:13 bext | reel R7 |"), std::string::npos) << text;
    EXPECT_NE(text.find("scene: 12&A | take: 3 | tracks: Boom"), std::string::npos) << text;
    // Numbers that no recorder writes give no time.
    const auto with_times = [](const std::string &high, const std::string &rate) {
        return facts_of(wave(format(1, 1, 16) +
                             chunk("iXML", "<BWFXML><TIMESTAMP_SAMPLES_SINCE_MIDNIGHT_HI>" + high +
                                               "</TIMESTAMP_SAMPLES_SINCE_MIDNIGHT_HI><TIMESTAMP_SAMPLES_"
                                               "SINCE_MIDNIGHT_LO>4611686018427387904</TIMESTAMP_SAMPLES_"
                                               "SINCE_MIDNIGHT_LO><TIMESTAMP_SAMPLE_RATE>" +
                                               rate + "</TIMESTAMP_SAMPLE_RATE></BWFXML>") +
                             chunk("data", kSilence)));
    };
    for (const char *high : {"0", "2147483647", "4611686018427387904"}) {
        for (const char *rate : {"48000", "4611686018427387904"})
            EXPECT_EQ(with_times(high, rate).find("iXML"), std::string::npos);
    }
}

TEST(SoundFacts, Samples) {
    Transcript transcript;
    const std::string directory = std::string(KELDUMP_SAMPLES) + "/audio/";
    for (const char *name :
         {"broadcast.wav", "large.wav", "mono16.aiff", "picture.avi", "sowt.aifc", "stereo24.aiff"})
        SHOW(name + std::string(": ") + facts_of(content_of(directory + name)));
    const std::string avi = content_of(directory + "picture.avi");
    SHOW(facts_of(avi.substr(0, avi.size() / 2)));
    // Frames of 144 bytes behind a tag; noise.
    std::string frames = "ID3" + hex("03000000000000");
    for (int i = 0; i < 10; i++) frames += hex("FFFB1464") + std::string(92, 'x');
    SHOW(facts_of(frames));
    SHOW(facts_of(frames.substr(0, frames.size() - 1)));
    SHOW(facts_of(hex("FFFB1464") + std::string(200, 'x')));
    // Two programs in one; sound of which packets are counted, of a known size or not.
    EXPECT_NE(facts_of(hex("FFFB1480") + std::string(92, 'x')).find("dual mono"), std::string::npos);
    const auto packets = [](const char *codec) {
        const std::string common =
            hex("0001 0000000A 0010 400EBB80000000000000") + codec + std::string(2, '\0');
        return facts_of(big()
                            .text("FORM")
                            .u32(66)
                            .text("AIFC")
                            .text("COMM")
                            .u32(24)
                            .raw(common)
                            .text("SSND")
                            .u32(18)
                            .zeros(18)
                            .str());
    };
    EXPECT_EQ(packets("ima4"), "AIFC | 1ch 48000 Hz 4 bits IMA ADPCM 640 samples | 1/75 s | whole");
    EXPECT_EQ(packets("QDM2"), "AIFC | 1ch 48000 Hz QDesign 2 | whole");
}

// Of the picture by the file's index; of sound as coded. A streamed size of samples of 21 bytes.
TEST(SoundFacts, BitRates) {
    const std::string directory = std::string(KELDUMP_SAMPLES) + "/audio/";
    EXPECT_EQ(bit_rates_of(content_of(directory + "picture.avi")), "248100 -1");
    EXPECT_TRUE(facts_of(wave(format(0x11, 2, 4, "", 2048) + chunk("data", kSilence)))
                    .starts_with("WAVE | 2ch 48000 Hz 4 bits IMA ADPCM"));
    EXPECT_EQ(extent_of(wave(format(1, 7, 24) + chunk("data", kSilence, 0x7FFFEFF6)), "a.wav"), "unknown");
    std::string frames;  // of 1044 and 1045 bytes
    for (int i = 0; i < 10; i++)
        frames += hex(i % 5 == 0 ? "FFF5E004" : "FFF5E204") + std::string(i % 5 == 0 ? 1040 : 1041, 'x');
    EXPECT_EQ(bit_rates_of(frames), "160000");
    const std::string slow = hex("FFE33864") + std::string(212, 'x');  // 24 kbit/s at 8 kHz
    EXPECT_TRUE(facts_of(slow + slow).starts_with("MP3 | 2ch 8000 Hz MP3 stereo 1152 samples"));
}

// DV that holds its sound; coded sound behind a first frame that is large.
TEST(SoundFacts, Avi) {
    const auto avi = [](const std::string &streams, const std::string &chunks) {
        const std::string headers = chunk("LIST", "hdrl" + streams) + chunk("LIST", "movi" + chunks);
        return little().text("RIFF").u32(4 + headers.size()).text("AVI ").raw(headers).str();
    };
    const auto stream = [](const std::string &kind, const std::string &format) {
        const std::string header = little().text(kind).zeros(12).u32(1, 25, 0, 1).zeros(20).str();
        return chunk("LIST", "strl" + chunk("strh", header) + format);
    };
    const std::string dv = big().hex("1F0700BF78").at(4323).hex("50000000C0").zeros(2000).str();
    EXPECT_EQ(facts_of(avi(stream("iavsdvsd", chunk("strf", std::string(32, '\0'))), chunk("00__", dv))),
              "AVI | 720x576 DV 4:2:0 8 bits 25 fps 1 frames | 2ch 48000 Hz 16 bits PCM | 1/25 s");
    const std::string picture = little().u32(40, 64, 48, 0x180001).text("XVID").zeros(20).str();
    const std::string ac3 = hex("0B77 0000 14403F00") + std::string(1000, 'x');
    EXPECT_EQ(
        facts_of(avi(stream("vidsXVID", chunk("strf", picture)) +
                         stream("auds    ", "strf" + format(0x2000, 2, 16).substr(4)),
                     chunk("00dc", std::string(20000, 'x')) + chunk("01wb", ac3))),
        "AVI | 64x48 MPEG-4 4:2:0 8 bits 25 fps 1 frames | 2ch 48000 Hz AC-3 1.1 1920 samples | 1/25 s");
}

// A file that is too large to be walked through ends with frames of MP3 or AAC all the same.
TEST(SoundFacts, LargeStreams) {
    for (const std::string &frame :
         {hex("FFFB1464") + std::string(92, 'x'), hex("FFF14C800C1FFC") + std::string(89, 'x')}) {
        std::string frames;
        while (frames.size() < 3200000) frames += frame;
        EXPECT_EQ(extent_of(frames, "a.mp3"), "unknown");
        EXPECT_EQ(extent_of(frames.substr(0, frames.size() - 1), "a.mp3"), "cut the last frame");
        for (const size_t zeros : {5000, 100000})
            EXPECT_EQ(extent_of(frames.replace(frames.size() - zeros, zeros, zeros, '\0'), "a.mp3"),
                      "cut the last frames (zeros)");
    }
}

// What was written to a pipe has no sizes; an index that the header tells of is missed; frames end in zeros.
TEST(SoundFacts, Ends) {
    ByteWriter aiff_bytes = big();
    aiff_bytes.text("FORM").u32(0).text("AIFFCOMM").u32(18).u16(1).u32(0).u16(16);
    aiff_bytes.hex("400EBB80000000000000").text("SSND").u32(0).zeros(8).fill('x', 4800);
    const std::string aiff = aiff_bytes.str();
    EXPECT_EQ(facts_of(aiff), "AIFF | 1ch 48000 Hz 16 bits PCM 2400 samples | 1/20 s");
    const std::string avi = content_of(std::string(KELDUMP_SAMPLES) + "/audio/picture.avi");
    EXPECT_EQ(extent_of(avi.substr(0, avi.rfind("idx1")), "a.avi"), "cut the index");
    EXPECT_EQ(extent_of(avi.substr(0, avi.size() - 20) + std::string(20, '\0'), "a.avi"),
              "cut the index (zeros)");
    // Frames of 96 bytes, of which the first has their number.
    const std::string sound = hex("FFFB1464") + std::string(92, 'x');
    const std::string info =
        hex("FFFB1464") + big().zeros(32).text("Info").u32(3, 2, 288).zeros(44).str() + sound;
    const std::string tagged = info + sound + "TAG" + std::string(125, ' ');
    EXPECT_EQ(extent_of(tagged, "a.mp3"), "whole");
    EXPECT_EQ(extent_of(tagged.substr(0, tagged.size() - 1), "a.mp3"), "cut the tag's end");
    EXPECT_EQ(extent_of(info + hex("FFFB1464") + std::string(92, '\0'), "a.mp3"), "whole");  // silence
    EXPECT_EQ(extent_of(info.substr(0, 191) + std::string(97, '\0'), "a.mp3"), "cut the last frames");
    std::string frames;
    for (int i = 0; i < 4; i++) frames += hex("FFF14C800C9FFC") + std::string(93, 'x');
    EXPECT_EQ(bit_rates_of(frames, "a.aac"), "37500");
    EXPECT_EQ(extent_of(frames, "a.aac"), "unknown");
    EXPECT_EQ(extent_of(frames + std::string(200, '\0'), "a.aac"), "cut the last frames (zeros)");
}
