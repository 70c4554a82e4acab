#include "gxf/values.h"

#include "common/values.h"

const char *gxfstring(Bytes b, uint64_t offset, unsigned n) { return printable_text(b.from(offset), n, '.'); }

bool payload_of(Bytes rest, int64_t size, Bytes &payload) {
    if (size < 0) return false;
    const uint64_t wanted = std::min(static_cast<uint64_t>(size), kPayloadRead);
    payload = rest.sub(0, wanted);
    return payload.size() == wanted;
}
