// Media packets and field locator tables.

#include "common/field_rows.h"
#include "common/print.h"
#include "gxf/packets.h"
#include "gxf/values.h"

namespace {

constexpr CodeName kTrackTypes[] = {
    {3, "JPEG/525"},         {4, "JPEG/625"},         {7, "Timecode/29.97Hz"}, {8, "Timecode/25Hz"},
    {9, "Audio/24bit"},      {10, "Audio/16bit"},     {11, "MPEG2/525"},       {12, "MPEG2/625"},
    {13, "DV/525/25Mbit"},   {14, "DV/625/25Mbit"},   {15, "DV/525/50Mbit"},   {16, "DV/625/50Mbit"},
    {17, "Audio/AC3/16bit"}, {18, "Audio/AC3/24bit"}, {19, "Reserved/Ignore"}, {20, "MPEG2/HDTV"},
    {21, "Reserved/Ignore"}, {22, "MPEG1/525"},       {23, "MPEG1/625"},       {24, "Timecode/HDTV"},
    {25, "DV/HDTV/100Mbit"}, {26, "AVC-Intra"},
};

constexpr const char *kMpegPictures[] = {"", "I-Frame ", "P-Frame ", "B-Frame "};

// clang-format off
constexpr FieldRow kLocatorRows[] = {
    {0, Field::dec32, " fields per entry:  "},
    {4, Field::dec32, " number of entries: "},
};
// clang-format on

constexpr uint64_t kPreambleSize = 16;
constexpr uint64_t kTimecodeSize = 8;
constexpr int64_t kLocatorEntries = 1000;
constexpr int64_t kLocatorSize = 4 + 4 + 4 * kLocatorEntries;

// What the four bytes of field information mean depends on the media: the range of the samples or time codes
// that are valid, the size of the picture, or nothing that is known.
enum class Info { range, mpeg, pages, other };

Info info_of(uint8_t type) {
    switch (type) {
        case 7:
        case 8:
        case 9:
        case 10:
        case 17:
        case 18:
        case 24: return Info::range;
        case 11:
        case 12:
        case 20:
        case 22:
        case 23: return Info::mpeg;
        case 3:
        case 4:
        case 13:
        case 14:
        case 15:
        case 16: return Info::pages;
        default: return Info::other;
    }
}

bool is_timecode(uint8_t type) { return type == 7 || type == 8 || type == 24; }

// Binary-coded decimal digits in the low nibbles, from the frames' units to the hours' tens, and a user bits
// digit in each high nibble.
void print_timecode(unsigned i, Bytes c) {
    print(" %3d %d%d:%d%d:%d%d:%d%d%c %x%x%x%x%x%x%x%x\n", i, c[7] & 3, c[6] & 15, c[5] & 7, c[4] & 15,
          c[3] & 7, c[2] & 15, c[1] & 3, c[0] & 15, (c[7] | c[3]) & 0x08 ? '*' : ' ', c[7] >> 4, c[6] >> 4,
          c[5] >> 4, c[4] >> 4, c[3] >> 4, c[2] >> 4, c[1] >> 4, c[0] >> 4);
}

void print_timecodes(Bytes payload, unsigned start, unsigned end) {
    for (unsigned i = start; i < end; i++) {
        const uint64_t offset = kPreambleSize + kTimecodeSize * i;
        if (!payload.has(offset, kTimecodeSize)) return;
        print_timecode(i, payload.from(offset));
    }
}

void print_info(uint8_t type, Bytes b) {
    switch (info_of(type)) {
        case Info::range: print(" info      start:%d end:%d\n", big16(b, 0), big16(b, 2)); break;
        case Info::mpeg:
            print(" info      length:%d %s\n", static_cast<int>(b.big(1, 3)),
                  name_at(kMpegPictures, b[0] & 3));
            break;
        case Info::pages: print(" info      length:%d\n", b[0] * 4096); break;
        case Info::other: print(" info      %d %d %d %d\n", b[0], b[1], b[2], b[3]); break;
    }
}

}  // namespace

const char *gxftracktype(int32_t type) { return name_of(kTrackTypes, static_cast<uint32_t>(type), "?"); }

void gxfmedia(Bytes rest, int64_t size) {
    Bytes payload;
    if (!payload_of(rest, size, payload)) {
        print("gxfmedia: fread error\n");
        return;
    }
    const uint8_t type = payload[0];
    const Bytes info = payload.from(6);
    print(" track     %d %d-%s\n", payload[1], type, gxftracktype(type));
    print(" fieldnr   media:%d timeline:%d flags:%02x\n", gxfint32(payload, 2, false),
          gxfint32(payload, 10, false), payload[14]);
    print_info(type, info);
    if (is_timecode(type)) print_timecodes(payload, big16(info, 0), big16(info, 2));
}

void gxflocator(Bytes rest, int64_t size) {
    if (size != kLocatorSize) {
        print("size != 4 + 4 + 4 * 1000\n");
        return;
    }
    Bytes table;
    if (!payload_of(rest, size, table)) {
        print("gxflocator: fread error\n");
        return;
    }
    const uint32_t fields = gxfuint32(table, 0, true);
    print_field_rows(little_endian(table), kLocatorRows);
    for (uint32_t i = 1; i < kLocatorEntries; i++) {
        const uint32_t kib = gxfuint32(table, 8 + 4 * uint64_t{i}, true);
        if (kib == 0) continue;
        print("  entry[%3d]: field %10d @ %10d KB [0x%08X] = 0x%16llx bytes\n", i,
              static_cast<int>(fields * i), static_cast<int>(kib), kib,
              static_cast<unsigned long long>(kib) * 1024);
    }
}
