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
