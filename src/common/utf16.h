// UTF-16 texts of files.
#pragma once

#include <string>

#include "common/ordered_bytes.h"

// A text up to its first NUL or the window's end as UTF-8, blanks at its end left out; halves of surrogate
// pairs that stand alone are U+FFFD.
std::string text_of_utf16(OrderedBytes text);
