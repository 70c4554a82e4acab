#include <gtest/gtest.h>

#include "support/command.h"

namespace {

const std::string kUnknown = " 00 00 00 00\n";

std::string unknown(const std::string &name) {
    return "Unknown fileformat of file '" + name + "'" + kUnknown;
}

}  // namespace

TEST(CommandLine, UsageAndVersion) {
    Transcript transcript;
    const Workplace place;
    place.write("verify", "");
    const std::string usage = place.run({}).out;
    std::string of_any_version = usage;
    of_any_version.replace(usage.rfind(KELDUMP_VERSION), sizeof KELDUMP_VERSION - 1, "VERSION");
    SHOW(of_any_version);
    EXPECT_EQ(place.run({}).status, 255);
    for (const char *request : {"verify", "VERIFY", "Verify"}) {
        const Outcome run = place.run({request, "file"});
        EXPECT_EQ(run.out, "keldump: " KELDUMP_VERSION "\n");
        EXPECT_EQ(run.status, 0);
    }
    for (const char *bad : {"-x", "-mq", "-m", "-", "-w", "-A", "-b"}) {
        const Outcome run = place.run({"-v", bad, "verify"});
        EXPECT_EQ(run.out, usage) << bad;
        EXPECT_EQ(run.status, 255) << bad;
    }
}

TEST(CommandLine, TheLastArgumentIsTheFile) {
    const Workplace place;
    EXPECT_EQ(place.run({"-v"}).out, missing("-v"));
    EXPECT_EQ(place.run({"-av", "-hn=1,2", "-mhx", "-h"}).out, missing("-h"));
    EXPECT_EQ(place.run({"name.%d", "5"}).out, missing("name.%d"));
    EXPECT_EQ(place.run({"a%b", "1", "2", "3"}).out, missing("a%b"));
    EXPECT_EQ(place.run({std::string(5000, 'n')}).out, missing(std::string(5000, 'n')));
}

TEST(CommandLine, FrameRanges) {
    const Workplace place;
    place.write("f011.dpx", "");
    const auto lines = [&](std::vector<std::string> arguments) {
        const Outcome run = place.run(arguments);
        EXPECT_EQ(run.status, 0);
        EXPECT_EQ(run.err, "");
        return run.out;
    };
    EXPECT_EQ(lines({"f%03d.dpx", "10", "2"}),
              missing("f010.dpx") + unknown("f011.dpx") + missing("f012.dpx"));
    EXPECT_EQ(lines({"f%03d.dpx", "11", "0"}), unknown("f011.dpx"));
    EXPECT_EQ(lines({"f%03d.dpx", "11", "-7"}), unknown("f011.dpx"));
    EXPECT_EQ(lines({"f%X%%", "x", "1"}), missing("f0%") + missing("f1%"));
    EXPECT_EQ(lines({"f%d", "2147483647", "1"}), missing("f2147483647") + missing("f-2147483648"));
    EXPECT_EQ(lines({"same", "1", "1"}), missing("same") + missing("same"));
}

TEST(CommandLine, RefusedNames) {
    const Workplace place;
    const std::string refused = "keldump: %s in string not allowed\n";
    EXPECT_EQ(place.run({"%s.dpx"}).out, refused);
    EXPECT_EQ(place.run({"clip%d_s.dpx"}).out, refused);
    EXPECT_EQ(place.run({"%%sS", "1", "2"}).out, refused + refused);
    EXPECT_EQ(place.run({"%s"}).status, 0);
    EXPECT_EQ(place.run({"shot.%04ds"}).out, missing("shot.%04ds"));
    for (const std::string name : {"%0s", "%9s"}) EXPECT_EQ(place.run({name}).out, missing(name));
    for (const char *name : {"%/s", "%:s"}) EXPECT_EQ(place.run({name}).out, refused);
    EXPECT_EQ(place.run({"%d%d", "1", "2"}).out, "keldump: bad name pattern '%d%d'\n");
    for (const std::string pattern : {"%n", "%1000d", "%.1000d", "%/d", "%:d"}) {
        EXPECT_EQ(place.run({pattern, "1", "2"}).out, "keldump: bad name pattern '" + pattern + "'\n");
    }
    EXPECT_EQ(place.run({"%9d", "1", "1"}).out, missing("        1") + missing("        2"));
    EXPECT_EQ(place.run({"%.256d", "1", "0"}).out, missing(std::string(255, '0') + "1"));
    EXPECT_EQ(place.run({"-ms=%s%n", "file"}).out, "keldump: bad name pattern '%s%n'\n");
    EXPECT_EQ(place.run({"-ms=%05d.jpc", "file"}).out, missing("file"));
    EXPECT_EQ(place.run({"-ms=" + std::string(600, 'p') + "%n", "file"}).out, missing("file"));
}
