// companions/workers.h where there are no processes: one job after the other.
#include <algorithm>

#include "companions/files.h"
#include "companions/workers.h"

namespace {

class Said : public JobOutput {
 public:
    Said(size_t index, JobsReader &reader) : index_(index), reader_(reader) {}
    void out(std::string_view text) override { reader_.out(index_, text); }
    void complain(const std::string &message) override { reader_.complain(index_, message); }

 private:
    const size_t index_;
    JobsReader &reader_;
};

}  // namespace

void run_jobs(size_t count, unsigned, const Work &work, JobsReader &reader) {
    for (size_t index = 0; index < count; index++) {
        Said said(index, reader);
        reader.done(index, work(index, said), "");
        reader.progress(index + 1);
    }
}

FileList list_in_time(const std::vector<std::string> &operands, bool as_files) {
    return list_files(operands, as_files);
}
