// Lists files in a process of its own, as what is asked of a dead share may never be answered.
#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>

#ifdef __linux__
#include <sys/prctl.h>
#endif

#include <cerrno>
#include <csignal>
#include <cstdint>
#include <cstdlib>
#include <new>

#include "companions/files.h"
#include "companions/packing.h"
#include "companions/pipes.h"

namespace {

constexpr int kPatience = 10000;  // milliseconds, for the first that does not answer
constexpr int kLessPatience = 200;
constexpr uint64_t kIsDirectory = UINT64_MAX;  // instead of a size: it answers, its list may take long

std::string packed(const FileList &list) {
    TextPairs files;
    for (size_t i = 0; i < list.files.size(); i++) {
        const auto why = list.refused.find(i);
        const std::string mark = !list.are_named[i]          ? ""
                                 : why == list.refused.end() ? "!"
                                                             : "!" + why->second;
        files.emplace_back(list.files[i], mark);
    }
    TextPairs problems;
    for (const std::string &problem : list.problems) problems.emplace_back(problem, "");
    std::string text;
    put_pairs(text, files);
    put_pairs(text, problems);
    return text;
}

void add(std::string_view text, FileList &list) {
    for (auto &[name, mark] : take_pairs(text)) {
        if (mark.size() > 1) list.refused[list.files.size()] = mark.substr(1);
        list.files.push_back(std::move(name));
        list.are_named.push_back(!mark.empty());
    }
    for (auto &[problem, mark] : take_pairs(text)) list.problems.push_back(std::move(problem));
}

bool put(int fd, uint64_t number, std::string_view text) {
    return write_whole(fd, reinterpret_cast<const char *>(&number), sizeof number) &&
           write_whole(fd, text.data(), text.size());
}

// The lists of operands, one after the other.
class Lister {
 public:
    Lister(const std::vector<std::string> &operands, size_t first, bool as_files) {
        int ends[2];
        if (pipe(ends) != 0) return;
        const pid_t parent = getpid();
        pid_ = fork();
        if (pid_ == 0) {
            close(ends[0]);
#ifdef __linux__
            prctl(PR_SET_PDEATHSIG, SIGKILL);
            if (getppid() != parent) _exit(0);
#endif
            tell(ends[1], operands, first, as_files);
        }
        close(ends[1]);
        in_ = ends[0];
    }
    // One that does not answer is not waited for.
    ~Lister() {
        if (in_ >= 0) close(in_);
        if (pid_ <= 0) return;
        kill(pid_, SIGKILL);
        waitpid(pid_, nullptr, done_ ? 0 : WNOHANG);
    }
    Lister(const Lister &) = delete;
    Lister &operator=(const Lister &) = delete;

    enum class Answer { list, none, end };

    Answer next(std::string &text, int patience) {
        if (pid_ <= 0) return Answer::end;
        pollfd ready{in_, POLLIN, 0};
        int count = 0;
        do count = poll(&ready, 1, patience);
        while (count < 0 && errno == EINTR);
        if (count == 0) return Answer::none;
        uint64_t size = 0;
        const auto take_size = [&] { return read_whole(in_, reinterpret_cast<char *>(&size), sizeof size); };
        if (!take_size() || (size == kIsDirectory && !take_size())) return Answer::end;
        text.resize(size);
        return read_whole(in_, text.data(), text.size()) ? Answer::list : Answer::end;
    }
    void done() { done_ = true; }

 private:
    [[noreturn]] static void tell(int out, const std::vector<std::string> &operands, size_t first,
                                  bool as_files) {
        std::signal(SIGPIPE, SIG_DFL);
        try {
            for (size_t i = first; i < operands.size(); i++) {
                if (is_directory(operands[i]) && !put(out, kIsDirectory, "")) break;
                const std::string text = packed(list_files({operands[i]}, as_files));
                if (!put(out, text.size(), text)) break;
            }
        } catch (const std::bad_alloc &) {
        }
        _exit(0);
    }

    pid_t pid_ = -1;
    int in_ = -1;
    bool done_ = false;
};

}  // namespace

FileList list_in_time(const std::vector<std::string> &operands, bool as_files) {
    FileList list;
    int patience = kPatience;
    for (size_t at = 0; at < operands.size();) {
        Lister lister(operands, at, as_files);
        std::string text;
        Lister::Answer answer = Lister::Answer::list;
        while (at < operands.size() && (answer = lister.next(text, patience)) == Lister::Answer::list) {
            add(text, list);
            at++;
        }
        if (at == operands.size()) {
            lister.done();
        } else if (answer == Lister::Answer::none) {
            list.files.push_back(operands[at++]);
            list.are_named.push_back(true);
            patience = kLessPatience;
        } else {
            add(packed(list_files({operands[at++]}, as_files)), list);
        }
    }
    return list;
}
