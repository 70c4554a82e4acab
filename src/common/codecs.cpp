#include "common/codecs.h"

#include <algorithm>

#include "common/names.h"
#include "common/values.h"

namespace {

using namespace std::string_view_literals;

// clang-format off
constexpr PictureCodec kPictureCodecs[] = {
    {"apch", "ProRes 422 HQ", "4:2:2", 10, CodecKind::prores},
    {"apcn", "ProRes 422", "4:2:2", 10, CodecKind::prores},
    {"apcs", "ProRes 422 LT", "4:2:2", 10, CodecKind::prores},
    {"apco", "ProRes 422 Proxy", "4:2:2", 10, CodecKind::prores},
    {"ap4h", "ProRes 4444", "4:4:4", 12, CodecKind::prores},
    {"ap4x", "ProRes 4444 XQ", "4:4:4", 12, CodecKind::prores},
    {"aprn", "ProRes RAW", "Bayer", 0},
    {"aprh", "ProRes RAW HQ", "Bayer", 0},
    {"avc1avc2avc3avc4dva1dvavH264X264DAVCVSSH", "H.264", "", 0, CodecKind::avc},
    {"hvc1hev1dvh1dvheHEVCH265", "HEVC", "", 0, CodecKind::hevc},
    {"av01", "AV1", "", 0, CodecKind::av1},
    {"vp08VP80", "VP8", "4:2:0", 8, CodecKind::dense},
    {"vp09VP90", "VP9", "", 0, CodecKind::vpx},
    {"vvc1", "VVC", "", 0, CodecKind::dense},
    {"mp4vXVIDDIVXDX50FMP4M4S2DIV3MP43", "MPEG-4", "4:2:0", 8, CodecKind::mpeg4},
    {"s263h263", "H.263", "4:2:0", 8},
    {"SVQ1", "Sorenson Video", "", 0},
    {"SVQ3", "Sorenson Video 3", "4:2:0", 8},
    {"cvid", "Cinepak", "", 0},
    {"MSVCCRAMWHAM", "Microsoft Video 1", "", 0},
    {"CFHD", "CineForm", "", 0},
    {"AVdn", "DNxHD", "4:2:2", 8, CodecKind::vc3},
    {"AVdh", "DNxHR", "4:2:2", 0, CodecKind::vc3},
    {"Hap1", "Hap", "RGB", 8},
    {"Hap5", "Hap Alpha", "RGBA", 8},
    {"HapY", "Hap Q", "YCoCg", 8},
    {"HapM", "Hap Q Alpha", "YCoCgA", 8},
    {"HapA", "Hap Alpha-Only", "Y", 8},
    {"Hap7", "Hap R", "RGBA", 8},
    {"HapH", "Hap HDR", "RGB", 16},
    {"icod", "Apple Intermediate Codec", "4:2:0", 8},
    {"rle ", "Animation", "", 0},
    {"png MPNG", "PNG", "", 0},
    {"tiff", "TIFF", "", 0},
    {"jpegmjpaAVDJAVRndmb1MJPGIJPGLJPG", "Motion JPEG", "", 8, CodecKind::jpeg},
    {"mjpb", "Motion JPEG", "", 8},
    {"mjp2AVj2MJ2CLJ2K", "JPEG 2000", "", 0},
    {"jxsm", "JPEG XS", "", 0},
    {"apv1", "APV", "", 0},
    {"drac", "Dirac", "", 0},
    {"vc-1WVC1", "VC-1", "4:2:0", 8},
    {"FFV1", "FFV1", "", 0, CodecKind::dense},
    {"HFYUFFVH", "HuffYUV", "", 0},
    {"LAGS", "Lagarith", "", 0},
    {"ULRG", "Ut Video", "RGB", 8},
    {"ULRA", "Ut Video", "RGBA", 8},
    {"ULY0ULH0", "Ut Video", "4:2:0", 8},
    {"ULY2ULH2", "Ut Video", "4:2:2", 8},
    {"ULY4ULH4", "Ut Video", "4:4:4", 8},
    {"UQY2", "Ut Video", "4:2:2", 10},
    {"UQRG", "Ut Video", "RGB", 10},
    {"UQRA", "Ut Video", "RGBA", 10},
    {"M8RG", "MagicYUV", "RGB", 8},
    {"M8RA", "MagicYUV", "RGBA", 8},
    {"M8Y0", "MagicYUV", "4:2:0", 8},
    {"M8Y2", "MagicYUV", "4:2:2", 8},
    {"M8Y4", "MagicYUV", "4:4:4", 8},
    {"M8YA", "MagicYUV", "4:4:4:4", 8},
    {"M8G0", "MagicYUV", "Y", 8},
    {"WMV1", "WMV1", "4:2:0", 8},
    {"WMV2", "WMV2", "4:2:0", 8},
    {"WMV3", "WMV3", "4:2:0", 8},
    {"dvc ", "DV", "4:1:1", 8},
    {"dvcp", "DV", "4:2:0", 8},
    {"dvppdvpndvp ", "DVCPRO", "4:1:1", 8},
    {"dv5ndv5pdv50", "DVCPRO50", "4:2:2", 8},
    {"dvh2dvh3dvh4dvh5dvh6dvhpdvhqdvhddvh1dv1n", "DVCPRO HD", "4:2:2", 8},
    {"AVdvAVd1dvsddv25dvcsdcvcdvpacdvcdvis", "DV", "", 8},
    {"m2v1mp2vmpg2em2vmmes", "MPEG-2", "", 8, CodecKind::mpeg2},
    {"m1v m1v1mp1vmpegmpg1", "MPEG-1", "4:2:0", 8, CodecKind::mpeg2},
    {"v210", "uncompressed", "4:2:2", 10, CodecKind::raw},
    {"v216", "uncompressed", "4:2:2", 16, CodecKind::raw},
    {"v410", "uncompressed", "4:4:4", 10, CodecKind::raw},
    {"v408r408", "uncompressed", "4:4:4:4", 8, CodecKind::raw},
    {"r4fl", "uncompressed", "4:4:4:4", 32, CodecKind::raw},
    {"AYUV", "uncompressed", "4:4:4:4", 8, CodecKind::raw},
    {"Y42B", "uncompressed", "4:2:2", 8, CodecKind::raw},
    {"Y41PY411", "uncompressed", "4:1:1", 8, CodecKind::raw},
    {"v308", "uncompressed", "4:4:4", 8, CodecKind::raw},
    {"2vuy2VuyUYVYAV1xAVupAVUIyuvsyuv2YUY2YUYVHDYCyunv", "uncompressed", "4:2:2", 8, CodecKind::raw},
    {"y420I420yv12IYUV", "uncompressed", "4:2:0", 8, CodecKind::raw},
    {"raw ", "uncompressed", "", 0, CodecKind::raw},
    {"Y800GREY", "uncompressed", "Y", 8, CodecKind::raw},
    {"b16g", "uncompressed", "Y", 16, CodecKind::raw},
    {"b48r", "uncompressed", "RGB", 16, CodecKind::raw},
    {"b64a", "uncompressed", "RGBA", 16, CodecKind::raw},
    {"b32a", "uncompressed", "YA", 16, CodecKind::raw},
    {"r210R10kR10gAVrp", "uncompressed", "RGB", 10, CodecKind::raw},
    {"BGRARGBAABGR", "uncompressed", "RGBA", 8, CodecKind::raw},
    // Families whose last character tells a size and a rate.
    {"ai1*", "AVC-Intra 100", "4:2:2", 10, CodecKind::avc},
    {"ai5*", "AVC-Intra 50", "4:2:0", 10, CodecKind::avc},
    {"mx5*", "IMX 50", "4:2:2", 8, CodecKind::mpeg2},
    {"mx4*", "IMX 40", "4:2:2", 8, CodecKind::mpeg2},
    {"mx3*", "IMX 30", "4:2:2", 8, CodecKind::mpeg2},
    {"xd5*", "XDCAM HD422", "4:2:2", 8, CodecKind::mpeg2},
    {"xdv*xdh*", "XDCAM HD", "4:2:0", 8, CodecKind::mpeg2},
    {"hdv*", "HDV", "4:2:0", 8, CodecKind::mpeg2},
};
// clang-format on

constexpr SoundCodec kSoundCodecs[] = {{"sowttwosraw NONElpcmipcm"sv, "PCM"},
                                       {"in24"sv, "PCM", 24},
                                       {"in32"sv, "PCM", 32},
                                       {"fpcm"sv, "PCM float"},
                                       {"fl32FL32"sv, "PCM float", 32},
                                       {"fl64FL64"sv, "PCM float", 64},
                                       {"ulawULAW"sv, "mu-law", 8},
                                       {"alawALAW"sv, "A-law", 8},
                                       {"ima4"sv, "IMA ADPCM", 4},
                                       {"MAC3"sv, "MACE 3:1"},
                                       {"MAC6"sv, "MACE 6:1"},
                                       {"QDM2"sv, "QDesign 2"},
                                       {"QDMC"sv, "QDesign"},
                                       {"Qclp"sv, "QCELP"},
                                       {"mp4a"sv, "AAC"},
                                       {".mp3mp3 "sv, "MP3"},
                                       {".mp2"sv, "MP2"},
                                       {"ac-3AC-3sac3"sv, "AC-3"},
                                       {"ec-3"sv, "E-AC-3"},
                                       {"ac-4"sv, "AC-4"},
                                       {"Opus"sv, "Opus"},
                                       {"alac"sv, "ALAC"},
                                       {"fLaC"sv, "FLAC"},
                                       {"dtscdtshdtsldtse"sv, "DTS"},
                                       {"mlpa"sv, "TrueHD"},
                                       {"samr"sv, "AMR-NB"},
                                       {"sawb"sv, "AMR-WB"},
                                       {"mha1mhm1"sv, "MPEG-H"},
                                       {"GSM agsm"sv, "GSM"},
                                       {"nmos"sv, "Nellymoser"},
                                       {"sdx2"sv, "SDX2"}};

// Of an identifier that is none of a number (KSDATAFORMAT_SUBTYPE, MEDIASUBTYPE) its first field.
constexpr CodeName kWaveCodecs[] = {
    {1, "PCM"},        {2, "MS ADPCM"},        {3, "PCM float"},      {6, "A-law"},
    {7, "mu-law"},     {0x11, "IMA ADPCM"},    {0x20, "ADPCM"},       {0x31, "GSM"},
    {0x42, "G.723.1"}, {0x45, "G.726 ADPCM"},  {0x64, "G.726 ADPCM"}, {0x50, "MP2"},
    {0x55, "MP3"},     {0xFF, "AAC"},          {0x160, "WMA"},        {0x161, "WMA"},
    {0x162, "WMA"},    {0x566F, "Vorbis"},     {0x706D, "AAC"},       {0x1600, "AAC"},
    {0x1610, "AAC"},   {0x2000, "AC-3"},       {0x2001, "DTS"},       {0xF1AC, "FLAC"},
    {0x704F, "Opus"},  {0xA7FB87AF, "E-AC-3"}, {0xE06D802C, "AC-3"},  {0xE06D802B, "MP2"},
};

char lower(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c; }

// A row by one of its types; each character may be any where the row has "*".
template <typename Row, size_t N>
const Row *listed(const Row (&rows)[N], std::string_view name, bool in_any_case) {
    const auto is_same = [&](char listed, char c) {
        return listed == c || listed == '*' || (in_any_case && lower(listed) == lower(c));
    };
    for (const Row &row : rows) {
        for (size_t i = 0; i < row.types.size(); i += name.size()) {
            if (std::ranges::equal(row.types.substr(i, name.size()), name, is_same)) return &row;
        }
    }
    return nullptr;
}

}  // namespace

std::string type_characters(uint32_t type) {
    std::string text;
    for (int shift = 24; shift >= 0; shift -= 8) text += static_cast<char>(type >> shift & 0xFF);
    return text;
}

PictureCodec picture_codec(uint32_t type) {
    const std::string name = type_characters(type);
    const PictureCodec *found = listed(kPictureCodecs, name, false);
    if (!found) found = listed(kPictureCodecs, name, true);
    return found ? *found : PictureCodec{};
}

SoundCodec sound_codec(uint32_t type) {
    const SoundCodec *found = listed(kSoundCodecs, type_characters(type), false);
    if (found || type >> 16 != 0x6D73) return found ? *found : SoundCodec{};
    const std::string_view name = wave_codec(type & 0xFFFF);
    return {{}, name.data(), name.ends_with("ADPCM") ? 4U : 0U};
}

const char *wave_codec(uint32_t tag) { return name_of(kWaveCodecs, tag); }

std::string type_text(uint32_t type) {
    std::string text = type_characters(type);
    std::erase_if(text, [](char c) { return !is_printable(static_cast<uint8_t>(c)); });
    return text.substr(0, text.find_last_not_of(' ') + 1);
}
