#include "dpx/rp215.h"

#include <cmath>
#include <span>

#include "common/field_rows.h"
#include "common/hexrow.h"
#include "common/print.h"
#include "common/stream.h"
#include "common/values.h"

namespace {

constexpr uint32_t kCrcSize = 2;

// Offsets count from the packet's type byte.
// clang-format off
constexpr FieldRow kTemporalRows[] = {
    {2, Field::hex8, " videotc      ", 4, {":"}},
    {6, Field::hex32_dec, " videoub      "},
    {10, Field::hex8, " audiotc      ", 4, {":"}},
    {14, Field::hex32_dec, " audioub      "},
    {18, Field::hex8, " audiophase   "},
    {19, Field::hex8, " kkmfg        "},
    {20, Field::hex8, " kkemulsion   "},
    {21, Field::hex64, " kk           "},
    {29, Field::hex32, " inkprefix    "},
    {33, Field::hex8, " ink          ", 3, {""}},
    {36, Field::hex8, " pulldown     "},
    {37, Field::hex8, " sequence     "},
    {38, Field::hex32_dec, " absframes    "},
    {42, Field::hex8, " videoformat  "},
    {43, Field::hex8, " audiomod     "},
    {44, Field::hex8, " filmformat   "},
    {45, Field::hex8, " filmrate     "},
};

constexpr FieldRow kShortTemporalRows[] = {
    {2, Field::hex8, " videotc      ", 4, {":"}},
    {6, Field::hex32_dec, " videoub      "},
    {10, Field::hex8, " audiotc      ", 4, {":"}},
    {14, Field::hex32_dec, " audioub      "},
    {18, Field::hex8, " audiophase   "},
    {19, Field::hex8, " audiomod     "},
};

constexpr FieldRow kMaterialRows[] = {
    {2, Field::hex32, " tags         "},
    {6, Field::hex8, " flags        ", 3, {""}},
    {9, Field::padded_text, " equipid      ", 4},
    {13, Field::hex32, " proddate     "},
    {17, Field::padded_text, " dailyroll    ", 8},
    {25, Field::padded_text, " camroll      ", 8},
    {33, Field::padded_text, " soundroll    ", 8},
    {41, Field::padded_text, " labroll      ", 8},
    {49, Field::padded_text, " scene        ", 8},
    {57, Field::padded_text, " take         ", 4},
    {61, Field::padded_text, " slate        ", 8},
};

constexpr FieldRow kShortMaterialRows[] = {
    {2, Field::hex32, " tags         "},
    {6, Field::hex16, " syncmark     "},
    {8, Field::hex32, " proddate     "},
    {12, Field::padded_text, " camroll      ", 8},
    {20, Field::padded_text, " soundroll    ", 8},
    {28, Field::padded_text, " scene        ", 8},
    {36, Field::padded_text, " take         ", 4},
    {40, Field::padded_text, " slate        ", 8},
};

constexpr FieldRow kLabelRows[] = {
    {2, Field::padded_text, " vtroll       ", 8},
    {10, Field::padded_text, " title        ", 20},
    {30, Field::padded_text, " episode      ", 8},
    {38, Field::padded_text, " facility     ", 20},
    {58, Field::padded_text, " misc         ", 40},
};

constexpr FieldRow kShortLabelRows[] = {
    {2, Field::padded_text, " title        ", 20},
    {22, Field::padded_text, " episode      ", 8},
    {30, Field::padded_text, " crewid       ", 4},
    {34, Field::padded_text, " operatorid   ", 4},
    {38, Field::padded_text, " directorid   ", 4},
    {42, Field::padded_text, " producerid   ", 4},
};

constexpr FieldRow kCameraRows[] = {
    {2, Field::hex16, " modelcode    "},
    {4, Field::hex32, " serialnumber "},
    {8, Field::hex32_slash, " framenumber  "},
    {12, Field::hex8_slash, " cameraformat "},
    {13, Field::hex8_slash, " stepshutter  "},
    {14, Field::hex8_slash, " mastergain   "},
    {15, Field::hex8_slash, " ndfilter     "},
    {16, Field::hex8_slash, " ccfilter     "},
    {17, Field::hex8_slash, " gamma        "},
    {18, Field::hex8_slash, " presetmatrix "},
    {19, Field::hex8_slash, " gammatable   "},
    {20, Field::hex8_slash, " gammastd     "},
    {21, Field::hex8_slash, " gammauser    "},
    {22, Field::hex8_slash, " lfeframerate "},
    {23, Field::hex8_slash, " switch1      "},
    {24, Field::hex8_slash, " switch2      "},
    {25, Field::hex16, " whitegain_r  "},
    {27, Field::hex16, " whitegain_g  "},
    {29, Field::hex16, " whitegain_b  "},
    {31, Field::hex16, " gammablack   "},
    {33, Field::hex16, " masterkneept "},
    {35, Field::hex16, " masterkneesl "},
    {37, Field::hex16, " mastergamma  "},
    {39, Field::hex16, " detaillevel  "},
    {41, Field::hex16, " blackmaster  "},
    {43, Field::hex16, " blackgain_r  "},
    {45, Field::hex16, " blackgain_g  "},
    {47, Field::hex16, " blackgain_b  "},
};

constexpr FieldRow kLensRows[] = {
    {2, Field::hex32, " lensid       "},
};
// clang-format on

// As data the packets stand in what they are packets of.
constexpr uint32_t kDeeper = 2;

void print_packet(const char *title, Bytes packet, std::span<const FieldRow> rows) {
    print("%s\n", own(title));
    print_field_rows(big_endian(packet), rows, kDeeper);
}

// Begins a line of n bytes of a packet with its label.
void print_label(const char *label, Bytes packet, uint64_t at, uint64_t n) {
    from(packet, at, n);
    behind_position(kDeeper);
    print_own(label);
}

// An angle: the full range of 16 bits is two half turns.
void print_angle(const char *label, Bytes packet, uint64_t at) {
    print_label(label, packet, at, 2);
    print("%04x/%06.2f\n", big16(packet, at), big16(packet, at) * 180.0 / 32767);
}

void print_dolly(Bytes packet) {
    const Bytes p = packet;
    print("DOLLY\n");
    print_field_rows(big_endian(p), kLensRows, kDeeper);
    print_label(" focallength  ", p, 6, 2);
    print("%04x/%1.1fmm\n", big16(p, 6), rpfloat16(p.from(6)) * 1000);
    print_label(" focalpos     ", p, 8, 2);
    print("%04x/%1.1fm\n", big16(p, 8), rpfloat16(p.from(8)));
    print_label(" iris         ", p, 10, 2);
    print("%04x/F%1.1f\n", big16(p, 10), std::pow(2.0, 8 * (1 - big16(p, 10) / 65536.0)));
    print_label(" camheight    ", p, 12, 4);
    print("%08x/%06.2fm\n", big32(p, 12), static_cast<double>(float_of_bits(little32(p, 12))));
    print_angle(" camtilt      ", p, 16);
    print_angle(" camroll      ", p, 18);
    print_angle(" campan       ", p, 20);
}

void print_user(Bytes packet, uint32_t size) {
    print("USER\n");
    // The rows show zeros for what a cut block lacks.
    uint8_t data[255] = {};
    const Bytes held = packet.sub(2, size);
    for (uint64_t i = 0; i < held.size(); i++) data[i] = held[i];
    LineBuffer out;
    put_hexrows(out, held.size() == size ? held : Bytes(data, size), {.gap = " ", .filler = ' '},
                [](LineBuffer &line, uint64_t i) {
                    line.literal(" ");
                    line.hex(i, 3);
                    line.literal(" ");
                });
}

void print_packet(Bytes packet) {
    const uint32_t type = packet[0];
    const uint32_t size = packet[1];
    from(packet, 0, 2);
    behind_position(kDeeper);
    print("%02x/%d-", type, size);
    label_begins();
    switch (type) {
        case 0x10: print_packet("TEMPORAL", packet, kTemporalRows); break;
        case 0x11:
        case 0x12: print_packet("TEMPORAL", packet, kShortTemporalRows); break;
        case 0x20: print_packet("MATERIAL", packet, kMaterialRows); break;
        case 0x21: print_packet("MATERIAL", packet, kShortMaterialRows); break;
        case 0x30: print_packet("LABEL", packet, kLabelRows); break;
        case 0x31: print_packet("LABEL", packet, kShortLabelRows); break;
        case 0x40: print_packet("CAMERA", packet, kCameraRows); break;
        case 0x50: print_dolly(packet); break;
        case 0xF0: print_user(packet, size); break;
        default: print("Unknown %02x\n", type);
    }
}

}  // namespace

