// The facts of any file.
#pragma once

#include "common/facts.h"

class Input;

// Opens a file and reads its facts: at most a few dozen places and a few MiB of it, whatever its size. A
// file that cannot be opened and one of an unknown format have a problem and no format. Movies are recognised
// by what is in them.
Facts facts(const char *path);
// The same of what was opened.
Facts facts(Input &input);
