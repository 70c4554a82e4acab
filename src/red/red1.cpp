// Version 1 files: chunks one behind the other, with tables that repeat the offset and size of every frame
// and audio packet.
#include <algorithm>
#include <cstdio>
#include <cstring>
#include <vector>

#include "common/field_rows.h"
#include "common/print.h"
#include "common/stream.h"
#include "red/chunks.h"
#include "red/red.h"
#include "red/values.h"

namespace {

constexpr uint32_t kPayloadRead = 16384;
constexpr size_t kRemembered = 8192;  // frames and packets that the tables are compared with
constexpr uint32_t kHexDumped = 4096;
constexpr unsigned kFramesShown = 9;    // without -v
constexpr unsigned kPacketsShown = 10;  // without -v

// clang-format off
// Header and end marker, from the chunk's first byte on.
constexpr FieldRow kSizeRows[] = {
    {52, Field::dec32, " xsize    "},
    {56, Field::dec32, " ysize    "},
};
constexpr FieldRow kEndRows[] = {
    {8, Field::hex32, " RDVO         "},
    {12, Field::hex32, " RDVS         "},
    {16, Field::hex32, " RDA0         "},
    {20, Field::hex32, " RDAS         "},
    {24, Field::dec32, " Videoframes  "},
    {28, Field::dec32, " Audioframes  "},
    {32, Field::hex32, " EOF          "},
    {36, Field::hex32_slash, " MaxVideo     "},
    {40, Field::hex32_slash, " MaxAudio     "},
};
// clang-format on

struct Place {
    uint32_t size;
    uint32_t offset;
};

// The video frames or the audio packets that the walk has passed.
struct Track {
    unsigned seen = 0;
    std::vector<Place> places;

    void add(const RedChunk &chunk) {
        if (seen < kRemembered) places.push_back({chunk.size, chunk.offset()});
        seen++;
    }
};

struct Walk {
    const DumpOptions &opts;
    Track frames = {};
    Track packets = {};
    bool frame_offsets = false;
    bool frame_sizes = false;
    bool packet_offsets = false;
    bool packet_sizes = false;
    bool end_marker = false;
};

void print_header(Bytes chunk) {
    forget();
    print_field_rows(big_endian(chunk), kSizeRows);
    print(" fps      %d/%d\n", static_cast<int32_t>(red32(chunk, 60)), red16(chunk, 64));
}

void print_frame(Walk &walk, const RedChunk &chunk) {
    const unsigned index = walk.frames.seen;
    walk.frames.add(chunk);
    if (!walk.opts.verbose && index >= kFramesShown) return;
    print("frame %d\n", index);
    redinfodump(walk.opts, chunk.held.from(kChunkHeader), chunk.size);
}

void print_packet(Walk &walk, const RedChunk &chunk) {
    const unsigned index = walk.packets.seen;
    walk.packets.add(chunk);
    if (walk.opts.verbose || index < kPacketsShown) print("packet %d\n", index);
}

// The entries of a table that have a frame or packet to be compared with.
size_t compared_entries(const RedChunk &chunk, const Track &track) {
    return std::min<size_t>(chunk.payload_held() / 4, track.places.size());
}

void print_offsets(const RedChunk &chunk, const Track &track) {
    forget();
    for (size_t i = 0; i < compared_entries(chunk, track); i++) {
        const uint32_t offset = red32(chunk.held, kChunkHeader + 4 * i);
        const uint32_t found = track.places[i].offset;
        if (offset == found) {
            print(" Frame %06d Offset %08x\n", static_cast<int>(i), found);
        } else {
            print(" Frame %06d Offset %08x File %08x !\n", static_cast<int>(i), offset, found);
        }
    }
}

void print_sizes(const RedChunk &chunk, const Track &track) {
    forget();
    for (size_t i = 0; i < compared_entries(chunk, track); i++) {
        const uint32_t size = red32(chunk.held, kChunkHeader + 4 * i);
        const uint32_t found = track.places[i].size;
        if (size == found) {
            print(" Frame %06d Size %08x / %d\n", static_cast<int>(i), found, static_cast<int32_t>(found));
        } else {
            print(" Frame %06d Size %08x File %08x !\n", static_cast<int>(i), size, found);
        }
    }
}

// Prints what is known of a chunk; false for the types that a hex dump is of use for.
bool describe(Walk &walk, const RedChunk &chunk) {
    if (is_type(chunk, "RED1")) {
        print_header(chunk.held);
    } else if (is_type(chunk, "REDV")) {
        print_frame(walk, chunk);
    } else if (is_type(chunk, "REDA")) {
        print_packet(walk, chunk);
    } else if (!is_type(chunk, "RPAD")) {
        return false;
    }
    return true;
}

void print_tables(Walk &walk, const RedChunk &chunk) {
    if (is_type(chunk, "RDVO")) {
        print_offsets(chunk, walk.frames);
        walk.frame_offsets = true;
    } else if (is_type(chunk, "RDVS")) {
        print_sizes(chunk, walk.frames);
        walk.frame_sizes = true;
    } else if (is_type(chunk, "RDAO")) {
        print_offsets(chunk, walk.packets);
        walk.packet_offsets = true;
    } else if (is_type(chunk, "RDAS")) {
        print_sizes(chunk, walk.packets);
        walk.packet_sizes = true;
    } else if (is_type(chunk, "REOB") || is_type(chunk, "REOF") || is_type(chunk, "REOS")) {
        print_field_rows(big_endian(chunk.held), kEndRows);
        walk.end_marker = true;
    }
}

void print_chunk(Walk &walk, const RedChunk &chunk) {
    const bool described = describe(walk, chunk);
    if (!described) print_tables(walk, chunk);
    if (walk.opts.verbose >= (described ? 3 : 2)) {
        redhexdump(chunk.held.sub(0, std::min(chunk.size, kHexDumped)), chunk.offset());
    }
}

void print_missing(const Walk &walk) {
    if (!walk.frame_offsets) print("Marker RDVO missing\n");
    if (!walk.frame_sizes) print("Marker RDVS missing\n");
    if (!walk.packet_offsets) print("Marker RDAO missing\n");
    if (!walk.packet_sizes) print("Marker RDAS missing\n");
    if (!walk.end_marker) print("Marker REOB/REOF/REOS missing\n");
}

}  // namespace

void reddumpv1(DumpOptions &opts, Input &input) {
    print("Fileformat:R3D\n");
    ChunkReader reader(input, kPayloadRead, 1);
    Walk walk{.opts = opts};
    RedChunk chunk;
    for (uint64_t position = 0; reader.read_header(position, chunk); position = reader.behind(chunk)) {
        print_chunk_line(chunk, 4);
        if (!reader.read_payload(chunk)) break;
        print_chunk(walk, chunk);
        if (chunk.size == 0) break;
    }
    print_missing(walk);
}
