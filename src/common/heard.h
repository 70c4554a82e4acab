// What print does while somebody listens.
#pragma once

#include <cstdarg>
#include <string_view>

void print_own_heard(std::string_view text);

// Prints as vprintf does, and tells the stream each piece.
void print_heard(const char *format, std::va_list arguments);
