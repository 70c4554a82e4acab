#include "mxf/value.h"

#include <algorithm>

#include "common/field_rows.h"
#include "common/hexrow.h"
#include "common/print.h"
#include "common/values.h"
#include "mxf/dictionary.h"
#include "mxf/klv.h"
#include "mxf/registry.h"

namespace {

constexpr uint32_t kMaxUnknown = 256;  // bytes shown of a value of unknown kind
constexpr uint32_t kMaxElement = 32;   // bytes shown of an array element
constexpr uint32_t kLabelBytes = 16;
constexpr uint64_t kArrayHeader = 8;
constexpr int32_t kMostEmpty = 256;  // elements without bytes that are listed of an array

// clang-format off
// Behind the time of an extended UMID.
constexpr FieldRow kUmidSourceRows[] = {
    {40, Field::hex32, "   Cordinates   ", 3},
    {52, Field::dec32_slash, "   Country      "},
    {56, Field::dec32_slash, "   Organization "},
    {60, Field::dec32_slash, "   User         "},
};
constexpr FieldRow kArrayRows[] = {
    {0, Field::dec32, "    Count "},
    {4, Field::dec32, "    Size  "},
};
// clang-format on

// The first n bytes as "%02x " each; bytes beyond the item are 0.
void put_cells(LineBuffer &out, Bytes bytes, uint64_t n) {
    for (uint64_t i = 0; i < n; i++) {
        const uint8_t byte = bytes[i];
        put_hexcells(out, {&byte, 1});
    }
}

void print_unknown(Bytes value, uint32_t length) {
    print("   Unknown\n");
    LineBuffer out;
    const uint64_t shown = std::min(length, kMaxUnknown);
    for (uint64_t i = 0; i < shown; i += 16) {
        out.literal("    ");
        put_cells(out, value.from(i), std::min<uint64_t>(16, shown - i));
        out.end_row();
    }
}

// Characters of `unit` bytes of which the last one is shown, up to a character of zero bytes.
void print_text(const char *title, Bytes value, uint32_t length, uint32_t unit) {
    print("   %s '", own(title));
    LineBuffer out;
    for (uint64_t i = 0; i + unit <= length && value.big(i, unit) != 0; i += unit) {
        out.put(tiffchar(value[i + unit - 1]));
    }
    out.literal("'");
    out.end_line();
}

void print_rational(Bytes value) {
    const int32_t numerator = big_endian(value).s32(0);
    const int32_t denominator = big_endian(value).s32(4);
    print("   Rational %d/%d", numerator, denominator);
    if (denominator != 0) print(" %g", static_cast<double>(numerator) / denominator);
    print("\n");
}

// Year, month, day, hour, minute, second and quarters of 4 milliseconds (SMPTE 377M, 3.3).
void print_timestamp(const char *label, Bytes value) {
    print("%s%04d.%02d.%02d %s-%04d\n", own(label), mxfuint16(value), value[2], value[3],
          clock_text(value[4], value[5], value[6]), value[7] * 4);
}

// UMID (SMPTE 330M), basic or extended.
void print_package_id(DumpOptions &opts, Bytes buffer, uint64_t offset) {
    const Bytes umid = buffer.from(offset);
    print("   Label    %02x", umid[0]);
    for (uint64_t i = 1; i < 12; i++) print(".%02x", umid[i]);
    print(" Len %d Version %d\n", umid[12] + 13, static_cast<int>(umid.big(13, 3)));
    print("   Material ");
    printuuid(opts, umid.from(16));
    print("\n");
    switch (umid[12]) {
        case 0x00:
        case 0x13: return;
        case 0x33: break;
        default: mxferror(opts, buffer, offset, "Wrong length of packageid"); return;
    }
    print_timestamp("   Timestamp    ", umid.from(32));
    print_field_rows(big_endian(umid), kUmidSourceRows);
}

// One 16-bit number a pair of bytes, the first behind a blank, the others behind full stops.
void print_version_numbers(Bytes value, uint32_t length) {
    print("   VersionType");
    for (uint64_t i = 0; i + 2 <= length; i += 2) print("%c%d", i ? '.' : ' ', mxfuint16(value.from(i)));
    print("\n");
}

// A label with what it refers to: `before` the label, `between` it and the name.
void print_named(DumpOptions &opts, const char *before, Bytes ul, const char *between) {
    print("%s", own(before));
    printuuid(opts, ul);
    print("%s", own(between));
    if (*between == '\n') label_ends();
    also(ul, 0, kLabelBytes);
    print_name_or_unknown(opts, ul);
    print("\n");
}

void print_strong_reference(DumpOptions &opts, const char *before, Bytes ul, const char *between) {
    print("%s", own(before));
    printuuid(opts, ul);
    print("%s", own(between));
    also(ul, 0, kLabelBytes);
    print("%s\n", mxf_guid_string(opts, ul));
}

// Arrays and batches: element count, element size, elements.
struct Array {
    Bytes elements;
    bool whole;  // the item holds count and size
    int32_t count;
    uint32_t size;
    Budget &budget;

