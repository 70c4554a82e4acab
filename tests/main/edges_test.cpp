// Runs where the machine sets limits: to names, sizes, memory and output.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <unistd.h>

#include <chrono>
#include <thread>

#include "support/bytes_of.h"
#include "support/command.h"

namespace {

using namespace std::chrono_literals;

const std::string kDpx = big().text("SDPX").zeros(12).u32(2048).zeros(2028).str();
const std::string kFrame(40'000, 'f');
const std::string kMovie =
    big().hex("060E2B34 01020101 0D010301 15010801").u8(0x83).u24(kFrame.size()).raw(kFrame).str();

// A script in which "$0" is keldump.
Outcome shell(const Workplace &place, const std::string &script) {
    return place.run({"-c", script, command_path()}, "/bin/sh");
}

bool write_all(int fd, std::string_view text) {
    while (!text.empty()) {
        const ssize_t n = write(fd, text.data(), text.size());
        if (n <= 0) return false;
        text.remove_prefix(static_cast<size_t>(n));
    }
    return true;
}

// The dump of standard input that does not wait and whose data comes in two parts, late.
std::string dump_of_late(const Workplace &place, int (*connect)(int ends[2])) {
    int ends[2];
    EXPECT_EQ(connect(ends), 0);
    fcntl(ends[0], F_SETFL, O_NONBLOCK);
    const int before = dup(STDIN_FILENO);
    dup2(ends[0], STDIN_FILENO);
    close(ends[0]);
    fcntl(ends[1], F_SETFD, FD_CLOEXEC);
    std::thread writer([&] {
        for (const std::string &part : {kDpx.substr(0, 700), kDpx.substr(700)}) {
            std::this_thread::sleep_for(50ms);
            EXPECT_TRUE(write_all(ends[1], part));
        }
        close(ends[1]);
    });
    const Outcome run = place.run({"/dev/stdin"});
    writer.join();
    dup2(before, STDIN_FILENO);
    close(before);
    return run.out;
}

}  // namespace

TEST(Edges, LongNames) {
    const Workplace place;
    place.write("a.d", kDpx);
    std::string dots;
    while (dots.size() < 4092) dots += "./";
    EXPECT_EQ(place.run({dots + "a.dpx"}).out, missing(dots + "a.dpx"));
    EXPECT_EQ(place.run({dots + "a.d%03d", "9", "1"}).out,
              missing(dots + "a.d009") + missing(dots + "a.d010"));
    const std::string zeros(998, '0');
    EXPECT_EQ(place.run({dots + "%0999d/%%", "7", "0"}).out, missing(dots + zeros + "7/%"));
}

TEST(Edges, StandardInputThatComesLate) {
    const Workplace place;
    place.write("x.dpx", kDpx);
    const std::string dump = shell(place, "\"$0\" /dev/stdin < x.dpx").out;
    EXPECT_EQ(dump_of_late(place, [](int ends[2]) { return pipe(ends); }), dump);
    EXPECT_EQ(dump_of_late(place, [](int ends[2]) { return socketpair(AF_UNIX, SOCK_STREAM, 0, ends); }),
              dump);
}

TEST(Edges, ASlowReaderThatDoesNotWaitGetsEverything) {
    const Workplace place;
    place.write("file", std::string(100'000, 'x'));
    const std::string dump = place.run({"-h=0,186A0", "file"}).out;
    ASSERT_GT(dump.size(), 400'000U);
    int ends[2];
    ASSERT_EQ(pipe2(ends, O_NONBLOCK), 0);
    std::string read_back;
    std::thread reader([&] {
        for (char block[16 * 1024];;) {
            std::this_thread::sleep_for(1ms);
            const ssize_t n = read(ends[0], block, sizeof block);
            if (n == 0) return;
            if (n > 0) read_back.append(block, static_cast<size_t>(n));
        }
    });
    const Outcome run = shell(place, "exec \"$0\" -h=0,186A0 file >&" + std::to_string(ends[1]));
    close(ends[1]);
    reader.join();
    close(ends[0]);
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(read_back, dump);
}

TEST(Edges, LimitsOfFileSizes) {
    const Workplace place;
    place.write("x.dpx", kDpx);
    place.write("f.mxf", kMovie);
    const std::string dump = shell(place, "\"$0\" /dev/stdin < x.dpx").out;
    EXPECT_EQ(shell(place, "(ulimit -f 1; cat x.dpx | \"$0\" /dev/stdin) | cat").out, dump);
    EXPECT_EQ(shell(place, "(ulimit -f 1; \"$0\" -h x.dpx > o; echo $?) | cat").out, "0\n");
    EXPECT_EQ(place.read("o"), place.run({"-h", "x.dpx"}).out.substr(0, 512));
    const std::string saved = shell(place, "(ulimit -f 1; \"$0\" -ms=f%d f.mxf; echo $?) | cat").out;
    EXPECT_EQ(lines_from(saved, "Cannot"), "Cannot create file 'f0'\n0\n");
}

TEST(Edges, OutputThatCannotBeWrittenEndsTheRun) {
    const Workplace place;
    place.write_sparse("t", uint64_t{1} << 40, 0, "x");
    const std::string dump = "ulimit -t 5; \"$0\" -h=0,10000000000 t ";
    EXPECT_EQ(shell(place, dump + ">/dev/full").status, 0);
    EXPECT_EQ(shell(place, dump + ">&-").status, 0);
    EXPECT_EQ(shell(place, "trap '' PIPE; (" + dump + "; echo $? >status) | true; cat status").out, "0\n");
}

TEST(Edges, FramesAreSavedWithoutOutput) {
    const Workplace place;
    place.write("f.mxf", kMovie);
    for (const std::string closed : {">&-", "<&- >&- 2>&-", ">/dev/full"}) {
        EXPECT_EQ(shell(place, "rm -f f0; exec \"$0\" -ms=f%d f.mxf " + closed).status, 0);
        EXPECT_EQ(place.read("f0"), kFrame) << closed;
    }
}

TEST(Edges, AHugeFileInLittleMemory) {
    if (command_path().find("sanitized") != std::string::npos) GTEST_SKIP() << "sanitizers reserve memory";
    const Workplace place;
    const uint64_t directory = 4'294'000'000;
    const auto entry = little().u16(1, 256, 4).u32(1, 1920, 0);
    place.write_sparse("a.tif", 5'000'000'000, 0, little().text("II").u16(42).u32(directory).str());
    place.write_sparse("a.tif", 5'000'000'000, directory, entry.str());
    const std::string dump = place.run({"a.tif"}).out;
    EXPECT_NE(dump.find("1920"), std::string::npos) << dump;
    EXPECT_EQ(shell(place, "ulimit -v 1048576; exec \"$0\" a.tif").out, dump);
}
