// Map packets: what material and tracks the file holds, as sections of tagged values.
#include "common/field_rows.h"
#include "common/print.h"
#include "common/stream.h"
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

// What follows a tag and the value's length.
// clang-format off
constexpr TaggedRow kMapTags[] = {
    {0x40, {0, Field::printable_text, "filename   "}},
    {0x41, {0, Field::dec32, "firstfield "}},
    {0x42, {0, Field::dec32, "lastfield  "}},
    {0x43, {0, Field::dec32, "markin     "}},
    {0x44, {0, Field::dec32, "markout    "}},
    {0x45, {0, Field::kib32, "filesize   "}},
    {0x46, {0, Field::dec32, "reserved   "}},
    {0x47, {0, Field::dec64, "reserved   "}},
    {0x4C, {0, Field::printable_text, "filename   "}},
    {0x4D, {0, Field::blank_hex64, "auxinfo    "}},
    {0x4E, {0, Field::dec32, "version    "}},
    {0x4F, {0, Field::printable_text, "mpeginfo   "}},
    {0x50, {0, Field::dec32, "framerate  ", {kFrameRates, "?"}}},
    {0x51, {0, Field::dec32, "lines      ", {kLinesPerFrame, "?"}}},
    {0x52, {0, Field::dec32, "fields     "}},
};
// clang-format on

// The tags of a section of the given length at the start of `bytes`, which reach to the end of the payload.
// A section of length 0 still has one tag; a value may be shorter than what its tag shows of it.
void gxfmaptags(int indent, Bytes bytes, uint64_t length) {
    uint64_t position = 0;
    do {
        if (!bytes.has(position, 2)) return;
        const uint8_t tag = bytes[position];
        const uint8_t size = bytes[position + 1];
        also(bytes, position, 2);
        print("%*sTag 0x%02x% 4d ", indent, "", tag, size);
        if (const TaggedRow *known = row_of(kMapTags, tag, &TaggedRow::tag)) {
            FieldRow row = known->row;
            if (row.kind == Field::printable_text) row.count = size;
            label_begins();
            print_field_row(big_endian(bytes.from(position + 2)), row);
        } else {
            print("\n");
        }
        position += uint64_t{2} + size;
    } while (position < length);
}

void print_tracks(Bytes payload, uint64_t start, uint64_t length) {
    for (uint64_t offset = start; offset < start + length && payload.has(offset, 4);) {
        const uint16_t section = gxfint16(payload, offset + 2, false);
        forget();
        const int32_t type = payload[offset] - 0x80;
        print("  mediatype %d %s\n", type, gxftracktype(type));
        print("  trackid   %d\n", payload[offset + 1] - 0xC0);
        print_field_row(big_endian(payload.from(offset)), {2, Field::dec16, "  length    "});
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
    const uint8_t version = payload[0];
    print(" Version %d\n", version & 0x1F);
    if ((version & 0xE0) != 0xE0) {
        aside();
        also(payload, 0, 1);
        print("gxfmap: Error @ 0\n");
    }
    if (payload.size() <= 4) return;

    const uint64_t material = gxfint16(payload, 2, false);
    print(" sectionlength %d\n", static_cast<int>(material));
    gxfmaptags(2, payload.from(4), material);
    if (!payload.has(material + 4, 2)) return;
    const uint64_t tracks = gxfint16(payload, material + 4, false);
    print(" sectionlength %d\n", static_cast<int>(tracks));
    print_tracks(payload, material + 6, tracks);
}
