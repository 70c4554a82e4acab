#include "companions/lines/lines.h"

#include <algorithm>

namespace {

// A set of characters, for what is asked of every one.
struct Characters {
    bool has[256] = {};

    constexpr explicit Characters(std::string_view characters) {
        for (const char c : characters) has[static_cast<uint8_t>(c)] = true;
    }
    bool operator[](char c) const { return has[static_cast<uint8_t>(c)]; }
};

constexpr size_t kLongest = 64 * 1024;  // of a value that is given, in bytes

constexpr Characters kBlank(" ");
constexpr Characters kBullet(" -");
constexpr Characters kPadding(" :=/'\"[]()\t");
constexpr Characters kJoining(":.-;_");
constexpr std::string_view kIndexing = "-[#";

bool is_value(const Piece &piece) { return piece.kind != Piece::literal; }

std::string_view text_of(const Line &line, const Piece &piece) {
    return line.text.substr(piece.start, piece.size);
}

std::string_view trimmed(std::string_view text, const Characters &what) {
    while (!text.empty() && what[text.front()]) text.remove_prefix(1);
    while (!text.empty() && what[text.back()]) text.remove_suffix(1);
    return text;
}

// Without padding, quotes and brackets, and without the mark of core fields (" C :").
std::string_view label_of(std::string_view text) {
    const bool has_colon = !trimmed(text, kBlank).empty() && trimmed(text, kBlank).ends_with(':');
    const std::string_view whole = text;
    text = trimmed(text, kPadding);
    if (text.rfind('(') != std::string_view::npos && text.rfind('(') + 1 > text.rfind(')') + 1) {
        const size_t end = static_cast<size_t>(text.data() - whole.data()) + text.size();
        if (whole.substr(end).starts_with(')')) text = {text.data(), text.size() + 1};
    }
    if (text.ends_with(" 0x")) text = trimmed(text.substr(0, text.size() - 3), kPadding);
    if (text.starts_with("- ")) text = trimmed(text, kBullet);
    if (has_colon && text.ends_with(" C")) text = trimmed(text.substr(0, text.size() - 2), kPadding);
    return text;
}

// The pieces of a line from a place on.
std::span<const Piece> pieces_from(const Line &line, uint32_t start) {
    const auto first =
        std::ranges::find_if(line.pieces, [&](const Piece &p) { return p.start + p.size > start; });
    return {first, line.pieces.end()};
}

// Blanks that literals print at the start, behind a position.
uint32_t depth_of(const Line &line) {
    uint32_t at = line.behind_position;
    for (const Piece &piece : pieces_from(line, at)) {
        if (is_value(piece) || piece.start > at) break;
        while (at < piece.start + piece.size && line.text[at] == ' ') at++;
        if (at < piece.start + piece.size) break;
    }
    return at - line.behind_position + line.deeper;
}

// Whether what stands between two values makes them one.
bool joins(std::string_view between) {
    return between.empty() || (between.size() == 1 && kJoining[between[0]]);
}

std::string_view without_quotes(std::string_view text) {
    if (text.size() >= 2 && text.front() == '\'' && text.back() == '\'')
        return text.substr(1, text.size() - 2);
    return text;
}

bool is_finite_number(const Piece &piece) {
    constexpr uint64_t kExact = uint64_t{1} << 53;
    if (piece.kind == Piece::integer) return piece.number <= kExact;
    return piece.kind == Piece::real && piece.value - piece.value == 0;
}

// Values that one text holds, apart by blanks.
void add_several(std::string_view text, bool numbers, std::vector<FieldValue> &values) {
    for (text = trimmed(text, kBlank); !text.empty(); text = trimmed(text, kBlank)) {
        const std::string_view one = text.substr(0, text.find(' '));
        const bool is_number = numbers && one.find_first_not_of("0123456789+-.e") == std::string_view::npos;
        values.push_back({is_number ? FieldValue::number : FieldValue::text, one});
        text.remove_prefix(one.size());
    }
}

void add_value(const Line &line, const Piece &piece, std::vector<FieldValue> &values) {
    const std::string_view text = text_of(line, piece);
    switch (piece.kind) {
        case Piece::unset: values.push_back({FieldValue::unset, {}}); break;
        case Piece::numbers: add_several(text, true, values); break;
        case Piece::integer: {
            const bool is_padded = text.size() > 1 && text[0] == '0' && is_finite_number(piece);
            const size_t zeros = is_padded ? std::min(text.find_first_not_of('0'), text.size() - 1) : 0;
            values.push_back(
                {is_finite_number(piece) ? FieldValue::number : FieldValue::text, text.substr(zeros)});
            break;
        }
        case Piece::words: add_several(text, false, values); break;
        case Piece::text:
            if (text.size() > kLongest) {
                values.push_back({FieldValue::unset, {}});
                break;
            }
            values.push_back({FieldValue::text, trimmed(without_quotes(text), kBlank)});
            break;
        default:
            values.push_back({is_finite_number(piece) ? FieldValue::number : FieldValue::text, text});
            break;
    }
}

// The values of pieces; what joins is one text.
void add_values(const Line &line, std::span<const Piece> pieces, std::vector<FieldValue> &values) {
    const Piece *first = nullptr;  // of the values that are one
    const Piece *last = nullptr;
    const auto finish = [&] {
        if (!first) return;
        if (first == last) {
            add_value(line, *first, values);
        } else {
            const std::string_view joined =
                line.text.substr(first->start, last->start + last->size - first->start);
            values.push_back({FieldValue::text, trimmed(joined, kBlank)});
        }
    };
    for (const Piece &piece : pieces) {
        if (!is_value(piece)) continue;
        const bool goes_on =
            last && joins(line.text.substr(last->start + last->size, piece.start - last->start - last->size));
        if (!goes_on) {
            finish();
            first = &piece;
        }
        last = &piece;
    }
    finish();
}

// The end of a marked label: where it was marked, else that of the piece, or of the values that are one.
uint32_t end_of_label(const Line &line) {
    if (line.label_end) return line.label_end;
    uint32_t end = line.label_start;
    bool values = false;
    for (const Piece &piece : pieces_from(line, line.label_start)) {
        if (end > line.label_start && (!values || !is_value(piece) || piece.start != end)) break;
        values = is_value(piece);
        end = piece.start + piece.size;
    }
    return end;
}

// A marked label without the indices inside ("data[3].count"), which are told apart.
std::string marked_label(const Line &line, uint32_t end, std::vector<uint64_t> &index) {
    std::string text(line.text.substr(line.label_start, end - line.label_start));
    if (!line.label_is_own) return std::string(trimmed(text, kBlank));
    size_t gone = 0;
    for (const Piece &piece : pieces_from(line, line.label_start)) {
        if (piece.start >= end || piece.kind != Piece::integer) continue;
        const size_t at = piece.start - line.label_start - gone;
        const size_t bracket = at > 0 && text[at - 1] == '[' ? 1 : 0;
        text.erase(at - bracket, piece.size + 2 * bracket);
        gone += piece.size + 2 * bracket;
        index.push_back(piece.number);
    }
    return std::string(label_of(text));
}

}  // namespace

