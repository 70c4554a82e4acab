#include <algorithm>
#include <string_view>

#include "common/elementary.h"
#include "common/names.h"
#include "common/ordered_bytes.h"
#include "main/facts_of.h"

namespace {

constexpr uint32_t kMostJpegSegments = 1000;
constexpr uint32_t kMostEntries = 512;
constexpr uint64_t kJpegTail = 65536;

constexpr uint8_t kLs = 0xF7;
constexpr CodeName kProcesses[] = {
    {0xC0, "baseline"},   {0xC1, "extended"},     {0xC2, "progressive"}, {0xC3, "lossless"},
    {0xC5, "extended"},   {0xC6, "progressive"},  {0xC7, "lossless"},    {0xC9, "arithmetic"},
    {0xCA, "arithmetic"}, {0xCB, "arithmetic"},   {0xCD, "arithmetic"},  {0xCE, "arithmetic"},
    {0xCF, "arithmetic"}, {0xDE, "hierarchical"}, {kLs, "JPEG-LS"},
};

// What is met before the first scan.
struct Segments {
    Bytes frame;  // of SOF, behind its length
    Bytes jfif;
    Bytes exif;
    uint64_t multi_picture = 0;  // where the index of a multi-picture file begins
    int adobe = -1;              // colour transform
    bool has_icc = false;
    std::string comment;
    uint8_t process = 0;
    uint64_t scan = 0;  // where the first begins
    uint64_t end = 0;   // of what was looked at
};

Segments read_segments(Bytes file) {
    Segments found;
    uint64_t at = 2;
    for (uint32_t i = 0; i < kMostJpegSegments && file.has(at, 4) && file[at] == 0xFF; i++) {
        const uint8_t code = file[at + 1];
        const uint64_t length = big16(file, at + 2);
        if (code == 0xFF) {  // fill
            at++;
            continue;
        }
        const Bytes content = file.sub(at + 4, length - std::min<uint64_t>(length, 2));
        if (*name_of(kProcesses, code) && found.frame.empty()) {
            found.frame = content;
            found.process = code;
        } else if (code == 0xE0 && bytes_are(content, 0, "JFIF")) {
            found.jfif = content;
        } else if (code == 0xE1 && bytes_are(content, 0, "Exif\0") && found.exif.empty()) {
            found.exif = content.from(6);
        } else if (code == 0xE2 && bytes_are(content, 0, "ICC_PROFILE")) {
            found.has_icc = true;
        } else if (code == 0xE2 && bytes_are(content, 0, "MPF\0")) {
            found.multi_picture = at + 8;
        } else if (code == 0xEE && bytes_are(content, 0, "Adobe") && content.has(11, 1)) {
            found.adobe = content[11];
        } else if (code == 0xFE && found.comment.empty()) {
            found.comment = fixed_text(content, 0, 200);
        } else if (code == 0xDA) {
            found.scan = at;
        }
        at += 2 + std::max<uint64_t>(length, 2);
        found.end = at;
        if (found.scan != 0) break;
    }
    return found;
}

std::string components_of(const Segments &found) {
    const uint32_t n = found.frame[5];
    const auto id = [&](uint64_t i) { return found.frame[6 + 3 * i]; };
    if (n == 1) return "Y";
    if (n == 4) return "CMYK";
    if (n != 3) return "";
    if (found.process == kLs) return "RGB";
    const bool named_rgb = id(0) == 'R' && id(1) == 'G' && id(2) == 'B';
    if (found.adobe == 0 || (found.adobe < 0 && found.jfif.empty() && named_rgb)) return "RGB";
    return jpeg_chroma(found.frame.from(6));
}

// A directory of EXIF, which is a TIFF (CIPA DC-008).
struct Directory {
    OrderedBytes tiff;
    uint64_t at = 0;

    // Where the entry of a tag is; 0 where the tag is not there.
    uint64_t entry(uint32_t tag) const {
        const uint64_t entries = at == 0 ? 0 : std::min<uint32_t>(tiff.u16(at), kMostEntries);
        for (uint64_t i = 0; i < entries; i++) {
            if (tiff.u16(at + 2 + 12 * i) == tag) return at + 2 + 12 * i;
        }
        return 0;
    }
    // Where its value is.
    uint64_t value(uint32_t tag) const {
        const uint64_t found = entry(tag);
        if (found == 0) return 0;
        const uint64_t unit = tiff.u16(found + 2) == 3 ? 2 : tiff.u16(found + 2) == 4 ? 4 : 1;
        return unit * tiff.u32(found + 4) <= 4 ? found + 8 : tiff.u32(found + 8);
    }
    std::string text(uint32_t tag) const {
        const uint64_t where = value(tag);
        return where == 0 ? ""
                          : fixed_text(tiff.bytes, where, std::min<uint32_t>(tiff.u32(entry(tag) + 4), 256));
    }
};

OrderedBytes tiff_in(Bytes b) { return bytes_are(b, 0, "MM") ? big_endian(b) : little_endian(b); }

}  // namespace

