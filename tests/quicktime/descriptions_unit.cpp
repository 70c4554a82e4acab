// Both sides of the bounds of what sample descriptions and metadata say.
#include "quicktime/movie_of.h"

namespace {

std::string of_pictures(const std::string &entry) {
    return movie(track("vide", entry, media_header(24000, 10010)));
}

std::string of_sound(const std::string &entry) {
    return movie(track("soun", entry, media_header(48000, 10010)));
}

// What the facts say up to the duration.
std::string short_facts(const std::string &content) {
    const std::string text = facts_of(content);
    return text.substr(0, text.find(" | 2025"));
}

}  // namespace

TEST(MovieFacts, EdgesOfPictures) {
    Transcript transcript;
    for (const char *record : {"00000000 00 00 82 01 01 01", "00000000 00 00 82 01 01"})
        SHOW(short_facts(of_pictures(picture_entry("vp09", atom("vpcC", hex(record))))));
    const std::string esds =
        full("esds", hex("03 808080 17 000000 04 808080 11 60 11 000000 00000000 00000001 06 01 02"));
    const std::string aperture = big().u32(1919).u32(1).u32(1079).u32(1).zeros(16).str();
    const std::string rates = atom("btrt", big().u32(0).u32(0).u32(1).str()) + atom("clap", aperture);
    const std::string stream = of_pictures(picture_entry("mp4v", esds)),
                      plain = of_pictures(picture_entry("apcn", rates));
    SHOW(short_facts(stream));
    ROWS("stream", boxes_changed(stream, rows));
    SHOW(short_facts(plain));
    ROWS("plain", boxes_changed(plain, rows));
    std::string depths;
    for (const unsigned depth : {0, 1, 8, 9, 15, 16, 24, 32, 33, 34, 40, 41, 48, 64})
        depths +=
            std::to_string(depth) + ": " + short_facts(of_pictures(picture_entry("raw ", "", depth))) + "\n";
    SHOW(depths);
    for (const unsigned depth : {8, 9, 40, 41}) {
        const std::string palette = big().u32(0).u16(0).u16(0).zeros(8).str();
        std::string entry = picture_entry("png ", palette + atom("pasp", big().u32(4).u32(3).str()), depth);
        SHOW(short_facts(of_pictures(entry.replace(84, 2, 2, '\0'))));
    }
}

TEST(MovieFacts, EdgesOfSounds) {
    Transcript transcript;
    const auto entry_of = [](const std::string &codec, const std::string &boxes, unsigned version = 0) {
        return of_sound(sound_entry(codec, version, 2, 16, boxes));
    };
    const auto labels = [](uint32_t n, uint32_t last) {
        ByteWriter bytes = big().u32(0).u32(0).u32(n);
        for (uint32_t i = 1; i < n; i++) bytes.u32(1).zeros(16);
        return full("chan", bytes.u32(last).zeros(16).str());
    };
    const std::string channels =
        big().u32(0).u32(0).u32(2).u32(1).zeros(16).u32(2).zeros(16).u32(3).zeros(15).str();
    ROWS("entry_of(mp4a, full(chan, channels))",
         boxes_changed(entry_of("mp4a", full("chan", channels)), rows));
    for (const uint32_t n : {64U, 65U})
        EXPECT_EQ(facts_of(entry_of("mp4a", labels(n, 2))).find("L L L R") == std::string::npos, n == 65);
    ROWS("entry_of(sowt, atom(chnl, hex(00000000 01 00 00010",
         boxes_changed(entry_of("sowt", atom("chnl", hex("00000000 01 00 00010204"))), rows));
    ROWS("entry_of(sowt, atom(chnl, hex(01000000 10 06 00 02",
         boxes_changed(entry_of("sowt", atom("chnl", hex("01000000 10 06 00 02 0001"))), rows));
    const std::string esds = full("esds", hex("0317 0000 00 0411 40 15 000000 00000000 00000001 0502 11B0"));
    const std::string aac = entry_of("mp4a", esds),
                      in_wave = entry_of("mp4a", atom("wave", atom("wave", esds)));
    SHOW(short_facts(aac) + "\n" + short_facts(in_wave) + "\n" +
         short_facts(entry_of("mp4a", atom("wave", atom("wave", atom("wave", esds))))));
    ROWS("aac", boxes_changed(aac, rows));
    ROWS("entry_of(ec-3, atom(dec3, hex(0E00 20 0F 02 02)))",
         boxes_changed(entry_of("ec-3", atom("dec3", hex("0E00 20 0F 02 02"))), rows));
    const std::string ac3 = entry_of("ac-3", atom("dac3", hex("103DC0")));
    SHOW(bit_rates_of(ac3) + boxes_changed(ac3, "dac3+1=3E60 dac3+1=3FE0"));
    ROWS("entry_of(Opus, atom(dOps, hex(00 06 0000 0000BB80",
         boxes_changed(entry_of("Opus", atom("dOps", hex("00 06 0000 0000BB80 0000 00 000000"))), rows));
    ROWS("entry_of(alac, full(alac, hex(00001000 00 18 280a0",
         boxes_changed(
             entry_of("alac", full("alac", hex("00001000 00 18 280a0e 06 00ff 00000000 00000001 0000bb80"))),
             rows));
    // Rates that stand elsewhere, and where nothing is told.
    const std::string rated = entry_of("sowt", full("srat", big().u32(96000).str()), 1);
    SHOW(short_facts(rated));
    ROWS("rated", boxes_changed(rated, rows));
    ROWS("entry_of(mp4a, atom(btrt, big().u32(0).u32(0).u32(",
         boxes_changed(entry_of("mp4a", atom("btrt", big().u32(0).u32(0).u32(1).str())), rows));
    ROWS("entry_of(sowt, big().u32(1).u32(4).u32(8).u32(2).s",
         boxes_changed(entry_of("sowt", big().u32(1).u32(4).u32(8).u32(2).str(), 1), rows));
    const auto packets = [](uint32_t at) {
        const std::string more =
            big().u32(72).f64(96000).u32(2).u32(0x7F000000).u32(32).u32(8).u32(8).u32(1).str();
        return track("soun", sound_entry("lpcm", 2, 3, 16, more), media_header(48000, 48000), {.offset = at});
    };
    ROWS("movie(packets(static_cast<uint32_t>(movie(packets(",
         boxes_changed(movie(packets(static_cast<uint32_t>(movie(packets(0)).size()))), rows));
}
