#include "mxf/klv.h"

#include <algorithm>

#include "common/hexrow.h"
#include "common/names.h"

namespace {

// Byte 5 of a group's key: bits 7 to 5 the length's form, the lower ones the tag's.
constexpr CodeName kCodings[] = {
    {0x01, "UniversalSet"},
    {0x02, "GlobalSet/Length-BER"},
    {0x03, "Local/Length-BER/Tag-Byte"},
    {0x04, "Global/Length-BER"},
    {0x05, "FieldDescription"},
    {0x13, "Local/Length-BER/Tag-Short"},
    {0x1B, "Local/Length-BER/Tag-Long"},
    {0x22, "GlobalSet/Length-Byte"},
    {0x23, "Local/Length-Byte/Tag-Byte"},
    {0x24, "Global/Length-Byte"},
    {0x33, "Local/Length-Byte/Tag-Short"},
    {0x3B, "Local/Length-Byte/Tag-Long"},
    {0x42, "GlobalSet/Length-Short"},
    {0x43, "Local/Length-Short/Tag-Long"},
    {0x53, "Local/Length-Short/Tag-Long"},
    {0x5B, "Local/Length-Short/Tag-Long"},
    {0x44, "Global/Length-Short"},
    {0x62, "GlobalSet/Length-Long"},
    {0x63, "Local/Length-Long/Tag-Byte"},
    {0x64, "Global/Length-Long"},
    {0x73, "Local/Length-Long/Tag-Short"},
    {0x7B, "Local/Length-Long/Tag-Long"},
};

uint8_t coding(Bytes buffer, uint64_t offset) { return buffer[offset + 5]; }

}  // namespace

BerLength read_ber(Bytes buffer, uint64_t offset) {
    const uint8_t first = buffer[offset];
    if (first < 0x80) return {first};
    BerLength length{0, first - 0x80U, first > 0x80 && first <= 0x88};
    for (uint32_t i = 1; i <= length.more; i++) length.value = length.value << 8 | buffer[offset + i];
    return length;
}

uint64_t mxfber(DumpOptions &opts, Bytes buffer, uint64_t offset, uint32_t *counter) {
    const BerLength length = read_ber(buffer, offset);
    if (!length.is_allowed && length.more == 0) {
        mxferror(opts, buffer, 0, "mxfber : count value of 0x80 is not allowed (377M-2004:5.3.4)\n");
    } else if (!length.is_allowed) {
        mxferror(opts, buffer, 0, "mxfber : Max allowed count is 8 (377M-2004:5.3.4)\n");
    }
    if (counter) *counter += 1 + length.more;
    return length.value;
}

const char *mxfklvtype(DumpOptions &opts, Bytes buffer, uint64_t offset) {
    const char *name = name_of(kCodings, coding(buffer, offset), nullptr);
    if (name) return name;
    mxferror(opts, buffer, offset, "mxfklvtype");
    return "unknown";
}

int mxftagsize(DumpOptions &opts, Bytes buffer, uint64_t offset) {
    switch (coding(buffer, offset)) {
        case 0x03:
        case 0x23:
        case 0x43:
        case 0x63: return 1;
        case 0x13:
        case 0x33:
        case 0x53:
        case 0x73: return 2;
        case 0x1B:
        case 0x3B:
        case 0x5B:
        case 0x7B: return 4;
        default: mxferror(opts, buffer, 0, "mxftagsize"); return 0;
    }
}

uint64_t mxftag(DumpOptions &opts, Bytes buffer, uint64_t offset, uint32_t *size) {
    const uint64_t at = offset + kKeySize;
    uint32_t width = 0;
    uint64_t length = 0;
    switch (coding(buffer, offset)) {
        case 0x03:
        case 0x04:
        case 0x13:
        case 0x1B: length = mxfber(opts, buffer, at, &width); break;
        case 0x23:
        case 0x24:
        case 0x33:
        case 0x3B:
            length = buffer[at];
            width = 1;
            break;
        case 0x43:
        case 0x44:
        case 0x53:
        case 0x5B:
            length = static_cast<uint64_t>(mxfuint16(buffer.from(at)));
            width = 2;
            break;
        case 0x63:
        case 0x64:
        case 0x73:
        case 0x7B:
            length = mxfuint32(buffer.from(at));
            width = 4;
            break;
        default: mxferror(opts, buffer, 0, "mxflength");
    }
    if (size) *size = width;
    return length;
}

uint32_t mxf_check_for_zero(DumpOptions &opts, Bytes buffer, uint64_t offset, uint32_t count) {
    for (uint32_t i = 0; i < count; i++) {
        if (buffer[offset + i]) mxferror(opts, buffer, offset + i, "mxf_check_for_zero");
    }
    return count;
}

void mxfhexdump(Bytes buffer, uint64_t offset, uint64_t length) {
    constexpr HexRow kRow{.first_printable = 0x21};
    LineBuffer out;
    for (uint64_t i = 0; i < length; i += kRow.columns) {
        uint8_t row[kRow.columns];
        from(buffer, offset + i, kRow.columns);
        const uint64_t n = std::min<uint64_t>(length - i, kRow.columns);
        for (uint64_t k = 0; k < n; k++) row[k] = buffer[offset + i + k];
        out.hex((offset + i) & 0xFFFFFFFF, 8);
        out.put(' ');
        put_hexrow(out, {row, static_cast<size_t>(n)}, kRow);
    }
}

bool is_smpte_label(Bytes buffer, uint64_t offset) { return big32(buffer, offset) == 0x060E2B34; }
