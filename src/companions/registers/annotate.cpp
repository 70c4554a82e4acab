#include "companions/registers/annotate.h"

#include <algorithm>
#include <array>
#include <cctype>
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
        const size_t dash = text.find(" - ");
        const bool is_declared = dash != std::string_view::npos;
        const uint64_t place = line.at.front().offset;
        if (!is_declared) item_ = place;
        in_item_ = !is_declared;
        const auto *entry = is_declared ? declare(*input, place) : declaration(*input);
        const size_t blank = text.find(' ', is_declared ? dash + 3 : 4);
        if (entry && blank != std::string_view::npos && !is_name_of(trimmed(text.substr(blank)), *entry))
            note.name = entry->symbol;
        return note;
    }
    if (text == "Unknown" || is_value_line) note.decoded = decoded(*input, text);
    if (text != "Unknown" && note.decoded.empty() && text.find("nknown") != std::string_view::npos) {
        const auto *entry = label_among(*input, line.at);
        if (entry) note.name = entry->symbol;
    }
    return note;
}

// "Tag 8001 - 06.0e.2b.34... - NAME" of a primer pack.
const RegisterEntry *RegisterNotes::declare(Input &input, uint64_t place) {
    const auto bytes = read_at<2 + kLabel>(input, place);
    const RegisterEntry *entry = find_register_entry(std::span(bytes).subspan<2>());
    tags_[static_cast<uint16_t>(bytes[0] << 8 | bytes[1])] = entry;
    return entry;
}

// Of the item whose line came last.
const RegisterEntry *RegisterNotes::declaration(Input &input) const {
    const auto bytes = read_at<2>(input, item_);
    const auto entry = tags_.find(static_cast<uint16_t>(bytes[0] << 8 | bytes[1]));
    return entry == tags_.end() ? nullptr : entry->second;
}

// Where what the dump shows of the item, as `shown`, is not its value by the register.
std::string RegisterNotes::decoded(Input &input, std::string_view shown) const {
    const RegisterEntry *entry = declaration(input);
    if (!entry) return "";
    const auto bytes = read_at<2>(input, item_ + 2);
    const auto size = static_cast<uint64_t>(bytes[0] << 8 | bytes[1]);
    if (shown != "Unknown" && is_shown_whole(shown, entry->type, size)) return "";
    std::vector<uint8_t> value(static_cast<size_t>(size));
    value.resize(static_cast<size_t>(input.read(item_ + 4, value.data(), value.size())));
    return decoded_value(entry->type, Bytes(value.data(), value.size()));
}
