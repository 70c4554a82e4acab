#include "red/chunks.h"

#include <algorithm>

#include "common/print.h"
#include "common/stream.h"
#include "red/values.h"

namespace {

constexpr uint32_t kBlock = 512;

}  // namespace

bool ChunkReader::read_header(uint64_t position, RedChunk &chunk) {
    forget();
    chunk.position = position;
    chunk.held = input_.present(position, kChunkHeader, kBlock);
    chunk.size = red32(chunk.held, 0);
    return chunk.held.size() == kChunkHeader;
}

bool ChunkReader::read_payload(RedChunk &chunk) {
    // A size that does not even hold the header wraps around and is read like the largest.
    const uint64_t wanted = kChunkHeader + uint64_t{std::min(chunk.size - kChunkHeader, most_)};
    if (input_.end() - chunk.position < wanted) return false;
    // All bytes before a header that can be read are there: of the payload the walk reads what it looks at.
    const uint64_t next = behind(chunk);
    const bool is_there =
        next >= chunk.position + wanted && input_.present(next, kChunkHeader, kBlock).size() == kChunkHeader;
    chunk.held = is_there ? input_.bytes(chunk.position, wanted, kBlock)
                          : input_.present(chunk.position, wanted, kBlock);
    return chunk.held.size() == wanted;
}

void print_chunk_line(const RedChunk &chunk, int characters) {
    print("%08x/", chunk.offset());
    behind_position();
    label_begins(false);
    print("%s", redstring(characters, chunk.held, 4));
    label_ends();
    print(" %d\n", static_cast<int32_t>(chunk.size));
}
