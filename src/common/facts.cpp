#include "common/facts.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <iterator>
#include <numeric>

#include "common/names.h"
#include "common/timecode.h"

Ratio Ratio::reduced() const {
    const int64_t common = is_set() ? std::gcd(n, d) : 1;
    return {n / common, d / common};
}

Picture &Facts::picture() {
    if (pictures.empty()) pictures.emplace_back();
    return pictures.front();
}

void Facts::add_more(std::string_view name, std::string value) {
    if (!value.empty()) more.emplace_back(name, std::move(value));
}

void Facts::cut(uint64_t claimed, std::string missing) {
    extent.state = Extent::cut;
    extent.claimed = claimed;
    extent.missing = std::move(missing);
}

void Facts::whole(uint64_t claimed) {
    extent.state = Extent::whole;
    extent.claimed = claimed;
}

void Facts::reaches(uint64_t end, std::string missing) {
    if (end <= extent.present) return whole(end);
    cut(end, std::move(missing));
}

size_t Facts::largest() const {
    const auto area = [](const Picture &p) { return std::pair(p.enabled, uint64_t{p.width} * p.height); };
    return static_cast<size_t>(std::ranges::max_element(pictures, {}, area) - pictures.begin());
}

void Facts::largest_first() {
    const auto main = pictures.begin() + static_cast<ptrdiff_t>(largest());
    if (main != pictures.end()) std::rotate(pictures.begin(), main, main + 1);
}

void Facts::open(std::string reason) {
    extent.state = Extent::open;
    extent.missing = std::move(reason);
}

void Facts::lasts(int64_t frames, Ratio rate) {
    if (frames < 0 || !rate.is_set() || frames > INT64_MAX / rate.d) return;
    duration = Ratio{frames * rate.d, rate.n}.reduced();
    if (frames == 0) duration = {0, 1};
}

void Facts::add(FileTimecode timecode) {
    if (timecode.is_set()) timecodes.push_back(std::move(timecode));
}

std::string FileTimecode::text() const {
    if (frames < 0 || base == 0) return digits;
    const Counting counting{base, drop};
    const int64_t number = frame_number(frames, counting);
    const int64_t second = number / base;
    char text[64];
    std::snprintf(text, sizeof text, "%02lld:%02lld:%02lld%c%02lld", static_cast<long long>(second / 3600),
                  static_cast<long long>(second / 60 % 60), static_cast<long long>(second % 60),
                  drop ? ';' : ':', static_cast<long long>(number % base));
    return text;
}

std::string fixed_text(Bytes b, uint64_t offset, uint64_t width) {
    if (b[offset] == 0xFF) return "";
    const Text text = text_at(b, offset, width);
    std::string_view view(text.start, static_cast<size_t>(text.length));
    const size_t first = view.find_first_not_of(" \t\r\n");
    if (first == std::string_view::npos) return "";
    return std::string(view.substr(first, view.find_last_not_of(" \t\r\n") + 1 - first));
}

std::string chroma_text(uint64_t across, uint64_t down) {
    constexpr CodeName kNames[] = {{0x11, "4:4:4"}, {0x12, "4:4:0"}, {0x21, "4:2:2"}, {0x22, "4:2:0"},
                                   {0x41, "4:1:1"}, {0x42, "4:1:0"}, {0x44, "4:1:0"}};
    return across < 16 && down < 16 ? name_of(kNames, static_cast<uint32_t>(across << 4 | down)) : "";
}

std::string size_text(uint64_t width, uint64_t height) {
    return std::to_string(width) + "x" + std::to_string(height);
}

std::string product_text(std::string maker, const std::string &product) {
    if (product.starts_with(maker)) return product;
    append(maker, product, " ");
    return maker;
}

void append(std::string &list, std::string_view text, std::string_view divider) {
    if (!list.empty() && !text.empty()) list += divider;
    list += text;
}

Ratio aspect_of(double aspect, int64_t parts) {
    if (!(aspect > 0.01 && aspect < 100)) return {};
    return Ratio{std::llround(aspect * static_cast<double>(parts)), parts}.reduced();
}

Ratio rate_of(double rate) {
    if (!std::isfinite(rate) || rate < 0.001 || rate > 1e6) return {};
    const double whole = std::round(rate);
    if (std::fabs(rate - whole) < 0.0005) return {std::llround(whole), 1};
    // What NTSC rates are, and what people round them to.
    for (const int64_t nominal : {24, 30, 48, 60, 72, 96, 120, 240}) {
        const double exact = static_cast<double>(nominal) * 1000 / 1001;
        if (std::fabs(rate - exact) < 0.006 * static_cast<double>(nominal) / 24)
            return {nominal * 1000, 1001};
    }
    return Ratio{std::llround(rate * 1000), 1000}.reduced();
}

