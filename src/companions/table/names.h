// The names that columns can have.
#pragma once

#include <string>
#include <string_view>

// Whether a name is one of the columns, or one that formats have further values by, whether or not a file has
// it.
bool is_table_name(std::string_view name);

// The one of these names that is meant by another spelling ("Audio Tracks", " audio_tracks"); else what is
// given.
std::string table_name(const std::string &name);
