#include <algorithm>
#include <cmath>
#include <string_view>
#include <vector>

#include "common/boxes.h"
#include "common/codecs.h"
#include "common/elementary.h"
#include "common/names.h"
#include "main/facts_of.h"

namespace {

using namespace std::string_view_literals;

constexpr uint32_t kMostSegments = 1000;  // of a main header
constexpr uint32_t kMostComponents = 16384;
constexpr uint32_t kMostTileParts = 40;  // that are walked through in a large file
constexpr uint64_t kSmallFile = 2 << 20;
constexpr uint64_t kTail = 65536;

enum Wavelet : uint8_t { irreversible = 0, reversible = 1, other = 2 };

// The main header, up to the first tile-part.
struct MainHeader {
    bool is_found = false;
    Bytes siz;
    Bytes cod;
    std::vector<Wavelet> wavelets;  // of the components
    uint64_t tile_parts = 0;        // where the first begins; 0 where the header has no end
    uint64_t told_length = 0;       // of all tile-parts, by TLM segments
    bool has_high_throughput = false;
    std::string comment;

    uint32_t components() const { return std::min<uint32_t>(big16(siz, 38), kMostComponents); }
    uint32_t subsampling(uint32_t i, uint32_t direction) const { return siz[41 + 3 * i + direction]; }
    bool has_transform() const { return cod[8] != 0; }
};

Wavelet wavelet_of(uint8_t code) { return code > other ? other : static_cast<Wavelet>(code); }

// Lengths of tile-parts, of 2 or 4 bytes behind 0 to 2 of an index (A.7.1).
uint64_t told_lengths(Bytes tlm) {
    const uint64_t index = tlm[5] >> 4 & 3;
    const unsigned size = (tlm[5] & 0x40) != 0 ? 4 : 2;
    uint64_t sum = 0;
    for (uint64_t at = 6; tlm.has(at, index + size); at += index + size) sum += tlm.big(at + index, size);
    return sum;
}

void read_segment(Bytes segment, MainHeader &header) {
    const uint64_t wide = header.components() > 256 ? 1 : 0;
    switch (segment[1]) {
        case 0x51:
            header.siz = segment;
            header.wavelets.assign(header.components(), other);
            break;
        case 0x52:
            if (!segment.has(13, 1)) break;
            header.cod = segment;
            std::ranges::fill(header.wavelets, wavelet_of(segment[13]));
            break;
        case 0x53: {
            const uint64_t component = segment.big(4, 1 + static_cast<unsigned>(wide));
            if (component < header.wavelets.size() && segment.has(10 + wide, 1))
                header.wavelets[static_cast<size_t>(component)] = wavelet_of(segment[10 + wide]);
            break;
        }
        case 0x50: header.has_high_throughput = (big32(segment, 4) & 0x20000) != 0; break;
        case 0x55: header.told_length += told_lengths(segment); break;
        case 0x64:
            if (header.comment.empty() && big16(segment, 4) == 1)
                header.comment = fixed_text(segment, 6, 200);
            break;
        default: break;
    }
}

// COC segments may come before the COD that they override: they are read again.
MainHeader read_main_header(Bytes codestream) {
    MainHeader header;
    header.is_found = bytes_are(codestream, 0, "\xFF\x4F\xFF\x51") && codestream.has(0, 43);
    std::vector<Bytes> overrides;
    uint64_t at = 2;
    for (uint32_t i = 0; header.is_found && i < kMostSegments && codestream.has(at, 4); i++) {
        const uint8_t code = codestream[at + 1];
        if (codestream[at] != 0xFF || code == 0x93) break;
        if (code == 0x90) {
            header.tile_parts = at;
            break;
        }
        const Bytes segment = codestream.sub(at, 2 + uint64_t{big16(codestream, at + 2)});
        if (code == 0x53) overrides.push_back(segment);
        read_segment(segment, header);
        at += segment.size() < 4 ? 4 : segment.size();
    }
    for (const Bytes &segment : overrides) read_segment(segment, header);
    return header;
}

std::string codec_of(const MainHeader &header) {
    const auto has = [&](Wavelet wavelet) { return std::ranges::count(header.wavelets, wavelet) > 0; };
    if (has(other) || header.wavelets.empty()) return "JPEG 2000";
    return has(irreversible) ? "JPEG 2000 9/7" : "JPEG 2000 5/3";  // one that is lossy makes it lossy
}

// What the components are as far as a codestream says it: by a transform, subsampling, or a profile of
// digital cinema.
std::string components_of(const MainHeader &header) {
    const uint32_t n = header.components();
    const uint32_t profile = big16(header.siz, 4);
    if (n == 1) return "Y";
    if (n == 2) return "YA";
    if (n != 3 && n != 4) return std::to_string(n) + " channels";
    const uint32_t horizontal = header.subsampling(1, 0) / std::max(header.subsampling(0, 0), 1U);
    const uint32_t vertical = header.subsampling(1, 1) / std::max(header.subsampling(0, 1), 1U);
    const std::string chroma = horizontal * vertical == 1 ? "" : chroma_text(horizontal, vertical);
    if (!chroma.empty()) return chroma + (n == 4 ? ":4" : "");
    if (n == 3 && profile >= 3 && profile <= 7) return "XYZ";
    return !header.has_transform() ? "" : n == 4 ? "RGBA" : "RGB";
}

void fill_picture(const MainHeader &header, Picture &picture) {
    picture.codec = codec_of(header);
    const Bytes siz = header.siz;
    if (picture.width == 0) picture.width = big32(siz, 6) - std::min(big32(siz, 14), big32(siz, 6));
    if (picture.height == 0) picture.height = big32(siz, 10) - std::min(big32(siz, 18), big32(siz, 10));
    if (picture.bits == 0) picture.bits = (siz[40] & 0x7FU) + 1;
    if (picture.components.empty()) picture.components = components_of(header);
}

// "Created by OpenJPEG version 2.5.0" names a writer; other comments may be anything.
std::string writer_in(const std::string &comment) {
    constexpr std::string_view kCreated = "Created by "sv;
    constexpr std::string_view kVersion = " version "sv;
    std::string writer = comment;
    if (comment.starts_with(kCreated)) writer.erase(0, kCreated.size());
    const size_t version = writer.find(kVersion);
    if (version != std::string::npos) writer.replace(version, kVersion.size(), " ");
    const bool is_known = comment.starts_with(kCreated) || comment.starts_with("Kakadu") ||
                          comment.starts_with("Lavc") || comment.starts_with("Creator:");
    return is_known ? writer : "";
}

void add_header_details(const MainHeader &header, Facts &facts) {
    constexpr const char *kProfiles[] = {"",
                                         "0",
                                         "1",
                                         "2K digital cinema",
                                         "4K digital cinema",
                                         "scalable 2K digital cinema",
                                         "scalable 4K digital cinema",
                                         "digital cinema storage"};
    constexpr const char *kFamilies[] = {"",       "broadcast", "broadcast",  "broadcast",  "IMF 2K",
                                         "IMF 4K", "IMF 8K",    "IMF 2K 5/3", "IMF 4K 5/3", "IMF 8K 5/3"};
    constexpr const char *kProgressions[] = {"LRCP", "RLCP", "RPCL", "PCRL", "CPRL"};
    const uint32_t told = big16(header.siz, 4);
    const uint32_t profile = told & 0x3FFF;
    facts.add_more("profile", told >> 15 != 0 ? "part 2 extensions"
                              : profile < 256 ? name_at(kProfiles, profile)
                                              : name_at(kFamilies, profile >> 8));
    if (!header.cod.empty()) {
        facts.add_more("progression", name_at(kProgressions, header.cod[5]));
        facts.add_more("layers", big16(header.cod, 6));
        facts.add_more("levels", header.cod[9]);
    }
    const uint64_t width = big32(header.siz, 22);
    const uint64_t height = big32(header.siz, 26);
    // The first tile begins where the grid says.
    const bool is_tiled = big32(header.siz, 6) > width + big32(header.siz, 30) ||
                          big32(header.siz, 10) > height + big32(header.siz, 34);
    if (is_tiled && width > 0 && height > 0) {
        append(facts.variant, "tiled", " ");
        facts.add_more("tile size", size_text(width, height));
    }
    if (header.has_high_throughput) facts.add_more("block coder", "high throughput");
    facts.writer = writer_in(header.comment);
    if (facts.writer.empty()) facts.add_more("comment", header.comment);
}

bool is_tile_part(Bytes b) { return bytes_are(b, 0, "\xFF\x90\x00\x0A"); }

// Whether tile-parts from a place on lead to the marker of the codestream's end. A length of 0 is that of the
// last one, which that marker ends.
Extent::State follow_tile_parts(Input &input, uint64_t place, uint64_t limit, uint32_t most, uint64_t &end) {
    const uint64_t present = std::min(limit, input.size());
    end = place;
    for (uint32_t i = 0; i < most; i++) {
        const Bytes head = input.present(end, 12, 512);
        if (bytes_are(head, 0, "\xFF\xD9")) {
            end += 2;
            return Extent::whole;
        }
        if (end + 12 > present || !is_tile_part(head)) return Extent::cut;
        const uint64_t length = big32(head, 6);
        if (length == 0) {
            // Behind the end may be other bytes; compressed data are no long row of zeros.
            const uint64_t tail = std::min(kTail, present - end);
            const Bytes last = input.present(present - tail, tail);
            const uint64_t found = find_last_in(last, "\xFF\xD9");
            const bool is_seen = tail == present - end;  // all of it
            end = std::min(present - tail + found + 2, present);
            if (found < tail) return Extent::whole;
            return is_seen || is_zero(last.from(tail - 64)) ? Extent::cut : Extent::unknown;
        }
        if (length < 14) return Extent::unknown;
        end += length;
        if (end >= present) return Extent::cut;
    }
    return Extent::unknown;
}

// The same from a tile-part on that is found in the last 64 KiB.
Extent::State follow_last_tile_parts(Input &input, uint64_t start, uint64_t limit, uint64_t &end) {
    const uint64_t present = std::min(limit, input.size());
    const uint64_t n = std::min(kTail, present - start);
    const Bytes tail = input.present(present - n, n);
    if (bytes_are(tail, n - 2, "\xFF\xD9")) {
        end = present;
        return Extent::whole;
    }
    for (uint64_t at = 0; tail.has(at, 12); at++) {
        if (tail[at] != 0xFF || !is_tile_part(tail.from(at))) continue;
        return follow_tile_parts(input, present - n + at, limit, 4096, end);
    }
    return Extent::unknown;
}

// The codestream of a file from `start` on, `limit` where what holds it ends.
void read_codestream(Input &input, uint64_t start, uint64_t limit, Facts &facts) {
    const uint64_t present = std::min(limit, input.size());
    const MainHeader header = read_main_header(input.bytes(start, present - std::min(start, present)));
    if (!header.is_found) {
        facts.problem = "no codestream";
        facts.cut(start + 43, "the codestream's header");
        return;
    }
    fill_picture(header, facts.picture());
    facts.picture().frames = 1;
    add_header_details(header, facts);
    if (header.tile_parts == 0) return facts.cut(present + 1, "the codestream's tiles");
    const uint64_t first = start + header.tile_parts;
    const uint32_t most = present - start <= kSmallFile ? 70000 : kMostTileParts;
    uint64_t end = 0;
    Extent::State state = follow_tile_parts(input, first, limit, most, end);
    if (state == Extent::unknown && end < present && header.told_length > 0) {
        end = first + header.told_length;
        state = bytes_are(input.present(end, 2, 512), 0, "\xFF\xD9") ? Extent::whole : Extent::cut;
        end += 2;
    } else if (state == Extent::unknown && end < present) {
        state = follow_last_tile_parts(input, start, limit, end);
    }
    if (state == Extent::whole) facts.whole(end);
    const bool is_last = state == Extent::whole && limit >= input.size();
    if (is_last && end < input.size()) facts.add_more("trailing bytes", input.size() - end);
    if (state == Extent::cut) facts.cut(std::max(end + 2, present), "the codestream's end");
}

void read_colour(Bytes content, Facts &facts) {
    if (!content.has(0, 7)) return;
    Picture &picture = facts.picture();
    constexpr const char *kMethods[] = {"", "", "ICC profile", "ICC profile", "vendor's"};
    constexpr CodeName kSpaces[] = {
        {0, "bilevel"}, {1, "YCbCr(1)"}, {3, "YCbCr(2)"}, {4, "YCbCr(3)"},  {9, "PhotoYCC"}, {11, "CMY"},
        {12, "CMYK"},   {13, "YCCK"},    {14, "CIELab"},  {15, "bilevel"},  {16, "sRGB"},    {17, "grey"},
        {18, "sYCC"},   {19, "CIEJab"},  {20, "e-sRGB"},  {21, "ROMM-RGB"}, {22, "YPbPr"},   {24, "e-sYCC"}};
    const uint32_t space = big32(content, 3);
    if (content[0] == 5 && content.has(9, 1))  // codes of H.273
        picture.colour = {big16(content, 3), big16(content, 5), big16(content, 7), content[9] >> 7};
    if (content[0] != 1) return facts.add_more("colour", name_at(kMethods, content[0]));
    facts.add_more("colour", name_of(kSpaces, space));
    if (space == 16 || space == 18) picture.colour = {1, 13, space == 16 ? 0 : 5, 1};
    if (space == 16 || space == 20 || space == 21) picture.components = "RGB";
    if (space == 12) picture.components = "CMYK";
}

// Capture or display resolution down and across, as fractions of 16 bits with exponents of ten.
Ratio resolution_aspect(Bytes b) {
    const auto value = [&](uint64_t at, uint64_t exponent) {
        return Ratio{big16(b, at), big16(b, at + 2)}.value() * std::pow(10, static_cast<int8_t>(b[exponent]));
    };
    const double across = value(4, 9);
    return across > 0 ? aspect_of(value(0, 8) / across, 10000) : Ratio{};
}

// The boxes of the JP2 header: what shows how the components are meant. Their count; a fourth one is taken
// for alpha, as everybody does.
uint32_t read_header_box(Bytes header, Facts &facts) {
    uint32_t count = 0;
    bool alpha = false;
    bool palette = false;
    Picture &picture = facts.picture();
    each_box(header, [&](const Box &box) {
        const Bytes content = box.data;
        if (box.type == fourcc("ihdr")) {
            picture.height = big32(content);
            picture.width = big32(content, 4);
            count = big16(content, 8);
        } else if (box.type == fourcc("colr") && picture.colour.primaries < 0) {
            read_colour(content, facts);
        } else if (box.type == fourcc("res ")) {
            each_box(content, [&](const Box &inner) {  // that of the display is the last
                if (inner.type == fourcc("resc") || inner.type == fourcc("resd"))
                    picture.pixel_aspect = resolution_aspect(inner.data);
            });
        } else if (box.type == fourcc("pclr")) {
            palette = true;
        } else if (box.type == fourcc("cdef")) {
            for (uint64_t k = 0; k < std::min<uint64_t>(big16(content), 64); k++) {
                const uint32_t type = big16(content, 4 + 6 * k);
                alpha = alpha || type == 1 || type == 2;
            }
        }
    });
    if (palette) picture.components = "palette";
    if (count > 4) picture.components.clear();
    if ((alpha || count == 4) && picture.components == "RGB") picture.components = "RGBA";
    return count;
}

}  // namespace

