// Jobs whose result is printed as it is.
#pragma once

#include <string>
#include <vector>

#include "companions/files.h"
#include "companions/workers.h"

// Prints what jobs on files say; complaints behind the file's name. Of a file whose worker died a complaint
// is all there is.
class PrintedJobs : public JobsReader {
 public:
    explicit PrintedJobs(const std::vector<std::string> &files) : files_(files) {}

    void out(size_t index, std::string_view text) override;
    void complain(size_t index, const std::string &message) override;
    void done(size_t index, int status, const std::string &death) override;
    void progress(size_t) override {}

    // The highest of all jobs.
    int status() const { return status_; }

 private:
    void flush();

    const std::vector<std::string> &files_;
    std::string text_;
    int status_ = 0;
};

// Complains of what was no file; whether there was any.
bool report_problems(const FileList &list);
