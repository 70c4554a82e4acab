// What the registers of today say of the lines of an MXF dump.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <string_view>

#include "common/input.h"
#include "common/stream.h"

struct RegisterEntry;

struct RegisterNote {
    std::string name;     // the symbol of a label, set or tag that the dump does not know, or calls otherwise
    std::string decoded;  // a value of a kind that the dump does not know, or takes for another, as JSON
};

// Goes through the lines of a dump of the input that is open, in order, and reads the bytes that they name
// once more.
class RegisterNotes {
 public:
    RegisterNote note(const Line &line);

 private:
    const RegisterEntry *declare(Input &input, uint64_t place);
    const RegisterEntry *declaration(Input &input) const;
    std::string decoded(Input &input, std::string_view shown) const;

    std::map<uint16_t, const RegisterEntry *> tags_;  // as primer packs declare them; null: not registered
    uint64_t item_ = 0;                               // where the item of the tag before lies
    bool in_item_ = false;                            // the line before was its tag
};
