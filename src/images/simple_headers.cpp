// Formats whose header lies at a fixed place: BMP, TGA, SGI and Softimage.

#include "common/field_rows.h"
#include "common/names.h"
#include "common/print.h"
#include "common/stream.h"
#include "images/images.h"

namespace {

// clang-format off
// BMP (Windows): the short header of OS/2 1.x, and the info header.
constexpr FieldRow kBmpFileRows[] = {
    {2, Field::dec32, " bfsize:          "},
    {10, Field::dec32, " bfoffset:        "},
    {14, Field::dec32, " headersize:      "},
};
constexpr FieldRow kBmpCoreRows[] = {
    {20, Field::dec16, "  height:         "},
    {18, Field::dec16, "  width:          "},
    {22, Field::dec16, "  planes:         "},
    {24, Field::dec16, "  bitcount:       "},
};
constexpr FieldRow kBmpInfoRows[] = {
    {22, Field::dec32, "  height:         "},
    {18, Field::dec32, "  width:          "},
    {26, Field::dec16, "  planes:         "},
    {28, Field::dec16, "  bitcount:       "},
    {30, Field::dec32, "  compression:    "},
    {34, Field::dec32, "  imagesize:      "},
    {38, Field::dec32, "  xpels:          "},
    {42, Field::dec32, "  ypels:          "},
    {46, Field::dec32, "  clrused:        "},
    {50, Field::dec32, "  clrimportant:   "},
};
constexpr uint32_t kBmpInfoHeaderSize = 40;

// TGA (Truevision).
constexpr CodeName kTgaTypes[] = {
    {1, "Uncompressed Colormap"},
    {2, "Uncompressed RGB"},
    {9, "Runlength Encoded Colormap"},
    {10, "Runlength Encoded RGB"},
};
constexpr FieldRow kTgaRows[] = {
    {0, Field::dec8, " idlength:    "},
    {1, Field::dec8, " cmap:        "},
    {2, Field::dec8, " type:        ", kTgaTypes},
    {3, Field::dec16, " cmap_index:  "},
    {5, Field::dec16, " cmap_length: "},
    {7, Field::dec8, " cmap_size:   "},
    {8, Field::dec16, " xorigin:     "},
    {10, Field::dec16, " yorigin:     "},
    {12, Field::dec16, " xsize:       "},
    {14, Field::dec16, " ysize:       "},
    {16, Field::dec8, " depth:       "},
    {17, Field::dec8, " flag:        "},
};

// SGI image file format.
constexpr CodeName kSgiStorages[] = {{0, "Uncompressed"}, {1, "RLE"}};
constexpr FieldRow kSgiRows[] = {
    {2, Field::dec8, " storage:         ", kSgiStorages},
    {3, Field::dec8, " bpc:             "},
    {4, Field::dec16, " dimension:       "},
    {6, Field::dec16, " xsize:           "},
    {8, Field::dec16, " ysize:           "},
    {10, Field::dec16, " channels:        "},
    {12, Field::dec32, " pixmin:          "},
    {16, Field::dec32, " pixmax:          "},
    {24, Field::text, " name:            ", 79},
    {104, Field::dec32, " colormap:        "},
};

// Softimage PIC.
constexpr FieldRow kSoftimageRows[] = {
    {92, Field::dec16, " xsize:         "},
    {94, Field::dec16, " ysize:         "},
    {100, Field::dec16, " fields:        "},
    {8, Field::quoted_text, " comment:       ", 79},
    {96, Field::real, " aspectratio:   "},
};
// clang-format on
constexpr const char *kSoftimageTypes[] = {"Uncompressed", "Mixed", "RLE"};
constexpr uint64_t kSoftimageChannels = 104;
constexpr uint64_t kSoftimageChannelSize = 4;
constexpr int kSoftimageMaxChannels = 8;

// As data the channel is an index.
void print_channel_label(int i, const char *field) {
    label_begins();
    print("  ch%d%s", i, own(field));
    label_ends();
}

void print_softimage_channel(Bytes channel, int i) {
    print_channel_label(i, " nbits     ");
    print("%d\n", channel[1]);
    print_channel_label(i, " type      ");
    print("%d %s\n", channel[2], name_at(kSoftimageTypes, channel[2], "?"));
    print_channel_label(i, " channels  ");
    const uint32_t mask = channel[3];
    print("%s%s%s%s%s\n", mask & 0x80 ? "R" : "", mask & 0x40 ? "G" : "", mask & 0x20 ? "B" : "",
          mask & 0x10 ? "A" : "", mask & 0x0F ? "?" : "");
}

}  // namespace

void bmpdump(DumpOptions &, Bytes header) {
    print("Fileformat:BMP\n");
    print_field_rows(little_endian(header), kBmpFileRows);
    if (little32(header, 14) < kBmpInfoHeaderSize) {
        print_field_rows(little_endian(header), kBmpCoreRows);
    } else {
        print_field_rows(little_endian(header), kBmpInfoRows);
    }
}

void tgadump(DumpOptions &, Bytes header) {
    print("Fileformat:TGA\n");
    print_field_rows(little_endian(header), kTgaRows);
}

void sgidump(DumpOptions &, Bytes header) {
    print("Fileformat:SGI\n");
    print_field_rows(big_endian(header), kSgiRows);
}

void softdump(DumpOptions &, Bytes header) {
    print("Fileformat:Softimage\n");
    print_field_rows(big_endian(header), kSoftimageRows);
    for (int i = 0; i < kSoftimageMaxChannels; i++) {
        const Bytes channel =
            header.from(kSoftimageChannels + kSoftimageChannelSize * static_cast<uint64_t>(i));
        print_softimage_channel(channel, i);
        if (channel[0] == 0) break;
        forget();
    }
}
