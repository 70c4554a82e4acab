// The files of one run.
#pragma once

#include "main/command_line.h"

// Dumps the named file, or every file of the frame range: raw views when a switch asks for one, else the
// dump of the recognised format.
void dump_files(CommandLine &line);
