// The command line: switches, the file name or frame range, and the requests that need no file.
#pragma once

#include <cstdint>

#include "main/dump_options.h"

struct CommandLine {
    DumpOptions opts{};
    const char *name = "";  // the file, or the pattern of a frame range
    int range_flag = 0;     // 1: frame range
    int32_t start = 0;      // first frame number
    int32_t end = 0;        // last frame, counted from `start`
};

// Parses the arguments of main. Returns -1 when there are files to dump, else the exit status of the run,
// whose text (version, usage or refused name) has then been printed.
int parse_command_line(int argc, char **argv, CommandLine &line);

// Sets what a switch sets; false for one that is none. A switch is known by its second character alone.
bool parse_switch(DumpOptions &opts, const char *arg);

// Prints the usage text.
void usage();
