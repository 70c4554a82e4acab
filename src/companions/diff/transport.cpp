#include "companions/diff/transport.h"

#include <algorithm>
#include <cstdio>
#include <map>

#include "common/input.h"
#include "common/names.h"

namespace {

constexpr uint64_t kMostRead = uint64_t{8} << 20;
constexpr uint32_t kPacket = 188;
constexpr uint8_t kSync = 0x47;
constexpr size_t kMostTables = 256;

constexpr CodeName kStreamTypes[] = {
    {0x01, "MPEG-1 video"},
    {0x02, "MPEG-2 video"},
    {0x03, "MPEG-1 audio"},
    {0x04, "MPEG-2 audio"},
    {0x05, "private sections"},
    {0x06, "private data"},
    {0x0F, "AAC ADTS"},
    {0x10, "MPEG-4 video"},
    {0x11, "AAC LATM"},
    {0x15, "metadata"},
    {0x1B, "H.264"},
    {0x21, "JPEG 2000"},
    {0x24, "H.265"},
    {0x32, "JPEG XS"},
    {0x33, "H.266"},
    {0x81, "AC-3"},
    {0x86, "SCTE 35"},
    {0x87, "E-AC-3"},
};
constexpr CodeName kDescriptors[] = {
    {0x02, "video stream"}, {0x03, "audio stream"},     {0x05, "registration"}, {0x09, "conditional access"},
    {0x0A, "language"},     {0x0E, "maximum bit rate"}, {0x28, "AVC video"},    {0x2B, "AAC audio"},
    {0x38, "HEVC video"},   {0x45, "VBI data"},         {0x48, "service"},      {0x52, "stream identifier"},
    {0x56, "teletext"},     {0x59, "subtitling"},       {0x6A, "AC-3"},         {0x7A, "E-AC-3"},
    {0x7C, "AAC"},          {0x7F, "extension"},
};

// The first section of a table on a PID, as far as it came.
struct Section {
    std::string bytes;
    bool begun = false;
    bool complete = false;
};

class Programs {
 public:
    Programs(Input &input, FieldNode &root, TextPool &pool) : input_(input), root_(root), pool_(pool) {}

    void read() {
        // 192 bytes a packet have a time stamp in front, 204 a code behind.
        uint64_t first = 0;
        uint32_t step = 0;
        for (const uint32_t size : {kPacket, 192U, 204U}) {
            for (uint64_t at = 0; at < size && !step; at++) {
                bool holds = true;
                for (uint64_t i = 0; i < 4 && holds; i++)
                    holds = byte(at + i * size) == kSync || at + i * size >= input_.size();
                if (holds && byte(at) == kSync) {
                    first = at;
                    step = size;
                }
            }
        }
        if (!step) return;
        wanted_[0] = {};
        wanted_[0x11] = {};
        const uint64_t end = std::min(input_.size(), kMostRead);
        for (uint64_t at = first; at + kPacket <= end; at += step) {
            packet(input_.present(at, kPacket, 65536));
        }
        show();
    }

 private:
    uint8_t byte(uint64_t at) { return input_.bytes(at, 1)[0]; }

    void packet(Bytes data) {
        const uint32_t pid = big16(data, 1) & 0x1FFFU;
        const auto found = wanted_.find(pid);
        if (data[0] != kSync || found == wanted_.end() || found->second.complete) return;
        uint64_t at = 4;
        if (data[3] & 0x20) at += 1U + data[4];
        if (!(data[3] & 0x10) || at >= kPacket) return;
        Section &section = found->second;
        if (data[1] & 0x40) {
            at += 1U + data[at];
            if (section.begun || at >= kPacket) return;
            section.begun = true;
        } else if (!section.begun) {
            return;
        }
        for (; at < kPacket; at++) section.bytes += static_cast<char>(data[at]);
        const Bytes bytes(section.bytes.data(), section.bytes.size());
        const uint64_t size = 3U + (big16(bytes, 1) & 0x0FFFU);
        if (bytes.size() < size) return;
        section.complete = true;
        section.bytes.resize(static_cast<size_t>(size));
        if (pid == 0) {
            for (uint64_t i = 8; i + 8 <= size && wanted_.size() < kMostTables; i += 4) {
                if (big16(bytes, i) != 0) wanted_.try_emplace(big16(bytes, i + 2) & 0x1FFFU);
            }
        }
    }

