// ARRI raw: the 4096-byte header of a frame, little-endian throughout.
#include <cstdio>
#include <span>

#include "common/file_access.h"
#include "common/file_image.h"
#include "common/values.h"
#include "images/images.h"

namespace {

constexpr uint64_t kHeaderSize = 4096;
constexpr uint32_t kMagic = 0x49525241;  // "ARRI"
constexpr uint32_t kLittleEndianMark = 0x78563412;
constexpr uint32_t kBigEndianMark = 0x12345678;

enum class Kind {
    integers,  // "%d"
    floats,    // "%f"
    words,     // "0x%08X"
    text,
};

// A line: its label, and one or more values behind each other with what stands between them.
struct Row {
    uint16_t offset;
    Kind kind;
    const char *label;
    uint8_t count = 1;                                  // of values; the width of a text
    const char *between[4] = {", ", ", ", ", ", ", "};  // behind value i, i counted modulo 4
};

constexpr Row kShortRows[] = {
    {8, Kind::integers, " Offset    "},
    {16, Kind::integers, " Width     "},
    {20, Kind::integers, " Height    "},
};

constexpr Row kRootRows[] = {
    {8, Kind::integers, "HeaderSize:                "},
    {12, Kind::integers, "VersionNumber:             "},
};

constexpr Row kImageDataRows[] = {
    {16, Kind::integers, "Valid:                     "},
    {20, Kind::integers, "Width:                     "},
    {24, Kind::integers, "Height:                    "},
    {28, Kind::integers, "DataType:                  "},
    {32, Kind::integers, "DataSpace:                 "},
    {36, Kind::integers, "ActiveImage:               ", 4, {"|", ", ", "|", ""}},
    {52, Kind::integers, "FullImage:                 ", 4, {"|", ", ", "|", ""}},
    {68, Kind::integers, "ImageDataOffset:           "},
    {72, Kind::integers, "ImageDataSize:             "},
    {76, Kind::integers, "Reserved:                  ", 2, {",", "", "", ""}},
};

constexpr Row kImageContentRows[] = {
    {84, Kind::integers, "Valid:                     "},
    {88, Kind::integers, "Version:                   "},
    {92, Kind::integers, "WhiteBalance:              "},
    {96, Kind::floats, "GreenTintFactor:           "},
    {100, Kind::floats, "WhiteBalanceFactorR:       "},
    {104, Kind::floats, "WhiteBalanceFactorG:       "},
    {108, Kind::floats, "WhiteBalanceFactorB:       "},
    {112, Kind::integers, "WBAppliedInCameraFlag:     "},
    {116, Kind::integers, "ExposureIndex:             "},
    {120, Kind::integers, "BlackLevel:                "},
    {124, Kind::integers, "WhiteLevel:                "},
    {128, Kind::floats, "ColorMatrix:               ", 12, {", ", ", ", ", ", " | "}},
    {176, Kind::floats, "ColorMatrixDesatGain:      "},
    {180, Kind::floats, "ColorMatrixDesatOffset:    "},
    {184, Kind::integers, "HighlightDesaturationFlag: "},
    {188, Kind::integers, "TargetColorSpace:          "},
    {192, Kind::integers, "Sharpness:                 "},
    {196, Kind::floats, "PixelAspectRatio:          "},
    {200, Kind::integers, "Flip:                      "},
    {204, Kind::text, "LookFile:                  ", 32},
    {236, Kind::integers, "LookLutMode:               "},
    {240, Kind::integers, "LookLutOffset:             "},
    {244, Kind::integers, "LookLutSize:               "},
    {248, Kind::integers, "LookLUTCRC:                "},
    {252, Kind::floats, "LinearSaturation:          "},
    {256, Kind::floats, "CdlSlope:                  ", 3},
    {268, Kind::floats, "CdlOffset:                 ", 3},
    {280, Kind::floats, "CdlPower:                  ", 3},
    {292, Kind::text, "Reserved:                  ", 60},
};

constexpr Row kCameraRows[] = {
    {352, Kind::integers, "Valid:                     "},
    {356, Kind::integers, "CameraTypeID:              "},
    {360, Kind::integers, "CameraRevision:            "},
    {364, Kind::integers, "FirmwareVersion:           "},
    {368, Kind::integers, "CameraSerialNumber:        "},
    {372, Kind::integers, "CameraID:                  "},
    {376, Kind::integers, "CameraIndex:               "},
    {380, Kind::words, "SysImageCreationTime:      ", 2},
    {388, Kind::words, "UserDate:                  ", 2},
    {396, Kind::integers, "ExposureTime:              "},
    {400, Kind::integers, "ShutterAngle:              "},
    {404, Kind::integers, "SpeedRampDuration:         "},
    {408, Kind::integers, "SpeedRampStartFrame:       "},
    {412, Kind::integers, "SpeedRampEndFrame:         "},
    {416, Kind::integers, "SensorFps:                 "},
    {420, Kind::integers, "ProjectFps:                "},
};

constexpr const char *kTimecodeTitles[] = {
    "Master_TC:",         "Ext_LTC_FreeRun:",          "Ext_VITC_FreeRun:",
    "IntFreeRunToD_TC:",  "IntFreeRunUserDefined_TC:", "RecRunEdgeCode_TC:",
    "RecRunClipCode_TC:", "RecRunRegen_TC:",
};
constexpr uint64_t kTimecodes = 424;
constexpr uint64_t kTimecodeSize = 16;

uint32_t ari32(Bytes header, uint64_t offset) { return little32(header, offset); }
int32_t ari_int(Bytes header, uint64_t offset) { return static_cast<int32_t>(ari32(header, offset)); }

void print_value(Bytes header, Kind kind, uint64_t offset) {
    const uint32_t word = ari32(header, offset);
    switch (kind) {
        case Kind::integers: std::printf("%d", static_cast<int32_t>(word)); break;
        case Kind::floats: std::printf("%f", static_cast<double>(float_of_bits(word))); break;
        case Kind::words: std::printf("0x%08X", word); break;
        case Kind::text: break;
    }
}

void print_row(Bytes header, const Row &row) {
    std::printf("%s", row.label);
    if (row.kind == Kind::text) {
        const Text text = text_at(header, row.offset, row.count);
        std::printf("%.*s\n", text.length, text.start);
        return;
    }
    for (uint64_t i = 0; i < row.count; i++) {
        print_value(header, row.kind, row.offset + 4 * i);
        std::printf("%s", i + 1 < row.count ? row.between[i % 4] : "\n");
    }
}

void print_section(const char *title, Bytes header, std::span<const Row> rows) {
    std::printf("%s\n", title);
    for (const Row &row : rows) print_row(header, row);
}

const char *byte_order_name(uint32_t mark) {
    return mark == kLittleEndianMark ? " ARRI_LITTLEEND" : mark == kBigEndianMark ? " ARRI_BIGEND" : "";
}

void print_root(Bytes header) {
    const uint32_t magic = ari32(header, 0);
    const uint32_t byte_order = ari32(header, 4);
    std::printf("Root Information\n");
    std::printf("MagicNum:                  0x%08X%s\n", magic, magic == kMagic ? " ARRI_MAGIC" : "");
    std::printf("ByteOrder:                 0x%08X%s\n", byte_order, byte_order_name(byte_order));
    for (const Row &row : kRootRows) print_row(header, row);
}

void print_timecode(const char *title, Bytes record) {
    const uint32_t base = ari32(record, 8);
    std::printf("%s\n", title);
    std::printf("    TimeCode:              0x%08X\n", ari32(record, 0));
    std::printf("    FrameCounter:          %d\n", ari_int(record, 4));
    std::printf("    TimeBase:              %d\n", base & 0x7FFFFFFF);
    std::printf("    DropFrameFlag:         %d\n", base >> 31);
    std::printf("    UserBits:              %d\n", ari_int(record, 12));
}

// The layout of versions below 3.
void print_short_layout(Bytes header) {
    std::printf(" Magic1    %08x\n", ari32(header, 0));
    std::printf(" Magic2    %08x\n", ari32(header, 4));
    for (const Row &row : kShortRows) print_row(header, row);
}

}  // namespace

void aridump(DumpOptions &, std::FILE *file) {
    if (file_size(file) < kHeaderSize) return;
    FileImage image(file, 0, kHeaderSize);
    const Bytes header = image.bytes();
    const int32_t version = ari_int(header, 12);
    std::printf("Fileformat:ARRIRAW V%d\n", version);
    if (version < 3) {
        print_short_layout(header);
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
