#include "mxf/items.h"

#include <algorithm>

#include "common/print.h"
#include "mxf/klv.h"
#include "mxf/registry.h"
#include "mxf/value.h"

ItemValue read_item_length(DumpOptions &opts, Bytes buffer, uint64_t offset) {
    uint32_t header = kKeySize;
    const uint64_t length = mxfber(opts, buffer, offset + kKeySize, &header);
    return {offset + header, static_cast<int32_t>(length)};
}

void print_length_line(DumpOptions &opts, uint64_t file_position, const ItemValue &value, const char *label) {
    only_field();
    print("%s0x%08x", own(label), static_cast<uint32_t>(value.length));
    if (!opts.mxf_flag_c) print(" (until 0x%08x)", static_cast<uint32_t>(file_position + value.end()));
    print("\n");
}

ItemValue print_length_line(DumpOptions &opts, uint64_t file_position, Bytes buffer, uint64_t offset,
                            const char *label) {
    const ItemValue value = read_item_length(opts, buffer, offset);
    print_length_line(opts, file_position, value, label);
    return value;
}

void print_local_set(DumpOptions &opts, Bytes buffer, const ItemValue &value) {
    const uint64_t end = std::min(value.end(), buffer.size());
    constexpr uint64_t kRounds = 4;  // that the arrays of a set may show of it
    Budget budget = Budget::of_bytes(kRounds * buffer.size());
    for (uint64_t at = value.start; at < end;) {
        const uint32_t tag = static_cast<uint32_t>(mxfuint16(buffer.from(at)));
        const uint32_t length = static_cast<uint32_t>(mxfuint16(buffer.from(at + 2)));
        ValueKind kind{};
        const char *name = mxffindlabel(opts, tag, &kind);
        print("  Tag %04x/%d ", tag, length);
        label_begins();
        print("%s\n", name);
        mxf_print_rp210data(opts, buffer, at + 4, length, kind, budget);
        at += 4 + uint64_t{length};
    }
}
