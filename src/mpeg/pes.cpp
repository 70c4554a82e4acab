// PES packet headers (ISO/IEC 13818-1, 2.4.3.6).

#include "common/print.h"
#include "common/values.h"
#include "mpeg/headers.h"

namespace {

// Behind the two marker bits, in this order.
enum FlagIndex { kTimeStamps = 5, kEscr, kEsRate, kTrickMode, kCopyInfo, kCrc, kExtension, kFlags = 13 };
// clang-format off
constexpr BitRow kPesFlags[] = {
    {2, "  PES_scrambling  "},
    {1, "  PES_priority    "},
    {1, "  data_alignment  "},
    {1, "  copyright       "},
    {1, "  copyflag        "},
    {2, "  PTS_DTS_flags   "},
    {1, "  ESCR_flag       "},
    {1, "  ES_rate_flag    "},
    {1, "  trick_mode      "},
    {1, "  copy_info_flag  "},
    {1, "  PES_CRC_flag    "},
    {1, "  PES_extension   "},
    {8, "  PES_header_data "},
};
// clang-format on
static_assert(sizeof kPesFlags / sizeof *kPesFlags == kFlags);

// 33 bits in three parts, each followed by a marker.
unsigned long long read_stamp(mpeg_reader &reader) {
    unsigned long long stamp = mpegbits(reader, 3);
    markerbit(reader);
    for (int part = 0; part < 2; part++) {
        stamp = stamp << 15 | mpegbits(reader, 15);
        markerbit(reader);
    }
    return stamp;
}

void print_stamp(mpeg_reader &reader, const char *label, uint32_t expected) {
    markerbits(reader, 4, expected);
    print("%s%08llx\n", label, read_stamp(reader));
}

Status print_stamps(mpeg_reader &reader, uint32_t flags) {
    switch (flags) {
        case 1: mpegerror(reader, "PTSDTS flag may not be 01"); return Status::error;
        case 2: print_stamp(reader, "  PTS             ", 2); break;
        case 3:
            print_stamp(reader, "  PTS             ", 3);
            print_stamp(reader, "  DTS             ", 1);
            break;
        default: break;
    }
    return Status::go_on;
}

void print_escr(mpeg_reader &reader) {
    mpegbits(reader, 2);
    const unsigned long long base = read_stamp(reader);
    const uint32_t extension = mpegbits(reader, 9);
    markerbit(reader);
    print("  ECSR           %08llx %d\n", base, extension);
}

// clang-format off
constexpr BitRow kEsRateRows[] = {
    kMarker,
    {22, "  ESRATE         "},
    kMarker,
};
constexpr BitRow kCopyInfoRows[] = {
    kMarker,
    {7, "  copyinfo       "},
};
// Trick modes: fast and slow, forward and reverse, and freeze.
constexpr BitRow kFastRows[] = {
    {2, "  fieldid      "},
    {1, "  intraslice   "},
    {2, "  freqtrunc    "},
};
constexpr BitRow kSlowRows[] = {
    {5, "  repcntrl     "},
};
constexpr BitRow kFreezeRows[] = {
    {2, "  fieldid      "},
    {3},
};
constexpr BitRow kCounterRows[] = {
    kMarker,
    {7, "  sequencenr      "},
    kMarker,
    {1, "  mpeg1           "},
    {6, "  orglength       "},
};
constexpr BitRow kStdBufferRows[] = {
    {1, "  stdscale        "},
    {13, "  stdsize         "},
};
// clang-format on

void print_trick_mode(mpeg_reader &reader) {
    switch (print_bits(reader, {3, "  trickmode      "})) {
        case 0:
        case 3: print_bit_rows(reader, kFastRows); break;
        case 1:
        case 4: print_bit_rows(reader, kSlowRows); break;
        case 2: print_bit_rows(reader, kFreezeRows); break;
        default: mpegbits(reader, 5);
    }
}

// Two rows of eight bytes, each last byte first.
void print_private_data(mpeg_reader &reader) {
    for (int row = 0; row < 2; row++) {
        uint32_t b[8];
        for (uint32_t &byte : b) byte = mpegbits(reader, 8);
        print("  privatedata     %02x %02x %02x %02x %02x %02x %02x %02x\n", b[7], b[6], b[5], b[4], b[3],
              b[2], b[1], b[0]);
    }
}

void print_extension_field(mpeg_reader &reader) {
    markerbit(reader);
    const uint32_t length = print_bits(reader, {7, "  fieldlen        "});
    for (uint32_t i = 0; i < length; i++) {
        const uint32_t byte = mpegbits(reader, 8);
        if (is_printable(byte)) {
            print("  reserved        %02x %c\n", byte, static_cast<char>(byte));
        } else {
            print("  reserved        %02x\n", byte);
        }
    }
}

void print_pes_extension(mpeg_reader &reader) {
    const uint32_t private_data = print_bits(reader, {1, "  privateflag     "});
    const uint32_t pack_header = print_bits(reader, {1, "  packheaderflag  "});
    const uint32_t counter = print_bits(reader, {1, "  counterflag     "});
    const uint32_t std_buffer = print_bits(reader, {1, "  stdflag         "});
    mpegbits(reader, 3);
    const uint32_t extension = print_bits(reader, {1, "  extflag         "});
    if (private_data) print_private_data(reader);
    if (pack_header) print_bits(reader, {8, "  fieldlength     "});
    if (counter) print_bit_rows(reader, kCounterRows);
    if (std_buffer) {
        markerbits(reader, 2, 1);
        print_bit_rows(reader, kStdBufferRows);
    }
    if (extension) print_extension_field(reader);
}

}  // namespace

Status print_pes_header(const DumpOptions &opts, mpeg_reader &reader) {
    markerbits(reader, 2, 2);
    uint32_t flags[kFlags];
    for (int i = 0; i < kFlags; i++) flags[i] = mpegbits(reader, kPesFlags[i].bits);
    if (opts.verbose > 1) {
        for (int i = 0; i < kFlags; i++) {
            if (flags[i]) print("%s%d\n", kPesFlags[i].label, flags[i]);
        }
    }
    const Status status = print_stamps(reader, flags[kTimeStamps]);
    if (flags[kEscr]) print_escr(reader);
    if (flags[kEsRate]) print_bit_rows(reader, kEsRateRows);
    if (flags[kTrickMode]) print_trick_mode(reader);
    if (flags[kCopyInfo]) print_bit_rows(reader, kCopyInfoRows);
    if (flags[kCrc]) print_bits(reader, {16, "  pescrc         "});
    if (flags[kExtension]) print_pes_extension(reader);
    return status;
}
