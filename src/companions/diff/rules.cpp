#include "companions/diff/rules.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <initializer_list>

using namespace std::literals;

namespace {

constexpr size_t kAnyDepth = SIZE_MAX;

struct HeadRow {
    std::string_view format;
    std::string_view begin;  // of the line
    size_t depth;
    ValueRange compared;
};
constexpr ValueRange kNoRange = {0, 0};
constexpr HeadRow kHeads[] = {
    {"QuickTime", "ATOM ", kAnyDepth, kNoRange},
    {"MXF", "Tag ", 1, kNoRange},
    {"MXF", "", 0, kNoRange},
    {"RIFF", "Elem ", kAnyDepth, kNoRange},
    {"RF64", "Elem ", kAnyDepth, kNoRange},
    {"AIFF", "Elem ", kAnyDepth, kNoRange},
    {"GXF", "Tag ", kAnyDepth, {2}},
    {"GXF", "", 0, kNoRange},
    {"GXF", "info      length:", 1, {1}},
    {"OpenEXR", "", 0, {0, 1}},
    {"TIFF", "tag ", kAnyDepth, {1}},
    {"JPEG", "tag ", kAnyDepth, {1}},
    {"JPEG", "", 0, kNoRange},
    {"JP2", "", 0, kNoRange},
    {"JPEG 2000", "", 0, kNoRange},
    {"PNG", "", 0, kNoRange},
    {"MNG", "", 0, kNoRange},
    {"MPEG", "stream ", 0, kNoRange},
    {"R3D", "", 0, kNoRange},
};

struct LeftOut {
    std::string_view format;
    std::string_view section;  // around it; empty: any
    std::string_view label;    // empty: all of the section
};
constexpr LeftOut kLeftOut[] = {
    {"QuickTime", "stco", "data"},
    {"QuickTime", "co64", "data"},
    {"QuickTime", "tfhd", "base_data_offset"},
    {"QuickTime", "", "free"},
    {"QuickTime", "", "skip"},
    {"QuickTime", "", "wide"},
    {"QuickTime", "", "creation"},
    {"QuickTime", "", "modification"},
    {"MXF", "", "RP210/Filler Data"},
    {"MXF", "MXF Random Index Table", "offset"},
    {"MXF", "", "Length"},
    {"MXF", "", "ThisPartition"},
    {"MXF", "", "PreviousPartition"},
    {"MXF", "", "FooterPartition"},
    {"MXF", "", "HeaderByteCount"},
    {"MXF", "", "IndexByteCount"},
    {"MXF", "", "BodyOffset"},
    {"MXF", "", "Continty Count"},
    {"RIFF", "Fileformat", "Size"},
    {"RF64", "Fileformat", "Size"},
    {"RF64", "", "Datasize"},
    {"AIFF", "Fileformat", "Size"},
    {"AIFF", "", "PTR"},
    {"RIFF", "", "orginatordate"},
    {"RIFF", "", "orginatortime"},
    {"RF64", "", "orginatordate"},
    {"RF64", "", "orginatortime"},
    {"GXF", "map", "sectionlength"},
    {"GXF", "", "length"},
    {"GXF", "", "filesize"},
    {"GXF", "preamble", "size"},
    {"GXF", "Payload Description", "size"},
    {"GXF", "", "trackoffset"},
    {"GXF", "", "mediaoffset"},
    {"GXF", "", "useroffset"},
    {"GXF", "", "tracksize"},
    {"GXF", "", "mediasize"},
    {"GXF", "", "usersize"},
    {"GXF", "", "modifiedmsb"},
    {"GXF", "", "modifiedlsb"},
    {"GXF", "field locator table", "entry"},
    {"GXF", "", "locator"},
    {"DPX", "", "filesize"},  // a wrong one is a fact
    {"DPX", "", "offsetimage"},
    {"DPX", "", "dataoffset"},
    {"Cineon", "", "offsetimage"},
    {"TIFF", "", "offset"},
    {"TIFF", "", "filesize"},
    {"TIFF", "", "value"},
    {"TIFF", "", "StripOffsets"},
    {"TIFF", "", "TileOffsets"},
    {"TIFF", "", "StripByteCounts"},
    {"TIFF", "", "TileByteCounts"},
    {"TIFF", "", "FreeOffsets"},
    {"TIFF", "", "EXIF IFD Pointer"},
    {"JPEG", "", "value"},
    {"JPEG", "", "EXIF IFD Pointer"},
    {"JPEG 2000", "SOT", "over all length"},
    {"JP2", "SOT", "over all length"},
    {"JPEG 2000", "", "tilepart length"},
    {"JP2", "", "tilepart length"},
    {"JPEG 2000", "", "packet length"},
    {"JP2", "", "packet length"},
    {"BMP", "", "bfsize"},
    {"BMP", "", "bfoffset"},
    {"ARRI", "", "ImageDataOffset"},
    {"ARRI", "", "ImageDataSize"},
    {"MPEG", "", "PTS"},
    {"MPEG", "", "DTS"},
    {"R3D", "", "filesize"},
};

// Words in labels of what files are given when they are made.
constexpr std::string_view kMadeWords[] = {"creationtime", "creationdate", "creation date", "modif", "date",
                                           "timestamp",    "filetime",     "uuid",          "guid",  "umid"};

constexpr std::string_view kCounted[][2] = {
    {"MXF", "MXF Generic Container"},
    {"MXF", "MXF Generic Data"},
    {"GXF", "media"},
    {"GXF", "entry"},
    {"MPEG", "stream"},
    {"QuickTime", "moof"},
    {"JPEG 2000", "SOT"},
    {"JPEG 2000", "SOD"},
    {"JP2", "SOT"},
    {"JP2", "SOD"},
    {"R3D", "frame"},
    {"R3D", "packet"},
    {"SDI", "Frame"},
};

struct CountedName {
    std::string_view name;
    std::string_view kind;  // it begins so
    std::string_view called;
};
constexpr CountedName kCountedNames[] = {
    {"MXF Generic Container", "System metadata pack", "system items"},
    {"MXF Generic Container", "Package metadata set", "package metadata sets"},
    {"MXF Generic Data", "GC Picture", "picture elements"},
    {"MXF Generic Data", "CP Picture", "picture elements"},
    {"MXF Generic Data", "GC Sound", "sound elements"},
    {"MXF Generic Data", "CP Sound", "sound elements"},
    {"MXF Generic Data", "", "essence elements"},
    {"moof", "", "movie fragments"},
    {"SOT", "", "tile-parts"},
    {"Frame", "", "frames"},
    {"frame", "", "frames"},
};

bool contains(std::string_view text, std::string_view part) {
    return std::search(text.begin(), text.end(), part.begin(), part.end(), [](char a, char b) {
               return (a >= 'A' && a <= 'Z' ? static_cast<char>(a + 32) : a) == b;
           }) != text.end();
}

// Whether a text is a number in hexadecimal digits.
bool is_hex_of(std::string_view text, uint64_t number) {
    uint64_t value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value, 16);
    return error == std::errc() && end == text.data() + text.size() && value == number;
}

