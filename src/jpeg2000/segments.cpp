// The fields of codestream marker segments (ISO/IEC 15444-1, annex A).
#include <climits>
#include <cmath>
#include <cstdlib>

#include "common/end_of_run.h"
#include "common/field_rows.h"
#include "common/names.h"
#include "common/print.h"
#include "common/values.h"
#include "jpeg2000/codestream.h"

namespace {

constexpr int kFatalStatus = 1;

constexpr const char *band[] = {"HL", "LH", "HH"};
constexpr const char *kProgressions[] = {"LRCP", "RLCP", "RPCL", "PCRL", "CPRL"};
constexpr const char *kQuantizations[] = {"No Quantization", "Scalar Implicit", "Scalar Explicit"};
constexpr const char *kTransforms[] = {"(9/7)", "(5/3)"};

// clang-format off
// From the segment's marker on.
constexpr FieldRow kSizRows[] = {
    {4, Field::dec16, " Rsize      "},
    {6, Field::dec32, " Xsize      "},
    {10, Field::dec32, " Ysize      "},
    {14, Field::dec32, " XOsize     "},
    {18, Field::dec32, " YOsize     "},
    {22, Field::dec32, " XTsize     "},
    {26, Field::dec32, " YTsize     "},
    {30, Field::dec32, " XTOsize    "},
    {34, Field::dec32, " YTOsize    "},
    {38, Field::dec16, " Csize      "},
};
constexpr FieldRow kLayerRows[] = {
    {6, Field::dec16, " number of layers      "},
    {8, Field::dec8, " multiple component    "},
};
// clang-format on

void print_rows(const Segment &segment, std::span<const FieldRow> rows) {
    print_field_rows(big_endian(segment.buf.from(segment.offset)), rows);
}

struct Mode {
    uint32_t bit;
    const char *label;
};
constexpr Mode kModes[] = {
    {0x01, " - modeBYPASS          "}, {0x02, " - modeRESET           "}, {0x04, " - modeRESTART         "},
    {0x08, " - modeCAUSAL          "}, {0x10, " - modeETERM           "}, {0x20, " - modeSEGMARK         "},
};

// 2 to a power; one that does not fit into 32 bits is the number that marks this.
int32_t power_of_two(uint32_t exponent) { return exponent < 31 ? 1 << exponent : INT_MIN; }

// Components are numbered in one byte where that is enough.
uint64_t component_size(const CodestreamState &state) { return state.cs_numComponents <= 256 ? 1 : 2; }

void print_partition(uint32_t style) {
    print("%s\n", own(style & 1 ? " - entropy encoder with partition (precincts)"
                                : " - entropy encoder without partition (precincts)"));
}

void print_sop_and_eph(uint32_t style) {
    print("%s\n", own(style & 2 ? " - SOP marker segments are used" : " - No SOP marker segments are used"));
    print("%s\n", own(style & 4 ? " - EPH marker segments are used" : " - No EPH mmarker segments are used"));
}

// The fields that COD and COC share, from the decomposition levels on; returns the number of precinct sizes.
uint32_t print_coding_fields(CodestreamState &state, const Segment &segment, uint64_t at) {
    state.cs_numLevels = segment.u8(at);
    print(" decomposition level   %d\n", state.cs_numLevels);
    print(" codeblock width       %d\n", power_of_two(segment.u8(at + 1) + 2));
    print(" codeblock height      %d\n", power_of_two(segment.u8(at + 2) + 2));
    const uint32_t modes = segment.u8(at + 3);
    print(" - mode switches       0x%02x\n", modes);
    for (const Mode &mode : kModes) {
        segment.of(at + 3, 1);
        print("%s%s\n", own(mode.label), modes & mode.bit ? "on" : "off");
    }
    print(" DWT transform         %s\n", name_at(kTransforms, segment.u8(at + 4), "unknown"));
    uint32_t precincts = 0;
    for (at += 5; segment.has(at); at++, precincts++) {
        const uint32_t exponents = segment.u8(at);
        print(" precinct size [%d]     %d x %d\n", precincts, power_of_two(exponents & 15),
              power_of_two(exponents >> 4));
    }
    return precincts;
}

void check_precincts(const CodestreamState &state, uint32_t precincts) {
    if (precincts <= state.cs_numLevels + 1) return;
    print(" - failure !!! -> No of precint dimensions (%d) are greater than assumed no of dwt-levels (%d)\n",
          precincts, state.cs_numLevels);
}

// Prints the component that a COC or QCC segment is for; ends the program when the image does not have it.
void print_component(const CodestreamState &state, const Segment &segment) {
    const uint32_t component = component_size(state) == 1 ? segment.u8(4) : segment.u16(4);
    print(" data for component %d\n", component);
    if (component <= state.cs_numComponents) return;
    print(" - failure !!! - max component = %d\n", state.cs_numComponents);
    end_run(kFatalStatus);
}

// The level and band of the values of a quantization list, in their order: 0LL, 1HL, 1LH, 1HH, 2HL, ...
struct Subband {
    uint32_t level;
    const char *name;
};
Subband subband(uint32_t k) {
    if (k == 0) return {0, "LL"};
    return {(k - 1) / 3 + 1, band[(k - 1) % 3]};
}

double step_size(uint32_t value) {
    return (1 + (value & 0x7FF) / 2048.0) / std::pow(2.0, static_cast<double>(value >> 11));
}

uint32_t print_quantization_style(const Segment &segment, uint64_t at) {
    const uint32_t style = segment.u8(at);
    print(" - guardbits           %d\n", style >> 5);
    segment.of(at, 1);
    if (const char *name = name_at(kQuantizations, style & 0x1F, nullptr)) {
        print(" - sQCD                %s\n", name);
    } else {
        print(" - sQCD                %s/0x%02x\n", "?", style);
    }
    return style;
}

// `count` one-byte values.
void print_exponents(const Segment &segment, uint64_t at, uint64_t count) {
    for (uint32_t k = 0; k < count && segment.buf.has(segment.offset + at + k, 1); k++) {
        const Subband s = subband(k);
        print(" - value %d%s           0x%02x\n", s.level, s.name, segment.u8(at + k));
    }
}

// 16-bit values as long as their byte index is below `limit`.
template <typename Print>
void print_steps(const Segment &segment, uint64_t at, uint64_t limit, Print print_step) {
    for (uint32_t j = 0; j < limit && segment.buf.has(segment.offset + at + j, 1); j += 2) {
        print_step(subband(j / 2), segment.u16(at + j));
    }
}

uint64_t minus(uint64_t size, uint64_t n) { return size > n ? size - n : 0; }

}  // namespace

