#include "companions/command.h"

#include <cstdio>
#include <cstring>

namespace {

const char *command_name = "keldump";

}  // namespace

void start_companion(const char *name) {
    command_name = name;
    prepare_process();
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

int usage_error(const char *usage) {
    std::fputs(usage, stderr);
    return kTrouble;
}

int trouble(const std::string &message) {
    complain(message);
    return kTrouble;
}

void complain(const std::string &message) {
    const std::string line = std::string(command_name) + ": " + message + "\n";
    std::fputs(line.c_str(), stderr);
}
