#include "dpx/timecode.h"

#include <cstdio>

#include "common/names.h"

namespace {

// Second letter of the stock code by film type.
constexpr CodeName kAgfaTypes[] = {{20, "AN"}, {24, "AM"}, {83, "AF"}, {84, "AS"}};

constexpr CodeName kKodakTypes[] = {
    {0, "KP"},  {1, "EK"},  {3, "ER"},  {5, "EQ"},  {7, "EN"},  {12, "EM"}, {13, "EO"}, {17, "EL"},
    {18, "EH"}, {19, "EJ"}, {20, "KY"}, {22, "KE"}, {24, "KL"}, {29, "EB"}, {30, "EZ"}, {31, "KH"},
    {34, "KD"}, {42, "EV"}, {43, "KA"}, {44, "KV"}, {45, "KK"}, {46, "KI"}, {47, "KB"}, {48, "KM"},
    {49, "KO"}, {54, "EW"}, {60, "EU"}, {63, "EE"}, {64, "EF"}, {65, "EC"}, {66, "ED"}, {72, "KS"},
    {74, "KZ"}, {77, "KQ"}, {79, "KU"}, {84, "EG"}, {85, "EA"}, {87, "KW"}, {89, "KR"}, {92, "KN"},
    {93, "KL"}, {94, "KG"}, {95, "KF"}, {96, "KJ"}, {97, "KC"}, {98, "KT"}, {99, "EI"},
};

constexpr CodeName kFujiTypes[] = {
    {1, "FI"},  {2, "FI"},  {10, "FN"}, {13, "FI"}, {14, "FN"}, {20, "FN"}, {21, "FN"},
    {22, "FN"}, {30, "FN"}, {31, "FN"}, {32, "FN"}, {40, "FR"}, {50, "FN"}, {51, "FN"},
    {52, "FN"}, {53, "FN"}, {60, "FN"}, {61, "FN"}, {62, "FN"}, {63, "FN"}, {70, "FN"},
    {71, "FN"}, {72, "FN"}, {73, "FN"}, {82, "FN"}, {83, "FN"}, {92, "FN"},
};

// A two-digit ASCII manufacturer id as the sum that it is told apart by.
constexpr uint32_t id_key(const char (&id)[3]) {
    return 16U * static_cast<uint8_t>(id[0]) + static_cast<uint8_t>(id[1]);
}

const char *stock_code(Bytes film) {
    const uint32_t manufacturer = 16U * film[0] + film[1];
    const uint32_t type = 10U * film[2] + film[3] - (10U * '0' + '0');  // beyond 99 where the digits are none
    switch (manufacturer) {
        case id_key("01"):
        case id_key("11"):
        case id_key("21"): return name_of(kAgfaTypes, type, "A?");
        case id_key("02"):
        case id_key("12"):
        case id_key("22"): return name_of(kKodakTypes, type, "K?");
        case id_key("03"):
        case id_key("13"):
        case id_key("23"): return name_of(kFujiTypes, type, "F?");
        case id_key("04"):
        case id_key("14"): return "I?";
        default: return "??";
    }
}

// How a burned-in block is told set or clear: bytes a pixel, and the test on its first one.
struct Layout {
    uint32_t bytes_per_pixel;
    bool (*is_set)(Bytes pixel);
};

bool red_and_blue(uint32_t red, uint32_t green, uint32_t blue) {
    return red > 160 && blue > 176 && green <= 63;
}

bool is_set_rgb8(Bytes pixel) { return red_and_blue(pixel[0], pixel[1], pixel[2]); }

bool is_set_rgb10(Bytes pixel) {
    const uint32_t word = big32(pixel);
    return red_and_blue(word >> 24, word >> 14 & 0xFF, word >> 4 & 0xFF);
}

bool is_set_422(Bytes pixel) { return pixel[0] > 176; }

Layout layout_of(uint32_t code) {
    switch (code & 0x3B1F0000) {
        case kLayoutRgb8:
        case 0x00040000: return {3, is_set_rgb8};
        case kLayoutRgb10:
        case 0x03040000: return {4, is_set_rgb10};
        case kLayout422_8: return {2, is_set_422};
        default: return {0, nullptr};
    }
}

void store(uint32_t *output, uint32_t value) {
    if (output) *output = value;
}

}  // namespace

void formatdpxkeycode(char *text, Bytes film) {
    text[0] = '\0';
    if (film[0] == 0 || film[0] == 0xFF) return;
    const char *stock = stock_code(film);
    char *p = text;
    *p++ = stock[0];
    *p++ = stock[1];
    for (uint64_t i = 6; i < 12; i++) *p++ = static_cast<char>(film[i]);
    *p++ = ' ';
    for (uint64_t i = 12; i < 16; i++) *p++ = static_cast<char>(film[i]);
    *p++ = '+';
    for (uint64_t i = 4; i < 6; i++) *p++ = static_cast<char>(film[i]);
    *p = '\0';
}

int keltimecode_decode(Bytes packet, uint32_t *timecode, uint32_t *second, uint32_t *tag) {
    uint32_t sum = 0;
    for (uint64_t i = 0; i < 14; i++) sum += packet[i];
    const bool valid = packet[0] == 0xFF && packet[1] == 0xAA && sum == big16(packet, 14);
    store(timecode, valid ? big32(packet, 2) : 0);
    store(second, valid ? big32(packet, 6) : 0);
    store(tag, valid ? packet[10] : 0);
    return valid;
}

int keltimecode_image(Bytes pixels, uint32_t width, uint32_t, uint32_t layout, uint32_t *timecode,
                      uint32_t *second) {
    constexpr uint64_t kLine = 8;
    constexpr uint64_t kFirstPixel = 2;
    constexpr uint64_t kPitch = 4;
    const Layout picture = layout_of(layout);
    if (!picture.is_set) {
        store(timecode, 0);
        store(second, 0);
        return 0;
    }
    uint8_t packet[16] = {};
    for (uint64_t i = 0; i < 8 * sizeof packet; i++) {
        const uint64_t pixel = kLine * width + kFirstPixel + kPitch * i;
        const Bytes sample = pixels.from(pixel * picture.bytes_per_pixel);
        if (picture.is_set(sample)) packet[i / 8] = static_cast<uint8_t>(packet[i / 8] | 0x80U >> i % 8);
    }
    return keltimecode_decode(Bytes(packet, sizeof packet), timecode, second, nullptr);
}