// Whether a text is the code of four characters, of which the first is its lowest byte; blanks at both ends
// do not stand in the other value.
bool is_code_of(std::string_view text, std::string_view characters) {
    uint64_t code = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), code, 16);
    if (error != std::errc() || end != text.data() + text.size() || code >> 32 != 0) return false;
    std::string spelt;
    for (int i = 0; i < 4; i++) spelt += static_cast<char>(code >> (8 * i) & 255);
    const size_t first = std::min(spelt.find_first_not_of(" \0"sv), spelt.size());
    spelt.erase(spelt.find_last_not_of(" \0"sv) + 1);
    return spelt.substr(std::min(first, spelt.size())) == characters;
}

// Whether a text has the bits of a number with a point, "10000" those of 1.000000: 8, 16, 30 or 32 of them
// behind the point, as far as six decimals tell.
bool is_fixed_point_of(std::string_view text, std::string_view number) {
    uint64_t bits = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), bits, 16);
    const std::string digits(number);
    char *rest = nullptr;
    const double value = std::strtod(digits.c_str(), &rest);
    if (error != std::errc() || rest == digits.c_str()) return true;
    return std::ranges::any_of(std::initializer_list<int>{8, 16, 30, 32}, [&](int fraction) {
        const double expected = std::ldexp(value, fraction);
        const double tolerance = 0.5 + std::ldexp(1e-6, fraction);
        for (const double width : {16, 32, 64}) {
            const double stored = static_cast<double>(bits);
            const double wrapped = value < 0 ? stored - std::exp2(width) : stored;
            if (std::fabs(wrapped - expected) < tolerance) return true;
        }
        return false;
    });
}

