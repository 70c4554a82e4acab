#include "mxf/facts_sound.h"

#include <algorithm>

#include "common/utf16.h"

namespace {

using namespace std::string_view_literals;

constexpr LabelName kSoundCodings[] = {
    {"\4\2\2\1"sv, "PCM"},
    {"\4\2\2\2\3\1\1"sv, "A-law"},
    {"\4\2\2\2\3\2\1"sv, "AC-3"},
    {"\4\2\2\2\3\2\4"sv, "MP1"},
    {"\4\2\2\2\3\2\5"sv, "MP2"},
    {"\4\2\2\2\3\2\6"sv, "MP2"},
    {"\4\2\2\2\3\2\x1C"sv, "Dolby E"},
    {"\4\2\2\2\3\3"sv, "AAC"},
    {"\4\2\2\2\3\4"sv, "AAC"},
    {"\4\2\2\2\4\1\1"sv, "MP1"},
    {"\4\2\2\2\4\2\1"sv, "MP1"},
    {"\4\2\2\2\4\1\2"sv, "MP2"},
    {"\4\2\2\2\4\2\2"sv, "MP2"},
    {"\4\2\2\2\4\1\3"sv, "MP3"},
    {"\4\2\2\2\4\2\3"sv, "MP3"},
    {"\xD\1\3\1\2\1"sv, "PCM"},
    {"\xD\1\3\1\2\6"sv, "PCM"},
    {"\xD\1\3\1\2\xA"sv, "A-law"},
    {"\xD\1\3\1\2\x16"sv, "AAC"},
    {"\xD\1\3\1\2\x17"sv, "AAC"},
    {"\xD\1\3\1\2\x18"sv, "AAC"},
    {"\xD\1\3\1\2\x1D"sv, "IAB"},
    {"\xD\1\3\1\2\x25"sv, "MGA"},
};

// Sound-field groups (ST 377-4, ST 2067-8, ST 377-42).
constexpr LabelName kGroups[] = {
    {"\xD\3\2\2\1"sv, "5.1"},
    {"\xD\3\2\2\2"sv, "7.1"},
    {"\xD\3\2\2\3"sv, "7.1 SDS"},
    {"\xD\3\2\2\4"sv, "6.1"},
    {"\xD\3\2\2\5"sv, "mono"},
    {"\xD\3\2\2\x20\1"sv, "stereo"},
    {"\xD\3\2\2\x20\2"sv, "dual mono"},
    {"\xD\3\2\2\x20\3"sv, "discrete"},
    {"\xD\3\2\2\x20\4"sv, "3.0"},
    {"\xD\3\2\2\x20\5"sv, "4.0"},
    {"\xD\3\2\2\x20\6"sv, "5.0"},
    {"\xD\3\2\2\x20\7"sv, "6.0"},
    {"\xD\3\2\2\x20\x8"sv, "7.0"},
    {"\xD\3\2\2\x20\x9"sv, "Lt Rt"},
    {"\xD\3\2\2\x20\xA"sv, "5.1 EX"},
    {"\xD\3\2\2\x20\xB"sv, "hearing accessibility"},
    {"\xD\3\2\2\x20\xC"sv, "visual accessibility"},
    {"\xD\3\2\2\x21"sv, "IAB"},
    {"\xD\3\2\2\x22"sv, "MGA"},
    {"\xD\3\2\2\x30\1\1"sv, "6.0 height"},
    {"\xD\3\2\2\x30\1\2"sv, "8.0 height"},
    {"\xD\3\2\2\x30\1\3"sv, "9.1 overhead"},
    {"\xD\3\2\2\x30\1\4"sv, "9.1 height"},
    {"\xD\3\2\2\x30\1\5"sv, "10.1 height"},
    {"\xD\3\2\2\x30\1\6"sv, "11.1 height"},
    {"\xD\3\2\2\x30\1\7"sv, "13.1 height"},
    {"\xD\3\2\2\x30\1\x8"sv, "15.1 height"},
    {"\xD\3\2\2\x30\1\x9"sv, "12.0 center height"},
    {"\xD\3\2\2\x30\1\xA"sv, "12.1 center height"},
    {"\xD\3\2\2\x30\1\xB"sv, "6.0 center height"},
    {"\xD\3\2\2\x30\1\xC"sv, "6.1 center height"},
    {"\xD\3\2\2\x30\1\xD"sv, "22.2"},
};

// The same by the symbols of labels without a known identifier.
constexpr std::pair<std::string_view, const char *> kSymbols[] = {
    {"sgM", "mono"}, {"sg1", "mono"}, {"sgST", "stereo"},   {"sgLtRt", "Lt Rt"}, {"sg51", "5.1"},
    {"sg61", "6.1"}, {"sg71", "7.1"}, {"sgSDS", "7.1 SDS"}, {"sg71DS", "7.1"},   {"sgDM", "dual mono"}};

// Channel configurations of ST 429-2.
constexpr LabelName kConfigurations[] = {
    {"\4\2\2\x10\3\1\1"sv, "5.1"},
    {"\4\2\2\x10\3\1\2"sv, "6.1"},
    {"\4\2\2\x10\3\1\3"sv, "7.1 SDS"},
    {"\4\2\2\x10\3\1\5"sv, "7.1"},
};

// Items by the ends of their labels.
constexpr auto kDictionaryId = "\1\3\7\1\1\0\0\0"sv;
constexpr auto kSymbol = "\1\3\7\1\2\0\0\0"sv;
constexpr auto kChannel = "\1\3\4\xA\0\0\0\0"sv;
constexpr auto kSpokenLanguage = "\3\1\1\2\3\x15\0\0"sv;
constexpr auto kContentKind = "\3\2\1\2\x20\0\0\0"sv;
constexpr auto kElementKind = "\3\2\1\2\x21\0\0\0"sv;
constexpr auto kContent = "\3\2\1\2\x22\0\0\0"sv;
constexpr auto kAssignment = "\4\2\1\1\5\0\0\0"sv;

bool is_label(const MetadataSet &set) {
    return set.kind == SetKind::soundfield_group || set.kind == SetKind::channel_label ||
           set.kind == SetKind::group_of_soundfield_groups;
}

std::vector<const MetadataSet *> labels_of(const Metadata &metadata, const MetadataSet &d, SetKind kind) {
    std::vector<const MetadataSet *> labels = metadata.sub_descriptors(d);
    std::erase_if(labels, [&](const MetadataSet *label) { return label->kind != kind; });
    return labels;
}

std::string symbol_of(const Metadata &metadata, const MetadataSet &label) {
    return text_of_utf16(big_endian(metadata.item(label, kSymbol)));
}

// Tags of languages are ISO 7-bit texts, but some writers have them in 16 bits.
std::string language_of(const Metadata &metadata, const MetadataSet &label) {
    const Bytes text = metadata.item(label, kSpokenLanguage);
    return text[0] == 0 ? text_of_utf16(big_endian(text)) : fixed_text(text, 0, text.size());
}

std::string group_name(const Metadata &metadata, const MetadataSet &group) {
    std::string name = label_name(kGroups, metadata.item(group, kDictionaryId));
    if (!name.empty()) return name;
    const std::string symbol = symbol_of(metadata, group);
    const auto known = std::ranges::find(kSymbols, symbol, &std::pair<std::string_view, const char *>::first);
    return known == std::end(kSymbols) ? symbol : known->second;
}

// "L R C LFE Ls Rs", in the order of the channels.
std::string channel_names(const Metadata &metadata, const MetadataSet &d) {
    std::vector<std::pair<uint32_t, std::string>> channels;
    for (const MetadataSet *label : labels_of(metadata, d, SetKind::channel_label)) {
        std::string symbol = symbol_of(metadata, *label);
        if (symbol.starts_with("ch") && symbol.size() > 2) symbol.erase(0, 2);
        if (!symbol.empty()) channels.emplace_back(big32(metadata.item(*label, kChannel)), std::move(symbol));
    }
    std::ranges::stable_sort(channels, {}, &std::pair<uint32_t, std::string>::first);
    std::string names;
    for (const auto &[number, symbol] : channels) names += (names.empty() ? "" : " ") + symbol;
    return names;
}

std::string layout_of(const Metadata &metadata, const MetadataSet &d) {
    std::string layout;
    for (const MetadataSet *group : labels_of(metadata, d, SetKind::soundfield_group)) {
        const std::string name = group_name(metadata, *group);
        if (!name.empty()) layout += (layout.empty() ? "" : " + ") + name;
    }
    if (layout.empty()) layout = channel_names(metadata, d);
    return layout.empty() ? label_name(kConfigurations, metadata.item(d, kAssignment)) : layout;
}

}  // namespace

