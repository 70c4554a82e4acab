// Windows bitmap font resource (FNT, version 3).
#include <span>

#include "common/field_rows.h"
#include "common/print.h"
#include "common/stream.h"
#include "common/values.h"
#include "raw/raw.h"

namespace {

// The offset of a field stands before its label.
// clang-format off
constexpr FieldRow kFontRows[] = {
    {0, Field::hex16, "Magic         "},
    {2, Field::hex32, "Filesize      "},
    {6, Field::quoted_text, "Copyright     ", 60},
    {66, Field::dec16, "Type          "},
    {68, Field::dec16, "Points        "},
    {70, Field::dec16, "VerticalRes   "},
    {72, Field::dec16, "HorizontalRes "},
    {74, Field::dec16, "Ascent        "},
    {76, Field::dec16, "InternalLead  "},
    {78, Field::dec16, "ExternalLead  "},
    {80, Field::dec8, "Italic        "},
    {81, Field::dec8, "Underline     "},
    {82, Field::dec8, "Strikeout     "},
    {83, Field::dec16, "Weight        "},
    {85, Field::dec8, "Charset       "},
    {86, Field::dec16, "Pixwidth      "},
    {88, Field::dec16, "Pixheight     "},
    {90, Field::hex8, "Family        "},
    {91, Field::dec16, "AvgWidth      "},
    {93, Field::dec16, "MaxWidth      "},
    {95, Field::dec8, "FirstChar     "},
    {96, Field::dec8, "LastChar      "},
    {97, Field::dec8, "DefaultChar   "},
    {98, Field::dec8, "BreakChar     "},
    {99, Field::dec16, "WidthBytes    "},
};
constexpr FieldRow kBitmapRows[] = {
    {109, Field::hex32, "BitsPointer   "},
    {113, Field::hex32, "BitsOffset    "},
    {118, Field::dec32, "Flags         "},
    {122, Field::dec16, "Aspace        "},
    {124, Field::dec16, "Bspace        "},
    {126, Field::dec16, "Cspace        "},
    {128, Field::hex32, "ColorPointer  "},
};
// clang-format on

constexpr uint64_t kDeviceName = 101;
constexpr uint64_t kFaceName = 105;
constexpr uint64_t kFirstChar = 95;
constexpr uint64_t kLastChar = 96;
constexpr uint64_t kGlyphs = 148;
constexpr uint64_t kGlyphSize = 6;

void print_place(uint64_t offset) {
    print("%02x ", static_cast<uint32_t>(offset));
    behind_position();
}

void print_rows(Bytes font, std::span<const FieldRow> rows) {
    for (const FieldRow &row : rows) {
        print_place(row.offset);
        print_field_row(little_endian(font), row);
    }
}

// The text at a text's offset; an offset of 0 has none.
void print_text_offset(Bytes font, uint64_t at, const char *label) {
    print_place(at);
    const uint32_t offset = little32(font, at);
    print("%s%08x '", own(label), offset);
    if (offset) print_text(font, offset);
    print("'\n");
}

void print_header(Bytes font) {
    print_rows(font, kFontRows);
    print_text_offset(font, kDeviceName, "DeviceOffset  ");
    print_text_offset(font, kFaceName, "FaceOffset    ");
    print_rows(font, kBitmapRows);
}

void print_glyphs(Bytes font) {
    const uint32_t first = font[kFirstChar], last = font[kLastChar];
    forget();
    for (uint32_t c = first; c <= last; c++) {
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