void print_siz(CodestreamState &state, const Segment &s) {
    print_rows(s, kSizRows);
    state.cs_numComponents = s.u16(38);
    forget();
    int component = 0;
    for (uint64_t at = 40; s.has(at); at += 3, component++) {
        print(" Ssize[%02d]  %d bit - %s\n", component, (s.u8(at) & 0x7F) + 1,
              s.u8(at) & 0x80 ? "signed" : "unsigned");
        print(" XRsize[%02d] %d\n", component, s.u8(at + 1));
        print(" YRsize[%02d] %d\n", component, s.u8(at + 2));
    }
}

void print_cod(CodestreamState &state, const Segment &s) {
    const uint32_t style = s.u8(4);
    print(" Scod                  0x%02x\n", style);
    if (style > 31) print(" - probably illegal Scod codeword\n");
    print_partition(style);
    print_sop_and_eph(style);
    print(" progression order     %d - %s\n", s.u8(5),
          name_at(kProgressions, s.u8(5), "unknown progression"));
    print_rows(s, kLayerRows);
    const uint32_t precincts = print_coding_fields(state, s, 9);
    if (precincts && !(style & 1)) {
        print(" - failure !!! -> No Precinct defined in Scod but Presinct sizes are defined\n");
    }
    check_precincts(state, precincts);
}

