#include <algorithm>
#include <cmath>
#include <utility>

#include "common/elementary.h"
#include "common/names.h"
#include "common/ordered_bytes.h"
#include "common/values.h"
#include "main/facts_of.h"

namespace {

constexpr size_t kMostDirectories = 64;
constexpr uint64_t kMostEntries = 4096;    // of a directory
constexpr uint64_t kMostStrips = 1 << 17;  // looked at

enum Tag : uint16_t {
    kSubfileType = 254,
    kWidth = 256,
    kLength = 257,
    kBits = 258,
    kCompression = 259,
    kPhotometric = 262,
    kMake = 271,
    kModel = 272,
    kStripOffsets = 273,
    kOrientation = 274,
    kSamples = 277,
    kRowsPerStrip = 278,
    kStripCounts = 279,
    kXResolution = 282,
    kYResolution = 283,
    kPlanar = 284,
    kSoftware = 305,
    kDateTime = 306,
    kTileWidth = 322,
    kTileLength = 323,
    kTileOffsets = 324,
    kTileCounts = 325,
    kSubDirectories = 330,
    kExtraSamples = 338,
    kSampleFormat = 339,
    kSubsampling = 530,
    kPatternSize = 33421,
    kDngVersion = 50706,
    kTileDepth = 32998,
    kDefaultScale = 50718,
    kDefaultCrop = 50720,
    kTimeCodes = 51043,
    kFrameRate = 51044,
    kReelName = 51081,
    kLastBaseline = 700,
    kLastDng = 51105,
};

constexpr CodeName kCompressions[] = {  // TIFF 6.0 and its supplements, and what cameras have
    {1, "uncompressed"},  {2, "CCITT RLE"},
    {3, "CCITT Group 3"}, {4, "CCITT Group 4"},
    {5, "LZW"},           {6, "JPEG"},
    {7, "JPEG"},          {8, "Deflate"},
    {9, "JBIG"},          {10, "JBIG"},
    {32767, "Sony ARW"},  {32771, "CCITT RLE"},
    {32773, "PackBits"},  {32809, "ThunderScan"},
    {32908, "PixarFilm"}, {32909, "PixarLog"},
    {32946, "Deflate"},   {33003, "JPEG 2000"},
    {33005, "JPEG 2000"}, {34661, "JBIG"},
    {34676, "LogLuv"},    {34677, "LogLuv"},
    {34712, "JPEG 2000"}, {34713, "Nikon NEF"},
    {34887, "LERC"},      {34892, "JPEG"},
    {34925, "LZMA"},      {34933, "PNG"},
    {34934, "JPEG XR"},   {50000, "Zstandard"},
    {50001, "WebP"},      {50002, "JPEG XL"},
    {52546, "JPEG XL"},   {65535, "Pentax PEF"}};

constexpr uint32_t kUncompressed = 1;
constexpr uint32_t kLzw = 5;
constexpr uint32_t kJpeg = 7;
constexpr uint32_t kDeflate = 8;
constexpr uint32_t kYCbCr = 6;

// Bytes a value of a type, by its code; 0 for types that are none.
constexpr uint8_t kTypeSizes[] = {0, 1, 1, 2, 4, 8, 1, 1, 2, 4, 8, 4, 8, 4, 0, 0, 8, 8, 8};

// The values of an entry.
struct Values {
    OrderedBytes bytes;
    uint32_t type = 0;
    uint64_t count = 0;