Ratio rate_of(int64_t n, int64_t d) {
    const Ratio exact = Ratio{n, d}.reduced();
    if (!exact.is_set() || exact.d == 1 || exact.d == 1001) return exact;
    const double rate = exact.value();
    for (const int64_t nominal : {24, 25, 30, 48, 50, 60, 72, 96, 100, 120, 240}) {
        for (const Ratio known : {Ratio{nominal, 1}, Ratio{nominal * 1000, 1001}}) {
            if (std::fabs(rate - known.value()) < rate * 2e-5) return known;
        }
    }
    return exact;
}

int64_t bit_rate_of(uint64_t bytes, Ratio seconds) {
    const double rate = seconds.is_set() ? 8 * static_cast<double>(bytes) / seconds.value() : 0;
    return rate >= 1 && rate < 1e15 ? std::llround(rate) : -1;
}

uint32_t base_of(Ratio rate) {
    return rate.is_set() && rate.value() < 1000 ? static_cast<uint32_t>(std::lround(rate.value())) : 0;
}

FileTimecode file_timecode(int64_t hours, int64_t minutes, int64_t seconds, int64_t frames, uint32_t base,
                           bool drop, std::string place) {
    const auto within = [](int64_t value, int64_t end) { return value >= 0 && value < end; };
    if (!within(hours, 24) || !within(minutes, 60) || !within(seconds, 60) || !within(frames, base))
        return {};
    drop = drop && base % 30 == 0;
    const int64_t dropped = Counting{base, drop}.dropped();
    const int64_t all_minutes = hours * 60 + minutes;
    if (minutes % 10 != 0 && seconds == 0 && frames < dropped) return {};
    const int64_t count =
        (all_minutes * 60 + seconds) * base + frames - dropped * (all_minutes - all_minutes / 10);
    return {count, base, drop, std::move(place)};
}

FileTimecode counted_timecode(int64_t frames, uint32_t base, bool drop, std::string place) {
    drop = drop && base % 30 == 0;
    const int64_t dropped = int64_t{Counting{base, drop}.dropped()} * (24 * 60 - 24 * 6);
    return {frames % (int64_t{24} * 3600 * base - dropped), base, drop, std::move(place)};
}

FileTimecode bcd_timecode(uint32_t bcd, uint32_t base, std::string place) {
    FileTimecode timecode;
    timecode.bcd = bcd;
    timecode.place = std::move(place);
    if (base == 0) {
        // What has the flag drops numbers; without a rate nothing has as many frames as would need its bit.
        const Counting any{100, (bcd & 0x40) != 0};
        if (frame_count(bcd & ~0x40U, {100})) timecode.digits = timecode_text(bcd & ~0x40U, any);
        return timecode;
    }
    Counting counting{base};
    counting.drop = has_drop_flag(bcd, counting);
    const std::optional<int64_t> count = frame_count(bcd, counting);
    if (!count) return timecode;
    timecode.frames = *count;
    timecode.base = base;
    timecode.drop = counting.drop;
    return timecode;
}

std::string keycode_text(int64_t manufacturer, int64_t type, int64_t prefix, int64_t count,
                         int64_t perforations) {
    const auto within = [](int64_t value, int64_t most) { return value >= 0 && value <= most; };
    if (!within(manufacturer, 99) || !within(type, 99) || !within(prefix, 999999) || !within(count, 9999))
        return "";
    char text[112];
    int length = std::snprintf(text, sizeof text, "%02lld %02lld %06lld %04lld",
                               static_cast<long long>(manufacturer), static_cast<long long>(type),
                               static_cast<long long>(prefix), static_cast<long long>(count));
    if (within(perforations, 119)) {
        length += std::snprintf(text + length, sizeof text - static_cast<size_t>(length), "+%02lld",
                                static_cast<long long>(perforations));
    }
    return text;
}

std::string iso_date(int64_t year, int64_t month, int64_t day, int64_t hour, int64_t minute, int64_t second,
                     bool utc) {
    if (year < 1 || year > 9999 || month < 1 || month > 12 || day < 1 || day > 31) return "";
    char text[48];
    int length = std::snprintf(text, sizeof text, "%04d-%02d-%02d", static_cast<int>(year),
                               static_cast<int>(month), static_cast<int>(day));
    if (hour >= 0 && hour < 24 && minute >= 0 && minute < 60 && second >= 0 && second <= 60) {
        length += std::snprintf(text + length, sizeof text - static_cast<size_t>(length), "T%02d:%02d:%02d%s",
                                static_cast<int>(hour), static_cast<int>(minute), static_cast<int>(second),
                                utc ? "Z" : "");
    }
    return {text, static_cast<size_t>(length)};
}

