#include "dpx/kelheader.h"

#include <algorithm>
#include <cstdint>

#include "common/hexrow.h"
#include "common/ordered_bytes.h"
#include "common/print.h"
#include "dpx/rp215.h"

namespace {

constexpr uint32_t kMagic = 0xFEEDF00D;
constexpr uint32_t kHeaderWords = 256;
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

// Items that are printed word by word.
enum class Kind { hex, decimal, line };

struct Item {
    uint32_t tag;
    Kind kind;
    const char *labels[4];  // one a data word; none for items that are passed over
};

// clang-format off
constexpr Item kItems[] = {
    {tag("VTC", 4), Kind::hex, {" vitc_tc          : "}},
    {tag("VTU", 4), Kind::hex, {" vitc_ub          : "}},
    {tag("VTD", 4), Kind::hex, {" vitc_tc2         : "}},
    {tag("VTV", 4), Kind::hex, {" vitc_ub2         : "}},
    {tag("VTL", 4), Kind::line, {" vitc_line        : "}},
    {tag("VTM", 4), Kind::line, {" vitc_line2       : "}},
    {tag("LTC", 4), Kind::hex, {" ltc_tc           : "}},
    {tag("LTU", 4), Kind::hex, {" ltc_ub           : "}},
    {tag("VRC", 4), Kind::hex, {" vtr_tc           : "}},
    {tag("VRU", 4), Kind::hex, {" vtr_ub           : "}},
    {tag("VRI", 4), Kind::hex, {" vtrinfo1         : "}},
    {tag("VRI", 8), Kind::hex, {" vtrinfo1         : ", " vtrinfo2         : "}},
    {tag("VRI", 12), Kind::hex, {" vtrinfo1         : ", " vtrinfo2         : ", " vtrinfo3         : "}},
    {tag("VRT", 4), Kind::hex, {" vtrtick          : "}},
    {tag("VRH", 4), Kind::hex, {" vtrtick_high     : "}},
    {tag("GPI", 4), Kind::hex, {" gpi              : "}},
    {tag("EYE", 4), Kind::decimal, {" eyemode          : "}},
    {tag("FLD", 8), Kind::hex, {" film_tc          : ", " film_ub          : "}},
    {tag("FLE", 8), Kind::hex, {" film_tc2         : ", " film_ub2         : "}},
    {tag("FLP", 8), Kind::hex, {" prod_tc          : ", " prod_ub          : "}},
    {tag("FLQ", 8), Kind::hex, {" prod_tc2         : ", " prod_ub2         : "}},
    {tag("AFD", 8), Kind::hex, {" afilm_tc          : ", " afilm_ub          : "}},
    {tag("AFE", 8), Kind::hex, {" afilm_tc2         : ", " afilm_ub2         : "}},
    {tag("AFP", 8), Kind::hex, {" aprod_tc          : ", " aprod_ub          : "}},
    {tag("AFQ", 8), Kind::hex, {" aprod_tc2         : ", " aprod_ub2         : "}},
    {tag("DLT", 8), Kind::hex, {" dltc_tc          : ", " dltc_ub          : "}},
    {tag("DVT", 8), Kind::hex, {" dvitc_tc         : ", " dvitc_ub         : "}},
    {tag("DVU", 8), Kind::hex, {" dvitc_tc2        : ", " dvitc_ub2        : "}},
    {tag("HSH", 16), Kind::hex,
     {" hash             : ", " hash             : ", " hash             : ", " hash             : "}},
    {tag("TCH", 4), Kind::hex, {}},
    {tag("TCK", 4), Kind::hex, {}},
    {tag("CPU", 8), Kind::hex, {}},
    {tag("VRX", 20), Kind::hex, {}},
};
// clang-format on

// The words of the header in the byte order that its magic shows.
struct Words {
    OrderedBytes bytes;

    uint32_t operator[](uint32_t i) const { return bytes.u32(uint64_t{4} * i); }
};

// An item's data as far as the header holds it.
struct Data {
    const Words &words;
    uint32_t first;  // index of the first data word
    uint32_t count;  // data words inside the header

    uint32_t operator[](uint32_t i) const { return words[first + i]; }
};

// Byte-oriented data, most significant byte of each word first.
struct Block {
    uint8_t bytes[kMaxDataBytes + 1];
    uint32_t size;

    explicit Block(const Data &data) : size(4 * data.count) {
        for (uint32_t i = 0; i < size; i++)
            bytes[i] = static_cast<uint8_t>(data[i / 4] >> (24 - 8 * (i % 4)));
    }
    Bytes view(uint32_t length) const { return Bytes(bytes, std::min(size, length)); }
};

void print_word(Kind kind, const char *label, uint32_t word) {
    const int second_line = static_cast<int>(word >> 16 & 0xFF);
    switch (kind) {
        case Kind::hex: print("%s%08x\n", label, word); break;
        case Kind::decimal: print("%s%d\n", label, static_cast<int32_t>(word)); break;
        case Kind::line:
            print("%s%d", label, static_cast<int>(word & 0xFF));
            if (second_line) print("/%d", second_line);
            print("\n");
            break;
    }
}

bool print_item(uint32_t tag, const Data &data) {
    const auto *item =
        std::find_if(std::begin(kItems), std::end(kItems), [&](const Item &i) { return i.tag == tag; });
    if (item == std::end(kItems)) return false;
    for (uint32_t i = 0; i < data.count && i < std::size(item->labels) && item->labels[i]; i++) {
        print_word(item->kind, item->labels[i], data[i]);
    }
    return true;
}

void print_film_data(const char *title, const Data &data, uint32_t length) {
    print("%s\n", title);
    const Block block(data);
    rp215_dump(block.view(length), length, 0);
}

// A captured ancillary-data packet, whose tag holds its line, kind and identification.
void print_ancillary_packet(uint32_t tag, int field, const Data &data) {
    const uint32_t length = tag >> 24;
    print(" ancpacket %d %d %s did:%02x sdid:%02x size:%d\n", field, tag & 0x3F, tag & 0x40 ? "VANC" : "HANC",
          tag >> 8 & 0xFF, tag >> 16 & 0xFF, length);
    const Block block(data);
    LineBuffer out;
    put_hexrows(out, block.view(length), {}, [](LineBuffer &line, uint64_t i) {
        line.text("  ");
        line.hex(i, 2);
        line.text(": ");
    });
}

}  // namespace

void kelheaderdump(Bytes header, KelHeaderRecord *, int print_items) {
    const Words words{little32(header) == kMagic ? little_endian(header) : big_endian(header)};
    if (words[0] != kMagic || !print_items) return;
    print("kelheader\n");

    const uint32_t end = static_cast<uint32_t>(std::min<uint64_t>(header.size() / 4, kHeaderWords));
    int field = 0;
    for (uint32_t i = 1; i < end;) {
        const uint32_t item = words[i++];
        if (item == 0) return;
        const uint32_t length = item >> 24;
        const uint32_t count = (length + 3) / 4;
        const Data data{words, i, std::min(count, end - i)};
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
                print_ancillary_packet(item, field, data);
            } else {
                print("kelheaderdump: Unknown %08x/%c%c%c\n", item, static_cast<char>(item),
                      static_cast<char>(item >> 8), static_cast<char>(item >> 16));
            }
        }
        i += count;
    }
}