    uint64_t size() const { return type < std::size(kTypeSizes) ? kTypeSizes[type] : 0; }
    bool has(uint64_t i) const { return i < count && bytes.bytes.has(i * size(), size()) && size() > 0; }
    // An unsigned whole number; 0 where there is none.
    uint64_t number(uint64_t i = 0) const {
        return has(i) ? bytes.number(i * size(), static_cast<unsigned>(size() > 8 ? 4 : size())) : 0;
    }
    Ratio ratio(uint64_t i = 0) const {
        return has(i) && size() == 8 ? Ratio{bytes.u32(8 * i), bytes.u32(8 * i + 4)} : Ratio{};
    }
    // The same as a whole number of what may be a ratio, at most 2^31.
    uint64_t rounded(uint64_t i) const {
        const uint64_t value = type == 5 ? static_cast<uint64_t>(std::llround(ratio(i).value())) : number(i);
        return std::min<uint64_t>(value, 1U << 31);
    }
    std::string text() const { return count > 0 ? fixed_text(bytes.bytes, 0, count) : ""; }
};

// A directory of a TIFF or BigTIFF file: entries of 12 or 20 bytes.
class Directory {
 public:
    Directory(Input &input, ByteOrder order, bool big, uint64_t offset) : input_(input), room_(big ? 8 : 4) {
        const unsigned head = big ? 8 : 2;
        const OrderedBytes start{input.present(offset, head), order};
        count_ = std::min(start.number(0, head), kMostEntries);
        const uint64_t size = count_ * entry_size() + room_;
        entries_ = {input.present(offset + head, size), order};
        is_whole_ =
            count_ > 0 && start.bytes.size() == head && entries_.bytes.size() >= count_ * entry_size();
        end_ = offset + head + size;
    }

    Input &input() const { return input_; }
    // Tags ascend, so that the last one is 0 only where it was never written.
    bool is_whole() const { return is_whole_ && tag(count_ - 1) != 0; }
    uint64_t end() const { return end_; }
    uint64_t next() const { return entries_.number(count_ * entry_size(), room_); }

    Values values(Tag wanted) const {
        uint64_t i = 0;
        while (i < count_ && tag(i) != wanted) i++;
        if (i == count_) return {};
        Values values = entry(i);
        const uint64_t size = std::min(values.count, kMostStrips) * values.size();
        if (size > room_) values.bytes = {input_.present(place(values), size), entries_.order};
        return values;
    }
    // Where the values end that do not fit into their entries. Private ones may point anywhere.
    uint64_t values_end() const {
        uint64_t end = 0;
        for (uint64_t i = 0; i < count_; i++) {
            const Values values = entry(i);
            const bool is_private = tag(i) > kLastBaseline && (tag(i) < kDngVersion || tag(i) > kLastDng);
            const uint64_t size = values.count * values.size();
            if (is_private || values.count > UINT32_MAX || size <= room_) continue;
            end = std::max(end, place(values) > UINT64_MAX / 2 ? place(values) : place(values) + size);
        }
        return end;
    }
    uint64_t number(Tag tag, uint64_t otherwise = 0) const {
        const Values found = values(tag);
        return found.has(0) ? found.number() : otherwise;
    }

 private:
    uint64_t entry_size() const { return 4 + 2 * uint64_t{room_}; }
    uint32_t tag(uint64_t i) const { return entries_.u16(i * entry_size()); }
    // With its field as the bytes: the values, or their place.
    Values entry(uint64_t i) const {
        const OrderedBytes b = entries_.sub(i * entry_size(), entry_size());
        return {b.from(4 + room_), b.u16(2), b.number(4, room_)};
    }
    uint64_t place(const Values &values) const { return values.bytes.number(0, room_); }

