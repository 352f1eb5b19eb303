#include <dmctl/exchange/Exchange.h>

#include <algorithm>
#include <random>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "fileOperator/OperatorFactory.h"
#include "fileOperator/text/TextLayout.h"

namespace td::dmctl {
namespace {

using testing::HasSubstr;
using testing::IsEmpty;

const std::string HEADER = "category,index1,index2,index3,index4,index5,field,value\n";

std::string json(const std::string& categories) {
    return R"({"format": "settings of a television", "formatVersion": 1, "categories": [)" + categories + "]}";
}

std::string modeRecord(const std::string& record) {
    return json(R"({"category": "PICTURE_MODE", "records": [)" + record + "]}");
}

/// Values of every category that the file's columns hold, the outermost ones among them; a part of them is given.
std::vector<ExchangeCategory> randomCategories(unsigned int seed, unsigned int outOfHundred) {
    std::mt19937 random(seed);
    std::vector<ExchangeCategory> categories;
    for (const CategoryLayout* layout : allLayouts()) {
        ExchangeCategory category(*layout);
        for (std::size_t cell = 0; cell < category.values.size(); ++cell) {
            if (random() % 100 >= outOfHundred)
                continue;
            const int value = static_cast<int>(random() % 0x200000) - 0x80000;
            const bool fits = text::fitsColumns(layout->keyLine, value);
            category.values[cell] = fits ? value : static_cast<int>(random() % 10000);
            category.given[cell] = true;
            ++category.count;
        }
        if (category.count > 0)
            categories.push_back(std::move(category));
    }
    return categories;
}

void expectSame(const Exchange& read, const std::vector<ExchangeCategory>& written) {
    ASSERT_THAT(read.faults, IsEmpty()) << read.faults.front().place << ": " << read.faults.front().text;
    ASSERT_EQ(read.categories.size(), written.size());
    for (std::size_t i = 0; i < written.size(); ++i) {
        EXPECT_EQ(read.categories[i].layout, written[i].layout);
        EXPECT_EQ(read.categories[i].count, written[i].count);
        EXPECT_EQ(read.categories[i].given, written[i].given) << written[i].layout->file;
        EXPECT_EQ(read.categories[i].values, written[i].values) << written[i].layout->file;
    }
}

TEST(ExchangeTest, WhatIsWrittenIsReadBackExactly) {
    for (const unsigned int outOfHundred : {1U, 5U}) {
        const std::vector<ExchangeCategory> categories = randomCategories(outOfHundred, outOfHundred);
        for (const ExchangeFormat format : {ExchangeFormat::AsJson, ExchangeFormat::AsCsv})
            expectSame(parseExchange(exchangeText(format, "current", categories)), categories);
    }
}

TEST(ExchangeTest, AnyTextOfTheSameValuesIsTaken) {
    ExchangeCategory global(*layoutOf(PICTURE_GLOBAL));
    const std::string mode = "HDMI1,MOVIE,SDR_UHD";
    const std::string expected =
        HEADER + "PICTURE_MODE," + mode + ",,,Contrast,7\nPICTURE_MODE," + mode + ",,,Hue,-9\n";
    const Exchange exchange = parseExchange(expected);
    ASSERT_THAT(exchange.faults, IsEmpty());
    EXPECT_EQ(exchange.count(), 2U);
    const std::string crlf = "\xEF\xBB\xBF" + std::string("category,index1,index2,index3,index4,index5,field,value\r\n"
                                                          "\r\n\"picture_mode\",4,\"Movie\",sdr_uhd,,,hue,-9\r\n"
                                                          "PICTURE_MODE,hdmi1,3,1,,,\"Contrast\",0007\n");
    expectSame(parseExchange(crlf), exchange.categories);
    const std::string twoParts =
        json(R"({"category": "PICTURE_MODE", "records": [{"fields": {"Hue": -9}, "record": [4, "movie", "SDR_UHD"]}]},
                {"version": "v0.4", "category": "picture_mode", "records": [
                   {"record": ["HDMI1", 3, 1], "fields": {"contrast": 7}}]})");
    expectSame(parseExchange(" \n" + twoParts), exchange.categories);
}

struct Fault {
    std::string text;  ///< the whole export
    std::string place; ///< of the only fault
    std::string words; ///< in it
};

TEST(ExchangeTest, EveryFaultIsToldWithItsPlace) {
    const std::string good = HEADER + "PICTURE_GLOBAL,,,,,,LaserScreenSize,1\n";
    const std::string record = R"({"record": ["HDMI1", "MOVIE", "SDR_UHD"], "fields": )";
    const std::vector<Fault> faults{
        {"", "line 1", "empty"},
        {"PICTURE_GLOBAL,,,,,,RGBOnly,1\n", "line 1", "has to be category,index1"},
        {good + "PICTUR_MODE,0,0,0,,,Hue,1\n", "line 3", "did you mean PICTURE_MODE"},
        {good + "PICTURE_MODE,HDMI9,0,0,,,Hue,1\n", "line 3", "unknown value of dimension source \"HDMI9\""},
        {good + "PICTURE_MODE,17,0,0,,,Hue,1\n", "line 3", "its values are 0 to 15"},
        {good + "PICTURE_MODE,-1,0,0,,,Hue,1\n", "line 3", "-1 is no value of dimension source"},
        {good + "PICTURE_MODE,0,0,,,,Hue,1\n", "line 3", "unknown value of dimension dr \"\""},
        {good + "PICTURE_MODE,0,0,0,0,,Hue,1\n", "line 3", "index4 has to be empty"},
        {good + "PICTURE_MODE,0,0,0,,,Hu,1\n", "line 3", "did you mean Hue?"},
        {good + "PICTURE_MODE,0,0,0,,,Hue,1.5\n", "line 3", "\"1.5\" is no whole number"},
        {good + "PICTURE_MODE,0,0,0,,,Hue,\n", "line 3", "is no whole number"},
        {good + "PICTURE_MODE,0,0,0,,,Hue,10000\n", "line 3", "10000 is out of range"},
        {good + "PICTURE_MODE,0,0,0,,,Hue,99999999999999999999\n", "line 3", "out of range"},
        {good + "PICTURE_MODE,0,0,0,,,Hue\n", "line 3", "the row has 7 cells; there have to be 8"},
        {good + "\nPICTURE_GLOBAL,,,,,,laserscreensize,1\n", "line 4",
         "LaserScreenSize of PICTURE_GLOBAL is given twice"},
        {good + "\"two\nlines\n\"\"\",,,,,,Hue,1\n", "line 3", "unknown category"},
        {good + "a\"b,,,,,,Hue,1\n", "line 3", "a quote stands within a cell"},
        {good + "PICTURE_GLOBAL,,,,,,RGBOnly,1", "line 3", "ends within this line"},
        {good + "\"PICTURE_GLOBAL\"x,,,,,,RGBOnly,1\n", "line 3", "without a comma"},
        {good + "\"PICTURE_GLOBAL,,,,,,RGBOnly,1\n", "line 3", "not closed"},
        {good + std::string(100000, 'x') + ",,,,,,Hue,1\n", "line 3", "too long for a name"},
        {good + "\x1b[2J,,,,,,Hue,1\n", "line 3", "\\x1b[2J"},
        {"{", "line 1", "this is no JSON"},
        {"{\n\"format\": \"\xFF\"}", "line 2", "this is no JSON"},
        {R"({"format": "x", "formatVersion": 1, "categories": []})", "/format", "has to stand here"},
        {R"({"format": "settings of a television", "formatVersion": 2, "categories": []})", "/formatVersion", "only"},
        {R"({"format": "settings of a television", "formatVersion": 1})", "/categories", "an array of objects"},
        {R"({"format": "settings of a television", "formatVersion": 1, "categories": [], "a/b~": 1})", "/a~1b~0",
         "no such member is known"},
        {json("[]"), "/categories/0", "an object has to stand here"},
        {json("{}"), "/categories/0/category", "name has to stand here"},
        {json(R"({"category": "MODE"})"), "/categories/0/category", "unknown category"},
        {json(R"({"category": "PICTURE_MODE"})"), "/categories/0/records", "an array of objects"},
        {json(R"({"category": "PICTURE_MODE", "version": "v9", "records": []})"), "/categories/0/version", "v0.4"},
        {json(R"({"category": "PICTURE_MODE", "recrods": [], "records": []})"), "/categories/0/recrods", "records"},
        {modeRecord(R"({"fields": {}})"), "/categories/0/records/0/record", "has 3 dimensions, not 0"},
        {modeRecord(R"({"record": "HDMI1", "fields": {}})"), "/categories/0/records/0/record", "an array of value"},
        {modeRecord(R"({"record": [0, 0, 1.5], "fields": {}})"), "/categories/0/records/0/record", "name or number"},
        {modeRecord(R"({"record": [0, 0, 99999999999], "fields": {}})"), "/categories/0/records/0/record", "0 to 7"},
        {modeRecord(record + "[]}"), "/categories/0/records/0/fields", "an object with the fields"},
        {modeRecord(record + "{}}, 5"), "/categories/0/records/1", "an object has to stand here"},
        {modeRecord(record + R"({"Hue": "5"}})"), "/categories/0/records/0/fields/Hue", "takes a whole number"},
        {modeRecord(record + R"({"Hue": 5e0}})"), "/categories/0/records/0/fields/Hue", "takes a whole number"},
        {modeRecord(record + R"({"Hue": 18446744073709551615}})"), "/categories/0/records/0/fields/Hue", "range"},
        {modeRecord(record + R"({"a/b": 5}})"), "/categories/0/records/0/fields/a~1b", "unknown field"},
        {modeRecord(record + R"({"Hue": 5}}, )" + record + R"({"hue": 6}})"), "/categories/0/records/1/fields/hue",
         "Hue of HDMI1, MOVIE, SDR_UHD is given twice"},
        {modeRecord(record + R"({"Hue": 5, "Color": 6, "Hue": 5}})"), "/categories/0/records/0/fields/Hue", "twice"},
        {modeRecord(R"({"record": [)" + std::string(100000, '[')),
         "/categories/0/records/0/record/0/0/0/0/0/0/0/0/0/0/0", "nested deeper"},
    };
    for (const Fault& fault : faults) {
        const Exchange exchange = parseExchange(fault.text);
        const std::string shown = fault.text.substr(0, 200);
        ASSERT_EQ(exchange.faults.size(), 1U) << shown;
        EXPECT_EQ(exchange.faults[0].place, fault.place) << shown;
        EXPECT_THAT(exchange.faults[0].text, HasSubstr(fault.words)) << shown;
        for (const char c : exchange.faults[0].text)
            EXPECT_TRUE(c >= 0x20 && c < 0x7F) << exchange.faults[0].text;
    }
}

TEST(ExchangeTest, AllFaultsAreCollectedUpToALimit) {
    std::string text = HEADER;
    for (int i = 0; i < 10; ++i)
        text += "PICTURE_MODE,0,0,0,,,Nothing,1\nPICTURE_GLOBAL,,,,,,RGBOnly,x\n";
    const Exchange some = parseExchange(text);
    EXPECT_EQ(some.faults.size(), 20U);
    EXPECT_FALSE(some.cutShort);
    for (std::size_t i = 0; i < Exchange::MAX_FAULTS; ++i)
        text += "x\n";
    const Exchange many = parseExchange(text);
    EXPECT_EQ(many.faults.size(), Exchange::MAX_FAULTS);
    EXPECT_TRUE(many.cutShort);

    const Exchange large = parseExchange(std::string(Exchange::MAX_SIZE + 1, '{'));
    ASSERT_EQ(large.faults.size(), 1U);
    EXPECT_THAT(large.faults[0].text, HasSubstr("are not read"));
}

/// The names of unknown members are the export's own, and were once shown as they are.
TEST(ExchangeTest, PlacesOfFaultsObeyNoTerminalSequence) {
    const Exchange read = parseExchange(R"({"\u001b[2J\n": 1, ")" + std::string(500, 'n') + R"(": 2})");
    ASSERT_GE(read.faults.size(), 2U);
    for (const ExchangeFault& fault : read.faults) {
        EXPECT_EQ(fault.place.find_first_of("\x1b\n"), std::string::npos) << fault.place;
        EXPECT_LT(fault.place.size(), 300U);
    }
    EXPECT_EQ(read.faults[0].place, "/\\x1b[2J\\x0a");
}

/// Whatever is cut or changed in an export: no value comes out that is not in the text.
TEST(ExchangeTest, DamagedExportsAreRefusedOrHoldLess) {
    ExchangeCategory category(*layoutOf(SOUND_EQ));
    for (std::size_t cell = 0; cell < 12; ++cell) {
        category.given[cell] = true;
        category.values[cell] = 4321;
        ++category.count;
    }
    std::mt19937 random(1);
    for (const ExchangeFormat format : {ExchangeFormat::AsJson, ExchangeFormat::AsCsv}) {
        const std::string text = exchangeText(format, "current", {category});
        for (std::size_t size = 0; size < text.size(); ++size) {
            const Exchange cut = parseExchange(text.substr(0, size));
            EXPECT_TRUE(!cut.faults.empty() || cut.count() < category.count || size + 1 == text.size()) << size;
        }
        for (std::size_t at = 0; at < text.size(); ++at) {
            std::string changed = text;
            changed[at] = static_cast<char>(random());
            const Exchange read = parseExchange(changed);
            EXPECT_LE(read.count(), category.count);
        }
    }
}

} // namespace
} // namespace td::dmctl
