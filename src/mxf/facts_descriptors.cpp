#include <algorithm>
#include <cmath>

#include "common/elementary.h"
#include "mxf/facts_metadata.h"

namespace {

using namespace std::string_view_literals;

constexpr LabelName kUncompressed[] = {{"\2\1", "", "ARRIRAW"}, {"", "", "uncompressed"}};

constexpr LabelName kCompressed[] = {  // behind 04.01.02.02
    {"\1\2\1", "\1\2", "IMX 50"},
    {"\1\2\1", "\3\4", "IMX 40"},
    {"\1\2\1", "\5\6", "IMX 30"},
    {"\1", "\1\2\3\4\5\6\7\x8\x9", "MPEG-2"},
    {"\1\x10", "", "MPEG-1"},
    {"\1\x20", "", "MPEG-4"},
    {"\1\x32\x21", "", "AVC-Intra 50"},
    {"\1\x32\x31", "", "AVC-Intra 100"},
    {"\1\x32\x32", "", "AVC-Intra 200"},
    {"\1", "\x30\x31\x32", "H.264"},
    {"\1", "\x41\x42\x43\x44\x45\x46", "HEVC"},
    {"\2\1", "", "DV"},
    {"\2\2", "\1\2", "DV"},
    {"\2\2", "\3\4", "DVCPRO50"},
    {"\2\2", "", "DVCPRO HD"},
    {"\3\1", "", "JPEG 2000"},
    {"\3\2", "", "TIFF/EP"},
    {"\3\3", "", "VC-2"},
    {"\3\4", "", "ACES"},
    {"\3\5", "", "VC-5"},
    {"\3\6\1", "", "ProRes 422 Proxy"},
    {"\3\6\2", "", "ProRes 422 LT"},
    {"\3\6\3", "", "ProRes 422"},
    {"\3\6\4", "", "ProRes 422 HQ"},
    {"\3\6\5", "", "ProRes 4444"},
    {"\3\6\6", "", "ProRes 4444 XQ"},
    {"\3\7", "", "uncompressed"},
    {"\3\x8", "", "JPEG XS"},
    {"\3\x9", "", "FFV1"},
    {"\x70\1", "", "HDCAM"},
    {"\x71\x24", "", "DNxHR 444"},
    {"\x71\x25", "", "DNxHR HQX"},
    {"\x71\x26", "", "DNxHR HQ"},
    {"\x71\x27", "", "DNxHR SQ"},
    {"\x71\x28", "", "DNxHR LB"},
    {"\x71", "", "DNxHD"},
    {"\x72", "", "VC-1"}};

// Essence containers, where no coding is told.
constexpr LabelName kContainers[] = {{"\1\1", "", "IMX 50"},
                                     {"\1\2", "", "IMX 50"},
                                     {"\1\3", "", "IMX 40"},
                                     {"\1\4", "", "IMX 40"},
                                     {"\1\5", "", "IMX 30"},
                                     {"\1\6", "", "IMX 30"},
                                     {"\2", "\x50\x51", "DVCPRO50"},
                                     {"\2", "\x60\x61\x62\x63", "DVCPRO HD"},
                                     {"\2", "", "DV"},
                                     {"\3", "", "HDCAM"},
                                     {"\5", "", "uncompressed"},
                                     {"\xC", "", "JPEG 2000"},
                                     {"", "\xF\x10", "H.264"},
                                     {"\x11", "", "DNxHD"},
                                     {"\x12", "", "VC-1"},
                                     {"\x14", "", "TIFF/EP"},
                                     {"\x15", "", "VC-2"},
                                     {"\x19", "", "ACES"},
                                     {"\x1B", "", "VC-5"},
                                     {"\x1C", "", "ProRes"},
                                     {"\x1E", "", "uncompressed"},
                                     {"", "\x1F\x20", "HEVC"},
                                     {"\x21", "", "JPEG XS"},
                                     {"\x22", "", "ARRIRAW"},
                                     {"\x23", "", "FFV1"}};

constexpr LabelName kPrivate[] = {{"\2\1\2\4", "", "DNxHD"}, {"\3\1\2\6", "", "DNxHD"}};

std::string picture_codec_of(Bytes coding, Bytes container) {
    for (const char *name :
         {name_behind(coding, "\4\1\2\1"sv, kUncompressed), name_behind(coding, "\4\1\2\2"sv, kCompressed),
          name_behind(coding, "\xE\4"sv, kPrivate), name_behind(container, kContainer, kContainers),
          name_behind(container, "\xE\4"sv, kPrivate)}) {
        if (name[0] != 0) return name;
    }
    return "";
}

constexpr uint64_t kColour = 13;  // its number in a label

// Labels of colours to the codes of H.273.
constexpr int kTransfers[] = {-1, 5, 1, 7, 1, 12, 8, 17, 11, 14, 16, 18, -1, 13};
constexpr int kEquations[] = {-1, 6, 1, 7, 8, 0, 9, 14};
constexpr int kPrimaries[] = {-1, 6, 5, 1, 9, 10, 12, -1, -1, -1, 11};

template <size_t N>
int colour_code(const int (&codes)[N], Bytes label, std::string_view kind) {
    const bool known = begins_as(label, "\x06\x0E\x2B\x34\4\1\1"sv) && begins_as(label.from(8), kind);
    return known && label[kColour] < N ? codes[label[kColour]] : -1;
}

// Items of descriptors by their static tags (ST 377-1), of sub-descriptors by the ends of their labels.
constexpr uint32_t kSampleRate = 0x3001;
constexpr uint32_t kContainerFormat = 0x3004;
constexpr uint32_t kPictureCoding = 0x3201;
constexpr uint32_t kFrameLayout = 0x320C;
constexpr uint32_t kLineMap = 0x320D;
constexpr uint32_t kAspectRatio = 0x320E;
constexpr uint32_t kTransfer = 0x3210;
constexpr uint32_t kFieldDominance = 0x3212;
constexpr uint32_t kColourPrimaries = 0x3219;
constexpr uint32_t kCodingEquations = 0x321A;
constexpr auto kMpegBitRate = "\4\1\6\2\1\xB\0\0"sv;
constexpr auto kJpeg2000Coding = "\4\1\6\3\xC\0\0\0"sv;
constexpr auto kJpeg2000Sizing = "\4\1\6\3\xB\0\0\0"sv;

enum Layout : uint8_t { full_frame, separate_fields, single_field, mixed_fields, segmented_frame, unknown };

Layout layout_of(const MetadataSet &d) {
    const int64_t layout = d.number(kFrameLayout, unknown);
    return layout >= 0 && layout < unknown ? static_cast<Layout>(layout) : unknown;
}

// The parity of the fields' first lines says which is the upper one, their dominance which comes first
// (ST 377-1, annex G).
Scan field_order(const MetadataSet &d) {
    constexpr uint64_t kArrayHead = 8;
    const Bytes map = d.item(kLineMap);
    const uint32_t first = big32(map, kArrayHead);
    const uint32_t second = big32(map, kArrayHead + 4);
    if (first == 0 || second == 0 || first > INT32_MAX || second > INT32_MAX) return Scan::interlaced;
    const bool top_is_first_field = (first + second) % 2 == 1;
    return top_is_first_field == (d.number(kFieldDominance, 1) != 2) ? Scan::top_first : Scan::bottom_first;
}

Scan scan_of(const MetadataSet &d) {
    switch (layout_of(d)) {
        case full_frame:
        case segmented_frame: return Scan::progressive;
        case separate_fields:
        case mixed_fields: return field_order(d);
        case single_field: return Scan::interlaced;
        default: return Scan::unknown;
    }
}

// Heights count the lines of a field where fields, or segments, are stored one after the other.
void read_sizes(const MetadataSet &d, Picture &picture) {
    const Layout layout = layout_of(d);
    const int64_t fields = layout == separate_fields || layout == segmented_frame ? 2 : 1;
    const auto side = [&](std::initializer_list<uint32_t> tags, int64_t times) {
        for (const uint32_t tag : tags) {
            const int64_t value = d.number(tag);
            if (value > 0 && value < INT32_MAX) return static_cast<uint32_t>(value * times);
        }
        return uint32_t{0};
    };
    picture.width = side({0x3209, 0x3205, 0x3203}, 1);  // displayed, sampled, stored
    picture.height = side({0x3208, 0x3204, 0x3202}, fields);
    const uint32_t width = side({0x3203}, 1);
    const uint32_t height = side({0x3202}, fields);
    if ((width == picture.width && height == picture.height) || width == 0 || height == 0) return;
    picture.coded_width = width;
    picture.coded_height = height;
}

// What is told is the aspect of the picture, often of two or three digits: what is within half a percent of
// square pixels is meant so.
void read_aspect(const MetadataSet &d, Picture &picture) {
    const Ratio shown = d.ratio(kAspectRatio);
    if (!shown.is_set() || picture.width == 0 || picture.height == 0) return;
    const Ratio aspect = Ratio{shown.n * picture.height, shown.d * picture.width}.reduced();
    picture.pixel_aspect = std::fabs(aspect.value() - 1) < 0.005 ? Ratio{1, 1} : aspect;
}

int range_of(int64_t black, int64_t white, uint32_t bits) {
    if (bits < 8 || bits > 16 || black < 0 || white <= black) return -1;
    if (black == 16 << (bits - 8)) return 0;
    return black == 0 && white == (1 << bits) - 1 ? 1 : -1;
}

void read_cdci(const MetadataSet &d, Picture &picture) {
    picture.bits = d.number_below(0x3301, 64);
    const bool alpha = d.number(0x3309) > 0;
    const int64_t across = d.number(0x3302);
    const int64_t down = across == 2 && d.number(0x3308, 1) == 2 ? 2 : 1;
    picture.components = chroma_text(static_cast<uint64_t>(across), static_cast<uint64_t>(down));
    if (alpha) append(picture.components, picture.components.empty() ? "" : "4", ":");
    picture.colour.full_range = range_of(d.number(0x3304, -1), d.number(0x3305, -1), picture.bits);
}

// Pairs of a component's letter and its depth; 253 and 254 are floats of 16 and 32 bits.
void read_rgba(const MetadataSet &d, Picture &picture) {
    constexpr uint64_t kMostPairs = 8;
    const Bytes layout = d.item(0x3401);
    std::string letters;
    for (uint64_t i = 0; i < kMostPairs && layout[2 * i] != 0; i++) {
        const char letter = static_cast<char>(layout[2 * i] & ~0x20);
        if (letter < 'A' || letter > 'Z' || letter == 'F') continue;
        letters += letter;
        if (picture.bits == 0) picture.bits = layout[2 * i + 1];
    }
    picture.floating = picture.bits == 253 || picture.bits == 254;
    if (picture.floating) picture.bits = picture.bits == 253 ? 16 : 32;
    if (picture.bits > 64) picture.bits = 0;
    const auto has = [&](const char *all) {
        return std::all_of(all, all + 3, [&](char c) { return letters.find(c) != std::string::npos; });
    };
    const bool alpha = letters.find('A') != std::string::npos;
    picture.components = has("RGB")   ? (alpha ? "RGBA" : "RGB")
                         : has("XYZ") ? "XYZ"
                         : has("YUV") ? (alpha ? "4:4:4:4" : "4:4:4")
                                      : letters;
    picture.colour.full_range = range_of(d.number(0x3407, -1), d.number(0x3406, -1), picture.bits);
}

void read_jpeg2000(const Metadata &metadata, const MetadataSet &sub, Picture &picture) {
    // Scod, SGcod and SPcod of a COD marker: the last byte but the precincts is the wavelet's.
    const Bytes coding = metadata.item(sub, kJpeg2000Coding);
    if (coding.size() >= 10) picture.codec = coding[9] == 1 ? "JPEG 2000 5/3" : "JPEG 2000 9/7";
    const Bytes sizing = metadata.item(sub, kJpeg2000Sizing);
    const uint32_t bits = (sizing[8] & 0x7F) + 1U;
    if (sizing.size() >= 11 && picture.bits == 0 && bits <= 38) picture.bits = bits;
}

// "XDCAM HD422" is long-GOP 4:2:2 profile at high level with 50 Mbit/s.
bool is_xdcam_422(Bytes coding, const Picture &picture) {
    return begins_as(coding.from(8), "\4\1\2\2\1\4\3"sv) && picture.bit_rate == 50000000;
}

}  // namespace

