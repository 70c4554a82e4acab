// Version 2 files: chunks that begin at multiples of 4096 bytes.
#include <algorithm>

#include "common/field_rows.h"
#include "common/print.h"
#include "common/stream.h"
#include "red/chunks.h"
#include "red/red.h"
#include "red/values.h"

namespace {

constexpr uint32_t kPayloadRead2 = 16376;
constexpr uint64_t kAlignment = 4096;
constexpr uint64_t kHexDumped2 = 4096;
constexpr unsigned kFramesCounted = 8192;
constexpr unsigned kFramesShown2 = 9;  // without -v

// The frame index: entries of three 32-bit values behind a header.
constexpr unsigned kIndexHeader = 17;  // 32-bit values before the first entry's last one
constexpr unsigned kIndexEntry = 3;

// clang-format off
// Header and end marker, from the chunk's first byte on.
constexpr FieldRow kSizeRows2[] = {
    {76, Field::dec32, " xsize    "},
    {80, Field::dec32, " ysize    "},
};
constexpr FieldRow kEndRows2[] = {
    {88, Field::hex32, " maxvideo    "},
    {92, Field::dec32, " videoframes "},
    {104, Field::dec16, " infosize    "},
};
// clang-format on

void print_header(const DumpOptions &opts, const RedChunk &chunk) {
    forget();
    print_field_rows(big_endian(chunk.held), kSizeRows2);
    print(" fps      %d/%d\n", static_cast<int32_t>(red32(chunk.held, 88)), red16(chunk.held, 86));
    redinfodump(opts, chunk.held, chunk.size);
}

void print_frame(const DumpOptions &opts, const RedChunk &chunk, unsigned &frames) {
    if (frames < kFramesCounted) frames++;
    if (!opts.verbose && frames > kFramesShown2) return;
    print("frame               : %d\n", frames);
    redinfodump(opts, chunk.held, chunk.size);
}

void print_index(const RedChunk &chunk, unsigned frames) {
    forget();
    const unsigned values = std::min(chunk.payload_held() / 4, frames);
    for (unsigned k = 0; kIndexHeader + kIndexEntry * k < values; k++) {
        const uint64_t entry = 68 + 12 * uint64_t{k};
        const uint32_t size = red32(chunk.held, entry + 8);
        print(" Frame %06d Offset:%08x%s %08x size:0x%08x/%d\n", k, red32(chunk.held, entry), "000",
              red32(chunk.held, entry + 4), size, static_cast<int32_t>(size));
    }
}

void print_end(const DumpOptions &opts, const RedChunk &chunk) {
    forget();
    const unsigned long long file_size = red64(chunk.held, 64);
    print(" filesize    %16llx / %lld\n", file_size, static_cast<long long>(file_size));
    print(" table_rii   %s%08x%s\n", "00000", red32(chunk.held, 84), "000");
    print_field_rows(big_endian(chunk.held), kEndRows2);
    redinfodump(opts, chunk.held, chunk.size);
}

void print_chunk(const DumpOptions &opts, const RedChunk &chunk, unsigned &frames) {
    if (is_type(chunk, "RDI")) {
        print_frame(opts, chunk, frames);
        return;
    }
    if (is_type(chunk, "RED")) print_header(opts, chunk);
    if (is_type(chunk, "RII")) print_index(chunk, frames);
    if (is_type(chunk, "REO")) print_end(opts, chunk);
    if (opts.verbose >= 2) redhexdump(chunk.held.sub(0, kHexDumped2), chunk.offset());
}

}  // namespace

void reddumpv2(DumpOptions &opts, Input &input) {
    print("Fileformat:R3D/V2\n");
    ChunkReader reader(input, kPayloadRead2, kAlignment);
    unsigned frames = 0;
    RedChunk chunk;
    for (uint64_t position = 0; reader.read_header(position, chunk); position = reader.behind(chunk)) {
        print_chunk_line(chunk, 3);
        if (!reader.read_payload(chunk)) return;
        print_chunk(opts, chunk, frames);
        if (chunk.size == 0) return;
    }
}
