#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdio>
#include <iterator>
#include <string_view>

#include "common/names.h"
#include "common/ordered_bytes.h"
#include "common/values.h"
#include "main/facts_of.h"

namespace {

constexpr uint32_t kUnset = 0xFFFFFFFF;
constexpr uint64_t kLargestSide = 1 << 20;

uint32_t known(uint32_t value) { return value == kUnset ? 0 : value; }

// A number that is set, finite and above zero; 0 otherwise.
double positive_real(OrderedBytes header, uint64_t offset) {
    const double value = static_cast<double>(float_of_bits(header.u32(offset)));
    return std::isfinite(value) && value > 0 ? value : 0;
}

Ratio film_rate(double rate) { return rate >= 1 && rate <= 1000 ? rate_of(rate) : Ratio{}; }

std::string real_text(OrderedBytes header, uint64_t offset) {
    const double value = positive_real(header, offset);
    return value > 0 && value < 1e6 ? number_text(value) : "";
}

// What pictures take in their file: rows of samples in words.
struct Packing {
    uint64_t samples_a_word;  // 0: samples follow each other bit by bit
    uint64_t word_bytes;
};

// Of 10 and 12 bits a sample three or two fill up a word, where they are filled at all (SMPTE 268M, 7.2).
Packing packing_of(uint64_t bits, bool filled) {
    if (bits == 10 && filled) return {3, 4};
    if (bits == 12 && filled) return {1, 2};
    return bits >= 8 && std::has_single_bit(bits) ? Packing{1, bits / 8} : Packing{0, 4};
}

// Bytes of that many samples.
uint64_t packed_bytes(uint64_t samples, uint64_t bits, Packing packing, bool whole_words) {
    const uint64_t words = packing.samples_a_word;
    const uint64_t bytes =
        words == 0 ? (samples * bits + 7) / 8 : (samples + words - 1) / words * packing.word_bytes;
    return whole_words ? (bytes + 3) / 4 * 4 : bytes;
}

// How far the picture reaches: at least, and with each line in whole words and the padding that the header
// tells.
struct Reach {
    uint64_t least = 0;
    uint64_t padded = 0;
    bool is_known = true;

