// What the readers of a movie's facts share: boxes, tracks, sample tables.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "common/bytes.h"
#include "common/facts.h"
#include "common/input.h"

constexpr uint32_t fourcc(const char (&type)[5]) {
    uint32_t code = 0;
    for (int i = 0; i < 4; i++) code = code << 8 | static_cast<uint8_t>(type[i]);
    return code;
}

struct Box {
    uint32_t type = 0;
    uint64_t at = 0;      // of its header, in what holds it
    uint64_t size = 0;    // with its header, as claimed
    uint64_t header = 8;  // bytes of its header
    Bytes data;           // what there is behind the header

    uint64_t end() const { return size < UINT64_MAX - at ? at + size : UINT64_MAX; }
};

// The box at an offset; its size is 0 for what is none. A size field of 0 reaches to the end.
Box box_at(Bytes holder, uint64_t at);
Bytes find_box(Bytes holder, uint32_t type);

template <typename Use>
void each_box(Bytes holder, Use use) {
    uint64_t at = 0;
    for (int i = 0; i < 10000 && holder.has(at, 8); i++) {
        const Box box = box_at(holder, at);
        if (box.size == 0) return;
        use(box);
        at = box.end();
    }
}

// A track's tables (ISO 14496-12, 8.7): how far its samples reach follows by arithmetic.
struct SampleTable {
    explicit SampleTable(Bytes stbl);
    uint64_t size_of(uint64_t sample) const;
    uint64_t chunk(uint64_t i) const { return wide ? big64(chunks, 8 + 8 * i) : big32(chunks, 8 + 4 * i); }

    Bytes times;   // stts
    Bytes sizes;   // stsz or stz2
    Bytes chunks;  // stco or co64
    Bytes runs;    // stsc
    uint64_t samples = 0;
    uint32_t constant_size = 0;
    unsigned size_bits = 32;
    bool wide = false;
    uint64_t chunk_count = 0;  // with bytes there
};

struct Track {
    uint32_t number = 0;  // from 1 on
    uint32_t id = 0;
    uint32_t handler = 0;
    bool enabled = true;
    bool is_external = false;  // its data is in another file
    int64_t timescale = 0;
    int64_t duration = 0;  // of its media, in its time scale
    uint32_t width = 0;    // of the track header, as shown with square pixels; 0 where it has none
    uint32_t height = 0;
    int rotation = 0;
    std::string language;
    Bytes media_information;
    Bytes table;  // stbl
    Bytes description;
    Bytes edits;
    uint32_t codec = 0;
    Ratio packet;              // bytes of a sample of uncompressed sound, n in d samples
    uint64_t in_fragment = 0;  // where its first sample is that a fragment has
    bool stuffed = false;      // its samples may end in zeros
    bool raw = false;          // zeros are a picture or silence
    bool dense = false;        // its samples hold no kilobytes of zeros
    int picture = -1;          // index in Facts
    int sound = -1;
    Ratio played;
};

// The sample description: codec, sizes and all that its boxes and the first sample say.
void read_picture_entry(Input &input, Track &track, Picture &picture, Facts &facts);
void read_sound_entry(Input &input, Track &track, Sound &sound);

// Fragments (moof) behind the movie's header: samples, duration and extent.
void read_fragments(Input &input, uint64_t from, Bytes extends, std::vector<Track> &tracks, Facts &facts);

// Whether the last sample of a track, or its tail, was never written.
bool is_unwritten(Input &input, const Track &track, uint64_t end, uint64_t size);
