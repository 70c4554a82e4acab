#include "companions/registers/annotate.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <charconv>
#include <iterator>
#include <utility>
#include <vector>

#include "companions/registers/decode.h"
#include "registers/registers.h"

namespace {

constexpr uint64_t kLabel = 16;

std::string_view trimmed(std::string_view text) {
    const size_t first = text.find_first_not_of(' ');
    if (first == std::string_view::npos) return {};
    return text.substr(first, text.find_last_not_of(' ') + 1 - first);
}

template <size_t N>
std::array<uint8_t, N> read_at(Input &input, uint64_t offset) {
    std::array<uint8_t, N> bytes{};
    input.read(offset, bytes.data(), N);
    return bytes;
}

// A label of the SMPTE registers among the bytes of a line.
const RegisterEntry *label_among(Input &input, std::span<const FileRange> at) {
    constexpr uint8_t kSmpte[] = {0x06, 0x0E, 0x2B, 0x34};
    for (const FileRange &range : at) {
        if (range.size < kLabel) continue;
        const auto bytes = read_at<64>(input, range.offset);
        const std::span looked_at(bytes.data(),
                                  static_cast<size_t>(std::min<uint64_t>(range.size, bytes.size())));
        const auto found =
            std::search(looked_at.begin(), looked_at.end(), std::begin(kSmpte), std::end(kSmpte));
        if (found == looked_at.end()) continue;
        return find_register_entry(looked_at.subspan(static_cast<size_t>(found - looked_at.begin())));
    }
    return nullptr;
}

template <typename Number>
Number number_at(std::string_view text, size_t at, int base) {
    Number number = 0;
    const std::string_view rest = text.substr(std::min(at, text.size()));
    std::from_chars(rest.data(), rest.data() + rest.size(), number, base);
    return number;
}

// "Package ID (deprecated)" is "PackageID", "PackageID_ISO7" is its symbol or the words of its name.
std::string letters_of(std::string_view text) {
    constexpr std::string_view kDeprecated = "(deprecated)";
    std::string letters;
    for (size_t i = 0; i < text.size(); i++) {
        if (text.substr(i).starts_with(kDeprecated)) i += kDeprecated.size();
        const unsigned char c = i < text.size() ? static_cast<unsigned char>(text[i]) : 0;
        if (std::isalnum(c)) letters += static_cast<char>(std::tolower(c));
    }
    return letters;
}

bool is_name_of(std::string_view shown, const RegisterEntry &entry) {
    const std::string letters = letters_of(shown);
    return letters == letters_of(entry.symbol) || letters == letters_of(entry.name);
}

// Whether a line of the dump, "Uint32 1/00000001" or "Unicode 'A'", shows all of an item of a type.
bool is_shown_whole(std::string_view shown, std::string_view type, uint64_t size) {
    struct Number {
        std::string_view begin;
        uint64_t size;
    };
    constexpr Number kNumbers[] = {
        {"Boolean ", 1}, {"Uint8 ", 1}, {"Uint16 ", 2}, {"Uint32 ", 4}, {"Uint64 ", 8}};
    const TextWidth width = text_width(type);
    for (const Number &number : kNumbers) {
        if (shown.starts_with(number.begin)) return size <= number.size && width == TextWidth::none;
    }
    if (shown.starts_with("Unicode ")) return width != TextWidth::bytes;
    if (shown.starts_with("Ascii ")) return width != TextWidth::words;
    return true;
}

}  // namespace

RegisterNote RegisterNotes::note(const Line &line) {
    RegisterNote note;
    Input *input = Input::current();
    if (!input) return note;
    const std::string_view text = trimmed(line.text.substr(line.behind_position));
    const bool is_value_line = std::exchange(in_item_, false);
    if (text.starts_with("Tag ") && !line.at.empty()) {
        note.name = name_of_tag(*input, text, line.at.front().offset);
        return note;
    }
    if (text == "Unknown" || is_value_line) note.decoded = decoded(*input, text);
    if (text != "Unknown" && note.decoded.empty() && text.find("nknown") != std::string_view::npos) {
        const auto *entry = label_among(*input, line.at);
        if (entry) note.name = entry->symbol;
    }
    return note;
}

// "Tag 8001 - 06.0e.2b.34... - NAME" of a primer pack, "Tag 8001/16 NAME" of an item, which is the one whose
// value comes next. What these lines say need not be read once more.
std::string RegisterNotes::name_of_tag(Input &input, std::string_view text, uint64_t place) {
    const size_t dash = text.find(" - ");
    const bool is_declared = dash != std::string_view::npos;
    const size_t blank = text.find(' ', is_declared ? dash + 3 : 4);
    Tag &tag = tags_[number_at<uint16_t>(text, 4, 16)];
    if (is_declared) {
        tag.entry = find_register_entry(read_at<kLabel>(input, place + 2));
    } else {
        in_item_ = true;
        item_ = {tag.entry, place + 4, number_at<uint32_t>(text, text.find('/') + 1, 10)};
    }
    if (!tag.entry || blank == std::string_view::npos) return "";
    const std::string_view shown = trimmed(text.substr(blank));
    if (is_declared || tag.shown != shown) {
        tag.shown = shown;
        tag.is_its_name = is_name_of(shown, *tag.entry);
    }
    return tag.is_its_name ? "" : tag.entry->symbol;
}

// Where what the dump shows of the item, as `shown`, is not its value by the register.
std::string RegisterNotes::decoded(Input &input, std::string_view shown) const {
    if (!item_.entry) return "";
    if (shown != "Unknown" && is_shown_whole(shown, item_.entry->type, item_.size)) return "";
    std::vector<uint8_t> value(static_cast<size_t>(std::min<uint64_t>(item_.size, UINT16_MAX)));
    value.resize(static_cast<size_t>(input.read(item_.value, value.data(), value.size())));
    return decoded_value(item_.entry->type, Bytes(value.data(), value.size()));
}
