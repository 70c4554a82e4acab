#include <algorithm>
#include <bit>
#include <iterator>
#include <string_view>

#include "common/elementary.h"
#include "common/names.h"

std::string speaker_layout(uint64_t mask, uint32_t channels) {
    struct Layout {
        uint64_t mask;
        const char *name;
    };
    constexpr Layout kLayouts[] = {
        {0x4, "mono"},  {0x3, "stereo"},      {0xB, "2.1"},       {0x7, "3.0"},       {0xF, "3.1"},
        {0x33, "quad"}, {0x603, "quad"},      {0x107, "4.0"},     {0x37, "5.0"},      {0x607, "5.0"},
        {0x3F, "5.1"},  {0x60F, "5.1"},       {0x707, "6.0"},     {0x70F, "6.1"},     {0x637, "7.0"},
        {0x63F, "7.1"}, {0xFF, "7.1 (wide)"}, {0x2D60F, "5.1.4"}, {0x2D63F, "7.1.4"},
    };
    constexpr const char *kSpeakers[] = {"L",  "R",  "C",  "LFE", "Lb",  "Rb",  "Lc",  "Rc",  "Cs",
                                         "Ls", "Rs", "Ts", "Vhl", "Vhc", "Vhr", "Tbl", "Tbc", "Tbr"};
    if (static_cast<uint32_t>(std::popcount(mask)) != channels) return "";
    for (const Layout &layout : kLayouts) {
        if (layout.mask == mask) return layout.name;
    }
    std::string names;
    for (size_t i = 0; i < std::size(kSpeakers); i++) {
        if ((mask >> i & 1) != 0) names += std::string(names.empty() ? "" : " ") + kSpeakers[i];
    }
    return mask >> std::size(kSpeakers) == 0 ? names : "";
}

void set_ac3_mode(uint32_t mode, bool lfe, Sound &sound) {
    constexpr uint32_t kChannels[] = {2, 1, 2, 3, 3, 4, 4, 5};
    constexpr const char *kNames[2][8] = {
        {"dual mono", "mono", "stereo", "3.0", "2/1", "4.0", "quad", "5.0"},
        {"dual mono + LFE", "1.1", "2.1", "3.1", "2/1.1", "4.1", "4.1", "5.1"}};
    sound.channels = kChannels[mode & 7] + (lfe ? 1 : 0);
    sound.layout = kNames[lfe ? 1 : 0][mode & 7];
}

namespace {

constexpr uint32_t kAacRates[] = {96000, 88200, 64000, 48000, 44100, 32000, 24000,
                                  22050, 16000, 12000, 11025, 8000,  7350};

// Channels by channel configuration (ISO 14496-3, table 1.19).
struct AacChannels {
    uint32_t channels;
    const char *layout;
};
constexpr AacChannels kAacChannels[] = {
    {0, ""},    {1, "mono"}, {2, "stereo"},     {3, "3.0"},   {4, "4.0"},
    {5, "5.0"}, {6, "5.1"},  {8, "7.1 (wide)"}, {0, ""},      {0, ""},
    {0, ""},    {7, "6.1"},  {8, "7.1"},        {24, "22.2"}, {8, "5.1.2"},
};

uint32_t object_type(BitReader &bits) {
    const uint32_t type = bits.get(5);
    return type == 31 ? 32 + bits.get(6) : type;
}

uint32_t aac_rate(BitReader &bits) {
    const uint32_t index = bits.get(4);
    if (index == 15) return bits.get(24);
    return index < std::size(kAacRates) ? kAacRates[index] : 0;
}

// Elements of a program config (4.4.1.1), of which each channel pair has two channels: in front, at the
// sides, behind and of low frequency.
void read_program(BitReader &bits, Sound &sound) {
    constexpr CodeName kLayouts[] = {{0x1000, "mono"}, {0x2000, "stereo"}, {0x2001, "2.1"},  {0x3000, "3.0"},
                                     {0x3001, "3.1"},  {0x3010, "4.0"},    {0x2020, "quad"}, {0x3020, "5.0"},
                                     {0x3021, "5.1"},  {0x3200, "5.0"},    {0x3201, "5.1"},  {0x3221, "7.1"}};
    bits.skip(4 + 2 + 4);
    const uint32_t groups[3] = {bits.get(4), bits.get(4), bits.get(4)};
    const uint32_t effects = bits.get(2);
    bits.skip(3 + 4);
    for (const unsigned length : {4U, 4U, 3U}) {
        if (bits.flag()) bits.skip(length);
    }
    uint32_t all = effects;
    uint32_t places = 0;
    for (const uint32_t n : groups) {
        uint32_t channels = 0;
        for (uint32_t i = 0; i < n; i++) {
            channels += bits.flag() ? 2 : 1;
            bits.skip(4);
        }
        all += channels;
        places = places << 4 | std::min(channels, 15U);
    }
    if (bits.is_over() || all == 0) return;
    sound.channels = all;
    sound.layout = name_of(kLayouts, places << 4 | effects);
}

void set_aac_channels(uint32_t configuration, Sound &sound) {
    if (configuration == 0 || configuration >= std::size(kAacChannels)) return;
    sound.channels = kAacChannels[configuration].channels;
    sound.layout = kAacChannels[configuration].layout;
}

const char *aac_name(uint32_t type) {
    switch (type) {
        case 5: return "HE-AAC";
        case 22: return "ER BSAC";
        case 23: return "AAC-LD";
        case 29: return "HE-AAC v2";
        case 32: return "MP1";
        case 33: return "MP2";
        case 34: return "MP3";
        case 36: return "ALS";
        case 39: return "AAC-ELD";
        case 42: return "USAC";
        default: return "AAC";
    }
}

}  // namespace