void LinePlaces::place(const Line &line, FieldLine &field) {
    field.path.clear();
    field.values.clear();
    field.index.clear();
    field.is_labelled = false;
    const uint32_t depth = depth_of(line);
    PathElement element;
    std::span<const Piece> rest;
    if (line.is_listing) {
        // Rows have no labels; they stand below the line before them, or as deep as is marked.
        while (line.deeper && !levels_.empty() && levels_.back().depth >= line.deeper) levels_.pop_back();
        for (const Level &level : levels_) {
            if (!level.is_field) field.path.push_back(&level.element);
        }
        return;
    }
    if (line.label_is_marked) {
        const uint32_t end = end_of_label(line);
        element = {marked_label(line, end, field.index), line.label_is_own, {}};
        std::vector<Piece> before;
        for (const Piece &piece : pieces_from(line, line.behind_position)) {
            if (piece.start + piece.size <= line.label_start) before.push_back(piece);
        }
        add_values(line, before, field.values);
        rest = pieces_from(line, end);
    } else {
        rest = pieces_from(line, line.behind_position);
        const auto first = std::ranges::find_if(rest, is_value);
        const uint32_t end = first == rest.end() ? static_cast<uint32_t>(line.text.size()) : first->start;
        const std::string_view text = line.text.substr(line.behind_position, end - line.behind_position);
        element.name = label_of(text);
        rest = {first, rest.end()};
        const bool in_bracket = trimmed(text, kBlank).ends_with('[');  // "[  1]"
        const bool indexes = !rest.empty() && first->kind == Piece::integer && !element.name.empty() &&
                             (in_bracket || kIndexing.find(text.back()) != std::string_view::npos);
        if (indexes) {
            field.index.push_back(first->number);
            while (element.name.ends_with('-') || element.name.ends_with('#')) element.name.pop_back();
            rest = rest.subspan(1);
        }
    }
    add_values(line, rest, field.values);
    if (line.text.empty()) {
        levels_.clear();
        return;
    }
    if (line.is_aside) {
        field.is_labelled = true;
        remark_ = std::move(element);
        field.path.push_back(&remark_);
        return;
    }
    while (!levels_.empty() && (levels_.back().depth >= depth || levels_.back().is_field)) levels_.pop_back();
    field.is_labelled = !element.name.empty();
    if (field.is_labelled) levels_.push_back({depth, line.is_field, std::move(element)});
    for (const Level &level : levels_) field.path.push_back(&level.element);
}

PathPattern::PathPattern(std::string_view pattern) : elements_(1) {
    for (size_t i = 0; i < pattern.size(); i++) {
        if (pattern[i] == '\\' && i + 1 < pattern.size()) {
            elements_.back() += '\\';
            elements_.back() += pattern[++i];
        } else if (pattern[i] == '/') {
            elements_.emplace_back();
        } else {
            elements_.back() += pattern[i];
        }
    }
}

namespace {

// Whether a name is what a pattern's element stands for.
bool element_matches(std::string_view pattern, std::string_view name) {
    size_t p = 0, n = 0, star = std::string_view::npos, resume = 0;
    while (n < name.size()) {
        const bool escaped = p + 1 < pattern.size() && pattern[p] == '\\';
        if (p < pattern.size() && !escaped && pattern[p] == '*') {
            star = ++p;
            resume = n;
        } else if (p < pattern.size() && pattern[p + escaped] == name[n]) {
            p += 1 + escaped;
            n++;
        } else if (star != std::string_view::npos) {
            p = star;
            n = ++resume;
        } else {
            return false;
        }
    }
    while (p < pattern.size() && pattern[p] == '*') p++;
    return p == pattern.size();
}

}  // namespace

bool PathPattern::matches(const std::vector<const PathElement *> &path) const {
    if (path.size() < elements_.size()) return false;
    for (size_t i = 0; i < elements_.size(); i++) {
        if (!element_matches(elements_[i], path[path.size() - elements_.size() + i]->name)) return false;
    }
    return true;
}