    void add(const Reach &other) {
        least = std::max(least, other.least);
        padded = std::max(padded, other.padded);
        is_known = is_known && other.is_known;
    }
};

// What the file's own size field says where it is wrong, and what lies behind the picture.
void add_sizes(const Reach &reach, uint64_t told, uint64_t present, Facts &facts) {
    if (present < reach.least) return;
    if (told > 0 && told != present && told != reach.padded) facts.add_more("size field", told);
    const uint64_t end = std::max(reach.padded, told);
    if (reach.is_known && present > end && reach.padded > 0) facts.add_more("trailing bytes", present - end);
}

// Whether the size that the header tells is that of padded lines decides whether padding is missed, unless
// the file ends where lines without it do.
void judge_extent(const Reach &reach, uint64_t told, uint64_t offset, uint64_t present, Facts &facts) {
    if (present < offset + 1) return facts.cut(std::max(offset, reach.least), "the picture");
    const bool has_padding = told >= reach.padded && present != reach.least;
    if (reach.is_known && reach.least > 0) facts.reaches(has_padding ? reach.padded : reach.least);
}

bool is_cut_header(uint64_t present, uint64_t needed, Facts &facts) {
    if (present >= needed) return false;
    facts.problem = "the header is cut at " + std::to_string(present) + " bytes";
    facts.cut(needed, "the header's end");
    return true;
}

// No picture begins before the header that tells where it does ends.
void judge_offset(uint32_t offset, uint64_t header, Facts &facts) {
    if (offset != kUnset && offset < header)
        facts.problem = "the header puts the picture at " + std::to_string(offset) + ", inside itself";
}

// Components by the descriptor of an image element (SMPTE 268M, table 1; ST 268-2 for 53 to 58, 104 and 105):
// their name, and samples a pixel.
struct Descriptor {
    uint32_t code;
    const char *name;
    uint64_t samples;
};

constexpr Descriptor kDescriptors[] = {
    {1, "R", 1},         {2, "G", 1},       {3, "B", 1},         {4, "A", 1},         {6, "Y", 1},
    {7, "CbCr", 1},      {8, "Z", 1},       {9, "composite", 1}, {50, "RGB", 3},      {51, "RGBA", 4},
    {52, "ABGR", 4},     {53, "BGR", 3},    {54, "BGRA", 4},     {55, "ARGB", 4},     {56, "RGB", 3},
    {57, "RGBA", 4},     {58, "ABGR", 4},   {104, "4:2:0", 0},   {105, "4:2:0:4", 0}, {100, "4:2:2", 2},
    {101, "4:2:2:4", 3}, {102, "4:4:4", 3}, {103, "4:4:4:4", 4},
};

// User-defined elements of 2 to 8 components have codes of their own.
uint64_t samples_of(uint32_t code) {
    if (const Descriptor *known_one = row_of(kDescriptors, code, &Descriptor::code))
        return known_one->samples;
    return code >= 150 && code <= 156 ? code - 148 : 0;
}

// By the codes of SMPTE 268M, tables 5A and 5B, and those of H.273 for them; what is printing density or
// logarithmic has none.
struct Characteristic {
    const char *name;
    int transfer;
    int primaries;
};

constexpr Characteristic kCharacteristics[] = {{"", -1, -1},
                                               {"printing density", -1, -1},
                                               {"linear", 8, -1},
                                               {"logarithmic", -1, -1},
                                               {"unspecified video", -1, -1},
                                               {"SMPTE 274M", 1, 1},
                                               {"ITU-R 709", 1, 1},
                                               {"ITU-R 601-5 B/G", 6, 5},
                                               {"ITU-R 601-5 M", 6, 6},
                                               {"NTSC composite", 6, 6},
                                               {"PAL composite", 5, 5},
                                               {"Z linear", -1, -1},
                                               {"Z homogeneous", -1, -1}};

const Characteristic &characteristic(uint32_t code) {
    return kCharacteristics[code < std::size(kCharacteristics) ? code : 0];
}

Reach element_reach(OrderedBytes header, OrderedBytes element, uint64_t image_offset) {
    const uint64_t width = known(header.u32(772));
    const uint64_t height = known(header.u32(776));
    const uint64_t bits = element.u8(23);
    const uint64_t samples = samples_of(element.u8(20));
    const uint32_t offset = known(element.u32(28));
    const bool encoded = element.u16(26) != 0 && element.u16(26) != 0xFFFF;
    const bool measurable = !encoded && samples > 0 && bits >= 1 && bits <= 64 && width <= kLargestSide &&
                            height <= kLargestSide && width > 0 && height > 0;
    if (!measurable) return {0, 0, false};
    const uint64_t start = offset >= 768 ? offset : image_offset;
    const Packing packing = packing_of(bits, element.u16(24) != 0 && element.u16(24) != 0xFFFF);
    const uint64_t padding = element.u32(32) < 65536 ? element.u32(32) : 0;
    const uint64_t image_padding = element.u32(36) < 65536 ? element.u32(36) : 0;
    const uint64_t line = packed_bytes(width * samples, bits, packing, true) + padding;
    return {start + packed_bytes(width * height * samples, bits, packing, false),
            start + line * height + image_padding, true};
}

// What elements have in common; those of a second eye are like those of the first.
std::string dpx_components(OrderedBytes header, uint64_t elements) {
    struct {
        std::string_view elements;
        const char *name;
    } constexpr kTogether[] = {
        {"YCbCr", "4:2:2"}, {"YCbCrA", "4:2:2:4"}, {"4:2:2A", "4:2:2:4"}, {"4:4:4A", "4:4:4:4"}};
    std::string names;
    for (uint64_t i = 0; i < elements; i++) {
        const Descriptor *descriptor = row_of(kDescriptors, header.u8(780 + 72 * i + 20), &Descriptor::code);
        if (descriptor && names.find(descriptor->name) == names.npos) names += descriptor->name;
    }
    for (const auto &[from, to] : kTogether) {
        if (names == from) return to;
    }
    return names;
}

// Either half of the industry header may be left out; nothing of it counts where its size is 0 or the picture
// lies in its place.
bool has_industry_header(OrderedBytes h) { return h.u32(28) != 0 && known(h.u32(4)) >= 2048; }

std::string dpx_keycode(OrderedBytes h) {
    const auto number = [&](uint64_t offset, uint64_t width) {
        return decimal_in(fixed_text(h.bytes, offset, width));
    };
    if (number(1664, 2) <= 0 && number(1670, 6) <= 0 && number(1676, 4) <= 0) return "";
    return keycode_text(number(1664, 2), number(1666, 2), number(1670, 6), number(1676, 4), number(1668, 2));
}

void add_industry_header(OrderedBytes h, Facts &facts) {
    Picture &picture = facts.picture();
    picture.rate = film_rate(positive_real(h, 1940));
    if (!picture.rate.is_set()) picture.rate = film_rate(positive_real(h, 1724));
    if (h.u8(1928) <= 1) picture.scan = h.u8(1928) == 1 ? Scan::interlaced : Scan::progressive;
    if (h.u32(1920) != kUnset)
        facts.add(bcd_timecode(h.u32(1920), base_of(picture.rate), "television header"));
    facts.keycode = dpx_keycode(h);
    facts.reel = fixed_text(h.bytes, 1972, 76);
}

void add_dpx_details(OrderedBytes h, Facts &facts) {
    const auto text = [&](const char *name, uint64_t offset, uint64_t width) {
        facts.add_more(name, fixed_text(h.bytes, offset, width));
    };
    const auto number = [&](const char *name, uint32_t value) {
        if (value != kUnset && value != 0) facts.add_more(name, value);
    };
    facts.add_more("byte order", h.is_big() ? "big-endian" : "little-endian");
    if (h.u32(784) != kUnset) facts.held.emplace_back("reference low code", std::to_string(h.u32(784)));
    if (h.u32(792) != kUnset) facts.held.emplace_back("reference high code", std::to_string(h.u32(792)));
    number("image offset", h.u32(4));
    number("orientation", h.u16(768) == 0xFFFF ? 0 : h.u16(768));
    number("elements", h.u16(770) == 0xFFFF ? 0 : h.u16(770));
    number("sense", h.u32(780));
    number("data offset", h.u32(808));
    number("line padding", h.u32(812));
    number("image padding", h.u32(816));
    facts.add_more("transfer", characteristic(h.u8(801)).name);
    facts.add_more("colorimetric", characteristic(h.u8(802)).name);
    if (h.u16(804) != 0xFFFF) facts.add_more("packing", h.u16(804));
    text("file name", 36, 100);
    text("project", 260, 200);
    text("copyright", 460, 200);
    text("source file", 1432, 100);
    text("input device", 1556, 32);
    if (!has_industry_header(h)) return;
    facts.add_more("industry header", "set");
    const auto held = [&](const char *name, uint64_t offset) {
        if (std::string value = real_text(h, offset); !value.empty()) facts.held.emplace_back(name, value);
    };
    held("black level", 1952);
    held("white level", 1964);
    text("film format", 1680, 32);
    number("frame position", h.u32(1712) == 0 ? kUnset : h.u32(1712));
    facts.add_more("shutter angle", real_text(h, 1728));
    text("frame id", 1732, 32);
    text("slate", 1764, 100);
    if (h.u32(1924) != kUnset && h.u32(1924) != 0) {
        char bits[16];
        std::snprintf(bits, sizeof bits, "%08x", h.u32(1924));
        facts.add_more("user bits", bits);
    }
    facts.add_more("gamma", real_text(h, 1948));
    if (facts.keycode.empty()) facts.add_more("keycode text", fixed_text(h.bytes, 1664, 16));
}

}  // namespace