std::string configured_layout(uint32_t configuration) {
    return configuration < std::size(kAacChannels) ? kAacChannels[configuration].layout : "";
}

bool aac_configuration(Bytes config, Sound &sound) {
    BitReader bits(config);
    uint32_t type = object_type(bits);
    if (type == 0 || config.size() < 2) return false;
    const char *name = aac_name(type);
    uint32_t rate = aac_rate(bits);
    const uint32_t configuration = bits.get(4);
    const bool parametric = type == 29;
    if (type == 5 || type == 29) {  // the rate and kind below its extension
        rate = aac_rate(bits);
        type = object_type(bits);
    }
    if (rate == 0 || rate > 192000) return false;
    sound.codec = name;
    sound.rate = {rate, 1};
    set_aac_channels(configuration, sound);
    const bool is_general = (type >= 1 && type <= 4) || type == 6 || type == 7 || type == 17 || type == 19 ||
                            type == 20 || type == 22 || type == 23;
    if (is_general && configuration == 0) {
        bits.skip(1);
        if (bits.flag()) bits.skip(14);
        bits.skip(1);
        read_program(bits, sound);
    } else if (is_general && name == std::string_view("AAC")) {
        // What a writer adds behind for decoders that know it (1.6.5.1).
        bits.skip(1);
        if (bits.flag()) bits.skip(14);
        bits.skip(1);
        if (bits.get(11) == 0x2B7 && object_type(bits) == 5 && bits.flag()) {
            sound.codec = "HE-AAC";
            if (const uint32_t doubled = aac_rate(bits)) sound.rate = {doubled, 1};
            if (bits.get(11) == 0x548 && bits.flag()) {
                sound.codec = "HE-AAC v2";
                sound.channels = 2;
                sound.layout = "stereo";
            }
        }
    }
    if (parametric) {
        sound.channels = 2;
        sound.layout = "stereo";
    }
    return true;
}

bool adts_frame(Bytes frame, Sound &sound) {
    BitReader bits(frame.sub(0, 256));
    if (bits.get(12) != 0xFFF || frame.size() < 7) return false;
    bits.skip(1);
    if (bits.get(2) != 0) return false;
    bits.skip(2);
    const bool has_check = !bits.flag();
    const uint32_t rate = bits.get(4);
    bits.skip(1);
    const uint32_t configuration = bits.get(3);
    bits.skip(4);
    if (rate >= std::size(kAacRates) || bits.get(13) < 7) return false;
    sound.codec = "AAC";
    sound.rate = {kAacRates[rate], 1};
    set_aac_channels(configuration, sound);
    bits.skip(11 + 2 + (has_check ? 16 : 0));
    if (configuration == 0 && bits.get(3) == 5) read_program(bits, sound);  // a program config comes first
    return true;
}

