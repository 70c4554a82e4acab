// MPEG audio and AAC, each with ID3 tags around it or without.
#include <algorithm>
#include <cmath>

#include "audio/facts_riff.h"
#include "common/elementary.h"
#include "main/facts_of.h"

namespace {

constexpr uint64_t kWalked = 3 << 20;  // bytes of a file that is read from its first to its last frame

uint64_t syncsafe(Bytes b, uint64_t at) {
    uint64_t value = 0;
    for (uint64_t i = 0; i < 4; i++) value = value << 7 | (b[at + i] & 0x7F);
    return value;
}

// ID3 version 2.3 and 2.4: what encoded it, its title, and where the tag ends.
uint64_t read_tag(Bytes file, Facts &facts) {
    if (!bytes_are(file, 0, "ID3")) return 0;
    const uint64_t end = 10 + syncsafe(file, 6) + ((file[5] & 0x10) != 0 ? 10 : 0);
    const unsigned version = file[3];
    uint64_t at = 10;
    if ((file[5] & 0x40) != 0) at += version == 4 ? syncsafe(file, 10) : 4 + big32(file, 10);
    for (int i = 0; i < 64 && version >= 3 && at + 11 < end && file[at] >= 'A'; i++) {
        const uint64_t size = version == 4 ? syncsafe(file, at + 4) : big32(file, at + 4);
        const bool is_plain = file[at + 10] == 0 || file[at + 10] == 3;
        const std::string text =
            size > 1 && is_plain ? fixed_text(file, at + 11, std::min<uint64_t>(size - 1, 256)) : "";
        if (bytes_are(file, at, "TSSE")) facts.writer = text;
        if (bytes_are(file, at, "TIT2")) facts.add_more("title", text);
        at += 10 + size;
    }
    return end;
}

struct Stream {
    Input &input;
    Facts &facts;
    uint64_t start = 0;
    uint64_t end = 0;  // of what is no tag
};

uint64_t adts_bytes(Bytes frame) {
    const bool is_frame = (big16(frame) & 0xFFF6) == 0xFFF0 && (frame[2] >> 2 & 15) < 13;
    const uint64_t size = uint64_t{frame[3]} << 11 | uint64_t{frame[4]} << 3 | frame[5] >> 5;
    return is_frame && size >= 7 ? size & 0x1FFF : 0;
}

// Frames that a header of its own counts (Xing and Info, VBRI), with the bytes that they take. Zero: none.
struct Count {
    uint64_t frames = 0;
    uint64_t bytes = 0;
    std::string writer = {};
    bool is_constant = false;  // the bit rate
};

Count count_in(Bytes frame, const MpegAudioFrame &header) {
    const bool mono = header.channels == 1;
    const uint64_t side = header.is_version_1 ? (mono ? 17 : 32) : (mono ? 9 : 17);
    const Bytes xing = frame.from(4 + side);
    if (bytes_are(xing, 0, "Xing") || bytes_are(xing, 0, "Info")) {
        const uint32_t flags = big32(xing, 4);
        uint64_t at = 8;
        const auto field = [&](uint32_t flag, uint64_t bytes) {
            const uint32_t value = flags & flag ? big32(xing, at) : 0;
            if (flags & flag) at += bytes;
            return value;
        };
        Count count{field(1, 4), field(2, 4)};
        count.is_constant = bytes_are(xing, 0, "Info");
        field(4, 100);
        field(8, 4);
        if (xing[at] >= 'A' && xing[at] <= 'z') count.writer = fixed_text(xing, at, 9);
        return count;
    }
    if (bytes_are(frame, 36, "VBRI")) return {big32(frame, 50), big32(frame, 46)};
    return {};
}

// The offset of the frame with that header's rates nearest to where it should be at a constant bit rate.
bool has_frame_at(Stream &stream, const MpegAudioFrame &header, uint64_t at) {
    const Bytes bytes = stream.input.present(at - 1, 8);
    for (uint64_t i = 0; i < 3; i++) {
        const MpegAudioFrame frame = mpeg_audio_frame(bytes.from(i));
        if (frame.bytes > 0 && frame.layer == header.layer && frame.rate == header.rate &&
            frame.bit_rate == header.bit_rate)
            return true;
    }
    return false;
}

// A small file is walked through; of a large one frames at a constant bit rate are where arithmetic says.
template <typename Size>
uint64_t walk(Stream &stream, Size size_of) {
    const Bytes bytes = stream.input.present(stream.start, stream.end - stream.start);
    uint64_t at = 0;
    uint64_t frames = 0;
    while (at < bytes.size()) {
        const uint64_t size = size_of(bytes.sub(at, 10));
        if (size == 0) break;
        frames++;
        at += size;
    }
    if (at > bytes.size()) {
        stream.facts.cut(stream.start + at, "the last frame");
    } else if (at < bytes.size() && is_unwritten(stream.input, stream.start + at, stream.end)) {
        stream.facts.cut(stream.end, "the last frames (zeros)");
    } else if (at == bytes.size()) {
        stream.facts.extent.claimed = stream.start + at;
    }
    return frames;
}

// Of a large file its end, from the first frame on that others follow.
template <typename Size>
void walk_tail(const Stream &stream, Size size_of) {
    constexpr uint64_t kTail = 65536;
    constexpr int kFollowing = 4;
    Stream tail{stream.input, stream.facts, stream.end - kTail, stream.end};
    const Bytes bytes = tail.input.present(tail.start, kTail);
    for (uint64_t first = 0; first < kTail / 2; first++) {
        uint64_t at = first;
        int n = 0;
        for (; n < kFollowing; n++) {
            const uint64_t size = size_of(bytes.sub(at, 10));
            if (size == 0) break;
            at += size;
        }
        if (n < kFollowing) continue;
        tail.start += first;
        walk(tail, size_of);
        return;
    }
    if (is_unwritten(tail.input, tail.start, tail.end)) tail.facts.cut(tail.end, "the last frames (zeros)");
}

void read_aac(Stream &stream, Bytes frame) {
    Sound sound;
    if (!adts_frame(frame, sound)) return;
    stream.facts.format = "AAC";
    if (stream.end - stream.start <= kWalked) {
        uint64_t bytes = 0;
        const uint64_t frames = walk(stream, [&](Bytes b) {
            const uint64_t size = adts_bytes(b);
            bytes += size;
            return size;
        });
        sound.samples = static_cast<int64_t>(frames * 1024);
        stream.facts.lasts(sound.samples, sound.rate);
        sound.bit_rate = bit_rate_of(bytes, stream.facts.duration);
    } else {
        walk_tail(stream, adts_bytes);
    }
    stream.facts.sounds.push_back(sound);
}

void count_frames(Stream &stream, const MpegAudioFrame &header, Bytes frame, Sound &sound) {
    Facts &facts = stream.facts;
    const Count count = count_in(frame, header);
    const uint64_t bytes = stream.end - stream.start;
    uint64_t frames = count.frames;
    if (!count.writer.empty() && facts.writer.empty()) facts.writer = count.writer;
    if (count.frames > 0) {
        const uint64_t end = stream.start + count.bytes;
        const MpegAudioFrame second = mpeg_audio_frame(frame.from(header.bytes));
        // No frame's header is zeros; those that hold silence are, but for it.
        const uint64_t longest = count.is_constant && second.bytes > 0 ? second.bytes + 1 : 2048;
        const bool is_cut =
            count.bytes > bytes || ends_in_zeros(stream.input, stream.start, end, 64, longest);
        if (is_cut && count.bytes > 0) facts.cut(end, "the last frames");
        if (!is_cut && count.bytes > 0) facts.whole(end);
        const uint64_t behind = stream.input.size() - std::min(end, stream.input.size());
        if (behind < 128 && bytes_are(stream.input.bytes(), end, "TAG"))
            facts.cut(end + 128, "the tag's end");
        if (count.is_constant && second.bytes > 0) {
            sound.bit_rate = second.bit_rate;
        } else if (count.bytes > 0) {
            const auto samples = static_cast<int64_t>(frames * header.samples);
            sound.bit_rate = bit_rate_of(count.bytes, {samples, header.rate});
        }
    } else if (bytes <= kWalked) {
        bool is_constant = true;
        frames = walk(stream, [&](Bytes b) {
            const MpegAudioFrame next = mpeg_audio_frame(b);
            is_constant = is_constant && (next.bytes == 0 || next.bit_rate == header.bit_rate);
            return uint64_t{next.bytes};
        });
        if (is_constant) sound.bit_rate = header.bit_rate;
    } else {
        walk_tail(stream, [](Bytes b) { return uint64_t{mpeg_audio_frame(b).bytes}; });
        const double length = static_cast<double>(header.samples) / 8 * header.bit_rate / header.rate;
        const auto place = [&](uint64_t i) {
            return stream.start + static_cast<uint64_t>(static_cast<double>(i) * length + 0.001);
        };
        const uint64_t all = static_cast<uint64_t>(std::llround(static_cast<double>(bytes) / length));
        if (all < 3 || !has_frame_at(stream, header, place(all / 2)) ||
            !has_frame_at(stream, header, place(all - 1)))
            return;
        frames = all;
        sound.bit_rate = header.bit_rate;
    }
    if (frames > 0 && frames < UINT32_MAX) sound.samples = static_cast<int64_t>(frames * header.samples);
    facts.lasts(sound.samples, sound.rate);
}

}  // namespace

