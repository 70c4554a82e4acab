#include <algorithm>
#include <bit>
#include <iterator>
#include <string_view>

#include "common/boxes.h"
#include "common/elementary.h"
#include "common/names.h"

// What the stream itself says of the picture, where the container does not know better.
void take_stream(const Picture &stream, Picture &picture) {
    if (picture.width == 0) {
        picture.width = stream.width;
        picture.height = stream.height;
    }
    const uint32_t width = stream.coded_width != 0 ? stream.coded_width : stream.width;
    const uint32_t height = stream.coded_height != 0 ? stream.coded_height : stream.height;
    if (width != 0 && (width != picture.width || height != picture.height)) {
        picture.coded_width = width;
        picture.coded_height = height;
    }
    if (stream.bits != 0) picture.bits = stream.bits;
    if (!stream.components.empty()) picture.components = stream.components;
    if (stream.scan != Scan::unknown) picture.scan = stream.scan;
    if (stream.pixel_aspect.is_set()) picture.pixel_aspect = stream.pixel_aspect;
    if (stream.bit_rate > 0) picture.bit_rate = stream.bit_rate;
    picture.colour = stream.colour;
    picture.mastering = stream.mastering;
    picture.light = stream.light;
}

// VC-3 (SMPTE ST 2019-1): compression identifiers and what they stand for.
bool vc3_frame(Bytes frame, Picture &picture) {
    if (!bytes_are(frame, 0, "\0\0\2\x80") && big32(frame) >> 8 != 3) return false;
    constexpr CodeName kKinds[] = {
        {1270, "DNxHR 444"}, {1271, "DNxHR HQX"}, {1272, "DNxHR HQ"}, {1273, "DNxHR SQ"}, {1274, "DNxHR LB"}};
    const uint32_t id = big32(frame, 40);
    picture.codec = name_of(kKinds, id, "DNxHD");
    constexpr uint32_t kDepths[] = {0, 8, 10, 12, 0, 0, 0, 0};
    picture.bits = kDepths[frame[33] >> 5];
    // RGB whose macroblocks are transformed, as the first one tells behind its scale of 11 bits, is YCbCr.
    const bool is_transformed = (frame[uint64_t{big16(frame, 2)} + 1] & 0x10) != 0;
    const bool is_rgb = ((frame[44] & 1) != 0 || id == 1256) && !is_transformed;
    const bool is_444 = id == 1256 || id == 1270;
    picture.components = !is_444 ? "4:2:2" : is_rgb ? "RGB" : "4:4:4";
    // The first field, which is the upper one, has 2 there, the other 3.
    picture.scan = (frame[5] & 2) == 0   ? Scan::progressive
                   : (frame[5] & 1) == 0 ? Scan::top_first
                                         : Scan::interlaced;
    return true;
}

std::string jpeg_chroma(Bytes components) {
    const auto shared = [&](unsigned shift) {
        const unsigned chroma = components[4] >> shift & 15;
        return chroma != 0 ? (components[1] >> shift & 15) / chroma : 0U;
    };
    return chroma_text(shared(4), shared(0));
}

bool prores_frame(Bytes frame, Picture &picture) {
    if (!bytes_are(frame, 4, "icpf") || big16(frame, 8) < 20) return false;
    picture.width = big16(frame, 16);
    picture.height = big16(frame, 18);
    const uint8_t flags = frame[20];
    const bool has_alpha = (frame[25] & 0x0F) != 0;
    picture.components = flags >> 6 == 3 ? (has_alpha ? "4:4:4:4" : "4:4:4") : "4:2:2";
    constexpr Scan kScans[] = {Scan::progressive, Scan::top_first, Scan::bottom_first, Scan::unknown};
    picture.scan = kScans[flags >> 2 & 3];
    const auto code = [&](uint64_t at) { return frame[at] == 0 || frame[at] == 2 ? -1 : frame[at]; };
    picture.colour = {code(22), code(23), code(24), -1};
    return true;
}