double rpfloat16(Bytes bytes) {
    const int exponent = bytes[0] >> 4;
    const int mantissa = (bytes[0] & 0x0F) << 8 | bytes[1];
    return mantissa * std::pow(10.0, exponent < 8 ? exponent : exponent - 16);
}

uint32_t rp215_crc(Bytes block, uint32_t length) {
    uint32_t crc = 0;
    const Bytes data = block.sub(0, length > kCrcSize ? length - kCrcSize : 0);
    for (uint64_t i = 0; i < data.size(); i++) {
        for (int bit = 7; bit >= 0; bit--) {
            const uint32_t carry = crc & 0x8000;
            crc = (crc << 1 | (data[i] >> bit & 1U)) & 0xFFFF;
            if (carry) crc ^= 0x1021;
        }
    }
    return crc;
}

void rp215_dump(Bytes block, uint32_t length, int skip_crc) {
    for (uint64_t position = 0; position + kCrcSize < length && position < block.size();) {
        const Bytes packet = block.from(position);
        const uint32_t size = packet[1];
        print_packet(packet);
        if (size < 1) break;
        position += size + 2;
    }
    if (skip_crc) return;
    const uint32_t computed = rp215_crc(block, length);
    const uint32_t stored = length >= kCrcSize ? big16(block, length - kCrcSize) : block[0];
    if (computed == stored) return;
    print_label("", block, 0, length);
    print("CRC Wrong Calc %04x != %04x\n", computed, stored);
}