void mpeg_audio_facts(Input &input, Facts &facts) {
    const Bytes file = input.bytes();
    Stream stream{input, facts, read_tag(file, facts), file.size()};
    const bool is_tagged = stream.start > 0;
    for (int i = 0; i < 4096 && is_tagged && stream.start < file.size() && file[stream.start] == 0; i++)
        stream.start++;
    if (file.size() >= 128 && bytes_are(file, file.size() - 128, "TAG")) stream.end -= 128;
    if (stream.end >= 32 && bytes_are(file, stream.end - 32, "APETAGEX"))
        stream.end -= std::min<uint64_t>(stream.end, 32 + uint64_t{little32(file, stream.end - 20)});
    const Bytes frame = file.from(stream.start);
    const MpegAudioFrame header = mpeg_audio_frame(frame);
    const uint64_t aac = adts_bytes(frame);
    if (stream.start >= stream.end) {
        if (is_tagged) facts.cut(stream.start, "the sound");
        if (!is_tagged) facts.format.clear();
    } else if (aac > 0 && (adts_bytes(frame.from(aac)) > 0 || stream.start + aac >= stream.end)) {
        read_aac(stream, frame);
    } else if (header.bytes > 0 && (mpeg_audio_frame(frame.from(header.bytes)).bytes > 0 ||
                                    stream.start + header.bytes >= stream.end)) {
        Sound sound;
        set_sound(header, sound);
        facts.format = sound.codec;
        count_frames(stream, header, frame, sound);
        facts.sounds.push_back(sound);
    } else if (!is_tagged) {
        facts.format.clear();
    } else {
        facts.format = "ID3";
    }
}