void dpx_facts(Input &input, Facts &facts) {
    constexpr uint64_t kGenericHeader = 1664;
    const Bytes bytes = input.present(0, 2048);
    const OrderedBytes h = bytes_are(bytes, 0, "XPDS") ? little_endian(bytes) : big_endian(bytes);
    const uint32_t offset = known(h.u32(4));
    const bool whole_header = offset >= 2048 && h.u32(28) != 0;
    facts.variant = fixed_text(h.bytes, 8, 8);
    if (is_cut_header(bytes.size(), whole_header ? 2048 : kGenericHeader, facts)) return;

    Picture &picture = facts.picture();
    const uint64_t elements = h.u16(770) <= 8 ? std::max<uint64_t>(h.u16(770), 1) : 1;
    const bool encoded = h.u16(806) != 0 && h.u16(806) != 0xFFFF;
    picture.width = known(h.u32(772));
    picture.height = known(h.u32(776));
    picture.bits = h.u8(803) == 0xFF ? 0 : h.u8(803);
    picture.floating = picture.bits == 32 || picture.bits == 64;
    picture.components = dpx_components(h, elements);
    picture.codec = encoded ? "RLE" : "uncompressed";
    picture.frames = 1;
    picture.colour.transfer = characteristic(h.u8(801)).transfer;
    picture.colour.primaries = characteristic(h.u8(802)).primaries;
    if (known(h.u32(1628)) > 0 && known(h.u32(1632)) > 0)
        picture.pixel_aspect = Ratio{h.u32(1628), h.u32(1632)}.reduced();
    if (has_industry_header(h)) add_industry_header(h, facts);
    facts.writer = fixed_text(h.bytes, 160, 100);
    facts.date = iso_date_in(fixed_text(h.bytes, 136, 24));
    add_dpx_details(h, facts);

    Reach reach;
    for (uint64_t i = 0; i < elements; i++) reach.add(element_reach(h, h.from(780 + 72 * i), offset));
    add_sizes(reach, known(h.u32(16)), input.size(), facts);
    judge_extent(reach, known(h.u32(16)), offset, input.size(), facts);
    judge_offset(h.u32(4), kGenericHeader, facts);
}