    Input &input_;
    unsigned room_;  // bytes of values or their place in an entry
    uint64_t count_ = 0;
    uint64_t end_ = 0;
    bool is_whole_ = false;
    OrderedBytes entries_;
};

std::string components_of(const Directory &directory) {
    const uint64_t samples = directory.number(kSamples, 1);
    switch (directory.number(kPhotometric, 1)) {
        case 0:
        case 1: return samples == 1 ? "Y" : samples == 2 ? "YA" : std::to_string(samples) + " channels";
        case 2: return samples == 3 ? "RGB" : samples == 4 ? "RGBA" : std::to_string(samples) + " channels";
        case 3: return "palette";
        case 4: return "mask";
        case 5: return "CMYK";
        case kYCbCr: {
            const Values subsampling = directory.values(kSubsampling);
            // Encoders that leave it out have it in their JPEG data.
            Picture jpeg;
            const uint64_t tiles = directory.number(kTileOffsets);
            const uint64_t first = tiles > 0 ? tiles : directory.number(kStripOffsets);
            if (subsampling.count == 0 && directory.number(kCompression) == kJpeg)
                return jpeg_frame(directory.input().present(first, 4096), jpeg) ? jpeg.components : "YCbCr";
            const std::string chroma = chroma_text(subsampling.has(0) ? subsampling.number(0) : 2,
                                                   subsampling.has(1) ? subsampling.number(1) : 2);
            return chroma.empty() ? "YCbCr" : chroma;
        }
        case 8:
        case 9:
        case 10: return "Lab";
        case 32803: return directory.number(kPatternSize, 2) == 2 ? "Bayer" : "CFA";
        case 32844: return "Y";  // logarithmic
        case 32845: return "Luv";
        case 51177: return "Z";
        case 34892: return samples == 3 ? "RGB" : "raw";
        default: return "";
    }
}

Picture picture_of(const Directory &directory) {
    Picture picture;
    const uint64_t width = directory.number(kWidth);
    const uint64_t height = directory.number(kLength);
    if (width > INT32_MAX || height > INT32_MAX) return picture;
    picture.width = static_cast<uint32_t>(width);
    picture.height = static_cast<uint32_t>(height);
    const Values bits = directory.values(kBits);
    picture.bits = static_cast<uint32_t>(bits.count == 0 ? 1 : std::min<uint64_t>(bits.number(), 128));
    const uint64_t format = directory.number(kSampleFormat, 1);
    picture.floating = format == 3 || format == 6;  // 6: complex
    picture.components = components_of(directory);
    const uint64_t compression = directory.number(kCompression, kUncompressed);
    picture.codec = name_of(kCompressions, static_cast<uint32_t>(compression), "");
    if (picture.codec.empty()) picture.codec = "compression " + std::to_string(compression);
    picture.frames = 1;
    const Ratio x = directory.values(kXResolution).ratio();
    const Ratio y = directory.values(kYResolution).ratio();
    if (x.is_set() && y.is_set() && x.n < INT32_MAX && y.n < INT32_MAX)
        picture.pixel_aspect = Ratio{y.n * x.d, y.d * x.n}.reduced();
    // DNG: the part of a raw picture that is shown, and what makes its pixels square.
    const Values crop = directory.values(kDefaultCrop);
    if (crop.rounded(0) > 0 && crop.rounded(0) <= width && crop.rounded(1) > 0 && crop.rounded(1) <= height) {
        picture.coded_width = std::exchange(picture.width, static_cast<uint32_t>(crop.rounded(0)));
        picture.coded_height = std::exchange(picture.height, static_cast<uint32_t>(crop.rounded(1)));
    }
    const Values scale = directory.values(kDefaultScale);
    if (scale.ratio(0).is_set() && scale.ratio(1).is_set())
        picture.pixel_aspect = aspect_of(scale.ratio(0).value() / scale.ratio(1).value());
    return picture;
}

// Where the data of a picture ends, 0 where that is not known, and whether it ends in zeros that no
// compressor writes.
struct DataEnd {
    uint64_t end = 0;
    bool is_blank = false;
};

// The strips or tiles of a picture.
struct Strips {
    static constexpr uint64_t kMost = 1U << 31;

    explicit Strips(const Directory &directory) : tiled(directory.values(kTileOffsets).count > 0) {
        offsets = directory.values(tiled ? kTileOffsets : kStripOffsets);
        counts = directory.values(tiled ? kTileCounts : kStripCounts);
        height = std::min(directory.number(kLength), kMost);
        const uint64_t told_rows = directory.number(tiled ? kTileLength : kRowsPerStrip, height);
        rows = std::clamp<uint64_t>(told_rows, 1, tiled ? kMost : height);
        const uint64_t samples = directory.number(kPlanar, 1) == 2 ? 1 : directory.number(kSamples, 1);
        const uint64_t bits =
            std::min<uint64_t>(samples, 1 << 16) * std::min<uint64_t>(directory.number(kBits, 1), 1 << 8);
        const uint64_t width = std::min(directory.number(tiled ? kTileWidth : kWidth), kMost);
        line = (width * bits + 7) / 8;
        is_measurable = directory.number(kCompression, kUncompressed) == kUncompressed &&
                        directory.number(kPhotometric, 1) != kYCbCr && directory.number(kTileDepth, 1) == 1;
    }
    // Of what is not compressed one has what it needs where its count says more, or nothing.
    uint64_t size(uint64_t i) const {
        const uint64_t in_plane = (height + rows - 1) / rows;
        const uint64_t lines = tiled ? rows : std::min(rows, height - i % in_plane * rows);
        const uint64_t told = counts.number(i);
        return is_measurable && (told == 0 || told / lines >= line) ? std::min(line, kMost) * lines : told;
    }

