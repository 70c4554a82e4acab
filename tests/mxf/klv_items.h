// MXF items built for tests.
#pragma once

#include <string>

#include "support/bytes_of.h"
#include "support/command.h"

// A key and a value with a 4-byte BER length.
inline std::string item(const std::string &key, const std::string &value) {
    return big().hex(key).u8(0x83).u24(value.size()).raw(value).str();
}

inline std::string local(uint32_t tag, const std::string &value) {
    return big().u16(tag, value.size()).raw(value).str();
}

// A structural metadata set by byte 14 of its key, in two digits.
inline std::string set(const std::string &type, const std::string &items) {
    return item("060E2B34 02530101 0D010101 0101" + type + "00", items);
}

inline const std::string kPrimer = "060E2B34 02050101 0D010201 01050100";
inline const std::string kRandomIndex = "060E2B34 02050101 0D010201 01110100";
inline const std::string kFiller = "060E2B34 01010102 03010210 01000000";

// The dump without file positions.
inline std::string plain(const std::string &content, std::vector<std::string> switches = {}) {
    switches.insert(switches.begin(), "-mc");
    return dump_of(content, "clip.mxf", switches);
}

// The lines of the first item behind its first line, without the empty line at the end.
inline std::string body(const std::string &content, const std::vector<std::string> &switches = {}) {
    const std::string dump = plain(content, switches);
    const size_t start = dump.find('\n') + 1;
    const size_t end = dump.find("\n\n", start);
    return dump.substr(start, end == std::string::npos ? end : end + 1 - start);
}
