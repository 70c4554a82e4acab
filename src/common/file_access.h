// The system calls on files that dumps and images make.
#pragma once

#include <cstdint>
#include <cstdio>
#include <memory>

using OpenFile = std::unique_ptr<std::FILE, int (*)(std::FILE *)>;

// Opens a file by its name; null where that fails. Input that cannot be positioned (a pipe, a socket, a
// terminal, by its name or as /dev/stdin or /dev/fd/N) is read to its end first and stands for a file with
// its bytes from then on.
OpenFile open_input(const char *name);

// Has the file opened and its head under way that open_input is to open next, where files are slow to reach;
// nothing is done elsewhere, nor for what is no regular file.
void announce_input(const char *name);

// Opens once more what open_input opened last under that name: a descriptor, -1 where that fails, or a
// stream.
int open_descriptor_again(const char *name);
OpenFile open_again(const char *name);

// Moves to an offset; false where the file has no such place: before its start, or beyond what its system can
// address.
bool seek_to(std::FILE *file, int64_t offset);

// Size of a regular file or block device in bytes; 0 for whatever has none (directories, pipes, devices).
uint64_t file_size(int fd);
uint64_t file_size(std::FILE *file);

// Reads up to n bytes at an offset of the input; the count read, less at the end of the file or at an error.
// Where that turns out to be slow and the file lies on another machine, what follows is announced to the
// system.
uint64_t read_at(int fd, uint64_t offset, void *data, uint64_t n);

// Reads up to n bytes from the current position, going on after short reads (pipes); the count read.
uint64_t read_fully(int fd, void *data, uint64_t n);
