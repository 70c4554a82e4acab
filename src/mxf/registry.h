// What the dump learns from the files of a run: names of local tags, and names of the sets that references
// point to. It lives for the process; later declarations win.
#pragma once

#include <cstdint>

#include "common/bytes.h"
#include "main/dump_options.h"
#include "mxf/value_kind.h"

// A set's instance UID with the name that references to it print.
struct mxf_guid_node {
    uint8_t guid[16];
    char text[64];
};

// The name of a local tag and, through `kind`, its value kind: as the file declared it last, else by RP 210,
// else "unknown" (a hex block).
const char *mxffindlabel(DumpOptions &opts, uint32_t local_tag, ValueKind *kind);

// Declares a local tag. The name must last.
void mxfaddlabel(DumpOptions &opts, uint32_t local_tag, const char *name, ValueKind kind);

// A lasting copy of a text, cut at 127 characters.
const char *addmxfstring(const char *text);

// Registers the instance UID of the set at a file position, with its name or, for null, "guid" and a number.
void mxf_guid_add(DumpOptions &opts, Bytes guid, uint64_t file_position, const char *name);
const mxf_guid_node *mxf_guid_find(DumpOptions &opts, Bytes guid);
// The name registered for an instance UID, or "unknown".
const char *mxf_guid_string(DumpOptions &opts, Bytes guid);

// Forgets everything.
void mxffreedata();
