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
void expand_name_pattern(char *name, size_t size, const char *pattern, int32_t number) {
    std::snprintf(name, size, pattern, number);
}
#pragma GCC diagnostic pop
