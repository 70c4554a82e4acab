#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

// Texts that many frames share, by numbers; 0 is the empty one.
class SharedNames {
 public:
    SharedNames() { number(""); }
    uint32_t number(const std::string &name) {
        const auto [entry, is_new] = numbers_.emplace(name, static_cast<uint32_t>(names_.size()));
        if (is_new) names_.push_back(&entry->first);
        return entry->second;
    }
    const std::string &name(uint32_t number) const { return *names_[number]; }

 private:
    std::map<std::string, uint32_t> numbers_;
    std::vector<const std::string *> names_;
};
