// Picture codecs by the four characters that movies and AVI have for them.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

// How the data of a codec are judged where they hold zeros, and what of them tells more.
enum class CodecKind : uint8_t { coded, dense, raw, avc, hevc, mpeg4, mpeg2, prores, vc3, jpeg, vpx, av1 };

struct PictureCodec {
    std::string_view types;  // of four characters each
    const char *codec = "";
    const char *components = "";
    uint32_t bits = 0;
    CodecKind kind = CodecKind::coded;
};

// By the type as it is, or else by its letters in any case (writers of AVI do not agree on one). One without
// a name is unknown.
PictureCodec picture_codec(uint32_t type);
// The printable characters of a type, without blanks at its end.
std::string type_text(uint32_t type);