    Array(Bytes value, Budget &elements_budget)
        : elements(value.from(kArrayHeader)),
          whole(value.has(0, kArrayHeader)),
          count(big_endian(value).s32(0)),
          size(mxfuint32(value.from(4))),
          budget(elements_budget) {}

    Bytes operator[](int32_t i) const { return elements.from(static_cast<uint64_t>(i) * size); }

    // Whether element i is to be listed, which spends its bytes: it begins inside the item. Elements without
    // bytes never leave it, so that only some of them are.
    bool take(int32_t i) const {
        const bool inside =
            size == 0 ? whole && i < kMostEmpty : static_cast<uint64_t>(i) * size < elements.size();
        return i < count && inside && budget.take(std::min(size, kMaxElement));
    }
};

void put_element(LineBuffer &out, const char *indent, int32_t i, const Array &array) {
    out.own(indent);
    out.decimal(static_cast<uint64_t>(i), 8, '0');
    out.literal(" ");
    put_cells(out, array[i], std::min(array.size, kMaxElement));
    out.end_row();
}

const char *frame_type(uint8_t flags) {
    switch (flags & 0x30) {
        case 0x20: return " P";
        case 0x30: return " X";
        case 0x10: return " B";
        default: return " I";
    }
}

void put_index_entry(LineBuffer &out, int32_t i, const Array &array) {
    const Bytes entry = array[i];
    const uint8_t flags = entry[2];
    put_element(out, "    ", i, array);
    out.literal("             ");
    out.hex(mxfuint64(entry.from(3)), 16, ' ');
    for (uint64_t k = 0; k < 2; k++) {
        const int offset = static_cast<int8_t>(entry[k]);
        out.own(k ? " " : "  ");
        if (offset >= 0) out.literal(" ");
        out.signed_decimal(offset);
    }
    out.literal(" ");
    out.text(frame_type(flags));
    if (flags & 0x80) out.text(" Random");
    if (flags & 0x40) out.text(" Header");
    out.end_row();
}

void print_labels(DumpOptions &opts, Bytes buffer, uint64_t offset, const Array &array, ValueKind kind) {
    if (array.size != kLabelBytes) {
        mxferror(opts, buffer, offset + kArrayHeader, "size != 16");
        return;
    }
    constexpr const char *kReferences = "\n     References ";
    for (int32_t i = 0; array.take(i); i++) {
        switch (kind) {
            case ValueKind::weak_reference_array:
                print_named(opts, "    WeakReference ", array[i], kReferences);
                break;
            case ValueKind::auid_array: print_named(opts, "    AUID ", array[i], kReferences); break;
            case ValueKind::universal_label_array:
                print_named(opts, "    Universallabel ", array[i], kReferences);
                break;
            default: print_strong_reference(opts, "    StrongReference ", array[i], kReferences);
        }
    }
}

void print_array(DumpOptions &opts, Bytes buffer, uint64_t offset, ValueKind kind, const char *title,
                 Budget &budget) {
    const Array array(buffer.from(offset), budget);
    print("   %s\n", own(title));
    if (array.count == 0) print("    Empty\n");
    if (kind == ValueKind::index_entry_array) {
        LineBuffer out;
        for (int32_t i = 0; array.take(i); i++) put_index_entry(out, i, array);
    } else if (kind == ValueKind::generic_array || kind == ValueKind::generic_batch) {
        print_field_rows(big_endian(buffer.from(offset)), kArrayRows);
        LineBuffer out;
        for (int32_t i = 0; array.take(i); i++) put_element(out, "     ", i, array);
    } else {
        print_labels(opts, buffer, offset, array, kind);
    }
}

}  // namespace

