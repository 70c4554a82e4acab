// What is done for a file, a sequence or a pair of files, without processes or lists of files.
#pragma once

#include <string>
#include <string_view>

// Takes what a job has to say.
class JobOutput {
 public:
    virtual ~JobOutput() = default;
    virtual void out(std::string_view text) = 0;            // its result, in pieces
    virtual void complain(const std::string &message) = 0;  // a message about it, for the user to read
};
