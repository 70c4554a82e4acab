// ARRI raw: the 4096-byte header of a frame, little-endian throughout.
#include <cstdio>
#include <span>

#include "common/field_rows.h"
#include "common/names.h"
#include "common/print.h"
#include "common/stream.h"
#include "images/images.h"

namespace {

constexpr uint64_t kHeaderSize = 4096;
constexpr CodeName kMagicNames[] = {{0x49525241, "ARRI_MAGIC"}};
constexpr CodeName kByteOrderNames[] = {{0x78563412, "ARRI_LITTLEEND"}, {0x12345678, "ARRI_BIGEND"}};

// clang-format off
// The whole layout of versions below 3.
constexpr FieldRow kShortRows[] = {
    {0, Field::hex32, " Magic1    "},
    {4, Field::hex32, " Magic2    "},
    {8, Field::dec32, " Offset    "},
    {16, Field::dec32, " Width     "},
    {20, Field::dec32, " Height    "},
};

constexpr FieldRow kRootRows[] = {
    {8, Field::dec32, "HeaderSize:                "},
    {12, Field::dec32, "VersionNumber:             "},
};

constexpr FieldRow kImageDataRows[] = {
    {16, Field::dec32, "Valid:                     "},
    {20, Field::dec32, "Width:                     "},
    {24, Field::dec32, "Height:                    "},
    {28, Field::dec32, "DataType:                  "},
    {32, Field::dec32, "DataSpace:                 "},
    {36, Field::dec32, "ActiveImage:               ", 4, {"|", 2, ", "}},
    {52, Field::dec32, "FullImage:                 ", 4, {"|", 2, ", "}},
    {68, Field::dec32, "ImageDataOffset:           "},
    {72, Field::dec32, "ImageDataSize:             "},
    {76, Field::dec32, "Reserved:                  ", 2, {","}},
};

constexpr FieldRow kImageContentRows[] = {
    {84, Field::dec32, "Valid:                     "},
    {88, Field::dec32, "Version:                   "},
    {92, Field::dec32, "WhiteBalance:              "},
    {96, Field::real, "GreenTintFactor:           "},
    {100, Field::real, "WhiteBalanceFactorR:       "},
    {104, Field::real, "WhiteBalanceFactorG:       "},
    {108, Field::real, "WhiteBalanceFactorB:       "},
    {112, Field::dec32, "WBAppliedInCameraFlag:     "},
    {116, Field::dec32, "ExposureIndex:             "},
    {120, Field::dec32, "BlackLevel:                "},
    {124, Field::dec32, "WhiteLevel:                "},
    {128, Field::real, "ColorMatrix:               ", 12, {", ", 4, " | "}},
    {176, Field::real, "ColorMatrixDesatGain:      "},
    {180, Field::real, "ColorMatrixDesatOffset:    "},
    {184, Field::dec32, "HighlightDesaturationFlag: "},
    {188, Field::dec32, "TargetColorSpace:          "},
    {192, Field::dec32, "Sharpness:                 "},
    {196, Field::real, "PixelAspectRatio:          "},
    {200, Field::dec32, "Flip:                      "},
    {204, Field::text, "LookFile:                  ", 32},
    {236, Field::dec32, "LookLutMode:               "},
    {240, Field::dec32, "LookLutOffset:             "},
    {244, Field::dec32, "LookLutSize:               "},
    {248, Field::dec32, "LookLUTCRC:                "},
    {252, Field::real, "LinearSaturation:          "},
    {256, Field::real, "CdlSlope:                  ", 3, {", "}},
    {268, Field::real, "CdlOffset:                 ", 3, {", "}},
    {280, Field::real, "CdlPower:                  ", 3, {", "}},
    {292, Field::text, "Reserved:                  ", 60},
};

constexpr FieldRow kCameraRows[] = {
    {352, Field::dec32, "Valid:                     "},
    {356, Field::dec32, "CameraTypeID:              "},
    {360, Field::dec32, "CameraRevision:            "},
    {364, Field::dec32, "FirmwareVersion:           "},
    {368, Field::dec32, "CameraSerialNumber:        "},
    {372, Field::dec32, "CameraID:                  "},
    {376, Field::dec32, "CameraIndex:               "},
    {380, Field::upper_hex32, "SysImageCreationTime:      ", 2, {", "}},
    {388, Field::upper_hex32, "UserDate:                  ", 2, {", "}},
    {396, Field::dec32, "ExposureTime:              "},
    {400, Field::dec32, "ShutterAngle:              "},
    {404, Field::dec32, "SpeedRampDuration:         "},
    {408, Field::dec32, "SpeedRampStartFrame:       "},
    {412, Field::dec32, "SpeedRampEndFrame:         "},
    {416, Field::dec32, "SensorFps:                 "},
    {420, Field::dec32, "ProjectFps:                "},
};

constexpr const char *kTimecodeTitles[] = {
    "Master_TC:",         "Ext_LTC_FreeRun:",          "Ext_VITC_FreeRun:",
    "IntFreeRunToD_TC:",  "IntFreeRunUserDefined_TC:", "RecRunEdgeCode_TC:",
    "RecRunClipCode_TC:", "RecRunRegen_TC:",
};
constexpr uint64_t kTimecodes = 424;
constexpr uint64_t kTimecodeSize = 16;
constexpr uint64_t kTimeBase = 8;  // the lower bits; the highest is the drop-frame flag
constexpr FieldRow kTimecodeRows[] = {
    {0, Field::upper_hex32, "    TimeCode:              "},
    {4, Field::dec32, "    FrameCounter:          "},
};
constexpr FieldRow kUserBitsRows[] = {
    {12, Field::dec32, "    UserBits:              "},
};
// clang-format on

uint32_t ari32(Bytes header, uint64_t offset) { return little32(header, offset); }

void print_rows(Bytes header, std::span<const FieldRow> rows) {
    print_field_rows(little_endian(header), rows, 1);
}

void print_section(const char *title, Bytes header, std::span<const FieldRow> rows) {
    print("%s\n", own(title));
    print_rows(header, rows);
}

// A code that has a name behind it where it is known.
void print_named(const char *label, Bytes field, Names names) {
    const uint32_t code = ari32(field, 0);
    behind_position(1);
    print("%s0x%08X", own(label), code);
    if (*names[code]) print(" %s", names[code]);
    print("\n");
}

void print_root(Bytes header) {
    print("Root Information\n");
    print_named("MagicNum:                  ", header.sub(0, 4), kMagicNames);
    print_named("ByteOrder:                 ", header.sub(4, 4), kByteOrderNames);
    print_rows(header, kRootRows);
}

void print_timecode(const char *title, Bytes record) {
    print("%s\n", own(title));
    print_field_rows(little_endian(record), kTimecodeRows);
    const uint32_t base = ari32(record, kTimeBase);
    print("    TimeBase:              %d\n", base & 0x7FFFFFFF);
    from(record, kTimeBase + 3, 1);
    print("    DropFrameFlag:         %d\n", base >> 31);
    print_field_rows(little_endian(record), kUserBitsRows);
}

}  // namespace

void aridump(DumpOptions &, Input &input) {
    if (input.size() < kHeaderSize) return;
    const Bytes header = input.bytes(0, kHeaderSize);
    const int32_t version = static_cast<int32_t>(ari32(header, 12));
    forget();
    also(header, 0, 4);
    also(header, 12, 4);
    print("Fileformat:ARRIRAW V%d\n", version);
    if (version < 3) {
        print_field_rows(little_endian(header), kShortRows);
        return;
    }
    print_root(header);
    print_section("Image Data Information", header, kImageDataRows);
    print_section("Image Content Information", header, kImageContentRows);
    print_section("Camera Device Information", header, kCameraRows);
    for (uint64_t i = 0; i < std::size(kTimecodeTitles); i++) {
        print_timecode(kTimecodeTitles[i], header.from(kTimecodes + kTimecodeSize * i));
    }
}
