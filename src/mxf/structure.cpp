// Structural items after SMPTE 377M.
#include <algorithm>

#include "common/field_rows.h"
#include "common/print.h"
#include "mxf/dictionary.h"
#include "mxf/items.h"
#include "mxf/klv.h"
#include "mxf/registry.h"
#include "mxf/sets.h"

namespace {

constexpr uint32_t kFirstDynamicTag = 0x8000;
constexpr uint64_t kLabelSize = 16;

constexpr CodeName kPartitionStatuses[] = {
    {1, " Open and Incomplete"},
    {2, " Closed and Incomplete"},
    {3, " Open and Complete"},
    {4, " Closed and Complete"},
};

// clang-format off
// Partition pack, before and after the operational pattern label.
constexpr FieldRow kPartitionRows[] = {
    {0, Field::dec16, " Major Version      "},
    {2, Field::dec16, " Minor Version      "},
    {4, Field::dec32, " Alignment          "},
    {8, Field::hex64, " ThisPartition      "},
    {16, Field::hex64, " PreviousPartition  "},
    {24, Field::hex64, " FooterPartition    "},
    {32, Field::dec64, " HeaderByteCount    "},
    {40, Field::dec64, " IndexByteCount     "},
    {48, Field::dec32, " IndexSID           "},
    {52, Field::dec64, " BodyOffset         "},
    {60, Field::dec32, " BodySID            "},
};
constexpr uint64_t kOperationalPattern = 64;
constexpr FieldRow kContainerRows[] = {
    {80, Field::dec32, " ContainerCount     "},
    {84, Field::dec32, " ContainerSize      "},
};
// Primer pack: the last bytes of its key, and its value.
constexpr FieldRow kPrimerKeyRows[] = {
    {6, Field::dec8, " Version            "},
    {7, Field::dec8, " Designator         "},
};
constexpr FieldRow kPrimerRows[] = {
    {0, Field::dec32, " Itemcount          "},
    {4, Field::dec32, " Itemlength         "},
};
// clang-format on
constexpr uint64_t kContainers = 88;

constexpr uint64_t kPrimerItems = 8;
constexpr uint64_t kPrimerItemSize = 18;

void print_partition_status(DumpOptions &opts, Bytes buffer, uint64_t offset) {
    if (const char *status = name_of(kPartitionStatuses, buffer[offset + 14], nullptr)) {
        print("%s\n", own(status));
    } else {
        mxferror(opts, buffer, offset, "Unknown entry for open/close");
    }
}

// Prints the label of a primer item whose tag is declared here.
void print_primer_tag(DumpOptions &opts, uint32_t tag, Bytes ul) {
    print("  Tag %04x - ", tag);
    printuuid(opts, ul);
    print(" - ");
}

void print_primer_item(DumpOptions &opts, Bytes buffer, uint64_t offset) {
    const uint64_t at = offset + 2;
    const uint32_t tag = static_cast<uint32_t>(mxfuint16(buffer.from(offset)));
    const Bytes u = buffer.from(at);
    const bool dynamic = tag >= kFirstDynamicTag;
    if (!is_smpte_label(buffer, at) && !dynamic) {
        mxferror(opts, buffer, at,
                 "mxf_primary_pack - wrong label data %04x == "
                 "%02x.%02x.%02x.%02x.%02x.%02x.%02x.%02x-%02x.%02x.%02x.%02x.%02x.%02x.%02x.%02x",
                 tag, u[0], u[1], u[2], u[3], u[4], u[5], u[6], u[7], u[8], u[9], u[10], u[11], u[12], u[13],
                 u[14], u[15]);
    } else if (const rp210_entry *row = mxf_find_rp210(opts, u, 0)) {
        mxfaddlabel(opts, tag, row->name, row->kind);
        print_primer_tag(opts, tag, u);
        label_begins();
        print("%s\n", row->name);
        if (!dynamic && row->local_tag && row->local_tag != tag) {
            aside();
            print("Local tag def %04x != %04x\n", tag, row->local_tag);
            mxferror(opts, buffer, at, "mxf_primer_pack - tag id missmatch");
        }
    } else if (dynamic) {
        print_primer_tag(opts, tag, u);
        const mxf_guid_node *set = mxf_guid_find(opts, u);
        if (set) mxfaddlabel(opts, tag, addmxfstring(set->text), ValueKind::unknown);
        label_begins(false);
        print("%s\n", set ? set->text : "UNKNOWN");
    } else {
        mxferror(opts, buffer, at, "mxf_primer_pack - label not found");
        printuuid(opts, u);
    }
}

}  // namespace

