// Video headers after ISO/IEC 11172-2 and 13818-2.

#include "common/names.h"
#include "common/print.h"
#include "mpeg/headers.h"

namespace {

constexpr int kMatrixBits = 512;

// clang-format off
constexpr BitRow kGroupRows[] = {
    {25, " timecode:        ", 8},
    {1, " closedgop:       "},
    {1, " brokenlink:      "},
};
constexpr BitRow kSequenceRows[] = {
    {12, " xsize:           "},
    {12, " ysize:           "},
    {4, " aspect:          "},
    {4, " framerate:       "},
    {18, " bitrate:         "},
    {1, " marker:          "},
    {10, " vbvbuffer:       "},
    {1, " constrained:     "},
};
constexpr BitRow kSequenceExtensionRows[] = {
    {8, " profile:         "},
    {1, " progressive:     "},
    {2, " chromaformat:    "},
    {2, " horizontalext:   "},
    {2, " verticalalext:   "},
    {12, " bitrateext:      "},
    kMarker,
    {8, " vbvbufferext:    "},
    {1, " lowdelay:        "},
    {2, " frameratenext:   "},
    {5, " frameratedext:   "},
};
constexpr BitRow kColourRows[] = {
    {8, "  primaries:      "},
    {8, "  transfer:       "},
    {8, "  matrix:         "},
};
constexpr BitRow kDisplaySizeRows[] = {
    {14, " xsize:           "},
    kMarker,
    {14, " ysize:           "},
};
constexpr BitRow kPictureCodingRows[] = {
    {4, " fwdhorizontal:   "},
    {4, " fwdvertical:     "},
    {4, " backhorizontal:  "},
    {4, " backvertical:    "},
    {2, " intradc:         "},
    {2, " structure:       "},
    {1, " topfieldfirst:   "},
    {1, " framepredframe:  "},
    {1, " motionvectors:   "},
    {1, " qscaletype:      "},
    {1, " intravlcformat:  "},
    {1, " alternatescan:   "},
    {1, " repeat1field:    "},
    {1, " chroma420:       "},
    {1, " progressive:     "},
};
constexpr BitRow kCompositeRows[] = {
    {1, " vaxis:           "},
    {3, " fieldsequence:   "},
    {1, " subcarrier:      "},
    {7, " burstamplitude:  "},
    {8, " subcarrierphase: "},
};
// Motion vectors of predicted and of bidirectional pictures.
constexpr BitRow kForwardRows[] = {
    {1, " vectorforward:   "},
    {3, " forward_f_code:  "},
};
constexpr BitRow kBackwardRows[] = {
    {1, " vectorbackward:  "},
    {3, " forward_f_code:  "},
};
// clang-format on

constexpr CodeName kNamedExtensions[] = {
    {3, " Quant Matrix Extension"},
    {4, " Copyright Extension"},
    {5, " Sequence Scalable Extension"},
    {7, " Picture Display Extension"},
    {9, " Picture Spatial Scalable Extension"},
    {10, " Picture Temporal Scalable Extension"},
};

// A matrix is there when its flag bit says so. Its line is printed and its values are passed over.
void print_matrix(mpeg_reader &reader, const char *line) {
    if (!mpegbit(reader)) return;
    print("%s\n", line);
    mpegbits(reader, kMatrixBits);
}

void print_sequence_extension(mpeg_reader &reader) {
    print(" Sequence Extension\n");
    print_bit_rows(reader, kSequenceExtensionRows);
}

void print_sequence_display_extension(mpeg_reader &reader) {
    print(" Sequence Display Extension\n");
    print_bits(reader, {3, " videoformat:     "});
    if (print_bits(reader, {1, " colordesc:       "})) print_bit_rows(reader, kColourRows);
    print_bit_rows(reader, kDisplaySizeRows);
}

void print_picture_coding_extension(mpeg_reader &reader) {
    print(" Picture Coding Extension\n");
    print_bit_rows(reader, kPictureCodingRows);
    if (print_bits(reader, {1, " compositeflag:   "})) print_bit_rows(reader, kCompositeRows);
    mpegbits(reader, 4);
}

}  // namespace

Status print_group_of_pictures(mpeg_reader &reader) {
    print_bit_rows(reader, kGroupRows);
    return Status::go_on;
}

Status print_sequence_header(mpeg_reader &reader) {
    print_bit_rows(reader, kSequenceRows);
    print_matrix(reader, " intramatrix:");
    print_matrix(reader, " nonintramatrix:");
    return Status::go_on;
}

Status print_extension(mpeg_reader &reader) {
    const uint32_t identifier = mpegbits(reader, 4);
    print(" identifier:      %d ", identifier);
    switch (identifier) {
        case 1: print_sequence_extension(reader); return Status::go_on;
        case 2: print_sequence_display_extension(reader); return Status::go_on;
        case 8: print_picture_coding_extension(reader); return Status::go_on;
        default: break;
    }
    if (const char *name = name_of(kNamedExtensions, identifier, nullptr)) {
        print("%s\n", name);
    } else {
        print("Unknown profile %d\n", identifier);
    }
    return Status::unsupported;
}

Status print_picture_header(mpeg_reader &reader) {
    constexpr uint32_t kPredicted = 2;
    constexpr uint32_t kBidirectional = 3;
    print_bits(reader, {10, " temporal:        "});
    const uint32_t coding = print_bits(reader, {3, " coding:          "});
    print_bits(reader, {16, " vbvdelay:        "});
    if (coding == kPredicted || coding == kBidirectional) print_bit_rows(reader, kForwardRows);
    if (coding == kBidirectional) print_bit_rows(reader, kBackwardRows);
    while (mpegbit(reader)) print_bits(reader, {8, " extrainfo:       "});
    mpegbit(reader);
    return Status::go_on;
}
