#include <gtest/gtest.h>

#include "mpeg/names.h"
#include "support/bytes_of.h"
#include "support/command.h"

TEST(Mpeg, NamesOfStreams) {
    Transcript transcript;
    std::string names;
    const Workplace place;
    place.write("length", "xx");
    std::FILE *file = std::fopen(place.path("length").c_str(), "rb");
    for (unsigned id = 0; id < 256; id++) {
        mpeg_reader reader;
        mpegbufferinit(reader, file, 0);
        char name[25];
        const uint32_t length = mpegstreamid(reader, name, id);
        names += hex_digits(id) + " " + std::to_string(length) + " " + name + "\n";
    }
    mpeg_reader reader;
    mpegbufferinit(reader, file, 0);
    mpegbit(reader);
    mpegbytes(reader, 0);  // finishes the byte
    EXPECT_EQ(reader.position, 1);
    std::fclose(file);
    SHOW(names);
}
