// RIFF (WAVE, AVI, CDXA, ...) and its 64-bit variant RF64 (EBU Tech 3306): a chunk walk in two passes.
#include <algorithm>

#include "audio/audio.h"
#include "audio/samples.h"
#include "common/field_rows.h"
#include "common/print.h"
#include "common/stream.h"
#include "common/values.h"

namespace {

constexpr int64_t kFirstRiffChunk = 12;
constexpr int64_t kRiffChunkHeader = 8;
constexpr int64_t kBufferSize = 65536;  // of a chunk's header and the payload that is looked at
constexpr int64_t kMaxPayload = kBufferSize - kRiffChunkHeader;
constexpr uint32_t kSmallestRead = 512;
constexpr int64_t kScanSize = 64;  // what the search for the format reads at each chunk
constexpr uint32_t kUnknownSize = 0xFFFFFFFF;
constexpr uint64_t kTable = 28;  // of the RF64 size chunk: sizes of further chunks
constexpr uint64_t kTableEntry = 12;

// clang-format off
constexpr FieldRow kFormatRows[] = {
    {0, Field::dec16, "   Format          "},
    {2, Field::dec16, "   Channels        "},
    {4, Field::dec32, "   Frequency       "},
    {8, Field::dec32, "   Bytespersecond  "},
    {12, Field::dec16, "   Blocksize       "},
    {14, Field::dec16, "   Bits            "},
};
// clang-format on

struct RiffWalk {
    DumpOptions &opts;
    Input &input;
    bool rf64;
    bool cdxa;
    Kept<int64_t> riff_size;
    Budget budget;
    // From the size chunk of RF64, in the first pass.
    FileRange sizes_id = {};  // where the file's size is told there
    Kept<int64_t> riff_size64 = {};
    Kept<int64_t> data_size = {};
    int64_t sample_count = 0;
    // From the format chunk: the rate in the first pass, the rest in the second.
    Kept<uint32_t> rate = {};
    uint32_t channels = 0;
    Kept<uint32_t> bytes_per_second = {};
    Kept<uint32_t> block_size = {};
    uint32_t bits = 0;

    // Bytes from an offset on, and how many there are: below 0 behind the end.
    Bytes at(int64_t offset, int64_t n) const {
        return input.bytes(static_cast<uint64_t>(offset), static_cast<uint64_t>(n), kSmallestRead);
    }
    int64_t left_from(int64_t offset) const { return static_cast<int64_t>(input.end()) - offset; }
};

struct Chunk {
    int64_t offset;
    Kept<int64_t> length;  // as listed; -1 for an unknown one
    uint32_t size_field;
    Bytes id;
    Bytes payload;  // what was read of it
};

// The next chunk starts at an even place behind the payload.
int64_t after_chunk(int64_t offset, int64_t length) { return offset + ((length + 9) & ~int64_t{1}); }

Kept<uint32_t> kept(Bytes field, unsigned n) {
    return {static_cast<uint32_t>(field.little(0, n)), field.sub(0, n).file_range()};
}
Kept<int64_t> kept64(Bytes field) { return {little_endian(field).s64(0), field.sub(0, 8).file_range()}; }

// The size of the walk's unit as a chunk's size field gives it: a signed 32-bit number.
Kept<int64_t> signed_size(Bytes field) { return {little_endian(field).s32(0), field.sub(0, 4).file_range()}; }

// Tells when a walk that sizes below 0 lead back comes by a place for the second time (Brent's method).
class CircleDetector {
 public:
    bool closed_by(int64_t offset) {
        if (offset == mark_) return true;
        if (++steps_ == lap_) {
            mark_ = offset;
            steps_ = 0;
            lap_ *= 2;
        }
        return false;
    }

