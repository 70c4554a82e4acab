// Pack, system and program stream map headers after ISO/IEC 11172-1 and 13818-1.

#include "common/print.h"
#include "mpeg/headers.h"
#include "mpeg/names.h"

namespace {

constexpr double kClock = 90000;  // ticks a second of the system clock reference

// clang-format off
constexpr BitRow kSystemRows[] = {
    kMarker,
    {22, " ratebound:       "},
    kMarker,
    {6, " audiobound:      "},
    {1, " fixedflag:       "},
    {1, " cspsflag:        "},
    {1, " audiolocked:     "},
    {1, " videolocked:     "},
    kMarker,
    {5, " videobound:      "},
    {1, " privaterate:     "},
    {7, " reserved:        "},
};
constexpr BitRow kStreamBoundRows[] = {
    {8, " streamid:        ", 2},
    kMarker,
    kMarker,
    {1, " bound:           "},
    {13, " bufferzone:      "},
};
constexpr BitRow kStreamMapRows[] = {
    {1, " nextindicator:   "},
    {2},
    {5, " version:         "},
    {7},
    kMarker,
};
// clang-format on

// Descriptor bytes as characters, 15 a line; the last line stays open.
void print_characters(mpeg_reader &reader, uint32_t count) {
    constexpr uint32_t kColumns = 15;
    print(" info:            '");
    for (uint32_t i = 1; i <= count; i++) {
        print("%c", static_cast<char>(mpegbits(reader, 8)));
        if (i % kColumns == 0) print("'\n                  '");
    }
}

}  // namespace

Status print_pack_header(const DumpOptions &opts, mpeg_reader &reader, double &system_time, char *text) {
    const uint32_t mode = mpegbits(reader, 2);
    if (mode == 0) {
        print(" mpeg 1 ?\n");
        mpegbytes(reader, 7);
        return Status::go_on;
    }
    if (mode != 1) {
        print("mode == %d ?\n", mode);
        return Status::go_on;
    }
    uint64_t base = mpegbits(reader, 3);
    for (int part = 0; part < 2; part++) {
        markerbit(reader);
        base = base << 15 | mpegbits(reader, 15);
    }
    const double seconds = static_cast<double>(base) / kClock;
    system_time = seconds * 1000000;
    mpegsystemtime2string(text, system_time);
    const bool shown = opts.verbose > 1;
    if (shown) print(" systemclock:     %s - %1.6f\n", text, seconds);
    markerbit(reader);
    const uint32_t extension = mpegbits(reader, 9);
    if (shown) print(" bits :           %d\n", extension);
    markerbit(reader);
    const uint32_t rate = mpegbits(reader, 22);
    if (shown) print(" muxrate:         %d bytes/s\n", static_cast<int32_t>(rate * 50));
    markerbit(reader);
    markerbit(reader);
    mpegbits(reader, 5);
    const uint32_t stuffing = mpegbits(reader, 3);
    if (shown) print(" packbytes:       %d\n", stuffing);
    mpegbytes(reader, stuffing);
    return Status::go_on;
}

Status print_system_header(mpeg_reader &reader) {
    if (!mpegbitpeek(reader)) return Status::go_on;
    print_bit_rows(reader, kSystemRows);
    while (mpegbitpeek(reader)) {
        print_bit_rows(reader, kStreamBoundRows);
    }
    return Status::go_on;
}

Status print_program_stream_map(mpeg_reader &reader) {
    print_bit_rows(reader, kStreamMapRows);
    const uint32_t info = print_bits(reader, {16, " infolength:      "});
    print_characters(reader, info);
    print("'\n");
    const uint32_t map = print_bits(reader, {16, " infolength:      "});
    for (uint32_t used = 0; used < map;) {
        print_bits(reader, {8, " stream_type:     "});
        print_bits(reader, {8, " stream_id:       ", 2});
        const uint32_t length = print_bits(reader, {16, " infolength:      "});
        print_characters(reader, length);
        used += 4 + length;
    }
    if (map) print("'\n");
    print_bits(reader, {32, " CRC32:            ", 8});
    return Status::go_on;
}
