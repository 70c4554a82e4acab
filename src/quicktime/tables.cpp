// Tables: a fixed part that ends with the count of entries, then the entries. They can have millions of
// entries, so that their lines go through a LineBuffer.
#include <algorithm>
#include <cstdio>
#include <span>
#include <string_view>

#include "common/line_buffer.h"
#include "quicktime/fields.h"
#include "quicktime/printers.h"

namespace {

using enum QtField;

constexpr QtRow kCounted[] = {{0, version_flags}, {4, u32, "nentries"}};
constexpr QtRow kSizes[] = {{0, version_flags}, {4, u32, "samplesize"}, {8, u32, "nentries"}};
constexpr QtRow kColors[] = {{0, u32, "seed"}, {4, u16, "flags"}, {6, u16, "size"}};

enum class Cell {
    u16,     // "%u (0x%X)"
    u32,     // "%u (0x%X)"
    d32,     // "%d (0x%X)"
    fixed,   // 16.16 fixed point, "%f (0x%X)"
    halves,  // 64 bits, "%u_%u (0x%X%X)"
};

// One line of an entry: the label up to the index, and from the index to the value.
struct Column {
    uint8_t offset;
    Cell kind;
    std::string_view before;
    std::string_view after;
};

constexpr Column kEdit[] = {
    {0, Cell::u32, "data[", "].trackdur="},
    {4, Cell::d32, "data[", "].mediatime="},
    {8, Cell::fixed, "data[", "].mediarate="},
};
constexpr Column kTimeToSample[] = {{0, Cell::u32, "data[", "].count="},
                                    {4, Cell::u32, "data[", "].duration="}};
constexpr Column kComposition[] = {{0, Cell::u32, "data[", "].samplecount="},
                                   {4, Cell::d32, "data[", "].offset="}};
constexpr Column kNumber[] = {{0, Cell::u32, "data[", "]="}};
constexpr Column kOffset64[] = {{0, Cell::halves, "data[", "]="}};
constexpr Column kSampleToChunk[] = {
    {0, Cell::u32, "data.first[", "]="},
    {4, Cell::u32, "data.nsamples[", "]="},
    {8, Cell::u32, "data.desc[", "]="},
};
constexpr Column kColor[] = {
    {0, Cell::u16, "data.alpha[", "]="},
    {2, Cell::u16, "data.red[", "]="},
    {4, Cell::u16, "data.green[", "]="},
    {6, Cell::u16, "data.blue[", "]="},
};

enum class Reading { whole, by_entry };

struct Table {
    char type[5];
    Reading reading;
    std::span<const QtRow> head;
    uint32_t head_size;
    std::span<const Column> columns;
    uint32_t entry_size;
};

constexpr Table kTables[] = {
    {"elst", Reading::whole, kCounted, 8, kEdit, 12},
    {"stts", Reading::whole, kCounted, 8, kTimeToSample, 8},
    {"ctts", Reading::whole, kCounted, 8, kComposition, 8},
    {"stss", Reading::by_entry, kCounted, 8, kNumber, 4},
    {"stps", Reading::by_entry, kCounted, 8, kNumber, 4},
    {"stco", Reading::by_entry, kCounted, 8, kNumber, 4},
    {"co64", Reading::by_entry, kCounted, 8, kOffset64, 8},
    {"stsc", Reading::by_entry, kCounted, 8, kSampleToChunk, 12},
    {"stsz", Reading::by_entry, kSizes, 12, kNumber, 4},
    {"ctab", Reading::by_entry, kColors, 8, kColor, 8},
};

uint64_t entry_count(const QtAtom &atom, const Table &table) {
    const uint32_t type = qt_type(table.type);
    if (type == qt_type("ctab")) return uint64_t{big16(atom.data, 6)} + 1;  // counted from zero
    if (type == qt_type("stsz")) return big32(atom.data, 4) ? 0 : big32(atom.data, 8);
    return big32(atom.data, 4);
}

void put_value(LineBuffer &out, uint32_t value) {
    out.decimal(value);
    out.text(" (0x");
    out.upper_hex(value);
}

void put_halves(LineBuffer &out, uint64_t value) {
    const uint32_t high = static_cast<uint32_t>(value >> 32);
    const uint32_t low = static_cast<uint32_t>(value);
    out.decimal(high);
    out.put('_');
    out.decimal(low);
    out.text(" (0x");
    out.upper_hex(high);
    out.upper_hex(low);
}

void put_fixed(LineBuffer &out, uint32_t value) {
    char text[32];
    const int length = std::snprintf(text, sizeof text, "%f", static_cast<double>(qt_fixed(value)));
    out.text({text, static_cast<size_t>(length)});
    out.text(" (0x");
    out.upper_hex(value);
}

void put_cell(LineBuffer &out, Bytes entry, const Column &column) {
    const uint32_t value = big32(entry, column.offset);
    switch (column.kind) {
        case Cell::u16: put_value(out, big16(entry, column.offset)); break;
        case Cell::u32: put_value(out, value); break;
        case Cell::d32:
            out.signed_decimal(static_cast<int32_t>(value));
            out.text(" (0x");
            out.upper_hex(value);
            break;
        case Cell::fixed: put_fixed(out, value); break;
        case Cell::halves: put_halves(out, swap64(entry, column.offset)); break;
    }
    out.text(")\n");
}

void put_entry(LineBuffer &out, Bytes entry, uint64_t index, int indent, std::span<const Column> columns) {
    for (const Column &column : columns) {
        out.fill(' ', static_cast<size_t>(indent));
        out.text(column.before);
        out.signed_decimal(static_cast<int32_t>(index));
        out.text(column.after);
        put_cell(out, entry, column);
    }
}

uint64_t print_whole(QtAtom &atom, const Table &table) {
    const uint64_t count = qt_atom_read_data(atom);
    print_qt_rows(atom, table.head);
    const uint64_t entries = entry_count(atom, table);
    LineBuffer out;
    uint64_t at = table.head_size;
    for (uint64_t i = 0; i < entries && atom.data.has(at, table.entry_size); i++, at += table.entry_size) {
        put_entry(out, atom.data.sub(at, table.entry_size), i, atom.indent(), table.columns);
    }
    return count;
}

// A count beyond the atom leads on into what follows it.
uint64_t print_by_entry(QtAtom &atom, const Table &table) {
    uint64_t count = qt_atom_read_more(atom, table.head_size);
    print_qt_rows(atom, table.head);
    const uint64_t entries = entry_count(atom, table);
    LineBuffer out;
    for (uint64_t i = 0; i < entries; i++) {
        const Bytes entry = qt_atom_read_item(*atom.file, table.entry_size);
        count += entry.size();
        if (entry.size() < table.entry_size) break;
        put_entry(out, entry, i, atom.indent(), table.columns);
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
    out.text("            data[");
    out.signed_decimal(static_cast<int32_t>(index));
    out.text("]=");
    out.decimal(flags, 2);
    out.text(flags < 16 ? " (0x0" : " (0x");
    out.upper_hex(flags);
    out.text(")\t");
    for (const Flag &flag : kDependencies) {
        if (flags & flag.bit) out.text(flag.name);
    }
    out.put('\n');
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
    const auto *table = std::ranges::find(kTables, type, [](const Table &t) { return qt_type(t.type); });
    if (table == std::end(kTables)) return std::nullopt;
    return QtRead{table->reading == Reading::whole ? print_whole(atom, *table)
                                                   : print_by_entry(atom, *table)};
}
