#include "companions/keldump.h"

#include <fcntl.h>
#include <spawn.h>
#include <strings.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <mutex>
#include <optional>
#include <sstream>

#ifdef __APPLE__
#include <mach-o/dyld.h>
#endif

#include "companions/alias.h"

extern char **environ;

namespace fs = std::filesystem;

namespace {

constexpr size_t kPiece = 64 * 1024;
constexpr size_t kLongestExtension = 8;

fs::path own_path() {
    std::error_code ignored;
#ifdef __APPLE__
    char path[4096];
    uint32_t size = sizeof path;
    return _NSGetExecutablePath(path, &size) == 0 ? fs::canonical(path, ignored) : fs::path();
#else
    return fs::read_symlink("/proc/self/exe", ignored);
#endif
}

bool is_program(const fs::path &path) {
    std::error_code ignored;
    return fs::is_regular_file(path, ignored) && access(path.c_str(), X_OK) == 0;
}

// The name's tail from its last dot on where it is a plain extension.
std::string extension_of(const std::string &path) {
    const size_t dot = path.rfind('.');
    if (dot == std::string::npos || path.size() - dot > kLongestExtension) return "";
    for (size_t i = dot + 1; i < path.size(); i++) {
        if (!std::isalnum(static_cast<unsigned char>(path[i]))) return "";
    }
    return path.substr(dot);
}

bool is_mpeg4(const std::string &extension) {
    for (const char *known : {".mp4", ".m4v", ".m4a", ".3gp"}) {
        if (strcasecmp(extension.c_str(), known) == 0) return true;
    }
    return false;
}

// A name that keldump takes as the file's, with the alias behind it where there is one.
class SafePath {
 public:
    explicit SafePath(const std::string &path) : name_(path.starts_with('/') ? path : "./" + path) {
        const std::string extension = extension_of(path);
        if (is_mpeg4(extension)) {
            name_ = alias_.emplace(path, ".mov").name();
        } else if (path.find('%') != std::string::npos) {
            name_ = alias_.emplace(path, extension).name();
        }
    }
    const std::string &name() const { return name_; }

 private:
    std::string name_;
    std::optional<Alias> alias_;
};

// A running child and the end of the pipe that its output comes from.
struct Child {
    pid_t pid = -1;
    int output = -1;
    int error = 0;
};

class SpawnSettings {
 public:
    explicit SpawnSettings(int output) {
        sigset_t none;
        sigset_t defaults;
        sigemptyset(&none);
        sigemptyset(&defaults);
        sigaddset(&defaults, SIGPIPE);
        sigaddset(&defaults, SIGXFSZ);
        posix_spawn_file_actions_init(&actions_);
        posix_spawn_file_actions_adddup2(&actions_, output, STDOUT_FILENO);
        posix_spawnattr_init(&attributes_);
        posix_spawnattr_setsigmask(&attributes_, &none);
        posix_spawnattr_setsigdefault(&attributes_, &defaults);
        posix_spawnattr_setflags(&attributes_, POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF);
    }
    ~SpawnSettings() {
        posix_spawnattr_destroy(&attributes_);
        posix_spawn_file_actions_destroy(&actions_);
    }
    SpawnSettings(const SpawnSettings &) = delete;
    SpawnSettings &operator=(const SpawnSettings &) = delete;
    const posix_spawn_file_actions_t *actions() const { return &actions_; }
    const posix_spawnattr_t *attributes() const { return &attributes_; }

 private:
    posix_spawn_file_actions_t actions_;
    posix_spawnattr_t attributes_;
};

bool open_pipe(int (&ends)[2]) {
#ifdef __linux__
    return pipe2(ends, O_CLOEXEC) == 0;
#else
    if (pipe(ends) != 0) return false;
    for (const int end : ends) fcntl(end, F_SETFD, FD_CLOEXEC);
    return true;
#endif
}

Child start(const std::string &program, const std::vector<std::string> &arguments) {
#ifndef __linux__
    // Without pipe2 no other child may start between a pipe's making and its closing on exec.
    static std::mutex one_at_a_time;
    const std::lock_guard lock(one_at_a_time);
#endif
    std::vector<char *> argv{const_cast<char *>(program.c_str())};
    for (const std::string &argument : arguments) argv.push_back(const_cast<char *>(argument.c_str()));
    argv.push_back(nullptr);
    Child child;
    int ends[2];
    if (!open_pipe(ends)) {
        child.error = errno;
        return child;
    }
    const SpawnSettings settings(ends[1]);
    child.output = ends[0];
    child.error = posix_spawn(&child.pid, program.c_str(), settings.actions(), settings.attributes(),
                              argv.data(), environ);
    close(ends[1]);
    if (child.error != 0) close(child.output);
    return child;
}

int wait_for(pid_t pid) {
    int status = 0;
    while (waitpid(pid, &status, 0) < 0) {
        if (errno != EINTR) return -1;
    }
    return status;
}

size_t read_piece(int fd, char (&piece)[kPiece]) {
    for (;;) {
        const ssize_t got = read(fd, piece, sizeof piece);
        if (got >= 0) return static_cast<size_t>(got);
        if (errno != EINTR) return 0;
    }
}

// What keldump itself says of a file instead of a dump, its whole output then.
class Verdict {
 public:
    explicit Verdict(const std::string &name)
        : unopened_("Could not open file '" + name + "'\n"),
          unknown_("Unknown fileformat of file '" + name + "' ") {}

