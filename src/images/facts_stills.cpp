// Facts of still images: BMP, GIF, TGA, SGI, Softimage, PNG, portable maps.
#include <algorithm>
#include <bit>
#include <cmath>
#include <iterator>
#include <optional>
#include <utility>

#include "common/codecs.h"
#include "common/elementary.h"
#include "common/names.h"
#include "common/ordered_bytes.h"
#include "common/values.h"
#include "main/facts_of.h"

namespace {

constexpr uint32_t kMostSide = 1 << 20;

Picture &still(Facts &facts, uint32_t width, uint32_t height, uint32_t bits, std::string components,
               std::string codec) {
    Picture &picture = facts.picture();
    picture.width = width;
    picture.height = height;
    picture.bits = bits;
    picture.components = std::move(components);
    picture.codec = std::move(codec);
    picture.frames = 1;
    return picture;
}

const char *grey_or_colour(uint64_t channels) {
    constexpr const char *kNames[] = {"", "Y", "YA", "RGB", "RGBA"};
    return channels < std::size(kNames) ? kNames[channels] : "";
}

// How long each frame of an animation is shown.
struct Delays {
    int64_t count = 0;
    Ratio first;
    double seconds = 0;
    bool is_even = true;

    void add(Ratio delay) {
        if (count++ == 0) first = delay;
        is_even = is_even && delay.n * first.d == first.n * delay.d;
        seconds += delay.value();
    }
    // Of all frames of one, where there are several.
    void tell(Facts &facts) const {
        Picture &picture = facts.picture();
        const int64_t thousandths = std::llround(seconds * 1000);
        if (count < 2 || count != picture.frames || thousandths <= 0) return;
        picture.rate = is_even ? Ratio{first.d, first.n}.reduced() : rate_of(1000 * count, thousandths);
        picture.constant_rate = is_even;
        if (is_even) return facts.lasts(count, picture.rate);
        facts.lasts(thousandths, {1000, 1});
    }
};

// Where run-length packets of a TGA end that have that many pixels; nothing where the data is too long to be
// looked at.
std::optional<uint64_t> packets_end(Input &input, uint64_t at, uint64_t pixels, uint64_t pixel_bytes) {
    constexpr uint64_t kLookedAt = 4 << 20;
    if (pixels * pixel_bytes > kLookedAt) return std::nullopt;
    const Bytes data = input.bytes(at, kLookedAt, 64 * 1024);
    uint64_t offset = 0;
    while (pixels > 0 && offset < kLookedAt) {
        const uint64_t count = (data[offset] & 0x7FU) + 1;
        offset += 1 + (data[offset] & 0x80 ? 1 : count) * pixel_bytes;
        pixels -= std::min(pixels, count);
    }
    if (pixels > 0) return std::nullopt;
    return at + offset;
}

// Blocks of a GIF89a, as far as they are looked at.
struct GifBlocks {
    static constexpr uint8_t kExtension = 0x21, kControl = 0xF9, kImage = 0x2C, kTrailer = 0x3B;

    OrderedBytes b;
    uint64_t at = 0;
    uint32_t bits = 0;  // of the largest palette
    int64_t delay = 0;  // hundredths of a second of the next image
    Delays delays = {};

    bool is_ended() const { return b.u8(at) == kTrailer; }
    // Bytes of the palette that flags tell.
    uint64_t palette(uint8_t flags) {
        if ((flags & 0x80) == 0) return 0;
        bits = std::max(bits, (flags & 7U) + 1);
        return uint64_t{6} << (flags & 7);
    }
    void skip_data() {
        while (b.u8(at) != 0) at += 1U + b.u8(at);
        at++;
    }
    void walk() {
        for (; b.u8(at) == kExtension || b.u8(at) == kImage; skip_data()) {
            if (b.u8(at) == kExtension) {
                if (b.u8(at + 1) == kControl) delay = b.u16(at + 4);
                at += 2;
                continue;
            }
            delays.add({std::exchange(delay, 0), 100});
            at += 11 + palette(b.u8(at + 9));
        }
    }
};

// The data of a long image is in blocks of 254 or 255 bytes: from a row of them in a file's tail the walk
// goes on.
void judge_gif_tail(Input &input, Facts &facts) {
    constexpr uint64_t kTail = 65536, kRow = 16;
    const uint64_t start = input.size() - kTail;
    GifBlocks blocks{little_endian(input.present(start, kTail))};
    if (bytes_are(blocks.b.bytes, kTail - 2, "\0;")) return facts.whole(input.size());
    const auto is_row = [&](uint64_t first) {
        const uint64_t length = blocks.b.u8(first);
        if (length < 254 || blocks.b.u16(first + 1) == length * 0x101) return false;  // one byte all over
        uint64_t n = 0;
        while (n < kRow && blocks.b.u8(first + n * (length + 1)) == length) n++;
        return n == kRow;
    };
    uint64_t &at = blocks.at;
    while (at < kTail && !is_row(at)) at++;
    if (at >= kTail) return;
    blocks.skip_data();
    blocks.walk();
    if (blocks.is_ended()) return facts.whole(start + at + 1);
    if (at > kTail) facts.cut(start + at + 1, "the picture's end");
}

}  // namespace

