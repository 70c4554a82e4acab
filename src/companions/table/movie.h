// The timecode of a movie, which stands in its media data: the dump tells where.
#pragma once

#include "companions/table/reader.h"

constexpr Column kTimecodeOffset = Column::first;
constexpr Column kTimecodeBase = Column::second;
constexpr Column kTimecodeDrop = Column::third;

// The switch for a hex dump of the first sample of the timecode track that a row tells of; empty when there
// is none.
std::string movie_timecode_switch(const Row &row);

// Sets the timecode from that hex dump.
void set_movie_timecode(Row &row, std::string_view hex_dump);
