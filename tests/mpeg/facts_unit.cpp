#include <gtest/gtest.h>

#include "support/bytes_of.h"
#include "support/command.h"
#include "support/facts_text.h"

TEST(MpegFacts, Samples) {
    Transcript transcript;
    const std::string directory = std::string(KELDUMP_SAMPLES) + "/mpeg/";
    for (const char *name : {"program.vob", "program1.mpg", "transport.ts", "video.m2v", "video1.m1v"}) {
        const std::string content = content_of(directory + name);
        SHOW(name + std::string(": ") + facts_of(content));
        SHOW(facts_of(content.substr(0, content.size() - 100)));
        SHOW(facts_of(content.substr(0, content.size() / 2) + std::string(content.size() / 2, '\0')));
    }
}

// Packets that are longer: a time code before each, or parity behind it.
TEST(MpegFacts, TransportPackets) {
    const std::string packets = content_of(std::string(KELDUMP_SAMPLES) + "/mpeg/transport.ts");
    const std::string plain = facts_of(packets);
    std::string timed;
    std::string protected_ones;
    for (size_t at = 0; at + 188 <= packets.size(); at += 188) {
        timed += "time" + packets.substr(at, 188);
        protected_ones += packets.substr(at, 188) + std::string(16, 'p');
    }
    EXPECT_EQ(facts_of(timed), "MPEG-TS 192-byte packets" + plain.substr(7));
    EXPECT_EQ(facts_of(protected_ones), "MPEG-TS 204-byte packets" + plain.substr(7));
}
