// Both sides of the bounds of the facts of AIFF, MPEG audio and AAC.
#include "audio/wave_of.h"

namespace {

std::string iff_chunk(const std::string &type, const std::string &data) {
    return big().text(type).u32(data.size()).raw(data).str();
}

std::string aiff_of(const std::string &kind, const std::string &codec, size_t bytes) {
    const std::string common = hex("0002 00000960 0010 400EBB80000000000000") + codec;
    return big()
        .text("FORM")
        .u32(0)
        .text(kind)
        .raw(iff_chunk("COMM", common))
        .raw(iff_chunk("SSND", std::string(8, '\0') + std::string(bytes, 'x')))
        .str();
}

// Frames of MP3 of 96 bytes at 48000 Hz and 32 kbit/s, of AAC of 100.
std::string mp3(size_t n) {
    std::string frames;
    for (size_t i = 0; i < n; i++) frames += hex("FFFB1464") + std::string(92, 'x');
    return frames;
}

std::string aac(size_t n) {
    std::string frames;
    for (size_t i = 0; i < n; i++) frames += hex("FFF14C800C9FFC") + std::string(93, 'x');
    return frames;
}

}  // namespace

TEST(SoundFacts, EdgesOfAiff) {
    Transcript transcript;
    const std::string plain = aiff_of("AIFF", "", 9600),
                      packets = aiff_of("AIFC", hex("696D6134 0000"), 9600);
    SHOW(facts_of(plain));
    // "COMM": channels at 4, frames at 6, bits at 10, rate at 12; "SSND": size at 0, offset at 4.
    ROWS("plain", boxes_changed(plain, rows));
    SHOW(facts_of(packets));
    ROWS("packets", boxes_changed(packets, rows));
    for (const char *codec : {"696D61", "696D6134"}) SHOW(facts_of(aiff_of("AIFC", hex(codec), 9600)));
    for (const size_t rest : {0, 1, 3, 4}) {
        const std::string piped = plain.substr(0, plain.rfind("SSND") + 16) + std::string(rest, 'x');
        SHOW(boxes_changed(piped, "SSND+0=00000000,COMM+6=00000000"));
    }
    const std::string none = plain.substr(0, plain.rfind("SSND"));
    SHOW(facts_of(none) + boxes_changed(none, "COMM+6=00000000 COMM+6=00000001"));
}

TEST(SoundFacts, EdgesOfTags) {
    Transcript transcript;
    const auto frame_of = [](const std::string &type, const std::string &text) {
        return iff_chunk(type, "").substr(0, 4) + big().u32(1 + text.size()).u16(0).u8(0).raw(text).str();
    };
    const auto tag = [](const std::string &frames, size_t size, unsigned version = 3, unsigned flags = 0) {
        return "ID3" + big().u8(version, 0, flags, 0, 0, size >> 7, size & 0x7F).raw(frames).str();
    };
    const std::string title = frame_of("TIT2", "Title");
    for (const size_t size : {15, 16, 17})
        SHOW(facts_of(tag(title, size) + std::string(std::max<size_t>(size, 16) - 16, '\0') + mp3(3)));
    for (const unsigned version : {2, 3, 4}) SHOW(facts_of(tag(title, 16, version) + mp3(3)));
    // A frame of a header and one byte; of a name that is none; of a text of no letters, of one, of many.
    const std::string last = title + frame_of("TSSE", "");
    SHOW(facts_of(tag(last, last.size()) + mp3(3)));
    for (const char *type : {"@IT2", "AIT2"}) {
        const std::string two = frame_of(type, "no") + title;
        SHOW(facts_of(tag(two, two.size()) + mp3(3)));
    }
    for (const size_t n : {1, 256, 257}) {
        const std::string text = frame_of("TIT2", std::string(n, 't'));
        EXPECT_NE((facts_of(tag(text, text.size()) + mp3(3)) + " |")
                      .find("title: " + std::string(std::min<size_t>(n, 256), 't') + " |"),
                  std::string::npos)
            << n;
    }
    for (const size_t n : {63, 64}) {
        std::string many;
        for (size_t i = 0; i < n; i++) many += frame_of("XXXX", "x");
        EXPECT_EQ(facts_of(tag(many + title, many.size() + title.size()) + mp3(3)).find("Title") !=
                      std::string::npos,
                  n == 63);
    }
    // Zeros behind a tag, tags at the end.
    for (const size_t n : {4095, 4096, 4097}) SHOW(facts_of(tag(title, 16) + std::string(n, '\0') + mp3(3)));
    SHOW(facts_of(tag(title, 16)) + "\n" + facts_of(tag(title, 17)) + "\n" + facts_of(tag(title, 16) + "x"));
    const std::string ape = "APETAGEX" + little().u32(2000, 40, 1, 0).zeros(8).str();
    const std::string short_ape = ape.substr(0, 12) + std::string(4, '\0') + ape.substr(16);
    SHOW(std::to_string(claimed_of(mp3(3) + std::string(40, 'y') + ape)) + " " +
         std::to_string(claimed_of(mp3(3) + short_ape)));
    SHOW(facts_of(ape) + "\n" + facts_of("x" + ape) + "\n" + facts_of("TAG" + std::string(125, ' ')));
    SHOW(facts_of(mp3(3) + "TAG" + std::string(125, ' ')) + "\n" +
         facts_of(mp3(3) + "TAG" + std::string(124, ' ')));
}