int64_t ac3_bit_rate(uint32_t code) {
    constexpr uint32_t kBitRates[] = {32,  40,  48,  56,  64,  80,  96,  112, 128, 160,
                                      192, 224, 256, 320, 384, 448, 512, 576, 640};
    return code < std::size(kBitRates) ? int64_t{kBitRates[code]} * 1000 : -1;
}

namespace {

// What a dependent substream behind a frame of E-AC-3 adds to its channels (annex E, 1.3.1.8).
void add_substream(Bytes frame, uint32_t mode, bool lfe, Sound &sound) {
    // Places from left on: L C R Ls Rs, pairs and others above and around, LFE.
    constexpr uint32_t kModes[] = {0xA000, 0x4000, 0xA000, 0xE000, 0xA100, 0xE100, 0xB800, 0xF800};
    constexpr uint32_t kPairs = 0x0674;
    BitReader bits(frame);
    if (bits.get(16) != 0x0B77 || bits.get(2) != 1) return;
    bits.skip(3 + 11 + 4);
    const bool is_dual = bits.get(3) == 0;
    bits.skip(1 + 5);
    for (int i = is_dual ? 2 : 1; i > 0; i--) {
        bits.skip(5);
        if (bits.flag()) bits.skip(8);
    }
    const uint32_t added = bits.flag() ? bits.get(16) : 0;
    if (added == 0) return;
    const uint32_t all = added | kModes[mode] | (lfe ? 1 : 0);
    sound.channels = static_cast<uint32_t>(std::popcount(all) + std::popcount(all & kPairs));
    sound.layout = all == 0xFA01 ? "7.1" : "";
}

}  // namespace

bool ac3_frame(Bytes frame, Sound &sound) {
    constexpr uint32_t kRates[] = {48000, 44100, 32000};
    if (big16(frame) != 0x0B77 || frame.size() < 8) return false;
    const unsigned id = frame[5] >> 3;
    const unsigned rate = frame[4] >> 6;
    if (id > 10) {  // E-AC-3 (annex E)
        BitReader bits(frame.from(4));
        const uint32_t code = bits.get(2);
        const uint32_t second = bits.get(2);  // of the rate, or the number of blocks of 256 samples
        const bool is_dependent = frame[2] >> 6 == 1;
        if (id > 16 || (code == 3 && second == 3) || is_dependent) return false;
        sound.codec = "E-AC-3";
        sound.rate = {code == 3 ? kRates[second] / 2 : kRates[code], 1};
        constexpr uint32_t kBlocks[] = {1, 2, 3, 6};
        const uint32_t samples = 256 * (code == 3 ? 6 : kBlocks[second]);
        const uint32_t words = (big16(frame, 2) & 0x7FF) + 1U;
        sound.bit_rate = int64_t{16} * words * sound.rate.n / samples;
        const uint32_t mode = bits.get(3);
        const bool lfe = bits.flag();
        set_ac3_mode(mode, lfe, sound);
        add_substream(frame.from(2 * words), mode, lfe, sound);
        return true;
    }
    if (rate > 2 || (frame[4] & 0x3F) >= 38) return false;
    BitReader bits(frame.from(6));
    const uint32_t mode = bits.get(3);
    if ((mode & 1) != 0 && mode != 1) bits.skip(2);
    if ((mode & 4) != 0) bits.skip(2);
    if (mode == 2) bits.skip(2);
    sound.codec = "AC-3";
    sound.rate = {kRates[rate] >> (id > 8 ? id - 8 : 0), 1};
    sound.bit_rate = ac3_bit_rate((frame[4] & 0x3FU) / 2) >> (id > 8 ? id - 8 : 0);
    set_ac3_mode(mode, bits.flag(), sound);
    return true;
}

