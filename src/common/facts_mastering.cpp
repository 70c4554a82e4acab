#include <array>
#include <cmath>
#include <utility>

#include "common/facts.h"

namespace {

// Chromaticities count in 0.00002, luminances in 0.0001 cd/m2.
struct Point {
    double x = 0;
    double y = 0;

    bool is_near(Point other) const {
        constexpr double kTolerance = 0.0006;
        return std::fabs(x - other.x) < kTolerance && std::fabs(y - other.y) < kTolerance;
    }
    std::string text() const { return number_text(x, 5) + "," + number_text(y, 5); }
};

Point point_at(Bytes b, uint64_t offset) {
    return {big16(b, offset) / 50000.0, big16(b, offset + 2) / 50000.0};
}

struct Gamut {
    const char *name;
    Point red, green, blue;
};
constexpr Gamut kGamuts[] = {
    {"P3", {0.680, 0.320}, {0.265, 0.690}, {0.150, 0.060}},
    {"BT.2020", {0.708, 0.292}, {0.170, 0.797}, {0.131, 0.046}},
    {"BT.709", {0.640, 0.330}, {0.300, 0.600}, {0.150, 0.060}},
};
constexpr std::pair<const char *, Point> kWhites[] = {
    {"D65", {0.3127, 0.3290}}, {"D60", {0.32168, 0.33767}}, {"DCI", {0.314, 0.351}}};

// Writers have them in different orders: red is the one with the greatest x, green with the greatest y.
std::string gamut_text(Bytes primaries) {
    std::array<Point, 3> points{point_at(primaries, 0), point_at(primaries, 4), point_at(primaries, 8)};
    for (size_t i = 1; i < 3; i++) {
        if (points[i].x > points[0].x) std::swap(points[i], points[0]);
    }
    if (points[2].y > points[1].y) std::swap(points[1], points[2]);
    for (const Gamut &gamut : kGamuts) {
        if (points[0].is_near(gamut.red) && points[1].is_near(gamut.green) && points[2].is_near(gamut.blue))
            return gamut.name;
    }
    return "red " + points[0].text() + " green " + points[1].text() + " blue " + points[2].text();
}

std::string white_text(Bytes white) {
    const Point point = point_at(white, 0);
    for (const auto &[name, known] : kWhites) {
        if (point.is_near(known)) return name;
    }
    return "white " + point.text();
}

}  // namespace

std::string mastering_text(Bytes primaries, Bytes white, Bytes most, Bytes least) {
    std::string text;
    if (primaries.size() == 12) text = gamut_text(primaries);
    if (white.size() == 4) append(text, white_text(white), " ");
    if (most.size() != 4) return text;
    const auto luminance = [](Bytes value) { return number_text(big32(value) / 10000.0); };
    return text + (text.empty() ? "" : ", ") + (least.size() == 4 ? luminance(least) + " to " : "") +
           luminance(most) + " cd/m2";
}
