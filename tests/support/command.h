// Runs of the real binary on files that a test builds.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

struct Outcome {
    std::string out;
    std::string err;
    int status = -1;  // exit status; 1000 + the signal's number when one ended the run
};

// A directory of its own for one test, removed at the end; runs have it as their working directory.
class Workplace {
 public:
    Workplace();
    ~Workplace();
    Workplace(const Workplace &) = delete;
    Workplace &operator=(const Workplace &) = delete;

    // Writes a file. With KELDUMP_CORPUS set in the environment a copy goes to that directory, from which
    // the robustness test takes its material.
    void write(const std::string &name, const std::string &content) const;
    // Makes a file of zeros with the given size without using disk space, then writes `content` at an offset.
    void write_sparse(const std::string &name, uint64_t size, uint64_t offset,
                      const std::string &content) const;
    std::string read(const std::string &name) const;
    bool exists(const std::string &name) const;
    std::string path(const std::string &name) const { return directory_ + "/" + name; }

    // Runs keldump, or a command that is installed beside it.
    Outcome run(const std::vector<std::string> &arguments, const std::string &command = "keldump") const;

 private:
    std::string directory_;
};

std::string content_of(const std::string &path);

// The path of a command as it was built; with KELDUMP_COMMANDS set in the environment that in that directory
// (builds with sanitizers, or for other machines).
std::string command_path(const std::string &command = "keldump");

// The dump of a file with the given content and name, with switches before the name. The run must end with
// status 0 and an empty standard error.
std::string dump_of(const std::string &content, const std::string &name = "file.bin",
                    const std::vector<std::string> &switches = {});

// What keldump prints of a file that cannot be opened.
inline std::string missing(const std::string &name) { return "Could not open file '" + name + "'\n"; }

// The lines of a text from the first that begins with `from` on, and the n lines from there.
std::string lines_from(const std::string &text, const std::string &from, size_t n = SIZE_MAX);

// What a test shows, as one text: each dump behind the expression that made it. At the end of the test it
// must be the text of expected/SUITE-TEST.txt beside the test's source. With KELDUMP_RECORD set in the
// environment that file is written anew instead, for a look at what changed.
class Transcript {
 public:
    Transcript() = default;
    ~Transcript();
    Transcript(const Transcript &) = delete;
    Transcript &operator=(const Transcript &) = delete;

    void add(const std::string &expression, const std::string &dump);
    // A table of changes stands in the expected text alone, behind "== TITLE": a row begins with a word,
    // which ends with a blank or a colon. `tell` makes all rows of the words, blanks between them.
    void rows(const std::string &title, const std::function<std::string(const std::string &)> &tell);

 private:
    std::string text_;
};
#define SHOW(...) transcript.add(#__VA_ARGS__, __VA_ARGS__)
#define ROWS(title, ...) transcript.rows(title, [&](const std::string &rows) { return __VA_ARGS__; })