TEST(SoundFacts, EdgesOfStreams) {
    Transcript transcript;
    const std::string frames = mp3(4), adts = aac(4);
    SHOW(facts_of(frames) + " " + bit_rates_of(frames));
    ROWS("frames", facts_changed(frames, rows));
    SHOW(facts_of(adts) + " " + bit_rates_of(adts));
    ROWS("adts", facts_changed(adts, rows));
    for (const size_t zeros : {63, 64})
        SHOW(facts_of(mp3(2) + std::string(zeros, '\0')) + "\n" +
             facts_of(aac(2) + std::string(zeros, '\0')));
    // Frames that the first one counts.
    const auto counted = [](const std::string &kind, uint32_t n, uint32_t bytes, const std::string &rest,
                            const std::string &first = "FFFB1464") {
        const bool is_vbri = kind == "VBRI";
        const std::string told = is_vbri ? big().text(kind).zeros(6).u32(bytes, n).str()
                                         : big().text(kind).u32(3, n, bytes).raw(rest).str();
        std::string frame = hex(first) + std::string(32, '\0') + told;
        frame.resize(96);
        return frame + mp3(2);
    };
    for (const char *kind : {"Xing", "Info", "VBRI"}) {
        const std::string file = counted(kind, 2, 288, "LAME3.100xyz");
        SHOW(facts_of(file) + " " + bit_rates_of(file));
        SHOW(facts_changed(file,
                           "<287 >1 >127 >128 44=00000000 44=00000001 44=FFFFFFFE 44=FFFFFFFF 48=00000000 "
                           "48=00000001 48=0000011F 48=00000121 52=40 52=41 52=7A 52=7B 96=00000000"));
    }
    for (const size_t n : {124, 125})
        SHOW(facts_of(counted("Info", 2, 288, "") + "TAG" + std::string(n, ' ')));
    // One frame alone.
    for (const char *frame : {"FFF14C8000DFFC", "FFF14C8000FFFC", "FFF14C80011FFC"})
        SHOW(frame + (" " + facts_of(hex(frame))));
    SHOW(facts_of(mp3(1)) + "\n" + facts_of(mp3(1) + "x") + "\n" + facts_of(aac(1)) + "\n" +
         facts_of(aac(1) + "x"));
}

// What is walked through, and what follows by arithmetic.
TEST(SoundFacts, EdgesOfLargeStreams) {
    Transcript transcript;
    const std::string frames = mp3(1) + hex("FFFB2464") + std::string(188, 'x') + mp3(32765);
    const std::string adts = aac(31457) + std::string(28, 'x');
    ASSERT_EQ(frames.size(), adts.size());
    for (const std::string &file :
         {frames, frames + "x", adts, adts + "x", mp3(32769), mp3(32769) + std::string(49, 'x')})
        SHOW(facts_of(file) + " " + bit_rates_of(file));
}