void exif_facts(Bytes exif, Facts &facts) {
    const OrderedBytes tiff = tiff_in(exif);
    if (tiff.u16(2) != 42) return;
    const Directory main{tiff, tiff.u32(4)};
    const uint64_t place = main.value(0x8769);
    const Directory photo{tiff, place == 0 ? 0 : tiff.u32(place)};
    const std::string camera = product_text(main.text(0x010F), main.text(0x0110));
    if (facts.writer.empty()) facts.writer = main.text(0x0131);
    if (facts.writer.empty()) facts.writer = camera;
    if (facts.date.empty()) facts.date = iso_date_in(photo.text(0x9003) + photo.text(0x9011));
    if (facts.date.empty()) facts.date = iso_date_in(main.text(0x0132) + photo.text(0x9010));
    facts.add_more("camera", camera);
    const uint64_t orientation = main.value(0x0112);
    if (orientation != 0) facts.add_more("orientation", tiff.u16(orientation));
    const uint64_t space = photo.value(0xA001);
    if (space != 0 && tiff.u16(space) == 1) {
        facts.picture().colour.primaries = 1;
        facts.picture().colour.transfer = 13;
    }
}

namespace {

// The pictures behind the first by the index (CIPA DC-007, 5.2). One that begins in the file must end in it;
// what rewrote the first may have left an index to none.
void add_pictures(Bytes file, uint64_t at, Facts &facts) {
    const OrderedBytes tiff = tiff_in(file.from(at));
    const Directory index{tiff, tiff.u32(4)};
    const uint64_t entries = index.value(0xB002);
    const uint64_t count = std::min<uint64_t>(tiff.u32(index.entry(0xB002) + 4) / 16, 64);
    for (uint64_t i = 1; entries != 0 && i < count; i++) {
        const uint64_t start = at + tiff.u32(entries + 16 * i + 8);
        const uint64_t end = start + tiff.u32(entries + 16 * i + 4);
        if (!bytes_are(file, start, "\xFF\xD8")) continue;
        if (i + 1 == count) facts.add_more("pictures", count);
        if (end > std::max(file.size(), facts.extent.claimed))
            facts.cut(end, "picture " + std::to_string(i + 1));
    }
}

// Entropy-coded data have a zero or a restart marker behind each FF, those of JPEG-LS a bit of 0: what
// follows the image's end has not.
bool is_entropy_coded(std::span<const uint8_t> bytes, bool is_ls) {
    for (size_t i = 0; i + 1 < bytes.size(); i++) {
        if (bytes[i] != 0xFF) continue;
        const uint8_t next = bytes[i + 1];
        const bool is_marker =
            next == 0 || (is_ls && next < 0x80) || next == 0xFF || (next >= 0xD0 && next <= 0xD7);
        constexpr std::string_view kSegments = "\xDA\xC4\xCC\xDB\xDC\xDD";  // those between scans
        const bool is_segment = kSegments.find(static_cast<char>(next)) != kSegments.npos;
        if (!is_marker && !is_segment) return false;
    }
    return true;
}

void judge_extent(Input &input, const Segments &found, Facts &facts) {
    const uint64_t size = input.size();
    if (found.scan == 0 || found.end > size)
        return facts.cut(std::max(found.end, size) + 2, "the image data");
    const uint64_t n = std::min(kJpegTail, size - found.end);
    const Bytes tail = input.present(size - n, n);
    const uint64_t last = find_last_in(tail, "\xFF\xD9");
    // Lines that were not known before the scan.
    const uint64_t lines = find_last_in(tail, std::string_view("\xFF\xDC\0\x04", 4));
    if (facts.picture().height == 0 && lines < n) facts.picture().height = big16(tail, lines + 4);
    if (last < n) {
        facts.whole(size - n + last + 2);
    } else if (is_entropy_coded(tail.span(0, n), found.process == kLs)) {
        facts.cut(size + 2, "the end of the image");
    }
}

}  // namespace

bool jpeg_frame(Bytes frame, Picture &picture) {
    if (big16(frame) != 0xFFD8) return false;
    const Segments found = read_segments(frame);
    picture.bits = found.frame[0];
    picture.components = components_of(found);
    return !found.frame.empty();
}

void jpeg_facts(Input &input, Facts &facts) {
    const uint64_t size = input.size();
    const Bytes file = input.bytes(0, size);
    if (size > 2 && file[2] != 0xFF) return facts.format.clear();
    const Segments found = read_segments(file);
    Picture &picture = facts.picture();
    picture.codec = found.process == kLs ? "JPEG-LS" : "JPEG";
    picture.frames = 1;
    facts.variant = name_of(kProcesses, found.process);
    if (!found.frame.empty()) {
        picture.bits = found.frame[0];
        picture.height = big16(found.frame, 1);
        picture.width = big16(found.frame, 3);
        picture.components = components_of(found);
    } else {
        facts.problem = "no frame header";
    }
    picture.pixel_aspect = Ratio{big16(found.jfif, 10), big16(found.jfif, 8)}.reduced();
    // JFIF has the equations of ITU-R BT.601 and all codes.
    if (!found.jfif.empty() && picture.components.starts_with("4:")) {
        picture.colour.matrix = 5;
        picture.colour.full_range = 1;
    }
    exif_facts(found.exif, facts);
    if (found.has_icc) facts.add_more("colour", "ICC profile");
    if (facts.writer.empty() && found.comment.starts_with("Lavc")) {
        facts.writer = found.comment;
    } else {
        facts.add_more("comment", found.comment);
    }
    judge_extent(input, found, facts);
    if (found.multi_picture != 0) add_pictures(file, found.multi_picture, facts);
}
