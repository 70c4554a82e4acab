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

// A value is odd where it is not the most frequent one. What each file has for itself (name, times, sizes,
// lengths) is not compared, nor what no two files have in common. With `alike`, for files that were not put
// together to be alike, that part of them must agree, and what a file does not say is not odd.
Oddities find_odd(const std::vector<Row> &rows, double alike = 0);
