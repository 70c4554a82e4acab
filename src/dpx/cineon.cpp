// Cineon 4.5 header. The C before the colon of a label marks a core field.
#include <span>

#include "common/field_rows.h"
#include "common/print.h"
#include "dpx/dpx.h"
#include "dpx/names.h"

namespace {

constexpr uint64_t kCineonChannels = 196;
constexpr uint64_t kCineonChannelSize = 28;

// clang-format off
constexpr FieldRow kCineonFileRows[] = {
    {0, Field::hex32, " magic          C : "},
    {4, Field::hex32, " offsetimage    C : "},
    {8, Field::set_hex32, " genericheader    : "},
    {12, Field::set_hex32, " industryheader   : "},
    {16, Field::set_hex32, " variableheader   : "},
    {20, Field::set_hex32, " totalsize        : "},
    {24, Field::ascii, " version        C : ", 8},
    {32, Field::ascii, " filename         : ", 100},
    {132, Field::ascii, " creationdate     : ", 24},
};

constexpr FieldRow kCineonImageRows[] = {
    {192, Field::dec8, " orientation    C : ", table_orientation},
    {193, Field::dec8, " channels       C : "},
};

constexpr FieldRow kChannelRows[] = {
    {0, Field::dec8, "  channel1a       : "},
    {1, Field::dec8, "  channel1b       : "},
    {2, Field::dec8, "  bitsperpixel    : "},
    {4, Field::dec32, "  pixelsperline   : "},
    {8, Field::dec32, "  linesperimage   : "},
    {12, Field::set_cineon_real, "  minimumdata     : "},
    {16, Field::set_cineon_real, "  minimumquantity : "},
    {20, Field::set_cineon_real, "  maximumdata     : "},
    {24, Field::set_cineon_real, "  maximumquantity : "},
};

constexpr FieldRow kColourRows[] = {
    {420, Field::set_cineon_real, "  whitepoint      : ", 2},
    {428, Field::set_cineon_real, "  redprimary      : ", 2},
    {436, Field::set_cineon_real, "  greenprimary    : ", 2},
    {444, Field::set_cineon_real, "  blueprimary     : ", 2},
    {452, Field::ascii, "  label           : ", 200},
};

constexpr FieldRow kDataRows[] = {
    {680, Field::set_dec8, " interleave       : "},
    {681, Field::set_dec8, " packing          : "},
    {682, Field::set_dec8, " bsigned          : "},
    {683, Field::set_dec8, " imagesense       : "},
    {684, Field::set_dec32, " endoflinepad     : "},
    {688, Field::set_dec32, " endofchannelpad  : "},
};

constexpr FieldRow kCineonSourceRows[] = {
    {712, Field::set_dec32, " xoffset          : "},
    {716, Field::set_dec32, " yoffset          : "},
    {720, Field::ascii, " filename         : ", 100},
    {820, Field::ascii, " creationdate     : ", 24},
    {844, Field::ascii, " inputdevice      : ", 64},
    {908, Field::ascii, " inputmodel       : ", 32},
    {940, Field::ascii, " inputserialnr    : ", 32},
    {972, Field::set_cineon_real, " xpitch           : "},
    {976, Field::set_cineon_real, " ypitch           : "},
    {980, Field::set_cineon_real, " gamma            : "},
};

constexpr FieldRow kCineonFilmRows[] = {
    {1024, Field::set_dec8, " filmmfgid        : "},
    {1025, Field::set_dec8, " filmtype         : "},
    {1026, Field::set_dec8, " offset           : "},
    {1028, Field::set_dec32, " prefix           : "},
    {1032, Field::set_dec32, " count            : "},
    {1036, Field::ascii, " format           : ", 32},
    {1068, Field::set_dec32, " framenumber      : "},
    {1072, Field::set_cineon_real, " framerate        : "},
    {1076, Field::ascii, " frameid          : ", 32},
    {1108, Field::ascii, " slateinformation : ", 100},
};
// clang-format on

void print_rows(Bytes header, std::span<const FieldRow> rows) {
    print_field_rows(little_endian(header), rows);
}

void print_cineon_image(Bytes header) {
    print("image\n");
    print_rows(header, kCineonImageRows);
    // Counts beyond 8 show what follows the channel table.
    for (int i = 0; i < header[offset_of(kCineonImageRows, "channels")]; i++) {
        print(" channel-%d\n", i);
        print_rows(header.from(kCineonChannels + kCineonChannelSize * static_cast<uint64_t>(i)),
                   kChannelRows);
    }
    print_rows(header, kColourRows);
}

}  // namespace

void cineondump(DumpOptions &, Bytes bytes, uint32_t length) {
    const Bytes header = bytes.sub(0, length);
    print("file\n");
    print_rows(header, kCineonFileRows);
    print_cineon_image(header);
    print("data\n");
    print_rows(header, kDataRows);
    print("source\n");
    print_rows(header, kCineonSourceRows);
    print("film\n");
    print_rows(header, kCineonFilmRows);
}