namespace {

constexpr uint64_t kCineonChannels = 196;
constexpr uint64_t kCineonChannel = 28;

std::string cineon_components(OrderedBytes h, uint64_t channels) {
    // The second designator of a channel: 1 to 3 are the printing densities of red, green and blue, 4 to 6
    // those of video.
    if (channels == 1) return "Y";
    return channels == 3 && h.u8(kCineonChannels + 1) <= 6 ? "RGB" : std::to_string(channels) + " channels";
}

std::string cineon_keycode(OrderedBytes h, Facts &facts) {
    const bool zeros = h.u16(1024) == 0 && h.u32(1028) == 0 && h.u32(1032) == 0;
    if (h.u8(1024) == 0xFF || zeros || h.u32(1028) == kUnset || h.u32(1032) == kUnset) return "";
    const int64_t perforations = h.u8(1026) == 0xFF ? -1 : h.u8(1026);
    std::string keycode = keycode_text(h.u8(1024), h.u8(1025), h.u32(1028), h.u32(1032), perforations);
    if (keycode.empty())
        facts.add_more("keycode text", std::to_string(h.u8(1024)) + " " + std::to_string(h.u8(1025)) + " " +
                                           std::to_string(h.u32(1028)) + " " + std::to_string(h.u32(1032)));
    return keycode;
}

// Cells of bytes, of 16 and of 32 bits have as many samples as fit, or one where the highest bit is set.
Packing cineon_packing(uint64_t bits, uint8_t code) {
    constexpr uint64_t kCells[] = {0, 1, 1, 2, 2, 4, 4};
    const uint64_t cell = code != 0xFF && (code & 0x7F) < std::size(kCells) ? kCells[code & 0x7F] : 0;
    // What fills its cells is also written without the last one's rest.
    const bool is_filled = code < 0x80 && bits > 0 && cell * 8 % bits == 0;
    if (cell * 8 < bits || is_filled) return packing_of(bits, false);
    return {code & 0x80 ? 1 : cell * 8 / bits, cell};
}

Reach cineon_reach(OrderedBytes h, uint64_t channels, uint64_t offset) {
    uint64_t samples = 0;
    uint64_t line_samples = 0;
    const uint64_t bits = h.u8(kCineonChannels + 2);
    for (uint64_t i = 0; i < channels; i++) {
        const OrderedBytes channel = h.from(kCineonChannels + kCineonChannel * i);
        const uint64_t width = known(channel.u32(4));
        const uint64_t height = known(channel.u32(8));
        if (width > kLargestSide || height > kLargestSide) return {0, 0, false};
        samples += width * height;
        line_samples += width;
    }
    if (bits == 0 || bits > 64 || samples == 0) return {0, 0, false};
    const Packing packing = cineon_packing(bits, h.u8(681));
    const uint64_t lines = known(h.u32(kCineonChannels + 8));
    const uint64_t padding = h.u32(684) < 65536 ? h.u32(684) : 0;
    return {offset + packed_bytes(samples, bits, packing, false),
            offset + (packed_bytes(line_samples, bits, packing, true) + padding) * lines, true};
}

}  // namespace

