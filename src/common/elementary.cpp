#include "common/elementary.h"

#include <algorithm>
#include <iterator>

#include "common/names.h"

uint32_t BitReader::get(unsigned n) {
    uint64_t value = 0;
    const uint64_t first = position_ / 8;
    for (uint64_t i = 0; i < 5; i++) value = value << 8 | bytes_[first + i];
    const unsigned behind = static_cast<unsigned>(40 - position_ % 8 - n);
    position_ += n;
    return static_cast<uint32_t>(value >> behind & ((uint64_t{1} << n) - 1));
}

uint32_t BitReader::ue() {
    unsigned zeros = 0;
    while (zeros < 32 && !is_over() && !flag()) zeros++;
    if (zeros >= 32) {
        skip(8 * bytes_.size());
        return 0;
    }
    return ((uint32_t{1} << zeros) - 1) + get(zeros);
}

int32_t BitReader::se() {
    const int64_t code = ue();
    return static_cast<int32_t>(code % 2 != 0 ? (code + 1) / 2 : -code / 2);
}

uint64_t start_code(Bytes stream, uint64_t from) {
    constexpr uint64_t kStep = 4096;  // bytes that are looked at together: a file's are copied
    for (; stream.has(from, 4); from += kStep - 3) {
        const auto bytes = stream.span(from, kStep);
        for (size_t i = 0; i + 4 <= bytes.size(); i++) {
            if (bytes[i + 2] > 1) {
                i += 2;
            } else if (bytes[i] == 0 && bytes[i + 1] == 0 && bytes[i + 2] == 1) {
                return from + i;
            }
        }
    }
    return stream.size();
}

std::string raw_payload(Bytes nal, uint64_t header) {
    std::string raw;
    int zeros = 0;
    for (const uint8_t byte : nal.span(header, 4096)) {
        if (zeros >= 2 && byte == 3) {
            zeros = 0;
            continue;
        }
        zeros = byte == 0 ? zeros + 1 : 0;
        raw += static_cast<char>(byte);
    }
    return raw;
}

const char *chroma_format(uint32_t code) {
    constexpr const char *kFormats[] = {"Y", "4:2:0", "4:2:2", "4:4:4"};
    return name_at(kFormats, code);
}

Ratio sample_aspect(uint32_t code) {
    constexpr Ratio kAspects[] = {{0, 0},   {1, 1},    {12, 11}, {10, 11}, {16, 11}, {40, 33},
                                  {24, 11}, {20, 11},  {32, 11}, {80, 33}, {18, 11}, {15, 11},
                                  {64, 33}, {160, 99}, {4, 3},   {3, 2},   {2, 1}};
    return code < std::size(kAspects) ? kAspects[code] : Ratio{};
}

namespace {

constexpr uint32_t kLargestSide = 65536;

// The part of a video usability information that H.264 and HEVC have in common.
void read_usability(BitReader &bits, Picture &picture) {
    if (bits.flag()) {
        const uint32_t aspect = bits.get(8);
        if (aspect == 255) {
            const int64_t n = bits.get(16);
            picture.pixel_aspect = Ratio{n, bits.get(16)}.reduced();
        } else {
            picture.pixel_aspect = sample_aspect(aspect);
        }
    }
    if (bits.flag()) bits.skip(1);  // overscan
    if (bits.flag()) {
        bits.skip(3);
        picture.colour.full_range = bits.flag() ? 1 : 0;
        if (bits.flag()) {
            picture.colour.primaries = colour_code(bits.get(8));
            picture.colour.transfer = colour_code(bits.get(8));
            picture.colour.matrix = colour_code(bits.get(8));
        }
    }
    if (bits.flag()) bits.skip_codes(2);  // places of chroma samples
}

bool read_timing(BitReader &bits, int64_t ticks, Picture &picture) {
    if (!bits.flag()) return false;
    const int64_t unit = bits.get(32);
    const int64_t scale = bits.get(32);
    if (unit > 0 && scale / ticks / unit <= 1000) picture.rate = rate_of(scale, unit * ticks);
    return true;
}

void skip_scaling_list(BitReader &bits, int size) {
    int32_t last = 8;
    for (int i = 0; i < size && last != 0 && !bits.is_over(); i++) last = (last + bits.se()) & 255;
}

struct Size {
    uint64_t width = 0;
    uint64_t height = 0;
};

// What both standards tell of a picture's samples; lines and columns that are cropped count in chroma
// samples, and in lines of both fields.
struct Coded {
    Size size;
    uint32_t chroma = 1;
    bool planes = false;
    uint32_t depth = 8;
    uint64_t frame_lines = 1;
    uint64_t crop[4] = {};

