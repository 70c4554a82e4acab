// JPEG markers (ISO/IEC 10918-1) with JFIF and EXIF segments.

#include "common/field_rows.h"
#include "common/names.h"
#include "common/print.h"
#include "common/stream.h"
#include "common/values.h"
#include "jpeg2000/codestream.h"
#include "jpeg2000/hexdump.h"
#include "jpeg2000/jpeg2000.h"
#include "tiff/tiff.h"

namespace {

constexpr uint64_t kJpegMarkerSize = 2;
constexpr uint64_t kJpegSegmentHead = 4;  // marker and size

// Segments of which nothing but a title, if that, is known.
struct Title {
    uint32_t code;
    const char *name;
    const char *line;  // behind the header line
};
constexpr Title kTitles[] = {
    {0xC4, "DHT", " huffmann table\n"},
    {0xC8, "JPG", ""},
    {0xCC, "DAC", ""},
    {0xDB, "DQT", " quantization table\n"},
    {0xDC, "DNL", ""},
    {0xDD, "DRI", ""},
    {0xDE, "DHP", ""},
    {0xDF, "EXP", ""},
    {0xFE, "COM", ""},
};

// clang-format off
// From the segment's marker on.
constexpr FieldRow kFrameRows[] = {
    {4, Field::dec8, " precision  "},
    {5, Field::dec16, " ysize      "},
    {7, Field::dec16, " xsize      "},
    {9, Field::dec8, " components "},
};
// Behind a scan's components, before its last byte.
constexpr FieldRow kScanRows[] = {
    {0, Field::dec8, " ss         "},
    {1, Field::dec8, " se         "},
};
constexpr FieldRow kJfifVersion = {9, Field::dec8, " version    ", 2, {"."}};
constexpr FieldRow kJfifRows[] = {
    {12, Field::dec16, " xdpy       "},
    {14, Field::dec16, " ydpy       "},
    {16, Field::dec8, " thumbnailx "},
    {17, Field::dec8, " thumbnaily "},
};
// clang-format on

void print_position(uint64_t offset) {
    print("%08x: ", static_cast<uint32_t>(offset));
    behind_position();
}

void print_header(uint64_t offset, const char *name, uint32_t code, uint64_t size) {
    print_position(offset);
    print("%s/%02x %d\n", own(name), code, static_cast<int>(size));
}

void print_numbered_header(uint64_t offset, const char *name, uint32_t number, uint32_t code, uint64_t size) {
    print_position(offset);
    print("%s%d/%02x %d\n", own(name), number, code, static_cast<int>(size));
}

// As data the components are indices.
void print_component(uint32_t i) {
    label_begins();
    print(" component%d", i);
    label_ends();
    print("\n");
}

void print_frame(Bytes segment) {
    const uint32_t components = segment[9];
    print_field_rows(big_endian(segment), kFrameRows);
    for (uint32_t i = 0; i < components; i++) {
        const Bytes c = segment.from(10 + uint64_t{3} * i);
        print_component(i);
        print("  id        %d\n", c[0]);
        print("  sampling  %d %d\n", c[1] >> 4, c[1] & 15);
        print("  tableno   %d\n", c[2]);
    }
}

void print_scan(Bytes segment) {
    const uint32_t components = segment[4];
    print(" components %d\n", components);
    for (uint32_t i = 0; i < components; i++) {
        const Bytes c = segment.from(5 + uint64_t{2} * i);
        print_component(i);
        print("  index     %d\n", c[0]);
        print("  ac/dc     %d/%d\n", c[1] >> 4, c[1] & 15);
    }
    const Bytes rest = segment.from(5 + uint64_t{2} * components);
    print_field_rows(big_endian(rest), kScanRows);
    print(" a          %d %d\n", rest[2] >> 4, rest[2] & 15);
}

void print_jfif(Bytes segment) {
    constexpr const char *kUnits[] = {"none", "inch", "cm"};
    print_field_row(big_endian(segment), kJfifVersion);
    from(segment, 11, 1);
    if (const char *unit = name_at(kUnits, segment[11], nullptr)) {
        print(" units      %s\n", unit);
    } else {
        print(" units      %02x - unknown\n", segment[11]);
    }
    print_field_rows(big_endian(segment), kJfifRows);
}

// The TIFF structure of an EXIF segment.
void print_exif(DumpOptions &opts, Bytes tiff, Budget &budget) {
    const OrderedBytes base = tiff[0] == 'M' ? big_endian(tiff) : little_endian(tiff);
    if (tiff[base.is_big() ? 3 : 2] == '*' && (base.is_big() || tiff[0] == 'I')) {
        const uint32_t directory = base.u32(4);
        forget();
        tiffdumpifd(opts, base, directory, budget);
    } else {
        print(" Unknown type\n");
    }
}

void print_application(DumpOptions &opts, Bytes segment, uint64_t size, Budget &budget) {
    constexpr uint64_t kIdentifier = 4;
    const Text id = text_at(segment, kIdentifier, size);
    const uint64_t length = static_cast<uint64_t>(id.length);
    from(segment, kIdentifier, length + 1);
    print(" blockid    ");
    for (uint64_t i = 0; i < length; i++) print("%02x", segment[kIdentifier + i]);
    print(" '");
    for (uint64_t i = 0; i < length; i++) print("%c", tiffchar(segment[kIdentifier + i]));
    print("'\n");
    if (bytes_are(segment, kIdentifier, "JFIF\0")) {
        print_jfif(segment);
    } else if (bytes_are(segment, kIdentifier, "Exif\0")) {
        print_exif(opts, segment.from(kIdentifier + length + 2), budget);
    } else {
        print(" Unknown type\n");
    }
}

// Prints the header line and the fields of a segment; returns the bytes to the next one, 0 behind the scan.
uint64_t print_segment(DumpOptions &opts, Bytes buf, uint64_t offset, uint64_t size, Budget &budget) {
    const Bytes segment = buf.from(offset);
    const uint32_t code = segment[1];
    if (const Title *title = row_of(kTitles, code, &Title::code)) {
        print_header(offset, title->name, code, size);
        print("%s", own(title->line));
        return size;
    }
    if (code >= 0xC0 && code <= 0xCF) {
        print_numbered_header(offset, "SOF", code - 0xC0, code, size);
        print_frame(segment);
        return size;
    }
    if (code >= 0xD0 && code <= 0xD7) {
        print_header(offset, "RST", code, size);
        return size;
    }
    if (code >= 0xE0 && code <= 0xEF) {
        print_numbered_header(offset, "APP", code - 0xE0, code, size);
        print_application(opts, segment, size, budget);
        return size;
    }
    switch (code) {
        case 0xD8: print_header(offset, "SOI", code, kJpegMarkerSize); return kJpegMarkerSize;
        case 0xD9: print_header(offset, "EOI", code, kJpegMarkerSize); return kJpegMarkerSize;
        case 0xDA:
            print_header(offset, "SOS", code, size);
            print_scan(segment);
            return 0;
        case 0xF0:
        case 0xFD: print_numbered_header(offset, "JPG", code - 0xF0, code, size); return size;
        default:
            print_position(offset);
            print("%08x: 0xff%02x ", code, code);
            label_begins();
            print("Unknown marker /%d \n", static_cast<int>(size));
            return size;
    }
}

uint64_t jpegentry(DumpOptions &opts, Bytes buf, uint64_t offset, Budget &budget) {
    if (buf[offset] != 0xFF) {
        print_position(offset);
        print(" Expected to find 0xff, found 0x%02x\n:", buf[offset]);
        return 0;
    }
    const uint64_t size = kJpegMarkerSize + big16(buf, offset + 2);
    from(buf, offset,
         buf[offset + 1] == 0xD8 || buf[offset + 1] == 0xD9 ? kJpegMarkerSize : kJpegSegmentHead);
    const uint64_t result = print_segment(opts, buf, offset, size, budget);
    if (opts.verbose) jp2_hexdump(buf, offset, result);
    return result;
}

}  // namespace

void jpgdump(DumpOptions &opts, Input &input) {
    if (!check_buffer(input.size())) return;
    const Bytes buf = input.bytes();
    Budget budget(buf.size());
    print("Fileformat:JPEG\n");
    uint64_t offset = 0;
    while (offset < buf.size()) {
        const uint64_t size = jpegentry(opts, buf, offset, budget);
        if (size == 0) break;
        offset += size;
    }
    if (offset > buf.size()) print("ERROR during decoding\n");
}
