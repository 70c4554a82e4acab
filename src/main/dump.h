// The dump of a file, for commands that want more than its text.
#pragma once

#include "common/stream.h"
#include "main/dump_options.h"

class Input;

struct DumpOutcome {
    enum End { dumped, unopened, unknown };
    End end = dumped;
    int status = 0;  // that keldump would exit with
};

// Dumps a file as keldump does under the same switches, in a run of its own, to a listener or, without one,
// to standard output; movies are recognised by what is in them. Any name is a file's. Nothing is printed for
// one that cannot be opened; of one whose format is unknown the line that says so. A listener that has enough
// ends it by end_run.
DumpOutcome dump(const char *path, const DumpOptions &options, Listener *listener);
// The same of what is open.
DumpOutcome dump(Input &input, const DumpOptions &options, Listener *listener);
