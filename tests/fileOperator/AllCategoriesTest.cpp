// What holds for every category alike, over all declarations and against the oracle beside them.

#include <algorithm>
#include <climits>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>
#include <set>
#include <string>
#include <typeinfo>
#include <vector>

#include <cxxabi.h>
#include <gtest/gtest.h>

#include <dataModule/fileOperator/OperatorFactory.h>
#include <dataModule/fileOperator/TextLayout.h>

#include "CategoryOracle.h"
#include "FakeParent.h"
#include "LogCapture.h"
#include "SettingsRoot.h"

namespace td::test {
namespace {

constexpr std::size_t COMMENT_LINE = 76;
constexpr std::size_t SUMMARY = 128;
const std::string EDGE = "#----------------------- Description -------------------------------------#\n";

/// The name of the object's class, without its namespace.
template <class Object>
std::string className(const Object& object) {
    const char* mangled = typeid(object).name();
    const std::unique_ptr<char, void (*)(void*)> name(abi::__cxa_demangle(mangled, nullptr, nullptr, nullptr),
                                                      &std::free);
    const std::string full = name ? name.get() : mangled;
    return full.substr(full.rfind(':') + 1);
}

std::vector<std::string> linesOf(const std::string& text) {
    std::vector<std::string> lines;
    for (std::size_t start = 0; start < text.size();) {
        const std::size_t end = std::min(text.find('\n', start), text.size() - 1) + 1;
        lines.push_back(text.substr(start, end - start));
        start = end;
    }
    return lines;
}

/// In factory state every bin of the factory white balance is in memory.
void enterFactoryState() {
    const std::filesystem::path field = underRootPrefix("/var/local/flash/factory_mode");
    std::filesystem::create_directories(field.parent_path());
    std::ofstream(field) << "On";
}

class AllCategories : public testing::TestWithParam<const CategoryLayout*> {
protected:
    AllCategories() {
        enterFactoryState();
        for (const char* key : m_row.keys)
            m_arguments.push_back(argumentName(m_row, key));
    }

    std::unique_ptr<AbstractFileOperator> makeOperator() {
        std::unique_ptr<AbstractFileOperator> op(createOperator(m_layout.category));
        op->setParent(&m_parent);
        return op;
    }
    std::unique_ptr<AbstractFileOperator> makeLoadedFrom(const std::string& current) {
        write(Copy::Current, current);
        std::unique_ptr<AbstractFileOperator> op = makeOperator();
        EXPECT_TRUE(op->loadFile());
        return op;
    }
    /// An operator on current and factory copies with the defaults.
    std::unique_ptr<AbstractFileOperator> makeLoaded() {
        const std::string text = wholeFile(defaults());
        write(Copy::Factory, text);
        return makeLoadedFrom(text);
    }
    /// A file as the library writes it.
    std::string wholeFile(const OracleValues& values) const {
        return oracleFile(m_row.version, oracleContent(m_row, values), text::commentBlock(m_layout));
    }
    std::string read(Copy copy) const { return m_root.read(copy, m_row.file); }
    void write(Copy copy, const std::string& text) const { m_root.write(copy, m_row.file, text); }

    std::vector<_Argument_t> arguments() const {
        std::vector<_Argument_t> args;
        for (const std::string& name : m_arguments)
            args.push_back({name.c_str(), INT_MIN});
        return args;
    }
    std::vector<int> indices(int record) const { return oracleIndices(m_row, record); }
    int recordOf(const std::vector<int>& dims) const {
        int record = 0;
        for (std::size_t d = 0; d < dims.size(); ++d)
            record = record * m_row.dimensions[d].count + dims[d];
        return record;
    }
    /// Some records: the first, the last and two between.
    std::set<int> someRecords() const { return {0, m_row.records / 2, m_row.records * 2 / 3, m_row.records - 1}; }
    std::set<int> allRecords() const {
        std::set<int> records;
        for (int record = 0; record < m_row.records; ++record)
            records.insert(records.end(), record);
        return records;
    }
    void expectRecords(AbstractFileOperator& op, const std::set<int>& records, const OracleValues& values) {
        std::vector<_Argument_t> args = arguments();
        for (const int record : records) {
            ASSERT_TRUE(op.loadData(indices(record), args)) << record;
            for (std::size_t field = 0; field < args.size(); ++field)
                ASSERT_EQ(args[field].value, values(record, static_cast<int>(field)))
                    << "record " << record << " " << args[field].name;
        }
    }
    /// Another value for every field of every record, over the whole width of the columns.
    int spread(int record, int field) const {
        const std::int64_t low = narrowest(m_row);
        const std::int64_t span = widest(m_row) - low + 1;
        return static_cast<int>(low + (std::int64_t{record} * 104729 + std::int64_t{field} * 1299709 + 17) % span);
    }
    OracleValues spreadValues() const {
        return [this](int record, int field) { return spread(record, field); };
    }
    OracleValues defaults() const {
        return [this](int, int field) { return m_layout.fields[static_cast<std::size_t>(field)].defaultValue; };
    }

