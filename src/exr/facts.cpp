#include <algorithm>
#include <bit>
#include <cmath>
#include <iterator>
#include <optional>
#include <string_view>
#include <utility>

#include "common/names.h"
#include "common/ordered_bytes.h"
#include "common/values.h"
#include "main/facts_of.h"

namespace {

constexpr uint64_t kLongestName = 256;
constexpr uint64_t kHeaders = 1 << 20;      // looked at
constexpr uint64_t kOffsetTable = 2 << 20;  // looked at
constexpr size_t kMostParts = 1024;
constexpr size_t kPartsFollowed = 64;  // to their chunks
constexpr size_t kMostChannels = 1024;

// Of a compression its name and the scan lines of a chunk.
struct Compression {
    const char *name;
    uint32_t lines;
};
constexpr Compression kCompressions[] = {
    {"uncompressed", 1}, {"RLE", 1},   {"ZIPS", 1},  {"ZIP", 16},   {"PIZ", 32},    {"PXR24", 16},
    {"B44", 32},         {"B44A", 32}, {"DWAA", 32}, {"DWAB", 256}, {"HTJ2K", 256}, {"HTJ2K", 32},
};

struct Box {
    int64_t left = 0, top = 0, right = -1, bottom = -1;

    int64_t width() const { return right - left + 1; }
    int64_t height() const { return bottom - top + 1; }
    std::string text() const {
        const std::string size = std::to_string(width()) + "x" + std::to_string(height());
        return std::to_string(left) + "," + std::to_string(top) + " " + size;
    }
    bool operator==(const Box &) const = default;
};

struct Channel {
    std::string name;
    uint32_t type = 0;  // 0: 32-bit unsigned, 1: half, 2: float
    int32_t across = 1;
    int32_t down = 1;
};

struct Part {
    Picture picture;
    Box data;
    Box display;
    std::vector<Channel> channels;
    uint32_t compression = 0;
    struct {
        uint64_t width = 0, height = 0;
        unsigned mode = 0;
    } tiles;
    int64_t chunks = -1;               // as an attribute says
    std::optional<uint32_t> timecode;  // SMPTE 12M bits in the order of television signals
    std::string name, type, view, owner, camera, chromaticities;
    uint32_t line_order = 0;
};

Box box_at(OrderedBytes b) { return {b.s32(0), b.s32(4), b.s32(8), b.s32(12)}; }

std::vector<Channel> channels_of(OrderedBytes list) {
    std::vector<Channel> channels;
    for (uint64_t at = 0; list.u8(at) != 0 && channels.size() < kMostChannels;) {
        const Text name = text_at(list.bytes, at, kLongestName);
        const uint64_t fields = at + static_cast<uint64_t>(name.length) + 1;
        if (!list.bytes.has(fields, 16)) break;
        channels.push_back({std::string(name.start, static_cast<size_t>(name.length)), list.u32(fields),
                            list.s32(fields + 8), list.s32(fields + 12)});
        at = fields + 16;
    }
    return channels;
}

// The layer of the channels that are the picture: none where a channel has none, else the first.
std::string layer_of(const std::vector<Channel> &channels) {
    std::string layer;
    for (const Channel &channel : channels) {
        if (channel.name.find('.') == std::string::npos) return "";
        if (layer.empty()) layer = channel.name.substr(0, channel.name.rfind('.') + 1);
    }
    return layer;
}

std::string components_of(const std::vector<Channel> &channels) {
    const std::string layer = layer_of(channels);
    const auto find = [&](const char *name) {
        return std::ranges::find(channels, layer + name, &Channel::name);
    };
    const auto has = [&](const char *name) { return find(name) != channels.end(); };
    const std::string alpha = has("A") ? "A" : "";
    if (has("R") && has("G") && has("B")) return "RGB" + alpha;
    if (has("Y") && has("RY") && has("BY")) {
        const Channel &chroma = *find("RY");
        return chroma_text(static_cast<uint32_t>(chroma.across), static_cast<uint32_t>(chroma.down)) +
               (alpha.empty() ? "" : ":4");
    }
    if (has("Y")) return "Y" + alpha;
    return std::to_string(channels.size()) + (channels.size() == 1 ? " channel" : " channels");
}

std::string names_of(const std::vector<Channel> &channels) {
    std::string names;
    for (const Channel &channel : channels) {
        append(names, channel.name, " ");
        if (names.size() > 1000) return names + " ...";
    }
    return names;
}

// Red, green, blue and white as "x,y", where they are none of those with a code.
std::string chromaticities_text(OrderedBytes b) {
    std::string text;
    for (uint64_t i = 0; i < 8; i++) {
        if (i > 0) text += i % 2 == 1 ? "," : " ";
        text += number_text(static_cast<double>(float_of_bits(b.u32(4 * i))), 5);
    }
    return text;
}

// Those of ITU-T H.273 by their code: red, green, blue and white.
struct Primaries {
    int code;
    double points[8];
};
constexpr Primaries kPrimaries[] = {
    {1, {0.640, 0.330, 0.300, 0.600, 0.150, 0.060, 0.3127, 0.3290}},
    {5, {0.640, 0.330, 0.290, 0.600, 0.150, 0.060, 0.3127, 0.3290}},
    {6, {0.630, 0.340, 0.310, 0.595, 0.155, 0.070, 0.3127, 0.3290}},
    {9, {0.708, 0.292, 0.170, 0.797, 0.131, 0.046, 0.3127, 0.3290}},
    {10, {1, 0, 0, 1, 0, 0, 0.3333, 0.3333}},
    {11, {0.680, 0.320, 0.265, 0.690, 0.150, 0.060, 0.3140, 0.3510}},
    {12, {0.680, 0.320, 0.265, 0.690, 0.150, 0.060, 0.3127, 0.3290}},
};

void add_chromaticities(OrderedBytes b, Part &part) {
    const Primaries *const known = row_of(kPrimaries, true, [&](const Primaries &row) {
        bool is_near = true;
        for (uint64_t i = 0; i < std::size(row.points); i++)
            is_near = is_near &&
                      std::fabs(static_cast<double>(float_of_bits(b.u32(4 * i))) - row.points[i]) < 0.002;
        return is_near;
    });
    if (known) part.picture.colour.primaries = known->code;
    if (!known) part.chromaticities = chromaticities_text(b);
}

// Film manufacturer to perforations from the count on, then perforations a frame and a count.
void add_keycode(OrderedBytes value, Facts &facts) {
    facts.keycode = keycode_text(value.s32(0), value.s32(4), value.s32(8), value.s32(12), value.s32(16));
    facts.held.emplace_back("perforations",
                            std::to_string(value.s32(20)) + " of " + std::to_string(value.s32(24)));
    if (!facts.keycode.empty()) return;
    std::string stored;
    for (uint64_t i = 0; i < 5; i++) append(stored, std::to_string(value.s32(4 * i)), " ");
    facts.add_more("keycode text", stored);
}

// Attributes of plain types that others write beside those of the format, as text; empty for other types.
std::string plain_text(std::string_view type, OrderedBytes value) {
    struct Plain {
        std::string_view type;
        uint64_t count;
        enum : uint8_t { whole, real, twice } kind;
    };
    constexpr Plain kPlain[] = {
        {"int", 1, Plain::whole}, {"float", 1, Plain::real},     {"double", 1, Plain::twice},
        {"v2i", 2, Plain::whole}, {"v2f", 2, Plain::real},       {"v3i", 3, Plain::whole},
        {"v3f", 3, Plain::real},  {"box2i", 4, Plain::whole},    {"box2f", 4, Plain::real},
        {"m33f", 9, Plain::real}, {"m44f", 16, Plain::real},     {"v2d", 2, Plain::twice},
        {"v3d", 3, Plain::twice}, {"rational", 2, Plain::whole}, {"m33d", 9, Plain::twice},
    };
    constexpr uint64_t kMostText = 256;
    if (type == "string") return fixed_text(value.bytes, 0, std::min(value.bytes.size(), kMostText));
    const Plain *plain = row_of(kPlain, type, &Plain::type);
    std::string text;
    for (uint64_t i = 0; plain && i < plain->count; i++) {
        const std::string number = plain->kind == Plain::whole ? std::to_string(value.s32(4 * i))
                                   : plain->kind == Plain::real
                                       ? number_text(static_cast<double>(float_of_bits(value.u32(4 * i))))
                                       : number_text(double_of_bits(value.u64(8 * i)), 12);
        append(text, number, " ");
    }
    return text;
}

// What is not told by other facts, nor is another one in each frame, is held.
void add_value(std::string_view name, std::string_view type, OrderedBytes value, Part &part, Facts &facts) {
    bool is_known = false;
    const auto is = [&](auto... names) {
        const bool found = ((name == names) || ...);
        is_known = is_known || found;
        return found;
    };
    const auto text = [&] { return fixed_text(value.bytes, 0, value.bytes.size()); };
    const double real = static_cast<double>(float_of_bits(value.u32(0)));
    if (is("channels")) part.channels = channels_of(value);
    if (is("lineOrder")) part.line_order = value.u8(0);
    if (is("owner")) part.owner = text();
    if (is("cameraModel")) part.camera = text();
    if (is("compression")) part.compression = value.u8(0);
    if (is("dataWindow")) part.data = box_at(value);
    if (is("displayWindow")) part.display = box_at(value);
    if (is("tiles")) part.tiles = {value.u32(0), value.u32(4), value.u8(8)};
    if (is("chunkCount")) part.chunks = value.s32(0);
    if (is("name")) part.name = text();
    if (is("type")) part.type = text();
    if (is("view")) part.view = text();
    if (is("pixelAspectRatio")) part.picture.pixel_aspect = aspect_of(real, 10000);
    if (is("framesPerSecond", "FramesPerSecond")) {
        if (type == "rational") part.picture.rate = rate_of(value.s32(0), value.u32(4));
        if (type == "float") part.picture.rate = rate_of(real);
    }
    if (type == "timecode" && is("timeCode")) part.timecode = value.u32(0) & 0x3F7F7F7F;
    if (type == "keycode" && is("keyCode") && facts.keycode.empty()) add_keycode(value, facts);
    if (is("chromaticities")) add_chromaticities(value, part);
    if (is("software", "Software", "writer") && facts.writer.empty()) facts.writer = text();
    if (is("reelName", "reel")) facts.reel = text();
    if (is("capDate") && facts.date.empty()) facts.date = iso_date_in(text());
    constexpr size_t kMostHeld = 100;
    const std::string plain = is_known || facts.held.size() >= kMostHeld ? "" : plain_text(type, value);
    if (!plain.empty()) facts.held.emplace_back("attribute " + std::string(name), plain);
}

// Reads the attributes of a header from an offset on; where the next one begins, 0 where it is cut.
uint64_t read_header(OrderedBytes file, uint64_t at, Part &part, Facts &facts) {
    while (file.u8(at) != 0) {
        const Text name = text_at(file.bytes, at, kLongestName);
        const std::string name_kept(name.start, static_cast<size_t>(name.length));
        const uint64_t type_at = at + name_kept.size() + 1;
        const Text type = text_at(file.bytes, type_at, kLongestName);
        const std::string type_kept(type.start, static_cast<size_t>(type.length));
        const uint64_t value_at = type_at + type_kept.size() + 5;
        const int32_t size = file.s32(value_at - 4);
        if (size < 0 || !file.bytes.has(value_at, static_cast<uint64_t>(size))) return 0;
        add_value(name_kept, type_kept, file.sub(value_at, static_cast<uint64_t>(size)), part, facts);
        at = value_at + static_cast<uint64_t>(size);
    }
    if (!file.bytes.has(at, 1)) return 0;
    if (part.timecode && facts.timecodes.empty()) {
        // The flag of dropped numbers is always one: at 59.94 Hz two frames share a number of 30 a second.
        const uint32_t base = base_of(part.picture.rate);
        const bool is_pair = base > 30 && (*part.timecode & 0x40) != 0;
        facts.add(bcd_timecode(*part.timecode, is_pair ? base / 2 : base, "timeCode"));
    }
    return at + 1;
}

void complete(Part &part) {
    Picture &picture = part.picture;
    const auto size = [](int64_t n) { return n > 0 && n <= INT32_MAX ? static_cast<uint32_t>(n) : 0; };
    picture.width = size(part.display.width());
    picture.height = size(part.display.height());
    if (part.data.width() != part.display.width() || part.data.height() != part.display.height()) {
        picture.coded_width = size(part.data.width());
        picture.coded_height = size(part.data.height());
    }
    picture.components = components_of(part.channels);
    picture.codec = part.compression < std::size(kCompressions)
                        ? kCompressions[part.compression].name
                        : "compression " + std::to_string(part.compression);
    // Depth, mattes and the like may be deeper than the picture beside them.
    const std::string layer = layer_of(part.channels);
    const auto deepest = std::ranges::max_element(part.channels, {}, [&](const Channel &channel) {
        constexpr std::string_view kColours[] = {"R", "G", "B", "Y", "RY", "BY"};
        const bool is_colour = std::ranges::any_of(
            kColours, [&](std::string_view name) { return channel.name == layer + std::string(name); });
        return std::pair(is_colour, channel.type == 1 ? 16 : 32);
    });
    if (deepest != part.channels.end()) {
        picture.bits = deepest->type == 1 ? 16 : 32;
        picture.floating = deepest->type != 0;
    }
    picture.frames = 1;
}

uint64_t divided(uint64_t n, uint64_t by) { return by == 0 ? 0 : (n + by - 1) / by; }

// Tiles of all levels (one, mipmaps, ripmaps), which are rounded down or up.
uint64_t tile_count(const Part &part) {
    const uint64_t width = static_cast<uint64_t>(std::max<int64_t>(part.data.width(), 0));
    const uint64_t height = static_cast<uint64_t>(std::max<int64_t>(part.data.height(), 0));
    const bool up = part.tiles.mode >> 4 & 1;
    const auto level = [&](uint64_t n, unsigned i) {
        return std::max<uint64_t>(1, up ? (n + (uint64_t{1} << i) - 1) >> i : n >> i);
    };
    const auto levels = [&](uint64_t n) {
        return static_cast<unsigned>(std::bit_width(up && n > 1 ? 2 * n - 1 : std::max<uint64_t>(n, 1)));
    };
    const auto tiles = [&](unsigned i, unsigned j) {
        return divided(level(width, i), part.tiles.width) * divided(level(height, j), part.tiles.height);
    };
    const unsigned mode = part.tiles.mode & 15;
    uint64_t count = 0;
    if (mode == 0) return tiles(0, 0);
    if (mode == 1) {
        for (unsigned i = 0; i < levels(std::max(width, height)); i++) count += tiles(i, i);
        return count;
    }
    for (unsigned j = 0; j < levels(height); j++) {
        for (unsigned i = 0; i < levels(width); i++) count += tiles(i, j);
    }
    return count;
}

bool is_tiled(const Part &part, uint32_t version) {
    return (version & 0x200) != 0 || part.type == "tiledimage" || part.type == "deeptile";
}

// Where one of several parts is deep the version says so.
bool is_deep(const Part &part, uint32_t version) {
    return (version & 0x1800) == 0x800 || part.type.starts_with("deep");
}

uint64_t chunk_count(const Part &part, uint32_t version) {
    if (part.chunks > 0) return static_cast<uint64_t>(part.chunks);
    if (is_tiled(part, version)) return tile_count(part);
    const uint64_t height = static_cast<uint64_t>(std::max<int64_t>(part.data.height(), 0));
    return part.compression < std::size(kCompressions)
               ? divided(height, kCompressions[part.compression].lines)
               : 0;
}

// Where the chunks of all parts end, by the offset tables: the chunk that lies last ends with its size.
void judge_extent(Input &input, const std::vector<Part> &parts, uint64_t tables, uint32_t version,
                  Facts &facts) {
    const bool several = version & 0x1000;
    uint64_t table = tables;
    uint64_t unwritten = 0, all = 0, last = 0;
    bool all_seen = true;
    const Part *last_part = nullptr;
    for (const Part &part : parts) {
        const uint64_t count = chunk_count(part, version);
        if (count == 0 || count > UINT32_MAX) return;
        if (table + 8 * count > input.size()) return facts.cut(table + 8 * count, "the offset table");
        // Of tables beyond what is looked at the end counts, where the last chunks are.
        const uint64_t looked_at = std::min(8 * count, kOffsetTable);
        const OrderedBytes offsets = little_endian(input.present(table + 8 * count - looked_at, looked_at));
        for (uint64_t i = 0; 8 * i < looked_at; i++) {
            const uint64_t offset = offsets.u64(8 * i);
            unwritten += offset == 0;
            if (offset <= last) continue;
            last = offset;
            last_part = &part;
        }
        all += looked_at / 8;
        all_seen = all_seen && looked_at == 8 * count;
        table += 8 * count;
    }
    if (unwritten > 0)
        return facts.cut(
            0, std::to_string(unwritten) + " of " + std::to_string(all) + " chunks were not written");
    if (!last_part) return;
    const bool deep = is_deep(*last_part, version);
    const uint64_t fields = (several ? 4 : 0) + (is_tiled(*last_part, version) ? 16 : 4);
    const OrderedBytes chunk = little_endian(input.present(last, fields + 24));
    // Deep chunks have the sizes of their sample counts and of their samples, of 64 bits.
    const uint64_t end = deep ? last + fields + 24 + chunk.u64(fields) + chunk.u64(fields + 8)
                              : last + fields + 4 + chunk.u32(fields);
    // No compression ends in zeros, but one may leave what it does not make smaller; where zlib's header
    // stands it has not. B44 compresses nothing but halves.
    const auto compression = last_part->compression;
    const bool by_zlib = compression == 2 || compression == 3 || compression == 5;  // ZIPS, ZIP, PXR24
    const bool has_zlib = !deep && by_zlib && chunk.u8(fields + 4) == 0x78;
    const bool keeps = (compression == 6 || compression == 7) &&
                       std::ranges::any_of(last_part->channels, [](const Channel &c) { return c.type != 1; });
    const bool is_blank = chunk.bytes.size() >= fields + 4 &&
                          ((deep ? chunk.u64(fields) : chunk.u32(fields)) == 0 ||
                           (compression != 0 && !keeps && end > last &&
                            ends_in_zeros(input, last + fields, end, 64, has_zlib ? 64 : 1024)));
    if (is_blank) return facts.cut(end, "the last chunk holds zeros");
    facts.reaches(std::max(end, last + fields + 4), "the last chunk");
    if (all_seen && end < input.size()) facts.add_more("trailing bytes", input.size() - end);
}

void add_details(const std::vector<Part> &parts, const Part &main, Facts &facts) {
    if (main.data != main.display) {
        facts.add_more("data window", main.data.text());
        facts.add_more("display window", main.display.text());
    }
    facts.add_more("channels", names_of(main.channels));
    if (main.tiles.width > 0) facts.add_more("tiles", size_text(main.tiles.width, main.tiles.height));
    constexpr const char *kLineOrders[] = {"", "from the bottom", "any"};
    facts.add_more("line order", name_at(kLineOrders, main.line_order));
    facts.add_more("chromaticities", main.chromaticities);
    facts.add_more("camera", main.camera);
    facts.add_more("owner", main.owner);
    facts.add_more("view", main.view);
    if (parts.size() < 2) return;
    std::string names;
    for (const Part &part : parts) append(names, part.name);
    facts.add_more("parts", names);
}

}  // namespace