 private:
    int64_t mark_ = -1;
    uint64_t steps_ = 0;
    uint64_t lap_ = 1;
};

// First pass: the sample rate, and the sizes of RF64. False when it could not be read.
bool scan_format(RiffWalk &walk) {
    CircleDetector circle;
    FileRange led_here;  // the size that leads to the chunk
    int64_t offset = kFirstRiffChunk;
    do {
        forget();
        also(led_here);
        if (!walk.input.has_place(offset)) {
            print("Error: Scanning for formattag, seek failed\n");
            return false;
        }
        const Bytes chunk = walk.at(offset, kScanSize);
        if (walk.left_from(offset) < kScanSize) {
            print("Error: Scanning for formattag, read failed\n");
            return false;
        }
        const Bytes payload = chunk.from(kRiffChunkHeader);
        if (bytes_are(chunk, 0, "fmt ")) {
            walk.rate = kept(payload.from(4), 4);
            return true;
        }
        if (walk.rf64 && bytes_are(chunk, 0, "ds64")) {
            walk.riff_size64 = kept64(payload);
            walk.data_size = kept64(payload.from(8));
            walk.sample_count = little_endian(payload).s64(16);
            if (walk.riff_size == -1) {
                walk.riff_size = walk.riff_size64;
                walk.sizes_id = chunk.sub(0, 4).file_range();
            }
        }
        led_here = chunk.sub(4, 4).file_range();
        offset = after_chunk(offset, signed_size(chunk.from(4)));
    } while (offset < walk.riff_size && !circle.closed_by(offset));
    return true;
}

void print_format(RiffWalk &walk, Bytes payload) {
    print("  FMT\n");
    print_field_rows(little_endian(payload), kFormatRows);
    walk.channels = little16(payload, 2);
    walk.bytes_per_second = kept(payload.from(8), 4);
    walk.block_size = kept(payload.from(12), 2);
    walk.bits = little16(payload, 14);
}

void print_size64(const char *label, Bytes field, int64_t value) {
    from(field, 0, 8);
    print("%s%08x%08x (%lld)\n", own(label), little32(field, 4), little32(field, 0),
          static_cast<long long>(value));
}

void print_sizes(const RiffWalk &walk, Bytes payload) {
    const int32_t entries = static_cast<int32_t>(little32(payload, 24));
    print_size64("   Size            ", payload, walk.riff_size64);
    print_size64("   Datasize        ", payload.from(8), walk.data_size);
    print_size64("   Samplecount     ", payload.from(16), walk.sample_count);
    print_field_row(little_endian(payload), {24, Field::dec32, "   Tablelength     "});
    for (int32_t i = 0; i < entries; i++) {
        const uint64_t offset = kTable + kTableEntry * static_cast<uint64_t>(i);
        if (!payload.has(offset, kTableEntry)) return;
        const Bytes entry = payload.from(offset);
        forget();
        print("    Elem           %c%c%c%c\n", entry[0], entry[1], entry[2], entry[3]);
        print_size64("    Size           ", entry.from(4), little_endian(entry).s64(4));
    }
}

void print_cdxa(const Chunk &chunk) {
    print("  CDXA\n");
    from({static_cast<uint64_t>(chunk.offset) + 4, 4});
    print("              %08x\n", chunk.size_field);
    for (uint64_t i = 0; i < 6; i++) print("              %08x\n", little32(chunk.payload, 4 * i));
}

void print_time(const char *label, int64_t seconds, int64_t milliseconds) {
    only_field();
    print("%s%s.%03d\n", own(label),
          clock_text(static_cast<int>(seconds / 3600), static_cast<int>(seconds / 60 % 60),
                     static_cast<int>(seconds % 60)),
          static_cast<int>(milliseconds));
}

void print_play_length(const Kept<int64_t> &length, const Kept<uint32_t> &bytes_per_second) {
    const uint32_t rate = bytes_per_second.shown();
    const int64_t bytes = rate ? length.shown() : 0;
    const int64_t seconds = rate ? bytes / rate : 0;
    const int64_t milliseconds = rate ? bytes % rate * 1000 / rate : 0;
    print_time("   Length          ", seconds, milliseconds);
}

void print_data(RiffWalk &walk, const Chunk &chunk) {
    print("  DATA\n");
    const int64_t samples =
        walk.channels && walk.block_size ? chunk.length.shown() / walk.block_size.shown() : 0;
    only_field();
    print("   Samples         %d\n", static_cast<int32_t>(samples));
    print_play_length(chunk.length, walk.bytes_per_second);
    if (!walk.opts.flag_a && !walk.opts.flag_t) return;
    audio_samplesdump(walk.opts, walk.input, static_cast<uint64_t>(chunk.offset + kRiffChunkHeader), samples,
                      walk.channels, walk.bits, 1, walk.budget);
}

// Broadcast Wave extension (EBU Tech 3285).
// clang-format off
constexpr FieldRow kBextTexts[] = {
    {0, Field::ascii, "   description        ", 64},
    {64, Field::ascii, "   description (long) ", 192},
    {256, Field::ascii, "   orginator          ", 32},
    {288, Field::ascii, "   orginatorreference ", 32},
    {320, Field::ascii, "   orginatordate      ", 10},
    {330, Field::ascii, "   orginatortime      ", 8},
};
constexpr FieldRow kBextVersion = {346, Field::dec16, "   version            "};
// clang-format on

void print_bext(const RiffWalk &walk, const Chunk &chunk) {
    const OrderedBytes payload = little_endian(chunk.payload);
    print("  Broadcast Wave\n");
    for (const FieldRow &row : kBextTexts) {
        if (chunk.length > row.offset + row.count) print_field_row(payload, row);
    }
    if (chunk.length >= 343 && walk.rate >= 1000) {
        const uint64_t reference = payload.u64(338);
        const uint64_t seconds = reference / walk.rate.shown();
        print_time("   timerreference     ", static_cast<int64_t>(seconds % 86400),
                   static_cast<int64_t>(reference % walk.rate / (walk.rate / 1000)));
    }
    if (chunk.length > 348) print_field_row(payload, kBextVersion);
}

void print_ixml(Bytes payload) {
    const unsigned width = static_cast<unsigned>(std::min<uint64_t>(payload.size(), 255));
    behind_position(2);
    print("%s\n", checkascii(payload, width));
}

void print_chunk(RiffWalk &walk, const Chunk &chunk) {
    print(" Elem ");
    label_begins(false);
    print("%c%c%c%c", chunk.id[0], chunk.id[1], chunk.id[2], chunk.id[3]);
    label_ends();
    print(" length %lld (offset:%16llx)\n", static_cast<long long>(chunk.length.shown()),
          static_cast<unsigned long long>(chunk.offset));
    if (bytes_are(chunk.id, 0, "fmt ")) {
        print_format(walk, chunk.payload);
    } else if (bytes_are(chunk.id, 0, "ds64")) {
        print_sizes(walk, chunk.payload);
    } else if (bytes_are(chunk.id, 0, "data")) {
        if (walk.cdxa) {
            print_cdxa(chunk);
        } else {
            print_data(walk, chunk);
        }
    } else if (bytes_are(chunk.id, 0, "iXML")) {
        print_ixml(chunk.payload);
    } else if (bytes_are(chunk.id, 0, "bext")) {
        print_bext(walk, chunk);
    } else if (bytes_are(chunk.id, 0, "umid")) {
        print("  Unique Material Identifier\n");
    } else {
        print("  Unknown\n");
    }
}

// Second pass: every chunk.
void walk_chunks(RiffWalk &walk) {
    for (int64_t offset = kFirstRiffChunk; offset < walk.riff_size;) {
        if (!walk.input.has_place(offset)) {
            print("Error: seek failed\n");
            return;
        }
        const Bytes bytes = walk.at(offset, kBufferSize);
        const int64_t available = walk.left_from(offset);
        if (available < kRiffChunkHeader) {
            print("Error: read failed\n");
            return;
        }
        forget();
        const uint32_t size_field = little32(bytes, 4);
        Kept<int64_t> length = signed_size(bytes.from(4));
        if (size_field == kUnknownSize && bytes_are(bytes, 0, "data")) length = walk.data_size;
        const int64_t payload = std::min(length.value, kMaxPayload);
        if (length < 0 || available - kRiffChunkHeader < payload) {
            from(length.at);
            print("Error: read failed %d @ %lld\n", static_cast<int>(kBufferSize),
                  static_cast<long long>(offset));
            return;
        }
        print_chunk(walk, {offset, length, size_field, bytes.sub(0, 4),
                           bytes.sub(kRiffChunkHeader, static_cast<uint64_t>(payload))});
        if (length > INT64_MAX - offset - 9) return;
        offset = after_chunk(offset, length);
    }
}

}  // namespace

void riffdump(DumpOptions &opts, Bytes header, const char *name, int rf64) {
    if (!name) {
        print("Error: riffdump, filename parameter is NULL\n");
        return;
    }
    const NamedInput input(name);
    if (!input) {
        print("Error: Could not open file '%s'\n", name);
        return;
    }
    RiffWalk walk{opts,
                  *input,
                  rf64 != 0,
                  bytes_are(header, 8, "CDXA"),
                  signed_size(header.from(4)),
                  Budget(input->size())};
    if (!is_addressable(input->size())) {
        print("Error: Failed to allocate buffer %lld bytes\n", static_cast<long long>(kBufferSize));
        return;
    }
    forget();  // an error is of all that was looked at
    also(walk.riff_size.at);
    if (!scan_format(walk)) return;
    from(header, 0, 4);
    print("Fileformat:%s\n", rf64 ? "RF64" : "RIFF");
    also(walk.sizes_id);
    print(" Size:            %lld\n", static_cast<long long>(walk.riff_size.shown()));
    print(" Magic:           %c%c%c%c\n", header[8], header[9], header[10], header[11]);
    walk_chunks(walk);
}
