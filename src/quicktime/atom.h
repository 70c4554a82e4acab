// Atoms of a QuickTime movie: the record of one atom and the reads on its payload.
#pragma once

#include <algorithm>
#include <cstdint>
#include <string_view>

#include "common/bytes.h"
#include "common/input.h"
#include "common/values.h"

// What one walk shares: the movie and the place in it.
struct QtFile {
    static constexpr uint32_t kAreaSize = 0x2000000;
    static constexpr uint32_t kFileNotFound = 0x20;
    static constexpr uint64_t kFarthest = INT64_MAX;  // that a position of a file can be

    explicit QtFile(const char *name) : input(name) {}

    // Where the movie's bytes end.
    uint64_t end() const { return std::min(input->end(), kFarthest); }

    NamedInput input;
    uint64_t position = 0;      // may lie beyond the end
    uint64_t moved_back = 0;    // bytes of the file that the walk went back over, in sum
    uint32_t problems = 0;      // bit set
    bool parsing_udta = false;  // inside user data
    bool parsing_gmhd = false;  // inside a base media header
    bool ended = false;         // no further header is to be read
};

struct QtAtom {
    // Bytes of a payload that are looked at, at most: an area of 32 MiB less 48 bytes, the size of a record
    // that precedes the data in it.
    static constexpr uint32_t capacity = QtFile::kAreaSize - 48;

    QtFile *file = nullptr;
    uint64_t offset = 0;  // of the header's first byte
    uint32_t depth = 0;
    uint32_t header_size = 0;  // 8, or 16 with a 64-bit size
    uint32_t size32 = 0;       // as stored: 0 and 1 are not sizes
    char type[4] = {};
    uint64_t size = 0;  // header included
    Bytes data;         // what the last read got of the payload

    uint64_t payload_size() const { return size - header_size; }
    bool shorter_than_header() const { return size < header_size; }
    int indent() const { return static_cast<int>(2 * depth + 2); }  // blanks before a field's label
};

// A type code as the number that its four stored bytes are on a little-endian host.
constexpr uint32_t qt_type(const char *type) {
    uint32_t code = 0;
    for (unsigned i = 0; i < 4; i++) code |= uint32_t{static_cast<uint8_t>(type[i])} << (8 * i);
    return code;
}

// The record of the first top-level atom, or of the first child of `parent`.
QtAtom qt_atom_init(QtFile &file, const QtAtom *parent);

// Reads the header at the current position: a big-endian size and a type, then a 64-bit size when the first
// is 1; a size of 0 reaches to the end of the file. Returns the header's length, and 0 when the file ends
// inside it: then nothing is read and the walk is to end.
uint32_t qt_atom_read_header(QtAtom &atom);

// Reads the next n bytes of the file, whether they are the atom's or not; the count read, which is less where
// the file ends. Bytes beyond the capacity are passed over.
uint64_t qt_atom_read_more(QtAtom &atom, uint64_t n);

// The next n bytes of the file, entries of a table or what ends a list; fewer where the file ends.
Bytes qt_atom_read_item(QtFile &file, uint64_t n);

// Reads the payload. Returns the count read; for an atom beyond the capacity, whose rest is passed over, all
// of the payload's length.
uint64_t qt_atom_read_data(QtAtom &atom);

// Moves the position; it stays where it is rather than before the start of the file.
void qt_skip(QtFile &file, uint64_t n);
void qt_move(QtFile &file, int32_t distance);

// Rows of 16 bytes with offsets, each behind the indentation and a label.
void qt_hexdump(Bytes bytes, int indent, std::string_view label);

// Big-endian values beyond the plain integers.
inline uint64_t swap64(Bytes b, uint64_t offset) { return big64(b, offset); }
inline double swap64_double(Bytes b, uint64_t offset) { return double_of_bits(big64(b, offset)); }
inline float swap32_float(Bytes b, uint64_t offset) { return float_of_bits(big32(b, offset)); }
