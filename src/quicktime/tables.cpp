// Tables: a fixed part that ends with the count of entries, then the entries. They can have millions of
// entries, so that their lines go through a LineBuffer.
#include <algorithm>
#include <span>
#include <string_view>

#include "common/line_buffer.h"
#include "common/names.h"
#include "quicktime/fields.h"
#include "quicktime/printers.h"

namespace {

using enum QtField;

constexpr QtRow kCounted[] = {{0, version_flags}, {4, u32, "nentries="}};
constexpr QtRow kSizes[] = {{0, version_flags}, {4, u32, "samplesize="}, {8, u32, "nentries="}};
constexpr QtRow kColors[] = {{0, u32, "seed="}, {4, u16, "flags="}, {6, u16, "size="}};

constexpr QtRow kEdit[] = {
    {0, u32, "data[].trackdur="},
    {4, d32, "data[].mediatime="},
    {8, fixed, "data[].mediarate="},
};
constexpr QtRow kTimeToSample[] = {{0, u32, "data[].count="}, {4, u32, "data[].duration="}};
constexpr QtRow kComposition[] = {{0, u32, "data[].samplecount="}, {4, d32, "data[].offset="}};
constexpr QtRow kNumber[] = {{0, u32, "data[]="}};
constexpr QtRow kOffset64[] = {{0, halves, "data[]="}};
constexpr QtRow kSampleToChunk[] = {
    {0, u32, "data.first[]="},
    {4, u32, "data.nsamples[]="},
    {8, u32, "data.desc[]="},
};
constexpr QtRow kTableColor[] = {
    {0, u16, "data.alpha[]="},
    {2, u16, "data.red[]="},
    {4, u16, "data.green[]="},
    {6, u16, "data.blue[]="},
};

enum class Reading { whole, by_entry };

struct Table {
    char type[5];
    Reading reading;
    std::span<const QtRow> head;
    uint32_t head_size;
    std::span<const QtRow> entry;
    uint32_t entry_size;
    bool is_listing = true;  // of samples, or as many
};

constexpr Table kTables[] = {
    {"elst", Reading::whole, kCounted, 8, kEdit, 12, false},
    {"stts", Reading::whole, kCounted, 8, kTimeToSample, 8},
    {"ctts", Reading::whole, kCounted, 8, kComposition, 8},
    {"stss", Reading::by_entry, kCounted, 8, kNumber, 4},
    {"stps", Reading::by_entry, kCounted, 8, kNumber, 4},
    {"stco", Reading::by_entry, kCounted, 8, kNumber, 4},
    {"co64", Reading::by_entry, kCounted, 8, kOffset64, 8},
    {"stsc", Reading::by_entry, kCounted, 8, kSampleToChunk, 12},
    {"stsz", Reading::by_entry, kSizes, 12, kNumber, 4},
    {"ctab", Reading::by_entry, kColors, 8, kTableColor, 8, false},
};

uint64_t entry_count(const QtAtom &atom, const Table &table) {
    const uint32_t type = qt_type(table.type);
    if (type == qt_type("ctab")) return uint64_t{big16(atom.data, 6)} + 1;  // counted from zero
    if (type == qt_type("stsz")) return big32(atom.data, 4) ? 0 : big32(atom.data, 8);
    return big32(atom.data, 4);
}

uint64_t print_whole(QtAtom &atom, const Table &table) {
    const uint64_t count = qt_atom_read_data(atom);
    print_qt_rows(atom, table.head);
    const uint64_t entries = entry_count(atom, table);
    LineBuffer out;
    uint64_t at = table.head_size;
    for (uint64_t i = 0; i < entries && atom.data.has(at, table.entry_size); i++, at += table.entry_size) {
        put_qt_rows(out, atom.data.sub(at, table.entry_size), atom.indent(), table.entry, i,
                    table.is_listing);
    }
    return count;
}

constexpr uint64_t kEntriesAtATime = 256;

// A count beyond the atom leads on into what follows it.
uint64_t print_by_entry(QtAtom &atom, const Table &table) {
    uint64_t count = qt_atom_read_more(atom, table.head_size);
    print_qt_rows(atom, table.head);
    const uint64_t entries = entry_count(atom, table);
    LineBuffer out;
    for (uint64_t i = 0; i < entries;) {
        const uint64_t wanted = std::min(entries - i, kEntriesAtATime) * table.entry_size;
        const Bytes items = qt_atom_read_item(*atom.file, wanted);
        count += items.size();
        for (uint64_t at = 0; items.has(at, table.entry_size); at += table.entry_size, i++) {
            put_qt_rows(out, items.sub(at, table.entry_size), atom.indent(), table.entry, i,
                        table.is_listing);
        }
        if (items.size() < wanted) break;
    }
    return count;
}

struct Flag {
    uint8_t bit;
    std::string_view name;
};

constexpr Flag kDependencies[] = {
    {0x40, "kQTSampleDependency_EarlierDisplayTimesAllowed\t"},
    {0x20, "kQTSampleDependency_DoesNotDependOnOthers_Corrected\t"},
    {0x10, "kQTSampleDependency_DependsOnOthers_Corrected\t"},
    {0x08, "kQTSampleDependency_IsNotDependedOnByOthers_Corrected\t"},
    {0x04, "kQTSampleDependency_IsDependedOnByOthers_Corrected\t"},
    {0x02, "kQTSampleDependency_HasNoRedundantCoding_Corrected\t"},
    {0x01, "kQTSampleDependency_HasRedundantCoding_Corrected\t"},
};

void put_dependency(LineBuffer &out, uint64_t index, uint8_t flags) {
    out.literal("            data[");
    out.signed_decimal(static_cast<int32_t>(index));
    out.literal("]=");
    out.decimal(flags, 2);
    out.own(flags < 16 ? " (0x0" : " (0x");
    out.upper_hex(flags);
    out.literal(")\t");
    for (const Flag &flag : kDependencies) {
        if (flags & flag.bit) out.text(flag.name);
    }
    behind_position(12);
    out.end_row();
}

// One byte a sample up to the atom's end.
uint64_t print_dependencies(QtAtom &atom) {
    static constexpr QtRow kRows[] = {{0, version_flags}};
    const uint64_t count = qt_atom_read_data(atom);
    print_qt_rows(atom, kRows);
    const Bytes entries = atom.data.from(4);
    const uint64_t listed = std::min<uint64_t>(static_cast<uint32_t>(atom.size - 12), entries.size());
    LineBuffer out;
    for (uint64_t i = 0; i < listed; i++) put_dependency(out, i, entries[i]);
    return count;
}

}  // namespace

std::optional<QtRead> qt_print_table(QtAtom &atom) {
    const uint32_t type = qt_type(atom.type);
    if (type == qt_type("sdtp")) return QtRead{print_dependencies(atom)};
    const Table *table = row_of(kTables, type, [](const Table &t) { return qt_type(t.type); });
    if (!table) return std::nullopt;
    return QtRead{table->reading == Reading::whole ? print_whole(atom, *table)
                                                   : print_by_entry(atom, *table)};
}
