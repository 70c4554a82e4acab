// What is odd among files that should be alike.
#pragma once

#include <string>
#include <vector>

#include "companions/table/row.h"

struct OddRow {
    size_t row;
    std::vector<std::string> remarks;  // "RATE 25 (1 of 47; others 23.976)"
};

struct Oddities {
    std::vector<std::string> titles;  // of what files differ in
    std::vector<OddRow> rows;         // that are unlike most in one of them, or have a problem
};

// Movies, stills and sounds are compared with their like; what is none of them with nothing. A value is odd
// where it is not that of more than half of them; where none is, each is named. What each file has for itself
// (name, times, sizes, lengths) is not compared, nor reels that no two files have in common. `further`: names
// of `more` and fields that are compared, too. With `alike`, for files that were not put together to be
// alike, that part of them must agree, and what a file does not say is not odd.
Oddities find_odd(const std::vector<Row> &rows, const std::vector<std::string> &further = {},
                  double alike = 0);
