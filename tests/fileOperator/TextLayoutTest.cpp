// The text of a settings file against literal text.

#include <climits>
#include <cstring>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include <dataModule/fileOperator/FileUserPictureGlobal.h>
#include <dataModule/fileOperator/FileUserPictureMode.h>

#include "fileOperator/Axes.h"
#include "fileOperator/table/SnapshotFloor.h"
#include "fileOperator/text/TextLayout.h"

namespace td {
namespace {

constexpr const char* EDGE = "#----------------------- Description -------------------------------------#\n";

/// A comment line: '#', the text, blanks, '#' as the 75th character.
std::string comment(const std::string& text) {
    return "#" + text + std::string(73 - text.size(), ' ') + "#\n";
}

/// One hexadecimal index and one of 20 levels, as a single character.
const CategoryLayout& levelLayout() {
    static const CategoryLayout layout{
        .category = PICTURE_WB_20_POINT,
        .file = "levels.ini",
        .version = "v0.1",
        .purpose = "The file is used by a test",
        .dimensions = {axis::source("source       scope:0~16"), axis::level(20, "level        scope:0~19")},
        .fields = {{"Red", 0}, {"Green", 1}}};
    return layout;
}

// --- what is no layout ---

TEST(CategoryLayout, RefusesNonsenseByNameOfTheCategory) {
    const Dimension four{.name = "four", .heading = "four", .count = 4};
    Field overfull{"Red", 0};
    overfull.defaultValue = 10000;
    struct Case {
        const char* says;
        std::vector<Dimension> dimensions;
        std::vector<Field> fields;
        KeyLineForm keyLine = KeyLineForm::Decimal4;
        unsigned axes = 0;
        const char* version = "v0.1";
    };
    const char* const LONGEST = "ABCDEFGHIJKLMNOPQRSTUVWX";
    const Case cases[] = {
        {"", {four}, {{LONGEST, 0}}},
        {"too many dimensions", {four, four, four, four, four, four}, {{"Red", 0}}},
        {"one character", {{.name = "none", .heading = "none", .count = 0}}, {{"Red", 0}}},
        {"one character", {{.name = "many", .heading = "many", .count = 17}}, {{"Red", 0}}},
        {"without a name", {{.count = 4}}, {{"Red", 0}}},
        {"no fields", {four}, {}},
        {"its column", {four}, {{LONGEST, 0}}, KeyLineForm::Decimal5},
        {"its column", {four}, {{"Two words", 0}}},
        {"of another", {four}, {{"Red", 0}, {"Green", 0}}},
        {"of another", {four}, {{"Red", 0}, {"Red", 1}}},
        {"of another", {four}, {{"Red", 1}}},
        {"its columns", {four}, {overfull}},
        {"sweeps over", {four}, {{"Red", 0}}, KeyLineForm::Decimal4, axisBit(1)},
        {"version", {four}, {{"Red", 0}}, KeyLineForm::Decimal4, 0, "v0.12345"},
    };
    for (const Case& one : cases) {
        std::string said;
        try {
            const CategoryLayout layout{.category = PICTURE_YRANGE,
                                        .file = "levels.ini",
                                        .version = one.version,
                                        .purpose = "The file is used by a test",
                                        .dimensions = one.dimensions,
                                        .fields = one.fields,
                                        .keyLine = one.keyLine,
                                        .applyToAllModes = {.axes = one.axes}};
        } catch (const std::logic_error& error) {
            said = error.what();
        }
        EXPECT_EQ(said.empty(), *one.says == '\0') << said;
        EXPECT_NE(said.find(one.says), std::string::npos) << one.says << ": " << said;
        EXPECT_EQ(said.empty(), said.find("PICTURE_YRANGE") == std::string::npos) << said;
    }
}

// --- comment block ---

TEST(TextLayout, WritesTheCommentBlockWithoutDimensionsAndWithLevels) {
    const std::string global = text::commentBlock(FileUserPictureGlobal::layout());
    EXPECT_EQ(global, EDGE + comment(" pupose:") +
                          comment("   --  The file is used to define the global data for user picture") +
                          comment("   [Global]: No dimension") + comment("") + EDGE);
    const std::string levels = text::commentBlock(levelLayout());
    EXPECT_NE(levels.find(comment("       i--LEVEL18") + comment("       j--LEVEL19") + EDGE), std::string::npos);
    EXPECT_EQ(levels.size() % 76, 0U);
}

// --- summary ---

TEST(TextLayout, WritesTheSummary) {
    const std::string expected = "[Summary]\n"
                                 "SN                       = TVTYPE01        \n"
                                 "Version                  = v0.4    \n"
                                 "CRC                      = 0x5d1c09e3\n";
    EXPECT_EQ(text::summary("TVTYPE01", "v0.4", 0x5d1c09e3, true), expected);
    EXPECT_EQ(text::summary("TVTYPE01", "v0.4", 0x5d1c09e3, false), expected.substr(10));
    EXPECT_EQ(expected.size(), 128U);
    // Whatever the manager says, the block keeps its length: it is rewritten in place.
    EXPECT_EQ(text::summary("a type much longer than the column", "v0.4.5.6.7.8", 0, true).size(), 128U);
    EXPECT_EQ(text::summary("SIXTEEN-IN-WIDTH", "EIGHT-8-", 0, false).substr(0, 80),
              "SN                       = SIXTEEN-IN-WIDTH\nVersion                  = EIGHT-8-\n");
    EXPECT_EQ(text::summary("", "", 0xff, true).substr(90), "CRC                      = 0x000000ff\n");
}

TEST(TextLayout, ReadsSummaryLines) {
    const std::vector<std::pair<std::string, std::string>> cases{
        {"SN                       = TVTYPE01        \n", "TVTYPE01"},
        {"SN = X\n", "X"},
        {"SN =X", "X"},
        {"SN=X", ""},
        {"SN                       =                 \n", ""},
        {"SN                       = two words      \n", "two"},
        {"SN                       = 12345678901234567890\n", "1234567890123456"},
        {"SN\n", ""},
        {"", ""},
    };
    for (const auto& [line, value] : cases) {
        char out[text::TV_TYPE_WIDTH + 1] = "unset";
        text::parseSummaryText(line.c_str(), text::TV_TYPE_WIDTH, out);
        EXPECT_EQ(out, value) << line;
    }
    unsigned int crc = 0;
    for (const char* line : {"CRC                      = 0x5d1c09e3\n", "CRC                      = 0x5D1C09E3\n",
                             "CRC = 0x5d1c09e3", "CRC                      = 0x5d1c09e3ffff\n"}) {
        EXPECT_TRUE(text::parseCrc(line, crc)) << line;
        EXPECT_EQ(crc, 0x5d1c09e3U) << line;
        crc = 0;
    }
    EXPECT_TRUE(text::parseCrc("CRC                      = 0x0x5d1c09e3\n", crc)) << "as scanf reads it";
    EXPECT_EQ(crc, 0x5d1c09U);
    crc = 0;
    for (const char* line : {"CRC                      = 5d1c09e3\n", "CRC\n", "CRC = 0x\n", "CRC = 0xzz\n", ""})
        EXPECT_FALSE(text::parseCrc(line, crc)) << line;
    EXPECT_EQ(crc, 0U);
}

// --- section ids ---

TEST(TextLayout, WritesSectionIds) {
    const int high[] = {15, 11, 7};
    const int level[] = {3, 19};
    EXPECT_EQ(text::sectionId(FileUserPictureMode::layout(), high), "[fb7]");
    EXPECT_EQ(text::sectionId(FileUserPictureGlobal::layout(), nullptr), "[Global]");
    EXPECT_EQ(text::sectionId(levelLayout(), level), "[3j]");

    char out[16];
    EXPECT_EQ(text::formatSectionId(FileUserPictureMode::layout(), high, out, sizeof out), 6);
    EXPECT_STREQ(out, "[fb7]\n");
    EXPECT_EQ(text::formatSectionId(FileUserPictureGlobal::layout(), nullptr, out, 4), 9);
    EXPECT_STREQ(out, "[Gl") << "cut as by snprintf";
}

TEST(TextLayout, ReadsSectionIds) {
    for (const char* line : {"[3a7]\n", "[3A7]\n", "[ 3\ta 7]\n", "[3a7", "[3a7] and more\n", "[3a7x"}) {
        int indices[3] = {};
        EXPECT_TRUE(text::parseSectionId(FileUserPictureMode::layout(), line, indices)) << line;
        EXPECT_EQ(std::vector<int>(indices, indices + 3), (std::vector<int>{3, 10, 7})) << line;
    }
    for (const char* line : {"[3a]\n", "[3g7]\n", "3a7]\n", "(3a7)\n", " [3a7]\n", "[", "", "[-1a]\n"}) {
        int indices[3] = {};
        EXPECT_FALSE(text::parseSectionId(FileUserPictureMode::layout(), line, indices)) << line;
    }
    // The range is another check's business.
    int out[3] = {};
    EXPECT_TRUE(text::parseSectionId(FileUserPictureMode::layout(), "[fff]\n", out));
    EXPECT_FALSE(FileUserPictureMode::layout().accepts(out));
    EXPECT_TRUE(text::parseSectionId(FileUserPictureGlobal::layout(), "[anything]\n", nullptr));
}

TEST(TextLayout, ReadsLevelsAsOneCharacter) {
    const std::vector<std::pair<std::string, int>> cases{
        {"[50]\n", 0}, {"[59]\n", 9}, {"[5a]\n", 10}, {"[5j]\n", 19},           {"[5z]\n", 35},
        {"[5A]\n", 4}, {"[5?]\n", 4}, {"[5`]\n", 4},  {"[5\xe9]\n", 0xe9 - 87}, {"[5\n", 4},
    };
    for (const auto& [line, level] : cases) {
        int indices[2] = {1, 4}; // what is neither digit nor letter leaves the level before
        EXPECT_TRUE(text::parseSectionId(levelLayout(), line.c_str(), indices)) << line;
        EXPECT_EQ(indices[1], level) << line;
    }
    int indices[2] = {};
    EXPECT_FALSE(text::parseSectionId(levelLayout(), "[5", indices));
}

// --- key lines ---

TEST(TextLayout, WritesKeyLinesInThreeForms) {
    struct Case {
        KeyLineForm form;
        int value;
        const char* line;
        bool fits;
    };
    const Case cases[] = {
        {KeyLineForm::Decimal4, 50, "Contrast                 = 0050\n", true},
        {KeyLineForm::Decimal4, -1, "Contrast                 = -001\n", true},
        {KeyLineForm::Decimal4, -999, "Contrast                 = -999\n", true},
        {KeyLineForm::Decimal4, -1000, "Contrast                 = -1000\n", false},
        {KeyLineForm::Decimal4, 9999, "Contrast                 = 9999\n", true},
        {KeyLineForm::Decimal4, 10000, "Contrast                 = 10000\n", false},
        {KeyLineForm::Decimal4, INT_MIN, "Contrast                 = -2147483648\n", false},
        {KeyLineForm::Decimal5, 7, "Contrast                = 00007\n", true},
        {KeyLineForm::Decimal5, -9999, "Contrast                = -9999\n", true},
        {KeyLineForm::Decimal5, -10000, "Contrast                = -10000\n", false},
        {KeyLineForm::Decimal5, 99999, "Contrast                = 99999\n", true},
        {KeyLineForm::Decimal5, 100000, "Contrast                = 100000\n", false},
        {KeyLineForm::Hexadecimal5, 255, "Contrast                 = 0x   ff\n", true},
        {KeyLineForm::Hexadecimal5, 0xfffff, "Contrast                 = 0xfffff\n", true},
        {KeyLineForm::Hexadecimal5, 0x100000, "Contrast                 = 0x100000\n", false},
        {KeyLineForm::Hexadecimal5, -1, "Contrast                 = 0xffffffff\n", false},
    };
    for (const Case& c : cases) {
        char out[text::LINE_BUFFER];
        const int length = text::formatKeyLine(c.form, "Contrast", c.value, out, sizeof out);
        EXPECT_STREQ(out, c.line);
        EXPECT_EQ(length, static_cast<int>(std::strlen(c.line)));
        EXPECT_EQ(text::fitsColumns(c.form, c.value), c.fits) << c.line;
        EXPECT_EQ(length == text::keyLineLength(c.form), c.fits) << c.line;
        if (!c.fits)
            continue;
        char key[text::KEY_WIDTH + 1] = {};
        int value = INT_MAX;
        EXPECT_EQ(text::valueByColumns(c.form, out), c.value) << c.line;
        EXPECT_TRUE(text::parseKeyLine(c.form, out, key, value)) << c.line;
        EXPECT_STREQ(key, "Contrast");
        EXPECT_EQ(value, c.value) << c.line;
    }
}

TEST(TextLayout, ReadsValuesByColumnWhateverStandsThere) {
    struct Case {
        KeyLineForm form;
        const char* line;
        int value;
    };
    const Case cases[] = {
        {KeyLineForm::Decimal4, "another key altogether   = 0042\n", 42},
        {KeyLineForm::Decimal4, "Contrast                 = 12345\n", 1234}, // a widened line
        {KeyLineForm::Decimal4, "Contrast                 = -1234\n", -123},
        {KeyLineForm::Decimal4, "Contrast                 = 42\n", 42},
        {KeyLineForm::Decimal4, "Contrast                 = 7", 7},
        {KeyLineForm::Decimal4, "Contrast                 = \n", 0},
        {KeyLineForm::Decimal4, "Contrast                 = -\n", 0},
        {KeyLineForm::Decimal4, "Contrast = 0042\n", 0}, // ends before the columns
        {KeyLineForm::Decimal4, "\n", 0},
        {KeyLineForm::Decimal4, "", 0},
        {KeyLineForm::Decimal4, "Contrast                 = abcd\n", 0},
        {KeyLineForm::Decimal5, "Contrast                 = 0042\n", 42}, // the wider key column
        {KeyLineForm::Decimal5, "Contrast                = 123456\n", 12345},
        {KeyLineForm::Decimal5, "Contrast                =\n", 0},
        {KeyLineForm::Hexadecimal5, "Contrast                 = 0xFF\n", 255},
        {KeyLineForm::Hexadecimal5, "Contrast                 = 0x0x1F7\n", 0x1F7}, // as scanf reads it
        {KeyLineForm::Hexadecimal5, "Contrast                 = 0x0x\n", 0},
        {KeyLineForm::Hexadecimal5, "Contrast                 = 00255\n", 0},
        {KeyLineForm::Hexadecimal5, "Contrast                 = 0\n", 0},
    };
    for (const Case& c : cases)
        EXPECT_EQ(text::valueByColumns(c.form, c.line), c.value) << c.line;
}

TEST(TextLayout, SplitsKeyLinesOfAnyWidth) {
    struct Case {
        KeyLineForm form;
        const char* line;
        const char* key; ///< null: no key line
        int value;
    };
    const Case cases[] = {
        {KeyLineForm::Decimal4, "  Contrast  =7", "Contrast", 7},
        {KeyLineForm::Decimal4, "Contrast                 = 12345\n", nullptr, 0}, // more than its columns hold
        {KeyLineForm::Decimal4, "Contrast                 = -1234\n", nullptr, 0},
        {KeyLineForm::Decimal4, "Contrast                 = 1234x\n", "Contrast", 1234},
        {KeyLineForm::Decimal4, "Contrast                 = -12\n", "Contrast", -12},
        {KeyLineForm::Decimal4, "abcdefghijklmnopqrstuvwx = 0001\n", "abcdefghijklmnopqrstuvwx", 1},
        {KeyLineForm::Decimal4, "abcdefghijklmnopqrstuvwxy = 0001\n", nullptr, 0},
        {KeyLineForm::Decimal4, "Contrast 0050\n", nullptr, 0},
        {KeyLineForm::Decimal4, "Contrast = high\n", nullptr, 0},
        {KeyLineForm::Decimal4, "Contrast =\n", nullptr, 0},
        {KeyLineForm::Decimal4, "\n", nullptr, 0},
        {KeyLineForm::Decimal5, "Contrast = 123456\n", nullptr, 0},
        {KeyLineForm::Decimal5, "abcdefghijklmnopqrstuvwx = 00001\n", nullptr, 0}, // 24 characters
        {KeyLineForm::Hexadecimal5, "Contrast = 0x ff\n", "Contrast", 255},
        {KeyLineForm::Hexadecimal5, "Contrast = 0x0xfed\n", "Contrast", 0xfed}, // the prefix counts
        {KeyLineForm::Hexadecimal5, "Contrast = 0x0Xfedc\n", nullptr, 0},
        {KeyLineForm::Hexadecimal5, "Contrast = 0x-0x1f\n", "Contrast", -0x1f},
        {KeyLineForm::Hexadecimal5, "Contrast = 0x0x\n", nullptr, 0},
        {KeyLineForm::Hexadecimal5, "Contrast = 0x  0xg\n", nullptr, 0},
        {KeyLineForm::Hexadecimal5, "Contrast = 255\n", nullptr, 0},
    };
    for (const Case& c : cases) {
        char key[text::KEY_WIDTH + 1] = "before";
        int value = -7;
        ASSERT_EQ(text::parseKeyLine(c.form, c.line, key, value), c.key != nullptr) << c.line;
        EXPECT_STREQ(key, c.key != nullptr ? c.key : "before");
        EXPECT_EQ(value, c.key != nullptr ? c.value : -7) << c.line;
    }
}

TEST(TextLayout, FormatsASectionAndNeverOverrunsTheBuffer) {
    const CategoryLayout& layout = levelLayout();
    const int record[] = {1, -2};
    const std::string expected = "Red                      = 0001\nGreen                    = -002\n";
    char out[80];
    EXPECT_EQ(text::formatSection(layout, record, out, sizeof out), 64);
    EXPECT_EQ(out, expected);
    for (const int size : {0, 1, 31, 32, 33, 40, 64}) {
        std::memset(out, '?', sizeof out);
        EXPECT_EQ(text::formatSection(layout, record, out, size), 64);
        if (size > 33) {
            EXPECT_EQ(out, expected.substr(0, static_cast<std::size_t>(size) - 1));
        }
        EXPECT_EQ(out[size], '?') << size;
    }
}

// --- stale snapshots ---

TEST(SnapshotFloor, RefusesOlderEventsOfTheSectionOnly) {
    SnapshotFloor floor;
    EXPECT_FALSE(floor.isStale(1, 0));
    floor.raise(1, 10);
    EXPECT_TRUE(floor.isStale(1, 9));
    EXPECT_FALSE(floor.isStale(2, 9));
    EXPECT_FALSE(floor.isStale(1, 10));

    floor.raise(1, 20);
    floor.raiseAll(30);
    EXPECT_TRUE(floor.isStale(1, 29));
    EXPECT_TRUE(floor.isStale(2, 29));
    EXPECT_FALSE(floor.isStale(2, 30));
    floor.raise(2, 40);
    EXPECT_TRUE(floor.isStale(2, 39));
    EXPECT_FALSE(floor.isStale(1, 39));
}

TEST(SnapshotFloor, ComparesIdsAcrossTheWrap) {
    SnapshotFloor floor;
    floor.raise(1, INT_MIN + 2);
    EXPECT_TRUE(floor.isStale(1, INT_MAX));
    EXPECT_TRUE(floor.isStale(1, INT_MIN + 1));
    EXPECT_FALSE(floor.isStale(1, INT_MIN + 2));
    floor.raiseAll(INT_MAX);
    EXPECT_TRUE(floor.isStale(1, INT_MAX - 1));
    EXPECT_FALSE(floor.isStale(1, INT_MIN));
}

} // namespace
} // namespace td