// GIF89a: the logical screen, and how many colours its palette may have. Blocks in the first 4 MiB are
// walked, of what is longer those in the last 64 KiB.
void gif_facts(Input &input, Facts &facts) {
    constexpr uint64_t kLookedAt = 4 << 20;
    const uint64_t size = input.size();
    GifBlocks blocks{little_endian(input.bytes(0, std::min(size, kLookedAt), 64 * 1024)), 13};
    const OrderedBytes b = blocks.b;
    if (b.u16(6) == 0) return;
    blocks.at += blocks.palette(b.u8(10));
    blocks.walk();
    Picture &picture = still(facts, b.u16(6), b.u16(8), blocks.bits, "palette", "LZW");
    picture.frames = blocks.is_ended() ? blocks.delays.count : -1;
    if (b.u8(12) != 0) picture.pixel_aspect = Ratio{b.u8(12) + 15, 64}.reduced();
    if (blocks.is_ended()) {
        blocks.delays.tell(facts);
        facts.whole(blocks.at + 1);
    } else if (blocks.at > size || (blocks.at == size && blocks.delays.count == 0)) {
        facts.cut(blocks.at + 1, "the picture's end");  // some writers leave the trailer out
    } else if (ends_in_zeros(input, blocks.at, size, 1, 1024)) {
        facts.cut(size, "the end holds zeros");
    } else if (blocks.at >= kLookedAt) {
        judge_gif_tail(input, facts);
    }
}

void bmp_facts(Input &input, Facts &facts) {
    constexpr uint32_t kSizes[] = {12, 16, 40, 52, 56, 64, 108, 124};
    constexpr CodeName kCodecs[] = {{0, "uncompressed"}, {1, "RLE"}, {2, "RLE"},         {3, "uncompressed"},
                                    {4, "JPEG"},         {5, "PNG"}, {6, "uncompressed"}};
    constexpr CodeName kOs2Codecs[] = {
        {0, "uncompressed"}, {1, "RLE"}, {2, "RLE"}, {3, "Huffman"}, {4, "RLE"}};
    const OrderedBytes h = little_endian(input.present(0, 138));
    const uint32_t size = h.u32(14);
    const bool core = size == 12;
    const uint32_t width = core ? h.u16(18) : h.u32(18);
    const int32_t lines = core ? h.u16(20) : h.s32(22);
    const uint32_t height = lines < 0 ? 0 - static_cast<uint32_t>(lines) : static_cast<uint32_t>(lines);
    const uint32_t depth = h.u16(core ? 24 : 28);
    const uint32_t compression = core || size == 16 ? 0 : h.u32(30);
    constexpr uint32_t kDepths[] = {0, 1, 2, 4, 8, 16, 24, 32, 64};
    const bool known_depth = std::ranges::find(kDepths, depth) != std::end(kDepths);
    if (std::ranges::find(kSizes, size) == std::end(kSizes) || width > kMostSide || height > kMostSide ||
        !known_depth)
        return facts.format.clear();
    const bool palette = depth >= 1 && depth <= 8;
    const bool os2 = size == 64;
    const bool masked = !os2 && (compression == 3 || compression == 6) && h.u32(54) != 0;
    const uint32_t bits = palette       ? depth
                          : masked      ? static_cast<uint32_t>(std::popcount(h.u32(54)))
                          : depth == 16 ? 5
                          : depth == 64 ? 16
                                        : 8;
    const bool alpha = (depth == 32 || (masked && depth == 16)) && !os2 && (size >= 56 || compression == 6) &&
                       h.u32(66) != 0;
    const char *const components = palette ? "palette" : alpha ? "RGBA" : "RGB";
    Picture &picture = still(facts, width, height, bits, components,
                             os2 ? name_of(kOs2Codecs, compression) : name_of(kCodecs, compression));
    if (size >= 108 && h.u32(70) == fourcc("sRGB")) picture.colour = {1, 13, 0, 1};
    if (size >= 40 && h.s32(38) > 0 && h.s32(42) > 0 && h.s32(38) != h.s32(42))
        picture.pixel_aspect = Ratio{h.s32(42), h.s32(38)}.reduced();
    facts.add_more("bits a pixel", depth);
    if (lines < 0) facts.add_more("orientation", "top down");
    const uint64_t offset = h.u32(10);
    const bool plain = picture.codec == "uncompressed";
    const uint64_t line = (uint64_t{width} * depth + 31) / 32 * 4;
    const uint64_t told = core ? 0 : h.u32(34);
    if (plain || told > 0) facts.reaches(offset + (plain ? line * height : told));
}

