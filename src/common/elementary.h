// Headers of elementary streams, which several containers carry: what they say of a picture or sound.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "common/bytes.h"
#include "common/facts.h"

// Bits of a window, most significant first; zeros behind its end.
class BitReader {
 public:
    explicit BitReader(Bytes bytes) : bytes_(bytes) {}
    uint32_t get(unsigned n);  // 0 to 32 bits
    bool flag() { return get(1) != 0; }
    void skip(uint64_t n) { position_ += n; }
    uint32_t ue();  // Exp-Golomb codes (ITU-T H.264, 9.1)
    void skip_codes(int n) {
        while (n-- > 0) ue();
    }
    int32_t se();
    uint64_t position() const { return position_; }
    bool is_over() const { return position_ > 8 * bytes_.size(); }

 private:
    Bytes bytes_;
    uint64_t position_ = 0;
};

// Where the pictures of H.264 tell what their fields are.
struct AvcFields {
    int timing = -1;            // bits of a picture timing message before the picture's structure; -1: none
    unsigned frame_number = 0;  // bits of a slice's frame number, where no macroblock may have fields
};

// The sequence parameter set of H.264 and HEVC, from its NAL unit header on: sizes, bits, chroma, scan, pixel
// aspect, colours and rate where they are told, and what pictures tell of their fields. False, and nothing is
// set, for a damaged or a cut one.
bool h264_sequence(Bytes nal, Picture &picture, AvcFields &fields);
bool hevc_sequence(Bytes nal, Picture &picture, bool &has_structures);

// "4:2:0" by chroma_format_idc of MPEG-2, H.264 and HEVC; "Y" for 0.
const char *chroma_format(uint32_t code);
// Sample aspect ratios of H.273, table 5; not set for a code that says none.
Ratio sample_aspect(uint32_t code);
// A code of H.273, or -1 for the one that says nothing.
inline int colour_code(uint32_t code) { return code == 2 ? -1 : static_cast<int>(code); }

// The sequence header of MPEG-1 and MPEG-2 video from its start code on, with the extensions behind it; the
// first picture's coding extension tells the scan.
bool mpeg_sequence(Bytes stream, Picture &picture);

// The frame headers of ProRes (from the frame's size on; SMPTE RDD 36), VC-3, JPEG and DV (by the codec).
bool prores_frame(Bytes frame, Picture &picture);
bool vc3_frame(Bytes frame, Picture &picture);
bool jpeg_frame(Bytes frame, Picture &picture);
bool dv_frame(Bytes frame, Picture &picture);
// What the main header of a JPEG 2000 codestream tells of its picture: the codec by the wavelet, and sizes,
// bits and components where they are not set yet. False where no codestream begins.
bool codestream_picture(Bytes codestream, Picture &picture);
// What EXIF tells (CIPA DC-008), from its byte order on: camera, writer, date, orientation, colours.
void exif_facts(Bytes exif, Facts &facts);
// Chroma by the three components of a JPEG frame header (ITU-T T.81, B.2.2).
std::string jpeg_chroma(Bytes components);
// Samples a line that DVCPRO HD has of 1280 or 1920 (SMPTE ST 370).
uint32_t dv_hd_columns(uint32_t height, Ratio rate);

// The volume that a picture was mastered for, and its light: of messages of H.264 and HEVC, and of the boxes
// "mdcv" and "clli". Empty for what is too short.
std::string mastering_volume(Bytes volume);
std::string content_light(Bytes light);

// Pictures of units with parameters and messages among them, by what a container keeps for the decoder (avcC,
// hvcC, av1C) and by a sample or the head of a stream.
bool avc_picture(Bytes data, Bytes setup, Picture &picture);
bool hevc_picture(Bytes data, Bytes setup, Picture &picture);
bool av1_picture(Bytes data, Bytes record, Picture &picture);

// What a colour type of PNG stands for: "RGBA"; empty for none.
const char *png_components(uint8_t type);
// What a stream itself says of a picture, where its container does not know better.
void take_stream(const Picture &stream, Picture &picture);
// The same from the first bytes of the stream, or from what a container keeps for its decoder (avcC, hvcC,
// the bytes behind an AVI's format), by the picture's codec. False where they say nothing.
bool stream_picture(Bytes data, Picture &picture, Bytes setup = {});

// The AudioSpecificConfig (ISO 14496-3), the first frame header of ADTS, of AC-3 and E-AC-3, of DTS and
// TrueHD.
bool aac_configuration(Bytes config, Sound &sound);
bool adts_frame(Bytes frame, Sound &sound);
bool ac3_frame(Bytes frame, Sound &sound);
bool dts_frame(Bytes frame, Sound &sound);
bool dv_sound(Bytes frame, Sound &sound);  // by the audio source pack of a frame of DV
bool truehd_frame(Bytes frame, Sound &sound);
bool truehd_format(uint32_t format, Sound &sound);  // what of such a header is about channels and rate

// A frame of MPEG audio (ISO 11172-3, 13818-3, "2.5"); `bytes` is 0 for what is none.
struct MpegAudioFrame {
    unsigned layer = 0;
    bool is_version_1 = false;
    uint32_t channels = 0;
    bool is_dual = false;  // the channels are two programs
    uint32_t rate = 0;
    uint32_t bit_rate = 0;
    uint32_t samples = 0;
    uint32_t bytes = 0;
};
MpegAudioFrame mpeg_audio_frame(Bytes frame);
void set_sound(const MpegAudioFrame &frame, Sound &sound);

// Audio coding modes of AC-3 (ATSC A/52, table 5.8) as layout and channels, its bit rates by their codes or
// -1.
int64_t ac3_bit_rate(uint32_t code);
void set_ac3_mode(uint32_t mode, bool lfe, Sound &sound);
// The layout of a mask of loudspeakers in the order of WAVE: "stereo", "5.1", "L R Ts", ... Empty where that
// has not as many as there are channels.
std::string speaker_layout(uint64_t mask, uint32_t channels);
// By the number of channels of FLAC (RFC 9639, 9.1.3), and of Opus by the families 0 and 1 (RFC 7845, 5.1.1).
const char *counted_layout(uint32_t channels);
// By a channel configuration of ISO 23091-3, which those of AAC are; empty for one without a name.
std::string configured_layout(uint32_t configuration);

// What the first frame of a stream of sound, or what a container keeps for its decoder (that of AAC,
// STREAMINFO of FLAC), says, by the sound's codec. False where they say nothing; true for a codec without
// such.
bool stream_sound(Bytes data, Sound &sound, Bytes setup = {});
bool flac_information(Bytes information, Sound &sound);

// A NAL unit without its header and its emulation prevention bytes, as far as a parameter set can reach.
std::string raw_payload(Bytes nal, uint64_t header);
// The offset of the first 00 00 01 with a code behind it, from an offset on; the size where there is none.
uint64_t start_code(Bytes stream, uint64_t from = 0);
