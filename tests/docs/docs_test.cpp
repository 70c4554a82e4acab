// The examples of the papers are what the commands print today.
#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <regex>
#include <set>
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

// The command lines of a paper's indented blocks but those of examples, without the explanations beside them,
// and of its inline code: what begins with a program of the tree, of a build, or of the tools that the papers
// need.
std::vector<std::string> commands_of(const fs::path &paper) {
    static const std::regex kTools(
        "([A-Z_]+=\\S+ )*(cmake|ctest|cpack|clang-format|apt|grep|gzip|find|keldump|"
        "keldump-[a-z]+|(build-\\S+|tools|bench|fuzz)/.*)( .*)?");
    static const std::regex kCode("`([^`]+)`");
    std::vector<std::string> found;
    const auto add = [&found](const std::string &text) {
        const fs::path program = kRoot / text.substr(0, text.find(' '));
        if (std::regex_match(text, kTools) ||
            (fs::is_regular_file(program) && access(program.c_str(), X_OK) == 0))
            found.push_back(text);
    };
    std::string prose, block;
    bool example = false;
    for (const std::string &line : lines_of(content_of(kRoot / paper))) {
        if (!line.starts_with("    ")) {
            example = example && line.empty();
            prose += line + " ";
            continue;
        }
        example = example || line.starts_with("    $ ");
        block += line.substr(block.empty() ? 4 : line.find_first_not_of(' '));
        if (block.ends_with(" \\")) {
            block.pop_back();
            continue;
        }
        if (!example) add(block.substr(0, block.find("  ")));
        block.clear();
    }
    for (std::sregex_iterator code(prose.begin(), prose.end(), kCode), end; code != end; ++code)
        if (code->str().find(' ') != std::string::npos) add((*code)[1]);
    return found;
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

// For a shell: the files of the tree, without what builds and their users leave there.
const std::string kFiles = "root='" + kRoot.native() + R"('
files() {
    ls -d "$root"/{*.md,CMake*,.clang-format,bench,check,cmake,completions,doc,docs,fuzz,packaging,run,samples,src,tests,tools,web}
}
)";

// All other command lines of the papers, as commands.txt has them, in a copy of the tree that CMake
// configures and builds with a launcher which takes the programs of this build instead of compiling.
TEST(Docs, CommandsOfThePapers) {
    std::vector<std::pair<std::string, std::string>> commands;
    for (const std::string &line : lines_of(content_of(std::string(KELDUMP_TESTS) + "/docs/commands.txt"))) {
        if (line.starts_with("    "))
            commands.back().second += line + "\n";
        else if (!line.starts_with('#'))
            commands.emplace_back(line, "");
    }
    std::set<std::string> known, found;
    for (const auto &[line, check] : commands) known.insert(line);
    for (const std::string &line : commands_of("README.md")) found.insert(line);
    for (const auto &entry : fs::directory_iterator(kRoot / "docs"))
        for (const std::string &line : commands_of("docs" / entry.path().filename())) found.insert(line);
    std::vector<std::string> unequal;  // in the papers or in the table only
    std::ranges::set_symmetric_difference(known, found, std::back_inserter(unequal));
    EXPECT_EQ(unequal, std::vector<std::string>());
    if (std::getenv("KELDUMP_CORPUS")) return;  // what the sanitized build does once more

    const Shell shell;
    const std::string prepare =
        kFiles + "export built=$(dirname $(realpath run))\n" +
        "export CMAKE_CXX_COMPILER_LAUNCHER=$PWD/launcher CMAKE_CXX_LINKER_LAUNCHER=$PWD/launcher\n";
    shell.run(prepare + R"(mkdir tree
cp -r $(files) tree
cat >launcher <<'end'
#!/bin/sh
case $PWD in */CMakeFiles/*) exec "$@" ;; esac
while [ "$1" != -o ]; do shift; done
[ -x "$built/src/$2" ] && cp "$built/src/$2" "$2" || : >"$2"
end
chmod +x launcher)");
    for (const auto &[line, check] : commands) {
        const std::string out =
            shell.run(prepare + "cd tree\nset -e -o pipefail\n" + (check.empty() ? line : check));
        EXPECT_EQ(shell.status, 0) << line << "\n" << out << shell.errors();
    }
}

TEST(Docs, TheVersionStandsOnce) {
    EXPECT_TRUE(
        content_of((kRoot / "CHANGELOG.md").native()).starts_with("# Changes\n\n## " KELDUMP_VERSION "\n"));
    const Shell shell;
    EXPECT_EQ(shell.run(kFiles + "grep -rlF " KELDUMP_VERSION " $(files)"),
              (kRoot / "CHANGELOG.md").native() + "\n" + (kRoot / "CMakeLists.txt").native() + "\n");
}
