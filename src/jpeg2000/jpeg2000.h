// JPEG 2000 (ISO/IEC 15444-1) and JPEG (ISO/IEC 10918-1).
#pragma once

#include <cstdio>

#include "main/dump_options.h"

void jp2dump(DumpOptions &opts, std::FILE *file);                   // boxes of a JP2 file
void jpcdump(DumpOptions &opts, std::FILE *file, int skip_prefix);  // markers of a bare codestream
void jpgdump(DumpOptions &opts, std::FILE *file);                   // JPEG markers up to the first scan
