// The one file of a fuzzed dump, in memory.
#pragma once

#include <cstddef>
#include <cstdint>

// Until the next call, opening any name that begins with `kMemoryFile` gives a file with these bytes. The
// target is linked with --wrap for the system calls that dumps make on files and for the maps of images.
inline constexpr char kMemoryFile[] = "fuzzed";
void set_memory_file(const uint8_t *data, size_t size);
