// Map packets: what material and tracks the file holds, as sections of tagged values.
#include <algorithm>

#include "common/names.h"
#include "common/print.h"
#include "gxf/packets.h"
#include "gxf/values.h"

namespace {

constexpr CodeName kFrameRates[] = {
    {static_cast<uint32_t>(-2), "NotAvailable"},
    {static_cast<uint32_t>(-1), "NotApplicable"},
    {1, "60"},
    {2, "59.94"},
    {3, "40"},
    {4, "30"},
    {5, "29.97"},
    {6, "25"},
    {7, "24"},
    {8, "23.98"},
};

constexpr CodeName kLinesPerFrame[] = {
    {static_cast<uint32_t>(-2), "NotAvailable"},
    {static_cast<uint32_t>(-1), "NotApplicable"},
    {1, "525"},
    {2, "625"},
    {4, "1080"},
    {6, "720"},
};

const char *gxfframerate(uint32_t code) { return name_of(kFrameRates, code, "?"); }
const char *gxflinesperframe(uint32_t code) { return name_of(kLinesPerFrame, code, "?"); }

enum class Value { number, long_number, long_hex, kib, text, frame_rate, lines };

struct MapTag {
    uint8_t tag;
    Value value;
    const char *label;
};

// clang-format off
constexpr MapTag kMapTags[] = {
    {0x40, Value::text, "filename   "},
    {0x41, Value::number, "firstfield "},
    {0x42, Value::number, "lastfield  "},
    {0x43, Value::number, "markin     "},
    {0x44, Value::number, "markout    "},
    {0x45, Value::kib, "filesize   "},
    {0x46, Value::number, "reserved   "},
    {0x47, Value::long_number, "reserved   "},
    {0x4C, Value::text, "filename   "},
    {0x4D, Value::long_hex, "auxinfo    "},
    {0x4E, Value::number, "version    "},
    {0x4F, Value::text, "mpeginfo   "},
    {0x50, Value::frame_rate, "framerate  "},
    {0x51, Value::lines, "lines      "},
    {0x52, Value::number, "fields     "},
};
// clang-format on

void print_value(const MapTag &row, Bytes value, unsigned length) {
    const uint32_t word = gxfuint32(value, 0, false);
    const int32_t number = gxfint32(value, 0, false);
    const unsigned long long long_word = gxfint64(value, 0);
    print("%s", row.label);
    switch (row.value) {
        case Value::number: print("%d\n", number); break;
        case Value::long_number: print("%lld\n", static_cast<long long>(long_word)); break;
        case Value::long_hex: print("%16llx\n", long_word); break;
        case Value::kib: print("%lld\n", static_cast<long long>(word) * 1024); break;
        case Value::text: print("'%s'\n", gxfstring(value, 0, length)); break;
        case Value::frame_rate: print("%d %s\n", number, gxfframerate(word)); break;
        case Value::lines: print("%d %s\n", number, gxflinesperframe(word)); break;
    }
}

// The tags of a section of the given length at the start of `bytes`, which reach to the end of the payload.
// A section of length 0 still has one tag; a value may be shorter than what its tag shows of it.
void gxfmaptags(int indent, Bytes bytes, uint64_t length) {
    uint64_t position = 0;
    do {
        if (!bytes.has(position, 2)) return;
        const uint8_t tag = bytes[position];
        const uint8_t size = bytes[position + 1];
        print("%*sTag 0x%02x% 4d ", indent, "", tag, size);
        const auto row = std::ranges::find(kMapTags, tag, &MapTag::tag);
        if (row != std::end(kMapTags)) {
            print_value(*row, bytes.from(position + 2), size);
        } else {
            print("\n");
        }
        position += uint64_t{2} + size;
    } while (position < length);
}

void print_tracks(Bytes payload, uint64_t start, uint64_t length) {
    for (uint64_t offset = start; offset < start + length && payload.has(offset, 4);) {
        const int32_t type = payload[offset] - 0x80;
        const uint16_t section = gxfint16(payload, offset + 2, false);
        print("  mediatype %d %s\n", type, gxftracktype(type));
        print("  trackid   %d\n", payload[offset + 1] - 0xC0);
        print("  length    %d\n", section);
        gxfmaptags(3, payload.from(offset + 4), section);
        offset += uint64_t{4} + section;
    }
}

}  // namespace

void gxfmap(Bytes rest, int64_t size) {
    Bytes payload;
    if (!payload_of(rest, size, payload)) {
        print("gxfmap: fread error\n");
        return;
    }
    print(" Version %d\n", payload[0] & 0x1F);
    if ((payload[0] & 0xE0) != 0xE0) print("gxfmap: Error @ 0\n");
    if (payload.size() <= 4) return;

    const uint64_t material = gxfint16(payload, 2, false);
    print(" sectionlength %d\n", static_cast<int>(material));
    gxfmaptags(2, payload.from(4), material);
    if (!payload.has(material + 4, 2)) return;
    const uint64_t tracks = gxfint16(payload, material + 4, false);
    print(" sectionlength %d\n", static_cast<int>(tracks));
    print_tracks(payload, material + 6, tracks);
}
