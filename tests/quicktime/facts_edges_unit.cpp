// Both sides of the bounds of a movie's facts.
#include "quicktime/movie_of.h"

namespace {

std::string picture_track(const Samples &samples = {}, const std::string &edits = "") {
    return track("vide", picture_entry("apcn", ""), media_header(24000, 10010), samples, edits);
}

std::string sound_track(const std::string &entry, const Samples &samples = {},
                        const std::string &edits = "") {
    return track("soun", entry, media_header(48000, 48000), samples, edits);
}

// A movie whose samples stand behind its header, in a file that ends with them.
template <typename Tracks>
std::string movie_before_data(Tracks tracks_at, size_t bytes = 10000) {
    const auto start = static_cast<uint32_t>(movie(tracks_at(0)).size() + 8);
    return movie(tracks_at(start)) + atom("mdat", std::string(bytes, 'x'));
}

std::string table_of(uint32_t n, const std::string &entries) { return big().u32(n).raw(entries).str(); }

std::string repeated(size_t n, const std::string &entry) {
    std::string entries;
    for (size_t i = 0; i < n; i++) entries += entry;
    return entries;
}

}  // namespace

TEST(MovieFacts, EdgesOfTracks) {
    Transcript transcript;
    const std::string plain = movie(picture_track());
    SHOW(facts_of(plain));
    ROWS("plain", boxes_changed(plain, rows));
    // The size of the track; how it is turned.
    ROWS("plain 2", boxes_changed(plain, rows));
    // Samples of a table: times, runs, sizes, places.
    ROWS("plain 3", boxes_changed(plain, rows));
    const std::string several =
        movie(picture_track({.times = table_of(2, big().u32(5, 1001, 5, 1002).str())}));
    SHOW(facts_of(several));
    ROWS("several", boxes_changed(several, rows));
    SHOW(facts_of(movie(picture_track({.times = table_of(2, big().u32(10, 1001, 5).u16(0).u8(0).str())}))));
    // Data in another file; several descriptions.
    const std::string link = atom("dinf", full("dref", big().u32(1, 12).text("url ").u32(0).str()));
    ROWS("movie(picture_track({.links = link}))", boxes_changed(movie(picture_track({.links = link})), rows));
    ROWS("movie(track(vide, picture_entry(apcn, ) + picture_",
         boxes_changed(movie(track("vide", picture_entry("apcn", "") + picture_entry("apch", ""),
                                   media_header(24000, 10010))),
                       rows));
    std::string many;
    for (int i = 1; i <= 1001; i++) many += atom("c" + std::to_string(1000 + i).substr(1));
    ROWS("movie(track(vide, many, media_header(24000, 10010)",
         boxes_changed(movie(track("vide", many, media_header(24000, 10010))), rows));
}

TEST(MovieFacts, EdgesOfTables) {
    Transcript transcript;
    const auto bytes = [](uint32_t n) { return full("stz2", big().u32(8, n).fill(100, n).str()); };
    // Sizes of 4 and 8 bits; more than are added up.
    const auto eight = movie_before_data(
        [&](uint32_t at) { return picture_track({.offset = at, .sizes = bytes(10)}); }, 1000);
    SHOW(facts_of(eight) + " " + bit_rates_of(eight));
    ROWS("eight", boxes_changed(eight, rows));
    for (const uint32_t n : {2097140U, 2097141U})
        EXPECT_EQ(bit_rates_of(movie(picture_track({.n = n, .sizes = bytes(n)}))),
                  n == 2097140 ? "19181" : "-1");
    // Entries of a table that are looked at.
    for (const uint32_t n : {8192U, 8193U}) {
        const auto at_end = movie_before_data(
            [&](uint32_t at) { return picture_track({.n = n, .offset = at, .sizes = bytes(n)}); },
            8193 * 100);
        SHOW(facts_of(at_end.substr(0, at_end.size() - 150)));
        SHOW(facts_of(
            movie(picture_track({.n = n, .times = table_of(n, repeated(n, big().u32(1, 1001).str()))}))));
        SHOW(facts_of(movie(picture_track({}, edit_list(repeated(n, big().u32(100, 0, 0x10000).str()), n)))));
    }
}

