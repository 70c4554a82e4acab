#include "common/name_pattern.h"

#include <cstdio>
#include <cstring>

namespace {

const char *skip_digits(const char *p) {
    for (int i = 0; i < 3 && *p >= '0' && *p <= '9'; i++) p++;
    return p;
}

}  // namespace

bool valid_name_pattern(const char *pattern) {
    int conversions = 0;
    for (const char *p = pattern; *p; p++) {
        if (*p != '%') continue;
        p++;
        if (*p == '%') continue;
        p = skip_digits(p + std::strspn(p, "-+ #0"));
        if (*p == '.') p = skip_digits(p + 1);
        if (*p == '\0' || !std::strchr("diuxXo", *p) || ++conversions > 1) return false;
    }
    return true;
}

#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-nonliteral"
std::string name_from_pattern(const char *pattern, int32_t number) {
    char name[256];
    const int length = std::snprintf(name, sizeof name, pattern, number);
    if (length < 0) return {};
    if (static_cast<size_t>(length) < sizeof name) return name;
    std::string long_name(static_cast<size_t>(length), '\0');
    std::snprintf(long_name.data(), long_name.size() + 1, pattern, number);
    return long_name;
}
#pragma GCC diagnostic pop
