// JP2 boxes (ISO/IEC 15444-1, annex I).
#include <algorithm>

#include "common/field_rows.h"
#include "common/print.h"
#include "jpeg2000/codestream.h"
#include "jpeg2000/jpeg2000.h"

namespace {

constexpr uint64_t kHeaderSize = 8;
constexpr int kMaxDepth = 64;

constexpr uint32_t kSignatureBox = 0x6A502020;    // "jP  "
constexpr uint32_t kFileTypeBox = 0x66747970;     // "ftyp"
constexpr uint32_t kHeaderBox = 0x6A703268;       // "jp2h"
constexpr uint32_t kImageHeaderBox = 0x69686472;  // "ihdr"
constexpr uint32_t kCodestreamBox = 0x6A703263;   // "jp2c"

// Image header, before and behind its compression type.
// clang-format off
constexpr FieldRow kImageHeaderRows[] = {
    {8, Field::dec32, "  ysize       "},
    {12, Field::dec32, "  xsize       "},
    {16, Field::dec16, "  components  "},
    {18, Field::dec8, "  compression "},
};
constexpr uint64_t kCompressionType = 19;
constexpr FieldRow kImageHeaderEndRows[] = {
    {20, Field::dec8, "  compression "},
    {21, Field::dec8, "  ip          "},
};
// clang-format on

constexpr FieldRow kVersionRow = {12, Field::dec32, " Version     "};
constexpr CodeName kCompressionTypes[] = {{4, "JBIG"}, {5, "JPEG"}, {6, "JPEG-LS"}, {7, "JPEG2000"}};

struct Box {
    uint64_t offset;
    uint64_t length;
    uint32_t type;
};

void print_characters(const char *label, Bytes text) {
    print("%s'%c%c%c%c'\n", own(label), text[0], text[1], text[2], text[3]);
}

void print_file_type(Bytes buf, const Box &box) {
    print_characters(" Brand       ", buf.from(box.offset + 8));
    print_field_row(big_endian(buf.from(box.offset)), kVersionRow);
    const int64_t entries = (int64_t{static_cast<int32_t>(box.length)} - 16) / 4;
    for (int64_t i = 0; i < entries; i++) {
        const uint64_t at = box.offset + 16 + 4 * static_cast<uint64_t>(i);
        if (at >= buf.size()) return;
        print_characters(" Compability ", buf.from(at));
    }
}

void print_compression_type(uint32_t type) {
    if (const char *name = name_of(kCompressionTypes, type, nullptr)) {
        print("  compression %s\n", name);
    } else {
        print("  compression %d/Unknown\n", type);
    }
}

void print_image_header(Bytes buf, const Box &box) {
    const OrderedBytes header = big_endian(buf.from(box.offset));
    print_field_rows(header, kImageHeaderRows);
    print_compression_type(header.u8(kCompressionType));
    print_field_rows(header, kImageHeaderEndRows);
}

void print_codestream(Bytes buf, const Box &box, int depth) {
    const uint64_t end = box.offset + box.length;
    codestream().enter_codestream();
    for (uint64_t p = box.offset + kHeaderSize; p < end && buf[p] == 0xFF;) {
        const uint32_t code = buf[p + 1];
        const uint64_t size = jp2ffentry(buf, p, depth + 1, end);
        if (code == kEndOfCodestream || size == 0) break;
        p += size;
    }
    print(" - no valid codestream data available anymore\n");
}

uint64_t jp2entry(Bytes buf, uint64_t offset, int depth, uint64_t room);

// The boxes inside a superbox, up to as many bytes as its length says without its header: the box behind it
// is listed with them, and has the file as its container. Returns the bytes to the next box of the container.
uint64_t print_superbox(Bytes buf, const Box &box, int depth) {
    uint64_t taken = 0;
    while (taken < box.length && box.offset + kHeaderSize + taken < buf.size()) {
        const uint64_t offset = box.offset + kHeaderSize + taken;
        const bool inside = offset < box.offset + box.length;
        const uint64_t size =
            jp2entry(buf, offset, depth + 1, inside ? box.length - taken : buf.size() - offset);
        if (size == 0) return std::max(box.length, taken + kHeaderSize);
        taken += size;
    }
    return taken + kHeaderSize;
}

// Prints the fields and the boxes of a box; returns the bytes to the next box of its container.
uint64_t print_contents(Bytes buf, const Box &box, int depth) {
    switch (box.type) {
        case kSignatureBox: break;
        case kFileTypeBox: print_file_type(buf, box); break;
        case kImageHeaderBox: print_image_header(buf, box); break;
        case kCodestreamBox: print_codestream(buf, box, depth); break;
        case kHeaderBox:
            if (depth < kMaxDepth) return print_superbox(buf, box, depth);
            break;
        default: print(" unknown box type \n");
    }
    return box.length;
}

// Prints the box at an offset; returns the bytes to the next box of its container, 0 when a length below a
// box header's ends the container.
uint64_t jp2entry(Bytes buf, uint64_t offset, int depth, uint64_t room) {
    const uint32_t lbox = jp2_getint32(buf, offset);
    const Box box{offset, lbox ? lbox : room, jp2_getint32(buf, offset + 4)};
    from(buf, offset, kHeaderSize);
    print("%*s%08x: ", depth, "", static_cast<uint32_t>(offset));
    behind_position(static_cast<uint32_t>(depth));
    label_begins(false);
    print("%c%c%c%c", buf[offset + 4], buf[offset + 5], buf[offset + 6], buf[offset + 7]);
    label_ends();
    print(" %08x/%d\n", box.type, static_cast<int32_t>(box.length));
    const uint64_t size = print_contents(buf, box, depth);
    return lbox > 0 && lbox < kHeaderSize ? 0 : size;
}

}  // namespace

void jp2dump(DumpOptions &, Input &input) {
    if (!check_buffer(input.size())) return;
    const Bytes buf = input.bytes();
    print("Fileformat:JP2\n");
    codestream().enter_file();
    uint64_t offset = 0;
    while (offset < buf.size()) {
        const uint64_t size = jp2entry(buf, offset, 0, buf.size() - offset);
        if (size == 0) return;
        offset += size;
    }
    if (offset > buf.size()) print("ERROR during decoding\n");
}
