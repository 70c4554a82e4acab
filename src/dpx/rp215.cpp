#include "dpx/rp215.h"

#include <algorithm>
#include <cmath>
#include <span>

#include "common/hexrow.h"
#include "common/print.h"
#include "common/values.h"

namespace {

constexpr uint32_t kCrcSize = 2;
constexpr uint32_t kMaxText = 40;

// How the bytes of a field print. Offsets count from the packet's type byte.
enum class Kind {
    hex,         // the bytes as digits
    hex_number,  // and " (%d)" of the 32-bit number
    hex_slash,   // and "/%d" of the number
    time,        // four bytes with colons between them
    text,        // in quotes, filled with blanks
};

struct Row {
    uint8_t offset;
    uint8_t size;
    Kind kind;
    const char *label;
};

// clang-format off
constexpr Row kTemporalRows[] = {
    {2, 4, Kind::time, " videotc      "},
    {6, 4, Kind::hex_number, " videoub      "},
    {10, 4, Kind::time, " audiotc      "},
    {14, 4, Kind::hex_number, " audioub      "},
    {18, 1, Kind::hex, " audiophase   "},
    {19, 1, Kind::hex, " kkmfg        "},
    {20, 1, Kind::hex, " kkemulsion   "},
    {21, 8, Kind::hex, " kk           "},
    {29, 4, Kind::hex, " inkprefix    "},
    {33, 3, Kind::hex, " ink          "},
    {36, 1, Kind::hex, " pulldown     "},
    {37, 1, Kind::hex, " sequence     "},
    {38, 4, Kind::hex_number, " absframes    "},
    {42, 1, Kind::hex, " videoformat  "},
    {43, 1, Kind::hex, " audiomod     "},
    {44, 1, Kind::hex, " filmformat   "},
    {45, 1, Kind::hex, " filmrate     "},
};

constexpr Row kShortTemporalRows[] = {
    {2, 4, Kind::time, " videotc      "},
    {6, 4, Kind::hex_number, " videoub      "},
    {10, 4, Kind::time, " audiotc      "},
    {14, 4, Kind::hex_number, " audioub      "},
    {18, 1, Kind::hex, " audiophase   "},
    {19, 1, Kind::hex, " audiomod     "},
};

constexpr Row kMaterialRows[] = {
    {2, 4, Kind::hex, " tags         "},
    {6, 3, Kind::hex, " flags        "},
    {9, 4, Kind::text, " equipid      "},
    {13, 4, Kind::hex, " proddate     "},
    {17, 8, Kind::text, " dailyroll    "},
    {25, 8, Kind::text, " camroll      "},
    {33, 8, Kind::text, " soundroll    "},
    {41, 8, Kind::text, " labroll      "},
    {49, 8, Kind::text, " scene        "},
    {57, 4, Kind::text, " take         "},
    {61, 8, Kind::text, " slate        "},
};

constexpr Row kShortMaterialRows[] = {
    {2, 4, Kind::hex, " tags         "},
    {6, 2, Kind::hex, " syncmark     "},
    {8, 4, Kind::hex, " proddate     "},
    {12, 8, Kind::text, " camroll      "},
    {20, 8, Kind::text, " soundroll    "},
    {28, 8, Kind::text, " scene        "},
    {36, 4, Kind::text, " take         "},
    {40, 8, Kind::text, " slate        "},
};

constexpr Row kLabelRows[] = {
    {2, 8, Kind::text, " vtroll       "},
    {10, 20, Kind::text, " title        "},
    {30, 8, Kind::text, " episode      "},
    {38, 20, Kind::text, " facility     "},
    {58, 40, Kind::text, " misc         "},
};

constexpr Row kShortLabelRows[] = {
    {2, 20, Kind::text, " title        "},
    {22, 8, Kind::text, " episode      "},
    {30, 4, Kind::text, " crewid       "},
    {34, 4, Kind::text, " operatorid   "},
    {38, 4, Kind::text, " directorid   "},
    {42, 4, Kind::text, " producerid   "},
};

constexpr Row kCameraRows[] = {
    {2, 2, Kind::hex, " modelcode    "},
    {4, 4, Kind::hex, " serialnumber "},
    {8, 4, Kind::hex_slash, " framenumber  "},
    {12, 1, Kind::hex_slash, " cameraformat "},
    {13, 1, Kind::hex_slash, " stepshutter  "},
    {14, 1, Kind::hex_slash, " mastergain   "},
    {15, 1, Kind::hex_slash, " ndfilter     "},
    {16, 1, Kind::hex_slash, " ccfilter     "},
    {17, 1, Kind::hex_slash, " gamma        "},
    {18, 1, Kind::hex_slash, " presetmatrix "},
    {19, 1, Kind::hex_slash, " gammatable   "},
    {20, 1, Kind::hex_slash, " gammastd     "},
    {21, 1, Kind::hex_slash, " gammauser    "},
    {22, 1, Kind::hex_slash, " lfeframerate "},
    {23, 1, Kind::hex_slash, " switch1      "},
    {24, 1, Kind::hex_slash, " switch2      "},
    {25, 2, Kind::hex, " whitegain_r  "},
    {27, 2, Kind::hex, " whitegain_g  "},
    {29, 2, Kind::hex, " whitegain_b  "},
    {31, 2, Kind::hex, " gammablack   "},
    {33, 2, Kind::hex, " masterkneept "},
    {35, 2, Kind::hex, " masterkneesl "},
    {37, 2, Kind::hex, " mastergamma  "},
    {39, 2, Kind::hex, " detaillevel  "},
    {41, 2, Kind::hex, " blackmaster  "},
    {43, 2, Kind::hex, " blackgain_r  "},
    {45, 2, Kind::hex, " blackgain_g  "},
    {47, 2, Kind::hex, " blackgain_b  "},
};
// clang-format on

void print_digits(Bytes packet, const Row &row, const char *between) {
    for (uint64_t i = 0; i < row.size; i++) print("%s%02x", i ? between : "", packet[row.offset + i]);
}

void print_row(Bytes packet, const Row &row) {
    const int32_t number = static_cast<int32_t>(packet.big(row.offset, std::min<uint8_t>(row.size, 4)));
    print("%s", row.label);
    switch (row.kind) {
        case Kind::hex:
            print_digits(packet, row, "");
            print("\n");
            break;
        case Kind::hex_number:
            print_digits(packet, row, "");
            print(" (%d)\n", number);
            break;
        case Kind::hex_slash:
            print_digits(packet, row, "");
            print("/%d\n", number);
            break;
        case Kind::time:
            print_digits(packet, row, ":");
            print("\n");
            break;
        case Kind::text: {
            char text[kMaxText + 1];
            getstring(text, row.size, packet.from(row.offset));
            print("'%s'\n", text);
            break;
        }
    }
}

void print_packet(const char *title, Bytes packet, std::span<const Row> rows) {
    print("%s\n", title);
    for (const Row &row : rows) print_row(packet, row);
}

// An angle: the full range of 16 bits is two half turns.
void print_angle(const char *label, Bytes field) {
    print("%s%02x%02x/%06.2f\n", label, field[0], field[1], big16(field) * 180.0 / 32767);
}

void print_dolly(Bytes packet) {
    const Bytes p = packet;
    print("DOLLY\n");
    print(" lensid       %02x%02x%02x%02x\n", p[2], p[3], p[4], p[5]);
    print(" focallength  %02x%02x/%1.1fmm\n", p[6], p[7], rpfloat16(p.from(6)) * 1000);
    print(" focalpos     %02x%02x/%1.1fm\n", p[8], p[9], rpfloat16(p.from(8)));
    print(" iris         %02x%02x/F%1.1f\n", p[10], p[11], std::pow(2.0, 8 * (1 - big16(p, 10) / 65536.0)));
    print(" camheight    %02x%02x%02x%02x/%06.2fm\n", p[12], p[13], p[14], p[15],
          static_cast<double>(float_of_bits(little32(p, 12))));
    print_angle(" camtilt      ", p.from(16));
    print_angle(" camroll      ", p.from(18));
    print_angle(" campan       ", p.from(20));
}

void print_user(Bytes packet, uint32_t size) {
    print("USER\n");
    // The rows show zeros for what a cut block lacks.
    uint8_t data[255];
    for (uint32_t i = 0; i < size; i++) data[i] = packet[2 + uint64_t{i}];
    LineBuffer out;
    put_hexrows(out, Bytes(data, size), {.gap = " ", .filler = ' '}, [](LineBuffer &line, uint64_t i) {
        line.put(' ');
        line.hex(i, 3);
        line.put(' ');
    });
}

void print_packet(Bytes packet) {
    const uint32_t type = packet[0];
    const uint32_t size = packet[1];
    print("%02x/%d-", type, size);
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

void getstring(char *text, uint32_t n, Bytes source) {
    uint32_t i = 0;
    for (; i < n && source[i]; i++) text[i] = static_cast<char>(source[i]);
    for (; i < n; i++) text[i] = ' ';
    text[n] = '\0';
}

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
    if (computed != stored) print("CRC Wrong Calc %04x != %04x\n", computed, stored);
}
