// AIFF and AIFF-C: a chunk walk in big-endian order.
#include <algorithm>
#include <cstdio>
#include <memory>

#include "audio/audio.h"
#include "audio/samples.h"
#include "common/file_image.h"
#include "common/values.h"

namespace {

constexpr uint64_t kFirstChunk = 12;
constexpr uint64_t kChunkHeader = 8;
constexpr uint64_t kSoundHeader = 8;  // offset and block size before the samples

// From the common chunk; zeros before it.
struct Common {
    uint32_t channels = 0;
    uint32_t frames = 0;
    uint32_t bits = 0;
};

uint32_t u16(Bytes b, uint64_t offset) { return tiffuint16(b.from(offset), 1); }
uint32_t u32(Bytes b, uint64_t offset) { return tiffuint32(b.from(offset), 1); }

void print_common(Common &common, Bytes payload) {
    common = {u16(payload, 0), u32(payload, 2), u16(payload, 6)};
    std::printf(" COMM\n");
    std::printf("  Channels %d\n", common.channels);
    std::printf("  Samples  %d\n", static_cast<int32_t>(common.frames));
    std::printf("  Bits     %d\n", common.bits);
}

void print_sound(DumpOptions &opts, std::FILE *file, const Common &common, Bytes chunk, uint64_t position) {
    const uint32_t offset = u32(chunk, kChunkHeader);
    const uint64_t samples = position + kChunkHeader + kSoundHeader + offset;
    std::printf(" SSND\n");
    std::printf("  Size     %d\n", static_cast<int32_t>(u32(chunk, 4)));
    std::printf("  Offset   %d\n", static_cast<int32_t>(offset));
    std::printf("PTR %08x\n", static_cast<uint32_t>(samples));
    if (!opts.flag_a && !opts.flag_t) return;
    audio_samplesdump(opts, file, samples, common.frames, common.channels, common.bits, 0);
}

void walk_chunks(DumpOptions &opts, std::FILE *file, Bytes form) {
    Common common;
    for (uint64_t position = kFirstChunk; form.has(position, kChunkHeader);) {
        const Bytes chunk = form.from(position);
        const uint32_t size = u32(chunk, 4);
        std::printf(" Elem %c%c%c%c length %d\n", chunk[0], chunk[1], chunk[2], chunk[3],
                    static_cast<int32_t>(size));
        if (bytes_are(chunk, 0, "COMM")) {
            print_common(common, chunk.from(kChunkHeader));
        } else if (bytes_are(chunk, 0, "SSND")) {
            print_sound(opts, file, common, chunk, position);
        } else {
            std::printf("Unknown\n");
        }
        position += (uint64_t{size} + 9) & ~uint64_t{1};
    }
}

}  // namespace

void aiffdump(DumpOptions &opts, Bytes header, const char *name) {
    const uint32_t size = u32(header, 4);
    std::printf("Fileformat:AIFF\n");
    std::printf(" Size:            %lld\n", static_cast<long long>(size));
    std::printf(" Magic:           %c%c%c%c\n", header[8], header[9], header[10], header[11]);
    const std::unique_ptr<std::FILE, int (*)(std::FILE *)> file(std::fopen(name, "rb"), std::fclose);
    if (!file) {
        std::printf("Error: Could not open file '%s'\n", name);
        return;
    }
    FileImage image(file.get(), 0, size, 512);
    if (!image.ok()) {
        std::printf("Error: Failed to allocate buffer %lld bytes\n", static_cast<long long>(size));
        return;
    }
    const uint64_t available = file_size(file.get());
    if (available < size) {
        std::printf("Error: Could only read %d bytes of %lld\n", static_cast<int>(available),
                    static_cast<long long>(size));
        return;
    }
    walk_chunks(opts, file.get(), image.bytes());
}
