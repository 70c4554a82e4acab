// Both sides of the bounds of a fragmented movie's facts.
#include "quicktime/movie_of.h"

namespace {

// The header of a movie of fragments: a picture track, and as many of sound.
std::string fragmented(uint32_t sounds = 0, uint32_t scale = 24000) {
    const Samples none = {.n = 0, .offset = 0};
    std::string tracks = track("vide", picture_entry("apcn", ""), media_header(scale, 0), none);
    for (uint32_t i = 0; i < sounds; i++) {
        std::string sound = track("soun", sound_entry("mp4a", 0, 2, 16, ""), media_header(48000, 0), none);
        tracks += sound.replace(sound.find("tkhd") + 16, 4, big().u32(2 + i).str());
    }
    return movie(tracks + atom("mvex", full("trex", big().u32(1, 1, 1001, 1000, 0).str())), "qt  ", "x");
}

// A fragment of samples of one size and their data; its run has bytes behind its samples.
std::string fragment(uint32_t time, const std::vector<uint32_t> &durations, uint32_t size,
                     const std::string &rest = "") {
    ByteWriter samples = big();
    for (const uint32_t duration : durations) samples.u32(duration, size);
    const auto moof = [&](size_t offset) {
        const std::string run = big().u32(durations.size(), offset).raw(samples.str()).raw(rest).str();
        return atom("moof", atom("traf", full("tfhd", big().u32(1).str(), 0x20000) +
                                             full("tfdt", big().u32(time).str()) + full("trun", run, 0x301)));
    };
    return moof(moof(0).size() + 8) + atom("mdat", std::string(size * durations.size(), 'x'));
}

std::string random_access(const std::vector<size_t> &places, uint32_t n) {
    ByteWriter entries = big();
    for (const size_t place : places) entries.u32(0, place).u24(0);
    const std::string tfra = full("tfra", big().u32(1, 0, n).raw(entries.str()).str());
    return atom("mfra", tfra + full("mfro", big().u32(8 + tfra.size() + 16).str()));
}

std::string digits_of(const std::string &bytes) {
    std::string digits;
    for (const char c : bytes) digits += hex_digits(static_cast<uint8_t>(c));
    return digits;
}

// Fragments of 4 frames and 48,000 bytes behind a segment index, in a file of that size.
struct Indexed {
    uint32_t fragments = 41;
    size_t size = 3 << 20;
    size_t boxes_before = 1;
    bool has_segments = true;
    uint32_t told = fragments;
    uint32_t sounds = 1;
    std::string str() const {
        std::string data, entries;
        for (uint32_t i = 0; i < fragments; i++) {
            const std::string next = fragment(4004 * i, {1001, 1001, 1001, 1001}, 12000);
            data += next;
            entries += big().u32(next.size(), 4004, 0x90000000).str();
        }
        const std::string sidx =
            full("sidx", big().u32(1, 24000, 0, 0).u16(0, told).raw(entries).zeros(11).str());
        std::string file = fragmented(sounds);
        for (size_t i = 1; i < boxes_before; i++) file += atom("free");
        const std::string index = has_segments ? sidx : "";
        const auto mfra = [&](size_t start) {
            std::vector<size_t> places;
            for (uint32_t i = 0; i < fragments; i++) places.push_back(start + i * (data.size() / fragments));
            return has_segments ? "" : random_access(places, told);
        };
        const size_t rest = size - file.size() - index.size() - data.size() - mfra(0).size();
        file += atom("free", std::string(rest - 8, 'x')) + index;
        return file + data + mfra(file.size());
    }
};

}  // namespace

