#include "main/dispatch.h"

#include "common/print.h"
#include "common/stream.h"
#include "main/formats.h"

bool dispatch(DumpOptions &opts, Input &input, const char *name, int range_flag, bool by_content) {
    const formats::File in{opts, input, name, range_flag, by_content, input.bytes(0, kDetectionSize)};
    for (const formats::Format &format : formats::kFormats<false>) {
        forget();
        if (!format.dump || !formats::recognises(format, in)) continue;
        if (listening) stream::keep_reads();  // the magic number is the first line's
        stream::tell_format(format.name);
        format.dump(in);
        return true;
    }
    print("Unknown fileformat of file '%s' %02x %02x %02x %02x\n", name, in.head[0], in.head[1], in.head[2],
          in.head[3]);
    return false;
}