bool codestream_picture(Bytes codestream, Picture &picture) {
    const MainHeader header = read_main_header(codestream);
    if (header.is_found) fill_picture(header, picture);
    return header.is_found;
}

void codestream_facts(Input &input, Facts &facts) {
    // Some files have 16 bytes before their codestream.
    const uint64_t start = bytes_are(input.present(0, 16), 0, "\xFF\x4F") ? 0 : 16;
    read_codestream(input, start, UINT64_MAX, facts);
}

void jp2_facts(Input &input, Facts &facts) {
    constexpr int kMostBoxes = 30;
    const uint64_t size = input.size();
    const Bytes file = input.bytes(0, size, 512);
    Box box;
    bool has_codestream = false;
    uint32_t count = 0;
    uint64_t end = 0;
    int boxes = 0;
    for (; boxes < kMostBoxes && end < size; boxes++, end = box.end()) {
        const Box next = box_at(file, end);
        const bool is_behind = has_codestream && next.type == 0;  // zeros are no box
        if (is_behind) facts.add_more("trailing bytes", size - end);
        if (is_behind || next.size == 0) break;
        box = next;
        if (box.type == fourcc("ftyp")) {
            const uint32_t brand = big32(box.data);
            facts.variant = brand == fourcc("jpx ")   ? "JPX"
                            : brand == fourcc("jpm ") ? "JPM"
                            : brand == fourcc("jph ") ? "JPH"
                            : brand == fourcc("mjp2") ? "MJ2"
                                                      : "";
        } else if (box.type == fourcc("jp2h") && facts.pictures.empty()) {
            count = read_header_box(box.data, facts);
        } else if (box.type == fourcc("uuid") && bytes_are(box.data, 0, "JpgTiffExif->JP2")) {
            exif_facts(box.data.from(16), facts);
        } else if (box.type == fourcc("jp2c") && !has_codestream) {
            has_codestream = true;
            read_codestream(input, box.start(), box.is_open ? UINT64_MAX : box.end(), facts);
        }
    }
    Picture &picture = facts.picture();
    if (picture.codec.empty()) picture.codec = "JPEG 2000";
    const bool is_unknown = picture.components.empty() || picture.components.starts_with("RGB");
    if (is_unknown && picture.colour.matrix == 5) picture.components = count == 4 ? "4:4:4:4" : "4:4:4";
    if (facts.extent.state == Extent::cut || facts.variant == "MJ2") return;
    constexpr uint32_t kLastBoxes[] = {fourcc("jp2c"), fourcc("xml "), fourcc("uuid"), fourcc("uinf"),
                                       fourcc("jp2i"), fourcc("asoc"), fourcc("free"), fourcc("mdat")};
    const bool is_box = std::ranges::count(kLastBoxes, box.type) > 0 || !has_codestream;
    if (end > size && is_box) {
        facts.cut(end, "the last box's end");
    } else if (!has_codestream && boxes < kMostBoxes) {
        facts.cut(size + 1, "the codestream");
    }
}
