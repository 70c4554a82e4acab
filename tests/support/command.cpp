#include "support/command.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <sstream>

namespace fs = std::filesystem;

std::string content_of(const std::string &path) {
    std::ifstream in(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
}

std::string command_path(const std::string &command) {
    const char *commands = std::getenv("KELDUMP_COMMANDS");
    return fs::path(commands ? commands : KELDUMP_COMMANDS) / command;
}

Workplace::Workplace() {
    std::string pattern = (fs::temp_directory_path() / "keldump-test-XXXXXX").string();
    directory_ = mkdtemp(pattern.data());
}

Workplace::~Workplace() {
    std::error_code ignored;
    fs::remove_all(directory_, ignored);
}

void Workplace::write(const std::string &name, const std::string &content) const {
    std::ofstream(path(name), std::ios::binary) << content;
    const char *corpus = std::getenv("KELDUMP_CORPUS");
    if (!corpus || content.size() > 1 << 20) return;
    fs::create_directories(corpus);
    const std::string copy =
        std::to_string(std::hash<std::string>{}(content)) + fs::path(name).extension().string();
    std::ofstream(fs::path(corpus) / copy, std::ios::binary) << content;
}

void Workplace::write_sparse(const std::string &name, uint64_t size, uint64_t offset,
                             const std::string &content) const {
    if (!exists(name)) std::ofstream(path(name), std::ios::binary).close();
    fs::resize_file(path(name), size);
    std::fstream out(path(name), std::ios::binary | std::ios::in | std::ios::out);
    out.seekp(static_cast<std::streamoff>(offset));
    out << content;
}

std::string Workplace::read(const std::string &name) const { return content_of(path(name)); }
bool Workplace::exists(const std::string &name) const { return fs::exists(path(name)); }

Outcome Workplace::run(const std::vector<std::string> &arguments, const std::string &command) const {
    const std::string program = command_path(command);
    const std::string out = directory_ + "/.stdout";
    const std::string err = directory_ + "/.stderr";
    const pid_t child = fork();
    if (child == 0) {
        std::vector<char *> argv{const_cast<char *>(program.c_str())};
        for (const std::string &argument : arguments) argv.push_back(const_cast<char *>(argument.c_str()));
        argv.push_back(nullptr);
        const int flags = O_WRONLY | O_CREAT | O_TRUNC;
        dup2(open(out.c_str(), flags, 0600), STDOUT_FILENO);
        dup2(open(err.c_str(), flags, 0600), STDERR_FILENO);
        if (chdir(directory_.c_str()) == 0) execv(program.c_str(), argv.data());
        _exit(126);
    }
    int status = 0;
    waitpid(child, &status, 0);
    Outcome result{content_of(out), content_of(err),
                   WIFEXITED(status) ? WEXITSTATUS(status) : 1000 + WTERMSIG(status)};
    fs::remove(out);
    fs::remove(err);
    return result;
}

std::string dump_of(const std::string &content, const std::string &name,
                    const std::vector<std::string> &switches) {
    const Workplace place;
    place.write(name, content);
    std::vector<std::string> arguments = switches;
    arguments.push_back(name);
    Outcome run = place.run(arguments);
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.err, "");
    return run.out;
}

std::string lines_from(const std::string &text, const std::string &from, size_t n) {
    size_t start = text.compare(0, from.size(), from) == 0 ? 0 : text.find("\n" + from);
    if (start == std::string::npos) return "";
    if (start > 0) start++;
    size_t end = start;
    for (size_t i = 0; i < n && end < text.size(); i++) {
        const size_t line_end = text.find('\n', end);
        end = line_end == std::string::npos ? text.size() : line_end + 1;
    }
    return text.substr(start, end - start);
}

void Transcript::add(const std::string &expression, const std::string &dump) {
    text_ += "== " + expression + "\n" + dump;
    if (!dump.empty() && !dump.ends_with('\n')) text_ += "\n(no line end)\n";
}

namespace {

fs::path expected_file() {
    const testing::TestInfo &test = *testing::UnitTest::GetInstance()->current_test_info();
    return fs::path(test.file()).parent_path() / "expected" /
           (std::string(test.test_suite_name()) + "-" + test.name() + ".txt");
}

}  // namespace

void Transcript::rows(const std::string &title, const std::function<std::string(const std::string &)> &tell) {
    std::istringstream lines(lines_from(content_of(expected_file()), "== " + title + "\n"));
    std::string words, line;
    std::getline(lines, line);
    while (std::getline(lines, line) && !line.starts_with("== ")) {
        line = line.substr(0, line.find(' '));
        words += (line.ends_with(':') ? line.substr(0, line.size() - 1) : line) + " ";
    }
    EXPECT_NE(words, "") << "no rows of " << title;
    add(title, tell(words));
}

Transcript::~Transcript() {
    const fs::path expected = expected_file();
    if (std::getenv("KELDUMP_RECORD")) {
        fs::create_directories(expected.parent_path());
        std::ofstream(expected, std::ios::binary) << text_;
    }
    EXPECT_TRUE(fs::exists(expected)) << expected;
    EXPECT_EQ(text_, content_of(expected)) << expected;
}
