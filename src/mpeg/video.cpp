// Video headers after ISO/IEC 11172-2 and 13818-2.
#include <span>

#include "common/names.h"
#include "mpeg/headers.h"

namespace {

constexpr int kMatrixBits = 512;

struct Row {
    int bits;
    const char *label;
};

constexpr Row kSequenceRows[] = {
    {12, " xsize:           "}, {12, " ysize:           "}, {4, " aspect:          "},
    {4, " framerate:       "},  {18, " bitrate:         "}, {1, " marker:          "},
    {10, " vbvbuffer:       "}, {1, " constrained:     "},
};
constexpr Row kSequenceExtensionRows[] = {
    {8, " profile:         "}, {1, " progressive:     "}, {2, " chromaformat:    "},
    {2, " horizontalext:   "}, {2, " verticalalext:   "}, {12, " bitrateext:      "},
};
constexpr Row kSequenceExtensionEndRows[] = {
    {8, " vbvbufferext:    "},
    {1, " lowdelay:        "},
    {2, " frameratenext:   "},
    {5, " frameratedext:   "},
};
constexpr Row kColourRows[] = {
    {8, "  primaries:      "},
    {8, "  transfer:       "},
    {8, "  matrix:         "},
};
constexpr Row kPictureCodingRows[] = {
    {4, " fwdhorizontal:   "}, {4, " fwdvertical:     "}, {4, " backhorizontal:  "},
    {4, " backvertical:    "}, {2, " intradc:         "}, {2, " structure:       "},
    {1, " topfieldfirst:   "}, {1, " framepredframe:  "}, {1, " motionvectors:   "},
    {1, " qscaletype:      "}, {1, " intravlcformat:  "}, {1, " alternatescan:   "},
    {1, " repeat1field:    "}, {1, " chroma420:       "}, {1, " progressive:     "},
};
constexpr Row kCompositeRows[] = {
    {1, " vaxis:           "}, {3, " fieldsequence:   "}, {1, " subcarrier:      "},
    {7, " burstamplitude:  "}, {8, " subcarrierphase: "},
};
constexpr CodeName kNamedExtensions[] = {
    {3, " Quant Matrix Extension"},
    {4, " Copyright Extension"},
    {5, " Sequence Scalable Extension"},
    {7, " Picture Display Extension"},
    {9, " Picture Spatial Scalable Extension"},
    {10, " Picture Temporal Scalable Extension"},
};

void print_rows(mpeg_reader &reader, std::span<const Row> rows) {
    for (const Row &row : rows) print_bits(reader, row.label, row.bits);
}

// A matrix is there when its flag bit says so; it is passed over.
void print_matrix(mpeg_reader &reader, const char *line) {
    if (!mpegbit(reader)) return;
    std::printf("%s\n", line);
    mpegbits(reader, kMatrixBits);
}

void print_sequence_extension(mpeg_reader &reader) {
    std::printf(" Sequence Extension\n");
    print_rows(reader, kSequenceExtensionRows);
    markerbit(reader);
    print_rows(reader, kSequenceExtensionEndRows);
}

void print_sequence_display_extension(mpeg_reader &reader) {
    std::printf(" Sequence Display Extension\n");
    print_bits(reader, " videoformat:     ", 3);
    if (print_bits(reader, " colordesc:       ", 1)) print_rows(reader, kColourRows);
    print_bits(reader, " xsize:           ", 14);
    markerbit(reader);
    print_bits(reader, " ysize:           ", 14);
}

void print_picture_coding_extension(mpeg_reader &reader) {
    std::printf(" Picture Coding Extension\n");
    print_rows(reader, kPictureCodingRows);
    if (print_bits(reader, " compositeflag:   ", 1)) print_rows(reader, kCompositeRows);
    mpegbits(reader, 4);
}

}  // namespace

Status print_group_of_pictures(mpeg_reader &reader) {
    std::printf(" timecode:        %08x\n", mpegbits(reader, 25));
    print_bits(reader, " closedgop:       ", 1);
    print_bits(reader, " brokenlink:      ", 1);
    return Status::go_on;
}

Status print_sequence_header(mpeg_reader &reader) {
    print_rows(reader, kSequenceRows);
    print_matrix(reader, " intramatrix:");
    print_matrix(reader, " nonintramatrix:");
    return Status::go_on;
}

Status print_extension(mpeg_reader &reader) {
    const uint32_t identifier = mpegbits(reader, 4);
    std::printf(" identifier:      %d ", identifier);
    switch (identifier) {
        case 1: print_sequence_extension(reader); return Status::go_on;
        case 2: print_sequence_display_extension(reader); return Status::go_on;
        case 8: print_picture_coding_extension(reader); return Status::go_on;
        default: break;
    }
    if (const char *name = name_of(kNamedExtensions, identifier, nullptr)) {
        std::printf("%s\n", name);
    } else {
        std::printf("Unknown profile %d\n", identifier);
    }
    return Status::unsupported;
}

Status print_picture_header(mpeg_reader &reader) {
    constexpr uint32_t kPredicted = 2;
    constexpr uint32_t kBidirectional = 3;
    print_bits(reader, " temporal:        ", 10);
    const uint32_t coding = print_bits(reader, " coding:          ", 3);
    print_bits(reader, " vbvdelay:        ", 16);
    if (coding == kPredicted || coding == kBidirectional) {
        print_bits(reader, " vectorforward:   ", 1);
        print_bits(reader, " forward_f_code:  ", 3);
    }
    if (coding == kBidirectional) {
        print_bits(reader, " vectorbackward:  ", 1);
        print_bits(reader, " forward_f_code:  ", 3);
    }
    while (mpegbit(reader)) print_bits(reader, " extrainfo:       ", 8);
    mpegbit(reader);
    return Status::go_on;
}
