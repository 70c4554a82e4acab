// Formats whose header lies at a fixed place: BMP, TGA, SGI and Softimage.
#include <cstdio>

#include "common/names.h"
#include "common/values.h"
#include "images/images.h"

namespace {

enum class Kind { u8, u16, s32 };

struct Row {
    uint8_t offset;
    Kind kind;
    const char *label;
};

// BMP (Windows): the short header of OS/2 1.x, and the info header.
constexpr Row kBmpFileRows[] = {
    {2, Kind::s32, " bfsize:          "},
    {10, Kind::s32, " bfoffset:        "},
    {14, Kind::s32, " headersize:      "},
};
constexpr Row kBmpCoreRows[] = {
    {20, Kind::u16, "  height:         "},
    {18, Kind::u16, "  width:          "},
    {22, Kind::u16, "  planes:         "},
    {24, Kind::u16, "  bitcount:       "},
};
constexpr Row kBmpInfoRows[] = {
    {22, Kind::s32, "  height:         "}, {18, Kind::s32, "  width:          "},
    {26, Kind::u16, "  planes:         "}, {28, Kind::u16, "  bitcount:       "},
    {30, Kind::s32, "  compression:    "}, {34, Kind::s32, "  imagesize:      "},
    {38, Kind::s32, "  xpels:          "}, {42, Kind::s32, "  ypels:          "},
    {46, Kind::s32, "  clrused:        "}, {50, Kind::s32, "  clrimportant:   "},
};
constexpr uint32_t kBmpInfoHeaderSize = 40;

// TGA (Truevision): identification and colour map type, type, colour map and image fields.
constexpr Row kTgaIdRows[] = {
    {0, Kind::u8, " idlength:    "},
    {1, Kind::u8, " cmap:        "},
};
constexpr Row kTgaImageRows[] = {
    {3, Kind::u16, " cmap_index:  "},  {5, Kind::u16, " cmap_length: "},  {7, Kind::u8, " cmap_size:   "},
    {8, Kind::u16, " xorigin:     "},  {10, Kind::u16, " yorigin:     "}, {12, Kind::u16, " xsize:       "},
    {14, Kind::u16, " ysize:       "}, {16, Kind::u8, " depth:       "},  {17, Kind::u8, " flag:        "},
};
constexpr CodeName kTgaTypes[] = {
    {1, "Uncompressed Colormap"},
    {2, "Uncompressed RGB"},
    {9, "Runlength Encoded Colormap"},
    {10, "Runlength Encoded RGB"},
};

// SGI image file format.
constexpr Row kSgiRows[] = {
    {3, Kind::u8, " bpc:             "},   {4, Kind::u16, " dimension:       "},
    {6, Kind::u16, " xsize:           "},  {8, Kind::u16, " ysize:           "},
    {10, Kind::u16, " channels:        "}, {12, Kind::s32, " pixmin:          "},
    {16, Kind::s32, " pixmax:          "},
};
constexpr Row kSgiColormapRow = {104, Kind::s32, " colormap:        "};
constexpr CodeName kSgiStorages[] = {{0, "Uncompressed"}, {1, "RLE"}};

// Softimage PIC.
constexpr Row kSoftimageRows[] = {
    {92, Kind::u16, " xsize:         "},
    {94, Kind::u16, " ysize:         "},
    {100, Kind::u16, " fields:        "},
};
constexpr const char *kSoftimageTypes[] = {"Uncompressed", "Mixed", "RLE"};
constexpr uint64_t kSoftimageChannels = 104;
constexpr uint64_t kSoftimageChannelSize = 4;
constexpr int kSoftimageMaxChannels = 8;

constexpr uint64_t kNameWidth = 79;  // characters of the SGI name and the Softimage comment

void print_row(Bytes header, int big_endian, const Row &row) {
    const Bytes field = header.from(row.offset);
    int32_t value = 0;
    switch (row.kind) {
        case Kind::u8: value = field[0]; break;
        case Kind::u16: value = tiffuint16(field, big_endian); break;
        case Kind::s32: value = static_cast<int32_t>(tiffuint32(field, big_endian)); break;
    }
    std::printf("%s%d\n", row.label, value);
}

void print_rows(Bytes header, int big_endian, std::span<const Row> rows) {
    for (const Row &row : rows) print_row(header, big_endian, row);
}

void print_softimage_channel(Bytes channel, int i) {
    const uint32_t mask = channel[3];
    std::printf("  ch%d nbits     %d\n", i, channel[1]);
    std::printf("  ch%d type      %d %s\n", i, channel[2], name_at(kSoftimageTypes, channel[2], "?"));
    std::printf("  ch%d channels  %s%s%s%s%s\n", i, mask & 0x80 ? "R" : "", mask & 0x40 ? "G" : "",
                mask & 0x20 ? "B" : "", mask & 0x10 ? "A" : "", mask & 0x0F ? "?" : "");
}

}  // namespace

void bmpdump(DumpOptions &, Bytes header) {
    std::printf("Fileformat:BMP\n");
    print_rows(header, 0, kBmpFileRows);
    if (little32(header, 14) < kBmpInfoHeaderSize) {
        print_rows(header, 0, kBmpCoreRows);
    } else {
        print_rows(header, 0, kBmpInfoRows);
    }
}

void tgadump(DumpOptions &, Bytes header) {
    std::printf("Fileformat:TGA\n");
    print_rows(header, 0, kTgaIdRows);
    std::printf(" type:        %d %s\n", header[2], name_of(kTgaTypes, header[2]));
    print_rows(header, 0, kTgaImageRows);
}

void sgidump(DumpOptions &, Bytes header) {
    const Text name = text_at(header, 24, kNameWidth);
    std::printf("Fileformat:SGI\n");
    std::printf(" storage:         %d %s\n", header[2], name_of(kSgiStorages, header[2]));
    print_rows(header, 1, kSgiRows);
    std::printf(" name:            %.*s\n", name.length, name.start);
    print_row(header, 1, kSgiColormapRow);
}

void softdump(DumpOptions &, Bytes header) {
    const Text comment = text_at(header, 8, kNameWidth);
    std::printf("Fileformat:Softimage\n");
    print_rows(header, 1, kSoftimageRows);
    std::printf(" comment:       '%.*s'\n", comment.length, comment.start);
    std::printf(" aspectratio:   %f\n", static_cast<double>(float_of_bits(big32(header, 96))));
    for (int i = 0; i < kSoftimageMaxChannels; i++) {
        const Bytes channel =
            header.from(kSoftimageChannels + kSoftimageChannelSize * static_cast<uint64_t>(i));
        print_softimage_channel(channel, i);
        if (channel[0] == 0) break;
    }
}
