// Windows bitmap font resource (FNT, version 3).
#include <cstdio>

#include "common/file_image.h"
#include "common/values.h"
#include "raw/raw.h"

namespace {

enum class Kind { u8, hex8, u16, hex16, s32, hex32, text, text_offset };

struct Row {
    uint8_t offset;
    Kind kind;
    const char *label;
};

constexpr Row kRows[] = {
    {0, Kind::hex16, "Magic         "},         {2, Kind::hex32, "Filesize      "},
    {6, Kind::text, "Copyright     "},          {66, Kind::u16, "Type          "},
    {68, Kind::u16, "Points        "},          {70, Kind::u16, "VerticalRes   "},
    {72, Kind::u16, "HorizontalRes "},          {74, Kind::u16, "Ascent        "},
    {76, Kind::u16, "InternalLead  "},          {78, Kind::u16, "ExternalLead  "},
    {80, Kind::u8, "Italic        "},           {81, Kind::u8, "Underline     "},
    {82, Kind::u8, "Strikeout     "},           {83, Kind::u16, "Weight        "},
    {85, Kind::u8, "Charset       "},           {86, Kind::u16, "Pixwidth      "},
    {88, Kind::u16, "Pixheight     "},          {90, Kind::hex8, "Family        "},
    {91, Kind::u16, "AvgWidth      "},          {93, Kind::u16, "MaxWidth      "},
    {95, Kind::u8, "FirstChar     "},           {96, Kind::u8, "LastChar      "},
    {97, Kind::u8, "DefaultChar   "},           {98, Kind::u8, "BreakChar     "},
    {99, Kind::u16, "WidthBytes    "},          {101, Kind::text_offset, "DeviceOffset  "},
    {105, Kind::text_offset, "FaceOffset    "}, {109, Kind::hex32, "BitsPointer   "},
    {113, Kind::hex32, "BitsOffset    "},       {118, Kind::s32, "Flags         "},
    {122, Kind::u16, "Aspace        "},         {124, Kind::u16, "Bspace        "},
    {126, Kind::u16, "Cspace        "},         {128, Kind::hex32, "ColorPointer  "},
};

constexpr uint64_t kCopyrightSize = 60;
constexpr uint64_t kFirstChar = 95;
constexpr uint64_t kLastChar = 96;
constexpr uint64_t kGlyphs = 148;
constexpr uint64_t kGlyphSize = 6;

void print_row(Bytes font, const Row &row) {
    std::printf("%02x %s", row.offset, row.label);
    const uint32_t word = little32(font, row.offset);
    switch (row.kind) {
        case Kind::u8: std::printf("%d\n", font[row.offset]); break;
        case Kind::hex8: std::printf("%02x\n", font[row.offset]); break;
        case Kind::u16: std::printf("%d\n", little16(font, row.offset)); break;
        case Kind::hex16: std::printf("%04x\n", little16(font, row.offset)); break;
        case Kind::s32: std::printf("%d\n", static_cast<int32_t>(word)); break;
        case Kind::hex32: std::printf("%08x\n", word); break;
        case Kind::text: {
            const Text text = text_at(font, row.offset, kCopyrightSize);
            std::printf("'%.*s'\n", text.length, text.start);
            break;
        }
        case Kind::text_offset:  // an offset of 0 has no text
            std::printf("%08x '", word);
            if (word) print_text(font, word);
            std::printf("'\n");
            break;
    }
}

void print_glyphs(Bytes font) {
    const uint32_t first = font[kFirstChar];
    for (uint32_t c = first; c <= font[kLastChar]; c++) {
        const uint64_t offset = kGlyphs + kGlyphSize * (c - first);
        if (offset >= font.size()) return;
        std::printf("char %4d %04x - %d %04x : %04x\n", c, static_cast<uint32_t>(offset),
                    little16(font, offset), little16(font, offset + 2), little16(font, offset + 4));
    }
}

}  // namespace

void fontdump(DumpOptions &, std::FILE *file) {
    FileImage image(file);
    if (!image.ok()) {
        std::printf("malloc of buffer %d failed\n", static_cast<int>(image.size()));
        return;
    }
    for (const Row &row : kRows) print_row(image.bytes(), row);
    print_glyphs(image.bytes());
}
