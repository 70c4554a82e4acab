#include <algorithm>
#include <cmath>
#include <iterator>
#include <string_view>
#include <utility>

#include "audio/facts_riff.h"
#include "common/codecs.h"
#include "main/facts_of.h"

namespace {

struct Aiff {
    Sound sound = {};
    uint64_t block = 0;  // bytes of a sample of all channels, 0 for compressed sound
    uint64_t start = 0;  // of the sound
    uint64_t told = 0;   // bytes of it
};

// An 80-bit number (IEEE 754, double extended).
double extended(Bytes b, uint64_t at) {
    const int exponent = (big16(b, at) & 0x7FFF) - 16383 - 63;
    return std::ldexp(static_cast<double>(big64(b, at + 2)), exponent);
}

void read_common(Bytes comm, Aiff &aiff) {
    Sound &sound = aiff.sound;
    sound.channels = big16(comm, 0);
    sound.samples = big32(comm, 2);
    sound.bits = big16(comm, 6);
    const double rate = extended(comm, 8);
    if (rate >= 1 && rate < 1e8) sound.rate = Ratio{std::llround(rate * 1000), 1000}.reduced();
    const uint32_t type = comm.size() >= 22 ? big32(comm, 18) : fourcc("NONE");
    const SoundCodec codec = sound_codec(type);
    sound.codec = codec.codec[0] != 0 ? codec.codec : fixed_text(comm, 18, 4);
    if (codec.bits != 0) sound.bits = codec.bits;
    const bool is_plain = sound.codec.starts_with("PCM") || sound.codec.ends_with("-law");
    if (is_plain) aiff.block = uint64_t{sound.channels} * ((sound.bits + 7) / 8);
    if (is_plain) return;
    sound.bits = codec.bits;
    // Told are packets of so many samples.
    constexpr std::pair<std::string_view, int64_t> kPackets[] = {
        {"IMA ADPCM", 64}, {"MACE 3:1", 6}, {"MACE 6:1", 6}, {"GSM", 160}, {"QCELP", 160}};
    const auto *const packet =
        std::ranges::find(kPackets, sound.codec, &std::pair<std::string_view, int64_t>::first);
    sound.samples = packet == std::end(kPackets) ? -1 : sound.samples * packet->second;
}

}  // namespace

void aiff_facts(Input &input, Facts &facts) {
    const Bytes file = input.bytes();
    if (!bytes_are(file, 8, "AIFF") && !bytes_are(file, 8, "AIFC")) return facts.format.clear();
    facts.format = fixed_text(file, 8, 4);
    Aiff aiff;
    each_chunk(file, 12, file.size(), true, [&](Chunk &chunk) {
        if (chunk.type == fourcc("COMM")) read_common(chunk.data, aiff);
        if (chunk.type == fourcc("SSND")) {
            aiff.start = chunk.start + 8 + big32(chunk.data);
            aiff.told = chunk.end - chunk.start;
        }
        if (chunk.type == fourcc("NAME")) facts.add_more("title", fixed_text(chunk.data, 0, 256));
        if (chunk.type == fourcc("ANNO")) facts.add_more("annotation", fixed_text(chunk.data, 0, 256));
        return true;
    });
    if (aiff.sound.channels == 0) {
        facts.problem = "no common chunk";
        return facts.cut(file.size(), "the headers");
    }
    const uint64_t rest = file.size() - std::min(aiff.start, file.size());
    const uint64_t needed = aiff.block * static_cast<uint64_t>(aiff.sound.samples);
    // What was written to a pipe tells as much as there can be, or nothing.
    const bool is_streamed = (aiff.told >= 0x7F000000 && needed > rest && aiff.told <= 0x7F000100) ||
                             (aiff.sound.samples == 0 && aiff.start > 0 && aiff.told <= 8 && rest > 0);
    if (is_streamed && aiff.block > 0) aiff.sound.samples = static_cast<int64_t>(rest / aiff.block);
    facts.lasts(aiff.sound.samples, aiff.sound.rate);
    facts.sounds.push_back(aiff.sound);
    if (aiff.start == 0 && aiff.sound.samples != 0) {
        facts.cut(file.size(), "no sound");
    } else if (!is_streamed) {
        const uint64_t end =
            aiff.block > 0 ? aiff.start + needed : aiff.start + aiff.told - std::min<uint64_t>(aiff.told, 8);
        facts.reaches(end, "the end of the data");
    }
}