    void read_crop(BitReader &bits) {
        if (!bits.flag()) return;
        for (uint64_t &side : crop) side = bits.ue();
    }
    bool set(Picture &picture) const {
        const uint64_t across = !planes && (chroma == 1 || chroma == 2) ? 2 : 1;
        const uint64_t down = (!planes && chroma == 1 ? 2 : 1) * frame_lines;
        const uint64_t columns = across * (crop[0] + crop[1]);
        const uint64_t lines = down * (crop[2] + crop[3]);
        const bool valid = size.width > columns && size.height > lines && size.width <= kLargestSide &&
                           size.height <= kLargestSide && chroma <= 3 && depth <= 16;
        if (!valid) return false;
        picture.width = static_cast<uint32_t>(size.width - columns);
        picture.height = static_cast<uint32_t>(size.height - lines);
        picture.coded_width = columns + lines > 0 ? static_cast<uint32_t>(size.width) : picture.coded_width;
        picture.coded_height =
            columns + lines > 0 ? static_cast<uint32_t>(size.height) : picture.coded_height;
        picture.bits = depth;
        picture.components = chroma_format(chroma);
        return true;
    }
};

// Parameters of the reference decoder: bits of delays in a picture timing.
int read_decoder_parameters(BitReader &bits) {
    const uint32_t n = bits.ue();
    bits.skip(8);
    for (uint32_t i = 0; i <= n && i < 32; i++) {
        bits.skip_codes(2);
        bits.skip(1);
    }
    bits.skip(5);
    const int delays = static_cast<int>(bits.get(5) + bits.get(5) + 2);
    bits.skip(5);
    return delays;
}

// Bits of a picture timing before its structure; -1 where it has none.
int structure_place(BitReader &bits) {
    int delays = 0;
    const bool has_first = bits.flag();
    if (has_first) delays = read_decoder_parameters(bits);
    const bool has_second = bits.flag();
    if (has_second) delays = read_decoder_parameters(bits);
    if (has_first || has_second) bits.skip(1);
    return bits.flag() && !bits.is_over() ? delays : -1;
}

bool read_h264(BitReader bits, Picture &picture, AvcFields &fields) {
    const uint32_t profile = bits.get(8);
    bits.skip(16);
    bits.ue();
    Coded coded;
    constexpr uint32_t kHigh[] = {100, 110, 122, 244, 44, 83, 86, 118, 128, 138, 139, 134, 135};
    if (std::ranges::find(kHigh, profile) != std::end(kHigh)) {
        coded.chroma = bits.ue();
        if (coded.chroma == 3) coded.planes = bits.flag();
        coded.depth = 8 + bits.ue();
        bits.ue();
        bits.skip(1);
        const bool has_scaling = bits.flag();
        for (int i = 0; has_scaling && i < (coded.chroma == 3 ? 12 : 8); i++) {
            if (bits.flag()) skip_scaling_list(bits, i < 6 ? 16 : 64);
        }
    }
    const unsigned frame_number = std::min(bits.ue() + 4, 16U);
    const uint32_t order = bits.ue();
    if (order == 0) bits.ue();
    if (order == 1) {
        bits.skip(1);
        bits.skip_codes(2);
        const uint32_t n = bits.ue();
        for (uint32_t i = 0; i < n && !bits.is_over(); i++) bits.se();
    }
    bits.ue();
    bits.skip(1);
    coded.size = {16 * (uint64_t{bits.ue()} + 1), 16 * (uint64_t{bits.ue()} + 1)};
    const bool frames_only = bits.flag();
    if (!frames_only) {
        coded.frame_lines = 2;
        coded.size.height *= 2;
        if (!bits.flag() && !coded.planes) fields.frame_number = frame_number;
    }
    bits.skip(1);
    coded.read_crop(bits);
    if (bits.is_over() || !coded.set(picture)) return false;
    picture.scan = frames_only ? Scan::progressive : Scan::interlaced;
    if (bits.flag()) {
        read_usability(bits, picture);
        if (read_timing(bits, 2, picture)) bits.skip(1);  // whether the rate is fixed
        fields.timing = structure_place(bits);
    }
    if (picture.components == "4:4:4" && picture.colour.matrix == 0) picture.components = "RGB";
    return true;
}

// Profile, tier and level (ITU-T H.265, 7.3.3), with those of sub-layers; what the source was.
Scan read_levels(BitReader &bits, unsigned sub_layers) {
    constexpr Scan kSources[] = {Scan::unknown, Scan::interlaced, Scan::progressive, Scan::unknown};
    bits.skip(40);
    const Scan source = kSources[bits.get(2)];
    bits.skip(54);
    uint32_t present = 0;
    if (sub_layers > 0) present = bits.get(16);
    for (unsigned i = 0; i < sub_layers; i++) {
        if ((present >> (15 - 2 * i) & 1) != 0) bits.skip(88);
        if ((present >> (14 - 2 * i) & 1) != 0) bits.skip(8);
    }
    return source;
}

void skip_hevc_scaling(BitReader &bits) {
    for (int size = 0; size < 4; size++) {
        for (int i = 0; i < 6; i += size == 3 ? 3 : 1) {
            if (!bits.flag()) {
                bits.ue();
                continue;
            }
            if (size > 1) bits.se();
            for (int k = 0; k < std::min(64, 1 << (4 + 2 * size)); k++) bits.se();
        }
    }
}

// The short-term reference picture sets; false for a damaged one.
bool skip_reference_sets(BitReader &bits, uint32_t sets) {
    uint32_t last = 0;
    for (uint32_t i = 0; i < sets; i++) {
        if (i > 0 && bits.flag()) {
            bits.skip(1);
            bits.ue();
            uint32_t pictures = 0;
            for (uint32_t k = 0; k <= last; k++) {
                const bool used = bits.flag();
                if (used || bits.flag()) pictures++;
            }
            last = pictures;
        } else {
            const uint32_t before = bits.ue();
            const uint32_t after = bits.ue();
            if (before > 16 || after > 16) return false;
            for (uint32_t k = 0; k < before + after; k++) {
                bits.ue();
                bits.skip(1);
            }
            last = before + after;
        }
        if (last > 16 || bits.is_over()) return false;
    }
    return true;
}

// From behind the sizes to the usability information; false where it is not reached.
bool skip_to_usability(BitReader &bits, unsigned sub_layers) {
    const uint32_t order_bits = bits.ue() + 4;
    const bool all_layers = bits.flag();
    for (unsigned i = all_layers ? 0 : sub_layers; i <= sub_layers; i++) {
        bits.skip_codes(3);
    }
    bits.skip_codes(6);
    if (bits.flag() && bits.flag()) skip_hevc_scaling(bits);
    bits.skip(2);
    if (bits.flag()) {  // PCM blocks
        bits.skip(8);
        bits.skip_codes(2);
        bits.skip(1);
    }
    const uint32_t sets = bits.ue();
    if (sets > 64 || order_bits > 16 || !skip_reference_sets(bits, sets)) return false;
    if (bits.flag()) {
        const uint32_t n = bits.ue();
        if (n > 32) return false;
        bits.skip(uint64_t{n} * (order_bits + 1));
    }
    bits.skip(2);
    return bits.flag() && !bits.is_over();
}

bool read_hevc(BitReader bits, Picture &picture, bool &has_structures) {
    bits.skip(4);
    const unsigned sub_layers = bits.get(3);
    bits.skip(1);
    picture.scan = read_levels(bits, sub_layers);
    bits.ue();
    Coded coded;
    coded.chroma = bits.ue();
    coded.planes = coded.chroma == 3 && bits.flag();
    coded.size = {bits.ue(), bits.ue()};
    coded.read_crop(bits);
    coded.depth = 8 + bits.ue();
    bits.ue();
    if (bits.is_over() || !coded.set(picture)) return false;
    if (skip_to_usability(bits, sub_layers)) {
        read_usability(bits, picture);
        bits.skip(1);
        if (bits.flag()) picture.scan = Scan::interlaced;  // each picture is a field
        has_structures = bits.flag();
        if (bits.flag()) bits.skip_codes(4);
        read_timing(bits, 1, picture);
    }
    if (picture.components == "4:4:4" && picture.colour.matrix == 0) picture.components = "RGB";
    return true;
}

// Reads a parameter set, of which nothing is kept where it is damaged or cut.
template <typename Told>
bool read_set(Bytes nal, uint64_t header, Picture &picture, Told &told,
              bool (*read)(BitReader, Picture &, Told &)) {
    const std::string raw = raw_payload(nal, header);
    Picture found = picture;
    Told found_told{};
    if (!read(BitReader(Bytes(raw.data(), raw.size())), found, found_told)) return false;
    picture = found;
    told = found_told;
    return true;
}

}  // namespace

