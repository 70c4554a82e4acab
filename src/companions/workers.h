// Work on many files at once, in processes of their own: a file that ends one costs that file alone.
#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>

#include "companions/job.h"

// What is done for an index, in a worker; its status.
using Work = std::function<int(size_t index, JobOutput &output)>;

// Takes what the jobs said, in the order of their indices.
class JobsReader {
 public:
    virtual ~JobsReader() = default;
    virtual void out(size_t index, std::string_view text) = 0;
    virtual void complain(size_t index, const std::string &message) = 0;
    // The job is done. `death`: why it was broken off instead ("killed by signal 11 (Segmentation fault)",
    // "out of memory"), else empty.
    virtual void done(size_t index, int status, const std::string &death) = 0;
    // Now and then, every 100 ms at least, with the number of jobs that ended, those that wait for their
    // turn, too.
    virtual void progress(size_t ended) = 0;
};

// Calls `work` once for each index below `count`, in up to `jobs` workers at a time. They are forked from
// this process, which must have no thread, and end when it does. What a job said waits for its turn: a worker
// is read no further than 1 MiB ahead of it, and no more than 64 MiB are kept in all. Where no process can be
// made the work is done here.
void run_jobs(size_t count, unsigned jobs, const Work &work, JobsReader &reader);
