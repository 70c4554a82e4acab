// Whole pieces through pipes between processes.
#pragma once

#include <cstddef>

// Writes n bytes; false where nobody reads them any more.
bool write_whole(int fd, const char *data, size_t n);
// Reads n bytes; false where they end before.
bool read_whole(int fd, char *data, size_t n);
