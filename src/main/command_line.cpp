#include "main/command_line.h"

#include <strings.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "common/name_pattern.h"
#include "common/print.h"

namespace {

constexpr int kUsageStatus = 255;
constexpr int kGoOn = -1;

// -h, -hn, -h=addr, -h=addr,length with hexadecimal numbers.
void parse_hex_switch(DumpOptions &opts, const char *arg) {
    opts.hex_dump = 1;
    if (arg[2] == 'n') opts.hex_no_offsets = 1;
    opts.hex_start = 0;
    const char *address = std::strchr(arg + 2, '=');
    if (!address) return;
    opts.hex_start = std::strtoll(address + 1, nullptr, 16);
    if (const char *length = std::strchr(address, ','))
        opts.hex_length = std::strtoll(length + 1, nullptr, 16);
}

void parse_save_switch(DumpOptions &opts, const char *arg) {
    opts.save_frames = 1;
    const char *pattern = arg[3] == '=' ? arg + 4 : "frame_%05d.jpc";
    std::snprintf(opts.frame_name_pattern, sizeof opts.frame_name_pattern, "%s", pattern);
}

bool parse_mxf_switch(DumpOptions &opts, const char *arg) {
    switch (arg[2]) {
        case 'c': opts.mxf_flag_c = 1; return true;
        case 'h': opts.mxf_flag_h = 1; return true;
        case 'l': opts.mxf_flag_l = 1; return true;
        case 's': parse_save_switch(opts, arg); return true;
        case 't': opts.mxf_flag_t = 1; return true;
        case 'v': opts.mxf_flag_v = 1; return true;
        case 'x': opts.mxf_flag_x = 1; return true;
        default: return false;
    }
}

// Refuses a name in which an s follows a % without a digit between them, with one line a refused character.
bool check_name(const char *name) {
    bool accepted = true;
    bool watching = false;
    for (const char *p = name; *p; p++) {
        if (*p == '%') {
            watching = true;
        } else if (watching && *p >= '0' && *p <= '9') {
            watching = false;
        } else if (watching && (*p == 's' || *p == 'S')) {
            print("keldump: %%s in string not allowed\n");
            accepted = false;
        }
    }
    return accepted;
}

// Refuses a pattern that would put anything but a number into a name.
bool check_pattern(const char *pattern) {
    if (valid_name_pattern(pattern)) return true;
    print("keldump: bad name pattern '%s'\n", pattern);
    return false;
}

}  // namespace

bool parse_switch(DumpOptions &opts, const char *arg) {
    switch (arg[1]) {
        case 'a': opts.flag_a = 1; return true;
        case 'd': opts.file_dump = 1; return true;
        case 'h': parse_hex_switch(opts, arg); return true;
        case 'm': return parse_mxf_switch(opts, arg);
        case 'p': opts.flag_p = 1; return true;
        case 's': opts.string_search = 1; return true;
        case 't': opts.flag_t = 1; return true;
        case 'u': opts.flag_u = 1; return true;
        case 'v': opts.verbose += 1; return true;
        default: return false;
    }
}

void usage() {
    print(
        "usage:    keldump filename             Dumps all known header fields\n"
        "          keldump filename start end   Dumps default timecodes in dpx files.\n"
        "\n"
        "          keldump dumps all (known) header fields in the following file formats.\n"
        "          DPX, Cineon, TIFF, BMP, JPG, JP2, SGI, TGA, Aiff, Wave, RF64\n"
        "          Also dumps some info on AVI, PPM, PNG, MXF, QT, TGA, YUV8/10/16 files\n"
        "\n"
        "          options:\n"
        "          -d        - Filedump\n"
        "          -h        - Hexdump\n"
        "          -hn       - Hexdump with no offsets\n"
        "          -h=1240   - Hexdump from addr 0x1240\n"
        "          -h=100,20 - Hexdump from addr 0x100 for 0x20 bytes\n"
        "          -s        - Search for text strings\n"
        "\n"
        "          Use this to verify files that can not be read or used for realtime transfers.\n"
        "\n"
        "          keldump version " KELDUMP_VERSION
        "\n"
        "\n");
}

int parse_command_line(int argc, char **argv, CommandLine &line) {
    if (argc < 2) {
        usage();
        return kUsageStatus;
    }
    if (strcasecmp(argv[1], "verify") == 0) {
        print("keldump: " KELDUMP_VERSION "\n");
        return 0;
    }
    // The last argument is the file name, whatever it begins with.
    int next = 1;
    for (; next < argc - 1 && argv[next][0] == '-'; next++) {
        if (!parse_switch(line.opts, argv[next])) {
            usage();
            return kUsageStatus;
        }
    }
    line.name = argv[next];
    if (argc - next == 3) {
        line.range_flag = 1;
        line.start = static_cast<int32_t>(std::strtoll(argv[next + 1], nullptr, 10));
        line.end = static_cast<int32_t>(std::strtoll(argv[next + 2], nullptr, 10));
    }
    if (!check_name(line.name)) return 0;
    if (line.range_flag && !check_pattern(line.name)) return 0;
    if (line.opts.save_frames && !check_pattern(line.opts.frame_name_pattern)) return 0;
    return kGoOn;
}
