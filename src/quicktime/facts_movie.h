// What the readers of a movie's facts share: boxes, tracks, sample tables.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "common/boxes.h"
#include "common/codecs.h"
#include "common/facts.h"
#include "common/input.h"

// A track's tables (ISO 14496-12, 8.7): how far its samples reach follows by arithmetic.
struct SampleTable {
    explicit SampleTable(Bytes stbl);
    uint64_t size_of(uint64_t sample) const;
    // Of all samples, which needs a read of their sizes; nothing where entries are missing.
    std::optional<uint64_t> bytes() const;
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
    std::string mirrored;
    std::string language;
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

// Names, the reel and what wrote the file: user data, iTunes and QuickTime metadata.
void read_metadata(Bytes moov, Facts &facts);

// Fragments (moof) behind the movie's header: samples, duration and extent.
void read_fragments(Input &input, uint64_t from, Bytes extends, std::vector<Track> &tracks, Facts &facts);

// Bits a second of a track, by the bytes of its samples and the ticks that they last.
void set_bit_rate(const Track &track, uint64_t bytes, uint64_t ticks, Facts &facts);

// Whether the last sample of a track, or its tail, was never written.
bool is_unwritten(Input &input, const Track &track, uint64_t end, uint64_t size);
