// Texts as a terminal shows them.
#pragma once

#include <string>
#include <string_view>

// How many columns a safe text (safe_name) takes: characters of East Asia and pictograms two, marks that
// stand on the character before them none.
size_t shown_width(std::string_view text);

// The longest start, or end, of a text that fits into so many columns.
std::string_view fitting_start(std::string_view text, size_t columns);
std::string_view fitting_end(std::string_view text, size_t columns);

// A line as lines of at most so many columns, each ended by a line feed, those behind the first further in by
// two: broken behind blanks, and where a word is longer than a line. With `columns` 0 it stays one.
std::string wrapped(std::string_view text, size_t columns, size_t indent);
