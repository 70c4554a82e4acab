// Text of files and file names as a terminal may see it.
#pragma once

#include <string>
#include <string_view>

// A text whose control characters (C0, DEL, C1), characters that turn the direction of text or end a line
// (U+202E, U+2028), and bytes that are not UTF-8 are written as \x1b and the like, so that no file can move
// the cursor, set a colour, show another name or answer for the user. Line feed, tab and a
// carriage return before a line feed pass in running text; `safe_name` escapes these too, as a name stands on
// one line.
std::string safe_name(std::string_view name);

// The same for a text that comes in pieces: a character cut by the end of a piece waits for the next.
class SafeText {
 public:
    // Appends the piece's safe text to `out`.
    void add(std::string_view piece, std::string &out);
    // Appends what still waits.
    void finish(std::string &out);

 private:
    std::string waiting_;
};

// The length of the UTF-8 character that a text starts with: 0 when the bytes are no character, and more than
// the text has when it ends within one. Surrogates, overlong forms and what lies beyond U+10FFFF are none.
size_t utf8_length(std::string_view text);

// Whether a character of two bytes or more is a control of C1, or turns the direction of text or ends a line
// unseen: U+061C, U+200E, U+200F, U+2028 to U+202E, U+2066 to U+2069.
bool steers_unseen(std::string_view character);
