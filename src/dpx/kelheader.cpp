#include "dpx/kelheader.h"

#include <algorithm>
#include <cstdint>

#include "common/field_rows.h"
#include "common/hexrow.h"
#include "common/print.h"
#include "common/stream.h"
#include "dpx/rp215.h"

namespace {

constexpr uint32_t kMagic = 0xFEEDF00D;
constexpr uint64_t kMaxHeader = 1024;
constexpr uint32_t kMaxDataBytes = 255;  // an item's length is one byte

// An item's tag: the data length in bytes in its top byte and, from its lowest byte up, the three characters
// that name the item.
constexpr uint32_t tag(const char (&name)[4], uint32_t length) {
    uint32_t word = length << 24;
    for (unsigned i = 0; i < 3; i++) word |= static_cast<uint32_t>(name[i]) << (8 * i);
    return word;
}

constexpr uint32_t kNameMask = 0x00FFFFFF;
constexpr uint32_t kFilmData = tag("215", 216);  // RP 215 data of the usual size
constexpr uint32_t kFilmDataLength = 215;
constexpr uint32_t kFilmDataName = tag("215", 0);
constexpr uint32_t kOtherFilmDataName = tag("216", 0);
constexpr uint32_t kFirstField = tag("ANF", 0);   // packets of field 1 follow
constexpr uint32_t kSecondField = tag("ANG", 0);  // packets of field 2 follow

// Items that are printed word by word. What follows a tag counts from its first data word.
// clang-format off
constexpr TaggedRow kItems[] = {
    {tag("VTC", 4), {0, Field::hex32, " vitc_tc          : "}},
    {tag("VTU", 4), {0, Field::hex32, " vitc_ub          : "}},
    {tag("VTD", 4), {0, Field::hex32, " vitc_tc2         : "}},
    {tag("VTV", 4), {0, Field::hex32, " vitc_ub2         : "}},
    {tag("VTL", 4), {0, Field::lines, " vitc_line        : "}},
    {tag("VTM", 4), {0, Field::lines, " vitc_line2       : "}},
    {tag("LTC", 4), {0, Field::hex32, " ltc_tc           : "}},
    {tag("LTU", 4), {0, Field::hex32, " ltc_ub           : "}},
    {tag("VRC", 4), {0, Field::hex32, " vtr_tc           : "}},
    {tag("VRU", 4), {0, Field::hex32, " vtr_ub           : "}},
    {tag("VRI", 4), {0, Field::hex32, " vtrinfo1         : "}},
    {tag("VRI", 8), {0, Field::hex32, " vtrinfo1         : "}},
    {tag("VRI", 8), {4, Field::hex32, " vtrinfo2         : "}},
    {tag("VRI", 12), {0, Field::hex32, " vtrinfo1         : "}},
    {tag("VRI", 12), {4, Field::hex32, " vtrinfo2         : "}},
    {tag("VRI", 12), {8, Field::hex32, " vtrinfo3         : "}},
    {tag("VRT", 4), {0, Field::hex32, " vtrtick          : "}},
    {tag("VRH", 4), {0, Field::hex32, " vtrtick_high     : "}},
    {tag("GPI", 4), {0, Field::hex32, " gpi              : "}},
    {tag("EYE", 4), {0, Field::dec32, " eyemode          : "}},
    {tag("FLD", 8), {0, Field::hex32, " film_tc          : "}},
    {tag("FLD", 8), {4, Field::hex32, " film_ub          : "}},
    {tag("FLE", 8), {0, Field::hex32, " film_tc2         : "}},
    {tag("FLE", 8), {4, Field::hex32, " film_ub2         : "}},
    {tag("FLP", 8), {0, Field::hex32, " prod_tc          : "}},
    {tag("FLP", 8), {4, Field::hex32, " prod_ub          : "}},
    {tag("FLQ", 8), {0, Field::hex32, " prod_tc2         : "}},
    {tag("FLQ", 8), {4, Field::hex32, " prod_ub2         : "}},
    {tag("AFD", 8), {0, Field::hex32, " afilm_tc          : "}},
    {tag("AFD", 8), {4, Field::hex32, " afilm_ub          : "}},
    {tag("AFE", 8), {0, Field::hex32, " afilm_tc2         : "}},
    {tag("AFE", 8), {4, Field::hex32, " afilm_ub2         : "}},
    {tag("AFP", 8), {0, Field::hex32, " aprod_tc          : "}},
    {tag("AFP", 8), {4, Field::hex32, " aprod_ub          : "}},
    {tag("AFQ", 8), {0, Field::hex32, " aprod_tc2         : "}},
    {tag("AFQ", 8), {4, Field::hex32, " aprod_ub2         : "}},
    {tag("DLT", 8), {0, Field::hex32, " dltc_tc          : "}},
    {tag("DLT", 8), {4, Field::hex32, " dltc_ub          : "}},
    {tag("DVT", 8), {0, Field::hex32, " dvitc_tc         : "}},
    {tag("DVT", 8), {4, Field::hex32, " dvitc_ub         : "}},
    {tag("DVU", 8), {0, Field::hex32, " dvitc_tc2        : "}},
    {tag("DVU", 8), {4, Field::hex32, " dvitc_ub2        : "}},
    {tag("HSH", 16), {0, Field::hex32, " hash             : "}},
    {tag("HSH", 16), {4, Field::hex32, " hash             : "}},
    {tag("HSH", 16), {8, Field::hex32, " hash             : "}},
    {tag("HSH", 16), {12, Field::hex32, " hash             : "}},
};
// clang-format on
constexpr uint32_t kPassedOver[] = {tag("TCH", 4), tag("TCK", 4), tag("CPU", 8), tag("VRX", 20)};

// Byte-oriented data, most significant byte of each word first.
struct Block {
    uint8_t bytes[kMaxDataBytes + 1];
    uint64_t size;