bool h264_sequence(Bytes nal, Picture &picture, AvcFields &fields) {
    return (nal[0] & 0x1F) == 7 && read_set(nal, 1, picture, fields, read_h264);
}

bool hevc_sequence(Bytes nal, Picture &picture, bool &has_structures) {
    return (nal[0] >> 1 & 0x3F) == 33 && read_set(nal, 2, picture, has_structures, read_hevc);
}

namespace {

// Frame rates by code, MPEG-2 and what looks like it (ISO 13818-2, table 6-4).
constexpr Ratio kMpegRates[] = {{0, 0},  {24000, 1001}, {24, 1},       {25, 1}, {30000, 1001},
                                {30, 1}, {50, 1},       {60000, 1001}, {60, 1}};
// Shapes of a pixel of MPEG-1 (ISO 11172-2, 2.4.3.2), in ten thousandths.
constexpr int64_t kShapes[] = {0,    10000, 6735,  7031,  7615,  8055,  8437, 8935,
                               9157, 9815,  10255, 10695, 10950, 11575, 12015};

// Display aspects of MPEG-2; the ratio of a pixel follows from the size shown.
Ratio mpeg2_aspect(uint32_t code, Size shown) {
    constexpr Ratio kDisplay[] = {{0, 0}, {0, 0}, {4, 3}, {16, 9}, {221, 100}};
    if (code == 1) return {1, 1};
    if (code >= std::size(kDisplay)) return {};
    return Ratio{kDisplay[code].n * static_cast<int64_t>(shown.height),
                 kDisplay[code].d * static_cast<int64_t>(shown.width)}
        .reduced();
}

void read_display_extension(BitReader &bits, Size &shown, Picture &picture) {
    bits.skip(3);
    if (bits.flag()) {
        picture.colour.primaries = colour_code(bits.get(8));
        picture.colour.transfer = colour_code(bits.get(8));
        picture.colour.matrix = colour_code(bits.get(8));
    }
    const uint64_t width = bits.get(14);
    bits.skip(1);
    const uint64_t height = bits.get(14);
    if (width > 0 && height > 0) shown = {width, height};
}

void read_picture_extension(BitReader &bits, bool progressive, Picture &picture) {
    bits.skip(16 + 2);
    const uint32_t structure = bits.get(2);
    const bool top_first = bits.flag();
    bits.skip(7);
    const bool is_progressive = bits.flag();
    if (progressive || is_progressive) {
        picture.scan = Scan::progressive;
    } else if (structure == 3) {
        picture.scan = top_first ? Scan::top_first : Scan::bottom_first;
    } else {
        picture.scan = structure == 1 ? Scan::top_first : Scan::bottom_first;
    }
}

}  // namespace

