// OpenEXR file layout: the attributes of the first header.
#include "exr/exr.h"

#include <cinttypes>
#include <string_view>

#include "common/budget.h"
#include "common/field_rows.h"
#include "common/hexrow.h"
#include "common/line_buffer.h"
#include "common/print.h"
#include "common/stream.h"

namespace {

constexpr uint64_t kFirstAttribute = 8;
constexpr uint64_t kChannelEntry = 18;  // of a channel with a name of one character
constexpr uint64_t kTextStep = 64 * 1024;
constexpr uint64_t kMaxName = 64 * 1024;  // names of the format have 255 characters at most

// clang-format off
constexpr FieldRow kBoxRows[] = {
    {0, Field::dec32, " xstart "},
    {4, Field::dec32, " ystart "},
    {8, Field::dec32, " xsize  "},
    {12, Field::dec32, " ysize  "},
};
constexpr FieldRow kFloatRows[] = {
    {0, Field::real, " "},
};
constexpr FieldRow kPointRows[] = {
    {0, Field::real, " X "},
    {4, Field::real, " Y "},
};
// clang-format on

// Another entry follows while its first byte is not zero, whatever the value's size says.
void print_channels(Bytes value, Budget &budget) {
    for (uint64_t entry = 0; entry < value.size() && !budget.spent(); entry += kChannelEntry) {
        if (entry > 0 && value[entry] == 0) return;
        budget.spend(kChannelEntry);
        const OrderedBytes channel = little_endian(value.from(entry));
        behind_position(1);
        label_begins(false);
        print("%c", channel.u8(0));
        label_ends();
        print(" %d %d %d %d\n", channel.s32(2), channel.s32(6), channel.s32(10), channel.s32(14));
    }
}

void print_string(Bytes value) {
    LineBuffer out;
    from(value);
    behind_position(1);
    out.literal("'");
    for (uint64_t i = 0; i < value.size(); i += kTextStep) out.bytes(value.span(i, kTextStep));
    out.literal("'");
    out.end_line();
}

void print_compression(Bytes value) {
    if (value[0] == 0) {
        print(" %s\n", "uncompressed");
    } else {
        print(" compression(%d)\n", value[0]);
    }
}

void print_unknown(Bytes value) {
    behind_position(1);
    print("Hexdump of unknown tag\n");
    LineBuffer out;
    for (uint64_t i = 0; i < value.size(); i += 16) {
        const auto row = value.span(i, 16);
        from(value, i, 16);
        put_hexcells(out, row);
        if (row.size() == 16) out.end_row();
    }
    out.end_row();
}

// The rendering of one attribute value. `value` goes on to the end of the file: the fields of a known type
// are read whatever its size says.
void printentry(std::string_view type, Bytes value, uint64_t size, Budget &budget) {
    if (type == "chlist") {
        print_channels(value, budget);
    } else if (type == "string") {
        print_string(value.sub(0, size));
    } else if (type == "preview") {
        behind_position(1);
        print("PreviewImage\n");
    } else if (type == "box2i") {
        print_field_rows(little_endian(value), kBoxRows);
    } else if (type == "compression") {
        print_compression(value);
    } else if (type == "float") {
        print_field_rows(little_endian(value), kFloatRows);
    } else if (type == "v2f") {
        print_field_rows(little_endian(value), kPointRows);
    } else {
        print_unknown(value.sub(0, size));
    }
}

}  // namespace

void exrdump(DumpOptions &, Input &input) {
    if (!check_buffer(input.size())) return;
    const Bytes bytes = input.bytes();
    Budget budget(bytes.size());
    print("Fileformat:EXR\n");
    for (uint64_t offset = kFirstAttribute; bytes[offset] != 0;) {
        const Text name = text_at(bytes, offset, kMaxName);
        const uint64_t type_at = offset + static_cast<uint64_t>(name.length) + 1;
        const Text type = text_at(bytes, type_at, kMaxName);
        const uint64_t size_at = type_at + static_cast<uint64_t>(type.length) + 1;
        const uint64_t value_at = size_at + 4;
        const int32_t size = little_endian(bytes).s32(size_at);
        from(bytes, offset, value_at - offset);
        print("%05" PRIx64 " ", offset);
        behind_position();
        label_begins(false);
        print("%-18.*s", name.length, name.start);
        label_ends();
        print(" %-10.*s %d\n", type.length, type.start, size);
        if (bytes[type_at - 1] != 0 || bytes[size_at - 1] != 0) return;  // no name is that long
        forget();
        const uint64_t length = size > 0 ? static_cast<uint64_t>(size) : 0;
        printentry({type.start, static_cast<size_t>(type.length)}, bytes.from(value_at), length, budget);
        if (size < 0 || !bytes.has(value_at, length)) return;
        offset = value_at + length;
    }
}
