#include <cstdio>
#include <new>

#include "main/command_line.h"
#include "main/file_sequence.h"

int main(int argc, char **argv) {
    static char output[64 * 1024];
    std::setvbuf(stdout, output, _IOFBF, sizeof output);
    CommandLine line;
    const int status = parse_command_line(argc, argv, line);
    if (status >= 0) return status;
    try {
        dump_files(line);
    } catch (const std::bad_alloc &) {
        std::printf("malloc failed\n");
    }
    return 0;
}
