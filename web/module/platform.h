// What WASI lacks of POSIX, for the sources that are shared with the native build: included before each.
#pragma once

// Members of ours may have names that POSIX has, whose headers come before them here.
#pragma clang diagnostic ignored "-Wshadow"

#include <fcntl.h>
#include <signal.h>
#include <stdlib.h>
#include <sys/ioctl.h>
#include <sys/select.h>

#define F_DUPFD_CLOEXEC 1030  // fails: no descriptor can be duplicated

// There are no signals that could come.
constexpr int SIG_SETMASK = 2;
inline int sigfillset(sigset_t *set) {
    *set = 0;
    return 0;
}
inline int sigprocmask(int, const sigset_t *, sigset_t *) { return 0; }

// No width is known of what standard output is.
struct winsize {
    unsigned short ws_col;
};
#define TIOCGWINSZ 0x5413  // fails

// No name can be had for a file that goes with the run: what a pipe gave stays in memory.
inline int mkstemp(char *) { return -1; }
