// Every dump that is kept beside a sample is what the binary prints today. samples/x/clip.wav has its plain
// dump in clip.wav.txt and, for example, the one with the switches -a and -t in clip.wav.-a+-t.txt.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <sstream>

#include "support/command.h"

namespace fs = std::filesystem;

namespace {

std::vector<std::string> switches_in(const std::string &text) {
    std::vector<std::string> switches;
    std::stringstream in(text);
    for (std::string one; std::getline(in, one, '+');) switches.push_back(one);
    return switches;
}

}  // namespace

TEST(Samples, DumpAsRecorded) {
    size_t compared = 0;
    for (const auto &entry : fs::recursive_directory_iterator(KELDUMP_SAMPLES)) {
        const fs::path recorded = entry.path();
        if (recorded.extension() != ".txt") continue;
        fs::path sample = recorded.parent_path() / recorded.stem();
        std::vector<std::string> arguments;
        if (!fs::exists(sample)) {
            const std::string stem = recorded.stem().string();
            const size_t dash = stem.find(".-");
            if (dash == std::string::npos) continue;
            sample = recorded.parent_path() / stem.substr(0, dash);
            arguments = switches_in(stem.substr(dash + 1));
        }
        if (!fs::is_regular_file(sample)) continue;
        const Workplace place;
        fs::copy(sample, place.path(sample.filename().string()));
        arguments.push_back(sample.filename().string());
        const Outcome run = place.run(arguments);
        EXPECT_EQ(run.out, content_of(recorded)) << recorded;
        EXPECT_EQ(run.err, "") << recorded;
        EXPECT_EQ(run.status, 0) << recorded;
        compared++;
    }
    EXPECT_GT(compared, 0U);
}
