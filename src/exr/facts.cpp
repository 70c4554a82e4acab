#include "exr/facts.h"

#include <algorithm>
#include <bit>
#include <cmath>

#include "common/names.h"
#include "common/ordered_bytes.h"
#include "common/values.h"

namespace {

constexpr uint64_t kLongestName = 256;
constexpr uint64_t kHeaders = 1 << 20;      // looked at
constexpr uint64_t kOffsetTable = 2 << 20;  // looked at
constexpr size_t kMostParts = 64;
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
        return std::to_string(left) + "," + std::to_string(top) + " " + std::to_string(width()) + "x" +
               std::to_string(height());
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
    uint64_t tile_width = 0, tile_height = 0;
    uint32_t tile_mode = 0;
    int64_t chunks = -1;  // as an attribute says
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

// What the channels without a layer are, or those of the one layer that there is.
std::string components_of(const std::vector<Channel> &channels) {
    std::string layer;
    for (const Channel &channel : channels) {
        if (channel.name.find('.') == std::string::npos) {
            layer.clear();
            break;
        }
        if (layer.empty()) layer = channel.name.substr(0, channel.name.rfind('.') + 1);
    }
    const auto find = [&](const char *name) {
        return std::ranges::find(channels, layer + name, &Channel::name);
    };
    const auto has = [&](const char *name) { return find(name) != channels.end(); };
    const std::string alpha = has("A") ? "A" : "";
    if (has("R") && has("G") && has("B")) return "RGB" + alpha;
    if (has("Y") && has("RY") && has("BY")) {
        const Channel &chroma = *find("RY");
        return std::string(chroma.across == 2 ? chroma.down == 2 ? "4:2:0" : "4:2:2" : "4:4:4") +
               (alpha.empty() ? "" : ":4");
    }
    if (has("Y")) return "Y" + alpha;
    return std::to_string(channels.size()) + (channels.size() == 1 ? " channel" : " channels");
}

std::string names_of(const std::vector<Channel> &channels) {
    std::string names;
    for (const Channel &channel : channels) {
        if (!names.empty()) names += ' ';
        names += channel.name;
        if (names.size() > 1000) return names + " ...";
    }
    return names;
}

// SMPTE 12M bits in the order of television signals (the attribute's "packing TV60").
FileTimecode timecode_of(uint32_t bits, Ratio rate) {
    const uint32_t bcd = bits & 0x3F7F7F7F;
    FileTimecode timecode = bcd_timecode(bcd, base_of(rate), "timeCode");
    return timecode;
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

void add_chromaticities(OrderedBytes b, Part &part) {
    Picture &picture = part.picture;
    const auto near = [&](uint64_t i, double value) {
        return std::fabs(static_cast<double>(float_of_bits(b.u32(4 * i))) - value) < 0.002;
    };
    if (near(0, 0.64) && near(1, 0.33) && near(2, 0.30)) picture.colour.primaries = 1;
    if (near(0, 0.708) && near(1, 0.292)) picture.colour.primaries = 9;
    if (near(0, 0.68) && near(1, 0.32) && near(2, 0.265)) picture.colour.primaries = near(6, 0.314) ? 11 : 12;
    if (picture.colour.primaries < 0) part.chromaticities = chromaticities_text(b);
}

void add_value(std::string_view name, std::string_view type, OrderedBytes value, Part &part, Facts &facts,
               uint32_t &timecode, bool &has_timecode) {
    const auto text = [&] { return fixed_text(value.bytes, 0, value.bytes.size()); };
    const auto real = [&](uint64_t offset) { return static_cast<double>(float_of_bits(value.u32(offset))); };
    if (name == "channels") part.channels = channels_of(value);
    if (name == "lineOrder") part.line_order = value.u8(0);
    if (name == "owner") part.owner = text();
    if (name == "cameraModel") part.camera = text();
    if (name == "compression") part.compression = value.u8(0);
    if (name == "dataWindow") part.data = box_at(value);
    if (name == "displayWindow") part.display = box_at(value);
    if (name == "tiles") {
        part.tile_width = value.u32(0);
        part.tile_height = value.u32(4);
        part.tile_mode = value.u8(8);
    }
    if (name == "chunkCount") part.chunks = value.s32(0);
    if (name == "name") part.name = text();
    if (name == "type") part.type = text();
    if (name == "view") part.view = text();
    if (name == "pixelAspectRatio" && real(0) > 0.01 && real(0) < 100) {
        const double aspect = real(0);
        part.picture.pixel_aspect = aspect == std::round(aspect)
                                        ? Ratio{std::llround(aspect), 1}
                                        : Ratio{std::llround(aspect * 10000), 10000}.reduced();
    }
    if (name == "framesPerSecond" && type == "rational")
        part.picture.rate = rate_of(value.s32(0), value.u32(4));
    if (name == "timeCode" && type == "timecode") {
        timecode = value.u32(0);
        has_timecode = true;
    }
    if (name == "keyCode" && type == "keycode" && facts.keycode.empty())
        facts.keycode = keycode_text(value.s32(0), value.s32(4), value.s32(8), value.s32(12), value.s32(16));
    if (name == "chromaticities") add_chromaticities(value, part);
    if ((name == "software" || name == "Software") && facts.writer.empty()) facts.writer = text();
    if (name == "reelName" || name == "reel") facts.reel = text();
    if (name == "capDate" && facts.date.empty()) facts.date = iso_date_in(text());
}

// Reads the attributes of a header from an offset on; where the next one begins, 0 where it is cut.
uint64_t read_header(OrderedBytes file, uint64_t at, Part &part, Facts &facts) {
    uint32_t timecode = 0;
    bool has_timecode = false;
    while (file.u8(at) != 0) {
        const Text name = text_at(file.bytes, at, kLongestName);
        const std::string name_kept(name.start, static_cast<size_t>(name.length));
        const uint64_t type_at = at + name_kept.size() + 1;
        const Text type = text_at(file.bytes, type_at, kLongestName);
        const std::string type_kept(type.start, static_cast<size_t>(type.length));
        const uint64_t value_at = type_at + type_kept.size() + 5;
        const int32_t size = file.s32(value_at - 4);
        if (size < 0 || !file.bytes.has(value_at, static_cast<uint64_t>(size))) return 0;
        add_value(name_kept, type_kept, file.sub(value_at, static_cast<uint64_t>(size)), part, facts,
                  timecode, has_timecode);
        at = value_at + static_cast<uint64_t>(size);
    }
    if (!file.bytes.has(at, 1)) return 0;
    if (has_timecode && facts.timecodes.empty()) facts.add(timecode_of(timecode, part.picture.rate));
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
    const auto deepest =
        std::ranges::max_element(part.channels, {}, [](const Channel &c) { return c.type == 1 ? 16 : 32; });
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
    const bool up = part.tile_mode >> 4 & 1;
    const auto level = [&](uint64_t n, unsigned i) {
        return std::max<uint64_t>(1, up ? (n + (uint64_t{1} << i) - 1) >> i : n >> i);
    };
    const auto levels = [&](uint64_t n) {
        return static_cast<unsigned>(std::bit_width(up && n > 1 ? 2 * n - 1 : std::max<uint64_t>(n, 1)));
    };
    const auto tiles = [&](unsigned i, unsigned j) {
        return divided(level(width, i), part.tile_width) * divided(level(height, j), part.tile_height);
    };
    const unsigned mode = part.tile_mode & 15;
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

uint64_t chunk_count(const Part &part, bool tiled_file) {
    if (part.chunks > 0) return static_cast<uint64_t>(part.chunks);
    if (tiled_file || part.type == "tiledimage" || part.type == "deeptile") return tile_count(part);
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
        const uint64_t count = chunk_count(part, version & 0x200);
        if (count == 0 || count > UINT32_MAX) return;
        if (table + 8 * count > input.size()) {
            facts.cut(table + 8 * count, "the offset table");
            return;
        }
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
    if (unwritten > 0) {
        facts.cut(0, std::to_string(unwritten) + " of " + std::to_string(all) + " chunks were not written");
        return;
    }
    if (!last_part) return;
    const bool tiled = version & 0x200 || last_part->type == "tiledimage" || last_part->type == "deeptile";
    const bool deep = version & 0x800 || last_part->type.starts_with("deep");
    const uint64_t fields = (several ? 4 : 0) + (tiled ? 16 : 4);
    const OrderedBytes chunk = little_endian(input.present(last, fields + 24));
    // Deep chunks have the sizes of their sample counts and of their samples, of 64 bits.
    const uint64_t end = deep ? last + fields + 24 + chunk.u64(fields) + chunk.u64(fields + 8)
                              : last + fields + 4 + chunk.u32(fields);
    const bool is_blank =
        chunk.bytes.size() >= fields + 4 && (deep ? chunk.u64(fields) : chunk.u32(fields)) == 0;
    if (last + fields + 4 > input.size() || end > input.size() || is_blank) {
        facts.cut(end, is_blank ? "the last chunk holds zeros" : "the last chunk");
    } else {
        facts.whole(end);
        if (all_seen && end < input.size())
            facts.add_more("trailing bytes", std::to_string(input.size() - end));
    }
}

void add_details(const std::vector<Part> &parts, const Part &main, Facts &facts) {
    if (main.data != main.display) {
        facts.add_more("data window", main.data.text());
        facts.add_more("display window", main.display.text());
    }
    facts.add_more("channels", names_of(main.channels));
    if (main.tile_width > 0)
        facts.add_more("tiles", std::to_string(main.tile_width) + "x" + std::to_string(main.tile_height));
    constexpr const char *kLineOrders[] = {"", "from the bottom", "any"};
    facts.add_more("line order", name_at(kLineOrders, main.line_order));
    facts.add_more("chromaticities", main.chromaticities);
    facts.add_more("camera", main.camera);
    facts.add_more("owner", main.owner);
    facts.add_more("view", main.view);
    if (parts.size() < 2) return;
    std::string names;
    for (const Part &part : parts) names += (names.empty() ? "" : ", ") + part.name;
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

    const auto area = [](const Part &part) { return part.data.width() * part.data.height(); };
    const auto main = std::ranges::max_element(parts, {}, area);
    const bool tiled = version & 0x200 || main->type == "tiledimage" || main->type == "deeptile";
    facts.variant = version & 0x800 || main->type.starts_with("deep") ? "deep"
                    : tiled                                           ? "tiled"
                                                                      : "scan lines";
    if (parts.size() > 1) facts.variant += ", " + std::to_string(parts.size()) + " parts";
    facts.pictures.push_back(main->picture);
    for (auto part = parts.begin(); part != parts.end(); ++part) {
        if (part != main) facts.pictures.push_back(part->picture);
    }
    add_details(parts, *main, facts);
    judge_extent(input, parts, at, version, facts);
}
