// Atoms that are no more than a run of fields.
#include <span>

#include "common/names.h"
#include "quicktime/fields.h"
#include "quicktime/printers.h"

namespace {

using enum QtField;

// clang-format off
constexpr QtRow kMovieHeader[] = {
    {0, version_flags},
    {4, u32, "creation="},
    {8, u32, "modification="},
    {12, u32, "timescale="},
    {16, u32, "duration="},
    {20, fixed, "rate="},
    {24, u16, "volume="},
    {26, u8, "res1[]=", 10},
    {36, matrix, "matrix[]=", 3},
    {72, u32, "preview_time="},
    {76, u32, "preview_dur="},
    {80, u32, "poster_time="},
    {84, u32, "sel_time="},
    {88, u32, "sel_dur="},
    {92, u32, "cur_time="},
    {96, u32, "next_trackid="},
};

constexpr QtRow kTrackHeader[] = {
    {0, version_flags},
    {4, u32, "creation="},
    {8, u32, "modification="},
    {12, u32, "trackid="},
    {16, u32, "res1="},
    {20, u32, "duration="},
    {24, u32, "res2[]=", 2},
    {32, u16, "layer="},
    {34, u16, "alt_group="},
    {36, u16, "volume="},
    {38, u16, "res3="},
    {40, matrix, "matrix[]=", 3},
    {76, fixed, "track_width="},
    {80, fixed, "track_height="},
};

constexpr QtRow kMediaHeader[] = {
    {0, version_flags},
    {4, u32, "creation="},
    {8, u32, "modification="},
    {12, u32, "timescale="},
    {16, u32, "duration="},
    {20, u16, "language="},
    {22, u16, "quality="},
};

constexpr QtRow kHandlerReference[] = {
    {0, version_flags},
    {4, fourcc, "type="},
    {8, fourcc, "subtype="},
    {12, fourcc, "manufacturer="},
    {16, u32, "flags2="},
    {20, u32, "flagsmask="},
    {24, pstring, "name="},
};

constexpr QtRow kVideoHeader[] = {
    {0, version_flags},
    {4, u16, "grmode="},
    {6, u16, "opcolor[]=", 3},
};

constexpr QtRow kSoundHeader[] = {
    {0, version_flags},
    {4, u16, "balance="},
    {6, u16, "res1="},
};

constexpr QtRow kBaseMediaInformation[] = {
    {0, version_flags},
    {4, u16, "grmode="},
    {6, u16, "opcolor[]=", 3},
    {12, u16, "balance="},
    {14, u16, "reserved="},
};

constexpr QtRow kTimecodeInformation[] = {
    {0, version_flags},
    {4, u16, "textfont="},
    {6, u16, "textface="},
    {8, u16, "textsize="},
    {10, u16, "reserved="},
    {12, u16, "textcolor[]=", 3},
    {18, u16, "backgroundcolor[]=", 3},
    {24, pstring, "fontname="},
};

constexpr QtRow kApertureDimensions[] = {
    {0, version_flags},
    {4, fixed, "width="},
    {8, fixed, "height="},
};

constexpr QtRow kPreview[] = {
    {0, u32, "modification="},
    {4, u16, "version="},
    {6, u32, "atomtype="},
    {10, u16, "atomindex="},
};

constexpr QtRow kRange[] = {{0, u32, "range="}};
constexpr QtRow kByteOrder[] = {{0, u16, "littleendian="}};
constexpr QtRow kOriginalFormat[] = {{0, fourcc, "format="}};
constexpr QtRow kDataReference[] = {{0, version_flags}};

constexpr QtRow kCompositionShift[] = {
    {0, version_flags},
    {4, u32, "shift="},
    {8, d32, "least="},
    {12, d32, "greatest="},
    {16, d32, "displaystarttime="},
    {20, d32, "displayendtime="},
};

constexpr QtRow kColor[] = {
    {0, fourcc, "colortype="},
    {4, u16, "primaries="},
    {6, u16, "transferfunc="},
    {8, u16, "matrix="},
};

constexpr QtRow kFieldHandling[] = {
    {0, u8, "fields="},
    {1, u8, "detail="},
};
constexpr QtRow kPixelAspect[] = {
    {0, u32, "hspacing="},
    {4, u32, "vspacing="},
};

constexpr QtRow kCleanAperture[] = {
    {0, u32, "cawn="},
    {4, u32, "cawd="},
    {8, u32, "cahn="},
    {12, u32, "cahd="},
    {16, u32, "horizoffn="},
    {20, u32, "horizoffd="},
    {24, u32, "vertoffn="},
    {28, u32, "vertoffd="},
};

constexpr QtRow kGamma[] = {{0, fixed, "gamma="}};

constexpr QtRow kChannelLayout[] = {
    {0, version_flags},
    {4, u32, "layouttag="},
    {8, u32, "bitmap="},
    {12, u32, "count="},
};
constexpr QtRow kChannelDescription[] = {
    {0, u32, "desc[i].label="},
    {4, u32, "desc[i].flags="},
    {8, real32, "desc[i].coordinates[]=", 3},
};
// clang-format on

struct Layout {
    char type[5];
    std::span<const QtRow> rows;
    uint32_t fixed = 0;  // bytes read; 0: the whole payload
};

constexpr Layout kLayouts[] = {
    {"mvhd", kMovieHeader},
    {"tkhd", kTrackHeader},
    {"mdhd", kMediaHeader},
    {"hdlr", kHandlerReference},
    {"vmhd", kVideoHeader},
    {"smhd", kSoundHeader},
    {"gmin", kBaseMediaInformation, 16},
    {"tcmi", kTimecodeInformation},
    {"prof", kApertureDimensions},
    {"clef", kApertureDimensions},
    {"enof", kApertureDimensions},
    {"pnot", kPreview},
    {"Rnge", kRange},
    {"enda", kByteOrder},
    {"frma", kOriginalFormat},
    {"alis", kDataReference},
    {"rsrc", kDataReference},
    {"cslg", kCompositionShift},
    {"colr", kColor},
    {"fiel", kFieldHandling},
    {"pasp", kPixelAspect},
    {"clap", kCleanAperture},
    {"gama", kGamma},
};

// A name in user data is opaque; elsewhere it is a text with its length and language.
uint64_t print_name(QtAtom &atom) {
    static constexpr QtRow kRows[] = {{0, u16, "length="}, {2, u16, "language="}};
    const uint64_t count = qt_atom_read_data(atom);
    const bool opaque = atom.file->parsing_udta;
    if (!opaque) print_qt_rows(atom, kRows);
    qt_hexdump(atom.data.from(opaque ? 0 : 4), atom.indent(), "name");
    return count;
}

uint64_t print_channel_layout(QtAtom &atom) {
    const uint64_t count = qt_atom_read_data(atom);
    print_qt_rows(atom, kChannelLayout);
    const uint32_t descriptions = big32(atom.data, 12);
    LineBuffer out;
    for (uint64_t i = 0, at = 16; i < descriptions && atom.data.has(at, 20); i++, at += 20) {
        put_qt_rows(out, atom.data.from(at), atom.indent(), kChannelDescription);
    }
    return count;
}

}  // namespace

std::optional<QtRead> qt_print_header(QtAtom &atom) {
    const uint32_t type = qt_type(atom.type);
    if (type == qt_type("name")) return QtRead{print_name(atom)};
    if (type == qt_type("chan")) return QtRead{print_channel_layout(atom)};
    const Layout *layout = row_of(kLayouts, type, [](const Layout &l) { return qt_type(l.type); });
    if (!layout) return std::nullopt;
    const uint64_t count = layout->fixed ? qt_atom_read_more(atom, layout->fixed) : qt_atom_read_data(atom);
    print_qt_rows(atom, layout->rows);
    return QtRead{count};
}
