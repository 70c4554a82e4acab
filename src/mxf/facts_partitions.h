// Where the parts of an MXF file are, and whether they are there (SMPTE ST 377-1, clauses 6 and 7).
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "common/facts.h"
#include "common/input.h"

// A partition pack, with places in the file.
struct Partition {
    enum Kind : uint8_t { header = 2, body = 3, footer = 4 };

    uint64_t at = 0;
    Kind kind = header;
    uint8_t status = 0;         // 1 open and incomplete, 2 closed, 3 open and complete, 4 closed and complete
    uint64_t metadata = 0;      // where header metadata begin
    uint64_t index = 0;         // behind them: index table segments
    uint64_t essence = 0;       // behind those
    uint64_t footer_place = 0;  // of the footer partition as it tells, counted from the header partition
    uint64_t this_place = 0;
    uint64_t body_offset = 0;
    uint32_t body_sid = 0;
    Bytes pattern;  // label of the operational pattern

    bool is_open() const { return status == 1 || status == 3; }
    const char *status_text() const;
};

struct Partitions {
    std::optional<Partition> header;
    std::optional<Partition> footer;
    std::vector<uint64_t> places;  // of the last ones (1,000 at most) by the random index pack
    uint64_t count = 0;            // as that says

    // Reads the packs of header and footer; a footer that is not where it should be cuts the file.
    void read(Input &input, Facts &facts);
    // Whether all is there. Of compressed essence 64 KiB are never zeros.
    void judge(Input &input, bool is_compressed, Facts &facts) const;

 private:
    uint64_t start_ = 0;  // of the header partition, behind a run-in

    void read_random_index(Input &input);
    void find_footer(Input &input, Facts &facts);
};

std::optional<Partition> partition_at(Input &input, uint64_t place);
