#include "audio/samples.h"

#include <algorithm>
#include <vector>

#include "common/hexrow.h"
#include "common/line_buffer.h"
#include "dpx/timecode.h"

namespace {

constexpr uint32_t kMaxTimecodeChannels = 16;
constexpr uint64_t kBlock = 256 << 10;  // bytes in memory at a time
constexpr int64_t kRate = 48000;        // of the time column, whatever the file says

constexpr size_t kWholeFrame = 1024;  // bytes of a frame that is listed in one piece

constexpr uint32_t kSyncSamples = 8;
constexpr uint32_t kPacketBits = 128;
constexpr int64_t kSearchStart = 63;  // a search begins that many frames before the first sample of its run

// Search for a packet in one channel: 8 sync samples (all upper bits set), then 120 samples with one bit
// each.
struct Channel {
    uint32_t bit_count = 0;
    int64_t start_frame = 0;
    uint8_t packet[16] = {};
};

// Takes one sample's two most significant bytes; true when the packet is complete (it is then in `packet`).
bool take_sample(Channel &channel, uint8_t byte0, uint8_t byte1, int64_t frame) {
    uint32_t &n = channel.bit_count;
    if (n < kSyncSamples) {
        if (byte0 != 0xFF || byte1 < 0xF0) {
            channel.start_frame = frame - kSearchStart;
            n = 0;
        } else if (++n == kSyncSamples) {
            std::fill(std::begin(channel.packet), std::end(channel.packet), uint8_t{0});
        }
        return false;
    }
    if (n < kPacketBits) {
        if (byte1 < 0xF4)
            channel.packet[n / 8] = static_cast<uint8_t>(channel.packet[n / 8] | 1U << (7 - n % 8));
        n++;
        return false;
    }
    channel.packet[0] = 0xFF;
    n = 0;
    return true;
}

// "%d.%06d " of a frame number as seconds and microseconds.
void put_time(LineBuffer &out, int64_t frame) {
    out.signed_decimal(frame / kRate);
    out.put('.');
    out.decimal(static_cast<uint64_t>((frame + kRate) % kRate * 1000 / 48), 6, '0');
    out.put(' ');
}

class Dump {
 public:
    Dump(const DumpOptions &opts, uint64_t position, uint32_t channels, uint32_t sample_size,
         int little_endian)
        : opts_(opts),
          position_(position),
          channel_count_(channels),
          sample_size_(sample_size),
          little_endian_(little_endian) {}

    // The samples of a block, one behind the other.
    void block(std::span<const uint8_t> bytes) {
        while (bytes.size() >= sample_size_) {
            const bool is_whole = channel_ == 0 && bytes.size() >= frame_size();
            const size_t n = is_whole && !needs_samples() ? frame_size() : sample_size_;
            if (n == sample_size_) {
                sample(bytes.first(n));
            } else if (opts_.flag_t) {
                search_frame(bytes.first(n));
            } else {
                put_frame(bytes.first(n));
            }
            bytes = bytes.subspan(n);
        }
    }

    // Ends the line of a frame that the end of the file cuts.
    void end() {
        if (channel_ > 0) end_frame();
    }

 private:
    void sample(std::span<const uint8_t> bytes) {
        if (opts_.flag_a) {
            if (channel_ == 0) out_.text("  ");
            put_sample(bytes);
        }
        if (opts_.flag_t && channel_ < kMaxTimecodeChannels) search(channel_, bytes);
        if (++channel_ == channel_count_) end_frame();
    }

    void search(uint32_t channel, std::span<const uint8_t> bytes) {
        if (take_sample(channels_[channel], significant(bytes, 0), significant(bytes, 1), frame_))
            put_timecode(channel);
    }

    // A whole frame of which only packets are shown.
    void search_frame(std::span<const uint8_t> frame) {
        const uint32_t searched = std::min(channel_count_, kMaxTimecodeChannels);
        for (uint32_t c = 0; c < searched; c++)
            search(c, frame.subspan(size_t{c} * sample_size_, sample_size_));
        channel_ = channel_count_;
        end_frame();
    }

    void end_frame() {
        if (opts_.flag_a || timecode_in_line_) {
            from(bytes_behind());
            out_.end_row();
        }
        timecode_in_line_ = false;
        channel_ = 0;
        frame_++;
    }