    bool tiled;
    Values offsets, counts;
    uint64_t height, rows;
    uint64_t line;  // bytes
    bool is_measurable;
};

DataEnd data_end(const Directory &directory) {
    const Strips strips(directory);
    DataEnd result;
    uint64_t last_size = 0;
    for (uint64_t i = 0; i < std::min(strips.offsets.count, kMostStrips) && strips.offsets.has(i); i++) {
        const uint64_t size = strips.size(i);
        const uint64_t end = strips.offsets.number(i) + size;
        if (end < size || size == 0 || end <= result.end) continue;
        result.end = end;
        last_size = size;
    }
    const uint64_t compression = directory.number(kCompression, kUncompressed);
    // Of others than these cameras pad the end.
    constexpr uint64_t kPacked[] = {kLzw, kDeflate, 32946, 34925, 50000};
    const uint64_t most = std::ranges::count(kPacked, compression) > 0 ? 64 : 4096;
    if (result.end > 0 && compression != kUncompressed)
        result.is_blank = ends_in_zeros(directory.input(), result.end - last_size, result.end, 16, most);
    return result;
}

// CinemaDNG: eight bytes a timecode after SMPTE ST 331, frames first.
FileTimecode dng_timecode(const Directory &directory, Ratio rate) {
    const Values values = directory.values(kTimeCodes);
    if (values.count < 8 || values.type != 1) return {};
    const Bytes b = values.bytes.bytes;
    const uint32_t bcd =
        static_cast<uint32_t>((b[3] & 0x3F) << 24 | (b[2] & 0x7F) << 16 | (b[1] & 0x7F) << 8 | (b[0] & 0x7F));
    return bcd_timecode(bcd, base_of(rate), "TimeCodes");
}

void add_first_directory(const Directory &directory, Facts &facts) {
    facts.writer = directory.values(kSoftware).text();
    facts.date = iso_date_in(directory.values(kDateTime).text());
    const Values version = directory.values(kDngVersion);
    if (version.count >= 2 && version.type == 1) {
        facts.format = "DNG";
        facts.variant = std::to_string(version.number(0)) + "." + std::to_string(version.number(1));
    }
    std::string camera = directory.values(kMake).text();
    append(camera, directory.values(kModel).text(), " ");
    facts.add_more("camera", camera);
    const uint64_t orientation = directory.number(kOrientation, 1);
    if (orientation != 1) facts.add_more("orientation", orientation);
}

// What the directories of a file tell together.
struct Tiff {
    Facts &facts;
    uint64_t end = 0;         // where directories and pictures reach to
    uint64_t values_end = 0;  // and values
    std::pair<bool, uint64_t> largest = {};
    std::string tiles = {};  // of the largest
    int64_t pages = 0;
    bool is_cut = false;  // a directory
    bool is_known = false;
    bool is_blank = false;
    bool has_bits = true;
    Ratio rate = {};
    FileTimecode timecode = {};
};

void add_picture(const Directory &directory, Tiff &tiff) {
    Picture picture = picture_of(directory);
    if (picture.width == 0 || picture.height == 0) return;
    // 2: one of several pages; others are previews, masks and the like, which may be as large as the picture.
    picture.enabled = (directory.number(kSubfileType) & ~uint64_t{2}) == 0;
    tiff.pages += picture.enabled;
    const DataEnd data = data_end(directory);
    tiff.end = std::max(tiff.end, data.end);
    tiff.is_known = tiff.is_known || data.end > 0;
    tiff.is_blank = tiff.is_blank || data.is_blank;
    tiff.has_bits = tiff.has_bits && picture.bits > 0;
    const auto rank = std::pair(picture.enabled, uint64_t{picture.width} * picture.height);
    if (rank > tiff.largest) {
        const uint64_t tile_width = directory.number(kTileWidth);
        tiff.tiles = tile_width > 0 ? size_text(tile_width, directory.number(kTileLength)) : "";
        tiff.largest = rank;
    }
    tiff.facts.pictures.push_back(std::move(picture));
}

void add_directory(const Directory &directory, Tiff &tiff) {
    tiff.values_end = std::max(tiff.values_end, directory.values_end());
    const Ratio told = directory.values(kFrameRate).ratio();
    if (!tiff.rate.is_set()) tiff.rate = rate_of(told.n, told.d);
    if (!tiff.timecode.is_set()) tiff.timecode = dng_timecode(directory, tiff.rate);
    if (tiff.facts.reel.empty()) tiff.facts.reel = directory.values(kReelName).text();
    add_picture(directory, tiff);
}

// `is_all`: no directory was left out.
void finish(Tiff &tiff, bool is_all) {
    Facts &facts = tiff.facts;
    facts.largest_first();
    if (!facts.pictures.empty()) facts.pictures.front().rate = tiff.rate;
    facts.add(std::move(tiff.timecode));
    if (!tiff.tiles.empty()) append(facts.variant, "tiled");
    facts.add_more("tiles", tiff.tiles);
    if (tiff.pages > 1 && is_all) facts.add_more("pages", tiff.pages);
    if (facts.pictures.size() > 1 && is_all) facts.add_more("pictures", facts.pictures.size());
    if (tiff.is_cut) {
        facts.cut(tiff.end, "the directory");
    } else if (tiff.end > facts.extent.present) {
        facts.cut(tiff.end, "picture data");
    } else if (tiff.values_end > facts.extent.present) {
        facts.cut(tiff.values_end, "values of the directory");
    } else if (!tiff.has_bits) {
        facts.cut(tiff.values_end, "values of the directory: zeros in their place");
    } else if (tiff.is_blank) {
        facts.cut(tiff.end, "the end of the picture data holds zeros");
    } else if (tiff.is_known && is_all) {
        facts.whole(std::max(tiff.end, tiff.values_end));
    }
}

}  // namespace