void print_coc(CodestreamState &state, const Segment &s) {
    print_component(state, s);
    const uint64_t at = 4 + component_size(state);
    const uint32_t style = s.u8(at);
    print(" Scod                  0x%02x\n", style);
    if (style > 1) {
        print(" - probably illegal Scod codeword\n");
    } else {
        print_partition(style);
    }
    print_sop_and_eph(style);
    check_precincts(state, print_coding_fields(state, s, at + 1));
}

void print_tlm(const Segment &s) {
    print_field_row(big_endian(s.buf.from(s.offset)), {4, Field::dec8, " TLM index           "});
    const uint32_t index_size = s.u8(5) >> 4 & 3;
    const uint32_t length_size = s.u8(5) & 0x40 ? 4 : 2;
    print(" tile index length   %d bytes \n", index_size);
    s.of(5, 1);
    print(" length information  %d bytes \n", length_size);
    const int pair = static_cast<int>(index_size + length_size);
    const int pairs = static_cast<int>(s.size) - 6;
    if (pairs % pair != 0) {
        print(" - failure !!! incorrect marker length or tilpart data \n");
    } else {
        also(s.buf, s.offset + 2, 2);
        also(s.buf, s.offset + 5, 1);
        print(" tileparts           %d\n", pairs / pair);
    }
    if (s.size < 7) return;
    uint64_t at = 6;
    for (int n = 1; s.has(at); n++) {
        print(" tilepart %d:\n", n);
        if (index_size == 3) {
            print(" - failure !!! incorrect tilepart index lenght definition\n");
            break;
        }
        if (index_size == 0) {
            s.of(5, 1);
            print(" tile index          %s \n", "not defined");
        } else {
            print(" tile index          %d\n", index_size == 1 ? s.u8(at) : s.u16(at));
        }
        if (!s.has(at + index_size)) break;
        at += index_size;
        print(" tilepart length     %d\n", static_cast<int32_t>(length_size == 4 ? s.u32(at) : s.u16(at)));
        at += length_size;
    }
    if (at < s.size) print(" - failure !!! incorrect tilepart lenght definition\n");
}

void print_qcd(const Segment &s) {
    const uint32_t style = print_quantization_style(s, 4);
    if ((style & 0x1F) == 0) {
        print_exponents(s, 5, minus(s.size, 5));
        return;
    }
    print_steps(s, 5, minus(s.size, 6), [](Subband sub, uint32_t value) {
        print(" - value %d%s           0x%08x - %09.6f\n", sub.level, sub.name, value, step_size(value));
    });
}

void print_qcc(const CodestreamState &state, const Segment &s) {
    print_component(state, s);
    const uint64_t at = 4 + component_size(state);
    const uint32_t style = print_quantization_style(s, at);
    if ((style & 0x1F) == 0) {
        print_exponents(s, at + 1, minus(s.size, 6));
        return;
    }
    print_steps(s, at + 1, minus(s.size, 6), [](Subband sub, uint32_t value) {
        print(" - value %d%s           %g\n", sub.level, sub.name, step_size(value));
    });
}

void print_poc(const CodestreamState &state, const Segment &s) {
    if (s.size % 2 != 0) {
        print(" - failure !!! POC marker wrong length\n");
        return;
    }
    const uint64_t width = state.cs_numComponents < 257 ? 1 : 2;
    const auto component = [&](uint64_t at) { return width == 1 ? s.u8(at) : s.u16(at); };
    uint64_t at = 4;
    for (int n = 1; s.has(at); n++, at += 5 + 2 * width) {
        const uint64_t layers = at + 1 + width;
        print(" progression %d:\n", n);
        print(" - comp  %d - %d\n", component(at + 1), component(layers + 3));
        print(" - res   %d - %d\n", s.u8(at), s.u8(layers + 2));
        print(" - layer %d\n", s.u16(layers));
        print(" - order %s\n", name_at(kProgressions, s.u8(layers + 3 + width)));
    }
}

void print_cme(const Segment &s) {
    if (s.u16(4) == 0) {
        print(" coding     %s\n", "binary Comment Data");
        return;
    }
    print(" coding     %s\n", "IS 8859-15:1999(Latin)");
    print(" comment    '");
    for (uint64_t at = 6; s.has(at); at++) print("%c", tiffchar(s.u8(at)));
    print("'\n");
}
