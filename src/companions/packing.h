// Texts as one text, from process to process.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

using TextPairs = std::vector<std::pair<std::string, std::string>>;

void put_text(std::string &out, std::string_view text);
// Takes the text that `packed` begins with; empty where there is none.
std::string take_text(std::string_view &packed);

void put_pairs(std::string &out, const TextPairs &pairs);
TextPairs take_pairs(std::string_view &packed);
