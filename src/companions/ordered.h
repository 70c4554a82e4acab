// Work on many files at once, whose output comes in their order.
#pragma once

#include <cstddef>
#include <functional>
#include <string_view>

// Takes output of one file; may wait until it is that file's turn.
using OutputTaker = std::function<void(std::string_view)>;

// Calls `work` once for each index below `count`, on `jobs` threads at once, and writes what each call hands
// to its taker to standard output, whole and in the order of the indices. The file whose turn it is writes
// straight through; the others get up to 1 MiB ahead each and then wait, and no more than 64 MiB are kept in
// all, so that memory is bounded whatever is written.
void run_in_order(size_t count, unsigned jobs, const std::function<void(size_t, const OutputTaker &)> &work);
