// The files that a companion's operands stand for.
#pragma once

#include <map>
#include <string>
#include <string_view>
#include <vector>

// Order of names as a person counts: runs of digits compare by their value ("f9" before "f10"), everything
// else byte by byte. A total order: names that count the same are told apart by their bytes.
bool natural_less(std::string_view a, std::string_view b);

struct FileList {
    std::vector<std::string> files;
    std::vector<bool> are_named;            // of each, whether an operand is its name
    std::vector<std::string> problems;      // messages about what could not be read or is no file
    std::map<size_t, std::string> refused;  // of these `files`, instead of `problems`, why they are not read
};

// Operands that are files, in the order given (missing ones too: the dump will say so), and the files below
// operands that are directories, in natural order. Below a directory, names that begin with a dot,
// directories behind symbolic links, pipes, sockets and devices are left out. A pipe, socket or terminal
// given by name is a problem, as opening it could wait for ever, unless it is one of this process
// (/dev/stdin, /dev/fd/N). With `as_files` what is refused keeps its place in the list, and pipes given by
// name are read (once, to their ends).
FileList list_files(const std::vector<std::string> &operands, bool as_files = false);

// The same for operands that may lie on a share that is dead: the list of one that does not answer in ten
// seconds is the operand itself, as what reads it may wait.
FileList list_in_time(const std::vector<std::string> &operands, bool as_files = false);

// Whether there is something of this name, or a directory; links are followed.
bool is_there(const std::string &name);
bool is_directory(const std::string &name);

// The names in a directory, in no order; none where it cannot be read.
std::vector<std::string> names_in(const std::string &directory);

// Adds the names that a file lists ("-": standard input), each ended by `end`; false, behind a message, where
// it cannot be read.
bool read_names(const std::string &file, char end, std::vector<std::string> &names);
