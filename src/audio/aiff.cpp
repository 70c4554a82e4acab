// AIFF and AIFF-C: a chunk walk in big-endian order.

#include "audio/audio.h"
#include "audio/samples.h"
#include "common/field_rows.h"
#include "common/print.h"
#include "common/stream.h"
#include "common/values.h"

namespace {

constexpr uint64_t kFirstChunk = 12;
constexpr uint64_t kChunkHeader = 8;
constexpr uint64_t kSoundHeader = 8;  // offset and block size before the samples

// clang-format off
constexpr FieldRow kCommonRows[] = {
    {0, Field::dec16, "  Channels "},
    {2, Field::dec32, "  Samples  "},
    {6, Field::dec16, "  Bits     "},
};
// From the chunk's header on.
constexpr FieldRow kSoundRows[] = {
    {4, Field::dec32, "  Size     "},
    {8, Field::dec32, "  Offset   "},
};
// clang-format on

struct Walk {
    DumpOptions &opts;
    Input &input;
    Budget budget;
    // From the common chunk; zeros before it.
    uint32_t channels = 0;
    uint32_t frames = 0;
    uint32_t bits = 0;
};

void print_common(Walk &walk, Bytes payload) {
    print(" COMM\n");
    print_field_rows(big_endian(payload), kCommonRows);
    walk.channels = big16(payload, 0);
    walk.frames = big32(payload, 2);
    walk.bits = big16(payload, 6);
}

// False when the samples cannot be reached.
bool print_sound(Walk &walk, Bytes chunk, uint64_t position) {
    print(" SSND\n");
    print_field_rows(big_endian(chunk), kSoundRows);
    const int32_t offset = static_cast<int32_t>(big32(chunk, kChunkHeader));
    const int64_t samples = static_cast<int64_t>(position + kChunkHeader + kSoundHeader) + offset;
    behind_position(2);
    only_field();
    print("PTR %08x\n", static_cast<uint32_t>(samples));
    if (!walk.opts.flag_a && !walk.opts.flag_t) return true;
    if (!walk.input.has_place(samples)) {
        print("Error: seek failed\n");
        return false;
    }
    audio_samplesdump(walk.opts, walk.input, static_cast<uint64_t>(samples), walk.frames, walk.channels,
                      walk.bits, 0, walk.budget);
    return true;
}

void walk_chunks(Walk &walk, Bytes form) {
    for (uint64_t position = kFirstChunk; form.has(position, kChunkHeader);) {
        const Bytes chunk = form.from(position);
        const uint32_t size = big32(chunk, 4);
        if (position + kChunkHeader > walk.input.end()) return;
        from(chunk, 0, kChunkHeader);
        print(" Elem ");
        label_begins(false);
        print("%c%c%c%c", chunk[0], chunk[1], chunk[2], chunk[3]);
        label_ends();
        print(" length %d\n", static_cast<int32_t>(size));
        if (bytes_are(chunk, 0, "COMM")) {
            print_common(walk, chunk.from(kChunkHeader));
        } else if (bytes_are(chunk, 0, "SSND")) {
            if (!print_sound(walk, chunk, position)) return;
        } else {
            behind_position(1);
            print("Unknown\n");
        }
        position += (uint64_t{size} + 9) & ~uint64_t{1};
    }
}

}  // namespace

void aiffdump(DumpOptions &opts, Bytes header, const char *name) {
    const uint32_t size = big32(header, 4);
    print("Fileformat:AIFF\n");
    from(header, 4, 4);
    print(" Size:            %lld\n", static_cast<long long>(size));
    print(" Magic:           %c%c%c%c\n", header[8], header[9], header[10], header[11]);
    const NamedInput input(name);
    if (!input) {
        print("Error: Could not open file '%s'\n", name);
        return;
    }
    if (!is_addressable(size)) {
        print("Error: Failed to allocate buffer %lld bytes\n", static_cast<long long>(size));
        return;
    }
    const uint64_t available = input->size();
    if (available < size) {
        print("Error: Could only read %d bytes of %lld\n", static_cast<int>(available),
              static_cast<long long>(size));
        return;
    }
    Walk walk{opts, *input, Budget(available)};
    walk_chunks(walk, input->bytes(0, size, 512));
}
