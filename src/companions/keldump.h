// Runs of keldump on one file.
#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <vector>

// The keldump that stands beside the running command, else the first one on PATH; empty when there is none.
std::string find_keldump();

enum class DumpEnd {
    dumped,
    stopped,   // the taker had enough
    unopened,  // the file could not be opened
    unknown,   // its format is unknown
    failed,    // keldump could not be run, or a signal ended it
};

struct DumpResult {
    DumpEnd end = DumpEnd::failed;
    std::string message;  // for unopened, unknown and failed: what is the matter, without the file's name
};

// Takes a piece of a dump; false when no more is wanted.
using DumpTaker = std::function<bool(std::string_view)>;

// Runs a keldump with switches on a file and hands its output over piece by piece (64 KiB at most), so that
// no dump needs memory for all of it. Any name is safe: it never reaches a shell, is no switch and no
// "verify", and a name with a percent sign is handed over as a temporary one. So are MPEG-4 files (.mp4,
// .m4v, .m4a, .3gp), which are dumped as the QuickTime files that they are. The line by which keldump says
// that it could not open a file or does not know its format becomes the result. Safe from any thread.
DumpResult run_keldump(const std::string &keldump, const std::vector<std::string> &switches,
                       const std::string &path, const DumpTaker &take);
