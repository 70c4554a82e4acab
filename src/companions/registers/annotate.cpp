#include "companions/registers/annotate.h"

#include <algorithm>
#include <array>
#include <iterator>
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

}  // namespace

RegisterNote RegisterNotes::note(const Line &line) {
    RegisterNote note;
    Input *input = Input::current();
    if (!input) return note;
    const std::string_view text = trimmed(line.text.substr(line.behind_position));
    const bool is_tag = text.starts_with("Tag ") && !line.at.empty();
    const bool is_declared = is_tag && text.find(" - ") != std::string_view::npos;
    const bool is_unknown = text.ends_with("nknown") || text.ends_with("UNKNOWN");
    if (is_declared) {
        const auto *entry = declare(*input, line.at.front().offset);
        if (entry && is_unknown) note.name = entry->symbol;
    } else if (is_tag) {
        item_ = line.at.front().offset;
        const auto *entry = is_unknown ? declaration(*input) : nullptr;
        if (entry) note.name = entry->symbol;
    } else if (text == "Unknown") {
        note.decoded = decoded(*input);
    } else if (text.find("nknown") != std::string_view::npos) {
        const auto *entry = label_among(*input, line.at);
        if (entry) note.name = entry->symbol;
    }
    return note;
}

// "Tag 8001 - 06.0e.2b.34... - NAME" of a primer pack.
const RegisterEntry *RegisterNotes::declare(Input &input, uint64_t place) {
    const auto bytes = read_at<2 + kLabel>(input, place);
    auto &label = tags_[static_cast<uint16_t>(bytes[0] << 8 | bytes[1])];
    std::copy_n(bytes.begin() + 2, kLabel, label.begin());
    return find_register_entry(label);
}

// Of the item whose line came last.
const RegisterEntry *RegisterNotes::declaration(Input &input) const {
    const auto bytes = read_at<2>(input, item_);
    const auto label = tags_.find(static_cast<uint16_t>(bytes[0] << 8 | bytes[1]));
    return label == tags_.end() ? nullptr : find_register_entry(label->second);
}

std::string RegisterNotes::decoded(Input &input) const {
    const RegisterEntry *entry = declaration(input);
    if (!entry) return "";
    const auto size = read_at<2>(input, item_ + 2);
    std::vector<uint8_t> value(static_cast<size_t>(size[0] << 8 | size[1]));
    value.resize(static_cast<size_t>(input.read(item_ + 4, value.data(), value.size())));
    return decoded_value(entry->type, Bytes(value.data(), value.size()));
}
