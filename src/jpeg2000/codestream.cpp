// The walk over the markers of a codestream, with the checks of their places.
#include "jpeg2000/codestream.h"

#include <algorithm>
#include <cstdio>

#include "common/field_rows.h"
#include "common/print.h"
#include "common/run.h"
#include "jpeg2000/hexdump.h"
#include "jpeg2000/jpeg2000.h"

namespace {

// Places in the codestream, as bits so that a marker's allowed places are a mask.
constexpr uint32_t kBeforeStart = 0;
constexpr uint32_t kMainHeader = 1;
constexpr uint32_t kTilePartHeader = 2;
constexpr uint32_t kTileData = 4;
constexpr uint32_t kAfterEnd = 8;
constexpr uint32_t kAnyHeader = kMainHeader | kTilePartHeader;

constexpr uint64_t kMarkerSize = 2;
constexpr uint64_t kSegmentHead = 4;  // marker and size
constexpr uint64_t kPrefixSize = 16;
constexpr uint64_t kSearchLimit = 16 * 1024 * 1024;  // of the search for a tile-part's start

struct Marker {
    uint32_t code;
    const char *title;    // between the offset and the size
    const char *rest;     // behind the size
    uint32_t allowed;     // places; 0: anywhere (SOT: see check_marker)
    const char *failure;  // name in the message
};

// Segments whose line is "%08x: NAME/%d - text".
constexpr Marker kMarkers[] = {
    {0x51, "SIZ", "Image and Size", kMainHeader, "SIZ"},
    {0x52, "COD", "Coding style default", kAnyHeader, "COD"},
    {0x53, "COC", "Coding style component", kAnyHeader, "COC"},
    {0x55, "TLM", "tilepart length - main header", kMainHeader, "TLM"},
    {0x57, "PLM", "packet length - main header", 0, nullptr},
    {0x58, "PLT", "packet length - tile part header", kTilePartHeader, "PLT"},
    {0x5C, "QCD", "Quantization default", kAnyHeader, "QCD"},
    {0x5D, "QCC", "Quantization component", kAnyHeader, "QCC"},
    {0x5E, "RGB", "Region of interest", kAnyHeader, "RGN"},
    {0x5F, "POC", "Progression order change", kAnyHeader, "POC"},
    {0x60, "PPM", "packed packet header - main header", kMainHeader, "PPM"},
    {0x61, "PPT", "packed packet header - tile part header", kTilePartHeader, "PPT"},
    {0x64, "CME", "Comment and extension", kAnyHeader, "CME"},
    {0x90, "SOT", "Start of tile-part", 0, "SOT"},
};

// clang-format off
constexpr FieldRow kSotRows[] = {
    {4, Field::dec16, " tile "},
    {6, Field::dec32, " over all length "},
};
// clang-format on

void check_place(uint32_t allowed, const char *name) {
    if (codestream().cs_state & allowed) return;
    forget();
    print(" - failure !!! %s marker is not allowed at this position\n", own(name));
}

// Begins the line of the first n bytes of a marker or its segment.
void print_position(Bytes buf, uint64_t offset, uint64_t n) {
    from(buf, offset, n);
    print("%08x: ", static_cast<uint32_t>(offset));
    behind_position();
}

bool is_valid_code(uint32_t code) {
    return (code >= 0x4F && code <= 0x6F) || code == 0x79 || (code >= 0x90 && code <= 0x93) ||
           code == kEndOfCodestream;
}

void print_sot(const Segment &s) {
    print_field_rows(big_endian(s.buf.from(s.offset)), kSotRows);
    print(" tilepart %d of %d tileparts\n", s.u8(10) + 1, s.u8(11));
}

void print_fields(uint32_t code, const Segment &segment) {
    switch (code) {
        case 0x51: print_siz(codestream(), segment); break;
        case 0x52: print_cod(codestream(), segment); break;
        case 0x53: print_coc(codestream(), segment); break;
        case 0x55: print_tlm(segment); break;
        case 0x5C: print_qcd(segment); break;
        case 0x5D: print_qcc(codestream(), segment); break;
        case 0x5F: print_poc(codestream(), segment); break;
        case 0x64: print_cme(segment); break;
        case 0x90: print_sot(segment); break;
        default: break;
    }
}

// These say where they may not stand before their fields.
bool is_checked_first(uint32_t code) { return code == 0x5C || code == 0x5D || code == 0x5F; }

void check_marker(const Marker &marker) {
    if (marker.code == 0x90) {
        if (codestream().cs_state == kTilePartHeader) check_place(0, marker.failure);
    } else if (marker.allowed) {
        check_place(marker.allowed, marker.failure);
    }
}

void print_segment(const Marker &marker, const Segment &segment) {
    print_position(segment.buf, segment.offset, kSegmentHead);
    print("%s/%d - %s\n", own(marker.title), static_cast<int>(segment.size), own(marker.rest));
    if (is_checked_first(marker.code)) check_marker(marker);
    print_fields(marker.code, segment);
    if (!is_checked_first(marker.code)) check_marker(marker);
    if (marker.code == 0x90) {
        codestream().cs_state = kTilePartHeader;
        codestream().nearest_sot = {segment.offset, segment.offset};
    }
    jp2_hexdump(segment.buf, segment.offset, segment.size);
}

// Offset of the SOT marker nearest before an offset, from 1 on; 0 for none. The bytes FF 90 count wherever
// they stand; of what was not yet searched, the last 16 MiB are.
uint64_t find_sot(Bytes buf, uint64_t offset) {
    const uint64_t reach = offset > kSearchLimit ? offset - kSearchLimit : 0;
    const uint64_t lowest = std::max(codestream().nearest_sot.searched_to, reach);
    for (uint64_t t = offset; t > lowest; t--) {
        if (buf[t] != 0xFF || buf[t + 1] != 0x90) continue;
        codestream().nearest_sot.offset = t;
        break;
    }
    forget();
    codestream().nearest_sot.searched_to = offset;
    return codestream().nearest_sot.offset;
}

// Bytes from the SOD marker to the end of its tile-part, through `end` where no SOT marker says where that
// is.
uint64_t tile_part_rest(Bytes buf, uint64_t offset, uint64_t end) {
    const uint64_t sot = find_sot(buf, offset);
    if (sot == 0) {
        behind_position(1);
        print("found no SOT before the SOD marker\n");
        return end;
    }
    const uint64_t tile_part = jp2_getint32(buf, sot + 6);
    if (tile_part == 0) {
        print(" - End of tile undefined\n");
        return end > offset + kMarkerSize ? end - offset - kMarkerSize : 0;
    }
    // A tile-part that ends before its data leads back. Over markers that would go on for ever.
    const uint64_t next = sot + tile_part;
    return next < offset && buf[next] == 0xFF ? end : next - offset;
}

uint64_t print_sod(Bytes buf, uint64_t offset, uint64_t end) {
    print_position(buf, offset, kMarkerSize);
    print("SOD/%d - Start of data\n", static_cast<int>(kMarkerSize));
    const uint64_t size = tile_part_rest(buf, offset, end);
    if (offset == 0) return end;
    check_place(kTilePartHeader, "SOD");
    codestream().cs_state = kTileData;
    return size;
}

// Markers without a segment, or without its fields.
uint64_t print_delimiter(Bytes buf, uint64_t offset, uint32_t code, uint64_t size) {
    switch (code) {
        case 0x4F:
            print_position(buf, offset, kMarkerSize);
            print("SOC/%d - Start of codestream\n", static_cast<int>(kMarkerSize));
            if (codestream().cs_state != kBeforeStart) {
                print(" - failure !!! This marker is mot allowed in this Position !!!\n");
            }
            codestream().cs_state = kMainHeader;
            return kMarkerSize;
        case 0x91:
            // The line shows the size and the packet's number.
            from(buf, offset, 6);
            print("%08x: ", static_cast<uint32_t>(size));
            label_begins();
            print("SOP/%d - start of packet header \n", jp2_getint16(buf, offset + 4) + 1);
            check_place(kTileData, "SOP");
            return size;
        case 0x92:
            print_position(buf, offset, kMarkerSize);
            print("EPH/%d - end of packet header\n", static_cast<int>(kMarkerSize));
            check_place(kTileData, "EPH");
            return kMarkerSize;
        default:
            print_position(buf, offset, kMarkerSize);
            print("EOC/%d - End of codestream\n", static_cast<int>(kMarkerSize));
            if (codestream().cs_state != kTileData) check_place(0, "EOC");
            codestream().cs_state = kAfterEnd;
            return kMarkerSize;
    }
}

}  // namespace

