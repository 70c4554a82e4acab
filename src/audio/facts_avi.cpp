#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <string_view>

#include "audio/facts_riff.h"
#include "common/codecs.h"
#include "common/elementary.h"
#include "common/values.h"
#include "main/facts_of.h"

namespace {

constexpr uint32_t kList = fourcc("LIST");
constexpr uint64_t kNear = 8192;  // bytes of the first chunks that are read together

void set_codec(uint32_t code, uint32_t depth, Picture &picture) {
    if (code == 0 || code == 0x03000000 || type_text(code) == "DIB" || type_text(code) == "RGB") {
        picture.codec = "uncompressed";
        picture.components = depth <= 8 ? "palette" : depth == 32 ? "RGBA" : "RGB";
        picture.bits = depth <= 8 ? depth : depth == 16 ? 5 : 8;
        return;
    }
    const PictureCodec codec = picture_codec(code);
    picture.codec = codec.codec[0] != 0 ? codec.codec : type_text(code);
    picture.components = codec.components;
    picture.bits = codec.bits;
}

struct Avi {
    Input &input;
    Facts &facts;
    int64_t frames_of_all_parts = -1;  // of an OpenDML header
    uint64_t last_index = 0;           // where the last standard index ends
    bool has_length = false;
    bool is_indexed = false;  // by the header's flags
    uint64_t told_end = 0;    // of the parts, by their own sizes
    bool has_index = false;
    bool is_streamed = false;
    bool has_zeros = false;  // in the place of a chunk
    bool is_interleaved = false;
    uint64_t end = 0;  // of its parts
    Bytes first = {};  // chunks of frames
    Bytes setup = {};  // what the first picture's format has behind its fields
    uint32_t streams = 0;
    struct Stream {
        uint32_t number = 0;  // as its chunks have it: "00d", without what follows the "d" or "w"
        Bytes super_index = {};
    };
    Stream picture = {};  // the first one, and the first sound
    Stream sound = {};
    Bytes index = {};  // idx1
};

// Bytes of a stream's chunks by the index of the file or those of its parts (OpenDML); 0 where that is not
// there, or takes too much reading.
uint64_t indexed_bytes(Avi &avi, const Avi::Stream &stream) {
    constexpr uint64_t kMost = 2 << 20;
    constexpr uint64_t kMostParts = 32;
    uint64_t sum = 0;
    const auto add = [&](Bytes index, uint64_t step, uint64_t size_at) {
        const std::span<const uint8_t> bytes = index.span(0, index.size());  // one read
        const Bytes entries(bytes.data(), bytes.size());
        for (uint64_t at = 0; entries.has(at, step); at += step) {
            const bool is_one = step == 8 || big32(entries, at) >> 8 == stream.number;
            if (is_one) sum += little32(entries, at + size_at) & 0x7FFFFFFF;  // without its flag
        }
    };
    const uint64_t parts = little32(stream.super_index, 4);
    if (parts == 0 && avi.index.size() <= kMost) add(avi.index, 16, 12);
    for (uint64_t i = 0; i < parts; i++) {
        const uint64_t size = little32(stream.super_index, 24 + 16 * i + 8);
        if (parts > kMostParts || size > kMost / parts || size < 32) return 0;
        const Bytes index = avi.input.present(little64(stream.super_index, 24 + 16 * i), size);
        const uint64_t n = little32(index, 12);
        if (!index.has(32, 8 * n)) return 0;
        add(index.sub(32, 8 * n), 8, 4);
    }
    return sum;
}

void read_super_index(Bytes indx, Avi &avi) {
    const uint64_t n =
        std::min<uint64_t>(little32(indx, 4), (indx.size() - std::min<uint64_t>(indx.size(), 24)) / 16);
    if (indx[3] != 0 || n == 0) return;
    const uint64_t at = 24 + 16 * (n - 1);
    const uint64_t offset = little64(indx, at);
    if (offset < INT64_MAX) avi.last_index = std::max(avi.last_index, offset + little32(indx, at + 8));
}

void read_stream(Bytes list, Avi &avi) {
    Bytes header;
    Bytes format;
    Bytes properties;
    Bytes index;
    each_chunk(list, 4, list.size(), false, [&](const Chunk &chunk) {
        if (chunk.type == fourcc("strh")) header = chunk.data;
        if (chunk.type == fourcc("strf")) format = chunk.data;
        if (chunk.type == fourcc("vprp")) properties = chunk.data;
        if (chunk.type == fourcc("indx")) index = chunk.data;
        return true;
    });
    read_super_index(index, avi);
    const uint32_t stream = avi.streams++;
    const uint32_t number = ('0' + stream / 10) << 8 | ('0' + stream % 10);
    const Ratio rate = rate_of(int64_t{little32(header, 24)}, int64_t{little32(header, 20)});
    // What a writer to a pipe leaves is a length that no stream has.
    const int64_t told = little32(header, 32);
    const int64_t length = told >= 1 << 30 ? 0 : told;
    avi.has_length = avi.has_length || told > 0;
    const bool is_interleaved = bytes_are(header, 0, "iavs");  // DV with its sound
    if (bytes_are(header, 0, "vids") || is_interleaved) {
        Picture picture;
        picture.width = little32(format, 4);
        picture.height = static_cast<uint32_t>(std::abs(int64_t{static_cast<int32_t>(little32(format, 8))}));
        set_codec(is_interleaved ? big32(header, 4) : big32(format, 16), little16(format, 14), picture);
        if (avi.facts.pictures.empty()) {
            avi.is_interleaved = is_interleaved;
            avi.setup = format.from(40);
            avi.picture = {number << 8 | (is_interleaved ? '_' : 'd'), index};
        }
        picture.rate = rate;
        if (rate.is_set()) picture.constant_rate = true;
        if (length > 0) picture.frames = length;
        const int64_t n = little16(properties, 22);
        const int64_t d = little16(properties, 20);
        if (n > 0 && d > 0 && picture.width > 0)
            picture.pixel_aspect = Ratio{n * picture.height, d * picture.width}.reduced();
        avi.facts.pictures.push_back(picture);
    } else if (bytes_are(header, 0, "auds")) {
        Sound sound;
        const uint64_t block = wave_format(format, sound);
        const int64_t ticks = rate.is_set() ? length : 0;
        // A stream's length is in its own units, which are samples where those are of one size.
        if (ticks > 0 && block > 0 && little32(header, 44) == block) sound.samples = ticks;
        if (ticks > 0 && sound.samples < 0 && sound.rate.is_set())
            sound.samples = std::llround(static_cast<double>(ticks) / rate.value() * sound.rate.value());
        if (avi.facts.sounds.empty()) avi.sound = {number << 8 | 'w', index};
        avi.facts.sounds.push_back(sound);
    }
}

void read_headers(Bytes list, Avi &avi) {
    each_chunk(list, 4, list.size(), false, [&](const Chunk &chunk) {
        if (chunk.type == fourcc("avih")) avi.is_indexed = (little32(chunk.data, 12) & 0x10) != 0;
        if (chunk.type == kList && bytes_are(chunk.data, 0, "strl")) read_stream(chunk.data, avi);
        if (chunk.type == kList && bytes_are(chunk.data, 0, "odml"))
            avi.frames_of_all_parts = little32(chunk.data, 12);
        return true;
    });
}

// A part: 'RIFF' with 'AVI ' or, behind the first GiB, 'AVIX'.
void read_part(Bytes file, uint64_t at, uint64_t end, Avi &avi) {
    each_chunk(file, at + 12, end, false, [&](const Chunk &chunk) {
        avi.end = std::max(avi.end, chunk.end);
        const uint64_t size = chunk.end - chunk.start;
        if (chunk.type == fourcc("idx1")) {
            avi.has_index = chunk.end <= file.size();
            if (avi.has_index) avi.index = chunk.data;
            avi.has_zeros = avi.has_index && size >= 16 && is_zero(avi.index.from(size - 16));
        }
        if (chunk.type != kList) return true;
        if (bytes_are(chunk.data, 0, "hdrl")) read_headers(chunk.data, avi);
        if (bytes_are(chunk.data, 0, "INFO")) {
            each_chunk(chunk.data, 4, chunk.data.size(), false, [&](const Chunk &text) {
                if (text.type == fourcc("ISFT")) avi.facts.writer = fixed_text(text.data, 0, 256);
                return true;
            });
        }
        if (!bytes_are(chunk.data, 0, "movi")) return true;
        if (avi.first.empty()) {
            avi.input.present(chunk.start + 4, kNear);  // one read
            avi.first = file.from(chunk.start + 4);
        }
        avi.is_streamed = size == 0 || size == 4 || size >= 0x7F000000;
        return !avi.is_streamed;
    });
    const uint64_t next = avi.end + avi.end % 2;
    if (!avi.is_streamed && next + 8 <= end && file.has(next, 8) && big64(file, next) == 0)
        avi.has_zeros = true;
}

// The data of the first chunk of a stream ("00dc", "01wb", "00__"): others, or an index, may come before it.
Bytes first_chunk(Bytes chunks, const Avi::Stream &stream) {
    uint64_t at = 0;
    for (int i = 0; i < (at < kNear ? 64 : 8) && chunks.has(at, 8); i++) {
        const uint64_t size = little32(chunks, at + 4);
        if (big32(chunks, at) >> 8 == stream.number && size > 0) return chunks.sub(at + 8, size);
        at += 8 + size + size % 2;
    }
    return {};
}

void judge(Avi &avi) {
    const uint64_t size = avi.input.size();
    if (avi.is_streamed) {
        if (!avi.has_length) avi.facts.open("no sizes");
        return;
    }
    const uint64_t end = std::max(avi.end, avi.last_index);
    if (avi.has_zeros) {
        avi.facts.cut(end, "the index (zeros)");
    } else if (end > size || avi.has_index || avi.last_index > 0) {
        avi.facts.reaches(end, avi.last_index > size ? "the last index" : "the end of the data");
    } else if (avi.is_indexed && avi.told_end > size) {
        avi.facts.cut(avi.told_end, "the index");
    } else if (avi.facts.pictures.empty() && avi.facts.sounds.empty()) {
        avi.facts.cut(size, "the headers");
    }
}

}  // namespace