void mxf_print_rp210data(DumpOptions &opts, Bytes buffer, uint64_t offset, uint32_t length, ValueKind kind) {
    Budget budget = Budget::of_bytes(buffer.size());
    mxf_print_rp210data(opts, buffer, offset, length, kind, budget);
}

void mxf_print_rp210data(DumpOptions &opts, Bytes buffer, uint64_t offset, uint32_t length, ValueKind kind,
                         Budget &budget) {
    const Bytes value = buffer.from(offset);
    const auto array = [&](const char *title) { print_array(opts, buffer, offset, kind, title, budget); };
    switch (kind) {
        case ValueKind::node: print("   Node\n"); break;
        case ValueKind::unknown: print_unknown(value, length); break;
        case ValueKind::ascii: print_text("Ascii", value, length, 1); break;
        case ValueKind::unicode: print_text("Unicode", value, length, 2); break;
        case ValueKind::boolean: print("   Boolean %s\n", value[0] ? "True" : "False"); break;
        case ValueKind::uint16: print("   Uint16 %d/%04x\n", mxfuint16(value), mxfuint16(value)); break;
        case ValueKind::uint32:
            print("   Uint32 %d/%08x\n", big_endian(value).s32(0), mxfuint32(value));
            break;
        case ValueKind::uint8: print("   Uint8  %d/%02x\n", value[0], value[0]); break;
        case ValueKind::strong_reference:
            print_strong_reference(opts, "   StrongReference ", value, "\n    References ");
            break;
        case ValueKind::rational: print_rational(value); break;
        case ValueKind::uint64: {
            const unsigned long long number = mxfuint64(value);
            print("   Uint64 %lld/%016llx\n", static_cast<long long>(number), number);
            break;
        }
        case ValueKind::uuid:
            print("   UUID   ");
            printuuid(opts, value);
            print("\n");
            break;
        case ValueKind::version_type: print("   VersionType %d.%d\n", value[0], value[1]); break;
        case ValueKind::timestamp: print_timestamp("   Timestamp ", value); break;
        case ValueKind::package_id: print_package_id(opts, buffer, offset); break;
        case ValueKind::weak_reference:
            print_named(opts, "   WeakReference ", value, "\n    References ");
            break;
        case ValueKind::universal_label: print_named(opts, "   UniversalLabel    ", value, "\n    "); break;
        case ValueKind::weak_reference_array: array("WeakReferenceArray"); break;
        case ValueKind::strong_reference_array: array("StrongReferenceArray"); break;
        case ValueKind::guid:
            print("   GUID   ");
            printuuid(opts, value);
            print("\n");
            break;
        case ValueKind::auid: print_named(opts, "   AUID   ", value, "  "); break;
        case ValueKind::auid_array: array("AUIDArray"); break;
        case ValueKind::universal_label_array: array("UniversallabelArray"); break;
        case ValueKind::version_numbers: print_version_numbers(value, length); break;
        case ValueKind::index_entry_array: array("IndexEntryArray"); break;
        case ValueKind::generic_array: array("GenericArray"); break;
        case ValueKind::generic_batch: array("GenericBatch"); break;
        case ValueKind::data7:
        case ValueKind::data8:
        default: mxfhexdump(buffer, offset, length);
    }
}
