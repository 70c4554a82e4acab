#include <gtest/gtest.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <set>
#include <thread>

#include "companions/files.h"
#include "companions/frame_groups.h"
#include "companions/workers.h"
#include "support/command.h"

namespace {

struct Told : JobsReader {
    void out(size_t index, std::string_view text) override {
        EXPECT_EQ(index, ended.size());
        said += text;
    }
    void complain(size_t index, const std::string &message) override {
        said += "(" + std::to_string(index) + " " + message + ")";
    }
    void done(size_t index, int status, const std::string &death) override {
        EXPECT_EQ(index, ended.size());
        ended.push_back(status);
        if (!death.empty()) said += "[" + death + "]";
    }
    void progress(size_t) override {}

    std::string said;
    std::vector<int> ended;
};

// Some say more than is read ahead, and the first ends last.
TEST(Workers, JobsAreHeardInOrder) {
    const auto text_of = [](size_t index) {
        return std::string(index % 5 == 0 ? 3000000 : index, static_cast<char>('a' + index));
    };
    std::string expected;
    for (size_t i = 0; i < 20; i++) expected += text_of(i) + "(" + std::to_string(i) + " m)";
    for (const unsigned jobs : {1U, 4U, 100U}) {
        Told heard;
        run_jobs(
            20, jobs,
            [&](size_t index, JobOutput &output) {
                if (index == 0) usleep(100000);
                output.out(text_of(index));
                output.complain("m");
                return static_cast<int>(index % 3);
            },
            heard);
        EXPECT_TRUE(heard.said == expected) << jobs;
        EXPECT_EQ(std::ranges::count(heard.ended, 2), 6);
    }
    Told none;
    run_jobs(
        0, 4, [](size_t, JobOutput &) { return 0; }, none);
    EXPECT_TRUE(none.ended.empty());
}

TEST(Workers, DeathCostsOneJob) {
    for (const unsigned jobs : {1U, 3U}) {
        Told heard;
        run_jobs(
            6, jobs,
            [](size_t index, JobOutput &output) {
                if (index == 1) raise(SIGKILL);
                if (index == 2) _exit(3);
                if (index == 5) raise(SIGUSR1);
                if (index == 4) throw std::bad_alloc();
                output.out("x");
                return 0;
            },
            heard);
        EXPECT_EQ(heard.said,
                  "x[killed, perhaps out of memory][ended with status 3]x[out of memory]"
                  "[killed by signal 10 (User defined signal 1)]");
    }
}

TEST(Workers, WithoutProcessesTheWorkIsDoneHere) {
    rlimit before{};
    getrlimit(RLIMIT_NOFILE, &before);
    const int free = dup(0);
    close(free);
    // Room for one pipe, which the sanitizers want, and not for the two of a worker.
    const rlimit few{static_cast<rlim_t>(free) + 3, before.rlim_max};
    setrlimit(RLIMIT_NOFILE, &few);
    std::set<pid_t> processes;
    Told heard;
    run_jobs(
        3, 2,
        [&](size_t, JobOutput &output) {
            processes.insert(getpid());
            output.out("x");
            return 0;
        },
        heard);
    setrlimit(RLIMIT_NOFILE, &before);
    EXPECT_EQ(heard.said, "xxx");
    EXPECT_EQ(processes, std::set<pid_t>{getpid()});
}

// A pipe that every worker holds ends when the last of them does.
TEST(Workers, EndWithTheirParent) {
    int held[2];
    ASSERT_EQ(pipe(held), 0);
    const pid_t parent = fork();
    if (parent == 0) {
        Told heard;
        run_jobs(
            3, 3,
            [&](size_t, JobOutput &) {
                if (write(held[1], "w", 1) != 1) return 1;
                for (;;) pause();
            },
            heard);
    }
    close(held[1]);
    char c = 0;
    for (int i = 0; i < 3; i++) EXPECT_EQ(read(held[0], &c, 1), 1);
    kill(parent, SIGKILL);
    waitpid(parent, nullptr, 0);
    EXPECT_EQ(read(held[0], &c, 1), 0);
    close(held[0]);
}

std::string groups_of(const std::vector<std::string> &files) {
    std::string text;
    for (const FrameGroup &group : group_frames(files, is_still_name))
        text +=
            group.range_name(files) + (group.missing() ? " -" + std::to_string(group.missing()) : "") + "\n";
    return text;
}

TEST(FrameGroups, NamesAloneMakeNoFrames) {
    using List = std::vector<uint32_t>;
    const auto are = [](const std::vector<int64_t> &values, const List &pictures) {
        std::vector<FrameNumber> numbers;
        for (const int64_t value : values) numbers.push_back({0, 1, value});
        return are_frames(numbers, pictures);
    };
    EXPECT_TRUE(are({1, 2}, {5, 5}) && are({1, 2}, {5, 0}) && are({1, 1}, {5, 5}));
    EXPECT_FALSE(are({1, 2}, {5, 6}) || are({20261124, 20261126}, {5, 5}));
    EXPECT_TRUE(are({1, 2, 3, 4}, {6, 5, 5, 5}) && are({1, 2, 3, 4}, {5, 5, 6, 6}));
    EXPECT_FALSE(are({1, 2, 3}, {1, 2, 3}) || are({420, 422, 444}, {1, 1, 2}));
    EXPECT_TRUE(are({420, 422, 444}, {1, 1, 1}) && are({1, 2, 9}, {1, 1, 2}));
}

TEST(FrameGroups, TheNumberThatVariesCounts) {
    EXPECT_EQ(groups_of({"d/shot_0001_v01.dpx", "d/shot_0002_v01.dpx", "d/shot_0004_v01.dpx"}),
              "d/shot_[0001-0004]_v01.dpx -1\n");
    EXPECT_EQ(groups_of({"a.0099.2k.exr", "a.0100.2k.exr", "b.1.2k.exr"}),
              "a.[0099-0100].2k.exr\nb.1.2k.exr\n");
    EXPECT_EQ(groups_of({"v1.01.dpx", "v1.02.dpx", "v1.03.dpx", "v2.01.dpx", "v2.02.dpx", "v2.03.dpx"}),
              "v1.[01-03].dpx\nv2.[01-03].dpx\n");
    EXPECT_EQ(groups_of({"f.-002.dpx", "f.-001.dpx", "f.0000.dpx", "f.0001.dpx"}), "f.[-002-0001].dpx\n");
    EXPECT_EQ(groups_of({"a_v1.exr", "a_V3.exr", "rev1.exr", "rev2.exr"}),
              "a_v1.exr\na_V3.exr\nrev[1-2].exr\n");
    EXPECT_EQ(groups_of({"f.9.dpx", "f.10.dpx", "f.010.dpx"}), "f.[9-010].dpx\n");
    EXPECT_EQ(groups_of({"A001.mov", "A002.mov", "x.dpx", "d1/1.dpx", "d2/2.dpx"}),
              "A001.mov\nA002.mov\nx.dpx\nd1/1.dpx\nd2/2.dpx\n");
    EXPECT_EQ(groups_of({"1234567890123456789012.dpx"}), "1234567890123456789012.dpx\n");
}

// Files, directories, what is missing and what is refused: as without a process.
TEST(Listing, IsThatOfFiles) {
    const Workplace place;
    for (const char *name : {"d", "d/e", "empty"}) std::filesystem::create_directory(place.path(name));
    for (const char *name : {"d/f10", "d/f9", "d/e/x\n", "y"}) place.write(name, "");
    const std::vector<std::string> operands = {place.path("y"),     place.path("d"), "/dev/null",    "none",
                                               place.path("empty"), "/dev/zero",     place.path("y")};
    for (const bool as_files : {false, true}) {
        const FileList list = list_in_time(operands, as_files);
        const FileList expected = list_files(operands, as_files);
        EXPECT_EQ(list.files.size(), as_files ? 8U : 6U);
        EXPECT_EQ(list.files, expected.files);
        EXPECT_EQ(list.are_named, expected.are_named);
        EXPECT_EQ(list.problems, expected.problems);
        EXPECT_EQ(list.refused, expected.refused);
    }
}

}  // namespace
