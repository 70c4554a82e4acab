// Both sides of the bounds of the facts of AVI.
#include "audio/wave_of.h"

namespace {

std::string stream_header(const std::string &kind, uint32_t length, uint32_t sample_size = 0) {
    return chunk("strh", little().text(kind).zeros(12).u32(1, 25, 0, length, 0, 0, sample_size).u64(0).str());
}

std::string picture_stream(const std::string &codec, const std::string &more = "", uint32_t length = 10) {
    const std::string format = little().u32(40, 64, 48, 0x180001).text(codec).zeros(20).str();
    return chunk("LIST", "strl" + stream_header("vids" + codec, length) + chunk("strf", format) + more);
}

std::string sound_stream(const std::string &format, uint32_t length, uint32_t sample_size) {
    return chunk("LIST", "strl" + stream_header("auds    ", length, sample_size) + "strf" + format.substr(4));
}

// Index entries of the file: their type and size.
std::string index_of(const std::string &type, size_t n, uint32_t size) {
    std::string entries;
    for (size_t i = 0; i < n; i++) entries += little().text(type).u32(0x10, 4, size).str();
    return chunk("idx1", entries);
}

std::string avi_of(const std::string &streams, const std::string &chunks, const std::string &index = "") {
    const std::string headers = chunk("avih", little().u32(40000).u64(0).u32(0x10).zeros(40).str()) + streams;
    const std::string all = chunk("LIST", "hdrl" + headers) + chunk("LIST", "movi" + chunks) + index;
    return little().text("RIFF").u32(4 + all.size()).text("AVI ").raw(all).str();
}

}  // namespace

TEST(AviFacts, EdgesOfStreams) {
    Transcript transcript;
    const std::string frame = chunk("00dc", std::string(100, 'x'));
    const std::string aspect = chunk("vprp", little().zeros(20).u16(3, 4).zeros(12).str());
    const std::string plain =
        avi_of(picture_stream(std::string(4, '\0'), aspect), frame, index_of("00dc", 1, 100));
    SHOW(facts_of(plain) + " " + bit_rates_of(plain));
    ROWS("plain", boxes_changed(plain, rows));
    // Sound in samples, in its own units, and as coded.
    const std::string pcm = avi_of(picture_stream("XVID") + sound_stream(format(1, 2, 16), 48000, 4), frame);
    SHOW(facts_of(pcm) + " " + bit_rates_of(pcm));
    ROWS("pcm", boxes_changed(pcm, rows));
    const auto coded = [&](unsigned bytes, uint32_t size) {
        const std::string stream = sound_stream(format(0x55, 2, 0, "", bytes), 25, 0);
        return avi_of(picture_stream("XVID") + stream,
                      frame + chunk("01wb", hex("FFFB1464") + std::string(92, 'x')),
                      index_of("01wb", 1, size));
    };
    for (const uint32_t size : {3636U, 3637U, 4444U, 4445U})
        SHOW(std::to_string(size) + ": " + bit_rates_of(coded(0, size)));
    SHOW(facts_of(coded(1, 4000)) + " " + bit_rates_of(coded(1, 4000)));
    SHOW(facts_of(avi_of(sound_stream(format(1, 2, 16), 48000, 4), "")));
    // Chunks before the first one of a stream.
    for (const size_t n : {63, 64}) {
        std::string others;
        for (size_t i = 0; i < n; i++) others += chunk(i == 5 ? "01wb" : "00dc", "");
        const std::string stream = sound_stream(format(0x2000, 2, 0, "", 1), 25, 0);
        SHOW(facts_of(avi_of(picture_stream("XVID") + stream,
                             others + chunk("01wb", hex("0B77 0000 14403F00") + std::string(1000, 'x')))));
    }
}

TEST(AviFacts, EdgesOfExtent) {
    Transcript transcript;
    const std::string frames = chunk("00dc", std::string(100, 'x'));
    const std::string plain = avi_of(picture_stream("XVID"), frames, index_of("00dc", 2, 100));
    SHOW(facts_of(plain) + " " + std::to_string(claimed_of(plain)));
    const std::string size = std::to_string(plain.size() - 1), sixteen = std::string(16, '\0');
    SHOW(facts_changed(plain, "<" + size + " >1"));
    ROWS("plain", boxes_changed(plain, rows));
    for (const size_t zeros : {15, 16})
        SHOW(extent_of(avi_of(picture_stream("XVID"), frames, chunk("idx1", std::string(zeros, '\0'))),
                       "a.avi"));
    const std::string none = avi_of(picture_stream("XVID"), frames);
    SHOW(facts_of(none));
    ROWS("none", boxes_changed(none, rows));
    for (const size_t zeros : {7, 8}) {
        std::string file = none + std::string(zeros, '\0');
        SHOW(facts_of(file));
        SHOW(facts_of(file.replace(4, 4, little().u32(file.size() - 8).str())));
        SHOW(facts_of(file.replace(4, 4, little().u32(file.size() - 9).str())));
        SHOW(facts_of(file.replace(4, 4, little().u32(file.size() - 7).str())));
    }
    for (const char *more : {"", "x"}) {
        std::string file = avi_of(picture_stream("XVID"), frames + more);
        SHOW(facts_of(file.substr(0, file.size() - 1)));
        SHOW(facts_of(file.replace(4, 4, little().u32(file.size() - 8 + 1).str())));
    }
    SHOW(facts_of(avi_of("", "")) + "\n" + facts_of(avi_of("", frames)));
    // The bytes of an index that is read, and parts of a file.
    for (const size_t n : {131072, 131073})
        SHOW(bit_rates_of(avi_of(picture_stream("XVID"), frames, index_of("00dc", n, 1))));
    std::string parts = plain;
    for (int i = 1; i < 9; i++) {
        parts += little().text("RIFF").u32(16).text("AVIX").text("LIST").u32(4).text("none").str();
        if (i >= 7) SHOW(std::to_string(claimed_of(parts)) + " of " + std::to_string(parts.size()));
    }
}

// Frames of all parts, and their bytes, by an index that has an index for each part.
TEST(AviFacts, EdgesOfOpenDml) {
    Transcript transcript;
    const auto build = [](uint32_t parts, uint32_t entries, uint32_t size, size_t place) {
        ByteWriter super = little().u16(4).u8(0, 0).u32(parts).text("00dc").zeros(12);
        for (uint32_t i = 0; i < parts; i++) super.u64(place).u32(size, 10);
        ByteWriter index = little().u16(2).u8(0, 1).u32(entries).text("00dc").zeros(12);
        for (uint32_t i = 0; i < entries; i++) index.u32(i, 100);
        const std::string all = chunk("LIST", "odml" + chunk("dmlh", little().u32(20).zeros(4).str()));
        return avi_of(picture_stream("XVID", chunk("indx", super.str())) + all,
                      chunk("00dc", std::string(100, 'x')) + chunk("ix00", index.str()));
    };
    const auto file = [&](uint32_t parts, uint32_t entries, uint32_t size) {
        return build(parts, entries, size, build(parts, entries, size, 0).find("ix00"));
    };
    const std::string one = file(1, 2, 48);
    SHOW(facts_of(one) + " " + bit_rates_of(one));
    SHOW(facts_changed(one, "<" + std::to_string(one.size() - 1) + " >1"));
    ROWS("one", boxes_changed(one, rows));
    for (const uint32_t parts : {32U, 33U}) SHOW(bit_rates_of(file(parts, 2, 48)));
    for (const uint32_t entries : {131068U, 131069U}) SHOW(bit_rates_of(file(2, entries, 32 + 8 * entries)));
}