    const CategoryLayout& m_layout = *GetParam();
    const OracleRow& m_row = oracleOf(m_layout.category);
    std::vector<std::string> m_arguments; ///< names in requests, in file order
    LogCapture m_log;
    SettingsRoot m_root;
    FakeParent m_parent;
};

std::string nameOf(const testing::TestParamInfo<const CategoryLayout*>& info) {
    return oracleOf(info.param->category).name;
}

INSTANTIATE_TEST_SUITE_P(Category, AllCategories, testing::ValuesIn(allLayouts()), nameOf);

TEST(Categories, AreAllServedInAscendingOrder) {
    std::vector<int> served;
    for (const CategoryLayout* layout : allLayouts())
        served.push_back(layout->category);
    std::vector<int> expected;
    for (const OracleRow& row : categoryOracle())
        expected.push_back(row.value);
    EXPECT_EQ(expected.size(), 52U);
    EXPECT_EQ(served, expected);
}

// --- the declaration ---

TEST_P(AllCategories, IsDeclaredAsTheOracleSays) {
    EXPECT_STREQ(m_parent.getCategory_Str(m_layout.category), m_row.name);
    EXPECT_STREQ(m_layout.file, m_row.file);
    EXPECT_STREQ(m_layout.version, m_row.version);
    ASSERT_EQ(m_layout.dimensions.size(), m_row.dimensions.size());
    for (std::size_t d = 0; d < m_row.dimensions.size(); ++d) {
        EXPECT_EQ(m_layout.dimensions[d].count, m_row.dimensions[d].count) << d;
        EXPECT_EQ(m_layout.dimensions[d].digits == DigitForm::Character ? 'c' : 'x', m_row.dimensions[d].form) << d;
    }
    std::vector<std::string> keys;
    for (const Field& field : m_layout.fields)
        keys.emplace_back(field.key);
    EXPECT_EQ(keys, std::vector<std::string>(m_row.keys.begin(), m_row.keys.end()));
    EXPECT_EQ(m_layout.recordCount(), m_row.records);
    EXPECT_EQ(m_layout.lineLength(), m_row.lineLength);
    EXPECT_EQ(m_layout.sectionLength(), m_row.sectionSize);
    const std::unique_ptr<AbstractFileOperator> op = makeOperator();
    EXPECT_EQ(op->getDataCategory(), m_row.value);
    EXPECT_EQ(op->getDataSize(), m_row.dataSize);
    EXPECT_EQ(className(*op), m_row.operatorClass);
}

TEST_P(AllCategories, AnswersWholeRecordsInRecordOrderAndPostsItsOwnEvent) {
    const std::unique_ptr<AbstractFileOperator> op = makeLoaded();
    std::vector<_Argument_t> whole;
    ASSERT_TRUE(op->loadData(indices(0), whole));
    const std::vector<const char*> names = wholeRecordNames(m_row);
    ASSERT_EQ(whole.size(), names.size());
    for (std::size_t i = 0; i < names.size(); ++i)
        EXPECT_STREQ(whole[i].name, names[i]) << i;

    ASSERT_TRUE(storeValue(*op, indices(0), m_arguments[0].c_str(), 77));
    const std::vector<std::unique_ptr<Event>> posted = m_parent.takePosted();
    ASSERT_EQ(posted.size(), 1U);
    EXPECT_EQ(className(*posted[0]), std::string(m_row.operatorClass).substr(4) + "Event");
    EXPECT_EQ(posted[0]->dimensions(), indices(0));
}

TEST_P(AllCategories, CommentBlockListsTheValues) {
    std::vector<std::string> lines = linesOf(text::commentBlock(m_layout));
    ASSERT_EQ(lines.size(), static_cast<std::size_t>(m_row.commentLines));
    for (const std::string& line : lines) {
        EXPECT_EQ(line.size(), COMMENT_LINE) << line;
        EXPECT_EQ(line.front(), '#') << line;
        EXPECT_EQ(line.substr(74), "#\n") << line;
    }
    EXPECT_EQ(lines.front(), EDGE);
    EXPECT_EQ(lines.back(), EDGE);
    EXPECT_EQ(lines[1], commentLine("# pupose:"));
    EXPECT_EQ(lines[2].rfind("#   --  ", 0), 0U) << lines[2];
    if (*m_row.purpose != '\0') {
        EXPECT_EQ(lines[2], commentLine(std::string("#   --  ") + m_row.purpose));
    }
    EXPECT_EQ(lines[3].rfind("#   [", 0), 0U) << lines[3];
    const std::string count =
        m_row.dimensions.empty() ? "]: No dimension" : "]: " + std::to_string(m_row.dimensions.size()) + " dimension";
    const bool stated = *m_row.dimensionLine != '\0';
    EXPECT_NE(lines[3].find(stated ? m_row.dimensionLine : count), std::string::npos) << lines[3];
    EXPECT_EQ(lines[4], commentLine("#"));
    if (*m_row.note != '\0') {
        const auto note = std::find_if(lines.begin(), lines.end(),
                                       [&](const std::string& line) { return line.find(m_row.note) < line.size(); });
        ASSERT_NE(note, lines.end());
        lines.erase(note);
    }
    std::size_t next = 5;
    for (const OracleDimension& dimension : m_row.dimensions) {
        const bool quoted = *dimension.heading != '\0';
        EXPECT_NE(lines.at(next).find(quoted ? dimension.heading : "scope:0~"), std::string::npos) << lines[next];
        ++next;
        for (std::size_t i = 0; i < dimension.names.size(); ++i, ++next) {
            const std::string row = std::string("#       ") + dimension.digits[i] + "--";
            const std::string expected = row + dimension.names[i];
            EXPECT_EQ(lines.at(next).rfind(expected, 0), 0U) << lines[next];
            if (*dimension.names[i] != '\0') {
                EXPECT_EQ(lines[next], commentLine(expected));
            }
        }
    }
    EXPECT_EQ(next + 1, lines.size());
}

// --- files ---

TEST_P(AllCategories, CreatedFileIsWhatTheOracleWritesAndReadsBack) {
    ASSERT_TRUE(makeOperator()->initFile(true));
    const std::string created = read(Copy::Current);
    EXPECT_EQ(created.size(), static_cast<std::size_t>(m_row.fileSize));
    const std::string comment = created.substr(0, COMMENT_LINE * static_cast<std::size_t>(m_row.commentLines));
    EXPECT_TRUE(created == oracleFile(m_row.version, oracleContent(m_row, defaults()), comment));
    EXPECT_TRUE(created == read(Copy::Backup));
    EXPECT_TRUE(created == read(Copy::Factory));

    const std::unique_ptr<AbstractFileOperator> op = makeOperator();
    ASSERT_TRUE(op->loadFile());
    expectRecords(*op, allRecords(), defaults());
}

TEST_P(AllCategories, EveryRecordRoundTripsThroughEachCopy) {
    const std::string good = oracleFile(m_row.version, oracleContent(m_row, spreadValues()));
    std::string damaged = good;
    damaged.back() = ' ';

    write(Copy::Current, good);
    std::unique_ptr<AbstractFileOperator> op = makeOperator();
    ASSERT_TRUE(op->loadFile());
    expectRecords(*op, allRecords(), spreadValues());

    write(Copy::Current, damaged);
    write(Copy::Backup, good);
    op = makeOperator();
    ASSERT_TRUE(op->loadFile());
    expectRecords(*op, someRecords(), spreadValues());
    EXPECT_TRUE(read(Copy::Current) == good);

    m_root.remove(Copy::Current, m_row.file);
    write(Copy::Backup, damaged);
    write(Copy::Factory, good);
    op = makeOperator();
    ASSERT_TRUE(op->loadFile());
    expectRecords(*op, someRecords(), spreadValues());
    EXPECT_TRUE(read(Copy::Current) == good);
    EXPECT_TRUE(read(Copy::Factory) == good);
}

TEST_P(AllCategories, StoreOfTheWidestValuesChangesItsSectionAndTheChecksumOnly) {
    const std::unique_ptr<AbstractFileOperator> op = makeLoaded();
    std::string expected = read(Copy::Current);
    const OracleValues extremes = [this](int, int field) { return field % 2 == 0 ? widest(m_row) : narrowest(m_row); };
    for (const int record : someRecords()) {
        std::vector<_Argument_t> args = arguments();
        for (std::size_t field = 0; field < args.size(); ++field)
            args[field].value = extremes(record, static_cast<int>(field));
        ASSERT_TRUE(op->storeData(indices(record), args));
        ASSERT_EQ(m_parent.posted(), 1U);
        ASSERT_EQ(m_parent.deliver(), 1);

        const std::string lines = oracleKeyLines(m_row, record, extremes);
        const std::size_t header = oracleHeader(m_row, indices(record)).size();
        const std::size_t section = COMMENT_LINE * static_cast<std::size_t>(m_row.commentLines) + SUMMARY +
                                    static_cast<std::size_t>(record) * static_cast<std::size_t>(m_row.sectionSize);
        ASSERT_EQ(header + lines.size(), static_cast<std::size_t>(m_row.sectionSize));
        expected = withChecksum(expected.replace(section + header, lines.size(), lines));
        ASSERT_TRUE(read(Copy::Current) == expected) << record;
    }
    const std::unique_ptr<AbstractFileOperator> restarted = makeOperator();
    ASSERT_TRUE(restarted->loadFile());
    expectRecords(*restarted, someRecords(), extremes);
}

TEST_P(AllCategories, OlderVersionIsMergedByKey) {
    // The old file has three sections, their lines the other way round, one key that is gone and one not yet there.
    const std::set<int> merged{0, m_row.records / 2, m_row.records - 1};
    const int missing = m_row.keys.size() > 1 ? 0 : -1;
    const OracleValues old = [this](int record, int field) { return spread(record + 4711, field); };
    std::string oldContent;
    for (const int record : merged) {
        oldContent += oracleHeader(m_row, indices(record));
        for (int field = static_cast<int>(m_row.keys.size()); field-- > 0;) {
            if (field != missing)
                oldContent += oracleLine(m_row, m_row.keys[static_cast<std::size_t>(field)], old(record, field));
        }
        oldContent += oracleLine(m_row, "NoLongerKnown", 5);
    }
    write(Copy::Current, oracleFile("v0.0", oldContent));
    write(Copy::Factory, oracleFile(m_row.version, oracleContent(m_row, spreadValues())));

    // The merge of the low blue light knows the names of requests only, and the lines carry others.
    const bool byKey = m_layout.category != PICTURE_LOW_BLUE_LIGHT;
    const OracleValues result = [&](int record, int field) {
        return byKey && merged.count(record) != 0 && field != missing ? old(record, field) : spread(record, field);
    };
    const std::unique_ptr<AbstractFileOperator> op = makeOperator();
    ASSERT_TRUE(op->loadFile());
    op->waitForMerge();
    expectRecords(*op, allRecords(), result);
    EXPECT_TRUE(read(Copy::Current) == wholeFile(result));
    EXPECT_EQ(m_log.count("The field [BGain] is invalid for this version.\n"), byKey ? 0U : merged.size());
}

// --- indices ---

TEST_P(AllCategories, EveryCornerIsAccepted) {
    const std::unique_ptr<AbstractFileOperator> op = makeLoaded();
    const std::size_t dimensions = m_row.dimensions.size();
    std::set<int> corners;
    for (unsigned mask = 0; mask < 1U << dimensions; ++mask) {
        std::vector<int> dims(dimensions);
        for (std::size_t d = 0; d < dimensions; ++d)
            dims[d] = (mask >> d & 1U) != 0 ? m_row.dimensions[d].count - 1 : 0;
        corners.insert(recordOf(dims));
    }
    for (const int corner : corners)
        ASSERT_TRUE(storeValue(*op, indices(corner), m_arguments.back().c_str(), corner % 900 + 11)) << corner;
    EXPECT_EQ(m_parent.deliver(), static_cast<int>(corners.size()));
    for (const int corner : corners)
        EXPECT_EQ(valueOf(*op, indices(corner), m_arguments.back().c_str()), corner % 900 + 11) << corner;
    for (const int corner : corners)
        EXPECT_TRUE(op->restoreSetting(indices(corner))) << corner;
    expectRecords(*op, corners, defaults());
}

TEST_P(AllCategories, IndicesOutsideAndWrongNumbersOfThemAreRefused) {
    const std::unique_ptr<AbstractFileOperator> op = makeLoaded();
    const std::string before = read(Copy::Current);
    const auto refuses = [&](const std::vector<int>& dims, const std::string& message) {
        m_log.clear();
        std::vector<_Argument_t> args{{m_arguments[0].c_str(), 4242}};
        EXPECT_FALSE(op->loadData(dims, args));
        EXPECT_EQ(args[0].value, 4242);
        EXPECT_FALSE(op->storeData(dims, args));
        EXPECT_FALSE(op->restoreSetting(dims));
        EXPECT_EQ(m_log.count(message), 3U) << message;
        EXPECT_EQ(m_parent.posted(), 0U);
    };
    for (std::size_t d = 0; d < m_row.dimensions.size(); ++d) {
        for (const int record : {0, m_row.records - 1}) {
            for (const int outside : {m_row.dimensions[d].count, -1, INT_MAX, INT_MIN}) {
                std::vector<int> dims = indices(record);
                dims[d] = outside;
                SCOPED_TRACE("dimension " + std::to_string(d) + " is " + std::to_string(outside));
                refuses(dims, "The dimension value is invalid.\n");
            }
        }
    }
    const std::size_t expected = m_row.dimensions.size();
    std::vector<std::size_t> wrongSizes{expected + 1};
    if (expected > 0)
        wrongSizes.push_back(expected - 1);
    for (const std::size_t size : wrongSizes) {
        refuses(std::vector<int>(size), "The dimensions size [" + std::to_string(size) +
                                            "] is invalid ,expected size is: " + std::to_string(expected) + ".\n");
    }
    expectRecords(*op, someRecords(), defaults());
    EXPECT_TRUE(read(Copy::Current) == before);
}

// --- one record for many ---

/// A table whose records come from numbered ones: a copied record has the number of the one it was copied from.
class BulkCategories : public AllCategories {
protected:
    static constexpr int FACTORY = 20000; ///< added to the numbers of the factory's records

