// DPX header after SMPTE 268M. The C before the colon of a label marks a core field.
#include "dpx/dpx.h"

#include <strings.h>

#include <algorithm>
#include <cstring>

#include "common/field_rows.h"
#include "common/print.h"
#include "common/values.h"
#include "dpx/kelheader.h"
#include "dpx/names.h"
#include "dpx/timecode.h"

namespace {

constexpr uint32_t kLittleEndianMagic = 0x53445058;  // "XPDS" read little-endian
constexpr uint32_t kUnset = 0xFFFFFFFF;

constexpr uint64_t kElements = 780;
constexpr uint64_t kElementSize = 72;
constexpr uint64_t kMaxElements = 8;
constexpr uint64_t kFilmHeader = 1664;
constexpr uint64_t kArriStatus = 1864;
constexpr uint64_t kUserIdentification = 2048;
constexpr uint64_t kUserIdentificationSize = 32;

constexpr CodeName kByteOrders[] = {{kLittleEndianMagic, "Little Endian"}};
constexpr const char *table_packing[] = {"", "10:10:10:2", "2:10:10:10", "", "", "", "", ""};
constexpr const char *table_encoding[] = {"", "RLL", "", "", "", "", "", ""};

constexpr uint32_t kDescriptorRgb = 50;
constexpr uint32_t kDescriptorYuv422 = 100;
constexpr CodeName kDescriptorNames[] = {
    {1, "Red"},      {2, "Green"},     {3, "Blue"},     {4, "Alpha"},     {6, "Luma"},
    {7, "CbCr"},     {8, "Depth"},     {50, "RGB"},     {51, "RGBA"},     {52, "RGBA"},
    {100, "YUV422"}, {101, "YUV422A"}, {102, "YUV444"}, {103, "YUV444A"}, {9, "CompositeVideo"},
};

constexpr CodeName kSignalNames[] = {
    {1, "NTSC"},
    {2, "PAL"},
    {3, "NTSC-M"},
    {4, "SECAM"},
    {50, "CCIR601/525 2:1 4x3"},
    {51, "CCIR601/625 2:1 4x3"},
    {100, "CCIR601/525 2:1 16x9"},
    {101, "CCIR601/625 2:1 16x9"},
    {150, "YCbCr-1050 2:1 16x9"},
    {151, "YCbCr-1125 2:1 16x9 (SMPTE274)"},
    {152, "YCbCr-1250 2:1 16x9"},
    {153, "YCbCr-1125 2:1 16x9 (SMPTE240)"},
    {200, "YCbCr-525 1:1 16x9"},
    {201, "YCbCr-625 1:1 16x9"},
    {202, "YCbCr-750 1:1 16x9 (SMPTE296)"},
    {203, "YCbCr-1125 1:1 16x9 (SMPTE274)"},
};

constexpr CodeName kArriFilmTypes[] = {
    {'1', "16mm"}, {'2', "35mm 2perf"}, {'3', "35mm 3perf"}, {'4', "35mm 4perf"}};
constexpr CodeName kArriStatusNames[] = {{'0', "Detection error"},
                                         {'1', "Interpolated"},
                                         {'2', "Extrapolated"},
                                         {'3', "In splice region"},
                                         {'4', "Position uncertain"}};

// clang-format off
constexpr FieldRow kMagicRow = {0, Field::hex32, " magic          C : ", {kByteOrders, "Big Endian"}};
constexpr FieldRow kFileRows[] = {
    {4, Field::hex32, " offsetimage    C : "},
    {8, Field::ascii, " version        C : ", 8},
    {16, Field::hex32, " filesize       C : "},
    {20, Field::set_dec32, " dittokey         : "},
    {24, Field::set_hex32, " size_generic     : "},
    {28, Field::set_hex32, " size_industry    : "},
    {32, Field::set_hex32, " size_user        : "},
    {36, Field::ascii, " filename         : ", 100},
    {136, Field::ascii, " creationtime     : ", 24},
    {160, Field::ascii, " creator          : ", 100},
    {260, Field::ascii, " projectname      : ", 200},
    {460, Field::ascii, " copyright        : ", 200},
    {660, Field::set_hex32, " key              : "},
};

constexpr FieldRow kImageRows[] = {
    {768, Field::dec16, " orientation    C : ", table_orientation},
    {770, Field::dec16, " channels       C : "},
    {772, Field::dec32, " pixelsperline  C : "},
    {776, Field::dec32, " linesperimage  C : "},
};

constexpr FieldRow kElementRows[] = {
    {0, Field::dec32, " signed        C : "},
    {4, Field::set_dec32, " lowdata         : "},
    {8, Field::set_real, " lowquantity     : "},
    {12, Field::set_dec32, " highdata        : "},
    {16, Field::set_real, " highquantity    : "},
    {20, Field::dec8, " descriptor    C : ", kDescriptorNames},
    {21, Field::dec8, " transfer      C : "},
    {22, Field::dec8, " colorimetric  C : "},
    {23, Field::dec8, " bitdepth      C : "},
    {24, Field::dec16, " packing       C : ", table_packing},
    {26, Field::set_dec16, " encoding      C : ", table_encoding},
    {28, Field::set_hex32, " dataoffset    C : "},
    {32, Field::set_dec32, " endoflinepad    : "},
    {36, Field::set_dec32, " endofimagepad   : "},
    {40, Field::ascii, " description     : ", 32},
};

constexpr FieldRow kSourceRows[] = {
    {1408, Field::set_dec32, " xoffset          : "},
    {1412, Field::set_dec32, " yoffset          : "},
    {1416, Field::set_real, " xcenter          : "},
    {1420, Field::set_real, " ycenter          : "},
    {1424, Field::set_dec32, " xoriginalsize    : "},
    {1428, Field::set_dec32, " yoriginalsize    : "},
    {1432, Field::ascii, " filename         : ", 100},
    {1532, Field::ascii, " filetime         : ", 24},
    {1556, Field::ascii, " inputdevicename  : ", 32},
    {1588, Field::ascii, " inputserialnr    : ", 32},
    {1620, Field::set_dec16, " border           : ", 4},
};
constexpr FieldRow kAspectRows[] = {
    {1628, Field::set_dec32, " aspecthorizontal : "},
    {1632, Field::set_dec32, " aspectvertical   : "},
    {1636, Field::set_real, " xscannedsize     : "},
    {1640, Field::set_real, " yscannedsize     : "},
};

constexpr FieldRow kFilmRows[] = {
    {1664, Field::ascii, " film_mfg_id      : ", 2},
    {1666, Field::ascii, " film_type        : ", 2},
    {1668, Field::ascii, " offset           : ", 2},
    {1670, Field::ascii, " prefix           : ", 6},
    {1676, Field::ascii, " count            : ", 4},
    {1680, Field::ascii, " format           : ", 20},
    {1712, Field::set_dec32, " framenumber      : "},
    {1716, Field::set_dec32, " framecount       : "},
    {1720, Field::set_dec32, " heldcount        : "},
    {1724, Field::set_real, " framerate        : "},
    {1728, Field::set_real, " shutterangle     : "},
    {1732, Field::ascii, " frameid          : ", 32},
    {1764, Field::ascii, " slateinformation : ", 100},
};
constexpr FieldRow kArriRows[] = {
    {1870, Field::ascii, " keycode count    : ", 4},
    {1874, Field::ascii, " keycode offset   : ", 2},
    {1876, Field::ascii, " keycode feet     : ", 4},
    {1880, Field::ascii, " keycode frames   : ", 2},
    {1882, Field::ascii, " keycode perfpos  : ", 1},
    {1883, Field::name8, " keycode filmtype : ", {kArriFilmTypes, "?"}},
    {1884, Field::name8, " keycode status   : ", {kArriStatusNames, "?"}},
};

constexpr FieldRow kTelevisionRows[] = {
    {1920, Field::set_hex32, " timecode         : "},
    {1924, Field::set_hex32, " userbytes        : "},
    {1928, Field::set_dec8, " interlace        : "},
    {1929, Field::set_dec8, " fieldnumber      : "},
    {1930, Field::set_dec8, " videosignal      : ", kSignalNames},
    {1932, Field::set_real, " horizontalfreq   : "},
    {1936, Field::set_real, " verticalfreq     : "},
    {1940, Field::set_real, " framerate        : "},
    {1944, Field::set_real, " timeoffset       : "},
    {1948, Field::set_real, " gamma            : "},
    {1952, Field::set_real, " blacklevel       : "},
    {1956, Field::set_real, " blackgain        : "},
    {1960, Field::set_real, " breakpoint       : "},
    {1964, Field::set_real, " whitelevel       : "},
    {1968, Field::set_real, " integrationtime  : "},
};
constexpr FieldRow kReelRow = {1972, Field::ascii, " reelname         : ", 76};
// clang-format on

// Fields that are looked at, too.
constexpr uint64_t kImageOffset = offset_of(kFileRows, "offsetimage");
constexpr uint64_t kIndustryHeaderSize = offset_of(kFileRows, "size_industry");
constexpr uint64_t kUserDataSize = offset_of(kFileRows, "size_user");
constexpr uint64_t kCreator = offset_of(kFileRows, "creator");
constexpr uint64_t kChannels = offset_of(kImageRows, "channels");
constexpr uint64_t kWidth = offset_of(kImageRows, "pixelsperline");
constexpr uint64_t kDescriptor = offset_of(kElementRows, "descriptor");
constexpr uint64_t kBitDepth = offset_of(kElementRows, "bitdepth");
constexpr uint64_t kAspectHorizontal = offset_of(kAspectRows, "aspecthorizontal");
constexpr uint64_t kAspectVertical = offset_of(kAspectRows, "aspectvertical");
constexpr uint64_t kTimecode = offset_of(kTelevisionRows, "timecode");
constexpr uint64_t kUserBits = offset_of(kTelevisionRows, "userbytes");

using Header = OrderedBytes;

struct PictureTimecode {
    uint32_t timecode = 0;
    uint32_t frame = 0;
};

bool wants_picture_timecode(const DumpOptions &opts, const Header &header) {
    return opts.flag_t || bytes_are(header.bytes, kCreator, "KEL Timecode I");
}

// Reads the timecode burned into the first lines of the picture; zeros when there is none.
PictureTimecode read_picture_timecode(const Header &header, Input &input) {
    constexpr uint64_t kBytesOfAPixel = 128;  // what is taken of the picture, a pixel of its width
    const uint64_t offset = header.u32(kImageOffset);
    const uint32_t width = header.u32(kWidth);
    const uint32_t descriptor = header.u8(kElements + kDescriptor);
    const bool ten_bit = header.u8(kElements + kBitDepth) == 10;
    uint32_t layout = 0;
    if (descriptor == kDescriptorRgb) {
        layout = ten_bit ? kLayoutRgb10 : kLayoutRgb8;
    } else if (descriptor == kDescriptorYuv422) {
        layout = ten_bit ? kLayout422_10 : kLayout422_8;
    } else {
        return {};
    }
    const uint64_t size = width * kBytesOfAPixel;
    if (offset + size > input.size()) return {};
    PictureTimecode found;
    keltimecode_image(input.bytes(offset, size), width, 0, layout, &found.timecode, &found.frame);
    return found;
}

void print_range_line(const DumpOptions &opts, const Header &header, const char *name,
                      PictureTimecode picture) {
    const char *timecode = checkuint32(header.u32(kTimecode), 1);
    if (opts.flag_t) {
        print(" %s : %08x %s\n", name, picture.timecode, timecode);
    } else {
        print(" %s : %s %s\n", name, timecode, checkuint32(header.u32(kUserBits), 1));
    }
}

void print_file(const Header &header) {
    print("file\n");
    print_field_row(little_endian(header.bytes), kMagicRow);
    print_field_rows(header, kFileRows);
}

void print_image_element(const Header &header, uint64_t i) {
    print("imagechannel-%d\n", static_cast<int>(i));
    print_field_rows(header.from(kElements + kElementSize * i), kElementRows);
}

void print_image(const Header &header) {
    print("image\n");
    print_field_rows(header, kImageRows);
    const uint64_t elements = std::min<uint64_t>(header.u16(kChannels), kMaxElements);
    for (uint64_t i = 0; i < elements; i++) print_image_element(header, i);
}

const char *aspect_ratio(uint32_t horizontal, uint32_t vertical) {
    if (horizontal == kUnset || horizontal == 0 || vertical == 0) return checkuint32(kUnset, 0);
    return checkreal(static_cast<float>(horizontal) / static_cast<float>(vertical));
}

void print_source(const Header &header) {
    print("source\n");
    print_field_rows(header, kSourceRows);
    print(" aspectratio      : %s\n",
          aspect_ratio(header.u32(kAspectHorizontal), header.u32(kAspectVertical)));
    print_field_rows(header, kAspectRows);
}

void print_film(const Header &header) {
    print("film\n");
    char keycode[17];
    formatdpxkeycode(keycode, header.bytes.from(kFilmHeader));
    print(" keycode          : '%s'\n", keycode);
    print_field_rows(header, kFilmRows);
    if (!bytes_are(header.bytes, kArriStatus, "ARRI01")) return;
    print("arri keycode status\n");
    print_field_rows(header, kArriRows);
}

void print_television(const Header &header) {
    forget();
    print("television\n");
    print_field_rows(header, kTelevisionRows);
    if (header.u8(kReelRow.offset) != 0xFF) print_field_row(header, kReelRow);
}

bool has_industry_header(const DumpOptions &opts, const Header &header) {
    return header.u32(kIndustryHeaderSize) != 0 || (opts.verbose && header.u32(kImageOffset) >= 8192);
}

bool begins_without_case(Bytes bytes, const char *with) {
    const size_t n = std::strlen(with);
    const Text text = text_at(bytes, 0, n);
    return static_cast<size_t>(text.length) == n && strncasecmp(text.start, with, n) == 0;
}

// Whether all bytes of the user data are 0xFF.
const char *user_data_note(const Header &header) {
    const Bytes user = header.bytes.sub(kUserIdentification, header.u32(kUserDataSize));
    for (uint64_t i = kUserIdentificationSize; i < user.size(); i++) {
        if (user[i] != 0xFF) return "format needs to be analysed";
    }
    return "all default values";
}

void print_user_data(const Header &header) {
    const Bytes user = header.bytes.from(kUserIdentification);
    if (user[0] == 0 || user[0] == 0xFF || header.u32(kUserDataSize) == 0) return;
    forget();
    print("extendedheader\n");
    print(" type             : %s\n", checkascii(user, kUserIdentificationSize));
    if (bytes_are(user, 0, "KEL Tessaron metadata\0")) {
        kelheaderdump(user.from(kUserIdentificationSize), nullptr, 1);
    } else if (begins_without_case(user, "philips") || begins_without_case(user, "thomson")) {
        print(" Philips/Thomson metadata format, %s\n", user_data_note(header));
    } else if (bytes_are(user, 0, "discreet logic")) {
        print(" Discreet Logic metadata found, %s\n", user_data_note(header));
    } else {
        print(" Unknown userdata format\n");
    }
}

void print_picture_timecode(PictureTimecode picture) {
    print("kelimagetimecode\n");
    print(" timecode         : %08x\n", picture.timecode);
    print(" framenr          : %d\n", static_cast<int32_t>(picture.frame));
}

}  // namespace

void dpxdump(DumpOptions &opts, Input &input, Bytes bytes, uint32_t length, const char *name,
             int range_flag) {
    const Bytes kept = bytes.sub(0, length);
    const Header header = little32(bytes) == kLittleEndianMagic ? little_endian(kept) : big_endian(kept);
    // A frame range shows the burned-in timecode only when it was asked for.
    const bool picture_timecode = range_flag ? opts.flag_t : wants_picture_timecode(opts, header);
    const PictureTimecode picture =
        picture_timecode ? read_picture_timecode(header, input) : PictureTimecode{};
    if (range_flag) {
        print_range_line(opts, header, name, picture);
        return;
    }
    print_file(header);
    print_image(header);
    print_source(header);
    if (has_industry_header(opts, header)) {
        print_film(header);
        print_television(header);
    }
    print_user_data(header);
    if (picture_timecode && header.u32(kImageOffset) + uint64_t{64} < length) print_picture_timecode(picture);
}
