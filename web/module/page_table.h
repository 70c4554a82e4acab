// What the entries of the page's list share.
#pragma once

#include <string>
#include <string_view>

#include "companions/table/row.h"

// All of standard input.
std::string read_input();

std::string json_text(std::string_view text);

// A row for the page: what is shown and what columns are sorted by, as JSON, then all of it for further
// questions, each behind its size.
std::string given(const Row &row);
