// The examples of the papers are what the commands print today.
#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <regex>
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
        fs::create_symlink(KELDUMP_BINARY, place.path("run"));
    }
    std::string run(const std::string &command) const {
        const std::string path = fs::path(KELDUMP_BINARY).parent_path().native() + ":" + std::getenv("PATH");
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

// A command line of the papers, without the examples behind "$ ", and what shows that it works, which is run
// in a copy of the tree: the command itself where that is quick ("").
struct Command {
    const char *line;
    const char *check = "";
};

constexpr Command kCommands[] = {
    // In this order, from a fresh clone to the package.
    {"./run [options] FILE", "! test -e build && ./run -v samples/images/raw.ppm | grep -q xsize"},
    {"cmake --build build"},
    {"cmake --install build --prefix DIR",
     "cmake --install build --prefix DIR && DIR/bin/keldump-all samples/images/raw.ppm && cd DIR/share && "
     "ls zsh/site-functions/_keldump bash-completion/completions/keldump-seq doc/keldump/docs/recipes.md"},
    {"cpack --config build/CPackConfig.cmake",
     "command -v dpkg-shlibdeps || exit 0; cpack --config build/CPackConfig.cmake; "
     "dpkg-deb -c keldump_*.deb | grep usr/share/zsh/vendor-completions/_keldump"},
    {"./check",  // the script's own steps
     "mkdir none; for tool in cmake ctest clang-format clang-tidy shellcheck; do ln -s /bin/true none/$tool; "
     "done; "
     "PATH=$PWD/none:$PATH; hash -r; ./check"},
    {"cmake -S . -B build-check -DKELDUMP_TESTS=ON -DKELDUMP_WERROR=ON -DCMAKE_BUILD_TYPE=Release"},
    {"cmake --build build-check", "cmake --build build-check --target help | grep test_dpx"},
    {"ctest --test-dir build-check", "ctest --test-dir build-check -N -R dpx | grep 'Total Tests: 1'"},
    {"KELDUMP_RECORD=1 ctest --test-dir build-check", "grep KELDUMP_RECORD tests/support/command.cpp"},
    {"samples/dump.sh",
     "samples/dump.sh && diff -r samples $root/samples && touch src/main/main.cpp && ! samples/dump.sh && "
     "! KELDUMP=none samples/dump.sh images/raw.ppm && diff -r samples $root/samples && touch build/keldump"},
    {"samples/dump.sh NAME/FILE", "samples/dump.sh images/raw.ppm && ! samples/dump.sh images/none.ppm"},
    {"tools/compare OLD NEW", "tools/compare build/keldump $built/keldump samples/images --damaged 0"},
    {"tools/mutate", "tools/mutate --help"},
    {"tools/cross", "(tools/cross none 2>&1 || true) | grep neither"},
    {"bench/run", "echo 'timed one 1 run true' >bench/cases/none.sh; bench/run none | grep run/s"},
    {"bench/run share", "bash -n bench/cases/share.sh"},
    {"clang-format -i", "ls .clang-format"},
    {"build-sanitize/tests/robustness --rounds 500 --seconds 3600 samples build-sanitize/corpus",
     "$built/tests/robustness --rounds 1 --seconds 1 samples/images"},
    {"cmake -S . -B build-fuzz -DKELDUMP_FUZZ=ON -DCMAKE_CXX_COMPILER=clang++",
     "cmake -S . -B build-fuzz -DKELDUMP_FUZZ=ON"},
    {"cmake --build build-fuzz --target fuzz_dispatch",
     "cmake --build build-fuzz --target help | grep fuzz_dispatch"},
    {"fuzz/make-corpus corpus samples build-sanitize/corpus",
     "fuzz/make-corpus corpus samples/images && ls corpus/*"},
    {"build-fuzz/fuzz_dispatch -dict=fuzz/magics.dict -max_len=4096 -entropic_scale_per_exec_time=1 "
     "-reload=0 "
     "-print_funcs=0 -timeout=10 -detect_leaks=0 corpus",
     "ls fuzz/magics.dict"},
    {"apt install clang libclang-rt-14-dev", "true"},
    {"grep -rn 'label' src"},
    {"grep -rn 'void gxfdump' src"},
    {"grep -rnw flag_a src"},
    {"keldump verify"},
    {"keldump FILE", "keldump samples/images/raw.ppm"},
    {"keldump [options] FILE", "keldump -v -v -p samples/tiff/little.tif | grep rgb"},
    {"keldump [options] PATTERN START END", "keldump samples/dpx/film%d-big.dpx 10 0 | grep -v Could"},
    {"gzip -dc shot.dpx.gz | keldump /dev/stdin",
     "gzip -c samples/dpx/rgb8-big.dpx >a && gzip -dc a | keldump /dev/stdin"},
    {"keldump <(ssh store cat clip.mxf)", "keldump <(cat samples/mxf/dv.mxf) | grep Preface"},
    {"find . -name '*.dpx' -print0 | parallel -0 -n 500 -k --sshloginfile hosts keldump-all -- > all.txt",
     "find . -name '*.dpx' -print0 | xargs -0 -n 500 keldump-all -- > all.txt"},
};

// What begins with a program of the tree, of a build or of the tools that our papers need.
bool is_command(const std::string &text) {
    static const std::regex kTools(
        "([A-Z_]+=\\S+ "
        ")*(cmake|ctest|cpack|clang-format|apt|grep|gzip|find|keldump|keldump-[a-z]+|build-\\S+/.*)( .*)?");
    const fs::path program = kRoot / text.substr(0, text.find(' '));
    return std::regex_match(text, kTools) ||
           (fs::is_regular_file(program) && access(program.c_str(), X_OK) == 0);
}

// The command lines of a paper's indented blocks, without the explanations beside them, and of its inline
// code.
std::vector<std::string> commands_of(const fs::path &paper) {
    static const std::regex kCode("`([^`]+)`");
    std::vector<std::string> found;
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
        block.erase(std::min(block.find("  "), block.size()));
        if (!example && is_command(block)) found.push_back(block);
        block.clear();
    }
    for (std::sregex_iterator code(prose.begin(), prose.end(), kCode), end; code != end; ++code)
        if (code->str().find(' ') != std::string::npos && is_command((*code)[1])) found.push_back((*code)[1]);
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

// All other command lines of the papers, in a copy of the tree that CMake configures and builds with a
// launcher which takes the programs of this build instead of compiling.
TEST(Docs, CommandsOfThePapers) {
    std::vector<std::string> found = commands_of("README.md");
    for (const auto &entry : fs::directory_iterator(kRoot / "docs"))
        for (const std::string &line : commands_of("docs" / entry.path().filename())) found.push_back(line);
    for (const std::string &line : found)
        EXPECT_TRUE(std::any_of(std::begin(kCommands), std::end(kCommands),
                                [&](const Command &command) { return line == command.line; }))
            << "not in kCommands: " << line;

    if (std::getenv("KELDUMP_CORPUS")) GTEST_SKIP() << "done by the release build";
    const Shell shell;
    const std::string prepare =
        "root='" + kRoot.native() + "'\nexport built=$(dirname $(realpath run))\n" +
        "export CMAKE_CXX_COMPILER_LAUNCHER=$PWD/launcher CMAKE_CXX_LINKER_LAUNCHER=$PWD/launcher\n" +
        "set -e -o pipefail\n";
    shell.run(prepare + R"(mkdir tree
cat >launcher <<'end'
#!/bin/sh
case $PWD in */CMakeFiles/*) exec "$@" ;; esac
while [ "$1" != -o ]; do shift; done
[ -x "$built/$2" ] && cp "$built/$2" "$2" || : >"$2"
end
chmod +x launcher
cp -r $(ls -d "$root"/{*,.cl*} | grep -v '/build[^/]*$') tree)");
    for (const auto &[line, check] : kCommands) {
        EXPECT_NE(std::find(found.begin(), found.end(), line), found.end()) << "in no paper: " << line;
        const std::string out = shell.run(prepare + "cd tree\n" + (*check ? check : line));
        EXPECT_EQ(shell.status, 0) << line << "\n" << out << shell.errors();
    }
}

TEST(Docs, TheVersionStandsOnce) {
    EXPECT_TRUE(
        content_of((kRoot / "CHANGELOG.md").native()).starts_with("# Changes\n\n## " KELDUMP_VERSION "\n"));
    const Shell shell;
    shell.run("cd '" + kRoot.native() +
              "' && grep -rlF " KELDUMP_VERSION " $(ls -A | grep -vE '^(build.*|\\.git)$')");
    EXPECT_EQ(shell.place.read("out"), "CHANGELOG.md\nCMakeLists.txt\n");
}