bool is_sound(const MetadataSet &d) {
    switch (d.kind) {
        case SetKind::generic_sound:
        case SetKind::aes3:
        case SetKind::wave:
        case SetKind::mpeg_audio:
        case SetKind::immersive_audio: return true;
        default: return false;
    }
}

Sound sound_of(const Metadata &metadata, const MetadataSet &d) {
    Sound sound;
    sound.channels = static_cast<uint32_t>(std::clamp<int64_t>(Metadata::number(d, 0x3D07, 0), 0, 1024));
    sound.rate = Metadata::ratio(d, 0x3D03);
    sound.codec = label_name(kSoundCodings, Metadata::item(d, 0x3D06));
    if (sound.codec.empty()) sound.codec = label_name(kSoundCodings, Metadata::item(d, 0x3004));
    if (sound.codec.empty() && (d.kind == SetKind::aes3 || d.kind == SetKind::wave)) sound.codec = "PCM";
    if (d.kind == SetKind::immersive_audio) sound.codec = "IAB";
    if (sound.codec == "PCM")
        sound.bits = static_cast<uint32_t>(std::clamp<int64_t>(Metadata::number(d, 0x3D01, 0), 0, 64));
    sound.layout = layout_of(metadata, d);
    for (const MetadataSet *label : metadata.sub_descriptors(d)) {
        if (is_label(*label) && sound.language.empty()) sound.language = language_of(metadata, *label);
    }
    return sound;
}

std::string sound_content(const Metadata &metadata, const MetadataSet &d) {
    std::vector<std::string> kinds;
    for (const MetadataSet *label : metadata.sub_descriptors(d)) {
        if (!is_label(*label)) continue;
        for (const std::string_view item : {kContentKind, kElementKind, kContent}) {
            std::string kind = text_of_utf16(big_endian(metadata.item(*label, item)));
            if (!kind.empty() && std::ranges::count(kinds, kind) == 0) kinds.push_back(std::move(kind));
        }
    }
    std::string content;
    for (const std::string &kind : kinds) content += (content.empty() ? "" : ", ") + kind;
    return content;
}
