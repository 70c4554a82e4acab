// Temporary names for files whose own ones keldump would take otherwise.
#pragma once

#include <string>

// A symbolic link in a directory of this process below TMPDIR that leads to a file, with an extension of its
// own (".mov"; may be empty). Empty when it cannot be made. Safe from any thread.
class Alias {
 public:
    Alias(const std::string &path, const std::string &extension);
    ~Alias();
    Alias(const Alias &) = delete;
    Alias &operator=(const Alias &) = delete;

    const std::string &name() const { return name_; }

 private:
    std::string name_;
};

// Removes the directory with what is in it; from then on no alias can be made. Called at the end of the
// process and before a signal ends it.
void remove_aliases();
