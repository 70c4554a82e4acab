// The SMPTE RP 210 metadata dictionary and the RP 224 labels register, and the printed forms of labels.
#pragma once

#include <cstddef>
#include <cstdint>

#include "common/bytes.h"
#include "main/dump_options.h"
#include "mxf/value_kind.h"

struct rp210_entry {
    uint8_t ul[16];
    uint32_t local_tag;  // static local tag, 0 for none
    const char *name;
    ValueKind kind;
    uint32_t length;  // of the value in bytes, 0 where it varies
};

struct rp224_entry {
    uint8_t ul[16];
    int32_t match_length;  // leading bytes that a lookup compares
    const char *name;
};

// Generated from src/mxf/data while building; in register order, with row numbers sorted for the lookups.
extern const rp210_entry rp210[];
extern const size_t rp210_count;
extern const uint16_t rp210_by_label[];  // by label without its register version (byte 7)
extern const uint16_t rp210_by_tag[];    // the rows with a static local tag
extern const size_t rp210_tag_count;
extern const rp224_entry rp224[];
extern const size_t rp224_count;
extern const uint16_t rp224_by_label[];

// Prints a label or UUID without a line feed: 06.0e.2b.34.02.05.01.01-0d.01..., or with -mx as 0x06,0x0e,...
void printuuid(DumpOptions &opts, Bytes ul);

// Prints "RP224/" and the name of a label; 0 and nothing when the register does not have it.
int printrp224(Bytes ul);

// The first row of RP 210 with a label, whatever its register version; null for none.
const rp210_entry *mxf_find_rp210(DumpOptions &opts, Bytes ul, int flag);

// The first row of RP 210 with a static local tag; null for none.
const rp210_entry *find_rp210_tag(uint32_t local_tag);

// Prints the name of a label from either register, without a line feed; 0 and nothing when neither has it.
int printidentifier(DumpOptions &opts, Bytes ul);

// Prints the name of a label, or "unknown identifier".
void print_name_or_unknown(DumpOptions &opts, Bytes ul);
