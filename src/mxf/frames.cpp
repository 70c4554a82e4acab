#include "mxf/frames.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <string>

#include "common/end_of_run.h"
#include "common/name_pattern.h"
#include "common/print.h"
#include "common/run.h"

namespace {

// How many files a run wrote.
struct Saved {
    int32_t frames = 0;
    int32_t triplets = 0;
};

// Whether all bytes were written.
bool write_all(int fd, std::span<const uint8_t> bytes) {
    while (!bytes.empty()) {
        const ssize_t count = write(fd, bytes.data(), bytes.size());
        if (count < 0 && errno == EINTR) continue;
        if (count <= 0) return false;
        bytes = bytes.subspan(static_cast<size_t>(count));
    }
    return true;
}

bool write_file(const std::string &name, Bytes value) {
    constexpr uint64_t kStep = 256 * 1024;
    const int fd = open(name.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666);
    if (fd < 0) return false;
    bool written = true;
    for (uint64_t done = 0; done < value.size() && written; done += kStep) {
        written = write_all(fd, value.span(done, kStep));
    }
    return close(fd) == 0 && written;
}

// One that cannot be written whole ends the run.
void save(const DumpOptions &opts, int32_t number, Bytes value) {
    const std::string name = name_from_pattern(opts.frame_name_pattern, number);
    if (write_file(name, value)) return;
    print("Cannot create file '%s'\n", name.c_str());
    end_run(0);
}

}  // namespace

void save_jpeg2000_frame(const DumpOptions &opts, Bytes value) {
    save(opts, Run::state<Saved>().frames++, value);
}

void save_triplet(const DumpOptions &opts, Bytes value) { save(opts, Run::state<Saved>().triplets++, value); }
