// Windows bitmap font resource (FNT, version 3).
#include <cstdio>

#include "common/field_rows.h"
#include "common/print.h"
#include "common/values.h"
#include "raw/raw.h"

namespace {

// Labels begin with the offset of their field.
// clang-format off
constexpr FieldRow kFontRows[] = {
    {0, Field::hex16, "00 Magic         "},
    {2, Field::hex32, "02 Filesize      "},
    {6, Field::quoted_text, "06 Copyright     ", 60},
    {66, Field::dec16, "42 Type          "},
    {68, Field::dec16, "44 Points        "},
    {70, Field::dec16, "46 VerticalRes   "},
    {72, Field::dec16, "48 HorizontalRes "},
    {74, Field::dec16, "4a Ascent        "},
    {76, Field::dec16, "4c InternalLead  "},
    {78, Field::dec16, "4e ExternalLead  "},
    {80, Field::dec8, "50 Italic        "},
    {81, Field::dec8, "51 Underline     "},
    {82, Field::dec8, "52 Strikeout     "},
    {83, Field::dec16, "53 Weight        "},
    {85, Field::dec8, "55 Charset       "},
    {86, Field::dec16, "56 Pixwidth      "},
    {88, Field::dec16, "58 Pixheight     "},
    {90, Field::hex8, "5a Family        "},
    {91, Field::dec16, "5b AvgWidth      "},
    {93, Field::dec16, "5d MaxWidth      "},
    {95, Field::dec8, "5f FirstChar     "},
    {96, Field::dec8, "60 LastChar      "},
    {97, Field::dec8, "61 DefaultChar   "},
    {98, Field::dec8, "62 BreakChar     "},
    {99, Field::dec16, "63 WidthBytes    "},
};
constexpr FieldRow kBitmapRows[] = {
    {109, Field::hex32, "6d BitsPointer   "},
    {113, Field::hex32, "71 BitsOffset    "},
    {118, Field::dec32, "76 Flags         "},
    {122, Field::dec16, "7a Aspace        "},
    {124, Field::dec16, "7c Bspace        "},
    {126, Field::dec16, "7e Cspace        "},
    {128, Field::hex32, "80 ColorPointer  "},
};
// clang-format on

constexpr uint64_t kDeviceName = 101;
constexpr uint64_t kFaceName = 105;
constexpr uint64_t kFirstChar = 95;
constexpr uint64_t kLastChar = 96;
constexpr uint64_t kGlyphs = 148;
constexpr uint64_t kGlyphSize = 6;

// The text at a text's offset; an offset of 0 has none.
void print_text_offset(Bytes font, uint64_t at, const char *label) {
    const uint32_t offset = little32(font, at);
    print("%s%08x '", label, offset);
    if (offset) print_text(font, offset);
    print("'\n");
}

void print_header(Bytes font) {
    print_field_rows(little_endian(font), kFontRows);
    print_text_offset(font, kDeviceName, "65 DeviceOffset  ");
    print_text_offset(font, kFaceName, "69 FaceOffset    ");
    print_field_rows(little_endian(font), kBitmapRows);
}

void print_glyphs(Bytes font) {
    const uint32_t first = font[kFirstChar];
    for (uint32_t c = first; c <= font[kLastChar]; c++) {
        const uint64_t offset = kGlyphs + kGlyphSize * (c - first);
        if (offset >= font.size()) return;
        print("char %4d %04x - %d %04x : %04x\n", c, static_cast<uint32_t>(offset), little16(font, offset),
              little16(font, offset + 2), little16(font, offset + 4));
    }
}

}  // namespace

void fontdump(DumpOptions &, Input &input) {
    if (!check_buffer(input.size())) return;
    print_header(input.bytes());
    print_glyphs(input.bytes());
}
