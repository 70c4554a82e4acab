#include "images/images.h"

void bmpdump(DumpOptions &, Bytes) {}
void tgadump(DumpOptions &, Bytes) {}
void sgidump(DumpOptions &, Bytes) {}
void softdump(DumpOptions &, Bytes) {}
void exedump(Bytes) {}
void ppmdump(DumpOptions &, std::FILE *) {}
void pngdump(DumpOptions &, std::FILE *) {}
void mngdump(DumpOptions &, std::FILE *) {}
void yuvdump(DumpOptions &, std::FILE *) {}
void yuv10dump(DumpOptions &, std::FILE *) {}
void yuv16dump(DumpOptions &, std::FILE *) {}
void aridump(DumpOptions &, std::FILE *) {}
