// The atoms that hold fields, by family. Each printer returns nothing for a type that is not its own, and
// reads nothing then; otherwise it prints the atom's fields, one line each, and says what it read of the
// payload.
#pragma once

#include <optional>

#include "quicktime/atom.h"

struct QtRead {
    uint64_t count;           // payload bytes read
    bool extensions = false;  // the rest of the atom is a list of extension atoms
};

// Headers of movies, tracks and media, small atoms and the extensions of sample descriptions: the Movie Atoms
// of the QuickTime File Format. Fields beyond a short payload show 0.
std::optional<QtRead> qt_print_header(QtAtom &atom);

// Tables of a track: edits, times, sizes and places of its samples, colours. A table ends with the payload,
// or with the file where its entries are read one at a time; its count alone says nothing.
std::optional<QtRead> qt_print_table(QtAtom &atom);

// Sample descriptions: video, audio, timecode, closed captions.
std::optional<QtRead> qt_print_description(QtAtom &atom);
