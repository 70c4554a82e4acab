#include <fcntl.h>
#include <unistd.h>

#include <csignal>
#include <new>

#include "common/end_of_run.h"
#include "common/print.h"
#include "main/command_line.h"
#include "main/file_sequence.h"

namespace {

// No file is to be opened under the number of a standard stream that is closed: what is printed would land in
// it.
void hold_standard_streams() {
    for (int fd = STDIN_FILENO; fd <= STDERR_FILENO; fd++) {
        if (fcntl(fd, F_GETFD) < 0) open("/dev/null", O_RDONLY);
    }
}

int run(int argc, char **argv) {
    CommandLine line;
    const int status = parse_command_line(argc, argv, line);
    if (status >= 0) return status;
    try {
        dump_files(line);
    } catch (const std::bad_alloc &) {
        print("malloc failed\n");
    }
    return 0;
}

}  // namespace

int main(int argc, char **argv) {
    std::signal(SIGXFSZ, SIG_IGN);  // a limit is a write that fails
    hold_standard_streams();
    int status = 0;
    try {
        status = run(argc, argv);
    } catch (const EndOfRun &end) {
        status = end.status;
    }
    standard_output.goes_on_without(true);
    standard_output.flush();
    return status;
}
