// Both sides of the bounds of the facts of sound files.
#include "audio/wave_of.h"

namespace {

std::string sound_of(size_t n) { return std::string(n, 'x'); }

}  // namespace

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
