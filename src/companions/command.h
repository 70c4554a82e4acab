// What all companions do alike around their work.
#pragma once

#include <string>
#include <string_view>

// Exit statuses, as diff and grep have them.
constexpr int kFine = 0;
constexpr int kFound = 1;    // differences, breaks, files not opened or unknown
constexpr int kTrouble = 2;  // wrong usage, output that cannot be written

// To be called first: sets the name for messages and sees to it that the standard descriptors are open, and
// that a write that fails is an error and not a signal.
void start_companion(const char *name);

// What start_companion asks of the system (process.cpp; the module for browsers has its own).
void prepare_process();

// Answers --help and --version on standard output when the arguments are just that; whether they were.
bool answered(int argc, char **argv, const char *usage);

// Both print to standard error and return kTrouble. The message is made safe by the caller (safe_name).
int usage_error(const char *usage);
int trouble(const std::string &message);

// "NAME: message" on standard error, in one piece.
void complain(const std::string &message);

// Writes to standard output at once. When that fails the process ends: by SIGPIPE as other commands when the
// reader is gone, else with a message and kTrouble.
void write_out(std::string_view text);

// Processors of this machine, 1 at least.
unsigned core_count();