void exr_facts(Input &input, Facts &facts) {
    const OrderedBytes file = little_endian(input.bytes(0, std::min(input.size(), kHeaders), 4096));
    const uint32_t version = file.u32(4);
    facts.format = "EXR";
    std::vector<Part> parts;
    uint64_t at = 8;
    do {
        Part part;
        at = read_header(file, at, part, facts);
        if (at == 0) {
            if (input.size() <= kHeaders) facts.cut(0, "the header's end");
            if (parts.empty() && !part.channels.empty()) {
                complete(part);
                facts.pictures.push_back(part.picture);
            }
            return;
        }
        complete(part);
        parts.push_back(std::move(part));
    } while (version & 0x1000 && file.u8(at) != 0 && parts.size() < kMostParts);
    if (version & 0x1000) at++;

    const auto area = [](const Part &part) {
        return static_cast<double>(part.data.width()) * static_cast<double>(part.data.height());
    };
    const auto main = std::ranges::max_element(parts, {}, area);
    facts.variant = is_deep(*main, version) ? "deep" : is_tiled(*main, version) ? "tiled" : "scan lines";
    if (parts.size() > 1) append(facts.variant, std::to_string(parts.size()) + " parts");
    facts.pictures.push_back(main->picture);
    for (auto part = parts.begin(); part != parts.end(); ++part) {
        if (part != main) facts.pictures.push_back(part->picture);
    }
    add_details(parts, *main, facts);
    if (parts.size() <= kPartsFollowed) judge_extent(input, parts, at, version, facts);
}