// ETSI TS 102 114, 5.3.1: the core.
bool dts_frame(Bytes frame, Sound &sound) {
    constexpr uint32_t kRates[] = {0,     8000, 16000, 32000, 0,     0,     11025, 22050,
                                   44100, 0,    0,     12000, 24000, 48000, 0,     0};
    constexpr uint32_t kChannels[] = {1, 2, 2, 2, 2, 3, 3, 4, 4, 5, 6, 6, 6, 7, 8, 8};
    constexpr const char *kLayouts[] = {"mono", "dual mono", "stereo", "stereo", "stereo",
                                        "3.0",  "2/1",       "4.0",    "quad",   "5.0"};
    BitReader bits(frame);
    if (bits.get(32) != 0x7FFE8001) return false;
    bits.skip(1 + 5 + 1);
    const uint32_t blocks = bits.get(7) + 1;  // of 32 samples
    const uint32_t bytes = bits.get(14) + 1;
    const uint32_t mode = bits.get(6);
    const uint32_t rate = kRates[bits.get(4)];
    bits.skip(5 + 10);
    const bool lfe = bits.get(2) % 3 != 0;
    if (mode >= std::size(kChannels) || rate == 0 || bits.is_over()) return false;
    sound.channels = kChannels[mode] + (lfe ? 1 : 0);
    sound.layout = mode >= std::size(kLayouts) ? "" : mode == 9 && lfe ? "5.1" : kLayouts[mode];
    if (lfe && mode < 9) sound.layout += " + LFE";
    sound.rate = {rate, 1};
    sound.bit_rate = int64_t{bytes} * rate / (4 * blocks);
    return true;
}

// IEC 61834-4, 8.1: in the fourth audio block of a sequence.
bool dv_sound(Bytes frame, Sound &sound) {
    constexpr uint32_t kRates[] = {48000, 44100, 32000};
    const Bytes pack = frame.from((6 + 3 * 16) * 80 + 3);
    const unsigned rate = pack[4] >> 3 & 7;
    const bool is_16_bits = (pack[4] & 7) == 0;
    if (pack[0] != 0x50 || rate >= std::size(kRates)) return false;
    sound.codec = "PCM";
    sound.rate = {kRates[rate], 1};
    sound.bits = is_16_bits ? 16 : 12;
    sound.channels = is_16_bits ? 2 : 4;
    return true;
}

bool truehd_format(uint32_t format, Sound &sound) {
    // Loudspeakers by the bits of an assignment, as WAVE has them; the last four have no place there.
    constexpr uint32_t kSpeakers[] = {0x3, 0x4, 0x8, 0x600, 0x5000, 0xC0, 0x30, 0x100, 0x800};
    constexpr uint32_t kPairs = 0x679;
    const uint32_t eight = format & 0x1FFF;
    const uint32_t places = eight != 0 ? eight : format >> 15 & 0x1F;
    uint64_t mask = 0;
    for (unsigned i = 0; i < std::size(kSpeakers); i++) mask |= (places >> i & 1) * kSpeakers[i];
    sound.channels = static_cast<uint32_t>(std::popcount(places) + std::popcount(places & kPairs));
    sound.layout = places >> std::size(kSpeakers) == 0 ? speaker_layout(mask, sound.channels) : "";
    sound.rate = {int64_t{(format & 0x80000000) != 0 ? 44100 : 48000} << (format >> 28 & 7), 1};
    return true;
}

bool truehd_frame(Bytes frame, Sound &sound) {
    return big32(frame, 4) == 0xF8726FBA && truehd_format(big32(frame, 8), sound);
}

MpegAudioFrame mpeg_audio_frame(Bytes frame) {
    // In kbit/s by version (1; 2 and 2.5) and layer (ISO 11172-3, 2.4.2.3; 13818-3, 2.4.2.3).
    constexpr uint16_t kBitRates[2][3][15] = {
        {{0, 32, 64, 96, 128, 160, 192, 224, 256, 288, 320, 352, 384, 416, 448},
         {0, 32, 48, 56, 64, 80, 96, 112, 128, 160, 192, 224, 256, 320, 384},
         {0, 32, 40, 48, 56, 64, 80, 96, 112, 128, 160, 192, 224, 256, 320}},
        {{0, 32, 48, 56, 64, 80, 96, 112, 128, 144, 160, 176, 192, 224, 256},
         {0, 8, 16, 24, 32, 40, 48, 56, 64, 80, 96, 112, 128, 144, 160},
         {0, 8, 16, 24, 32, 40, 48, 56, 64, 80, 96, 112, 128, 144, 160}}};
    constexpr uint32_t kRates[] = {44100, 48000, 32000};
    const uint32_t header = big32(frame);
    const uint32_t version = header >> 19 & 3;  // 3: 1, 2: 2, 0: 2.5
    const uint32_t layer = 4 - (header >> 17 & 3);
    const uint32_t bit_rate = header >> 12 & 15;
    const uint32_t rate = header >> 10 & 3;
    MpegAudioFrame found;
    const bool valid = header >> 21 == 0x7FF && version != 1 && layer < 4 && bit_rate > 0 && bit_rate < 15 &&
                       rate < 3 && (header & 3) != 2;
    if (!valid) return found;
    found.layer = layer;
    found.is_version_1 = version == 3;
    found.channels = (header >> 6 & 3) == 3 ? 1 : 2;
    found.is_dual = (header >> 6 & 3) == 2;
    found.rate = kRates[rate] >> (version == 3 ? 0 : version == 2 ? 1 : 2);
    found.bit_rate = kBitRates[version == 3 ? 0 : 1][layer - 1][bit_rate] * 1000U;
    found.samples = layer == 1 ? 384 : layer == 3 && version != 3 ? 576 : 1152;
    const uint32_t padding = header >> 9 & 1;
    found.bytes = layer == 1 ? (12 * found.bit_rate / found.rate + padding) * 4
                             : found.samples / 8 * found.bit_rate / found.rate + padding;
    return found;
}

