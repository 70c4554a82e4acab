// The command line of a companion.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "main/dump_options.h"

// Goes through the switches, which end at "--" or at the first argument that is none.
class Arguments {
 public:
    Arguments(int argc, char **argv) : argc_(argc), argv_(argv) {}

    // Moves to the next switch; false where the operands begin.
    bool next();
    // The switch as it stands.
    const char *text() const { return argv_[at_]; }

    bool is(std::string_view name) const { return name == argv_[at_]; }
    // Takes a switch with its value, the next argument or, behind "=", its own rest: "--match X" and
    // "--match=X"; of one letter also "-jX". Where the value is missing `failed`.
    bool takes(std::string_view name, std::string &value);
    // "-j N": a number from 1 to 1024.
    bool takes_jobs(unsigned &jobs);

    // keldump's own switches but -ms, by which all files would write the same names.
    bool sets(DumpOptions &options) const;

    // Says which switch is not known or lacks its value; false, for parsers to return.
    bool refuse();
    bool failed() const { return failed_; }

    std::vector<std::string> operands() const { return {argv_ + at_, argv_ + argc_}; }

 private:
    int argc_;
    char **argv_;
    int at_ = 0;
    bool failed_ = false;
};

// Adds the names of a list with commas between.
void add_names(const std::string &list, std::vector<std::string> &names);
