#include <algorithm>
#include <cctype>
#include <chrono>
#include <cstdio>
#include <iterator>
#include <string_view>

#include "audio/facts_riff.h"
#include "common/codecs.h"
#include "common/elementary.h"
#include "common/names.h"
#include "common/values.h"
#include "main/facts_of.h"

namespace {

// Sizes that stand for "to the end": of what was written to a pipe, whose header nobody could come back to.
bool is_streamed(uint64_t size) {
    return size == 0xFFFFFFFF ||
           (size >= 0x7F000000 && size <= 0x7FFFFFFF && (size < 0x7F000100 || size >= 0x7FFFE000));
}

// The text of an element of XML, without its children; empty where there is none.
std::string element(std::string_view xml, std::string_view name) {
    const std::string open = "<" + std::string(name) + ">";
    const size_t start = xml.find(open);
    if (start == std::string_view::npos) return "";
    std::string_view text = xml.substr(start + open.size());
    text = text.substr(0, std::min<size_t>(text.find('<'), 256));
    std::string plain;
    while (!text.empty()) {
        constexpr std::pair<std::string_view, char> kEntities[] = {
            {"&amp;", '&'}, {"&lt;", '<'}, {"&gt;", '>'}, {"&quot;", '"'}, {"&apos;", '\''}};
        const auto *entity =
            std::ranges::find_if(kEntities, [&](const auto &e) { return text.starts_with(e.first); });
        const bool is_entity = entity != std::end(kEntities);
        plain += is_entity ? entity->second : text.front();
        text.remove_prefix(is_entity ? entity->first.size() : 1);
    }
    return fixed_text(Bytes(plain.data(), plain.size()), 0, plain.size());
}

int64_t number_of(std::string_view text) {
    int64_t value = 0;
    for (const char c : text) {
        if (c < '0' || c > '9' || value > INT64_MAX / 20) break;
        value = value * 10 + (c - '0');
    }
    return value;
}

struct Wave {
    Input &input;
    Facts &facts;
    Sound sound = {};
    uint64_t block = 0;  // bytes of a sample of all channels
    uint64_t data_start = 0;
    uint64_t data_size = 0;
    bool has_data = false;
    bool is_streamed = false;
    bool is_open = false;
    int64_t told_samples = -1;  // of a fact chunk, or ds64
    Bytes large = {};           // ds64
    uint64_t last_end = 0;      // of chunks that are known to be some
    bool has_bext = false;
    int64_t time_reference = -1;
    std::string originator = {};
    std::string xml = {};
};

std::string loudness(Bytes bext, uint64_t offset, const char *unit) {
    const int16_t value = static_cast<int16_t>(little16(bext, offset));
    if (value == 0x7FFF) return "";
    char text[32];
    std::snprintf(text, sizeof text, "%.2f %s", value / 100.0, unit);
    return text;
}

// The broadcast extension (EBU Tech 3285).
void read_bext(Bytes bext, Wave &wave) {
    if (bext.size() < 346) return;
    Facts &facts = wave.facts;
    wave.has_bext = true;
    wave.time_reference = static_cast<int64_t>(std::min<uint64_t>(little64(bext, 338), INT64_MAX));
    wave.originator = fixed_text(bext, 256, 32);
    facts.date = iso_date_in(fixed_text(bext, 320, 10) + " " + fixed_text(bext, 330, 8));
    facts.add_more("description", fixed_text(bext, 0, 256));
    facts.add_more("originator", wave.originator);
    facts.add_more("originator reference", fixed_text(bext, 288, 32));
    const unsigned version = little16(bext, 346);
    std::string umid = hex_text(bext.sub(348, version >= 1 ? 64 : 0));
    std::ranges::transform(umid, umid.begin(), [](char c) { return static_cast<char>(std::toupper(c)); });
    if (umid.ends_with(std::string(64, '0'))) umid.resize(64);  // a basic one
    if (umid.find_first_not_of('0') != std::string::npos) facts.add_more("UMID", umid);
    if (version < 2) return;
    facts.add_more("loudness", loudness(bext, 412, "LUFS"));
    facts.add_more("loudness range", loudness(bext, 414, "LU"));
    facts.add_more("true peak", loudness(bext, 416, "dBTP"));
    facts.add_more("momentary loudness", loudness(bext, 418, "LUFS"));
    facts.add_more("short-term loudness", loudness(bext, 420, "LUFS"));
}

// What has no room in a chunk's size (EBU Tech 3306): of the data, and of others in a table.
uint64_t large_size(uint32_t type, Bytes ds64) {
    if (type == fourcc("data")) return little64(ds64, 8);
    for (uint64_t i = 0; i < little32(ds64, 24) && ds64.has(28 + 12 * i, 12); i++) {
        if (big32(ds64, 28 + 12 * i) == type) return little64(ds64, 32 + 12 * i);
    }
    return 0;
}

void read_ds64(Bytes ds64, Wave &wave) {
    wave.large = ds64;
    if (little64(ds64, 16) > 0 && little64(ds64, 16) < INT64_MAX)
        wave.told_samples = static_cast<int64_t>(little64(ds64, 16));
}

void read_info(Bytes list, Wave &wave) {
    if (!bytes_are(list, 0, "INFO")) return;
    each_chunk(list, 4, list.size(), false, [&](const Chunk &chunk) {
        const std::string text = fixed_text(chunk.data, 0, 256);
        if (chunk.type == fourcc("ISFT")) wave.facts.writer = text;
        if (chunk.type == fourcc("ICRD") && wave.facts.date.empty()) wave.facts.date = iso_date_in(text);
        if (chunk.type == fourcc("INAM")) wave.facts.add_more("title", text);
        return true;
    });
}

void set_data(const Chunk &chunk, uint64_t size, Wave &wave) {
    const uint64_t file_size = wave.input.size();
    wave.has_data = true;
    wave.data_start = chunk.start;
    wave.data_size = size;
    const uint64_t rest = file_size - std::min(file_size, chunk.start);
    wave.is_streamed = is_streamed(size) && size > rest;
    // No size yet, and no chunk where the next one would be.
    wave.is_open = size == 0 && rest >= 8 &&
                   !(wave.input.bytes()[chunk.start] >= 0x20 && wave.input.bytes()[chunk.start + 3] >= 0x20 &&
                     little32(wave.input.bytes(), chunk.start + 4) <= rest);
    if (wave.is_streamed || wave.is_open) wave.data_size = rest;
}

constexpr int64_t kHighestRate = 50'000'000;  // samples a second; eight times DSD's first are 22.6 million

// The start: samples since midnight, as frames where the rate of the time code is told (iXML).
void set_timecode(Wave &wave) {
    const int64_t rate = wave.sound.rate.n;
    int64_t samples = wave.time_reference;
    std::string place = "bext";
    const std::string low_text = element(wave.xml, "TIMESTAMP_SAMPLES_SINCE_MIDNIGHT_LO");
    const int64_t low = number_of(low_text);
    const int64_t high = number_of(element(wave.xml, "TIMESTAMP_SAMPLES_SINCE_MIDNIGHT_HI"));
    if (samples < 0 && !low_text.empty() && low <= UINT32_MAX && high <= INT32_MAX) {
        samples = (high << 32) + low;
        place = "iXML";
    }
    const int64_t told = number_of(element(wave.xml, "TIMESTAMP_SAMPLE_RATE"));
    const int64_t clock = told > 0 && place == "iXML" ? told : rate;
    if (samples < 0 || clock <= 0 || clock > kHighestRate || samples / clock > 7 * 86400) return;
    const std::string rate_text = element(wave.xml, "TIMECODE_RATE");
    const size_t slash = rate_text.find('/');
    const Ratio frames{number_of(rate_text), slash == rate_text.npos
                                                 ? 1
                                                 : number_of(std::string_view(rate_text).substr(slash + 1))};
    FileTimecode timecode;
    timecode.place = place;
    if (frames.is_set() && frames.n < 250000 && frames.d < 10000 && base_of(frames) > 0) {
        timecode.base = base_of(frames);
        timecode.drop = element(wave.xml, "TIMECODE_FLAG") == "DF" && timecode.base % 30 == 0;
        // What begins with a frame was cut to a sample.
        timecode.frames = samples == 0 ? 0 : (samples + 1) * frames.n / (frames.d * clock);
    } else {
        char text[48];
        const std::chrono::hh_mm_ss since(std::chrono::seconds(samples / clock));
        std::snprintf(text, sizeof text, "%02d:%02d:%02d.%03d", static_cast<int>(since.hours().count()),
                      static_cast<int>(since.minutes().count()), static_cast<int>(since.seconds().count()),
                      static_cast<int>(samples % clock * 1000 / clock));
        timecode.digits = text;
    }
    wave.facts.add(timecode);
}

void read_ixml(Wave &wave) {
    Facts &facts = wave.facts;
    const std::string_view xml = wave.xml;
    facts.reel = element(xml, "TAPE");
    constexpr std::pair<const char *, std::string_view> kElements[] = {{"project", "PROJECT"},
                                                                       {"scene", "SCENE"},
                                                                       {"take", "TAKE"},
                                                                       {"note", "NOTE"},
                                                                       {"user bits", "UBITS"}};
    for (const auto &[name, tag] : kElements) facts.add_more(name, element(xml, tag));
    std::string names;
    size_t at = xml.find("<TRACK_LIST>");
    while (at != std::string_view::npos && (at = xml.find("<TRACK>", at)) != std::string_view::npos) {
        const size_t end = xml.find("</TRACK>", at);
        const std::string name = element(xml.substr(at, end - at), "NAME");
        append(names, name);
        at = end;
    }
    facts.add_more("tracks", names);
}

void judge_wave(Wave &wave) {
    const uint64_t end = wave.data_size < INT64_MAX ? wave.data_start + wave.data_size : INT64_MAX;
    Facts &facts = wave.facts;
    const bool is_coded = wave.block == 0 && !wave.sound.codec.ends_with("ADPCM");
    if (!wave.has_data) return facts.cut(wave.input.size(), "no data");
    if (wave.is_open) return facts.open("no sizes");
    if (!wave.is_streamed) facts.reaches(end, "the end of the data");
    // Some sizes count a pad byte that is not there.
    if (wave.last_end > std::max(end, wave.input.size() + 1)) facts.cut(wave.last_end, "the last chunk");
    if (facts.extent.state != Extent::cut && is_coded && is_unwritten(wave.input, wave.data_start, end))
        facts.cut(end, "the end of the data (zeros)");
}

void read_wave(Wave &wave) {
    const Bytes file = wave.input.bytes();
    each_chunk(file, 12, file.size(), false, [&](Chunk &chunk) {
        constexpr std::string_view kOthers = "LISTbextiXMLaxmlchnalevlcue PEAKJUNKid3 ID3 smplinst_PMXumid";
        const uint64_t large = chunk.end - chunk.start == 0xFFFFFFFF ? large_size(chunk.type, wave.large) : 0;
        if (large > 0) chunk.end = chunk.start + std::min<uint64_t>(large, INT64_MAX);
        const Bytes data = chunk.data.sub(0, chunk.end - chunk.start);
        if (kOthers.find(type_characters(chunk.type)) % 4 == 0) wave.last_end = chunk.end;
        switch (chunk.type) {
            case fourcc("ds64"): read_ds64(data, wave); break;
            case fourcc("fmt "): wave.block = wave_format(data, wave.sound); break;
            case fourcc("bext"): read_bext(data, wave); break;
            case fourcc("LIST"): read_info(data, wave); break;
            case fourcc("iXML"): {
                const auto text = wave.input.present(chunk.start, std::min<uint64_t>(data.size(), 1 << 18))
                                      .span(0, 1 << 18);
                wave.xml.assign(text.begin(), text.end());
                break;
            }
            case fourcc("fact"):
                // 0 stands where the number was never written.
                if (wave.told_samples < 0 && data.size() >= 4 && little32(data) > 0)
                    wave.told_samples = little32(data);
                break;
            case fourcc("data"): {
                set_data(chunk, chunk.end - chunk.start, wave);
                chunk.end = chunk.start + std::min<uint64_t>(wave.data_size, INT64_MAX);
                break;
            }
            default: break;
        }
        return true;
    });
    Facts &facts = wave.facts;
    const uint64_t present = std::min(wave.data_size, file.size() - std::min(file.size(), wave.data_start));
    if (wave.block > 0 && wave.has_data) {
        const uint64_t bytes = wave.is_streamed || wave.is_open ? present : wave.data_size;
        wave.sound.samples = static_cast<int64_t>(std::min<uint64_t>(bytes / wave.block, INT64_MAX));
    } else if (wave.told_samples >= 0 && wave.told_samples != 0xFFFFFFFF && !wave.is_streamed) {
        wave.sound.samples = wave.told_samples;
    }
    facts.lasts(wave.sound.samples, wave.sound.rate);
    if (wave.block == 0) {
        const int64_t told = wave.sound.bit_rate;
        stream_sound(wave.input.present(wave.data_start, 4096), wave.sound);
        wave.sound.bit_rate = told >= 0 ? told : bit_rate_of(wave.data_size, facts.duration);
    }
    facts.format = wave.has_bext ? "BWF" : "WAVE";
    set_timecode(wave);
    read_ixml(wave);
    if (facts.writer.empty()) facts.writer = wave.originator;
    if (wave.sound.channels > 0) {
        facts.sounds.push_back(wave.sound);
    } else {
        facts.problem = "no format chunk";
    }
    judge_wave(wave);
}

}  // namespace

