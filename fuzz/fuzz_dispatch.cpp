// libFuzzer target: the input's first byte chooses the switches and the name's extension, the rest is the
// file.
//   cmake -S . -B build-fuzz -DKELDUMP_FUZZ=ON -DCMAKE_CXX_COMPILER=clang++ && cmake --build build-fuzz
//   --target fuzz_dispatch build-fuzz/fuzz_dispatch -dict=fuzz/magics.dict -max_len=65536 -close_fd_mask=1
//   CORPUS
#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <string>

#include "main/dispatch.h"

namespace {

constexpr const char *kExtensions[] = {".bin", ".mov", ".tga", ".yuv", ".txt", ".bin", ".bin", ".bin"};

void set_switches(DumpOptions &opts, unsigned choice) {
    opts.verbose = static_cast<int32_t>(choice & 3);
    opts.flag_a = opts.flag_t = static_cast<int32_t>(choice >> 2 & 1);
    opts.flag_p = opts.mxf_flag_x = static_cast<int32_t>(choice >> 3 & 1);
    opts.mxf_flag_l = static_cast<int32_t>(choice >> 4 & 1);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    if (size < 1) return 0;
    // Some dumps open the file again by its name.
    static const std::string base = "/tmp/keldump-fuzz-" + std::to_string(getpid());
    const std::string name = base + kExtensions[data[0] >> 5];
    std::FILE *file = std::fopen(name.c_str(), "w+b");
    if (!file) return 0;
    std::fwrite(data + 1, 1, size - 1, file);
    std::fflush(file);
    lseek(fileno(file), 0, SEEK_SET);
    DumpOptions opts{};
    set_switches(opts, data[0]);
    dispatch(opts, file, name.c_str(), 0);
    std::fclose(file);
    unlink(name.c_str());
    return 0;
}
