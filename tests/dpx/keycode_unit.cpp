#include <gtest/gtest.h>

#include "dpx/timecode.h"
#include "support/command.h"

TEST(Keycode, FilmStocks) {
    Transcript transcript;
    std::string stocks;
    for (const char *manufacturer : {"01", "02", "03", "04", "05", "12", "23"}) {
        for (int type = 0; type < 100; type++) {
            const std::string film = manufacturer + std::string(1, static_cast<char>('0' + type / 10)) +
                                     static_cast<char>('0' + type % 10) + "001234567890";
            char text[17];
            formatdpxkeycode(text, Bytes(film.data(), film.size()));
            stocks += std::string(text, 2) + (type % 20 == 19 ? "\n" : " ");
        }
    }
    SHOW(stocks);
}