void tiff_facts(Input &input, Facts &facts) {
    const Bytes head = input.present(0, 16);
    const OrderedBytes header = head[0] == 'M' ? big_endian(head) : little_endian(head);
    const bool big = header.u16(2) == 43;
    if (header.u16(2) != 42 && !big) return facts.format.clear();
    if (big) facts.variant = "BigTIFF";
    facts.add_more("byte order", header.is_big() ? "big-endian" : "little-endian");

    Tiff tiff{facts};
    std::vector<uint64_t> seen;
    std::vector<uint64_t> waiting{big ? header.u64(8) : header.u32(4)};
    while (!waiting.empty() && seen.size() < kMostDirectories) {
        const uint64_t offset = waiting.back();
        waiting.pop_back();
        if (offset == 0 || std::ranges::find(seen, offset) != seen.end()) continue;
        const Directory directory(input, header.order, big, offset);
        seen.push_back(offset);
        tiff.end = std::max(tiff.end, directory.end());
        if (!directory.is_whole()) {
            tiff.is_cut = true;
            continue;
        }
        waiting.push_back(directory.next());
        const Values below = directory.values(kSubDirectories);
        for (uint64_t i = std::min<uint64_t>(below.count, kMostDirectories); i-- > 0;)
            waiting.push_back(below.number(i));
        if (seen.size() == 1) add_first_directory(directory, facts);
        add_directory(directory, tiff);
    }
    finish(tiff, std::ranges::count(waiting, 0U) == std::ssize(waiting));
}