void cineon_facts(Input &input, Facts &facts) {
    const Bytes bytes = input.present(0, 2048);
    const OrderedBytes h = bytes[0] == 0xD7 ? little_endian(bytes) : big_endian(bytes);
    const uint32_t offset = known(h.u32(4));
    facts.variant = fixed_text(h.bytes, 24, 8);
    if (is_cut_header(bytes.size(), offset >= 2048 ? 2048 : 1024, facts)) return;

    Picture &picture = facts.picture();
    const uint64_t channels = std::min<uint64_t>(h.u8(193), 8);
    picture.width = known(h.u32(kCineonChannels + 4));
    picture.height = known(h.u32(kCineonChannels + 8));
    picture.bits = h.u8(kCineonChannels + 2) == 0xFF ? 0 : h.u8(kCineonChannels + 2);
    picture.components = cineon_components(h, channels);
    picture.codec = "uncompressed";
    picture.frames = 1;
    if (offset >= 2048) {
        picture.rate = film_rate(positive_real(h, 1072));
        facts.keycode = cineon_keycode(h, facts);
        facts.add_more("industry header", "set");
        facts.add_more("film format", fixed_text(h.bytes, 1036, 32));
        facts.add_more("frame id", fixed_text(h.bytes, 1076, 32));
        facts.add_more("slate", fixed_text(h.bytes, 1108, 200));
    }
    facts.date = iso_date_in(fixed_text(h.bytes, 132, 12) + " " + fixed_text(h.bytes, 144, 12));
    facts.add_more("byte order", h.is_big() ? "big-endian" : "little-endian");
    facts.add_more("image offset", offset);
    if (h.u8(681) != 0xFF) facts.add_more("packing", h.u8(681));
    const auto number = [&](const char *name, uint32_t value, uint32_t unset) {
        if (value != 0 && value != unset) facts.add_more(name, value);
    };
    number("orientation", h.u8(192), 0xFF);
    number("sense", h.u8(683), 0xFF);
    number("line padding", h.u32(684), kUnset);
    number("channel padding", h.u32(688), kUnset);
    facts.add_more("file name", fixed_text(h.bytes, 32, 100));
    if (known(h.u32(1068)) > 0 && offset >= 2048) facts.add_more("frame position", h.u32(1068));
    facts.add_more("input device", fixed_text(h.bytes, 844, 64));
    facts.add_more("gamma", real_text(h, 980));
    const Reach reach = cineon_reach(h, channels, offset);
    add_sizes(reach, known(h.u32(20)), input.size(), facts);
    judge_extent(reach, known(h.u32(20)), offset, input.size(), facts);
    judge_offset(h.u32(4), 1024, facts);
}
