// The few places where a run ends inside a dump.
#pragma once

// What unwinds to main, with the exit status.
struct EndOfRun {
    int status;
};

// Ends the run: no more can be printed, or what follows has no meaning.
[[noreturn]] inline void end_run(int status) { throw EndOfRun{status}; }
