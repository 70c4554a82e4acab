// The examples of the papers are what the commands print today.
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <sstream>

#include "support/command.h"

namespace fs = std::filesystem;

namespace {

const fs::path kRoot = fs::path(KELDUMP_SAMPLES).parent_path();

std::vector<std::string> lines_of(const std::string &text) {
    std::vector<std::string> lines;
    std::stringstream in(text);
    for (std::string line; std::getline(in, line);) lines.push_back(line);
    return lines;
}

// A directory with the samples in it, where a shell finds the commands that were built.
class Shell {
 public:
    Shell() {
        fs::create_directory_symlink(KELDUMP_SAMPLES, place.path("samples"));
        fs::create_symlink(command_path(), place.path("run"));
    }
    std::string run(const std::string &command) const {
        const std::string path = fs::path(command_path()).parent_path().native() + ":" + std::getenv("PATH");
        place.write("script",
                    "cd '" + place.path("") + "'\nPATH='" + path + "'\nexport TZ=UTC\n" + command + "\n");
        const std::string shell =
            "bash '" + place.path("script") + "' >'" + place.path("out") + "' 2>'" + place.path("err") + "'";
        status = std::system(shell.c_str());
        return place.read("out");
    }
    std::string errors() const { return place.read("err"); }

    Workplace place;
    mutable int status = 0;
};

// Whether the lines of a dump hold those of an example, of which a line "..." stands for any.
bool holds(const std::vector<std::string> &dump, const std::vector<std::string> &example) {
    size_t at = 0;
    bool anywhere = false;
    for (const std::string &line : example) {
        if (line.find_first_not_of(' ') != std::string::npos &&
            line.substr(line.find_first_not_of(' ')) == "...") {
            anywhere = true;
            continue;
        }
        while (anywhere && at < dump.size() && dump[at] != line) at++;
        if (at >= dump.size() || dump[at] != line) return false;
        at++;
        anywhere = false;
    }
    return anywhere || at == dump.size();
}

// Runs the commands behind "$ " in a paper's indented blocks, one after the other in one directory.
void check_paper(const std::string &paper, size_t least) {
    const Shell shell;
    size_t checked = 0;
    const std::vector<std::string> lines = lines_of(content_of((kRoot / paper).native()));
    for (size_t i = 0; i < lines.size(); i++) {
        if (!lines[i].starts_with("    $ ")) continue;
        std::vector<std::string> example;
        size_t next = i + 1;
        for (; next < lines.size() && (lines[next].empty() || lines[next].starts_with("    ")); next++) {
            if (lines[next].starts_with("    $ ")) break;
            example.push_back(lines[next].empty() ? "" : lines[next].substr(4));
        }
        while (!example.empty() && example.back().empty()) example.pop_back();
        std::vector<std::string> dump = lines_of(shell.run(lines[i].substr(6)));
        while (!dump.empty() && dump.back().empty()) dump.pop_back();
        EXPECT_TRUE(holds(dump, example)) << paper << ":" << i + 1 << ": " << lines[i] << "\n"
                                          << shell.run(lines[i].substr(6));
        checked++;
        i = next - 1;
    }
    EXPECT_GE(checked, least) << paper;
}

}  // namespace

TEST(Docs, ExamplesOfThePapers) {
    check_paper("README.md", 3);
    check_paper("docs/recipes.md", 35);
    check_paper("docs/formats.md", 20);
}

// Dumps of files that no public program makes: they stand in a transcript.
TEST(Docs, OtherDumpsOfFormats) {
    std::string known;
    for (const auto &entry : fs::recursive_directory_iterator(KELDUMP_TESTS)) {
        if (entry.path().extension() == ".txt") known += content_of(entry.path().native());
    }
    const std::vector<std::string> lines = lines_of(content_of((kRoot / "docs/formats.md").native()));
    for (size_t i = 1; i < lines.size(); i++) {
        if (!lines[i - 1].empty() || !lines[i].starts_with("    ") || lines[i].starts_with("    $ "))
            continue;
        std::string block;
        for (; i < lines.size() && lines[i].starts_with("    ") && lines[i] != "    ..."; i++)
            block += lines[i].substr(4) + "\n";
        EXPECT_NE(known.find(block), std::string::npos) << block;
    }
}

// What stands bold under EXAMPLES, on files of the names that the pages use.
TEST(Docs, ExamplesOfTheManPages) {
    const Shell shell;
    shell.run(
        "cp samples/mxf/op1a-jpeg2000.mxf clip.mxf; cp samples/mxf/op1a-mpeg2.mxf master.mxf; cp clip.mxf "
        "delivery.mxf\n"
        "cp samples/audio/stereo16.wav take1.wav; cp samples/audio/broadcast.wav take2.wav; head -c 9000 "
        "clip.mxf >capture.bin\n"
        "mkdir reel7; for n in 1001 1002 1100; do cp samples/dpx/film10-little.dpx shot.$n.dpx; cp "
        "shot.$n.dpx reel7; done\n"
        "echo 2/: >hosts");
    size_t checked = 0;
    for (const auto &entry : fs::directory_iterator(kRoot / "doc")) {
        bool examples = false;
        for (std::string line : lines_of(content_of(entry.path().native()))) {
            if (line.starts_with(".SH")) examples = line == ".SH EXAMPLES";
            if (!examples || !line.starts_with(".B ")) continue;
            for (const auto &[roff, text] : {std::pair{"\\-", "-"}, {"\\(aq", "'"}, {"\\e", "\\"}}) {
                const std::string_view from = roff;
                for (size_t at; (at = line.find(from)) != std::string::npos;)
                    line.replace(at, from.size(), text);
            }
            const std::string command = line.substr(3);
            const bool needs_more =
                command.find("parallel") != std::string::npos || command.find("jq ") != std::string::npos;
            if (needs_more && shell.run("command -v parallel jq | wc -l") != "2\n") continue;
            const std::string out = shell.run(command);
            EXPECT_TRUE(shell.errors().empty() && (!out.empty() || command.find('>') != std::string::npos ||
                                                   command.find("-ms") != std::string::npos))
                << entry.path() << ": " << command << "\n"
                << out << shell.errors();
            checked++;
        }
    }
    EXPECT_GE(checked, 10U);
}