void set_sound(const MpegAudioFrame &frame, Sound &sound) {
    constexpr const char *kNames[] = {"", "MP1", "MP2", "MP3"};
    sound.codec = kNames[frame.layer];
    sound.channels = frame.channels;
    sound.layout = frame.is_dual ? "dual mono" : frame.channels == 1 ? "mono" : "stereo";
    sound.rate = {frame.rate, 1};
}

const char *counted_layout(uint32_t channels) {
    constexpr const char *kLayouts[] = {"", "mono", "stereo", "3.0", "quad", "5.0", "5.1", "6.1", "7.1"};
    return name_at(kLayouts, channels);
}

bool flac_information(Bytes information, Sound &sound) {
    BitReader bits(information.from(10));
    const uint32_t rate = bits.get(20);
    const uint32_t channels = bits.get(3);
    if (information.size() < 34) return false;
    sound.channels = channels + 1;
    sound.bits = bits.get(5) + 1;
    if (rate > 0) sound.rate = {rate, 1};
    if (sound.layout.empty()) sound.layout = counted_layout(sound.channels);
    return true;
}

namespace {

// LATM in LOAS (ISO 14496-3, 1.7): the configuration of one program, whose fields are whole bytes behind the
// sync word.
bool loas_frame(Bytes b, Sound &sound) {
    return big16(b) >> 5 == 0x2B7 && (b[3] & 0xC0) == 0 && aac_configuration(b.sub(5, 64), sound);
}

bool aac_sound(Bytes data, Bytes setup, Sound &sound) {
    if (!setup.empty()) return aac_configuration(setup, sound);
    return adts_frame(data, sound) || loas_frame(data, sound);
}

bool flac_sound(Bytes, Bytes setup, Sound &sound) { return flac_information(setup, sound); }

bool mpeg_sound(Bytes b, Bytes, Sound &sound) {
    const MpegAudioFrame frame = mpeg_audio_frame(b);
    if (frame.bytes == 0 || (b.has(frame.bytes, 4) && mpeg_audio_frame(b.from(frame.bytes)).bytes == 0))
        return false;
    set_sound(frame, sound);
    sound.bit_rate = frame.bit_rate;
    return true;
}

template <bool (*read)(Bytes, Sound &)>
bool frame_of_sound(Bytes data, Bytes, Sound &sound) {
    return read(data, sound);
}

struct SoundReader {
    std::string_view codec;
    bool (*read)(Bytes data, Bytes setup, Sound &sound);
};

constexpr SoundReader kSoundReaders[] = {
    {"MP2", mpeg_sound},
    {"MP3", mpeg_sound},
    {"AAC", aac_sound},
    {"AC-3", frame_of_sound<ac3_frame>},
    {"E-AC-3", frame_of_sound<ac3_frame>},
    {"DTS", frame_of_sound<dts_frame>},
    {"TrueHD", frame_of_sound<truehd_frame>},
    {"FLAC", flac_sound},
};

}  // namespace

bool stream_sound(Bytes data, Sound &sound, Bytes setup) {
    const auto *reader = std::ranges::find(kSoundReaders, sound.codec, &SoundReader::codec);
    return reader == std::end(kSoundReaders) || reader->read(data, setup, sound);
}