void avi_facts(Input &input, Facts &facts) {
    Avi avi{input, facts};
    const Bytes file = input.bytes();
    facts.format = "AVI";
    uint64_t at = 0;
    for (int part = 0; part < 8 && bytes_are(file, at, "RIFF"); part++) {
        const uint64_t size = little32(file, at + 4);
        const bool is_open = size == 0 || size >= 0x7FFFF000;
        const uint64_t end = is_open ? file.size() : at + 8 + size;
        if (!is_open) avi.told_end = end;
        read_part(file, at, end, avi);
        at = end + size % 2;
        if (is_open) break;
    }
    if (avi.last_index > 0) facts.variant = "OpenDML";
    if (!facts.pictures.empty()) {
        Picture &picture = facts.pictures.front();
        if (avi.frames_of_all_parts > picture.frames && picture.frames >= 0)
            picture.frames = avi.frames_of_all_parts;
        const Ratio aspect = picture.pixel_aspect;
        const Bytes frame = first_chunk(avi.first, avi.picture);
        if (avi.is_interleaved) {
            picture.width = 720;
            picture.height = (frame[3] & 0x80) != 0 ? 576 : 480;
            if (Sound sound; dv_sound(frame, sound)) facts.sounds.push_back(sound);
        }
        stream_picture(frame, picture, avi.setup);
        if (aspect.is_set()) picture.pixel_aspect = aspect;
        facts.lasts(picture.frames, picture.rate);
        const int64_t bit_rate = bit_rate_of(indexed_bytes(avi, avi.picture), facts.duration);
        if (bit_rate > 0) picture.bit_rate = bit_rate;
    } else if (!facts.sounds.empty()) {
        facts.lasts(facts.sounds.front().samples, facts.sounds.front().rate);
    }
    if (Sound *const sound = facts.sounds.empty() ? nullptr : &facts.sounds.front()) {
        const int64_t told = sound->bit_rate;
        stream_sound(first_chunk(avi.first, avi.sound), *sound);
        const Ratio seconds = sound->samples > 0 ? Ratio{sound->samples, sound->rate.n} : facts.duration;
        const bool is_coded = told < 0 && sound->bits == 0;
        const int64_t measured = is_coded ? bit_rate_of(indexed_bytes(avi, avi.sound), seconds) : told;
        const bool is_constant = is_coded && std::abs(sound->bit_rate - measured) < measured / 10;
        if (!is_constant) sound->bit_rate = measured;
    }
    judge(avi);
}