    // Whether a text that starts the output may still become one.
    bool possible(const std::string &text) const { return starts(text, unopened_) || starts(text, unknown_); }
    bool is_unopened(const std::string &text) const { return text == unopened_; }
    bool is_unknown(const std::string &text) const {
        return text.size() == unknown_.size() + kMagic && text.starts_with(unknown_);
    }
    std::string magic(const std::string &text) const { return text.substr(unknown_.size(), kMagic - 1); }

 private:
    static constexpr size_t kMagic = 12;  // "00 11 22 33\n"

    static bool starts(const std::string &text, const std::string &line) {
        return line.compare(0, std::min(line.size(), text.size()), text, 0,
                            std::min(line.size(), text.size())) == 0 &&
               text.size() <= line.size() + kMagic;
    }

    std::string unopened_;
    std::string unknown_;
};

// Why a file cannot be opened, asked again as keldump does not tell.
std::string opening_error(const std::string &path) {
    const int fd = open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    if (fd < 0) return std::strerror(errno);
    close(fd);
    return "could not be opened";
}

// Why a file has no format, where its bytes are not the reason.
std::string unknown_message(const std::string &path, const std::string &magic) {
    struct stat status;
    if (stat(path.c_str(), &status) != 0) return std::strerror(errno);
    if (S_ISDIR(status.st_mode)) return std::strerror(EISDIR);
    if (S_ISREG(status.st_mode) && status.st_size == 0) return "empty";
    return "unknown format, " + magic;
}

}  // namespace

std::string find_keldump() {
    const fs::path beside = own_path().parent_path() / "keldump";
    if (is_program(beside)) return beside.native();
    const char *path = std::getenv("PATH");
    std::istringstream directories(path ? path : "");
    for (std::string directory; std::getline(directories, directory, ':');) {
        const fs::path candidate = fs::path(directory.empty() ? "." : directory) / "keldump";
        if (is_program(candidate)) return candidate.native();
    }
    return "";
}

DumpResult run_keldump(const std::string &keldump, const std::vector<std::string> &switches,
                       const std::string &path, const DumpTaker &take) {
    const SafePath safe(path);
    if (safe.name().empty()) return {DumpEnd::failed, "no temporary name could be made"};
    std::vector<std::string> arguments = switches;
    arguments.push_back(safe.name());
    const Child child = start(keldump, arguments);
    if (child.error != 0)
        return {DumpEnd::failed, std::string("cannot run keldump: ") + std::strerror(child.error)};

    const Verdict verdict(safe.name());
    std::string start;  // as long as it may be a verdict
    bool waiting = true;
    bool wanted = true;
    char piece[kPiece];
    while (wanted) {
        const size_t got = read_piece(child.output, piece);
        if (got == 0) break;
        if (waiting) {
            start.append(piece, got);
            waiting = verdict.possible(start);
            if (!waiting) wanted = take(start);
        } else {
            wanted = take({piece, got});
        }
    }
    close(child.output);
    const int status = wait_for(child.pid);
    if (!wanted) return {DumpEnd::stopped, ""};
    if (waiting && verdict.is_unopened(start)) return {DumpEnd::unopened, opening_error(path)};
    if (waiting && verdict.is_unknown(start))
        return {DumpEnd::unknown, unknown_message(path, verdict.magic(start))};
    if (waiting && !start.empty()) take(start);
    if (WIFSIGNALED(status))
        return {DumpEnd::failed, "keldump was ended by signal " + std::to_string(WTERMSIG(status))};
    return {DumpEnd::dumped, ""};
}
