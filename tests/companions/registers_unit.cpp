#include <gtest/gtest.h>

#include <fstream>

#include "companions/registers/decode.h"
#include "mxf/klv_items.h"
#include "registers/registers.h"
#include "support/command.h"

namespace {

std::string decoded(const char *type, const std::string &hex_bytes) {
    const std::string bytes = hex(hex_bytes);
    return decoded_value(type, Bytes(bytes.data(), bytes.size()));
}

TEST(Registers, EveryRowIsFound) {
    for (const char *table : {"elements", "groups", "labels"}) {
        std::ifstream in(std::string(KELDUMP_TESTS) + "/../src/registers/data/" + table + ".tsv");
        size_t rows = 0;
        for (std::string line; std::getline(in, line);) {
            if (line[0] == '#') continue;
            const std::string bytes = hex(line.substr(0, 47));
            ASSERT_TRUE(find_register_entry({reinterpret_cast<const uint8_t *>(bytes.data()), bytes.size()}))
                << line;
            rows++;
        }
        EXPECT_GT(rows, 400U);
    }
    const std::string versions =
        hex("060E2B34 02530105 0D010101 01012800");  // a set coded otherwise, of another version
    EXPECT_STREQ(find_register_entry({reinterpret_cast<const uint8_t *>(versions.data()), 16})->symbol,
                 "CDCIDescriptor");
    EXPECT_EQ(find_register_entry({}), nullptr);
}

TEST(Registers, ValuesByTheirTypes) {
    EXPECT_EQ(decoded("UInt8", "ff") + decoded("Int8", "ff") + decoded("Int16", "8000") +
                  decoded("UInt64", "ffffffffffffffff"),
              "255-1-3276818446744073709551615");
    EXPECT_EQ(decoded("Boolean", "01") + decoded("Boolean", "00"), "truefalse");
    EXPECT_EQ(decoded("UTF16String", "0041 00e9 d83d de00 0000 0042"), "\"A\u00e9\U0001F600\"");
    EXPECT_EQ(decoded("ISO7", "656e2d55 53"), "\"en-US\"");
    EXPECT_EQ(decoded("Rational", "00005dc0 000003e9"), "\"24000/1001\"");
    EXPECT_EQ(decoded("TimeStamp", "07e8050607080901"), "\"2024-05-06T07:08:09\"");
    EXPECT_EQ(decoded("ThreeColorPrimaries", "86c43e80 33c2861a 1d4c0bb8"),
              "[[34500, 16000], [13250, 34330], [7500, 3000]]");
    EXPECT_EQ(decoded("RationalArray", "00000002 00000008 0000000100000002 0000000300000004"),
              "[\"1/2\", \"3/4\"]");
    EXPECT_EQ(decoded("AUIDSet", "00000001 00000010 060E2B34 04010101 01010101 01010000"),
              "[\"SDTICPMPEG2BaselineTemplate\"]");
    EXPECT_EQ(decoded("AUID", "00112233 44556677 8899AABB CCDDEEFF"),
              "\"00.11.22.33.44.55.66.77-88.99.aa.bb.cc.dd.ee.ff\"");
    EXPECT_EQ(decoded("HalfFloat", "3c00") + decoded("LensSerialHalfFloat", "c100") +
                  decoded("HalfFloat", "8001") + decoded("HalfFloat", "7c00"),
              "1-2.5-5.9605e-08null");
    EXPECT_EQ(decoded("TimeStruct", "0a0b0c0d") + decoded("PTPTimestamp", "0001 00000002 00000003"),
              "\"10:11:12.13\"\"4294967298.000000003\"");
    EXPECT_EQ(decoded("J2KExtendedCapabilities", "00020000 00000001 00000002 0005") +
                  decoded("J2KExtendedCapabilities", "00020000 0005"),
              "{\"Pcap\": 131072, \"Ccap\": [5]}{\"Pcap\": 131072, \"Ccap\": [5]}");
    // Bytes with the head of an array, without one, and of a record that another standard lays out.
    EXPECT_EQ(decoded("UInt8Array", "00000002 00000001 0102") + decoded("DataValue", "0102") +
                  decoded("GeographicCoordinate", "0a0b"),
              "[1, 2]\"0102\"\"0a0b\"");
    EXPECT_EQ(
        decoded("UInt32", "") + decoded("RationalArray", "00000002 00000003 0102") + decoded("no type", "01"),
        "");
    EXPECT_EQ(decoded("RationalArray", "ffffffff 00000008 0000000100000002"), "[\"1/2\"]");
}

// A tag, a label and a set that came after the dump's dictionaries.
TEST(Registers, LinesOfAnMxf) {
    const Workplace place;
    const std::string attribute = "060E2B34 0101010E 03020102 26000000";
    const std::string specifications = "060E2B34 0101010E 01020210 02040000";
    const std::string dictionary = "060E2B34 0101010E 01030701 01000000";  // a number to the dump
    const std::string language = "060E2B34 0101010D 03010102 03150000";    // a text of 16 bits to the dump
    const std::string primer = item(kPrimer, big()
                                                 .u32(4, 18)
                                                 .u16(0x8001)
                                                 .hex(attribute)
                                                 .u16(0x8002)
                                                 .hex(specifications)
                                                 .u16(0x8003)
                                                 .hex(dictionary)
                                                 .u16(0x8004)
                                                 .hex(language)
                                                 .str());
    const std::string partition = item("060E2B34 02050101 0D010201 01020400", std::string(88, '\0'));
    const auto set_of_today = [](const std::string &attributes, const std::string &code,
                                 const std::string &tongue) {
        return item("060E2B34 02530101 0D010101 01016B00",
                    local(0x8001, attributes) +
                        local(0x8002, hex("00000001 00000010 060E2B34 04010101 01010101 01010000")) +
                        local(0x8003, hex("060E2B34 04010101 01010101 0101" + code + "00")) +
                        local(0x8004, tongue));
    };
    place.write("a.mxf", partition + primer + set_of_today("en", "01", "fr-CA"));
    place.write("b.mxf", partition + primer + set_of_today("de", "7F", "fr-FR"));
    const std::string json = place.run({"--lines", "a.mxf"}, "keldump-json").out;
    for (const char *part :
         {"\"name\": \"MCASpokenLanguageAttribute\"", "\"decoded\": \"en\"",
          "\"name\": \"MCALabelDictionaryID\"", "\"decoded\": \"SDTICPMPEG2ExtendedTemplate\"",
          "\"name\": \"RFC5646SpokenLanguage\"", "\"decoded\": \"fr-CA\"",
          "\"name\": \"ConformsToSpecifications\"", "\"decoded\": [\"SDTICPMPEG2BaselineTemplate\"]",
          "\"name\": \"AudioChannelLabelSubDescriptor\""})
        EXPECT_NE(json.find(part), std::string::npos) << part << "\n" << json;
    const std::string differences = place.run({"a.mxf", "b.mxf"}, "keldump-diff").out;
    EXPECT_EQ(differences.substr(differences.find("Audio")),
              "AudioChannelLabelSubDescriptor\n"
              "  MCASpokenLanguageAttribute: en -> de\n"
              "  MCALabelDictionaryID: SDTICPMPEG2ExtendedTemplate -> "
              "06.0e.2b.34.04.01.01.01-01.01.01.01.01.01.7f.00\n"
              "  RFC5646SpokenLanguage: fr-CA -> fr-FR\n");
}

}  // namespace