TEST(MovieFacts, EdgesOfFragments) {
    Transcript transcript;
    const std::string one = fragmented() + fragment(0, {1001, 1001, 1001, 1001}, 1000, "1234567");
    SHOW(facts_of(one) + " " + bit_rates_of(one));
    ROWS("one", boxes_changed(one, rows));
    const size_t size = one.size();
    for (const size_t less : {1U, 4000U, 4001U, 4007U, 4008U, 4009U})
        SHOW(facts_changed(one, "<" + std::to_string(size - less)));
    for (const char *rest : {"00000010 6D6461", "00000010 6D646174", "00000001 6D646174", "00000000 000000",
                             "00000000 00000000", "00000001 6D646174 00000000 000000", "7878 7878 7878 7878"})
        SHOW(rest + (" " + extent_of(one + hex(rest), "a.mov")) + " " +
             std::to_string(claimed_of(one + hex(rest))));
    // A last run of one byte.
    const std::string two = one + fragment(4004, {1001}, 1);
    SHOW(facts_changed(two, "<" + std::to_string(two.size() - 1)));
    ROWS("two", boxes_changed(two, rows));
    const std::string ended = one + atom("free", "x");
    SHOW(facts_changed(ended, "<" + std::to_string(ended.size() - 1)));
    // Behind an index; one that tells of a fragment that is not there.
    const std::string closed = one + random_access({fragmented().size()}, 1);
    SHOW(facts_of(closed));
    SHOW(facts_changed(
        closed, "<" + std::to_string(closed.size() - 1) + " <" + std::to_string(closed.size() - 16) + " >1"));
    const std::string at = std::to_string(closed.rfind("tfra") + 24) + "=";
    const auto place = [](size_t n) { return digits_of(big().u32(n).str()); };
    SHOW(facts_changed(closed, at + place(closed.size() - 1) + " " + at + place(closed.size())));
    ROWS("closed", boxes_changed(closed, rows));
    SHOW(facts_of(one + atom("mfra", full("mfro", big().u32(24).str()))));
    SHOW(facts_of(one +
                  atom("mfra", full("tfra", big().u32(1, 0).str()) + full("mfro", big().u32(44).str()))));
    const std::string sound =
        track("soun", sound_entry("mp4a", 0, 2, 16, ""), media_header(48000, 0), {.n = 0, .offset = 0});
    SHOW(facts_of(movie(sound + atom("mvex", full("trex", std::string(20, '\0'))), "qt  ", "x") +
                  fragment(0, {1024, 1024}, 100)));
    // The last sample of few tracks.
    for (const uint32_t sounds : {14, 15}) {
        std::string file = fragmented(sounds) + fragment(0, {1001, 1001}, 1000);
        SHOW(extent_of(file.replace(file.size() - 1000, 1000, 1000, '\0'), "a.mov"));
    }
}

// Whether all of a file is walked through or some of it: then two tracks have no bit rates.
TEST(MovieFacts, EdgesOfIndices) {
    Transcript transcript;
    const auto is_walked = [](const Indexed &file) { return bit_rates_of(file.str()) != "-1 -1"; };
    EXPECT_TRUE(is_walked({.fragments = 40}));
    EXPECT_FALSE(is_walked({.fragments = 41}));
    EXPECT_TRUE(is_walked({.size = 2 << 20}));
    EXPECT_FALSE(is_walked({.size = (2 << 20) + 1}));
    EXPECT_FALSE(is_walked({.boxes_before = 4}));
    EXPECT_TRUE(is_walked({.boxes_before = 5}));
    EXPECT_FALSE(is_walked({.told = 42}));
    EXPECT_TRUE(is_walked({.fragments = 40, .has_segments = false, .told = 41}));
    EXPECT_FALSE(is_walked({.fragments = 41, .has_segments = false}));
    const std::string file = Indexed{}.str(), alone = Indexed{.sounds = 0}.str();
    SHOW(facts_of(file) + " " + bit_rates_of(file));
    SHOW(facts_of(alone) + " " + bit_rates_of(alone));
    for (const size_t more : {65536, 65537})
        SHOW(bit_rates_of(file + atom("free", std::string(more - 8, 'x'))));
    const size_t last = file.rfind("moof") - 4;
    for (const size_t cut : {last, last + 1, file.size() - 1})
        SHOW(extent_of(file.substr(0, cut), "a.mov") + " " + bit_rates_of(file.substr(0, cut)));
    ROWS("alone", boxes_changed(alone, rows));
}

TEST(MovieFacts, ManyFragments) {
    const std::string tiny =
        atom("moof", atom("traf", full("tfhd", big().u32(1).str()) + full("trun", big().u32(1).str())));
    for (const size_t n : {20000, 20001}) {
        std::string file = fragmented();
        for (size_t i = 0; i < n; i++) file += tiny;
        EXPECT_EQ(facts_of(file).find(" frames") != std::string::npos, n == 20000);
    }
    for (const size_t n : {59999, 60000}) {
        std::string file = fragmented();
        for (size_t i = 0; i < n; i++) file += atom("free");
        EXPECT_EQ(facts_of(file + tiny).find(" 1 frames") != std::string::npos, n == 59999);
    }
}
