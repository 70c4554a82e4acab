#include "gxf/values.h"

#include "common/values.h"

const char *gxfstring(Bytes b, uint64_t offset, unsigned n) {
    char *text = get_buffer();
    unsigned length = 0;
    for (const uint8_t byte : b.span(offset, n)) {
        if (byte == 0) break;
        text[length++] = tiffchar(byte);
    }
    text[length] = '\0';
    return text;
}