// IEC 61834 and SMPTE 314M: lines and chroma stand in the first block's header, the display's shape in the
// video auxiliary blocks, which are packs of five bytes.
bool dv_frame(Bytes frame, Picture &picture) {
    constexpr uint64_t kBlock = 80;
    if (frame[0] >> 5 != 0 || !frame.has(0, 6 * kBlock)) return false;
    const bool is_625 = (frame[3] & 0x80) != 0;
    const uint8_t signal = frame[5 * kBlock + 51] & 0x1F;  // of the pack of the video's source
    const bool has_signal = frame[5 * kBlock + 48] == 0x60 && picture.codec == "DV";
    picture.bits = 8;
    if (has_signal && signal >= 4) {
        picture.codec = signal == 4 ? "DVCPRO50" : "DVCPRO HD";
        picture.components = "4:2:2";
    }
    if (picture.codec == "DV") picture.components = is_625 && (frame[4] & 7) == 0 ? "4:2:0" : "4:1:1";
    for (uint64_t i = 0; i < 45 && picture.codec != "DVCPRO HD"; i++) {
        const uint64_t at = (3 + i / 15) * kBlock + 3 + i % 15 * 5;
        const int64_t lines = is_625 ? 576 : 480;
        if (frame[at] != 0x61) continue;
        const bool is_wide = (frame[at + 2] & 7) == 2 || (frame[at + 2] & 7) == 7;
        picture.pixel_aspect = Ratio{(is_wide ? 16 : 4) * lines, (is_wide ? 9 : 3) * 720}.reduced();
        break;
    }
    return true;
}

const char *png_components(uint8_t type) {
    constexpr const char *kComponents[] = {"Y", "", "RGB", "palette", "YA", "", "RGBA"};
    return name_at(kComponents, type);
}

uint32_t dv_hd_columns(uint32_t height, Ratio rate) {
    const bool is_60 = rate.d == 1001 || rate.value() > 50.5 || rate.value() == 30;
    return height <= 720 ? 960 : is_60 ? 1280 : 1440;
}