// There is no magic number: what is not possible is no TGA.
void tga_facts(Input &input, Facts &facts) {
    const OrderedBytes h = little_endian(input.present(0, 18));
    const uint32_t type = h.u8(2);
    const uint32_t depth = h.u8(16);
    const uint32_t map = h.u8(1);
    const bool mapped = (type & 7) == 1;
    const bool grey = (type & 7) == 3;
    const bool known_type = type != 0 && (type & 7) >= 1 && (type & 7) <= 3 && (type & ~11U) == 0;
    const bool known_depth =
        depth == 8 || (!mapped && (depth == 15 || depth == 16 || depth == 24 || depth == 32));
    const bool known_map =
        map == 0 ? !mapped : map == 1 && (h.u8(7) == 15 || h.u8(7) == 16 || h.u8(7) == 24 || h.u8(7) == 32);
    if (!known_type || !known_depth || !known_map || h.u16(12) == 0 || h.u16(14) == 0)
        return facts.format.clear();
    const bool alpha = (h.u8(17) & 15) > 0 && (depth == 32 || depth == 16);
    still(facts, h.u16(12), h.u16(14), depth == 15 || depth == 16 ? (grey ? 8 : 5) : 8,
          mapped  ? "palette"
          : grey  ? (depth == 16 ? "YA" : "Y")
          : alpha ? "RGBA"
                  : "RGB",
          type & 8 ? "RLE" : "uncompressed");
    facts.add_more("bits a pixel", depth);
    const uint64_t size = input.size();
    const Bytes tail = input.present(size < 26 ? 0 : size - 26, 26);
    const bool footer = bytes_are(tail, 8, "TRUEVISION-XFILE.\0");
    const uint64_t data = 18U + h.u8(0) + (map ? uint64_t{h.u16(5)} * ((h.u8(7) + 7U) / 8) : 0);
    const uint64_t pixels = uint64_t{h.u16(12)} * h.u16(14) * ((depth + 7) / 8);
    if (footer) {
        facts.variant = "TGA 2.0";
        const OrderedBytes more = little_endian(input.present(little_endian(tail).u32(0), 495));
        if (more.u16(0) == 495) {
            facts.writer = fixed_text(more.bytes, 426, 41);
            facts.date = iso_date(more.u16(371), more.u16(367), more.u16(369), more.u16(373), more.u16(375),
                                  more.u16(377));
            facts.picture().pixel_aspect = Ratio{more.u16(474), more.u16(476)}.reduced();
        }
    }
    if (!footer && contains(tail, "TRUEVISION-XFIL")) {
        facts.cut(0, "the footer's end");
    } else if (!(type & 8)) {
        facts.reaches(data + pixels);
    } else if (footer) {
        facts.whole(size);
    } else if (const auto end = packets_end(input, data, uint64_t{h.u16(12)} * h.u16(14), (depth + 7) / 8)) {
        facts.reaches(*end);
    }
}

void sgi_facts(Input &input, Facts &facts) {
    const OrderedBytes h = big_endian(input.present(0, 512));
    const uint32_t storage = h.u8(2);
    const uint32_t bytes = h.u8(3);
    const uint32_t dimensions = h.u16(4);
    if (storage > 1 || bytes < 1 || bytes > 2 || dimensions < 1 || dimensions > 3)
        return facts.format.clear();
    const uint32_t height = dimensions > 1 ? h.u16(8) : 1;
    const uint32_t channels = dimensions > 2 ? h.u16(10) : 1;
    still(facts, h.u16(6), height, 8 * bytes, grey_or_colour(channels), storage ? "RLE" : "uncompressed");
    facts.add_more("name", fixed_text(h.bytes, 24, 80));
    if (!storage) return facts.reaches(512 + uint64_t{h.u16(6)} * height * channels * bytes);
    // Tables of where each line of each channel begins, and of its length.
    const uint64_t rows = uint64_t{height} * channels;
    const OrderedBytes tables = big_endian(input.present(512, 8 * rows));
    uint64_t end = 512 + 8 * rows;
    uint64_t last = end;
    for (uint64_t i = 0; i < std::min(rows, tables.bytes.size() / 4); i++) {
        const uint64_t start = tables.u32(4 * i);
        if (start + tables.u32(4 * (rows + i)) <= end) continue;
        end = start + tables.u32(4 * (rows + i));
        last = start;
    }
    facts.reaches(end);
    // A line begins with a count, and ends with a zero.
    const bool is_blank = end > last + bytes && is_zero(input.present(last, bytes));
    if (is_blank && end <= input.size()) facts.cut(end, "the last lines (zeros)");
}

