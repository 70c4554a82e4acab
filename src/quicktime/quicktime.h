// QuickTime movies.
#pragma once

// The atom tree of a movie, which is opened by name. Returns 1 when no memory could be had, else 0.
int qtdump(const char *name);
