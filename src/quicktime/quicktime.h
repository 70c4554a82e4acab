// QuickTime movies (QuickTime File Format, 2012).
#pragma once

// The atom tree of a movie, which is opened by name: sizes and offsets in bytes, times in the units of the
// atom. A cut atom shows zeros for missing fields. Returns 1 when no memory could be had, else 0.
int qtdump(const char *name);
