// The files of one run.
#pragma once

#include "common/input.h"
#include "main/command_line.h"

// Dumps the named file, or every file of the frame range: raw views when a switch asks for one, else the
// dump of the recognised format.
void dump_files(CommandLine &line);

// The same for one input, in the current run; range_flag is 1 for a frame of a range. One that could not be
// opened gives a line that says so.
void dump_input(DumpOptions &opts, Input &input, int range_flag);
