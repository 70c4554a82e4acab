#include "companions/workers.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>

#ifdef __linux__
#include <sys/prctl.h>
#endif

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <climits>
#include <csignal>
#include <cstdint>
#include <cstring>
#include <deque>
#include <new>
#include <vector>

#include "companions/pipes.h"

namespace {

constexpr size_t kAhead = 1 << 20;
constexpr size_t kKept = 64 << 20;
constexpr size_t kJobsAhead = 65536;
constexpr size_t kPiece = 64 * 1024;
constexpr size_t kUnassigned = SIZE_MAX;

// A message of a worker: this, then its text.
struct MessageHead {
    enum Kind : uint32_t { out, complaint, done } kind;
    uint32_t size;  // of a job that is done its status
};

// The worker's side: messages in a block that goes out when it is full or the job is done.
class MessageWriter : public JobOutput {
 public:
    // All room that it needs at once: a head without its text would make the parent wait for ever.
    explicit MessageWriter(int fd) : fd_(fd) { block_.reserve(2 * kPiece + 2 * sizeof(MessageHead)); }

    void out(std::string_view text) override { add(MessageHead::out, text); }
    void complain(const std::string &message) override { add(MessageHead::complaint, message); }
    void done(int status) {
        put({MessageHead::done, static_cast<uint32_t>(status)});
        flush();
    }

 private:
    void add(MessageHead::Kind kind, std::string_view text) {
        while (!text.empty()) {
            const std::string_view piece = text.substr(0, kPiece);
            text.remove_prefix(piece.size());
            put({kind, static_cast<uint32_t>(piece.size())});
            block_ += piece;
            if (block_.size() >= kPiece) flush();
        }
    }
    void put(MessageHead head) { block_.append(reinterpret_cast<const char *>(&head), sizeof head); }
    void flush() {
        if (!write_whole(fd_, block_.data(), block_.size())) _exit(0);  // nobody is left to be told
        block_.clear();
    }

    int fd_;
    std::string block_;
};

constexpr int kNoMemory = INT_MIN;  // a status that no job has

int guarded(const Work &work, size_t index, JobOutput &output) {
    try {
        return work(index, output);
    } catch (const std::bad_alloc &) {
        return kNoMemory;
    }
}

// What has no memory is broken off as what dies is.
struct JobEnd {
    int status;
    std::string death;
};

JobEnd end_of(int status) { return status == kNoMemory ? JobEnd{1, "out of memory"} : JobEnd{status, ""}; }

[[noreturn]] void be_worker(int tasks, int messages, const Work &work) {
    std::signal(SIGPIPE, SIG_DFL);
    MessageWriter writer(messages);
    size_t index = 0;
    while (read_whole(tasks, reinterpret_cast<char *>(&index), sizeof index))
        writer.done(guarded(work, index, writer));
    _exit(0);
}

struct Worker {
    pid_t pid = -1;
    int tasks = -1;
    int messages = -1;
    size_t job = kUnassigned;
    std::string rest;  // a message that is not whole
};

// What a job said before its turn.
struct Slot {
    std::string said;  // whole messages
    bool ended = false;
    int status = 0;
    std::string death;
};

std::string death_of(int status) {
    if (!WIFSIGNALED(status)) return "ended with status " + std::to_string(WEXITSTATUS(status));
    const int signal = WTERMSIG(status);
    if (signal == SIGKILL) return "killed, perhaps out of memory";
    return "killed by signal " + std::to_string(signal) + " (" + strsignal(signal) + ")";
}

class Pool {
 public:
    Pool(size_t count, unsigned jobs, const Work &work, JobsReader &reader)
        : count_(count), wanted_(std::min<size_t>(jobs, count)), work_(work), reader_(reader) {}
    ~Pool() {
        for (Worker &worker : workers_) end(worker);
    }
    Pool(const Pool &) = delete;
    Pool &operator=(const Pool &) = delete;

    void run() {
        while (head_ < count_) {
            assign();
            if (workers_.empty()) {
                work_here();
            } else {
                wait();
            }
            tell_progress();
        }
    }

 private:
    using Clock = std::chrono::steady_clock;

    bool may_start() const {
        return next_ < count_ && (next_ == head_ || (kept_ < kKept && next_ - head_ < kJobsAhead));
    }

    // Gives the next jobs to workers that have none, and makes these as they are needed.
    void assign() {
        for (Worker &worker : workers_) {
            if (worker.job == kUnassigned && may_start()) give(worker);
        }
        while (may_start() && workers_.size() < wanted_ && start()) give(workers_.back());
    }

    void give(Worker &worker) {
        slots_.emplace_back();
        worker.job = next_++;
        // One that is already gone is found so when it is read.
        write_whole(worker.tasks, reinterpret_cast<const char *>(&worker.job), sizeof worker.job);
    }

    bool start() {
        int tasks[2];
        int messages[2];
        if (pipe(tasks) != 0) return fewer();
        if (pipe(messages) != 0) {
            close(tasks[0]);
            close(tasks[1]);
            return fewer();
        }
        const pid_t parent = getpid();
        const pid_t pid = fork();
        if (pid == 0) {
            close(tasks[1]);
            close(messages[0]);
            // What the others are read and told by must end with this process's parent, and with nobody else.
            for (const Worker &other : workers_) {
                close(other.tasks);
                close(other.messages);
            }
#ifdef __linux__
            prctl(PR_SET_PDEATHSIG, SIGKILL);
            if (getppid() != parent) _exit(0);
#endif
            be_worker(tasks[0], messages[1], work_);
        }
        close(tasks[0]);
        close(messages[1]);
        if (pid < 0) {
            close(tasks[1]);
            close(messages[0]);
            return fewer();
        }
        fcntl(messages[0], F_SETFL, O_NONBLOCK);
        workers_.push_back({pid, tasks[1], messages[0], kUnassigned, {}});
        return true;
    }

