// Metadata sets and definition sets (SMPTE 377M).
#pragma once

#include "common/bytes.h"
#include "main/dump_options.h"

// A set is searched up to this and its length behind the start of its key: the size of the key and of the
// usual 4-byte length.
inline constexpr uint64_t kSetEnd = 20;

// Prints a set's length line and its items; returns the size of key, length and value.
uint64_t mxf_klv(DumpOptions &opts, uint64_t file_position, Bytes buffer, uint64_t offset);

// The name of the set whose key stands at an offset; `kind`, if given, gets "Metadata", "DefineMetadata" or
// "DefineObject". A definition set met while names are collected declares its local tag.
const char *mxf_metadata_key(DumpOptions &opts, Bytes buffer, uint64_t offset, const char **kind);
