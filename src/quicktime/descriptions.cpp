// Sample descriptions: entries of an "stsd" atom, whose types are data formats.
#include <algorithm>
#include <span>

#include "common/names.h"
#include "common/print.h"
#include "quicktime/fields.h"
#include "quicktime/printers.h"

namespace {

using enum QtField;

constexpr uint64_t kHeader = 8;

// clang-format off
constexpr const char kVideoFormats[][5] = {
    "24BG", "2vuy", {0, 0, 0, 0x20}, {0, 0, 0, 0x18}, "ABGR",
    "ai12", "ai13", "ai15", "ai16", "ai1p", "ai1q", "ai52", "ai53", "ai55", "ai56", "ai5p", "ai5q",
    "ap4h", "apch", "apcn", "apco", "apcs", "AV1x", "avc1", "AVdn", "AVdv", "AVmp", "BGRA", "CFHD",
    "dv5n", "dv5p", "dvc ", "dvcp", "dvh2", "dvh3", "dvh5", "dvh6", "dvhp", "dvhq", "dvpp",
    "hdv1", "hdv2", "hdv3", "hdv4", "hdv5", "hdv6", "hdv7", "hdv8", "hdv9", "hdva", "jpeg", "mpeg",
    "mx3n", "mx3p", "mx4n", "mx4p", "mx5n", "mx5p", "r408", "raw ", "RGBA", "rle ",
    "v210", "v216", "v308", "v408", "v410",
    "xd54", "xd55", "xd59", "xd5a", "xd5b", "xd5c", "xd5d", "xd5e", "xd5f",
    "xdv1", "xdv2", "xdv3", "xdv4", "xdv5", "xdv6", "xdv7", "xdv8", "xdv9", "xdva", "xdvb", "xdvc",
    "xdvd", "xdve", "xdvf", "yuv2", "yuvs", "yuvu", "YVYU",
};
constexpr const char kAudioFormats[][5] = {
    "fl32", "in24", "in32", "lpcm", "mp4a", "ni24", "ni32", "QDM2", "sowt", "twos",
};

constexpr QtRow kVideo[] = {
    {0, u8, "res1[]=", 6},
    {6, u16, "drefindex="},
    {8, u16, "version="},
    {10, u16, "revlevel="},
    {12, fourcc, "vendor="},
    {16, u32, "tempqual="},
    {20, u32, "spatqual="},
    {24, u16, "width="},
    {26, u16, "height="},
    {28, u32, "hres="},
    {32, u32, "vres="},
    {36, u32, "datasize="},
    {40, u16, "framecount="},
    {42, u8, "len="},
    {43, hexdump, "name", 31},
    {74, u16, "depth="},
    {76, u16, "clutid="},
};
constexpr uint64_t kVideoSize = 78;

constexpr QtRow kAudio[] = {
    {0, u8, "res1[]=", 6},
    {6, u16, "drefindex="},
    {8, u16, "version="},
    {10, u16, "revlevel="},
    {12, fourcc, "vendor="},
};
constexpr uint64_t kAudioSize = 28;

constexpr QtRow kSound[] = {
    {16, u16, "nchannels="},
    {18, u16, "samplesize="},
    {20, u16, "comprid="},
    {22, u16, "packsize="},
    {24, fixed, "samplerate="},
};

constexpr QtRow kSoundVersion1[] = {
    {0, u32, "samplesppacket="},
    {4, u32, "bytesppacket="},
    {8, u32, "bytespframe="},
    {12, u32, "bytespsample="},
};
constexpr uint64_t kSoundVersion1Size = 16;

constexpr QtRow kSoundVersion2[] = {
    {16, u16, "always3="},
    {18, u16, "always16="},
    {20, u16, "alwaysMinus2="},
    {22, u16, "always0="},
    {24, u32, "always65536="},
};
constexpr QtRow kLinearAudio[] = {
    {0, u32, "sizeOfStructOnly="},
    {4, real64, "audioSampleRate="},
    {12, u32, "numAudioChannels="},
    {16, d32, "always7F000000="},
    {20, u32, "constBitsPerChannel="},
    {24, u32, "formatSpecificFlags="},
};
constexpr QtRow kPackets[] = {
    {28, u32, "constBytesPerAudioPacket="},
    {32, u32, "constLPCMFramesPerAudioPacket="},
};
constexpr uint64_t kSoundVersion2Size = 36;

constexpr CodeName kFormatFlags[] = {
    {0x1, "kAudioFormatFlagIsFloat"},
    {0x2, "kAudioFormatFlagIsBigEndian"},
    {0x4, "kAudioFormatFlagIsSignedInteger"},
    {0x8, "kAudioFormatFlagIsPacked"},
    {0x10, "kAudioFormatFlagIsAlignedHigh"},
    {0x20, "kAudioFormatFlagIsNonInterleaved"},
    {0x40, "kAudioFormatFlagIsNonMixable"},
    {0x80000000, "kAudioFormatFlagsAreAllClear"},
};

// The same field of another codec, where it is a number.
constexpr CodeName kLosslessFlags[] = {
    {1, "kAppleLosslessFormatFlag_16BitSourceData"},
    {2, "kAppleLosslessFormatFlag_20BitSourceData"},
    {3, "kAppleLosslessFormatFlag_24BitSourceData"},
    {4, "kAppleLosslessFormatFlag_32BitSourceData"},
};

constexpr QtRow kTimecode[] = {
    {0, u8, "reserved[]=", 6},
    {6, u16, "drefindex="},
    {8, u32, "flags="},
    {12, u32, "timecode_flags="},
    {16, u32, "timescale="},
    {20, u32, "frame_duration="},
    {24, u8, "number_of_frames="},
    {25, u8, "reserved[0]="},
};
constexpr QtRow kTimecodePadding[] = {
    {26, u8, "reserved[1]="},
    {27, u8, "reserved[2]="},
};
constexpr uint64_t kTimecodeSize = 26;
constexpr uint64_t kTimecodePaddedSize = 28;

constexpr QtRow kCaptions[] = {
    {0, u8, "res1[]=", 6},
    {6, u16, "drefindex="},
};
constexpr uint64_t kCaptionsSize = 8;
// clang-format on

template <size_t N>
bool is_listed(const char (&formats)[N][5], uint32_t type) {
    return std::ranges::any_of(formats, [type](const char *format) { return qt_type(format) == type; });
}

QtRead print_video(QtAtom &atom) {
    const bool extensions = atom.size > kHeader + kVideoSize;
    const uint64_t count = extensions ? qt_atom_read_more(atom, kVideoSize) : qt_atom_read_data(atom);
    print_qt_rows(atom, kVideo);
    return {count, extensions};
}

void print_format_flags(const QtAtom &atom) {
    const Bytes field = atom.data.sub(24, 4);
    const uint32_t flags = big32(field);
    for (const CodeName &flag : kFormatFlags) {
        if (!(flags & flag.code)) continue;
        from(field, flag.code > UINT8_MAX ? 0 : 3, 1);
        print("%*s\t%s\n", atom.indent(), "", flag.name);
    }
    for (const CodeName &flag : kLosslessFlags) {
        if (flags != flag.code) continue;
        from(field);
        print("%*s\t%s\n", atom.indent(), "", flag.name);
    }
}

void print_linear_audio(const QtAtom &atom) {
    print_qt_rows(atom, kLinearAudio);
    print_format_flags(atom);
    print_qt_rows(atom, kPackets);
}

// The part that the description's version adds to its common fields; the payload bytes read beyond them.
uint64_t print_sound(QtAtom &atom, unsigned version) {
    uint64_t count = 0;
    if (version <= 1) print_qt_rows(atom, kSound);
    if (version == 1) {
        count = qt_atom_read_more(atom, kSoundVersion1Size);
        print_qt_rows(atom, kSoundVersion1);
    }
    if (version == 2) {
        print_qt_rows(atom, kSoundVersion2);
        count = qt_atom_read_more(atom, kSoundVersion2Size);
        print_linear_audio(atom);
    }
    return count;
}

uint64_t audio_size(unsigned version) {
    if (version == 1) return kAudioSize + kSoundVersion1Size;
    if (version == 2) return kAudioSize + kSoundVersion2Size;
    return kAudioSize;
}

// A description shorter than its common fields is passed over. Common fields beyond its end show 0, those of
// its version the bytes that follow in the file.
QtRead print_audio(QtAtom &atom) {
    if (atom.size < kAudioSize) return {qt_atom_read_data(atom)};
    uint64_t count = qt_atom_read_more(atom, kAudioSize);
    atom.data = atom.data.sub(0, atom.payload_size());
    print_qt_rows(atom, kAudio);
    const unsigned version = big16(atom.data, 8);
    count += print_sound(atom, version);
    return {count, atom.size > kHeader + audio_size(version)};
}

QtRead print_timecode(QtAtom &atom) {
    const bool extensions = atom.size > kHeader + kTimecodePaddedSize;
    const uint64_t count = extensions ? qt_atom_read_more(atom, kTimecodeSize) : qt_atom_read_data(atom);
    print_qt_rows(atom, kTimecode);
    if (!extensions) print_qt_rows(atom, kTimecodePadding);
    return {count, extensions};
}

QtRead print_captions(QtAtom &atom) {
    const uint64_t count = qt_atom_read_more(atom, kCaptionsSize);
    print_qt_rows(atom, kCaptions);
    return {count};
}

}  // namespace

std::optional<QtRead> qt_print_description(QtAtom &atom) {
    const uint32_t type = qt_type(atom.type);
    if (is_listed(kVideoFormats, type)) return print_video(atom);
    if (is_listed(kAudioFormats, type)) return print_audio(atom);
    if (type == qt_type("tmcd")) return print_timecode(atom);
    if (type == qt_type("c608") || type == qt_type("c708")) return print_captions(atom);
    return std::nullopt;
}
