#include "main/facts.h"

#include <cerrno>
#include <cstdio>
#include <cstring>

#include "common/link.h"
#include "main/formats.h"

Facts facts(Input &input) {
    if (!input.open(kDetectionSize)) {
        Facts facts;
        facts.problem = std::strerror(errno);
        return facts;
    }
    DumpOptions none{};
    const formats::File in{none, input, input.name(), 0, true, input.bytes(0, kDetectionSize)};
    const uint64_t size = input.size();
    for (const formats::Format &format : formats::kFormats<true>) {
        if (!formats::recognises(format, in)) continue;
        Facts facts;
        facts.format = format.name;
        facts.extent.present = size;
        if (format.facts) format.facts(input, facts);
        if (!facts.format.empty()) return facts;  // else it was noise
    }
    Facts facts;
    facts.extent.present = size;
    char text[40];
    std::snprintf(text, sizeof text, "unknown format, %02x %02x %02x %02x", in.head[0], in.head[1],
                  in.head[2], in.head[3]);
    facts.problem = input.end() == 0 ? "empty" : text;
    return facts;
}

Facts facts(const char *path) {
    Link link;
    Input input(path, &link);
    return facts(input);
}