    // No more workers than there are, as the system has no room for them.
    bool fewer() {
        wanted_ = workers_.size();
        return false;
    }

    void work_here() {
        struct Direct : JobOutput {
            Direct(JobsReader &to, size_t job) : reader(to), index(job) {}
            void out(std::string_view text) override { reader.out(index, text); }
            void complain(const std::string &message) override { reader.complain(index, message); }
            JobsReader &reader;
            size_t index;
        } output(reader_, head_);
        const JobEnd end = end_of(guarded(work_, head_, output));
        reader_.done(head_, end.status, end.death);
        next_ = ++head_;
        ended_++;
    }

    // Whether a worker is read: its job's turn has come, or it is not far ahead.
    bool is_read(const Worker &worker) const {
        if (worker.job == head_) return true;
        if (worker.job == kUnassigned) return true;  // its end would be news
        return kept_ < kKept && slots_[worker.job - head_].said.size() < kAhead;
    }

    void wait() {
        std::vector<pollfd> watched;
        for (const Worker &worker : workers_)
            watched.push_back({is_read(worker) ? worker.messages : -1, POLLIN, 0});
        constexpr int kProgress = 100;  // milliseconds
        if (poll(watched.data(), static_cast<nfds_t>(watched.size()), kProgress) <= 0) return;
        for (size_t i = 0; i < watched.size(); i++) {
            if (watched[i].revents != 0) read_messages(workers_[i]);
        }
        std::erase_if(workers_, [](const Worker &worker) { return worker.pid < 0; });
    }

    void read_messages(Worker &worker) {
        static char piece[kPiece];
        const ssize_t count = read(worker.messages, piece, sizeof piece);
        if (count > 0) {
            worker.rest.append(piece, static_cast<size_t>(count));
            take_messages(worker);
        } else if (count == 0 || (errno != EAGAIN && errno != EINTR)) {
            bury(worker);
        }
    }

    void take_messages(Worker &worker) {
        size_t at = 0;
        MessageHead head;
        while (worker.rest.size() - at >= sizeof head && worker.job != kUnassigned) {
            std::memcpy(&head, worker.rest.data() + at, sizeof head);
            const size_t size = sizeof head + (head.kind == MessageHead::done ? 0 : head.size);
            if (worker.rest.size() - at < size) break;
            const std::string_view message = std::string_view(worker.rest).substr(at, size);
            at += size;
            if (head.kind == MessageHead::done) {
                job_ended(worker.job, end_of(static_cast<int>(head.size)));
                worker.job = kUnassigned;
            } else if (worker.job == head_) {
                pass_on(message);
            } else {
                slots_[worker.job - head_].said += message;
                kept_ += message.size();
            }
        }
        worker.rest.erase(0, at);
    }

    // Hands what the first job said to the reader.
    void pass_on(std::string_view messages) {
        MessageHead head;
        while (!messages.empty()) {
            std::memcpy(&head, messages.data(), sizeof head);
            const std::string_view text = messages.substr(sizeof head, head.size);
            if (head.kind == MessageHead::out) {
                reader_.out(head_, text);
            } else {
                reader_.complain(head_, std::string(text));
            }
            messages.remove_prefix(sizeof head + text.size());
        }
    }

    void job_ended(size_t job, const JobEnd &end) {
        Slot &slot = slots_[job - head_];
        slot.ended = true;
        slot.status = end.status;
        slot.death = end.death;
        ended_++;
        while (!slots_.empty() && slots_.front().ended) {
            reader_.done(head_, slots_.front().status, slots_.front().death);
            slots_.pop_front();
            head_++;
            if (slots_.empty()) break;
            // The next one's turn has come.
            Slot &first = slots_.front();
            kept_ -= first.said.size();
            pass_on(first.said);
            std::string().swap(first.said);
        }
    }

    void bury(Worker &worker) {
        int status = 0;
        while (waitpid(worker.pid, &status, 0) < 0 && errno == EINTR) {
        }
        const size_t job = worker.job;
        close(worker.tasks);
        close(worker.messages);
        worker.pid = -1;
        if (job != kUnassigned) job_ended(job, {1, death_of(status)});
    }

    // At its end a worker has no job and waits for one.
    static void end(Worker &worker) {
        close(worker.tasks);
        close(worker.messages);
        int status = 0;
        while (waitpid(worker.pid, &status, 0) < 0 && errno == EINTR) {
        }
    }

    void tell_progress() {
        const Clock::time_point now = Clock::now();
        if (now < next_progress_) return;
        reader_.progress(ended_);
        next_progress_ = now + std::chrono::milliseconds(100);
    }

    const size_t count_;
    size_t wanted_;  // workers
    const Work &work_;
    JobsReader &reader_;
    std::vector<Worker> workers_;
    std::deque<Slot> slots_;  // from head_ to next_
    size_t head_ = 0;         // whose turn it is
    size_t next_ = 0;         // to be given to a worker
    size_t kept_ = 0;         // bytes that wait for their turn
    size_t ended_ = 0;
    Clock::time_point next_progress_ = Clock::now();
};

}  // namespace

void run_jobs(size_t count, unsigned jobs, const Work &work, JobsReader &reader) {
    Pool(count, jobs, work, reader).run();
}
