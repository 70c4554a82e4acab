// Values of MXF items by the types of the registers.
#pragma once

#include <string>
#include <string_view>

#include "common/bytes.h"

// The value as JSON: texts, numbers, rationals as "n/d", time stamps, labels with their symbols, references
// and UUIDs, arrays and batches as arrays, records as objects; an enumeration is its number, true or false,
// or its label's symbol. Empty for types that say nothing of the bytes. A value that is shorter than its type
// gives what is there.
std::string decoded_value(std::string_view type, Bytes value);

// The characters of a type's texts: bytes, or words of 16 bits; none for other types.
enum class TextWidth { none, bytes, words };
TextWidth text_width(std::string_view type);

// A label as text: "06.0e.2b.34.04.01.01.01-..." is "symbol" where a register has it, else its digits.
std::string label_text(Bytes label);

// A text in which labels of the SMPTE registers, as label_text has their digits, are their names in words.
std::string with_register_names(std::string_view text);