bool is_picture(const MetadataSet &d) {
    switch (d.kind) {
        case SetKind::generic_picture:
        case SetKind::cdci:
        case SetKind::rgba:
        case SetKind::mpeg2_video: return true;
        default: return false;
    }
}

Picture picture_of(const Metadata &metadata, const MetadataSet &d) {
    Picture picture;
    const Bytes coding = d.item(kPictureCoding);
    picture.codec = picture_codec_of(coding, d.item(kContainerFormat));
    if (picture.codec.empty() && d.kind == SetKind::mpeg2_video) picture.codec = "MPEG-2";
    picture.scan = scan_of(d);
    picture.rate = d.ratio(kSampleRate);
    if (picture.rate.value() > 1000) picture.rate = {};
    read_sizes(d, picture);
    if (picture.codec == "DVCPRO HD") {
        picture.width = dv_hd_columns(picture.height, picture.rate);
        picture.coded_width = picture.coded_height = 0;
    }
    read_aspect(d, picture);
    picture.colour.transfer = colour_code(kTransfers, d.item(kTransfer), "\4\1\1\1\1"sv);
    picture.colour.matrix = colour_code(kEquations, d.item(kCodingEquations), "\4\1\1\1\2"sv);
    picture.colour.primaries = colour_code(kPrimaries, d.item(kColourPrimaries), "\4\1\1\1\3"sv);
    if (d.kind == SetKind::rgba) {
        read_rgba(d, picture);
    } else {
        read_cdci(d, picture);
    }
    if (picture.colour.matrix == 0 && picture.components == "4:4:4") picture.components = "RGB";
    const Bytes bit_rate = metadata.item(d, kMpegBitRate);
    if (bit_rate.size() == 4 && big32(bit_rate) > 0) picture.bit_rate = big32(bit_rate);
    // D-10 has one rate for each of its kinds (SMPTE ST 356).
    if (picture.codec.starts_with("IMX ")) picture.bit_rate = 1000000 * decimal_in(picture.codec, 4, 2);
    if (is_xdcam_422(coding, picture)) picture.codec = "XDCAM HD422";
    for (const MetadataSet *sub : metadata.sub_descriptors(d)) {
        if (sub->kind == SetKind::jpeg2000) read_jpeg2000(metadata, *sub, picture);
    }
    return picture;
}

