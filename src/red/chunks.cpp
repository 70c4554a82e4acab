#include "red/chunks.h"

#include <algorithm>

#include "common/file_access.h"
#include "red/values.h"

namespace {

constexpr uint32_t kBlock = 512;

}  // namespace

ChunkReader::ChunkReader(std::FILE *file, uint32_t most)
    : end_(file_size(file)), most_(most), window_(file, kChunkHeader + uint64_t{most}, kBlock) {}

bool ChunkReader::read_header(uint64_t position, RedChunk &chunk) {
    chunk.position = position;
    chunk.held =
        window_.at(position).sub(0, std::min(end_ - std::min(position, end_), uint64_t{kChunkHeader}));
    chunk.size = red32(chunk.held, 0);
    return chunk.held.size() == kChunkHeader;
}

bool ChunkReader::read_payload(RedChunk &chunk) {
    // A size that does not even hold the header wraps around and is read like the largest.
    const uint64_t wanted = kChunkHeader + uint64_t{std::min(chunk.size - kChunkHeader, most_)};
    if (end_ - chunk.position < wanted) return false;
    chunk.held = window_.at(chunk.position).sub(0, wanted);
    return true;
}
