#include <dmctl/inspect/FileInspection.h>

#include <algorithm>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "fileOperator/OperatorFactory.h"
#include "fileOperator/text/TextLayout.h"

namespace td {
namespace {

constexpr const char* LEVELS[] = {"LOW", "HIGH"};

/// Two dimensions, one of them beyond the hexadecimal digits, and three fields.
CategoryLayout smallLayout(KeyLineForm form = KeyLineForm::Decimal4) {
    return {
        .category = PICTURE_MODE,
        .file = "small.ini",
        .version = "v0.2",
        .purpose = "A small file",
        .dimensions = {{.name = "level", .heading = "level", .count = 2, .valueNames = LEVELS},
                       {.name = "point", .heading = "point", .count = 18, .digits = DigitForm::Character}},
        .fields = {{"First", 0}, {"Second", 1}, {"Third", 2}},
        .keyLine = form,
    };
}

CategoryLayout globalLayout() {
    CategoryLayout layout = smallLayout();
    layout.dimensions.clear();
    return layout;
}

/// A table in which no two values are the same.
std::vector<int> numberedTable(const CategoryLayout& layout) {
    std::vector<int> table = defaultTable(layout);
    for (std::size_t i = 0; i < table.size(); ++i)
        table[i] = static_cast<int>(i);
    return table;
}

std::string goodFile(const CategoryLayout& layout) {
    return wholeFile(layout, "TYPE1", numberedTable(layout));
}

/// The file with a CRC line that fits its contents, so that only other faults are left.
std::string withChecksum(const CategoryLayout& layout, std::string bytes) {
    const FileInspection inspection = inspectFile(layout, bytes);
    if (inspection.checksumOffset >= 0)
        bytes.replace(static_cast<std::size_t>(inspection.checksumOffset), text::CRC_LINE_LENGTH,
                      text::crcLine(inspection.computedChecksum));
    return bytes;
}

std::string replaced(std::string bytes, const std::string& from, const std::string& to) {
    const std::size_t at = bytes.find(from);
    EXPECT_NE(at, std::string::npos) << from;
    return at == std::string::npos ? bytes : bytes.replace(at, from.size(), to);
}

int lineAt(const std::string& bytes, std::size_t offset) {
    return 1 + static_cast<int>(std::count(bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(offset), '\n'));
}

std::string words(const FileInspection& inspection) {
    std::string text;
    for (const FileProblem& problem : inspection.problems)
        text += std::to_string(problem.line) + ": " + problem.text + "\n";
    return text;
}

TEST(FileInspectionTest, WholeFileIsGoodAndReadsBack) {
    std::vector<CategoryLayout> layouts{smallLayout(), smallLayout(KeyLineForm::Decimal5),
                                        smallLayout(KeyLineForm::Hexadecimal5), globalLayout()};
    for (const CategoryLayout* layout : allLayouts())
        layouts.push_back(*layout);
    for (const CategoryLayout& layout : layouts) {
        std::vector<int> table = numberedTable(layout);
        for (int& value : table)
            value %= 1000;
        table.back() = layout.keyLine == KeyLineForm::Hexadecimal5 ? 0xFFFFF : -999;
        const std::string bytes = wholeFile(layout, "TYPE1", table);
        const FileInspection inspection = inspectFile(layout, bytes);
        EXPECT_EQ(words(inspection), "");
        EXPECT_EQ(inspection.tvType, "TYPE1");
        EXPECT_EQ(inspection.version, layout.version);
        EXPECT_EQ(inspection.statedChecksum, inspection.computedChecksum);
        ASSERT_EQ(inspection.readableRecords(), layout.recordCount());

        std::vector<int> read;
        for (const InspectedSection& section : inspection.sections) {
            std::vector<int> record(layout.fields.size());
            EXPECT_TRUE(readInspected(layout, bytes, section, record.data()));
            read.insert(read.end(), record.begin(), record.end());
        }
        EXPECT_EQ(read, table);
    }
}

TEST(FileInspectionTest, WholeFileRefusesWhatDoesNotFit) {
    const CategoryLayout layout = smallLayout();
    std::vector<int> table = defaultTable(layout);
    EXPECT_EQ(wholeFile(layout, "12345678901234567", table), "");
    table[5] = 10000;
    EXPECT_EQ(wholeFile(layout, "", table), "");
    table.resize(table.size() - 1);
    EXPECT_EQ(wholeFile(layout, "", table), "");
}

TEST(FileInspectionTest, DigitChangedWithoutChecksumIsFoundThere) {
    const CategoryLayout layout = smallLayout();
    const std::string bytes = replaced(goodFile(layout), "= 0000\n", "= 0001\n");
    const FileInspection inspection = inspectFile(layout, bytes);
    ASSERT_EQ(inspection.faultCount, 1) << words(inspection);
    EXPECT_EQ(inspection.problems[0].kind, FileProblem::Kind::Checksum);
    EXPECT_EQ(inspection.problems[0].line, lineAt(bytes, bytes.find("CRC ")));
    EXPECT_EQ(inspection.readableRecords(), layout.recordCount());
    EXPECT_TRUE(inspectFile(layout, withChecksum(layout, bytes)).isGood());
}

/// One damage: what is replaced, and what the inspection has to say about it at the place of `at`.
struct Damage {
    const char* from;
    const char* to;
    FileProblem::Kind kind;
    const char* at; ///< what stands in the damaged file where the problem is
    const char* text;
};

class FileInspectionDamageTest : public testing::TestWithParam<Damage> {};

TEST_P(FileInspectionDamageTest, IsTheOnlyFaultAndAtItsPlace) {
    const Damage& damage = GetParam();
    const CategoryLayout layout = smallLayout();
    const std::string bytes = withChecksum(layout, replaced(goodFile(layout), damage.from, damage.to));
    const FileInspection inspection = inspectFile(layout, bytes);
    ASSERT_EQ(inspection.faultCount, 1) << words(inspection);
    const FileProblem& problem = inspection.problems[0];
    EXPECT_EQ(problem.kind, damage.kind);
    EXPECT_NE(problem.text.find(damage.text), std::string::npos) << problem.text;
    const std::size_t place = bytes.find(damage.at);
    ASSERT_NE(place, std::string::npos);
    EXPECT_EQ(problem.offset, static_cast<int>(place));
    EXPECT_EQ(problem.line, lineAt(bytes, place));
}

using Kind = FileProblem::Kind;
INSTANTIATE_TEST_SUITE_P(
    All, FileInspectionDamageTest,
    testing::Values(
        Damage{"[Summary]\n", "[Sumary]\n", Kind::Summary, "[Sumary]", "[Summary] belongs here"},
        Damage{"[Summary]\n", "", Kind::Summary, "SN  ", "[Summary] belongs here"},
        Damage{"SN                       = TYPE1           \n", "", Kind::Summary, "Version ", "SN line is missing"},
        Damage{"SN  ", "XX  ", Kind::Summary, "XX  ", "SN line belongs here"},
        Damage{"TYPE1           \n", "TYPE1\n", Kind::Summary, "SN  ", "33 bytes"},
        Damage{"= v0.2", "= v0.1", Kind::Version, "Version ", "\"v0.1\", this library's is \"v0.2\""},
        Damage{"Third                    = 0005\n", "", Kind::KeyLine, "[02]", "section [01] ends here without Third"},
        Damage{"Second                   = 0004\n", "", Kind::KeyLine, "Third                    = 0005",
               "lacks Second before this line"},
        Damage{"Second                   = 0004\n", "Second                   = 0004\r\n", Kind::KeyLine,
               "Second                   = 0004\r", "33 bytes instead of 32; it ends in a carriage return"},
        Damage{"Second                   = 0004", "Second                   = 00x4", Kind::KeyLine, "x4\n",
               "not how a value is written"},
        Damage{"Second                   = 0004", "Secomd                   = 0004", Kind::KeyLine, "md  ",
               "where Second belongs"},
        Damage{"Second                   = 0004\n", "stray\x1b\nSecond                   = 0004\n", Kind::KeyLine,
               "stray", "\"stray\\x1b\" stands in section [01]"},
        Damage{"[02]\n", "odd\n[02]\n", Kind::KeyLine, "odd\n", "follows the last key line of section [01]"},
        Damage{"[00]\n", "odd\n[00]\n", Kind::Section, "odd\n", "before the first section"},
        Damage{"[02]\n", "[02] \n", Kind::Section, "[02] ", "is not \"[02]\""}));

TEST(FileInspectionTest, MissingRepeatedAndMovedSections) {
    const CategoryLayout layout = smallLayout();
    const std::string good = goodFile(layout);
    const auto start = static_cast<std::size_t>(inspectFile(layout, good).contentOffset);
    const auto length = static_cast<std::size_t>(layout.sectionLength());
    const auto section = [&](std::size_t record) { return good.substr(start + record * length, length); };

    std::string lacking = good;
    lacking.erase(start + 3 * length, 2 * length);
    const FileInspection missing = inspectFile(layout, withChecksum(layout, lacking));
    ASSERT_EQ(missing.faultCount, 1) << words(missing);
    EXPECT_EQ(missing.problems[0].text, "sections [03] to [04] are missing (2)");
    EXPECT_EQ(missing.problems[0].offset, static_cast<int>(start + 3 * length));
    EXPECT_EQ(missing.readableRecords(), layout.recordCount() - 2);

    const FileInspection repeated = inspectFile(layout, withChecksum(layout, good + section(17)));
    ASSERT_EQ(repeated.faultCount, 1) << words(repeated);
    EXPECT_NE(repeated.problems[0].text.find("section [0h] stands here again"), std::string::npos);

    std::string moved = good;
    moved.replace(start, 2 * length, section(1) + section(0));
    const FileInspection disordered = inspectFile(layout, withChecksum(layout, moved));
    ASSERT_EQ(disordered.faultCount, 1) << words(disordered);
    EXPECT_NE(disordered.problems[0].text.find("section [00] stands after [01]"), std::string::npos);
}

TEST(FileInspectionTest, WhatChangesNothingIsOnlyNoted) {
    const CategoryLayout layout = smallLayout();
    const std::string good = goodFile(layout);
    const std::string crc = good.substr(good.find("0x"), 10);
    std::string upper = crc;
    std::transform(upper.begin() + 2, upper.end(), upper.begin() + 2, [](unsigned char c) { return std::toupper(c); });
    ASSERT_NE(upper, crc);
    const std::string edited = replaced(replaced(good, "A small file", "# edited    "), crc, upper);
    const FileInspection inspection = inspectFile(layout, edited);
    EXPECT_TRUE(inspection.isGood());
    EXPECT_EQ(inspection.noteCount, 2) << words(inspection);
    EXPECT_EQ(inspection.problems[0].line, lineAt(edited, edited.find("# edited")));
}

TEST(FileInspectionTest, NoCutFileIsGood) {
    for (const CategoryLayout& layout : {smallLayout(), globalLayout()}) {
        const std::string bytes = goodFile(layout);
        for (std::size_t size = 0; size < bytes.size(); ++size) {
            const std::string cut = withChecksum(layout, bytes.substr(0, size));
            ASSERT_FALSE(inspectFile(layout, cut).isGood()) << size;
        }
    }
}

TEST(FileInspectionTest, EveryFlippedByteOfTheFrameIsFound) {
    for (const CategoryLayout& layout : {smallLayout(), smallLayout(KeyLineForm::Hexadecimal5)}) {
        const std::string good = goodFile(layout);
        const auto start = static_cast<std::size_t>(inspectFile(layout, good).contentOffset);
        for (std::size_t at = start; at < good.size(); ++at) {
            std::string bytes = good;
            bytes[at] = static_cast<char>(bytes[at] ^ 1);
            EXPECT_FALSE(inspectFile(layout, bytes).isGood()) << at;
            // With a checksum that fits, a digit in place of a digit is just another value.
            const bool isValue = good[at] >= '0' && good[at] <= '9' && good.rfind('=', at) > good.rfind('\n', at) &&
                                 good.rfind('=', at) != std::string::npos;
            const bool isHexadecimal = layout.keyLine == KeyLineForm::Hexadecimal5;
            if (isValue || isHexadecimal)
                continue;
            const FileInspection inspection = inspectFile(layout, withChecksum(layout, bytes));
            // No reader looks at the closing bracket.
            EXPECT_EQ(inspection.isGood(), good[at] == ']') << at;
            EXPECT_FALSE(inspection.problems.empty()) << at;
        }
    }
}

TEST(FileInspectionTest, GarbageIsCountedNotCollected) {
    const CategoryLayout layout = smallLayout();
    std::string bytes = goodFile(layout);
    bytes.resize(static_cast<std::size_t>(inspectFile(layout, bytes).contentOffset));
    for (int i = 0; i < 5000; ++i)
        bytes += "[zz]\n";
    const FileInspection inspection = inspectFile(layout, bytes);
    EXPECT_EQ(inspection.problems.size(), static_cast<std::size_t>(FileInspection::MAX_PROBLEMS));
    EXPECT_GT(inspection.faultCount, 5000);
    EXPECT_EQ(inspection.readableRecords(), 0);
    std::vector<int> record(3, 7);
    EXPECT_FALSE(readInspected(layout, bytes, inspection.sections.front(), record.data()));
    EXPECT_EQ(record, std::vector<int>(3, 7));

    bytes.resize(static_cast<std::size_t>(text::MAX_FILE_SIZE) + 1, '#');
    EXPECT_EQ(inspectFile(layout, bytes).problems.at(0).kind, FileProblem::Kind::Size);
}

/// The records of which something could not be read, with the number of their readable fields.
std::vector<std::pair<int, int>> lackingRecords(const CategoryLayout& layout, const std::string& bytes) {
    const SalvagedTable table = salvageFile(layout, bytes);
    const std::vector<int> written = numberedTable(layout);
    std::vector<std::pair<int, int>> lacking;
    for (int record = 0; record < layout.recordCount(); ++record) {
        const int readable = table.readableFields(layout, record);
        if (readable != layout.fieldCount())
            lacking.emplace_back(record, readable);
    }
    for (std::size_t cell = 0; cell < written.size(); ++cell)
        EXPECT_EQ(table.values[cell], table.readable[cell] ? written[cell] : 0) << cell;
    return lacking;
}

TEST(FileInspectionTest, SalvageReadsAllButTheDamagedLines) {
    using Lacking = std::vector<std::pair<int, int>>;
    const CategoryLayout layout = smallLayout();
    const std::string good = goodFile(layout);
    const std::string fourth = "Second                   = 0004\n";
    const auto start = static_cast<std::size_t>(inspectFile(layout, good).contentOffset);
    const auto length = static_cast<std::size_t>(layout.sectionLength());
    EXPECT_EQ(lackingRecords(layout, good), Lacking());
    EXPECT_TRUE(salvageFile(layout, good).proven);
    EXPECT_EQ(lackingRecords(layout, replaced(good, "= v0.2", "= v0.1")), Lacking());
    EXPECT_EQ(lackingRecords(layout, replaced(good, "[Summary]\n", "")), Lacking());
    EXPECT_EQ(lackingRecords(layout, replaced(good, fourth, "Second                   = 00x4\n")), Lacking({{1, 2}}));
    // What follows in the section is not where it belongs; the next section is found by its header.
    EXPECT_EQ(lackingRecords(layout, replaced(good, fourth, "")), Lacking({{1, 1}}));
    EXPECT_EQ(lackingRecords(layout, replaced(good, fourth, "odd\n" + fourth)), Lacking({{1, 1}}));
    // A damaged header does not matter while the section stands at its place, whatever it names now.
    EXPECT_EQ(lackingRecords(layout, replaced(good, "[02]\n", "[!2]\n")), Lacking());
    EXPECT_EQ(lackingRecords(layout, replaced(good, "[02]\n", "x02]\n")), Lacking());
    EXPECT_EQ(lackingRecords(layout, replaced(good, "[02]\n", "[01]\n")), Lacking());
    EXPECT_EQ(lackingRecords(layout, replaced(good, "[02]\n", "[05]\n")), Lacking());
    // A moved section is not taken for the one whose place it stands at.
    std::string lacking = good;
    lacking.erase(start + 3 * length, 2 * length);
    EXPECT_EQ(lackingRecords(layout, lacking), Lacking({{3, 0}, {4, 0}}));
    EXPECT_FALSE(salvageFile(layout, lacking).proven);
    // A block of zeros, as a lost page of a flash memory leaves it.
    std::string zeroed = good;
    std::fill_n(zeroed.begin() + static_cast<std::ptrdiff_t>(start + length + 10), length, '\0');
    EXPECT_EQ(lackingRecords(layout, zeroed), Lacking({{1, 0}, {2, 2}}));
    EXPECT_EQ(lackingRecords(layout, good.substr(0, start + length + 40)).front(), (std::pair<int, int>(1, 1)));
}

} // namespace
} // namespace td
