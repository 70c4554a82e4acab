// Body items: system items and essence elements of the generic container (SMPTE 379M, 385M), XML and legacy
// items.
#include <algorithm>

#include "common/line_buffer.h"
#include "common/names.h"
#include "common/print.h"
#include "mxf/frames.h"
#include "mxf/items.h"
#include "mxf/klv.h"
#include "mxf/smpte326.h"
#include "mxf/value.h"

namespace {

// Item types: byte 12 of the key.
constexpr uint32_t kGcSystem = 0x14;
constexpr uint32_t kGcPicture = 0x15;
constexpr uint32_t kFrameWrappedJpeg2000 = 8;  // element type, byte 14 of the key

constexpr CodeName kMetadataSetTitles[] = {
    {3, "  Picture metadata set"}, {4, "  Sound metadata set"},   {5, "  Data metadata set"},
    {6, "  Data metadata set"},    {7, "  Control metadata set"},
};

constexpr CodeName kEssenceContainers[] = {
    {4, "   MPEG - ES"},
    {7, "   MPEG - PES"},
    {8, "   MPEG - PS"},
    {9, "   MPEG - TS"},
    {15, "   AVC NABL unit stream"},
    {16, "   AVC byte stream"},
};
constexpr CodeName kCpPictures[] = {
    {1, "   D10 - 50Mbps, 625/50"}, {2, "   D10 - 50Mbps, 525/60"}, {3, "   D10 - 40Mbps, 625/50"},
    {4, "   D10 - 40Mbps, 525/60"}, {5, "   D10 - 30Mbps, 625/50"}, {6, "   D10 - 30Mbps, 525/60"},
};
constexpr CodeName kCpSounds[] = {{16, "   8Channel AES Audio - SMPTE331"}};
constexpr CodeName kLineWrappedSystems[] = {
    {1, "   Uncompressed picture Line wrapped system scheme - SMPTE384"},
};
constexpr CodeName kLineWrappedStarts[] = {
    {1, "    Start of Stored Data - SMPTE384"},
    {2, "    Start of Line - SMPTE384"},
};
constexpr CodeName kGcPictures[] = {
    {1, "   D11 - SMPTE367"},
    {2, "   Uncompressed - Frame Wrapped Picture Element - SMPTE384"},
    {3, "   Uncompressed - Clip Wrapped Picture Element - SMPTE384"},
    {4, "   Uncompressed - Line Wrapped Picture Element - SMPTE384"},
    {5, "   MPEG - Frame Wrapped Picture Element - SMPTE381"},
    {6, "   MPEG - Clip Wrapped Picture Element - SMPTE381"},
    {7, "   MPEG - Custom Wrapped Picture Element - SMPTE381"},
    {8, "   Frame-wrapped JPEG 2000 Picture Element - SMPTE422"},
    {9, "   Clip-wrapped JPEG 2000 Picture Element - SMPTE422"},
};
constexpr CodeName kGcSounds[] = {
    {1, "   Wave - Frame-Wrapped Element - SMPTE382"},
    {2, "   Wave - Clip-Wrapped Element - SMPTE382"},
    {3, "   AES - Frame-Wrapped Element - SMPTE382"},
    {4, "   AES - Clip-Wrapped Element - SMPTE382"},
    {5, "   MPEG - Frame Wrapped Picture Element - SMPTE381"},
    {6, "   MPEG - Clip Wrapped Picture Element - SMPTE381"},
    {7, "   MPEG - Custom Wrapped Picture Element - SMPTE381"},
    {8, "   A-law - Frame-wrapped Sound Element - SMPTE388"},
    {9, "   A-law - Clip-wrapped Sound Element - SMPTE388"},
    {10, "   A-law - Custom-wrapped Sound Element - SMPTE388"},
    {11, "   Wave - Custom-Wrapped Element - SMPTE382"},
    {12, "   AES - Custom-Wrapped Element - SMPTE382"},
};
constexpr CodeName kGcDatas[] = {
    {5, "   MPEG - Frame Wrapped Picture Element - SMPTE381"},
    {6, "   MPEG - Clip Wrapped Picture Element - SMPTE381"},
    {7, "   MPEG - Custom Wrapped Picture Element - SMPTE381"},
    {8, "   Uncompressed - Line Wrapped Data Element - SMPTE384"},
    {9, "   Uncompressed - Line Wrapped VANC Data Element - SMPTE384"},
    {10, "   Uncompressed - Line Wrapped HANC Data Element - SMPTE384"},
};
constexpr CodeName kGcCompounds[] = {
    {1, "   DV - Frame Wrapped - SMPTE383"},
    {2, "   DV - Clip Wrapped - SMPTE383"},
};

// An item type: its title, the key byte that selects the element line, the lines, and what an unlisted byte
// reports. No error text: there are no element lines.
struct ItemType {
    uint32_t code;
    const char *title;
    uint64_t element_byte;
    Names elements;
    const char *error;
};
constexpr ItemType kItemTypes[] = {
    {0x00, "  DataFormatUndefined", 0, {}, nullptr},
    {0x02, "  Essence Container", 13, {kEssenceContainers, nullptr}, "mxf_generic_data - essence container"},
    {0x05, "  CP Picture", 14, {kCpPictures, nullptr}, "mxf_generic_data"},
    {0x06, "  CP Sound", 14, {kCpSounds, nullptr}, "mxf_generic_data"},
    {0x07, "  CP Data", 0, {}, nullptr},
    {kGcSystem, "  GC System Item", 13, {kLineWrappedSystems, nullptr}, "mxf_generic_data"},
    {kGcPicture, "  GC Picture", 14, {kGcPictures, nullptr}, "mxf_generic_data - gc picture"},
    {0x16, "  GC Sound", 14, {kGcSounds, nullptr}, "mxf_generic_data - gc sound"},
    {0x17, "  GC Data", 14, {kGcDatas, nullptr}, "mxf_generic_data - gc data"},
    {0x18, "  GC Compound", 14, {kGcCompounds, nullptr}, "mxf_generic_data - gc compound - dv"},
};

// Prints the line of an element; false after the error of one that has none.
bool print_element(DumpOptions &opts, Bytes buffer, uint64_t offset, Names lines, uint32_t code,
                   const char *error) {
    const char *line = lines[code];
    if (line) {
        print("%s\n", own(line));
    } else {
        mxferror(opts, buffer, offset, "%s", error);
    }
    return line;
}

void print_bitmap(uint8_t bitmap) {
    constexpr const char *kWords[] = {"Label ", "CreationTime ", "UserTime ", "Video ",
                                      "Audio ", "Aux ",          "Control "};
    print("   Bitmap         %02x ", bitmap);
    for (unsigned i = 0; i < std::size(kWords); i++) {
        if (bitmap & 0x40U >> i) print("%s", kWords[i]);
    }
    print("\n");
}

// A date and time stamp of the system item: an element, or zeros where the bitmap says that there is none.
uint32_t print_stamp(DumpOptions &opts, Bytes buffer, uint64_t offset, bool present) {
    return present ? mxf_print_smpte326(opts, buffer, offset) : mxf_check_for_zero(opts, buffer, offset, 17);
}

// System item of a content package (SMPTE 326M, 385M).
void print_content_package(DumpOptions &opts, Bytes buffer, uint64_t start) {
    const Bytes value = buffer.from(start);
    const uint8_t bitmap = value[0];
    print("  Content Package System Item\n");
    print_bitmap(bitmap);
    print("   Framerate      %1.2f\n", smpte326_cpp_rate(opts, buffer, start + 1));
    print("   CPT            %02x\n", value[2]);
    print("   Channel Handle %02x\n", mxfuint16(value.from(3)));
    print("   Continty Count %04x\n", mxfuint16(value.from(5)));
    if (bitmap & 0x40) {
        mxf_print_rp210data(opts, buffer, start + 7, 16, ValueKind::universal_label);
    } else {
        mxf_check_for_zero(opts, buffer, start + 7, 16);
    }
    const uint64_t creation = start + 23;
    const uint64_t user = creation + print_stamp(opts, buffer, creation, bitmap & 0x20);
    print_stamp(opts, buffer, user, bitmap & 0x10);
}

void print_system_metadata(DumpOptions &opts, Bytes buffer, uint64_t offset, uint64_t start) {
    print("  System metadata pack\n");
    switch (buffer[offset + 12]) {
        case 0x02: print("  Essence container kind\n"); break;
        case 0x04: print_content_package(opts, buffer, start); break;
        case kGcSystem: print("  Generic Container System Item\n"); break;
        default: mxferror(opts, buffer, offset, "mxf_generic_container, wrong type");
    }
}

// Text whose blanks at the ends of lines vanish; lines after the first begin with two blanks.
void print_document(Bytes text) {
    LineBuffer out;
    size_t blanks = 0;
    out.literal("  ");
    for (uint64_t i = 0; i < text.size(); i++) {
        const char c = static_cast<char>(text[i]);
        if (c == ' ') {
            blanks++;
            continue;
        }
        if (c == '\n') {
            out.text("\n  ");
        } else {
            out.fill(' ', blanks);
            out.put(c);
        }
        blanks = 0;
    }
    out.end_line();
}

}  // namespace

