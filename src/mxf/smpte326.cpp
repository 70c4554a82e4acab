#include "mxf/smpte326.h"

#include "common/field_rows.h"
#include "common/print.h"
#include "mxf/klv.h"

namespace {

constexpr uint32_t kTimecodeType = 0x81;
constexpr uint32_t kUmidType = 0x83;
constexpr uint32_t kDelayType = 0x87;
constexpr uint32_t kTimecodeSize = 17;

constexpr CodeName kElementNames[] = {
    {0x01, "MPEG-2 picture element"},
    {0x20, "VBI line element"},
    {0x21, "Ancillary data packet element"},
    {0x22, "General data element"},
    {0x40, "BWF element"},
    {0x41, "JFIF element"},
    {0x42, "TIFF element"},
    {0x80, "Metadata link"},
    {kTimecodeType, "SMPTE 12M time code metadata"},
    {0x82, "SMPTE 309M date-time stamp metadata"},
    {kUmidType, "SMPTE UMID metadata"},
    {0x84, "MPEG-2 picture editing metadata"},
    {0x85, "8-channel AES3 editing metadata"},
    {0x86, "Picture bit-stream splicing metadata"},
    {kDelayType, "MPEG decoder buffer delay metadata"},
    {0x88, "KLV metadata"},
    {0x89, "AES3 non-audio metadata"},
};

constexpr FieldRow kDelayRow = {1, Field::dec16, "    Delay "};

}  // namespace

uint32_t mxf_print_smpte326(DumpOptions &opts, Bytes buffer, uint64_t offset) {
    const Bytes e = buffer.from(offset);
    const uint32_t type = e[0];
    const char *name = name_of(kElementNames, type, nullptr);
    if (name) {
        print("   %s\n", name);
    } else {
        mxferror(opts, buffer, offset, "mxf_print_smpte326 elementype %d not known", type);
    }
    switch (type) {
        case kTimecodeType:
            print("    Timecode %02x:%02x:%02x:%02x UB %02x%02x%02x%02x", e[4] & 0x3F, e[3] & 0x7F,
                  e[2] & 0x7F, e[1] & 0x3F, e[8], e[7], e[6], e[5]);
            return kTimecodeSize;
        case kUmidType: return 3 + static_cast<uint32_t>(mxfuint16(e.from(1)));
        case kDelayType: print_field_row(big_endian(e), kDelayRow); return 3;
        default: mxferror(opts, buffer, offset, "mxf_print_smpte326 - not implemented"); return 1;
    }
}

double smpte326_cpp_rate(DumpOptions &opts, Bytes buffer, uint64_t offset) {
    constexpr double kRates[] = {0, 24, 25, 30, 48, 50, 60, 72, 75, 90, 96, 100, 120};
    const uint32_t code = (buffer[offset] & 0x3EU) >> 1;
    double rate = 0;
    if (code >= 1 && code < std::size(kRates)) {
        rate = kRates[code];
    } else {
        mxferror(opts, buffer, offset, "smpte326_cpp_rate wrong = %d", code);
    }
    return buffer[offset] & 0x01 ? rate / 1.001 : rate;
}