namespace {

// A sequence header of MPEG video, which may come later than the first bytes.
bool mpeg_picture(Bytes data, Bytes, Picture &picture) {
    uint64_t at = start_code(data);
    for (int i = 0; i < 1000 && at < data.size() && data[at + 3] != 0xB3; i++) at = start_code(data, at + 4);
    return mpeg_sequence(data.from(at), picture);
}

// The video object layer (ISO 14496-2, 6.2.3) of the decoder's configuration or of the stream.
bool mpeg4_picture(Bytes data, Bytes setup, Picture &picture) {
    if (!setup.empty()) data = setup;
    uint64_t at = start_code(data);
    while (at < data.size() && (data[at + 3] & 0xF0) != 0x20) at = start_code(data, at + 3);
    BitReader bits(data.from(at + 4));
    bits.skip(9);
    const uint32_t version = bits.flag() ? bits.get(7) >> 3 : 1;
    const uint32_t aspect = bits.get(4);
    if (aspect <= 5) picture.pixel_aspect = sample_aspect(aspect);
    if (aspect == 15) {
        const int64_t n = bits.get(8);
        picture.pixel_aspect = Ratio{n, bits.get(8)}.reduced();
    }
    if (bits.flag()) {
        bits.skip(3);
        if (bits.flag()) bits.skip(79);
    }
    const uint32_t shape = bits.get(2);
    if (shape == 3 && version != 1) bits.skip(4);
    bits.skip(1);
    const uint32_t resolution = bits.get(16);
    bits.skip(1);
    if (bits.flag())
        picture.rate =
            rate_of(resolution, int64_t{bits.get(static_cast<unsigned>(std::bit_width(resolution - 1)))});
    if (shape != 0 || resolution == 0) return false;
    bits.skip(1);
    picture.width = bits.get(13);
    bits.skip(1);
    picture.height = bits.get(13);
    bits.skip(1);
    picture.scan = bits.flag() ? Scan::interlaced : Scan::progressive;
    picture.bits = 8;
    picture.components = "4:2:0";
    return !bits.is_over() && picture.width > 0 && picture.height > 0;
}

// The markers of SMPTE ST 2042's kin that CineForm begins with: numbers of a tag and a value.
bool cineform_picture(Bytes data, Bytes, Picture &picture) {
    constexpr const char *kFormats[] = {"", "4:2:2", "Bayer", "RGB", "RGBA"};
    for (uint64_t at = 0; at < 512 && data.has(at, 4); at += 4) {
        const uint16_t value = big16(data, at + 2);
        if (big16(data, at) == 84) picture.components = name_at(kFormats, value);
        if (big16(data, at) == 70 && value <= 16) picture.bits = value;
    }
    return picture.bits != 0;
}

// What an encoder of HuffYUV leaves behind its format: bits a pixel, or those of a component and its shifts.
bool huffyuv_picture(Bytes, Bytes setup, Picture &picture) {
    if (setup.size() < 4) return false;
    constexpr CodeName kOfAPixel[] = {{12, "4:2:0"}, {16, "4:2:2"}, {24, "RGB"}, {32, "RGBA"}};
    const bool is_old = setup[3] == 0;
    const uint8_t flags = setup[2];
    picture.bits = is_old ? 8 : (setup[1] >> 4) + 1U;
    picture.components = is_old             ? name_of(kOfAPixel, setup[1])
                         : (flags & 3) == 0 ? "Y"
                         : (flags & 1) == 0 ? "RGB"
                                            : chroma_text(1U << (setup[1] & 3), 1U << (setup[1] >> 2 & 3));
    const bool is_short = picture.components == "RGB" || picture.components == "Y";
    if (!is_old && (flags & 4) != 0) picture.components += is_short ? "A" : ":4";
    picture.scan = (flags & 0x30) == 0x20 ? Scan::progressive : Scan::unknown;
    return !picture.components.empty();
}

// The range coder of FFV1 (RFC 9043, 3.8.1) with its default transitions.
class RangeReader {
 public:
    explicit RangeReader(Bytes bytes) : bytes_(bytes), low_(big16(bytes)) {
        constexpr int64_t kOne = int64_t{1} << 32;
        constexpr int kMost = 248;
        const auto step = [](int64_t p) { return p + (((kOne - p) * (kOne / 20) + kOne / 2) >> 32); };
        const auto place = [](int64_t p) { return static_cast<int>((256 * p + kOne / 2) >> 32); };
        int last = 0;
        for (int64_t p = kOne / 2; last < 256; p = step(p)) {
            const int next = std::max(place(p), last + 1);
            if (last > 0 && next <= kMost) one_[last] = static_cast<uint8_t>(next);
            if (next > kMost) break;
            last = next;
        }
        for (int i = 256 - kMost; i <= kMost; i++) {
            if (one_[i] == 0)
                one_[i] = static_cast<uint8_t>(std::clamp(place(step((i * kOne + 128) >> 8)), i + 1, kMost));
        }
    }
    bool bit(uint8_t &state) {
        const uint32_t part = range_ * state >> 8;
        range_ -= part;
        const bool is_one = low_ >= range_;
        if (is_one) {
            low_ -= range_;
            range_ = part;
            state = one_[state];
        } else {
            state = static_cast<uint8_t>(256 - one_[256 - state]);
        }
        if (range_ < 0x100) {
            range_ <<= 8;
            low_ = low_ << 8 | bytes_[at_++];
        }
        return is_one;
    }
    bool is_over() const { return at_ > bytes_.size(); }
    uint32_t number(uint8_t (&states)[32], bool is_signed = false) {
        if (bit(states[0])) return 0;
        int length = 0;
        while (length < 24 && bit(states[1 + std::min(length, 9)])) length++;
        uint32_t value = 1;
        for (int i = length - 1; i >= 0; i--) value = value << 1 | (bit(states[22 + std::min(i, 9)]) ? 1 : 0);
        if (is_signed) bit(states[11 + std::min(length, 10)]);
        return value;
    }

