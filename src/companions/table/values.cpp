#include "companions/table/values.h"

#include <charconv>
#include <cmath>
#include <cstdio>
#include <cstdlib>

#include "common/timecode.h"

namespace {

constexpr double kHighestRate = 1e9;
constexpr int64_t kHighestNumber = int64_t{1} << 48;  // what is done with numbers stays within 63 bits

bool is_blank(char c) { return c == ' ' || c == '\t' || c == '\r' || c == '\0'; }
bool is_digit(char c) { return c >= '0' && c <= '9'; }

std::string three_decimals(double number) {
    char text[64];
    std::snprintf(text, sizeof text, "%.3f", number);
    return text;
}

double decimal_in(std::string_view text) {
    const std::string copy(text.substr(0, 64));
    const double value = std::strtod(copy.c_str(), nullptr);
    return std::isfinite(value) ? value : 0;
}

}  // namespace

std::string_view trimmed(std::string_view text) {
    while (!text.empty() && is_blank(text.front())) text.remove_prefix(1);
    while (!text.empty() && is_blank(text.back())) text.remove_suffix(1);
    return text;
}

int64_t number_in(std::string_view text, int base) {
    text = trimmed(text);
    int64_t number = -1;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number, base);
    return error == std::errc() && number >= 0 && number <= kHighestNumber ? number : -1;
}

double ratio_in(std::string_view text) {
    text = trimmed(text);
    const size_t slash = text.find('/');
    if (slash == std::string_view::npos) return decimal_in(text);
    const double below = decimal_in(text.substr(slash + 1));
    return below > 0 ? decimal_in(text.substr(0, slash)) / below : 0;
}

std::string whole_text(int64_t number) { return number < 0 ? "" : std::to_string(number); }
std::string positive_text(int64_t number) { return number < 1 ? "" : std::to_string(number); }

std::string rate_text(double rate) {
    if (!(rate > 0) || rate > kHighestRate) return "";
    std::string text = three_decimals(rate);
    while (text.back() == '0') text.pop_back();
    if (text.back() == '.') text.pop_back();
    return text == "0" ? "" : text;
}

std::string seconds_text(double seconds) {
    return seconds > 0 && seconds < kHighestRate ? three_decimals(seconds) : "";
}

std::string timecode_of_frames(int64_t frames, int64_t base, bool drop) {
    if (frames < 0 || base < 1 || base > 1000) return "";
    const int64_t number = frame_number(frames, {static_cast<uint32_t>(base), drop && base % 30 == 0});
    const int64_t seconds = number / base;
    char text[64];
    std::snprintf(text, sizeof text, "%02d:%02d:%02d%c%02d", static_cast<int>(seconds / 3600),
                  static_cast<int>(seconds / 60 % 60), static_cast<int>(seconds % 60), drop ? ';' : ':',
                  static_cast<int>(number % base));
    return text;
}

std::string bcd_timecode_text(std::string_view digits, double rate) {
    const int64_t word = digits.size() == 8 ? number_in(digits, 16) : -1;
    if (word < 0) return "";
    const uint32_t timecode = static_cast<uint32_t>(word);
    Counting counting{rate < 30.5 ? 30U : 60U};
    counting.drop = has_drop_flag(timecode, counting);
    return has_digits(timecode, counting) ? timecode_text(timecode, counting) : "";
}

std::string keycode_text(int64_t manufacturer, int64_t type, int64_t prefix, int64_t count,
                         int64_t perforations) {
    const auto within = [](int64_t number, int64_t highest) { return number >= 0 && number <= highest; };
    if (!within(manufacturer, 99) || !within(type, 99) || !within(prefix, 999999) || !within(count, 9999) ||
        !within(perforations, 99) || manufacturer + type + prefix + count == 0)
        return "";
    char text[64];
    std::snprintf(text, sizeof text, "%02d %02d %06d %04d+%02d", static_cast<int>(manufacturer),
                  static_cast<int>(type), static_cast<int>(prefix), static_cast<int>(count),
                  static_cast<int>(perforations));
    return text;
}

std::string as_text(std::string_view value) { return std::string(trimmed(value)); }

std::string as_count(std::string_view value) {
    value = trimmed(value);
    if (value.starts_with('-')) value.remove_prefix(1);
    return positive_text(number_in(value));
}

std::string as_rate(std::string_view value) { return rate_text(ratio_in(value)); }

std::string as_quoted(std::string_view value) {
    value = trimmed(value);
    if (value.size() < 2 || value.front() != '\'' || value.back() != '\'') return "";
    return as_text(value.substr(1, value.size() - 2));
}

std::string as_name(std::string_view value) {
    value = trimmed(value);
    const size_t blank = value.find(' ');
    return blank == std::string_view::npos ? "" : as_text(value.substr(blank));
}

std::string as_bcd(std::string_view value) {
    value = trimmed(value);
    if (value.starts_with("0x")) value.remove_prefix(2);
    const int64_t word = value.size() == 8 ? number_in(value, 16) : -1;
    return word < 0 || word == 0xFFFFFFFF ? "" : std::string(value);
}

std::string as_timecode(std::string_view value) {
    value = trimmed(value);
    size_t length = 0;
    while (length < value.size() &&
           (is_digit(value[length]) || value[length] == ':' || value[length] == ';' || value[length] == '.'))
        length++;
    return length < 8 ? "" : std::string(value.substr(0, length));
}
