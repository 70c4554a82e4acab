// Metadata records: a length that counts these 3 bytes, a type and an id of a byte each, then the value.
#include <algorithm>
#include <cstring>

#include "common/names.h"
#include "common/print.h"
#include "common/stream.h"
#include "red/chunks.h"
#include "red/values.h"

namespace {

constexpr uint64_t kScanned = 256;  // positions at which a run of records may begin
constexpr uint64_t kRecordHeader = 3;
constexpr int64_t kTail = 16;  // bytes at a chunk's end in which no record begins

constexpr uint8_t kString = 0x10;
constexpr uint8_t kFloat = 0x20;
constexpr uint8_t kInt16 = 0x40;
constexpr uint8_t kLastType = 0x60;

constexpr CodeName kTimecodeLabels[] = {
    {0, " timecode_edge      : "},
    {1, " timecode_absolute  : "},
    {41, " timecode_start     : "},
};

struct Record {
    uint32_t position;
    int length;
    uint8_t type;
    uint8_t id;

    int value_length() const { return length - static_cast<int>(kRecordHeader); }
};

const char *value_text(const Record &record, Bytes value) {
    switch (record.type) {
        case kString: return redstring(record.value_length(), value, 0);
        case kFloat: return redfloat(record.value_length(), value, 0);
        case kInt16: return redint16(record.value_length(), value, 0);
        default: return redhexscan(record.value_length(), value, 0);
    }
}

// The bytes that a value's text is made of.
uint64_t used_of(const Record &record, const char *text) {
    const uint64_t length = static_cast<uint64_t>(std::max(record.value_length(), 0));
    switch (record.type) {
        case kString: return std::min<uint64_t>(std::strlen(text) + 1, length);
        case kFloat: return length < 4 ? 0 : 4;
        case kInt16: return length < 2 ? 0 : 2;
        default: return length;
    }
}

void print_record_line(const Record &record, const char *text) {
    print("%08x", record.position);
    behind_position();
    print(" %d %2d %2d '%s'\n", record.type, record.length, record.id, text);
}

void print_timecode(uint8_t id, const char *text) {
    if (const char *label = name_of(kTimecodeLabels, id, nullptr)) print("%s%s\n", own(label), text);
}

void print_record(const DumpOptions &opts, const Record &record, Bytes bytes) {
    const Bytes value = bytes.from(kRecordHeader);
    from(bytes, 0, static_cast<uint64_t>(record.length));
    if (opts.verbose >= 2) print_record_line(record, redhexscan(record.value_length(), value, 0));
    const char *text = value_text(record, value);
    const uint64_t used = listening ? used_of(record, text) : 0;
    from(bytes, 0, kRecordHeader + used);
    if (opts.verbose >= 1) print_record_line(record, text);
    from(bytes, 1, kRecordHeader - 1 + used);
    if (record.type == kString) print_timecode(record.id, text);
    forget();
}

// The records from a position on; the position behind the last one.
uint64_t print_run(const DumpOptions &opts, Bytes block, uint32_t size, uint64_t position) {
    Record record;
    do {
        record = {static_cast<uint32_t>(position), block[position], block[position + 1], block[position + 2]};
        print_record(opts, record, block.from(position));
        position += static_cast<uint64_t>(record.length);
    } while (record.length != 0 && record.type <= kLastType && position < block.size() &&
             static_cast<int64_t>(position) < int64_t{size} - kTail);
    return position;
}

}  // namespace

void redinfodump(const DumpOptions &opts, Bytes block, uint32_t size) {
    for (uint64_t position = 0; position < kScanned; position++) {
        if (bytes_are(block, position, "\x0F\x10\0")) position = print_run(opts, block, size, position);
    }
    forget();
}
