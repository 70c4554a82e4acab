// The walk over the start codes of a program stream or video elementary stream.
#include <algorithm>
#include <bit>
#include <cstdio>

#include "common/print.h"
#include "common/stream.h"
#include "mpeg/headers.h"
#include "mpeg/mpeg.h"
#include "mpeg/names.h"

namespace {

constexpr int64_t kQuietLimit = 0x100000;  // where the dump stops without -v
constexpr uint32_t kFirstSystemId = 0xB0;
constexpr uint32_t kFirstPesId = 0xBD;

struct StartCode {
    uint32_t id;
    int64_t position;  // of the first byte of 00 00 01
    uint32_t length;   // of the packet; 0 for none
    char name[25];
};

// Moves behind a start code prefix; false when what stands there is none.
bool find_start_code(mpeg_reader &reader) {
    int64_t zeros = 0;
    for (ByteRun run = mpegrun(reader); run.size > 0; run = mpegrun(reader)) {
        const uint8_t *end = run.bytes + run.size;
        const uint8_t *other = std::find_if(run.bytes, end, [](uint8_t byte) { return byte != 0; });
        zeros += other - run.bytes;
        const bool found = other != end && *other == 1 && zeros >= 2;
        mpegbytes(reader, std::min<int64_t>(other - run.bytes + 1, run.size));
        if (other != end) return found;
    }
    return false;
}

// Passes over a slice: moves to the prefix of the next start code, of which two zero bytes and the byte with
// the one bit are left. A prefix is a run of 23 zero bits; it is looked at once a byte, at the bit where the
// run's 23rd (31st, ...) bit ends, and holds when that byte has the one bit still ahead.
void skip_slice(mpeg_reader &reader) {
    constexpr int64_t kPrefixBits = 23;
    int64_t zeros = 0;  // bits of the run so far
    int start_bit = 0;  // place in its byte where the run begins
    for (ByteRun run = mpegrun(reader); run.size > 0; run = mpegrun(reader)) {
        for (int64_t i = 0; i < run.size; i++) {
            const uint8_t byte = run.bytes[i];
            if (byte == 0) {
                zeros += 8;
                continue;
            }
            const int one_bit = std::countl_zero(byte);
            const int look = (start_bit + 7) % 8;
            if (look <= one_bit && zeros + look >= kPrefixBits) {
                mpegseek(reader, reader.position + i - 2);
                return;
            }
            zeros = std::countr_zero(byte);
            start_bit = static_cast<int>((8 - zeros) % 8);
        }
        mpegbytes(reader, run.size);
    }
}

void print_line(const StartCode &code, const char *clock, const char *end) {
    print("stream %08x/%04d - %s - %s%s\n", 0x100 + code.id, code.length, clock, code.name, own(end));
}

Status dump_system_code(const DumpOptions &opts, mpeg_reader &reader, const StartCode &code,
                        SystemTime &system_time, char *clock) {
    print_line(code, clock, " ");
    switch (code.id) {
        case 0x00: return print_picture_header(reader);
        case 0xB3: return print_sequence_header(reader);
        case 0xB5: return print_extension(reader);
        case 0xB8: return print_group_of_pictures(reader);
        case 0xB9: return Status::end_of_program;
        case 0xBA: return print_pack_header(opts, reader, system_time, clock);
        case 0xBB: return print_system_header(reader);
        case 0xBC: return print_program_stream_map(reader);
        default: mpegerror(reader, "Unknown TAG"); return Status::error;
    }
}

bool has_pes_header(uint32_t id) {
    switch (id) {
        case 0xBE:  // padding
        case 0xBF:  // private stream 2
        case 0xF0:  // ECM
        case 0xF1:  // EMM
        case 0xF2:  // DSM-CC
        case 0xF8:  // H.222.1 type E
        case 0xFF:  // program stream directory
            return false;
        default: return true;
    }
}

Status dump_pes_packet(const DumpOptions &opts, mpeg_reader &reader, const StartCode &code,
                       const char *clock) {
    print("stream %08x/%04d - %s - %s %d\n", 0x100 + code.id, code.length, clock, code.name, code.length);
    return has_pes_header(code.id) ? print_pes_header(opts, reader) : Status::go_on;
}

}  // namespace

void mpegdump(DumpOptions &opts, Input &input, int64_t start, char *text) {
    print("Fileformat:MPEG\n");
    mpeg_reader reader;
    mpegbufferinit(reader, input, start);
    SystemTime system_time;
    while (find_start_code(reader)) {
        StartCode code{};
        code.position = mpegoffset(reader, -3);
        forget();
        also(mpegrange(reader, code.position));
        also(system_time.bytes);
        code.id = mpegbits(reader, 8);
        code.length = mpegstreamid(reader, code.name, code.id);
        int64_t end = code.length ? mpegoffset(reader, code.length) : 0;
        mpegsystemtime2string(text, system_time.microseconds);
        print("%08x:", static_cast<uint32_t>(code.position));
        behind_position();
        Status status = Status::go_on;
        if (code.id >= kFirstPesId) {
            status = dump_pes_packet(opts, reader, code, text);
        } else if (code.id >= kFirstSystemId || code.id == 0) {
            status = dump_system_code(opts, reader, code, system_time, text);
        } else {
            print_line(code, text, "");
            skip_slice(reader);
            end = 0;  // what was read as a length is the slice's own data
        }
        const bool ended = end ? mpegseek(reader, end) : mpegbytes(reader, 0);
        if (ended || status != Status::go_on) return;
        if (reader.position >= kQuietLimit && !opts.verbose) return;
    }
}