void softimage_facts(Input &input, Facts &facts) {
    constexpr uint64_t kMostChannels = 8;
    constexpr Scan kFields[] = {Scan::unknown, Scan::interlaced, Scan::interlaced, Scan::progressive};
    const OrderedBytes h = big_endian(input.present(0, 104 + 4 * kMostChannels));
    if (!bytes_are(h.bytes, 88, "PICT")) return facts.format.clear();
    std::string codec;
    uint32_t bits = 0, masks = 0;
    for (uint64_t i = 0; i < kMostChannels && h.bytes.has(104 + 4 * i, 4); i++) {
        const OrderedBytes channel = h.from(104 + 4 * i);
        bits = std::max<uint32_t>(bits, channel.u8(1));
        masks |= channel.u8(3);
        codec = channel.u8(2) == 0 ? "uncompressed" : "RLE";
        if (channel.u8(0) == 0) break;
    }
    const std::string components = std::string(masks & 0xE0 ? "RGB" : "") + (masks & 0x10 ? "A" : "");
    Picture &picture = still(facts, h.u16(92), h.u16(94), bits, components, codec);
    picture.scan = h.u16(100) < std::size(kFields) ? kFields[h.u16(100)] : Scan::unknown;
    picture.pixel_aspect = aspect_of(static_cast<double>(float_of_bits(h.u32(96))));
    facts.variant = number_text(static_cast<double>(float_of_bits(h.u32(4))), 3);
    facts.add_more("comment", fixed_text(h.bytes, 8, 80));
}

namespace {

// What the chunks before the picture say; where the first data chunk begins.
void add_png_chunk(OrderedBytes chunk, Facts &facts) {
    Picture &picture = facts.picture();
    const Bytes b = chunk.bytes;
    const OrderedBytes data = chunk.from(8);
    if (bytes_are(b, 4, "pHYs") && data.u32(0) > 0 && data.u32(4) > 0 && data.u32(0) != data.u32(4))
        picture.pixel_aspect = Ratio{data.u32(4), data.u32(0)}.reduced();
    if (bytes_are(b, 4, "cICP")) picture.colour = {data.u8(0), data.u8(1), data.u8(2), data.u8(3)};
    if (bytes_are(b, 4, "sRGB") && picture.colour.transfer < 0) picture.colour = {1, 13, 0, 1};
    if (bytes_are(b, 4, "gAMA") && data.u32(0) > 0)
        facts.add_more("gamma", number_text(100000.0 / data.u32(0), 3));
    if (bytes_are(b, 4, "tIME"))
        facts.date = iso_date(data.u16(0), data.u8(2), data.u8(3), data.u8(4), data.u8(5), data.u8(6), true);
    if (bytes_are(b, 4, "iCCP")) facts.add_more("colour", "ICC profile");
    if (bytes_are(b, 4, "acTL")) picture.frames = data.u32(0);
    if (bytes_are(b, 4, "tEXt") && bytes_are(b, 8, "Software\0"))
        facts.writer = fixed_text(b, 17, chunk.u32(0) > 9 ? std::min<uint64_t>(chunk.u32(0) - 9, 200) : 0);
}

}  // namespace

