// Samples in hexadecimal and the timecode packets that they carry.
#include <gtest/gtest.h>

#include <algorithm>

#include "support/bytes_of.h"
#include "support/command.h"

namespace {

std::string wave(uint32_t channels, uint32_t bits, const std::string &samples) {
    const uint32_t block = channels * ((bits + 7) / 8);
    ByteWriter w = little();
    w.text("RIFF").u32(36 + samples.size()).text("WAVEfmt ").u32(16).u16(1, channels).u32(48000);
    w.u32(48000 * block).u16(block, bits).text("data").u32(samples.size()).raw(samples);
    return w.str();
}

// What follows the play length.
std::string dumped(const std::string &content, const std::vector<std::string> &switches) {
    const std::string dump = dump_of(content, "a.wav", switches);
    const std::string length = lines_from(dump, "   Length ", 1);
    EXPECT_NE(length, "");
    return dump.substr(dump.find(length) + length.size());
}

std::string packet(uint8_t checksum_error = 0) {
    const uint32_t sum = 0xFF + 0xAA + 1 + 2 + 3 + 4 + 0x2A + checksum_error;
    return big().hex("FFAA 01020304 00000000 2A 000000").u16(sum).str();
}

using Samples = std::vector<uint16_t>;

// 16-bit samples of one channel: 8 sync samples, 120 data samples, and the one on which the packet is
// complete.
Samples carrying(const std::string &bytes) {
    Samples samples(8, 0xFFF0);
    for (size_t i = 8; i < 128; i++) {
        const bool bit = static_cast<uint8_t>(bytes[i / 8]) >> (7 - i % 8) & 1;
        samples.push_back(bit ? 0xFFF3 : 0xFFF4);
    }
    samples.push_back(0);
    return samples;
}

std::string interleaved(const std::vector<Samples> &channels, ByteWriter w = little()) {
    for (size_t i = 0; i < channels[0].size(); i++) {
        for (const Samples &channel : channels) w.u16(channel[i]);
    }
    return w.str();
}

Samples after(size_t frames, Samples samples) {
    samples.insert(samples.begin(), frames, 0x1234);
    return samples;
}

}  // namespace

TEST(AudioSamples, Hexadecimal) {
    Transcript transcript;
    const std::string tail(32, '\0');  // the search for the format wants 64 bytes behind its chunk
    const std::string zeros = "  0000 0000 \n  0000 0000 \n  0000 0000 \n  0000 0000 \n";
    EXPECT_EQ(dumped(wave(2, 16, "\x34\x12\x78\x56" + tail), {"-a"}), "  1234 5678 \n" + zeros + zeros);
    SHOW(lines_from(dumped(wave(1, 24, "\x01\x02\x03" + std::string(30, 'a')), {"-a"}), "  ", 2));
    SHOW(lines_from(dumped(wave(3, 20, "abcdefghi" + std::string(27, 'z')), {"-a"}), "  ", 1));
    EXPECT_EQ(lines_from(dumped(wave(1, 8, "\x80" + tail), {"-a"}), "  ", 2), "  80 \n  00 \n");
    EXPECT_EQ(dumped(wave(2, 16, tail), {}), "");
    // The file ends inside a frame: what is there is shown, and the line ends.
    std::string cut = wave(2, 16, std::string(32, '\x11'));
    EXPECT_EQ(dumped(little().raw(cut).at(40).u32(32).str(), {"-a"}).size(), 8U * 13);
    cut[40] = 30;
    EXPECT_EQ(lines_from(dumped(cut, {"-a"}), "  1111 1111 "), dumped(cut, {"-a"}));
    EXPECT_EQ(dumped(wave(1, 1, "\x12\x34" + std::string(30, '\0')), {"-a"}).substr(0, 12), "  12 \n  34 \n");
    EXPECT_EQ(dumped(wave(1, 9, "\x34\x12" + std::string(30, '\0')), {"-a"}).substr(0, 8), "  1234 \n");
}

TEST(AudioSamples, TimecodeInOneChannel) {
    Transcript transcript;
    // The sample on which a packet is complete counts for no other.
    Samples twice = carrying(packet());
    const Samples second = twice;
    twice.pop_back();
    twice.insert(twice.end(), second.begin(), second.end());
    SHOW(dumped(wave(1, 16, interleaved({twice})), {"-t"}));
    const std::string at_start = interleaved({carrying(packet())});
    EXPECT_EQ(dumped(wave(1, 16, at_start), {"-t"}), "0.000000 01020304/42 \n");
    // The search starts 63 frames before the sample behind the last one that was no sync sample.
    SHOW(dumped(wave(1, 16, interleaved({after(100, carrying(packet()))})), {"-t"}));
    SHOW(dumped(wave(1, 16, interleaved({after(48064, carrying(packet()))})), {"-t"}));
    SHOW(dumped(wave(1, 16, interleaved({after(1, carrying(packet()))})), {"-t"}));
    EXPECT_EQ(dumped(wave(1, 16, interleaved({carrying(packet(1))})), {"-t"}), "0.000000 ERROR\n");
    // Seven samples are no sync, nor are those below FFF0.
    Samples broken = after(1, carrying(packet()));
    broken.insert(broken.begin(), 7, 0xFFF0);
    EXPECT_EQ(dumped(wave(1, 16, interleaved({broken})), {"-t"}), "0.998833 01020304/42 \n");
    broken = carrying(packet());
    broken[4] = 0xFFEF;
    EXPECT_EQ(dumped(wave(1, 16, interleaved({broken})), {"-t"}), "");
    // Samples of one byte have no second one.
    EXPECT_EQ(dumped(wave(1, 8, std::string(200, '\xFF')), {"-t"}), "");
    // Complete on the 129th sample only.
    EXPECT_EQ(dumped(wave(1, 16, at_start.substr(0, 256)), {"-t"}), "");
}

