// The tree of a file's dump.
#pragma once

#include <string>

#include "companions/diff/tree.h"
#include "main/dump_options.h"

struct FileTree {
    std::string format;  // of the detection table
    FieldNode root;
};

// Dumps a file into a tree. Unless `everything` is set, without what any two files differ in. A message where
// there is no dump, else empty.
std::string read_tree(const std::string &path, const DumpOptions &options, bool everything, TextPool &pool,
                      FileTree &tree);

// Puts the sets of an MXF file below those that refer to them (strong references within their partition), and
// tells tracks by what they carry.
void nest_sets(FieldNode &root, bool everything, TextPool &pool);
