// What print does while somebody listens.
#pragma once

#include <cstdarg>

// Prints as vprintf does, and tells the stream each piece.
void print_heard(const char *format, std::va_list arguments);
