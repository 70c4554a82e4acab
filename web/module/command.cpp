// companions/command.h where there are neither signals nor threads.
#include "companions/command.h"

#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace {

const char *command_name = "keldump";

}  // namespace

void start_companion(const char *name) { command_name = name; }

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

bool unknown_switch(const std::string &argument) {
    complain("unknown or wrong switch " + argument);
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

void complain(const std::string &message) { std::fprintf(stderr, "%s: %s\n", command_name, message.c_str()); }

void write_out(std::string_view text) {
    while (!text.empty()) {
        const ssize_t done = write(STDOUT_FILENO, text.data(), text.size());
        if (done >= 0) {
            text.remove_prefix(static_cast<size_t>(done));
        } else if (errno != EINTR) {
            complain(std::string("cannot write: ") + std::strerror(errno));
            std::_Exit(kTrouble);
        }
    }
}

unsigned core_count() { return 1; }
