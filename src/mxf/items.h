// What the dumpers of KLV items share. They take the item's window (its key at offset 0), the item's position
// in the file and the row's name, and return a non-zero count of the bytes that they considered.
#pragma once

#include <cstdint>

#include "common/bytes.h"
#include "main/dump_options.h"

using mxf_label_handler = uint64_t (*)(DumpOptions &, uint64_t file_position, Bytes buffer, uint64_t offset,
                                       const char *name);

// Where an item's value lies in its window. Lengths are signed 32-bit numbers inside an item.
struct ItemValue {
    uint64_t start;
    int64_t length;

    uint64_t end() const { return start + static_cast<uint64_t>(length); }
    // The value as far as the window holds it.
    Bytes in(Bytes buffer) const { return buffer.sub(start, static_cast<uint64_t>(length > 0 ? length : 0)); }
};

// Reads the length behind the key.
ItemValue read_item_length(DumpOptions &opts, Bytes buffer, uint64_t offset);

// Reads the length behind the key and prints the length line: `label`, the length and, unless -mc is set, the
// file position of the item's end.
ItemValue print_length_line(DumpOptions &opts, uint64_t file_position, Bytes buffer, uint64_t offset,
                            const char *label = " Length             ");
void print_length_line(DumpOptions &opts, uint64_t file_position, const ItemValue &value, const char *label);

// Prints the items of a local set with 2-byte tags and lengths (SMPTE 336M), by the names and kinds of their
// tags.
void print_local_set(DumpOptions &opts, Bytes buffer, const ItemValue &value);

// Structural items (SMPTE 377M): partition packs, primer pack, index table segments, random index pack.
uint64_t mxf_partition_header(DumpOptions &, uint64_t file_position, Bytes buffer, uint64_t offset,
                              const char *name);
uint64_t mxf_primer_pack(DumpOptions &, uint64_t file_position, Bytes buffer, uint64_t offset,
                         const char *name);
uint64_t mxf_index_table(DumpOptions &, uint64_t file_position, Bytes buffer, uint64_t offset,
                         const char *name);
uint64_t mxf_randomindex_table(DumpOptions &, uint64_t file_position, Bytes buffer, uint64_t offset,
                               const char *name);

// Body items: system items and essence elements of the generic container (SMPTE 379M, 385M), encrypted
// triplets (SMPTE 429-6), XML documents and legacy items.
uint64_t mxf_generic_container(DumpOptions &, uint64_t file_position, Bytes buffer, uint64_t offset,
                               const char *name);
uint64_t mxf_generic_data(DumpOptions &, uint64_t file_position, Bytes buffer, uint64_t offset,
                          const char *name);
uint64_t mxf_encrypted_triplet(DumpOptions &, uint64_t file_position, Bytes buffer, uint64_t offset,
                               const char *name);
uint64_t mxf_xml_data(DumpOptions &, uint64_t file_position, Bytes buffer, uint64_t offset, const char *name);
uint64_t mxf_generic_unknown(DumpOptions &, uint64_t file_position, Bytes buffer, uint64_t offset,
                             const char *name);

// Hands an item to the dumper that its key selects and returns its result; 16 for a known key without dumper,
// 0 and nothing printed for any other.
uint64_t mxfdumplabel(DumpOptions &opts, uint64_t file_position, Bytes buffer, uint64_t offset);
