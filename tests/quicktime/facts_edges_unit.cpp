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