CodestreamState &codestream() { return Run::state<CodestreamState>(); }

uint64_t jp2ffentry(Bytes buf, uint64_t offset, int, uint64_t end) {
    const uint32_t code = buf[offset + 1];
    if (buf[offset] != 0xFF) {
        print_position(buf, offset, 1);
        print("Expected 0xff, got %02x\n", buf[offset]);
        return end;
    }
    if (!is_valid_code(code)) {
        print_position(buf, offset, kMarkerSize);
        print("invalid marker code %02x\n", code);
        return end;
    }
    const uint64_t size = kMarkerSize + jp2_getint16(buf, offset + 2);
    if (code == 0x93) return print_sod(buf, offset, end);
    if (code == 0x4F || code == 0x91 || code == 0x92 || code == kEndOfCodestream) {
        return print_delimiter(buf, offset, code, size);
    }
    if (const Marker *marker = row_of(kMarkers, code, &Marker::code)) {
        print_segment(*marker, {buf, offset, size});
        return size;
    }
    print_position(buf, offset, kSegmentHead);
    if (code == 0x79) {
        print("??? / %d - \n", static_cast<int>(size));
    } else {
        print("%08x: 0xff%02x ", code, code);
        label_begins();
        print("Unknown marker /%d \n", static_cast<int>(size));
    }
    jp2_hexdump(buf, offset, size);
    return size;
}

void jpcdump(DumpOptions &, Input &input, int skip_prefix) {
    if (!check_buffer(input.size())) return;
    const Bytes buf = input.bytes();
    print("Fileformat: unwrapped JPEG2000 codestream \n");
    codestream().enter_file();
    codestream().enter_codestream();
    uint64_t p = skip_prefix ? kPrefixSize : 0;
    while (p < buf.size() && buf[p] == 0xFF) {
        const uint64_t size = jp2ffentry(buf, p, 0, buf.size());
        if (size == 0) break;
        p += size;
        if (buf[p] < 0xFF) {
            print_position(buf, p, 1);
            print("Expected to get 0xff, got %02x\n", buf[p]);
        } else if (buf[p + 1] == kEndOfCodestream) {
            print_position(buf, p, kMarkerSize);
            print("EOF/2 - End of file\n");
            break;
        }
    }
    if (p > buf.size()) print("ERROR during decoding\n");
}
