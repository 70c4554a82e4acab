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
    struct Tag {
        const RegisterEntry *entry = nullptr;  // as primer packs declare it; null: not registered
        std::string shown;                     // its name in the dump, and whether that is the register's
        bool is_its_name = true;
    };
    struct Item {
        const RegisterEntry *entry = nullptr;
        uint64_t value = 0;  // where it lies
        uint64_t size = 0;
    };

    std::string name_of_tag(Input &input, std::string_view text, uint64_t place);
    std::string decoded(Input &input, std::string_view shown) const;

    std::map<uint16_t, Tag> tags_;
    Item item_;             // of the tag before
    bool in_item_ = false;  // the line before was its tag
};
