// Movies of tracks whose samples all stand in one chunk, with what a fact needs of their headers.
#pragma once

#include <string>

#include "quicktime/movie.h"
#include "support/boxes_changed.h"
#include "support/bytes_of.h"

inline std::string full(const std::string &type, const std::string &payload, uint32_t version_flags = 0) {
    return atom(type, big().u32(version_flags).raw(payload).str());
}

inline std::string media_header(uint32_t scale, uint32_t duration, unsigned language = 0x55C4) {
    return full("mdhd", big().u32(0, 0, scale, duration).u16(language, 0).str());
}

inline std::string edit_list(const std::string &entries, uint32_t n) {
    return atom("edts", full("elst", big().u32(n).raw(entries).str()));
}

inline std::string picture_entry(const std::string &codec, const std::string &boxes, unsigned depth = 24) {
    return atom(codec, big().zeros(24).u16(1920, 1080).zeros(46).u16(depth, 0xFFFF).raw(boxes).str());
}

inline std::string sound_entry(const std::string &codec, unsigned version, unsigned channels, unsigned bits,
                               const std::string &rest) {
    return atom(
        codec, big().zeros(8).u16(version).zeros(6).u16(channels, bits).u32(0, 48000U << 16).raw(rest).str());
}

// Samples of 1,000 bytes, one chunk of all of them at an offset; other tables, where they are told.
struct Samples {
    uint32_t n = 10;
    uint32_t delta = 1001;
    uint32_t offset = 32;
    std::string times = {};
    std::string sizes = {};   // a box
    std::string chunks = {};  // a box
    std::string others = {};  // boxes behind these
    std::string links = {};   // boxes before the tables
};

inline std::string track(const std::string &handler, const std::string &entry,
                         const std::string &media_header, const Samples &samples = {},
                         const std::string &edits = "", uint32_t flags = 1, int32_t scale = 1) {
    const std::string times =
        samples.times.empty() ? big().u32(1, samples.n, samples.delta).str() : samples.times;
    const std::string sizes =
        samples.sizes.empty() ? full("stsz", big().u32(1000, samples.n).str()) : samples.sizes;
    const std::string chunks =
        samples.chunks.empty() ? full("stco", big().u32(1, samples.offset).str()) : samples.chunks;
    return atom(
        "trak",
        full("tkhd",
             big()
                 .u32(0, 0, 1)
                 .zeros(24)
                 .u32(static_cast<uint32_t>(scale * 0x10000))
                 .zeros(12)
                 .u32(0x10000)
                 .zeros(12)
                 .u32(0x40000000, 1920U << 16, 1080U << 16)
                 .str(),
             flags) +
            edits +
            atom("mdia",
                 media_header + full("hdlr", big().u32(0).text(handler).zeros(13).str()) +
                     atom("minf",
                          samples.links +
                              atom("stbl", full("stsd", big().u32(1).raw(entry).str()) + full("stts", times) +
                                               full("stsc", big().u32(1, 1, samples.n, 1).str()) + sizes +
                                               chunks + samples.others))));
}

// A movie whose samples begin at byte 32, before its header.
inline std::string movie(const std::string &tracks, const std::string &brand = "qt  ",
                         const std::string &data = std::string(10000, 'x')) {
    return atom("ftyp", brand + std::string(4, '\0')) +
           std::string(
               "\0\0\0\x08"
               "free",
               8) +
           atom("mdat", data) +
           atom("moov", full("mvhd", big().u32(3849984000U, 0, 1000, 0).zeros(80).str()) + tracks);
}