uint64_t mxf_partition_header(DumpOptions &opts, uint64_t file_position, Bytes buffer, uint64_t offset,
                              const char *name) {
    print("%s\n", name);
    print_partition_status(opts, buffer, offset);
    const ItemValue item = print_length_line(opts, file_position, buffer, offset);
    const Bytes value = buffer.from(item.start);
    print_field_rows(big_endian(value), kPartitionRows);
    const Bytes pattern = value.from(kOperationalPattern);
    print(" OperationalPattern ");
    printuuid(opts, pattern);
    print(" - ");
    printidentifier(opts, pattern);
    print("\n");
    print_field_rows(big_endian(value), kContainerRows);
    const int32_t count = static_cast<int32_t>(mxfuint32(value.from(80)));
    uint64_t at = item.start + kContainers;
    for (int32_t i = 0; i < count && at < buffer.size(); i++, at += kLabelSize) {
        print("                    ");
        printuuid(opts, buffer.from(at));
        print(" - ");
        printrp224(buffer.from(at));
        print("\n");
    }
    return at - offset;
}

uint64_t mxf_primer_pack(DumpOptions &opts, uint64_t file_position, Bytes buffer, uint64_t offset,
                         const char *name) {
    print("%s\n", name);
    print_field_rows(big_endian(buffer.from(offset)), kPrimerKeyRows);
    const ItemValue item = print_length_line(opts, file_position, buffer, offset);
    const Bytes value = buffer.from(item.start);
    print_field_rows(big_endian(value), kPrimerRows);
    const uint32_t count = mxfuint32(value);
    const uint32_t size = mxfuint32(value.from(4));
    forget();
    if (uint64_t{size} * count + kPrimerItems != static_cast<uint64_t>(item.length)) {
        mxferror(opts, buffer, offset, "mxf_primer_pack - itemcount * itemsize does not match length");
    }
    const uint64_t end = std::min(item.end(), buffer.size());
    uint64_t at = item.start + kPrimerItems;
    for (int32_t i = 0; i < static_cast<int32_t>(count) && at < end; i++, at += kPrimerItemSize) {
        print_primer_item(opts, buffer, at);
    }
    return item.end() - offset;
}

uint64_t mxf_index_table(DumpOptions &opts, uint64_t file_position, Bytes buffer, uint64_t offset,
                         const char *name) {
    print("%s\n", name);
    return mxf_klv(opts, file_position, buffer, offset);
}

uint64_t mxf_randomindex_table(DumpOptions &opts, uint64_t file_position, Bytes buffer, uint64_t offset,
                               const char *name) {
    print("%s\n", name);
    const ItemValue item = print_length_line(opts, file_position, buffer, offset);
    for (uint64_t at = item.start; at + 4 < item.end() && at < buffer.size(); at += 12) {
        print(" bodysid %d\n", static_cast<int32_t>(mxfuint32(buffer.from(at))));
        print(" offset  %08llx\n", static_cast<unsigned long long>(mxfuint64(buffer.from(at + 4))));
    }
    print(" length  %d\n", static_cast<int32_t>(mxfuint32(buffer.from(item.end() - 4))));
    return item.end() - offset;
}
