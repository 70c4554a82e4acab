#include <algorithm>

#include "common/utf16.h"
#include "mxf/facts_metadata.h"

namespace {

using namespace std::string_view_literals;

constexpr LabelName kSounds[] = {{"\1", "", "PCM"},          {"\2\3\1\1", "", "A-law"},
                                 {"\2\3\2\1", "", "AC-3"},   {"\2\3\2\4", "", "MP1"},
                                 {"\2\3\2", "\5\6", "MP2"},  {"\2\3\2\x1C", "", "Dolby E"},
                                 {"\2\3", "\3\4", "AAC"},    {"\2\4\1\1", "", "MP1"},
                                 {"\2\4\1\2", "", "MP2"},    {"\2\4\1\3", "", "MP3"},
                                 {"\2\4\2\1", "", "MP1"},    {"\2\4\2\2", "", "MP2"},
                                 {"\2\4\2\3", "", "MP3"},    {"\2\4\3\2", "", "HE-AAC"},
                                 {"\2\4\4\2", "", "HE-AAC"}, {"\2\4\4\3", "", "HE-AAC v2"},
                                 {"\2\4", "\3\4", "AAC"}};

constexpr LabelName kSoundContainers[] = {{"", "\1\6", "PCM"},
                                          {"\xA", "", "A-law"},
                                          {"", "\x16\x17\x18", "AAC"},
                                          {"\x1D", "", "IAB"},
                                          {"\x25", "", "MGA"}};

// Sound-field groups (ST 377-4, ST 2067-8, ST 377-42).
constexpr LabelName kGroups[] = {
    {"\1", "", "5.1"},
    {"\2", "", "7.1"},
    {"\3", "", "7.1 SDS"},
    {"\4", "", "6.1"},
    {"\5", "", "mono"},
    {"\x20\1", "", "stereo"},
    {"\x20\2", "", "dual mono"},
    {"\x20\3", "", "discrete"},
    {"\x20\4", "", "3.0"},
    {"\x20\5", "", "4.0"},
    {"\x20\6", "", "5.0"},
    {"\x20\7", "", "6.0"},
    {"\x20\x8", "", "7.0"},
    {"\x20\x9", "", "Lt Rt"},
    {"\x20\xA", "", "5.1 EX"},
    {"\x20\xB", "", "hearing accessibility"},
    {"\x20\xC", "", "visual accessibility"},
    {"\x21", "", "IAB"},
    {"\x22", "", "MGA"},
    {"\x30\1\1", "", "6.0 height"},
    {"\x30\1\2", "", "8.0 height"},
    {"\x30\1\3", "", "9.1 overhead"},
    {"\x30\1\4", "", "9.1 height"},
    {"\x30\1\5", "", "10.1 height"},
    {"\x30\1\6", "", "11.1 height"},
    {"\x30\1\7", "", "13.1 height"},
    {"\x30\1\x8", "", "15.1 height"},
    {"\x30\1\x9", "", "12.0 center height"},
    {"\x30\1\xA", "", "12.1 center height"},
    {"\x30\1\xB", "", "6.0 center height"},
    {"\x30\1\xC", "", "6.1 center height"},
    {"\x30\1\xD", "", "22.2"},
};

// The same by the symbols of labels without a known identifier.
constexpr std::pair<std::string_view, const char *> kSymbols[] = {
    {"sgM", "mono"}, {"sg1", "mono"}, {"sgST", "stereo"},   {"sgLtRt", "Lt Rt"}, {"sg51", "5.1"},
    {"sg61", "6.1"}, {"sg71", "7.1"}, {"sgSDS", "7.1 SDS"}, {"sg71DS", "7.1"},   {"sgDM", "dual mono"}};

// Channel configurations of ST 429-2.
constexpr LabelName kConfigurations[] = {
    {"\1", "", "5.1"},
    {"\2", "", "6.1"},
    {"\3", "", "7.1 SDS"},
    {"\5", "", "7.1"},
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
    std::string name = name_behind(metadata.item(group, kDictionaryId), "\xD\3\2\2"sv, kGroups);
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
    for (const auto &[number, symbol] : channels) append(names, symbol, " ");
    return names;
}

std::string layout_of(const Metadata &metadata, const MetadataSet &d) {
    std::string layout;
    for (const MetadataSet *group : labels_of(metadata, d, SetKind::soundfield_group)) {
        const std::string name = group_name(metadata, *group);
        append(layout, name, " + ");
    }
    if (layout.empty()) layout = channel_names(metadata, d);
    return layout.empty() ? name_behind(metadata.item(d, kAssignment), "\4\2\2\x10\3\1"sv, kConfigurations)
                          : layout;
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
    sound.channels = d.number_below(0x3D07, 1024);
    sound.rate = d.ratio(0x3D03);
    sound.codec = name_behind(d.item(0x3D06), "\4\2\2"sv, kSounds);
    if (sound.codec.empty()) sound.codec = name_behind(d.item(0x3004), kContainer, kSoundContainers);
    if (sound.codec.empty() && (d.kind == SetKind::aes3 || d.kind == SetKind::wave)) sound.codec = "PCM";
    if (d.kind == SetKind::immersive_audio) sound.codec = "IAB";
    if (sound.codec == "PCM") sound.bits = d.number_below(0x3D01, 64);
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
    for (const std::string &kind : kinds) append(content, kind);
    return content;
}
