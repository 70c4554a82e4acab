// What the registers of today say of the lines of an MXF dump.
#pragma once

#include <array>
#include <cstdint>
#include <map>
#include <string>
#include <string_view>

#include "common/input.h"
#include "common/stream.h"

struct RegisterNote {
    std::string name;     // the symbol of a label, set or tag that the dump does not know
    std::string decoded;  // a value of unknown kind as JSON
};

// Goes through the lines of a dump of the input that is open, in order, and reads the bytes that they name
// once more.
class RegisterNotes {
 public:
    RegisterNote note(const Line &line);

 private:
    void take_tag(Input &input, const Line &line, std::string_view text, RegisterNote &note);

    std::map<uint16_t, std::array<uint8_t, 16>> tags_;  // labels, as primer packs declare them
    std::string type_;                                  // of the item whose value comes next
    uint64_t value_ = 0;                                // where it lies
    uint16_t size_ = 0;
};
