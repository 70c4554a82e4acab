// What a companion needs of its system.
#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <new>

#include "companions/command.h"

namespace {

// A descriptor that is closed would be given to the next file, and a message would land in it.
void fill_standard_descriptors() {
    for (const int fd : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
        if (fcntl(fd, F_GETFD) >= 0) continue;
        // Reading standard input and writing to standard output are to fail as they do where they are closed.
        const int opened = open("/dev/null", fd == STDOUT_FILENO ? O_RDONLY : O_WRONLY);
        if (opened >= 0 && opened != fd) close(opened);
    }
}

[[noreturn]] void end_by_broken_pipe() {
    std::signal(SIGPIPE, SIG_DFL);
    raise(SIGPIPE);
    _exit(kTrouble);
}

std::terminate_handler usual_end = nullptr;

// Lists of names and rows may be more than there is memory for.
[[noreturn]] void end_by_exception() {
    try {
        if (const std::exception_ptr exception = std::current_exception()) std::rethrow_exception(exception);
    } catch (const std::bad_alloc &) {
        complain("out of memory");
        _exit(kTrouble);
    } catch (...) {
        usual_end();
    }
    std::abort();
}

}  // namespace

void prepare_process() {
    usual_end = std::set_terminate(end_by_exception);
    fill_standard_descriptors();
    std::signal(SIGPIPE, SIG_IGN);
    std::signal(SIGXFSZ, SIG_IGN);  // a limit is a write that fails
}

void write_out(std::string_view text) {
    while (!text.empty()) {
        const ssize_t done = write(STDOUT_FILENO, text.data(), text.size());
        if (done >= 0) {
            text.remove_prefix(static_cast<size_t>(done));
        } else if (errno == EPIPE) {
            end_by_broken_pipe();
        } else if (errno == EAGAIN || errno == EWOULDBLOCK) {
            pollfd ready{STDOUT_FILENO, POLLOUT, 0};
            poll(&ready, 1, -1);
        } else if (errno != EINTR) {
            complain(std::string("cannot write: ") + std::strerror(errno));
            _exit(kTrouble);
        }
    }
}

unsigned core_count() {
    const long cores = sysconf(_SC_NPROCESSORS_ONLN);
    return cores < 1 ? 1 : static_cast<unsigned>(cores);
}
