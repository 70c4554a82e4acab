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
    if (text.starts_with("Tag ") && !line.at.empty()) {
        take_tag(*input, line, text, note);
    } else if (text == "Unknown" && !type_.empty()) {
        std::vector<uint8_t> value(size_);
        value.resize(static_cast<size_t>(input->read(value_, value.data(), value.size())));
        note.decoded = decoded_value(type_, Bytes(value.data(), value.size()));
        type_.clear();
    } else if (text.find("nknown") != std::string_view::npos) {
        if (const RegisterEntry *entry = label_among(*input, line.at)) note.name = entry->symbol;
    }
    return note;
}

// "Tag 8001 - 06.0e.2b.34... - NAME" of a primer pack, "Tag 8001/16 NAME" of an item.
void RegisterNotes::take_tag(Input &input, const Line &line, std::string_view text, RegisterNote &note) {
    const uint64_t offset = line.at.front().offset;
    const auto bytes = read_at<2 + kLabel>(input, offset);
    const uint16_t tag = static_cast<uint16_t>(bytes[0] << 8 | bytes[1]);
    const bool is_declared = text.find(" - ") != std::string_view::npos;
    if (is_declared) std::copy_n(bytes.begin() + 2, kLabel, tags_[tag].begin());
    type_.clear();
    const auto label = tags_.find(tag);
    const RegisterEntry *entry = label == tags_.end() ? nullptr : find_register_entry(label->second);
    if (!entry) return;
    if (text.ends_with("nknown") || text.ends_with("UNKNOWN")) note.name = entry->symbol;
    if (is_declared) return;
    type_ = entry->type;
    value_ = offset + 4;
    size_ = static_cast<uint16_t>(bytes[2] << 8 | bytes[3]);
}