    FieldNode &add(FieldNode &to, const std::string &name, const std::string &value) {
        to.children.push_back({pool_.number(name), 0, pool_.number(value), 0, false, {}, {}});
        return to.children.back();
    }

    void descriptors(FieldNode &node, Bytes data) {
        for (uint64_t at = 0; at + 2 <= data.size();) {
            const uint32_t tag = data[at];
            const uint64_t size = std::min<uint64_t>(data[at + 1], data.size() - at - 2);
            std::string text;
            std::string hex;
            for (uint64_t i = 0; i < size; i++) {
                const uint8_t c = data[at + 2 + i];
                char digits[4];
                std::snprintf(digits, sizeof digits, i ? " %02x" : "%02x", c);
                hex += digits;
                if (c >= 0x20 && c < 0x7F) text += static_cast<char>(c);
            }
            const bool is_text = tag == 0x05 || tag == 0x0A || tag == 0x48;
            char name[40];
            std::snprintf(name, sizeof name, "descriptor %02x", tag);
            std::string shown;
            if (is_text && !text.empty()) shown.append("'").append(text).append("' ");
            add(node, name_of(kDescriptors, tag, name), shown.append(hex));
            at += 2 + size;
        }
    }

    void show() {
        for (const auto &[pid, section] : wanted_) {
            if (!section.complete) continue;
            const Bytes bytes(section.bytes.data(), section.bytes.size());
            if (pid == 0) {
                add(root_, "transport stream", std::to_string(big16(bytes, 3)));
            } else if (pid == 0x11 && bytes[0] == 0x42) {
                services(bytes);
            } else if (bytes[0] == 0x02) {
                program(pid, bytes);
            }
        }
    }

    void program(uint32_t pid, Bytes bytes) {
        FieldNode &node = add(root_, "program " + std::to_string(big16(bytes, 3)), "");
        add(node, "PID of its map", std::to_string(pid));
        add(node, "PID of its clock", std::to_string(big16(bytes, 8) & 0x1FFFU));
        const uint64_t end = bytes.size() - std::min<uint64_t>(bytes.size(), 4);
        uint64_t at = 12 + (big16(bytes, 10) & 0x0FFFU);
        descriptors(node, bytes.sub(12, std::min(at, end) - std::min<uint64_t>(12, end)));
        while (at + 5 <= end) {
            const uint64_t size = big16(bytes, at + 3) & 0x0FFFU;
            FieldNode &stream = add(node, "stream " + std::to_string(big16(bytes, at + 1) & 0x1FFFU), "");
            char type[40];
            std::snprintf(type, sizeof type, "%02x", bytes[at]);
            add(stream, "type", type + std::string(" ") + name_of(kStreamTypes, bytes[at], "unknown"));
            descriptors(stream, bytes.sub(at + 5, std::min(size, end - at - 5)));
            at += 5 + size;
        }
    }

    void services(Bytes bytes) {
        const uint64_t end = bytes.size() - std::min<uint64_t>(bytes.size(), 4);
        for (uint64_t at = 11; at + 5 <= end;) {
            const uint64_t size = big16(bytes, at + 3) & 0x0FFFU;
            FieldNode &node = add(root_, "service " + std::to_string(big16(bytes, at)), "");
            descriptors(node, bytes.sub(at + 5, std::min(size, end - at - 5)));
            at += 5 + size;
        }
    }

    Input &input_;
    FieldNode &root_;
    TextPool &pool_;
    std::map<uint32_t, Section> wanted_;  // by PID
};

}  // namespace

void add_programs(const std::string &path, FieldNode &root, TextPool &pool) {
    Input input(path.c_str());
    if (input.open(kPacket)) Programs(input, root, pool).read();
}