std::vector<std::pair<std::string, Bytes>> uncoded_colours(const MetadataSet &d, const Colour &colour) {
    std::vector<std::pair<std::string, Bytes>> labels;
    const auto add = [&](const char *name, int code, uint32_t tag) {
        const Bytes label = d.item(tag);
        if (code < 0 && !is_zero(label)) labels.emplace_back(name, label);
    };
    add("primaries label", colour.primaries, kColourPrimaries);
    add("transfer label", colour.transfer, kTransfer);
    add("matrix label", colour.matrix, kCodingEquations);
    return labels;
}

std::string wrapping_of(Bytes container) {
    if (!begins_as(container.from(8), kContainer)) return "";
    const uint8_t next = container[14];
    const uint8_t last = container[15];
    const auto either = [](bool is_frame, bool is_clip) {
        return is_frame ? "frame" : is_clip ? "clip" : "";
    };
    // Which byte tells it, and with which numbers, differs from mapping to mapping (SMPTE registers, labels).
    switch (container[13]) {
        case 0x01:
        case 0x03: return "frame";
        case 0x05: return either(last % 4 == 1, last % 4 == 2);
        case 0x06: return either(next == 1 || next == 3, next == 2 || next == 4);
        case 0x0A:
        case 0x0B: return either(next == 1, next == 2);
        case 0x0C: return either(next == 1 || next == 6, next == 2);
        case 0x13:
        case 0x7F: return "";
        case 0x1D: return either(false, next == 1);
        case 0x0F:
        case 0x1F:
        case 0x20: return either(last == 1, last == 2);
        case 0x21: return either(next == 1 || next == 2, next == 3);
        case 0x22: return either(next == 1 || next == 2, false);
        default: return container[13] < 0x11 ? either(last == 1, last == 2) : either(next == 1, next == 2);
    }
}