 private:
    Bytes bytes_;
    uint64_t at_ = 2;
    uint32_t range_ = 0xFF00;
    uint32_t low_;
    uint8_t one_[257] = {};
};

// Parameters of FFV1 (RFC 9043, 4.2): in a record of their own, or in the first frame of versions 0 and 1.
bool ffv1_picture(Bytes data, Bytes setup, Picture &picture) {
    RangeReader reader(setup.empty() ? data : setup);
    uint8_t states[32];
    std::ranges::fill(states, uint8_t{128});
    uint8_t key = 128;
    if (setup.empty() && !reader.bit(key)) return false;
    const uint32_t version = reader.number(states);
    if (version > 4 || (version < 2) != setup.empty()) return false;
    if (version >= 3) reader.number(states);
    if (reader.number(states) > 1) {
        for (int i = 1; i < 256; i++) reader.number(states, true);
    }
    const bool is_rgb = reader.number(states) == 1;
    const uint32_t bits = version > 0 ? reader.number(states) : 8;
    const bool has_chroma = reader.bit(states[0]);
    const uint32_t across = reader.number(states);
    const uint32_t down = reader.number(states);
    const bool alpha = reader.bit(states[0]);
    picture.bits = bits == 0 ? 8 : bits;
    picture.components = is_rgb ? (alpha ? "RGBA" : "RGB")
                         : !has_chroma
                             ? (alpha ? "YA" : "Y")
                             : chroma_text(across < 4 ? 1U << across : 0, down < 4 ? 1U << down : 0);
    if (!is_rgb && has_chroma && alpha) picture.components += ":4";
    return !reader.is_over() && picture.bits >= 8 && picture.bits <= 16 && across < 8 && down < 8;
}

bool png_picture(Bytes data, Bytes, Picture &picture) {
    if (!bytes_are(data, 12, "IHDR")) return false;
    picture.bits = data[24];
    picture.components = png_components(data[25]);
    return true;
}

// A codestream, in boxes, whose header shows what its components are, or without.
bool jpeg2000_picture(Bytes data, Bytes, Picture &picture) {
    const Bytes header = find_box(data, "jp2h");
    const Bytes colour = find_box(header, "colr");
    const uint32_t space = colour[0] == 1 ? big32(colour, 3) : 0;
    if (space == 16) picture.components = big16(find_box(header, "ihdr"), 8) == 4 ? "RGBA" : "RGB";
    if (!find_box(header, "pclr").empty()) picture.components = "palette";
    const Bytes stream = data.from(find_in(data.sub(0, 2048), "\xFF\x4F\xFF\x51"));
    const bool is_known = codestream_picture(stream, picture);
    if (space == 18 && picture.components.empty()) picture.components = "4:4:4";
    return is_known;
}

// ISO/IEC 21122-1, A.4: the picture header and the component table behind the capabilities.
bool jpegxs_picture(Bytes data, Bytes, Picture &picture) {
    const Bytes stream = data.from(find_in(data.sub(0, 1024), "\xFF\x10\xFF\x50"));
    const char *components = "";
    if (!bytes_are(stream, 0, "\xFF\x10\xFF\x50")) return false;
    for (uint64_t at = 2; stream[at] == 0xFF && stream[at + 1] != 0x20;
         at += 2 + uint64_t{big16(stream, at + 2)}) {
        if (stream[at + 1] == 0x12) {
            picture.width = big16(stream, at + 12);
            picture.height = big16(stream, at + 14);
            const uint8_t transform = stream[at + 25] & 15;
            components = stream[at + 20] == 1 ? "Y" : transform == 1 ? "RGB" : transform == 3 ? "Bayer" : "";
        } else if (stream[at + 1] == 0x13) {
            picture.bits = stream[at + 4];
            picture.components =
                *components ? components : chroma_text(stream[at + 7] >> 4, stream[at + 7] & 15);
        }
    }
    return picture.bits != 0;
}

// The sequence header of VC-1's advanced profile (SMPTE ST 421, 6.1), of a stream or behind a setup's fields.
bool vc1_picture(Bytes data, Bytes setup, Picture &picture) {
    constexpr int64_t kRates[] = {0, 24000, 25000, 30000, 50000, 60000, 48000, 72000};
    const Bytes stream = setup.empty() ? data : setup;
    const std::string raw = raw_payload(stream.from(find_in(stream, std::string_view("\0\0\1\x0F", 4))), 4);
    BitReader bits(Bytes(raw.data(), raw.size()));
    const bool is_advanced = bits.get(2) == 3;
    bits.skip(3 + 2 + 3 + 5 + 1);
    picture.coded_width = 2 * (bits.get(12) + 1);
    picture.coded_height = 2 * (bits.get(12) + 1);
    bits.skip(1);
    const bool may_be_interlaced = bits.flag();
    bits.skip(3);
    if (bits.flag() || !may_be_interlaced) picture.scan = Scan::progressive;
    picture.width = picture.coded_width;
    picture.height = picture.coded_height;
    picture.bits = 8;
    picture.components = "4:2:0";
    if (bits.flag()) {
        picture.width = bits.get(14) + 1;
        picture.height = bits.get(14) + 1;
        const uint32_t aspect = bits.flag() ? bits.get(4) : 0;
        picture.pixel_aspect = sample_aspect(aspect);
        if (aspect == 15) {
            const int64_t n = bits.get(8) + 1;
            picture.pixel_aspect = Ratio{n, int64_t{bits.get(8)} + 1}.reduced();
        }
        if (bits.flag()) {
            if (bits.flag()) {
                picture.rate = rate_of(int64_t{bits.get(16)} + 1, 32);
            } else {
                const uint32_t n = bits.get(8);
                const uint32_t d = bits.get(4);
                if (n < std::size(kRates) && (d == 1 || d == 2)) picture.rate = rate_of(kRates[n], 999 + d);
            }
        }
        if (bits.flag()) {
            const uint32_t codes[] = {bits.get(8), bits.get(8), bits.get(8)};
            picture.colour = {colour_code(codes[0]), colour_code(codes[1]), colour_code(codes[2]), -1};
        }
    }
    return is_advanced && !bits.is_over();
}

// The sequence header of Dirac and VC-2 (SMPTE ST 2042-1, 11): a base format, and what differs from it.
bool dirac_picture(Bytes data, Bytes, Picture &picture) {
    enum : uint8_t { p, top, bottom };
    struct Base {
        uint16_t width, height;
        uint8_t chroma, scan, rate, aspect, range;  // their codes
    };
    constexpr Base kBases[] = {
        {640, 480, 2, p, 1, 1, 1},     {176, 120, 2, p, 9, 2, 1},      {176, 144, 2, p, 10, 3, 1},
        {352, 240, 2, p, 9, 2, 1},     {352, 288, 2, p, 10, 3, 1},     {704, 480, 2, p, 9, 2, 1},
        {704, 576, 2, p, 10, 3, 1},    {720, 480, 1, bottom, 4, 2, 3}, {720, 576, 1, top, 3, 3, 3},
        {1280, 720, 1, p, 7, 1, 3},    {1280, 720, 1, p, 6, 1, 3},     {1920, 1080, 1, top, 4, 1, 3},
        {1920, 1080, 1, top, 3, 1, 3}, {1920, 1080, 1, p, 7, 1, 3},    {1920, 1080, 1, p, 6, 1, 3},
        {2048, 1080, 0, p, 2, 1, 4},   {4096, 2160, 0, p, 2, 1, 4},    {3840, 2160, 1, p, 7, 1, 3},
        {3840, 2160, 1, p, 6, 1, 3},   {7680, 4320, 1, p, 7, 1, 3},    {7680, 4320, 1, p, 6, 1, 3},
        {1920, 1080, 1, p, 1, 1, 3},   {720, 486, 1, bottom, 4, 2, 3}};
    constexpr Scan kScans[] = {Scan::progressive, Scan::top_first, Scan::bottom_first};
    constexpr Ratio kRates[] = {{},      {24000, 1001}, {24, 1}, {25, 1},       {30000, 1001}, {30, 1},
                                {50, 1}, {60000, 1001}, {60, 1}, {15000, 1001}, {25, 2},       {48, 1}};
    constexpr Ratio kDiracAspects[] = {{}, {1, 1}, {10, 11}, {12, 11}, {40, 33}, {16, 11}, {4, 3}};
    constexpr uint8_t kBits[] = {0, 8, 8, 10, 12, 10, 12, 16, 16};
    constexpr const char *kDiracChroma[] = {"4:4:4", "4:2:2", "4:2:0"};
    constexpr char kSequenceHeader[] = {'B', 'B', 'C', 'D', 0};
    BitReader bits(data.from(find_in(data.sub(0, 2048), {kSequenceHeader, sizeof kSequenceHeader}) + 13));
    const auto number = [&] {  // Exp-Golomb, interleaved
        uint32_t value = 1;
        while (!bits.is_over() && !bits.flag()) value = value << 1 | bits.get(1);
        return value - 1;
    };
    const auto code = [&](uint32_t base) { return bits.flag() ? number() : base; };
    const auto ratio = [&](const auto &known, uint32_t base) {
        if (const uint32_t i = code(base); i > 0) return i < std::size(known) ? known[i] : Ratio{};
        const int64_t n = number();
        return Ratio{n, number()}.reduced();
    };
    for (int i = 0; i < 4; i++) number();  // version, profile and level
    const uint32_t index = number();
    const Base &base = kBases[index < std::size(kBases) ? index : 0];
    const bool has_size = bits.flag();
    picture.width = has_size ? number() : base.width;
    picture.height = has_size ? number() : base.height;
    picture.components = name_at(kDiracChroma, code(base.chroma));
    picture.scan = kScans[base.scan];
    if (bits.flag())
        picture.scan = number() == 0 ? Scan::progressive : base.scan == p ? Scan::interlaced : picture.scan;
    picture.rate = ratio(kRates, base.rate);
    picture.pixel_aspect = ratio(kDiracAspects, base.aspect);
    for (int i = bits.flag() ? 4 : 0; i > 0; i--) number();  // clean area
    const uint32_t range = code(base.range);
    if (range == 0) number();
    picture.bits = range == 0                 ? static_cast<uint32_t>(std::bit_width(number()))
                   : range < std::size(kBits) ? kBits[range]
                                              : 0;
    return index < std::size(kBases) && !bits.is_over();
}

template <bool (*read)(Bytes, Picture &)>
bool frame_alone(Bytes data, Bytes, Picture &picture) {
    return read(data, picture);
}

// Readers by what a codec's name begins with. Some tell more of the codec than its container does.
struct StreamReader {
    std::string_view codec;
    bool (*read)(Bytes data, Bytes setup, Picture &picture);
    bool names = false;
};

constexpr StreamReader kReaders[] = {
    {"H.264", avc_picture},
    {"AVC-Intra", avc_picture},
    {"HEVC", hevc_picture},
    {"AV1", av1_picture},
    {"ProRes", frame_alone<prores_frame>},
    {"Motion JPEG", frame_alone<jpeg_frame>},
    {"DNx", frame_alone<vc3_frame>, true},
    {"DV", frame_alone<dv_frame>, true},
    {"JPEG 2000", jpeg2000_picture, true},
    {"JPEG XS", jpegxs_picture},
    {"PNG", png_picture},
    {"CineForm", cineform_picture},
    {"Dirac", dirac_picture},
    {"VC-1", vc1_picture},
    {"FFV1", ffv1_picture},
    {"HuffYUV", huffyuv_picture},
    {"MPEG-4", mpeg4_picture},
    {"MPEG-", mpeg_picture, true},
    {"IMX", mpeg_picture},
    {"XDCAM", mpeg_picture},
    {"HDV", mpeg_picture},
};

}  // namespace

bool stream_picture(Bytes data, Picture &picture, Bytes setup) {
    for (const StreamReader &reader : kReaders) {
        if (!std::string_view(picture.codec).starts_with(reader.codec)) continue;
        Picture stream;
        stream.codec = picture.codec;
        if (!reader.read(data, setup, stream)) return false;
        take_stream(stream, picture);
        if (!picture.rate.is_set()) picture.rate = stream.rate;
        if (reader.names) picture.codec = stream.codec;
        return true;
    }
    return false;
}