    BulkCategories() {
        for (const int record : allRecords())
            m_table.push_back(record);
        m_file = m_table;
        m_initial = wholeFile(spreadValues());
        m_operator = makeLoadedFrom(m_initial);
    }
    OracleValues valuesOf(const std::vector<int>& numbers) const {
        return [this, &numbers](int record, int field) {
            return spread(numbers[static_cast<std::size_t>(record)], field);
        };
    }
    int& inTable(int record) { return m_table[static_cast<std::size_t>(record)]; }
    int& inFile(int record) {
        m_changed = true;
        return m_file[static_cast<std::size_t>(record)];
    }
    /// The records that differ from the given one in the swept dimensions only, the given one too.
    std::set<int> swept(const std::vector<int>& axes) const {
        std::set<int> records;
        for (const int record : allRecords()) {
            std::vector<int> dims = indices(record);
            for (const int axis : axes)
                dims[static_cast<std::size_t>(axis)] = indices(m_given)[static_cast<std::size_t>(axis)];
            if (recordOf(dims) == m_given)
                records.insert(record);
        }
        return records;
    }
    /// Compares with what was posted, in memory and in the file.
    void expectOutcome(const OracleBulk& bulk, const std::set<int>& posted) {
        EXPECT_EQ(m_log.contains(std::string("[") + m_row.name + "]: module hasn't completed yet.\n"),
                  bulk.kind == OracleBulk::Kind::NotOffered);
        std::set<int> events;
        for (const std::unique_ptr<Event>& event : m_parent.takePosted()) {
            EXPECT_TRUE(events.insert(recordOf(event->dimensions())).second);
            EXPECT_TRUE(event->handle());
        }
        EXPECT_EQ(events, posted);
        expectRecords(*m_operator, allRecords(), valuesOf(m_table));
        EXPECT_TRUE(read(Copy::Current) == (m_changed ? wholeFile(valuesOf(m_file)) : m_initial));
    }
    void expectCopied(const OracleBulk& bulk) {
        std::set<int> posted;
        const bool copies = bulk.kind == OracleBulk::Kind::CopyPosting || bulk.kind == OracleBulk::Kind::CopyAtOnce;
        for (const int record : copies ? swept(bulk.axes) : std::set<int>()) {
            if (record == m_given)
                continue;
            inTable(record) = inFile(record) = m_given;
            if (bulk.kind == OracleBulk::Kind::CopyPosting)
                posted.insert(record);
        }
        expectOutcome(bulk, posted);
    }

