// KLV items (SMPTE 336M): numbers, BER lengths, the codings of keys, error lines and the hex dump.
#pragma once

#include <cstdint>

#include "common/bytes.h"
#include "common/print.h"
#include "main/dump_options.h"

inline constexpr uint32_t kKeySize = 16;

// Big-endian numbers; bytes beyond the window are 0.
inline int mxfuint16(Bytes b) { return big16(b); }
inline uint32_t mxfuint32(Bytes b) { return big32(b); }
inline uint64_t mxfuint64(Bytes b) { return big64(b); }

// A BER length (SMPTE 377M-2004, 5.3.4): its value, and the bytes that tell it behind the first.
struct BerLength {
    uint64_t value = 0;
    uint32_t more = 0;
    bool is_allowed = true;  // 1 to 8 bytes where there are more
};
BerLength read_ber(Bytes buffer, uint64_t offset);

// The BER length at an offset, with error lines for what is not allowed; adds the bytes that it occupies to
// `counter`.
uint64_t mxfber(DumpOptions &opts, Bytes buffer, uint64_t offset, uint32_t *counter);

// What byte 5 of the key at an offset says of a group's coding: its name, the size of a local tag in bytes,
// and the item's length in the width that it selects (with the size of that length).
const char *mxfklvtype(DumpOptions &opts, Bytes buffer, uint64_t offset);
int mxftagsize(DumpOptions &opts, Bytes buffer, uint64_t offset);
uint64_t mxftag(DumpOptions &opts, Bytes buffer, uint64_t offset, uint32_t *size);

// Reports every byte of a range that is not zero; returns the count.
uint32_t mxf_check_for_zero(DumpOptions &opts, Bytes buffer, uint64_t offset, uint32_t count);

// One error line with an offset into the item. The format is literal text of ours, as that of print.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-nonliteral"
#pragma GCC diagnostic ignored "-Wformat-security"
template <typename... Values>
void mxferror(DumpOptions &, Bytes, uint64_t offset, const char *format, Values... values) {
    aside();
    print("MXFERROR @ 0x%08x ", static_cast<uint32_t>(offset));
    print(format, values...);
    print("\n");
}
#pragma GCC diagnostic pop

// Rows of 16 bytes with their offsets; bytes beyond the window show as 0.
void mxfhexdump(Bytes buffer, uint64_t offset, uint64_t length);

// Whether the bytes at an offset begin as a SMPTE universal label.
bool is_smpte_label(Bytes buffer, uint64_t offset);