uint64_t mxf_generic_container(DumpOptions &opts, uint64_t file_position, Bytes buffer, uint64_t offset,
                               const char *name) {
    print("%s\n", name);
    const ItemValue item = print_length_line(opts, file_position, buffer, offset);
    if (item.length == 0) return item.end() - offset;
    const uint32_t element = buffer[offset + 14];
    if (element == 1) {
        print_system_metadata(opts, buffer, offset, item.start);
    } else if (element == 2) {
        print("  Package metadata set\n");
        mxf_print_smpte326(opts, buffer, item.start);
    } else if (const char *title = name_of(kMetadataSetTitles, element, nullptr)) {
        print("%s\n", own(title));
    } else {
        mxferror(opts, buffer, offset, "mxf_generic_container, wrong type");
    }
    return item.end() - offset;
}

uint64_t mxf_generic_data(DumpOptions &opts, uint64_t file_position, Bytes buffer, uint64_t offset,
                          const char *name) {
    print("%s\n", name);
    const ItemValue item = print_length_line(opts, file_position, buffer, offset);
    if (item.length == 0) return item.end() - offset;
    const uint32_t code = buffer[offset + 12];
    const ItemType *type = row_of(kItemTypes, code, &ItemType::code);
    if (!type) {
        mxferror(opts, buffer, offset, "mxf_generic_data");
        return item.end() - offset;
    }
    print("%s\n", own(type->title));
    if (!type->error) return item.end() - offset;
    const uint32_t element = buffer[offset + type->element_byte];
    const bool known = print_element(opts, buffer, offset, type->elements, element, type->error);
    if (known && code == kGcSystem) {
        print_element(opts, buffer, offset, {kLineWrappedStarts, nullptr}, buffer[offset + 15], type->error);
    }
    if (code == kGcPicture && element == kFrameWrappedJpeg2000 && opts.save_frames) {
        save_jpeg2000_frame(opts, item.in(buffer));
    }
    return item.end() - offset;
}

uint64_t mxf_xml_data(DumpOptions &opts, uint64_t file_position, Bytes buffer, uint64_t offset,
                      const char *) {
    constexpr int64_t kMaxText = 16384;
    print("XML Document Text\n");
    ItemValue item = read_item_length(opts, buffer, offset);
    item.length = std::min(item.length, kMaxText);
    print_length_line(opts, file_position, item, " Length             ");
    print_document(item.in(buffer));
    return item.end() - offset;
}

uint64_t mxf_generic_unknown(DumpOptions &opts, uint64_t, Bytes buffer, uint64_t offset, const char *) {
    constexpr int64_t kMaxDump = 256;
    const ItemValue item = read_item_length(opts, buffer, offset);
    print("\n");
    mxfhexdump(buffer, offset, static_cast<uint64_t>(std::clamp<int64_t>(item.length, 0, kMaxDump)));
    return item.end() - offset;
}
