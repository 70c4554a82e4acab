#include <algorithm>
#include <tuple>

#include "main/facts_of.h"
#include "red/chunks.h"

namespace {

constexpr uint64_t kHeaderRead = 16384;
constexpr uint64_t kTail = 65536;
constexpr uint64_t kAlignment = 4096;  // of the chunks of version 2
constexpr int kMostChunks = 24;        // that are walked through where the end is not there

// Metadata records: the first is 15 bytes long with type 0x10 and id 0.
struct Records {
    Bytes block;
    uint64_t first = 0;

    explicit Records(Bytes chunk) : block(chunk) {
        while (first < 512 && !bytes_are(block, first, "\x0F\x10\0")) first++;
    }
    std::string text(uint8_t id) const {
        uint64_t at = first;
        for (int i = 0; i < 1000 && block.has(at, 3) && block[at] >= 3 && block[at + 1] <= 0x60; i++) {
            if (block[at + 1] == 0x10 && block[at + 2] == id)
                return fixed_text(block, at + 3, block[at] - 3U);
            at += block[at];
        }
        return "";
    }
};

// "10:00:00:00", or as eight digits; other dividers before the frames than a colon stand for drop.
FileTimecode timecode_in(const std::string &text, uint32_t base, const char *place) {
    const size_t step = text.size() >= 11 ? 3 : 2;
    const auto part = [&](size_t i) { return decimal_in(text, step * i, 2); };
    const bool drop = step == 3 && text[8] != ':' && base % 30 == 0;
    return file_timecode(part(0), part(1), part(2), part(3), base, drop, place);
}

std::string date_in(const std::string &day, const std::string &time) {
    return iso_date(decimal_in(day, 0, 4), decimal_in(day, 4, 2), decimal_in(day, 6, 2),
                    decimal_in(time, 0, 2), decimal_in(time, 2, 2), decimal_in(time, 4, 2));
}

void read_records(Bytes chunk, Facts &facts) {
    const Records records(chunk);
    const uint32_t base = base_of(facts.picture().rate);
    facts.add(timecode_in(records.text(41), base, "start"));
    facts.add(timecode_in(records.text(1), base, "absolute"));
    facts.add(timecode_in(records.text(0), base, "edge"));
    facts.reel = records.text(0x1A);
    facts.writer = records.text(0x19);
    append(facts.writer, records.text(0x25), " ");
    facts.date = date_in(records.text(0x23), records.text(0x24));
    facts.add_more("take", records.text(0x1B));
    facts.add_more("file name", records.text(0x56));
}

Ratio plausible(int64_t n, int64_t d) {
    const Ratio rate{n, d};
    return rate.value() >= 0.5 && rate.value() <= 1000 ? rate_of(n, d) : Ratio{};
}

// Where the chunk of the file's end is; 0 where it is not.
uint64_t find_end(Input &input) {
    const uint64_t size = input.size();
    const uint64_t n = std::min(size, kTail);
    const Bytes tail = input.present(size - n, n);
    for (uint64_t i = n; i-- > 0;) {
        if (!bytes_are(tail, i, "REO")) continue;
        const bool is_type =
            tail[i + 3] == 'B' || tail[i + 3] == 'F' || tail[i + 3] == 'S' || tail[i + 3] == '2';
        if (i >= 4 && is_type && big32(tail, i - 4) >= 44) return size - n + i - 4;
    }
    return 0;
}

// Without the end: whether a chunk crosses the file's.
void judge_open(Input &input, uint64_t alignment, Facts &facts) {
    const uint64_t size = input.size();
    uint64_t at = 0;
    for (int i = 0; i < kMostChunks && at < size; i++) {
        const Bytes head = input.present(at, kChunkHeader, 512);
        const uint64_t length = big32(head);
        if (length < kChunkHeader) break;  // zeros, or part of a head
        at += length;
        if (at < size) at = (at + alignment - 1) / alignment * alignment;
    }
    if (at == size) {
        facts.open("no end of the file");
    } else {
        facts.cut(std::max(at, size + 1), "the end of the file");
    }
}

}  // namespace

void red_facts(Input &input, Facts &facts) {
    const Bytes head = input.present(0, kHeaderRead);
    const bool is_first = bytes_are(head, 4, "RED1");
    const uint64_t alignment = is_first ? 1 : kAlignment;
    const uint64_t header_size = big32(head);
    facts.variant = is_first ? "version 1" : "version 2";
    Picture &picture = facts.picture();
    picture.codec = "REDCODE";
    picture.components = "Bayer";
    picture.width = big32(head, is_first ? 52 : 76);
    picture.height = big32(head, is_first ? 56 : 80);
    picture.scan = Scan::progressive;
    if (is_first) {
        picture.rate = plausible(big32(head, 60), big16(head, 64));
        if (!picture.rate.is_set()) picture.rate = plausible(big16(head, 62), big16(head, 64));
        facts.add_more("file name", fixed_text(head, 67, 257));
    } else {
        for (const auto &[n, n_size, d] : {std::tuple{88, 4U, 86}, {88, 2U, 90}, {88, 4U, 92}}) {
            if (!picture.rate.is_set())
                picture.rate = plausible(static_cast<int64_t>(head.big(static_cast<uint64_t>(n), n_size)),
                                         big16(head, static_cast<uint64_t>(d)));
        }
    }
    if (picture.rate.is_set()) picture.constant_rate = true;
    // Version 1 has its records in the first frame, the second in the file's header.
    read_records(is_first ? input.present(header_size, kHeaderRead) : head.sub(0, header_size), facts);
    if (is_first && head[66] > 0 && head[66] <= 8) {
        Sound sound;
        sound.channels = head[66];
        sound.codec = "PCM";
        uint64_t at = header_size;
        for (int i = 0; i < 8 && !sound.rate.is_set(); i++) {
            const Bytes chunk = input.present(at, 24, 512);
            if (bytes_are(chunk, 4, "REDA") && big32(chunk, 12) >= 8000 && big32(chunk, 12) <= 192000)
                sound.rate = {big32(chunk, 12), 1};
            if (big32(chunk) < kChunkHeader) break;
            at += big32(chunk);
        }
        facts.sounds.push_back(std::move(sound));
    }
    if (const uint64_t end = find_end(input)) {
        const Bytes chunk = input.present(end, 128, 512);
        const uint32_t frames = big32(chunk, is_first ? 24 : 92);
        if (frames > 0 && frames < 100000000) picture.frames = frames;
        facts.lasts(picture.frames, picture.rate);
        return facts.reaches(end + big32(chunk), "the end of the file");
    }
    judge_open(input, alignment, facts);
}