// Whether a value says once more what the one before it says.
bool repeats(const FieldValue &value, const FieldValue &before) {
    if (value.kind != FieldValue::text) return false;
    if (before.kind == FieldValue::text) return is_code_of(value.content, before.content);
    if (before.kind != FieldValue::number) return false;
    const std::string_view number = before.content;
    int64_t decimal = 0;
    const auto [end, error] = std::from_chars(number.data(), number.data() + number.size(), decimal);
    if (error != std::errc()) return false;
    if (end != number.data() + number.size()) return is_fixed_point_of(value.content, number);
    const uint64_t bits = static_cast<uint64_t>(decimal);
    return is_hex_of(value.content, bits) || is_hex_of(value.content, bits & 0xFFFFFFFF) ||
           is_hex_of(value.content, bits & 0xFFFF) || is_hex_of(value.content, bits & 0xFF);
}

bool is_in_quotes(const Line &line, std::string_view content) {
    if (content.data() <= line.text.data()) return content.starts_with('\'');
    return content.data()[-1] == '\'';
}

// Values that say it in hexadecimal behind the number, and nothing else.
bool has_twins(std::string_view format_text) {
    return format_text.find("(0x") != std::string_view::npos ||
           format_text.find('/') != std::string_view::npos;
}

}  // namespace

ValueRange compared_values(std::string_view format, std::string_view text, size_t depth) {
    constexpr size_t kTag = 8;  // "Tag 3c0a"
    // A primer has labels behind its tags, which are dynamic from 8000 on.
    if (format == "MXF" && text.starts_with("Tag ") && text.find(" - ") == kTag) return {1};
    for (const HeadRow &row : kHeads) {
        if (row.format == format && text.starts_with(row.begin) &&
            (row.depth == kAnyDepth || row.depth == depth))
            return row.compared;
    }
    return {};
}

bool is_left_out(std::string_view format, std::string_view section, std::string_view label) {
    for (const LeftOut &row : kLeftOut) {
        if (row.format == format && (row.section.empty() || row.section == section) &&
            (row.label.empty() || row.label == label))
            return true;
    }
    // A box of that type says more than its identifier.
    if (format == "text" || format == "XML" || label == "uuid") return false;
    return std::ranges::any_of(kMadeWords, [&](std::string_view word) { return contains(label, word); });
}

std::string value_text(const Line &line, const FieldLine &field, ValueRange range) {
    std::string text;
    const bool twins = has_twins(line.text);
    for (size_t i = range.first; i < std::min(range.end, field.values.size()); i++) {
        const FieldValue &value = field.values[i];
        if (value.kind == FieldValue::unset) continue;
        if (twins && i > range.first && repeats(value, field.values[i - 1])) continue;
        if (!text.empty() && !value.content.empty()) text += ' ';
        if (value.kind == FieldValue::text && is_in_quotes(line, value.content)) {
            text += '\'';
            text += value.content;
            text += '\'';
        } else {
            text += value.content;
        }
    }
    return text;
}

bool is_identifier(std::string_view value) {
    constexpr std::string_view kRegisters = "06.0e.2b.34";
    constexpr size_t kShortest = 12 * 3 - 1;
    const std::string_view bytes = value.substr(0, value.find_first_not_of("0123456789abcdef.-"));
    if (bytes.size() < kShortest || bytes.starts_with(kRegisters)) return false;
    for (size_t i = 0; i < bytes.size(); i++) {
        const bool between = bytes[i] == '.' || bytes[i] == '-';
        if (between != (i % 3 == 2)) return false;
    }
    return bytes.find_first_not_of("0.-") != std::string_view::npos;
}

bool is_counted(std::string_view format, std::string_view name) {
    return std::ranges::any_of(kCounted, [&](const auto &row) { return row[0] == format && row[1] == name; });
}

std::string counted_name(std::string_view format, std::string_view name, std::string_view kind,
                         uint64_t count) {
    for (const CountedName &row : kCountedNames) {
        if (row.name == name && kind.starts_with(row.kind)) return std::string(row.called);
    }
    if (format == "GXF" && name == "media") return "packets of track " + std::string(kind);
    if (format == "MPEG") return std::string(name) + " packets";
    if (name.empty()) return count == 1 ? "entry" : "entries";
    return std::string(name) + (kind.empty() ? "" : " " + std::string(kind)) + " sections";
}

bool opens_section(std::string_view format, std::string_view section, std::string_view label) {
    if (format != "GXF") return false;
    return label == "mediatype" || (section == "Track Description" && label == "track") ||
           (section == "Media Description" && label == "trackinfo");
}

bool is_type_name(std::string_view label) { return label != "Count" && label != "Size"; }
