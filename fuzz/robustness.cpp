// Feeds damaged copies of files to the dumps, and to the readers of facts, in a process of its own, and
// reports every copy on which one crashes, is caught by a sanitizer, writes to standard error, ends with an
// unexpected status or takes too long: then another process goes on behind that copy.
//
//   robustness [--rounds N] [--runs N] [--seconds S] [--seed N] [--keep DIRECTORY] FILE_OR_DIRECTORY...
//
// Each file is dumped as it is, cut at many places and damaged in other ways, `rounds` times, each time under
// one of the sets of switches. With a number of runs or a time the files are gone through, with new seeds,
// until it is over. Findings are kept in DIRECTORY (by default the working directory) as finding-*.
#include <fcntl.h>
#include <sys/mman.h>
#include <sys/resource.h>
#include <sys/time.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <string>
#include <vector>

#include "common/end_of_run.h"
#include "common/print.h"
#include "main/command_line.h"
#include "main/facts.h"
#include "main/file_sequence.h"

namespace fs = std::filesystem;

namespace {

constexpr time_t kProcessorSecondsARun = 30;  // for a dump of 95 MB, beside other work
constexpr unsigned kSecondsARun = 120;        // for one that waits
constexpr rlim_t kOutputLimit = rlim_t{1} << 30;
constexpr int kFatalComponent = 1;  // the one status beside 0 that a dump may end with
constexpr int kWrongStatus = 100;   // the child ends with it and the dump's status, or
constexpr int kSpoke = 99;          // with this where a dump wrote to standard error

// Switches, which stand before the name, and the numbers of a frame range, which stand behind it.
const std::vector<std::vector<std::string>> kSwitches = {
    {},           {"-v"}, {"-v", "-v"},         {"-v", "-v", "-v"},   {"-t"},
    {"-a", "-t"}, {"-p"}, {"-mc", "-mx", "-v"}, {"-ml", "-ms=saved"}, {"-d", "-u"},
    {"-s"},       {"-h"}, {"-hn=10,333"},       {"0", "1"},
};

struct Options {
    unsigned rounds = 100;
    uint64_t runs = 0;
    double seconds = 0;
    unsigned seed = 1;
    fs::path keep = ".";
    std::vector<fs::path> files;
};

using Content = std::vector<char>;

// One damaged copy of a file; the same number gives the same copy.
Content damage(const Content &original, unsigned number, unsigned seed) {
    std::mt19937 random(seed * 1000003U + number);
    const auto below = [&](size_t n) { return n ? random() % n : size_t{0}; };
    Content copy = original;
    if (number == 0 || copy.empty()) return copy;
    if (number % 4 == 1) {
        copy.resize(below(2) ? below(copy.size()) : below(std::min<size_t>(copy.size(), 600)));
        return copy;
    }
    // Headers are where the fields are: most damage goes to the first few KB.
    const size_t reach = below(3) ? std::min<size_t>(copy.size(), 2048) : copy.size();
    const unsigned changes = 1 + static_cast<unsigned>(below(6));
    static const uint64_t extremes[] = {0,          1,          2,         7,         8,          0x7F,
                                        0x80,       0xFF,       0x7FFF,    0xFFFF,    0x7FFFFFFF, 0x80000000,
                                        0xFFFFFFF0, 0xFFFFFFFF, INT64_MAX, UINT64_MAX};
    for (unsigned i = 0; i < changes && !copy.empty(); i++) {
        const size_t at = below(std::min(reach, copy.size()));
        switch (below(6)) {
            case 0: copy[at] = static_cast<char>(copy[at] ^ (1 << below(8))); break;
            case 1: copy[at] = static_cast<char>(random()); break;
            case 2: {  // a field of 1 to 8 bytes set to an extreme, in either order
                const size_t n = size_t{1} << below(4);
                const uint64_t value = extremes[below(std::size(extremes))];
                const bool big = below(2);
                for (size_t k = 0; k < n && at + k < copy.size(); k++) {
                    copy[at + k] = static_cast<char>(value >> (8 * (big ? n - 1 - k : k)));
                }
                break;
            }
            case 3: {
                const size_t n = 1 + below(16);
                const Content piece(n, static_cast<char>(random()));
                copy.insert(copy.begin() + static_cast<std::ptrdiff_t>(at), piece.begin(), piece.end());
                break;
            }
            case 4: {
                const size_t n = std::min(1 + below(32), copy.size() - at);
                copy.erase(copy.begin() + static_cast<std::ptrdiff_t>(at),
                           copy.begin() + static_cast<std::ptrdiff_t>(at + n));
                break;
            }
            default: {
                const size_t n = std::min(1 + below(64), copy.size() - at);
                std::memset(copy.data() + at, 0, n);
            }
        }
    }
    return copy;
}

void write_file(const fs::path &path, const Content &content) {
    std::ofstream(path, std::ios::binary | std::ios::trunc)
        .write(content.data(), static_cast<std::streamsize>(content.size()));
}

const std::vector<std::string> &switches_of(unsigned number) {
    // Every second copy is dumped without switches.
    return kSwitches[number % 2 ? 0 : number / 2 % kSwitches.size()];
}

void set_time_limit() {
    const itimerval limit{{}, {kProcessorSecondsARun, 0}};
    setitimer(ITIMER_PROF, &limit, nullptr);
    alarm(kSecondsARun);
}

// The exit status.
int dump(const fs::path &path, const std::vector<std::string> &switches) {
    std::vector<std::string> words{"keldump"};
    words.insert(words.end(), switches.begin(), switches.end());
    words.insert(std::find(words.begin() + 1, words.end(), "0"), path.string());
    std::vector<char *> argv;
    for (std::string &word : words) argv.push_back(word.data());
    CommandLine line;
    int status = parse_command_line(static_cast<int>(argv.size()), argv.data(), line);
    try {
        if (status < 0) dump_files(line);
    } catch (const EndOfRun &end) {
        status = end.status;
    }
    standard_output.flush();
    if (switches.empty()) facts(path.c_str());
    return std::max(status, 0);
}

double seconds_now() {
    return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count();
}

// How far the dumps have come; the child and its parent see it.
struct Progress {
    volatile uint64_t file;    // of all that are gone through, again and again
    volatile unsigned number;  // of its copies
    volatile uint64_t runs;
};

class Robustness {
 public:
    explicit Robustness(const Options &options) : options_(options) {
        void *shared =
            mmap(nullptr, sizeof(Progress), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
        progress_ = new (shared) Progress{};
        // In memory, where files cost least.
        const fs::path memory = "/dev/shm";
        std::string pattern =
            ((fs::exists(memory) ? memory : fs::temp_directory_path()) / "keldump-robustness-XXXXXX")
                .string();
        directory_ = mkdtemp(pattern.data());
        errors_ = directory_ / "errors";
    }
    ~Robustness() {
        std::error_code ignored;
        fs::remove_all(directory_, ignored);
    }
    Robustness(const Robustness &) = delete;
    Robustness &operator=(const Robustness &) = delete;

    // The number of findings.
    unsigned run() {
        while (!is_over()) {
            std::fflush(stdout);
            const pid_t child = fork();
            if (child == 0) dump_copies();
            int status = 0;
            waitpid(child, &status, 0);
            judge(status);
        }
        std::printf("%llu runs on %zu files, %u findings\n", static_cast<unsigned long long>(progress_->runs),
                    options_.files.size(), findings_);
        return findings_;
    }

 private:
    const fs::path &file() const { return options_.files[progress_->file % options_.files.size()]; }
    unsigned seed() const {
        return options_.seed + static_cast<unsigned>(progress_->file / options_.files.size());
    }
    fs::path copy() const { return directory_ / ("copy" + file().extension().string()); }

    bool is_over() const {
        if (options_.files.empty()) return true;
        if (options_.runs == 0 && options_.seconds <= 0) return progress_->file >= options_.files.size();
        return (options_.runs > 0 && progress_->runs >= options_.runs) ||
               (options_.seconds > 0 && seconds_now() - start_ >= options_.seconds);
    }

    void go_on() {
        progress_->runs = progress_->runs + 1;
        progress_->number = progress_->number + 1;
        if (progress_->number <= options_.rounds) return;
        progress_->file = progress_->file + 1;
        progress_->number = 0;
    }

    // Dumps copies in this (child) process; never returns.
    [[noreturn]] void dump_copies() {
        const rlimit limit{kOutputLimit, kOutputLimit};
        setrlimit(RLIMIT_FSIZE, &limit);
        dup2(open(errors_.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600), STDERR_FILENO);
        if (chdir(directory_.c_str()) != 0) std::abort();
        for (uint64_t read = UINT64_MAX; !is_over(); go_on()) {
            if (read != progress_->file) {
                read = progress_->file;
                std::ifstream in(file(), std::ios::binary);
                original_.assign(std::istreambuf_iterator<char>(in), {});
            }
            write_file(copy(), damage(original_, progress_->number, seed()));
            // Output goes to a file so that its limit holds.
            const int out = open("out", O_WRONLY | O_CREAT | O_TRUNC, 0600);
            dup2(out, STDOUT_FILENO);
            close(out);
            set_time_limit();
            const int status = dump(copy(), switches_of(progress_->number));
            if (status != 0 && status != kFatalComponent) _exit(kWrongStatus + status);
            if (lseek(STDERR_FILENO, 0, SEEK_CUR) > 0) _exit(kSpoke);
        }
        _exit(0);
    }

    // What ended a child.
    void judge(int status) {
        if (WIFSIGNALED(status)) {
            const int signal = WTERMSIG(status);
            report(signal == SIGPROF   ? "takes too long"
                   : signal == SIGALRM ? "hangs"
                   : signal == SIGXFSZ ? "endless output"
                                       : strsignal(signal));
        } else if (const int end = WEXITSTATUS(status); end != 0) {
            report(end == kSpoke  ? "text on standard error"
                   : end < kSpoke ? "caught by a sanitizer"
                                  : "exit status " + std::to_string(end - kWrongStatus));
        } else {
            return;
        }
        go_on();
    }

    void report(const std::string &what) {
        findings_++;
        std::string switches;
        for (const std::string &one : switches_of(progress_->number)) switches += one + " ";
        const fs::path kept = options_.keep / ("finding-" + std::to_string(findings_) + "-" +
                                               std::to_string(seed()) + "-" + file().filename().string());
        std::error_code ignored;
        fs::copy_file(copy(), kept, fs::copy_options::overwrite_existing, ignored);
        std::printf("FINDING %s: %s (copy %u of %s, switches %s)\n", kept.c_str(), what.c_str(),
                    progress_->number, file().c_str(), switches.c_str());
        std::ifstream errors(errors_);
        std::string line;
        for (int i = 0; i < 12 && std::getline(errors, line); i++) std::printf("    %s\n", line.c_str());
        std::fflush(stdout);
    }

    const Options &options_;
    Progress *progress_ = nullptr;
    const double start_ = seconds_now();
    fs::path directory_;
    fs::path errors_;
    Content original_;
    unsigned findings_ = 0;
};

Options parse(int argc, char **argv) {
    Options options;
    for (int i = 1; i < argc; i++) {
        const std::string word = argv[i];
        if (word == "--rounds") {
            options.rounds = static_cast<unsigned>(std::atoi(argv[++i]));
        } else if (word == "--runs") {
            options.runs = static_cast<uint64_t>(std::atoll(argv[++i]));
        } else if (word == "--seconds") {
            options.seconds = std::atof(argv[++i]);
        } else if (word == "--seed") {
            options.seed = static_cast<unsigned>(std::atoi(argv[++i]));
        } else if (word == "--keep") {
            options.keep = fs::absolute(argv[++i]);
        } else if (fs::is_directory(word)) {
            for (const auto &entry : fs::recursive_directory_iterator(word)) {
                const std::string extension = entry.path().extension().string();
                if (entry.is_regular_file() && extension != ".sh" && entry.file_size() <= 1 << 20)
                    options.files.push_back(fs::absolute(entry.path()));
            }
        } else if (fs::exists(word)) {
            options.files.push_back(fs::absolute(word));
        }
    }
    return options;
}

}  // namespace

int main(int argc, char **argv) {
    Options options = parse(argc, argv);
    options.keep = fs::absolute(options.keep);
    std::shuffle(options.files.begin(), options.files.end(), std::mt19937(options.seed));
    return Robustness(options).run() == 0 ? 0 : 1;
}
