// Transport stream packets (ISO/IEC 13818-1, 2.4.3).
#include <algorithm>

#include "common/hexrow.h"
#include "common/line_buffer.h"
#include "common/print.h"
#include "mpeg/mpeg.h"
#include "mpeg/reader.h"

namespace {

constexpr uint32_t kSyncByte = 0x47;
constexpr int64_t kHeader = 4;
constexpr int64_t kPayload = 184;    // bytes of a packet behind its header
constexpr int64_t kShownBytes = 16;  // of the payload

void put_digit(LineBuffer &out, uint32_t value) {
    out.literal(" ");
    out.decimal(value);
}

// Prints the adaptation field and moves behind it; returns the payload's size.
int64_t put_adaptation_field(LineBuffer &out, mpeg_reader &reader, uint32_t pid) {
    const int64_t length = mpegbits(reader, 8);
    const uint32_t flags = mpegbits(reader, 8);
    if (length > 1) mpegbytes(reader, length - 1);
    if (pid < 16 || pid > 8190) {
        out.literal("Control packet");
        out.end_row();
    }
    out.literal(" ");
    out.decimal(static_cast<uint64_t>(length), 2, '0');
    for (int i = 7; i >= 0; i--) put_digit(out, flags >> i & 1U);
    out.end_row();
    // A field of length 0 has no flags: what was read as such is the payload's first byte.
    return kPayload - 1 - std::max<int64_t>(length, 1);
}

void put_packet(LineBuffer &out, mpeg_reader &reader) {
    const uint32_t error = mpegbits(reader, 1);
    const uint32_t start = mpegbits(reader, 1);
    const uint32_t priority = mpegbits(reader, 1);
    const uint32_t pid = mpegbits(reader, 13);
    const uint32_t scrambling = mpegbits(reader, 2);
    const uint32_t adaptation = mpegbits(reader, 1);
    const uint32_t payload_flag = mpegbits(reader, 1);
    const uint32_t counter = mpegbits(reader, 4);
    if (listening)
        also(reader.file->bytes(), static_cast<uint64_t>(reader.position - kHeader), kHeader + kPayload);
    out.hex(static_cast<uint64_t>(reader.position) & 0xFFFFFFFF, 8);
    out.literal(": PACKET ");
    out.hex(pid, 3);
    out.literal("/");
    out.decimal(pid, 4, '0');
    for (const uint32_t field : {error, start, priority, scrambling, adaptation, payload_flag, counter}) {
        put_digit(out, field);
    }
    out.end_row();
    const int64_t payload = adaptation ? put_adaptation_field(out, reader, pid) : kPayload;
    // A packet that is all adaptation field has no payload; the bytes shown are then those of the next
    // packet.
    const int64_t shown = payload < 1 ? kShownBytes : std::min(payload, kShownBytes);
    for (int64_t i = 0; i < shown; i++) {
        char *cell = out.claim(3);
        *cell = ' ';
        write_hex(cell + 1, static_cast<uint8_t>(mpegbits(reader, 8)));
    }
    out.end_row();
    if (payload > shown) mpegbytes(reader, payload - shown);
}

}  // namespace

void tsdump(DumpOptions &, Input &input, int64_t start, char *) {
    print("Fileformat:TransportStream\n");
    mpeg_reader reader;
    mpegbufferinit(reader, input, start);
    LineBuffer out;
    while (mpegbits(reader, 8) == kSyncByte) put_packet(out, reader);
}
