#include "companions/shown_width.h"

#include <algorithm>
#include <cstdint>

#include "companions/safe_text.h"

namespace {

struct Range {
    uint32_t first;
    uint32_t last;
};

// Marks and joiners that take no column (Unicode: Mn, Me, Cf; vowels of Hangul behind their consonants).
constexpr Range kMarks[] = {
    {0x0300, 0x036F}, {0x0483, 0x0489},   {0x0591, 0x05BD}, {0x0610, 0x061A}, {0x064B, 0x065F},
    {0x0670, 0x0670}, {0x06D6, 0x06DC},   {0x06DF, 0x06E4}, {0x0900, 0x0902}, {0x093C, 0x093C},
    {0x0941, 0x0948}, {0x094D, 0x094D},   {0x0E31, 0x0E31}, {0x0E34, 0x0E3A}, {0x0E47, 0x0E4E},
    {0x1160, 0x11FF}, {0x1AB0, 0x1AFF},   {0x1DC0, 0x1DFF}, {0x200B, 0x200D}, {0x2060, 0x2064},
    {0x20D0, 0x20F0}, {0x302A, 0x302D},   {0x3099, 0x309A}, {0xFE00, 0xFE0F}, {0xFE20, 0xFE2F},
    {0xFEFF, 0xFEFF}, {0xE0100, 0xE01EF},
};

// Two columns (Unicode TR 11, East_Asian_Width W and F).
constexpr Range kWide[] = {
    {0x1100, 0x115F},   {0x231A, 0x231B},   {0x2329, 0x232A},   {0x23E9, 0x23EC},   {0x23F0, 0x23F0},
    {0x23F3, 0x23F3},   {0x25FD, 0x25FE},   {0x2614, 0x2615},   {0x2648, 0x2653},   {0x267F, 0x267F},
    {0x2693, 0x2693},   {0x26A1, 0x26A1},   {0x26AA, 0x26AB},   {0x26BD, 0x26BE},   {0x26C4, 0x26C5},
    {0x26CE, 0x26CE},   {0x26D4, 0x26D4},   {0x26EA, 0x26EA},   {0x26F2, 0x26F3},   {0x26F5, 0x26F5},
    {0x26FA, 0x26FA},   {0x26FD, 0x26FD},   {0x2705, 0x2705},   {0x270A, 0x270B},   {0x2728, 0x2728},
    {0x274C, 0x274C},   {0x274E, 0x274E},   {0x2753, 0x2755},   {0x2757, 0x2757},   {0x2795, 0x2797},
    {0x27B0, 0x27B0},   {0x27BF, 0x27BF},   {0x2B1B, 0x2B1C},   {0x2B50, 0x2B50},   {0x2B55, 0x2B55},
    {0x2E80, 0x303E},   {0x3041, 0x4DBF},   {0x4E00, 0xA4CF},   {0xA960, 0xA97C},   {0xAC00, 0xD7A3},
    {0xF900, 0xFAFF},   {0xFE10, 0xFE19},   {0xFE30, 0xFE6F},   {0xFF01, 0xFF60},   {0xFFE0, 0xFFE6},
    {0x16FE0, 0x18CFF}, {0x1AFF0, 0x1B2FF}, {0x1F004, 0x1F004}, {0x1F0CF, 0x1F0CF}, {0x1F18E, 0x1F18E},
    {0x1F191, 0x1F19A}, {0x1F200, 0x1F320}, {0x1F32D, 0x1F335}, {0x1F337, 0x1F37C}, {0x1F37E, 0x1F393},
    {0x1F3A0, 0x1F3CA}, {0x1F3CF, 0x1F3D3}, {0x1F3E0, 0x1F3F0}, {0x1F3F4, 0x1F3F4}, {0x1F3F8, 0x1F43E},
    {0x1F440, 0x1F440}, {0x1F442, 0x1F4FC}, {0x1F4FF, 0x1F53D}, {0x1F54B, 0x1F567}, {0x1F57A, 0x1F57A},
    {0x1F595, 0x1F596}, {0x1F5A4, 0x1F5A4}, {0x1F5FB, 0x1F64F}, {0x1F680, 0x1F6C5}, {0x1F6CC, 0x1F6CC},
    {0x1F6D0, 0x1F6DF}, {0x1F6EB, 0x1F6FC}, {0x1F7E0, 0x1F7F0}, {0x1F90C, 0x1F9FF}, {0x1FA70, 0x1FAFF},
    {0x20000, 0x3FFFD},
};

template <size_t size>
bool is_in(const Range (&ranges)[size], uint32_t character) {
    const auto range = std::ranges::lower_bound(ranges, character, {}, &Range::last);
    return range != std::end(ranges) && range->first <= character;
}

// The first character, and its columns.
struct Character {
    size_t bytes;
    size_t columns;
};

Character first_of(std::string_view text) {
    const size_t bytes = std::min(std::max<size_t>(1, utf8_length(text)), text.size());
    if (bytes == 1) return {1, 1};
    uint32_t character = static_cast<uint8_t>(text[0]) & (0xFFU >> (bytes + 1));
    for (size_t i = 1; i < bytes; i++) character = character << 6 | (static_cast<uint8_t>(text[i]) & 0x3FU);
    return {bytes, is_in(kMarks, character) ? 0U : is_in(kWide, character) ? 2U : 1U};
}

}  // namespace

size_t shown_width(std::string_view text) {
    size_t columns = 0;
    while (!text.empty()) {
        const Character next = first_of(text);
        columns += next.columns;
        text.remove_prefix(next.bytes);
    }
    return columns;
}

std::string_view fitting_start(std::string_view text, size_t columns) {
    size_t end = 0;
    while (end < text.size()) {
        const Character next = first_of(text.substr(end));
        if (next.columns > columns) break;
        columns -= next.columns;
        end += next.bytes;
    }
    return text.substr(0, end);
}

std::string_view fitting_end(std::string_view text, size_t columns) {
    size_t width = shown_width(text);
    size_t start = 0;
    while (start < text.size()) {
        const Character next = first_of(text.substr(start));
        // A mark does not go without its character.
        if (width <= columns && next.columns > 0) break;
        width -= next.columns;
        start += next.bytes;
    }
    return text.substr(start);
}

std::string wrapped(std::string_view text, size_t columns, size_t indent) {
    constexpr size_t kLeast = 8;  // of a line's text
    std::string lines;
    for (;;) {
        lines.append(indent, ' ');
        const size_t room = std::max(columns, indent + kLeast) - indent;
        if (columns == 0 || shown_width(text) <= room) return lines.append(text) + "\n";
        std::string_view line = fitting_start(text, room);
        const size_t blank = text.substr(0, line.size() + 1).find_last_of(' ');
        const bool breaks = blank != std::string_view::npos && blank > 0;
        if (breaks) line = text.substr(0, blank);
        lines.append(line) += "\n";
        text.remove_prefix(line.size() + (breaks ? 1 : 0));
        if (lines.find('\n') == lines.size() - 1) indent += 2;
    }
}
