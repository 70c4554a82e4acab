#include <gtest/gtest.h>

#include "mpeg/names.h"
#include "support/bytes_of.h"
#include "support/command.h"

TEST(Mpeg, NamesOfStreams) {
    Transcript transcript;
    std::string names;
    Input length("length", "xx", 2);
    for (unsigned id = 0; id < 256; id++) {
        mpeg_reader reader;
        mpegbufferinit(reader, length, 0);
        char name[25];
        const uint32_t size = mpegstreamid(reader, name, id);
        names += hex_digits(id) + " " + std::to_string(size) + " " + name + "\n";
    }
    mpeg_reader reader;
    mpegbufferinit(reader, length, 0);
    mpegbit(reader);
    mpegbytes(reader, 0);  // finishes the byte
    EXPECT_EQ(reader.position, 1);
    SHOW(names);
}