bool mpeg_sequence(Bytes stream, Picture &picture) {
    BitReader bits(stream);
    if (bits.get(32) != 0x1B3) return false;
    Size coded{bits.get(12), bits.get(12)};
    const uint32_t aspect = bits.get(4);
    const uint32_t rate = bits.get(4);
    int64_t bit_rate = bits.get(18);
    if (coded.width == 0 || coded.height == 0 || aspect == 0 || rate == 0 || rate > 8) return false;
    picture.rate = kMpegRates[rate];
    picture.codec = "MPEG-1";
    picture.bits = 8;
    picture.components = "4:2:0";
    bool progressive = true;
    bool is_2 = false;
    Size display;
    for (uint64_t at = start_code(stream, 4); at < stream.size(); at = start_code(stream, at + 4)) {
        const uint8_t code = stream[at + 3];
        BitReader extension(stream.from(at + 4));
        if (code >= 1 && code <= 0xAF) break;  // slices
        const uint32_t id = code == 0xB5 ? extension.get(4) : 0;
        if (id == 1) {
            is_2 = true;
            picture.codec = "MPEG-2";
            extension.skip(8);
            progressive = extension.flag();
            picture.components = chroma_format(extension.get(2));
            coded.width += uint64_t{extension.get(2)} << 12;
            coded.height += uint64_t{extension.get(2)} << 12;
            bit_rate += int64_t{extension.get(12)} << 18;
            extension.skip(10);
            const int64_t n = extension.get(2) + 1;
            picture.rate = Ratio{picture.rate.n * n, picture.rate.d * (extension.get(5) + 1)}.reduced();
        } else if (id == 2) {
            read_display_extension(extension, display, picture);
        } else if (id == 8) {
            read_picture_extension(extension, progressive, picture);
            break;
        }
    }
    picture.width = static_cast<uint32_t>(coded.width);
    picture.height = static_cast<uint32_t>(coded.height);
    if (is_2) {
        // The display size is what the aspect counts for (6.3.3), where it is no nonsense.
        const bool usable = display.width >= coded.width / 2 && display.height >= coded.height / 2;
        picture.pixel_aspect = mpeg2_aspect(aspect, usable ? display : coded);
    } else {
        if (aspect < std::size(kShapes)) picture.pixel_aspect = Ratio{10000, kShapes[aspect]}.reduced();
        picture.scan = Scan::progressive;
    }
    const bool is_variable = bit_rate == 0x3FFFF || bit_rate == 0x3FFFFFFF;
    if (bit_rate > 0 && !is_variable) picture.bit_rate = bit_rate * 400;
    return true;
}
