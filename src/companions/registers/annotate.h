// What the registers of today say of the lines of an MXF dump.
#pragma once

#include <array>
#include <cstdint>
#include <map>
#include <string>

#include "common/input.h"
#include "common/stream.h"

struct RegisterEntry;

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
    const RegisterEntry *declare(Input &input, uint64_t place);
    const RegisterEntry *declaration(Input &input) const;
    std::string decoded(Input &input) const;

    std::map<uint16_t, std::array<uint8_t, 16>> tags_;  // labels, as primer packs declare them
    uint64_t item_ = 0;                                 // where the item of the line before lies
};