    const int m_given = m_row.records * 2 / 3;
    std::vector<int> m_table;
    std::vector<int> m_file;
    bool m_changed = false; ///< the file is not as it was at first
    std::string m_initial;
    std::unique_ptr<AbstractFileOperator> m_operator;
};

INSTANTIATE_TEST_SUITE_P(Category, BulkCategories, testing::ValuesIn(allLayouts()), nameOf);

TEST_P(BulkCategories, ApplyToAllSourcesReachesItsRecordsOnly) {
    EXPECT_TRUE(m_operator->applySettingForAllSources(indices(m_given)));
    expectCopied(applyToAllSources(m_layout.category));
}

TEST_P(BulkCategories, ApplyToAllModesReachesItsRecordsOnly) {
    EXPECT_TRUE(m_operator->applySettingForAllMode(indices(m_given)));
    expectCopied(applyToAllModes(m_layout.category));
}

TEST_P(BulkCategories, RestoreForAllSourcesReachesItsRecordsOnly) {
    const OracleBulk bulk = restoreForAllSources(m_layout.category);
    write(Copy::Factory, wholeFile([this](int record, int field) { return spread(record + FACTORY, field); }));
    EXPECT_TRUE(m_operator->restoreSettingForAllSource(indices(m_given)));
    std::set<int> posted;
    const bool restores =
        bulk.kind == OracleBulk::Kind::RestoreChanged || bulk.kind == OracleBulk::Kind::RestorePosting;
    for (const int record : restores ? swept(bulk.axes) : std::set<int>()) {
        inTable(record) = record + FACTORY;
        // The given record is compared with itself: it is taken back in memory only.
        if (record == m_given && bulk.kind == OracleBulk::Kind::RestoreChanged)
            continue;
        inFile(record) = record + FACTORY;
        posted.insert(record);
    }
    expectOutcome(bulk, posted);
}

TEST_P(BulkCategories, RestoreFromCurrentTakesOneRecordFromTheFile) {
    const bool offered = restoresFromCurrent(m_layout.category);
    const char* name = m_arguments.front().c_str();
    const int before = valueOf(*m_operator, indices(m_given), name);
    const int unwritten = before == 5 ? 6 : 5;
    ASSERT_TRUE(storeValue(*m_operator, indices(m_given), name, unwritten));
    EXPECT_TRUE(m_operator->restoreSettingFromCurrent(indices(m_given)));
    EXPECT_EQ(valueOf(*m_operator, indices(m_given), name), offered ? before : unwritten);
    EXPECT_EQ(m_log.contains(std::string("[") + m_row.name + "]: module hasn't completed yet.\n"), !offered);
    EXPECT_EQ(m_parent.posted(), 1U);
}

} // namespace
} // namespace td::test
