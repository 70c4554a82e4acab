#include "mxf/frames.h"

#include <cstdio>
#include <cstdlib>

#include "common/name_pattern.h"

namespace {

constexpr size_t kNameSize = 4096;

void save(const DumpOptions &opts, int32_t number, Bytes value) {
    constexpr uint64_t kStep = 256 * 1024;
    char name[kNameSize];
    expand_name_pattern(name, sizeof name, opts.frame_name_pattern, number);
    std::FILE *file = std::fopen(name, "wb");
    if (!file) {
        std::printf("Cannot create file '%s'\n", name);
        std::exit(0);
    }
    for (uint64_t done = 0; done < value.size(); done += kStep) {
        const auto part = value.span(done, kStep);
        std::fwrite(part.data(), 1, part.size(), file);
    }
    std::fclose(file);
}

}  // namespace

void save_jpeg2000_frame(const DumpOptions &opts, Bytes value) {
    static int32_t index = 0;
    save(opts, index++, value);
}

void save_triplet(const DumpOptions &opts, Bytes value) {
    static int32_t index = 0;
    save(opts, index++, value);
}