    // The frame, and those that hold the packet which it completes.
    FileRange bytes_behind() const {
        const uint64_t frame = static_cast<uint64_t>(frame_);
        const uint64_t first = timecode_in_line_ ? frame - kPacketBits : frame;
        return {position_ + first * frame_size(),
                (frame - first) * frame_size() + uint64_t{channel_} * sample_size_};
    }

    uint8_t significant(std::span<const uint8_t> sample, size_t i) const {
        if (i >= sample.size()) return 0;
        return little_endian_ ? sample[sample.size() - 1 - i] : sample[i];
    }

    size_t frame_size() const { return size_t{channel_count_} * sample_size_; }
    // Whether frames are more than one piece of text, or a search that prints next to nothing.
    bool needs_samples() const {
        return opts_.flag_a && (listening || opts_.flag_t || frame_size() > kWholeFrame);
    }

    void put_frame(std::span<const uint8_t> frame) {
        const size_t sample_text = 2 * size_t{sample_size_} + 1;
        char *p = out_.claim(2 + channel_count_ * sample_text + 1);
        *p++ = ' ';
        *p++ = ' ';
        for (uint32_t c = 0; c < channel_count_; c++, p += sample_text) {
            write_sample(p, frame.data() + size_t{c} * sample_size_);
        }
        *p = '\n';
        frame_++;
    }

    void put_sample(std::span<const uint8_t> sample) {
        write_sample(out_.claim(2 * sample.size() + 1), sample.data());
    }

    // The digits of a sample, most significant byte first, and a blank.
    void write_sample(char *p, const uint8_t *sample) const {
        const uint8_t *byte = little_endian_ ? sample + sample_size_ - 1 : sample;
        const std::ptrdiff_t step = little_endian_ ? -1 : 1;
        for (uint32_t i = 0; i < sample_size_; i++, byte += step) p = write_hex(p, *byte);
        *p = ' ';
    }

    // The first timecode of a frame stands behind the time, in its channel's column.
    void put_timecode(uint32_t c) {
        const Channel &channel = channels_[c];
        if (!timecode_in_line_) {
            put_time(out_, channel.start_frame);
            out_.fill(' ', size_t{10} * c);
            timecode_in_line_ = true;
        }
        uint32_t timecode = 0;
        uint32_t tag = 0;
        if (!keltimecode_decode(Bytes(channel.packet, sizeof channel.packet), &timecode, nullptr, &tag)) {
            out_.text("ERROR");
            return;
        }
        out_.hex(timecode, 8);
        out_.put('/');
        out_.decimal(tag);
        out_.put(' ');
    }

    const DumpOptions &opts_;
    const uint64_t position_;  // of the first sample
    const uint32_t channel_count_;
    const uint32_t sample_size_;
    const int little_endian_;
    uint32_t channel_ = 0;  // of the next sample
    int64_t frame_ = 0;
    bool timecode_in_line_ = false;
    Channel channels_[kMaxTimecodeChannels];
    LineBuffer out_;
};

// Frames without bytes: without channels, or with samples of 0 bits as compressed formats declare them. They
// never meet the end of the file, but the budget's.
void print_empty_frames(uint64_t frames, uint32_t channels, Budget &budget) {
    LineBuffer out;
    for (; frames > 0 && !budget.spent(); frames--) {
        out.fill(' ', size_t{2} + channels);
        out.end_row();
        budget.spend(channels + 1);
    }
}

}  // namespace

void audio_samplesdump(DumpOptions &opts, Input &input, uint64_t position, int64_t frames, uint32_t channels,
                       uint32_t bits, int little_endian, Budget &budget) {
    const uint32_t sample_size = (bits + 7) / 8;
    const uint64_t size = input.end();
    if (frames <= 0 || budget.spent()) return;
    if (channels == 0 || sample_size == 0) {
        if (opts.flag_a) print_empty_frames(static_cast<uint64_t>(frames), channels, budget);
        return;
    }
    const uint64_t frame_size = uint64_t{channels} * sample_size;
    const uint64_t available = size > position ? size - position : 0;
    const uint64_t whole = available / frame_size;
    const uint64_t wanted =
        static_cast<uint64_t>(frames) > whole ? available : static_cast<uint64_t>(frames) * frame_size;
    budget.spend(wanted);

    Dump dump(opts, position, channels, sample_size, little_endian);
    const uint64_t step = kBlock / sample_size * sample_size;
    for (const uint64_t end = position + wanted; position < end; position += step) {
        const Bytes block = input.next_step(position, std::min(step, end - position));
        dump.block(block.span(0, block.size()));
    }
    dump.end();
}
