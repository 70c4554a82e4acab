// File names made from a printf pattern and a number.
#pragma once

#include <cstdint>
#include <string>

// Whether a pattern holds nothing but literal text, "%%" and at most one integer conversion (d, i, u, x, X
// or o with flags, a width and a precision of up to three digits each). Only such a pattern may be expanded.
bool valid_name_pattern(const char *pattern);

// The name for a number, however long it is. The pattern must be valid.
std::string name_from_pattern(const char *pattern, int32_t number);