TEST(AudioSamples, TimecodeInChannelsAtOnce) {
    Transcript transcript;
    const Samples none(129, 0);
    const std::string both = interleaved({carrying(packet()), none, none, carrying(packet())});
    EXPECT_EQ(dumped(wave(4, 16, both), {"-t"}), "0.000000 01020304/42 01020304/42 \n");
    const std::string last = interleaved({none, none, none, carrying(packet())});
    EXPECT_EQ(dumped(wave(4, 16, last), {"-t"}), "0.000000 " + std::string(30, ' ') + "01020304/42 \n");
    SHOW(lines_from(dumped(wave(2, 16, interleaved({none, carrying(packet())})), {"-a", "-t"}),
                    "  0000 0000 "));
    // Channels beyond the sixteenth are read, but not searched.
    std::vector<Samples> many(18, none);
    many[15] = many[16] = carrying(packet());
    SHOW(dumped(wave(18, 16, interleaved(many)), {"-t"}));
}

TEST(AudioSamples, BigEndianInAiff) {
    const auto dump = [](uint32_t channels, uint32_t frames, uint32_t bits, const std::string &samples,
                         const char *view, uint32_t offset = 0) {
        const std::string common =
            big().text("COMM").u32(18).u16(channels).u32(frames).u16(bits).zeros(10).str();
        const std::string sound = big().text("SSND").u32(8 + samples.size(), offset, 0).raw(samples).str();
        const std::string body = "AIFF" + common + sound;
        return lines_from(dump_of(big().text("FORM").u32(body.size()).raw(body).str(), "a.aif", {view}),
                          "PTR");
    };
    const std::string samples = interleaved({carrying(packet())}, big());
    EXPECT_EQ(dump(1, 129, 16, samples, "-t"), "PTR 00000036\n0.000000 01020304/42 \n");
    EXPECT_EQ(dump(1, 2, 16, samples, "-a"), "PTR 00000036\n  fff0 \n  fff0 \n");
    EXPECT_EQ(dump(1, 2, 16, samples, "-a", 0xFFFFFF00), "PTR ffffff36\nError: seek failed\n");
    // Frames and samples that the file cuts.
    const std::string start = "PTR 00000036\n";
    EXPECT_EQ(dump(2, 2, 16, samples.substr(0, 6), "-a"), start + "  fff0 fff0 \n  fff0 \n");
    EXPECT_EQ(dump(2, 1, 16, samples.substr(0, 6), "-a"), start + "  fff0 fff0 \n");
    EXPECT_EQ(dump(1, 3, 16, samples.substr(0, 5), "-a"), start + "  fff0 \n  fff0 \n");
    EXPECT_EQ(dump(1, 1, 8, "a", "-a"), start + "  61 \n");
    EXPECT_EQ(dump(1, 1, 8, "ab", "-a"), start + "  61 \n");
    // Frames without bytes, as far as the budget goes.
    EXPECT_EQ(dump(2, 2, 0, samples, "-a"), "PTR 00000036\n    \n    \n");
    EXPECT_EQ(dump(0, 1, 16, samples, "-a"), "PTR 00000036\n  \n");
    EXPECT_EQ(dump(0, 1000, 16, samples, "-a").size(), 13U + 1000 * 3);
    EXPECT_LT(dump(0, 1 << 30, 16, samples, "-a").size(), 300'000U);
}

// Chunks whose samples lie beside each other are all shown; samples that many chunks claim are not.
TEST(AudioSamples, OfManyChunks) {
    const auto line_count = [](uint32_t frames, size_t chunk_count, const std::string &samples) {
        std::string chunks = big().text("COMM").u32(18).u16(1).u32(frames).u16(8).zeros(10).str();
        for (size_t i = 0; i < chunk_count; i++) {
            chunks += big().text("SSND").u32(8 + samples.size(), 0, 0).raw(samples).str();
        }
        const std::string form = big().text("FORM").u32(4 + chunks.size()).text("AIFF").raw(chunks).str();
        const std::string dump = dump_of(form, "a.aif", {"-a"});
        return static_cast<size_t>(std::count(dump.begin(), dump.end(), '\n'));
    };
    EXPECT_EQ(line_count(1000, 100, std::string(1000, 'a')) / 1000, 100U);
    EXPECT_LT(line_count(1 << 20, 2000, ""), 500'000U);
}
