// Movies built atom by atom, and the text of their dumps.
#pragma once

#include <gtest/gtest.h>

#include <string>

#include "support/bytes_of.h"
#include "support/command.h"

inline std::string atom(const std::string &type, const std::string &payload = "", uint64_t too_long = 0) {
    return big().u32(8 + payload.size() + too_long).text(type).raw(payload).str();
}

// The dump between its first line and the closing one.
inline std::string movie_dump(const std::string &content) {
    const std::string dump = dump_of(content, "clip.mov");
    EXPECT_TRUE(dump.starts_with("Fileformat: QT\n") && dump.ends_with("\nNo problems found.\n"));
    return dump.substr(15, dump.size() - 15 - 20);
}

// The dump of a file of one atom, without the atom's own line.
inline std::string fields_of(const std::string &type, const std::string &payload) {
    const std::string dump = movie_dump(atom(type, payload));
    return dump.substr(dump.find('\n') + 1);
}
