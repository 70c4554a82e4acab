#include "companions/command.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <new>

namespace {

const char *command_name = "keldump";
std::terminate_handler usual_end = nullptr;

// Lists of names and rows may be more than there is memory for.
[[noreturn]] void end_by_exception() {
    try {
        if (const std::exception_ptr exception = std::current_exception()) std::rethrow_exception(exception);
    } catch (const std::bad_alloc &) {
        std::fputs(command_name, stderr);
        std::fputs(": out of memory\n", stderr);
        std::_Exit(kTrouble);
    } catch (...) {
        usual_end();
    }
    std::abort();
}

}  // namespace

void start_companion(const char *name) {
    command_name = name;
    usual_end = std::set_terminate(end_by_exception);
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
