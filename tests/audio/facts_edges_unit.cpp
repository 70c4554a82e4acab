// Both sides of the bounds of the facts of sound files.
#include "audio/wave_of.h"

namespace {

std::string sound_of(size_t n) { return std::string(n, 'x'); }

std::string bext(uint64_t time, unsigned version = 1) {
    return little()
        .text("Scene", 256)
        .zeros(82)
        .u64(time)
        .u16(version)
        .fill(1, 64)
        .fill(2, 10)
        .zeros(180)
        .str();
}

std::string with_ixml(const std::string &more, const std::string &elements) {
    return facts_of(wave(format(1, 1, 16) + more + chunk("iXML", elements) + chunk("data", sound_of(960))));
}

}  // namespace

TEST(WaveFacts, EdgesOfFormats) {
    Transcript transcript;
    const std::string plain = wave(format(1, 2, 16) + chunk("data", sound_of(9600)));
    ROWS("plain", boxes_changed(plain, rows));
    const std::string guid = hex("0100000000001000800000AA00389B71");
    const std::string fields = little().u16(22, 16).u32(3).raw(guid).str();
    const std::string extensible = wave(format(0xFFFE, 2, 16, fields) + chunk("data", sound_of(9600)));
    SHOW(facts_of(extensible));
    ROWS("extensible", boxes_changed(extensible, rows));
    SHOW(facts_of(wave(format(0xFFFE, 2, 16, fields.substr(0, 23)) + chunk("data", sound_of(9600)))));
    const std::string coded = wave(format(0x55, 2, 0, "", 1) + chunk("fact", little().u32(4800).str()) +
                                   chunk("data", sound_of(4800)));
    SHOW(facts_of(coded) + " " + bit_rates_of(coded));
    ROWS("coded", boxes_changed(coded, rows));
    SHOW(facts_of(wave(format(0x55, 2, 0, "", 1) + chunk("fact", "abc") + chunk("data", sound_of(4800)))));
    // Samples and sizes that have no room elsewhere.
    const std::string told = wave(chunk("ds64", little().u64(0, 4800, 2400).u32(0).str()) +
                                      format(0x55, 2, 0, "", 1) + chunk("data", sound_of(4800), 0xFFFFFFFF),
                                  "RF64");
    SHOW(facts_of(told));
    ROWS("told", boxes_changed(told, rows));
    const std::string sizes =
        little().u64(0, 9600, 2400).u32(2).text("junk").u64(8).text("LIST").u64(100).str();
    const auto behind = [&](const std::string &table) {
        return wave(chunk("ds64", table) + format(1, 2, 16) + chunk("data", sound_of(9600)) +
                        chunk("LIST", sound_of(100), 0xFFFFFFFF),
                    "RF64");
    };
    SHOW(facts_of(behind(sizes)));
    ROWS("behind(sizes)", boxes_changed(behind(sizes), rows));
    SHOW(facts_of(behind(sizes.substr(0, 51))));
}

TEST(WaveFacts, EdgesOfExtent) {
    Transcript transcript;
    const std::string plain = wave(format(1, 2, 16) + chunk("data", sound_of(9600)));
    ROWS("plain", boxes_changed(plain, rows));
    ROWS("wave(format(1, 1, 8) + chunk(data, sound_of(9600))",
         boxes_changed(wave(format(1, 1, 8) + chunk("data", sound_of(9600))), rows));
    for (const size_t n : {7, 8})
        SHOW(facts_of(wave(format(1, 2, 16) + chunk("data", "") + std::string(n, '\1'))));
    for (const uint32_t size : {5U, 6U})
        SHOW(facts_of(wave(format(1, 2, 16) + chunk("data", sound_of(960)) + chunk("LIST", "INFO", size))));
    for (const size_t zeros : {63, 64}) {
        const std::string data = zeros == 63 ? "x" + std::string(zeros, '\0') : std::string(zeros, '\0');
        SHOW(facts_of(wave(format(0x55, 2, 0, "", 1) + chunk("data", data))));
    }
    SHOW(facts_of(wave(format(1, 0, 16) + chunk("data", sound_of(960)))));
}

TEST(WaveFacts, EdgesOfTime) {
    Transcript transcript;
    const auto with_bext = [](const std::string &data) {
        return wave(format(1, 1, 16) + chunk("bext", data) + chunk("data", sound_of(960)));
    };
    const std::string plain = with_bext(bext(48000));
    SHOW(facts_of(plain));
    ROWS("plain", boxes_changed(plain, rows));
    for (const size_t n : {345, 346}) SHOW(facts_of(with_bext(bext(48000).substr(0, n))));
    const auto rate = [](const std::string &text) {
        return with_ixml(chunk("bext", bext(48000 * 3600)), "<TIMECODE_RATE>" + text + "</TIMECODE_RATE>");
    };
    for (const char *text : {"30000/1001", "29/1", "25:9", "249999/9999", "250000/9999", "240000/10000",
                             "1/2", "1/3", "0/1", "25/0", "999/1", "1000/1"})
        SHOW(text + (" " + rate(text).substr(0, 75)));
    const auto since = [](const std::string &low, const std::string &more) {
        return with_ixml("", "<TIMESTAMP_SAMPLES_SINCE_MIDNIGHT_LO>" + low +
                                 "</TIMESTAMP_SAMPLES_SINCE_MIDNIGHT_LO>" + more)
            .substr(0, 75);
    };
    SHOW(since("0", "") + "\n" + since("4294967295", "") + "\n" + since("4294967296", ""));
    SHOW(with_ixml(chunk("bext", bext(0)),
                   "<TIMESTAMP_SAMPLES_SINCE_MIDNIGHT_LO>7</TIMESTAMP_SAMPLES_SINCE_MIDNIGHT_LO>")
             .substr(0, 75));
    SHOW(since("7", "<TIMESTAMP_SAMPLE_RATE>0</TIMESTAMP_SAMPLE_RATE>") + "\n" +
         since("7", "<TIMESTAMP_SAMPLE_RATE>1</TIMESTAMP_SAMPLE_RATE>"));
    // Texts, and a file of them, that are too long.
    for (const size_t n : {256, 257}) {
        const std::string text = with_ixml("", "<NOTE>" + std::string(n, 'n') + "</NOTE>");
        EXPECT_NE(text.find(": " + std::string(256, 'n')), std::string::npos) << n;
        EXPECT_EQ(text.find(std::string(257, 'n')), std::string::npos) << n;
    }
    const std::string cut = with_ixml("", std::string((1 << 18) - 8, ' ') + "<TAKE>1234</TAKE>");
    EXPECT_NE((cut + " |").find("take: 12 |"), std::string::npos) << cut;
}
