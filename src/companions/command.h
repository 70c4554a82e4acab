// What all companions do alike around their work.
#pragma once

#include <string>
#include <string_view>

// Exit statuses, as diff and grep have them.
constexpr int kFine = 0;
constexpr int kFound = 1;    // differences, breaks, files not opened or unknown
constexpr int kTrouble = 2;  // wrong usage, no keldump, output that cannot be written

// To be called first: sets the name for messages, and what happens at SIGINT, SIGTERM, SIGHUP, SIGQUIT and
// SIGPIPE: the temporary names are removed, then the signal ends the process. Signals that were ignored stay
// so.
void start_companion(const char *name);

// Answers --help and --version on standard output when the arguments are just that; whether they were.
bool answered(int argc, char **argv, const char *usage);

// The number of "-j N" or "-jN" at argv[next], which is moved to the last argument taken; false where it is
// none from 1 to 1024.
bool parse_jobs(int argc, char **argv, int &next, unsigned &jobs);

// Says which switch is not known or lacks its number; false, for parsers to return.
bool unknown_switch(const std::string &argument);

// Both print to standard error and return kTrouble. The message is made safe by the caller (safe_name).
int usage_error(const char *usage);
int trouble(const std::string &message);

// "NAME: message" on standard error. Safe from any thread.
void complain(const std::string &message);

// Writes to standard output at once. When that fails the process ends: by SIGPIPE as other commands when the
// reader is gone, else with a message and kTrouble.
void write_out(std::string_view text);

// Ends the process after the temporary names are removed; for use while other threads work.
[[noreturn]] void end_now(int status);

// Processors that this process may use, 1 at least.
unsigned core_count();