namespace {

// Compressed data has many chunks, as a rule of 8 to 64 KiB: where the end is there and the frames have no
// times they are not followed.
void walk_chunks(Input &input, Facts &facts, Delays &delays) {
    constexpr int kMostChunks = 1 << 16, kFew = 8;
    constexpr uint32_t kMostExif = 1 << 20;
    const uint64_t size = input.size();
    const bool ends = size >= 12 && bytes_are(input.present(size - 12, 12), 4, "IEND");
    uint64_t at = 33;
    for (int i = 0; i < kMostChunks; i++) {
        const OrderedBytes chunk = big_endian(input.present(at, 256));
        const uint64_t end = at + 12 + chunk.u32(0);
        const uint32_t type = chunk.u32(4);
        const bool data = type == fourcc("IDAT") || type == fourcc("fdAT");
        if (chunk.bytes.size() < 8 || end > size)
            return facts.cut(std::max(end, at + 12), data ? "picture data" : "the end chunk");
        const bool is_enough = data && ends && i > kFew && delays.count == 0;
        if (type == fourcc("IEND") || is_enough) return facts.whole(ends ? size : end);
        if (type == 0) return facts.cut(end, "picture data: zeros in its place");
        if (type == fourcc("fcTL")) delays.add({chunk.u16(28), chunk.u16(30) == 0 ? 100 : chunk.u16(30)});
        if (type == fourcc("eXIf"))
            exif_facts(input.present(at + 8, std::min(chunk.u32(0), kMostExif)), facts);
        if (!data) add_png_chunk(chunk, facts);
        at = end;
    }
}

}  // namespace

// ISO 15948, with animations.
void png_facts(Input &input, Facts &facts) {
    const OrderedBytes h = big_endian(input.present(0, 33));
    if (!bytes_are(h.bytes, 12, "IHDR")) return facts.cut(33, "the header's end");
    still(facts, h.u32(16), h.u32(20), h.u8(24), png_components(h.u8(25)), "Deflate");
    if (h.u8(28) == 1) facts.variant = "interlaced";
    Delays delays;
    walk_chunks(input, facts, delays);
    delays.tell(facts);
}

namespace {

// Reads a header's numbers: decimal, behind white space and remarks.
class MapHeader {
 public:
    explicit MapHeader(Bytes b) : b_(b) {}

    uint32_t number() {
        while (at_ < b_.size() && !is_digit()) {
            if (b_[at_] == '#') {
                while (at_ < b_.size() && b_[at_] != '\n') at_++;
            }
            at_++;
        }
        uint32_t value = 0;
        for (; is_digit() && value < 100000000; at_++) value = value * 10 + (b_[at_] - '0');
        return value;
    }
    uint64_t data() const { return at_ + 1; }

 private:
    bool is_digit() const { return b_[at_] >= '0' && b_[at_] <= '9'; }

    Bytes b_;
    uint64_t at_ = 2;
};

}  // namespace

// Netpbm: P1 to P3 in decimal, P4 to P6 in bytes.
void netpbm_facts(Input &input, Facts &facts) {
    constexpr const char *kFormats[] = {"PBM", "PGM", "PPM"};
    const Bytes head = input.present(0, 4096);
    MapHeader header(head);
    const uint32_t kind = (head[1] - uint32_t{'1'}) % 3;
    const bool plain = head[1] <= '3';
    const uint32_t width = header.number();
    const uint32_t height = header.number();
    const uint32_t most = kind == 0 ? 1 : header.number();
    if (width == 0 || height == 0 || most == 0 || most > 65535) return facts.format.clear();
    facts.format = kFormats[kind];
    facts.variant = plain ? "plain" : "raw";
    still(facts, width, height, static_cast<uint32_t>(std::bit_width(most)), kind == 2 ? "RGB" : "Y",
          "uncompressed");
    const uint64_t bytes = most > 255 ? 2 : 1;
    const uint64_t line =
        kind == 0 ? (uint64_t{width} + 7) / 8 : uint64_t{width} * (kind == 2 ? 3 : 1) * bytes;
    if (!plain) {
        facts.reaches(header.data() + line * height);
    } else {
        // A digit and what divides it from the next, but in PBM; they are counted in the first 4 MiB.
        constexpr uint64_t kLookedAt = 4 << 20;
        const uint64_t samples = uint64_t{width} * height * (kind == 2 ? 3 : 1);
        const uint64_t least = header.data() + (kind == 0 ? samples : 2 * samples - 1);
        const Bytes data = input.present(header.data(), kLookedAt, 64 * 1024);
        uint64_t count = 0, at = 0;
        for (bool in_number = false; at < data.size() && count <= samples; at++) {
            const bool is_digit = data[at] >= '0' && data[at] <= '9';
            if (is_digit && (kind == 0 || !in_number)) count++;
            in_number = is_digit;
            if (!is_digit && count == samples) return facts.whole(header.data() + at);
        }
        if (input.size() < least || (at == data.size() && count < samples && input.size() <= kLookedAt))
            facts.cut(std::max(least, input.size() + 1), "the picture's end");
    }
}
