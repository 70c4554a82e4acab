#include "companions/command.h"

#include <poll.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <thread>

#include "companions/alias.h"
#include "companions/safe_text.h"

namespace {

const char *command_name = "keldump";
std::atomic<bool> ending = false;  // what fails from now on does so because the temporary names are gone

// The signals that end a run, without those that were ignored at the start (nohup).
sigset_t ending_signals() {
    sigset_t set;
    sigemptyset(&set);
    for (const int signal : {SIGINT, SIGTERM, SIGHUP, SIGQUIT}) {
        struct sigaction action;
        if (sigaction(signal, nullptr, &action) == 0 && action.sa_handler != SIG_IGN) sigaddset(&set, signal);
    }
    return set;
}

[[noreturn]] void end_by(int signal) {
    ending = true;
    remove_aliases();
    std::signal(signal, SIG_DFL);
    sigset_t set;
    sigemptyset(&set);
    sigaddset(&set, signal);
    pthread_sigmask(SIG_UNBLOCK, &set, nullptr);
    kill(getpid(), signal);
    pause();
    _exit(kTrouble);
}

}  // namespace

void start_companion(const char *name) {
    command_name = name;
    std::signal(SIGPIPE, SIG_IGN);
    std::signal(SIGXFSZ, SIG_IGN);  // a limit is a write that fails
    const sigset_t set = ending_signals();
    pthread_sigmask(SIG_BLOCK, &set, nullptr);
    std::thread([set] {
        int signal = SIGTERM;
        if (sigwait(&set, &signal) == 0) end_by(signal);
    }).detach();
}

bool answered(int argc, char **argv, const char *usage) {
    if (argc != 2) return false;
    if (std::strcmp(argv[1], "--help") == 0) {
        write_out(usage);
        return true;
    }
    if (std::strcmp(argv[1], "--version") == 0) {
        write_out(std::string(command_name) + " " KELDUMP_VERSION "\n");
        return true;
    }
    return false;
}

bool parse_jobs(int argc, char **argv, int &next, unsigned &jobs) {
    constexpr long kMost = 1024;
    const char *text = argv[next] + 2;
    if (*text == '\0') {
        if (++next == argc) return false;
        text = argv[next];
    }
    char *end = nullptr;
    const long number = std::strtol(text, &end, 10);
    if (*text == '\0' || *end != '\0' || number < 1 || number > kMost) return false;
    jobs = static_cast<unsigned>(number);
    return true;
}

bool unknown_switch(const std::string &argument) {
    complain("unknown or wrong switch " + safe_name(argument));
    return false;
}

int usage_error(const char *usage) {
    std::fputs(usage, stderr);
    return kTrouble;
}

int trouble(const std::string &message) {
    complain(message);
    return kTrouble;
}

void complain(const std::string &message) {
    if (!ending) std::fprintf(stderr, "%s: %s\n", command_name, message.c_str());
}

void write_out(std::string_view text) {
    while (!text.empty()) {
        const ssize_t done = write(STDOUT_FILENO, text.data(), text.size());
        if (done >= 0) {
            text.remove_prefix(static_cast<size_t>(done));
        } else if (errno == EPIPE) {
            end_by(SIGPIPE);
        } else if (errno == EAGAIN || errno == EWOULDBLOCK) {
            pollfd ready{STDOUT_FILENO, POLLOUT, 0};
            poll(&ready, 1, -1);
        } else if (errno != EINTR) {
            complain(std::string("cannot write: ") + std::strerror(errno));
            end_now(kTrouble);
        }
    }
}

void end_now(int status) {
    ending = true;
    remove_aliases();
    _exit(status);
}

unsigned core_count() {
    const unsigned cores = std::thread::hardware_concurrency();
    return cores == 0 ? 1 : cores;
}