// A second is a thousand ticks of the movie, or one.
TEST(MovieFacts, EdgesOfEdits) {
    Transcript transcript;
    const auto edit = [](uint32_t length, uint32_t time) { return big().u32(length, time, 0x10000).str(); };
    const std::string offset = full("ctts", big().u32(1, 10, 1001).str());
    const std::string one = movie(picture_track({.others = offset}, edit_list(edit(200, 1001), 1)));
    SHOW(facts_of(one));
    ROWS("one", boxes_changed(one, rows));
    const std::string six = movie(picture_track(
        {},
        edit_list(repeated(2, edit(30, 3003) + edit(40, 0) + edit(50, 1001)) + std::string(11, '\1'), 6)));
    ROWS("six", boxes_changed(six, rows));
    // Sound that is coded has what its decoder needs before it, and what fills a frame behind it.
    for (const char *codec : {"mp4a", "sowt"})
        ROWS(
            "movie(sound_track(sound_entry(codec, 0, 2, 16, ),",
            boxes_changed(
                movie(sound_track(sound_entry(codec, 0, 2, 16, ""), {}, edit_list(edit(1000, 0), 1))), rows));
    // The duration of the picture, unless sound is played much longer.
    ROWS("movie(picture_track() + sound_track(sound_entry(so",
         boxes_changed(movie(picture_track() + sound_track(sound_entry("sowt", 0, 2, 16, ""))), rows));
    const std::string small = picture_entry("apcn", "").replace(32, 2, hex("0010"));
    SHOW(facts_of(movie(track("vide", small, media_header(24000, 48000)) + picture_track())));
}

TEST(MovieFacts, EdgesOfTimecode) {
    Transcript transcript;
    const std::string entry = atom("tmcd", big().zeros(12).u32(0, 24000, 1001).u8(24, 0).str());
    const std::string edits = edit_list(big().u32(1000, 24024, 0x10000).str(), 1);
    const auto tracks = [&](uint32_t at) {
        return picture_track() + track("tmcd", entry, media_header(24000, 10010), {1, 10010, at}, edits);
    };
    const std::string numbered = movie(tracks(32), "qt  ", std::string(8, '\0') + std::string(9992, 'x'));
    SHOW(facts_of(numbered));
    ROWS("numbered", boxes_changed(numbered, rows));
    const auto size = static_cast<uint32_t>(numbered.size());
    for (const uint32_t rest : {3U, 4U}) SHOW(facts_of(movie(tracks(size - rest))));
}

