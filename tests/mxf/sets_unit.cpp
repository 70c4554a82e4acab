#include <gtest/gtest.h>

#include "mxf/sets.h"
#include "support/bytes_of.h"
#include "support/command.h"

TEST(Sets, NamesOfClasses) {
    Transcript transcript;
    DumpOptions opts{};
    std::string names;
    for (unsigned set = 0; set < 256; set++) {
        const std::string key = big().hex("060E2B34 02530101 0D010101 0101").u8(set).zeros(20).str();
        const std::string name = mxf_metadata_key(opts, Bytes(key.data(), key.size()), 0, nullptr);
        if (name != "unknown") names += name + " ";
    }
    SHOW(names);
}