    explicit Block(OrderedBytes data) : size(data.bytes.size()) {
        for (uint64_t i = 0; i < size; i++) bytes[i] = data.u8(data.is_big() ? i : i ^ 3);
    }
    Copied keep_place(OrderedBytes data) const {
        return {Bytes(bytes, size), data.bytes.file_range(), data.is_big() ? 0U : 3U};
    }
    Bytes view(uint32_t length) const { return Bytes(bytes, std::min<uint64_t>(size, length)); }
};

// The rows of an item as far as the header holds it; false for an unknown one.
bool print_item(uint32_t tag, OrderedBytes data) {
    bool known = std::ranges::find(kPassedOver, tag) != std::end(kPassedOver);
    for (const TaggedRow &item : kItems) {
        if (item.tag != tag) continue;
        known = true;
        if (data.bytes.has(item.row.offset, 4)) print_field_row(data, item.row);
    }
    return known;
}

void print_film_data(const char *title, OrderedBytes data, uint32_t length) {
    print("%s\n", own(title));
    const Block block(data);
    const Copied copied = block.keep_place(data);
    rp215_dump(block.view(length), length, 0);
}

// A captured ancillary-data packet, whose tag holds its line, kind and identification.
void print_ancillary_packet(Bytes tag_word, uint32_t tag, int field, OrderedBytes data) {
    const uint32_t length = tag >> 24;
    from(tag_word);
    print(" ancpacket %d %d %s did:%02x sdid:%02x size:%d\n", field, tag & 0x3F, tag & 0x40 ? "VANC" : "HANC",
          tag >> 8 & 0xFF, tag >> 16 & 0xFF, length);
    const Block block(data);
    const Copied copied = block.keep_place(data);
    LineBuffer out;
    put_hexrows(out, block.view(length), {}, [](LineBuffer &line, uint64_t i) {
        line.literal("  ");
        line.hex(i, 2);
        line.literal(": ");
    });
}

}  // namespace

void kelheaderdump(Bytes header, KelHeaderRecord *, int print_items) {
    const Bytes held = header.sub(0, std::min(header.size(), kMaxHeader) & ~uint64_t{3});
    const OrderedBytes words = little32(held) == kMagic ? little_endian(held) : big_endian(held);
    if (words.u32(0) != kMagic || !print_items) return;
    print("kelheader\n");

    int field = 0;
    for (uint64_t at = 4; at < held.size();) {
        const Bytes tag_word = held.sub(at, 4);
        const uint32_t item = words.u32(at);
        if (item == 0) return;
        at += 4;
        const uint32_t length = item >> 24;
        const uint64_t size = (uint64_t{length} + 3) & ~uint64_t{3};
        const OrderedBytes data = words.sub(at, size);
        if (item == kFirstField) {
            field = 1;
        } else if (item == kSecondField) {
            field = 2;
        } else if (item == kFilmData) {
            print_film_data(" rp215", data, kFilmDataLength);
        } else if ((item & kNameMask) == kFilmDataName || (item & kNameMask) == kOtherFilmDataName) {
            print_film_data(" rp215a", data, length);
        } else if (!print_item(item, data)) {
            if (item & 0x80) {
                print_ancillary_packet(tag_word, item, field, data);
            } else {
                from(tag_word);
                behind_position(1);
                print("kelheaderdump: Unknown %08x/%c%c%c\n", item, static_cast<char>(item),
                      static_cast<char>(item >> 8), static_cast<char>(item >> 16));
            }
        }
        at += size;
    }
}