TEST(MovieFacts, EdgesOfExtent) {
    Transcript transcript;
    const auto of_sizes = [](uint32_t n, uint32_t size) {
        return full("stsz", big().u32(0, n).raw(repeated(n, big().u32(size).str())).str());
    };
    const std::string plain = movie_before_data([](uint32_t at) { return picture_track({.offset = at}); });
    const std::string varied = movie_before_data(
        [&](uint32_t at) { return picture_track({.offset = at, .sizes = of_sizes(10, 1000)}); });
    for (const std::string &file : {plain, varied}) {
        SHOW(facts_of(file) + " " + std::to_string(claimed_of(file)));
        const std::string size = std::to_string(file.size() - 1);
        SHOW(facts_changed(file, "<" + size + " >1"));
        SHOW(boxes_changed(file,
                           "stsc+4=00000000 stsc+4=00000002 stsc+12=00000009 stsc+12=0000000B "
                           "stsz+4=00000001 stsz+4=00000002 stsz+4=00000002,stsc+12=0000000B "
                           "stsz+4=00000001,stsc+12=0000000B"));
    }
    // Chunks behind those that are counted; sound in packets; a last chunk that is not the farthest.
    const std::string chunks = full("stco", big().u32(1, 32, 0x7000, 0x40).str());
    ROWS("movie(picture_track({.chunks = chunks}))",
         boxes_changed(movie(picture_track({.chunks = chunks})), rows));
    const std::string packed = movie_before_data([&](uint32_t at) {
        const std::string version = big().u32(4, 2, 4, 2).str();
        return sound_track(sound_entry("ima4", 1, 2, 16, version), {.offset = at});
    });
    ROWS("packed", boxes_changed(packed, rows));
    const std::string beyond = picture_track({.offset = 9000});
    EXPECT_EQ(extent_of(movie(beyond + beyond + beyond), "a.mov"), "cut data of tracks 1, 2 and 3");
    for (const size_t n : {7, 8}) SHOW(extent_of(movie(picture_track() + std::string(n, '\0')), "a.mov"));
    const std::string ended = movie(picture_track() + atom("free", "x"));
    EXPECT_EQ(extent_of(ended.substr(0, ended.size() - 1), "a.mov"), "cut the end of moov");
    SHOW(std::to_string(claimed_of(plain.substr(0, 10036))) + " " +
         std::to_string(claimed_of(plain.substr(0, 9000))));
    EXPECT_EQ(bit_rates_of(movie(track("vide", picture_entry("v210", ""), media_header(24000, 10010)))),
              "191808");
    // Zeros where a sample, or its tail, would be.
    EXPECT_EQ(extent_of(varied.substr(0, varied.size() - 1000) + std::string(1000, '\0'), "a.mov"),
              "cut data of track 1 (zeros)");
    for (const char *handler : {"soun", "text"})
        SHOW(extent_of(movie(track(handler, sound_entry("mp4a", 0, 2, 16, ""), media_header(48000, 10)),
                             "qt  ", std::string(10000, '\0')),
                       "a.mov"));
    const auto with_zeros = [](const std::string &codec, const std::string &sizes, size_t bytes,
                               size_t zeros) {
        const std::string entry = picture_entry(codec, "");
        return extent_of(movie(track("vide", entry, media_header(24000, 10010), {.n = 2, .sizes = sizes}),
                               "qt  ", std::string(bytes - zeros, 'x') + std::string(zeros, '\0')),
                         "a.mov");
    };
    SHOW(with_zeros("avc1", of_sizes(2, 5000), 10000, 4095));
    SHOW(with_zeros("avc1", of_sizes(2, 5000), 10000, 4096));
    SHOW(with_zeros("avc1", "", 2000, 999));
    SHOW(with_zeros("cvid", of_sizes(2, 70000), 140000, 65535));
    SHOW(with_zeros("cvid", of_sizes(2, 70000), 140000, 65536));
    SHOW(with_zeros("cvid", of_sizes(2, 15), 30, 15));
    SHOW(with_zeros("cvid", of_sizes(2, 16), 32, 16));
}

// Boxes, tracks and bytes of a header that are looked at.
TEST(MovieFacts, EdgesOfFiles) {
    const std::string plain = movie(picture_track());
    for (const size_t n : {44, 45})
        EXPECT_EQ(extent_of(repeated(n, atom("free")) + plain, "a.mov"), n == 44 ? "whole" : "cut no moov")
            << n;
    const std::string sound = atom("trak", atom("mdia", full("hdlr", big().u32(0).text("soun").str())));
    for (const size_t n : {999, 1000, 1001}) {
        const std::string tracks = repeated(n, sound), text = facts_of(movie(tracks));
        size_t found = 0;
        for (size_t at = 0; (at = text.find("| 0ch", at)) != text.npos; at++) found++;
        EXPECT_EQ(found, std::min<size_t>(n, 1000));
    }
    const std::string compressed = atom("ftyp", "qt  ") + atom("moov", atom("cmov"));
    EXPECT_NE(facts_of(compressed).find("compressed"), std::string::npos);
    // The sizes of samples, in a header that is read in one go.
    const std::string sizes = full("stsz", big().u32(0, 10).raw(repeated(10, big().u32(100).str())).str());
    const std::string tracks = sound_track(sound_entry("mp4a", 0, 2, 16, ""), {.sizes = sizes});
    const size_t rest = (3 << 20) - (movie(tracks).size() - movie("").size()) - 108;
    for (const size_t more : {0, 1})
        EXPECT_EQ(bit_rates_of(movie(tracks + atom("free", std::string(rest - 8 + more, 'x')))),
                  more == 0 ? "38362" : "-1");
}
