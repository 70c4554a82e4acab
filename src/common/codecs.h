// Codecs by the four characters that movies, AVI and AIFF have for them.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

constexpr uint32_t fourcc(const char (&type)[5]) {
    uint32_t code = 0;
    for (int i = 0; i < 4; i++) code = code << 8 | static_cast<uint8_t>(type[i]);
    return code;
}

// How the data of a codec are judged where they hold zeros, and what of them tells more.
enum class CodecKind : uint8_t { coded, dense, raw, avc, hevc, mpeg4, mpeg2, prores, vc3, jpeg, vpx, av1 };

struct PictureCodec {
    std::string_view types;  // of four characters each
    const char *codec = "";
    const char *components = "";
    uint32_t bits = 0;
    CodecKind kind = CodecKind::coded;
};

struct SoundCodec {
    std::string_view types;
    const char *codec = "";
    uint32_t bits = 0;  // 0: as the header says, where it is not compressed
};

// By the type as it is, or else by its letters in any case (writers of AVI do not agree on one). One without
// a name is unknown.
PictureCodec picture_codec(uint32_t type);
SoundCodec sound_codec(uint32_t type);
// By the number that WAVE and AVI have for it, and movies behind "ms"; empty for one that is unknown.
const char *wave_codec(uint32_t tag);
// The four characters of a type; those that are printable, without blanks at its end.
std::string type_characters(uint32_t type);
std::string type_text(uint32_t type);