namespace {

// "Z" and "+01:00" of what stands behind a time: "Z", " UTC", ".25+0100", "-05"; empty for anything else.
std::string zone_in(std::string_view text) {
    const auto is_one_of = [](std::string_view set) {
        return [=](char c) { return set.find(c) != set.npos; };
    };
    const auto skip = [&](auto fits) {
        while (!text.empty() && fits(text.front())) text.remove_prefix(1);
    };
    if (text.starts_with('.')) skip(is_one_of(".0123456789"));
    skip(is_one_of(": "));
    for (const std::string_view utc : {"Z", "UTC", "GMT"}) {
        if (text == utc) return "Z";
    }
    if (text.empty() || (text[0] != '+' && text[0] != '-')) return "";
    const int64_t hours = decimal_in(text, 1, 2);
    const std::string_view rest = text.substr(std::min<size_t>(3, text.size()));
    const int64_t minutes = rest.empty() ? 0 : decimal_in(rest.substr(rest[0] == ':' ? 1 : 0));
    if (hours < 0 || hours > 14 || minutes < 0 || minutes > 59) return "";
    char zone[16];
    std::snprintf(zone, sizeof zone, "%c%02d:%02d", text[0], static_cast<int>(hours),
                  static_cast<int>(minutes));
    return zone;
}

}  // namespace

std::string iso_date_in(std::string_view text) {
    int64_t part[6] = {0, 0, 0, -1, 0, 0};
    size_t count = 0;
    const char *const end = text.data() + text.size();
    const char *at = text.data();
    while (at < end && count < std::size(part)) {
        const auto [behind, error] = std::from_chars(at, end, part[count]);
        const bool is_number = error == std::errc() && *at != '-';
        if (is_number) count++;
        at = is_number ? behind : at + 1;
    }
    constexpr std::string_view kMonths = "JanFebMarAprMayJunJulAugSepOctNovDec";
    constexpr int64_t kLeastYear = 1000;  // what is smaller is a day or a month
    const size_t month = text.size() < 7 ? text.npos : kMonths.find(text.substr(4, 3));
    if (count == 5 && month < kMonths.size() && part[4] >= kLeastYear)  // as C has it
        return iso_date(part[4], static_cast<int64_t>(month / 3) + 1, part[0], part[1], part[2], part[3]);
    if (count < 3 || part[0] < kLeastYear) return "";
    if (count < std::size(part)) return iso_date(part[0], part[1], part[2]);
    const std::string date = iso_date(part[0], part[1], part[2], part[3], part[4], part[5]);
    return date.find('T') == date.npos ? date : date + zone_in({at, static_cast<size_t>(end - at)});
}

std::string iso_date_of_unix(int64_t seconds) {
    constexpr int64_t kDay = 86400;
    if (seconds < -62135596800 || seconds > 253402300799) return "";
    const int64_t of_day = (seconds % kDay + kDay) % kDay;
    // Days since 0000-03-01, in eras of 400 years.
    const int64_t days = (seconds - of_day) / kDay + 719468;
    const int64_t era = days / 146097;
    const int64_t of_era = days % 146097;
    const int64_t year_of_era = (of_era - of_era / 1460 + of_era / 36524 - of_era / 146096) / 365;
    const int64_t of_year = of_era - (365 * year_of_era + year_of_era / 4 - year_of_era / 100);
    const int64_t shifted = (5 * of_year + 2) / 153;
    const int64_t month = shifted < 10 ? shifted + 3 : shifted - 9;
    const int64_t year = year_of_era + era * 400 + (month <= 2 ? 1 : 0);
    return iso_date(year, month, of_year - (153 * shifted + 2) / 5 + 1, of_day / 3600, of_day / 60 % 60,
                    of_day % 60, true);
}

std::string number_text(double number, int digits) {
    char text[32];
    std::snprintf(text, sizeof text, "%.*g", digits, number);
    return text;
}

int64_t decimal_in(std::string_view text) {
    const bool is_number = !text.empty() && text.size() <= 18 &&
                           std::ranges::all_of(text, [](char c) { return c >= '0' && c <= '9'; });
    int64_t value = -1;
    if (is_number) std::from_chars(text.data(), text.data() + text.size(), value);
    return value;
}

int64_t decimal_in(std::string_view text, size_t at, size_t n) {
    return at + n <= text.size() ? decimal_in(text.substr(at, n)) : -1;
}

bool ends_in_zeros(Input &input, uint64_t start, uint64_t end, uint64_t least, uint64_t most) {
    const uint64_t n = std::min(end - std::min(start, end), most);
    const Bytes tail = input.present(end - n, n);
    return n >= least && tail.size() == n && is_zero(tail);
}

std::string hex_text(Bytes b) {
    constexpr uint64_t kMost = 64;
    constexpr char kDigits[] = "0123456789abcdef";
    std::string text;
    for (uint64_t i = 0; i < std::min(b.size(), kMost); i++) {
        text += kDigits[b[i] >> 4];
        text += kDigits[b[i] & 15];
    }
    return text;
}

std::string label_digits(Bytes label) {
    constexpr uint64_t kSize = 16;
    if (label.size() < kSize) return "";
    std::string text;
    for (uint64_t i = 0; i < kSize; i++) {
        text += hex_text(label.sub(i, 1));
        if (i + 1 < kSize) text += i == 7 ? '-' : '.';
    }
    return text;
}