uint64_t wave_format(Bytes format, Sound &sound) {
    uint32_t tag = little16(format);
    sound.channels = little16(format, 2);
    sound.rate = {little32(format, 4), 1};
    uint64_t block = little16(format, 12);
    sound.bits = little16(format, 14);
    const uint32_t stored = sound.bits;
    if (tag == 0xFFFE && format.size() >= 40) {
        tag = little32(format, 24);
        if (const uint32_t valid = little16(format, 18); valid > 0 && valid <= stored) sound.bits = valid;
        sound.layout = speaker_layout(little32(format, 20), sound.channels);
    }
    char other[32];
    std::snprintf(other, sizeof other, "0x%04X", tag);
    const char *name = wave_codec(tag);
    sound.codec = name[0] != 0 ? name : other;
    if (tag == 1 || tag == 3 || tag == 6 || tag == 7) {
        const uint64_t packed = uint64_t{sound.channels} * ((stored + 7) / 8);
        if (block < packed) block = packed;
        if (sound.bits != stored)
            sound.bit_rate = bit_rate_of(block * static_cast<uint64_t>(sound.rate.n), {1, 1});
        return block;
    }
    if (!sound.codec.ends_with("ADPCM")) sound.bits = 0;
    stream_sound({}, sound, format.from(tag == little16(format) ? 18 : 40));
    if (const int64_t bytes = little32(format, 8); bytes > 0) sound.bit_rate = bytes * 8;
    return 0;
}

void riff_facts(Input &input, Facts &facts) {
    const Bytes head = input.bytes(0, 16);
    if (bytes_are(head, 8, "AVI ")) {
        avi_facts(input, facts);
    } else if (bytes_are(head, 8, "WAVE")) {
        if (!bytes_are(head, 0, "RIFF")) facts.variant = fixed_text(head, 0, 4);
        Wave wave{input, facts};
        read_wave(wave);
    } else {
        facts.variant = fixed_text(head, 8, 4);
    }
}
