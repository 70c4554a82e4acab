// companions/process.cpp where there are neither signals nor processes.
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>

#include "companions/command.h"

void prepare_process() {}

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
