// Feeds damaged copies of files to the dumps, and to the readers of facts, in processes of its own, and
// reports every copy on which one crashes, is caught by a sanitizer, writes to standard error, ends with an
// unexpected status or takes too long.
//
//   robustness [--rounds N] [--seconds S] [--seed N] [--keep DIRECTORY] FILE_OR_DIRECTORY...
//
// Each file is dumped as it is, cut at many places and damaged N times in other ways, each time under one of
// the sets of switches. Findings are kept in DIRECTORY (by default the working directory) as finding-*.
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

// Switches, which stand before the name, and the numbers of a frame range, which stand behind it.
const std::vector<std::vector<std::string>> kSwitches = {
    {},           {"-v"}, {"-v", "-v"},         {"-v", "-v", "-v"},   {"-t"},
    {"-a", "-t"}, {"-p"}, {"-mc", "-mx", "-v"}, {"-ml", "-ms=saved"}, {"-d", "-u"},
    {"-s"},       {"-h"}, {"-hn=10,333"},       {"0", "1"},
};

struct Options {
    unsigned rounds = 100;
    double seconds = 1e9;
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

void dump(const fs::path &path, const std::vector<std::string> &switches) {
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
    if (status > 0) _exit(status);
}

struct Progress {
    volatile unsigned number;  // the copy being dumped
};

struct Place {
    fs::path directory;
    fs::path copy;
    fs::path errors;
};

// Dumps copies from `first` on in this (child) process; never returns.
[[noreturn]] void dump_copies(const Options &options, const Content &original, unsigned first,
                              Progress *progress, const Place &place) {
    if (chdir(place.directory.c_str()) != 0) std::abort();
    for (unsigned number = first; number <= options.rounds; number++) {
        progress->number = number;
        write_file(place.copy, damage(original, number, options.seed));
        // Output goes to a file so that its limit holds.
        const int out = open("out", O_WRONLY | O_CREAT | O_TRUNC, 0600);
        dup2(out, STDOUT_FILENO);
        close(out);
        set_time_limit();
        dump(place.copy, switches_of(number));
    }
    progress->number = options.rounds + 1;
    _exit(0);
}

unsigned findings = 0;
uint64_t executions = 0;

void report(const Options &options, const fs::path &file, unsigned number, const Place &place,
            const std::string &what) {
    findings++;
    std::string switches;
    for (const std::string &one : switches_of(number)) switches += one + " ";
    const fs::path kept = options.keep / ("finding-" + std::to_string(findings) + "-" +
                                          std::to_string(options.seed) + "-" + file.filename().string());
    std::error_code ignored;
    fs::copy_file(place.copy, kept, fs::copy_options::overwrite_existing, ignored);
    std::printf("FINDING %s: %s (copy %u of %s, switches %s)\n", kept.c_str(), what.c_str(), number,
                file.c_str(), switches.c_str());
    std::ifstream errors(place.errors);
    std::string line;
    for (int i = 0; i < 12 && std::getline(errors, line); i++) std::printf("    %s\n", line.c_str());
    std::fflush(stdout);
}

void test_file(const Options &options, const fs::path &file, Progress *progress, const fs::path &directory) {
    std::ifstream in(file, std::ios::binary);
    const Content original{std::istreambuf_iterator<char>(in), {}};
    const Place place{directory, directory / ("copy" + file.extension().string()), directory / "errors"};
    for (unsigned first = 0; first <= options.rounds;) {
        progress->number = first;
        std::fflush(stdout);
        const pid_t child = fork();
        if (child == 0) {
            const rlimit limit{kOutputLimit, kOutputLimit};
            setrlimit(RLIMIT_FSIZE, &limit);
            const int errors = open(place.errors.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
            dup2(errors, STDERR_FILENO);
            dump_copies(options, original, first, progress, place);
        }
        int status = 0;
        waitpid(child, &status, 0);
        const unsigned reached = progress->number;
        executions += std::min(reached, options.rounds) - first + 1;
        if (WIFSIGNALED(status)) {
            const int signal = WTERMSIG(status);
            report(options, file, reached, place,
                   signal == SIGPROF   ? "takes too long"
                   : signal == SIGALRM ? "hangs"
                   : signal == SIGXFSZ ? "endless output"
                                       : strsignal(signal));
        } else if (WEXITSTATUS(status) != 0 && WEXITSTATUS(status) != kFatalComponent) {
            report(options, file, reached, place, "exit status " + std::to_string(WEXITSTATUS(status)));
        } else if (fs::file_size(place.errors) > 0) {
            report(options, file, reached, place, "text on standard error");
        }
        first = reached + 1;
    }
}

Options parse(int argc, char **argv) {
    Options options;
    for (int i = 1; i < argc; i++) {
        const std::string word = argv[i];
        if (word == "--rounds") {
            options.rounds = static_cast<unsigned>(std::atoi(argv[++i]));
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
    void *shared = mmap(nullptr, sizeof(Progress), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    std::string pattern = (fs::temp_directory_path() / "keldump-robustness-XXXXXX").string();
    const fs::path directory = mkdtemp(pattern.data());

    // With a time limit the files are gone through again and again with new seeds until it is over.
    const auto start = std::chrono::steady_clock::now();
    const auto elapsed = [&] {
        return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    };
    const bool timed = options.seconds < 1e9;
    do {
        for (const fs::path &file : options.files) {
            if (elapsed() < options.seconds)
                test_file(options, file, static_cast<Progress *>(shared), directory);
        }
        options.seed++;
    } while (timed && elapsed() < options.seconds && !options.files.empty());

    std::error_code ignored;
    fs::remove_all(directory, ignored);
    std::printf("%llu runs on %zu files, %u findings\n", static_cast<unsigned long long>(executions),
                options.files.size(), findings);
    return findings == 0 ? 0 : 1;
}
