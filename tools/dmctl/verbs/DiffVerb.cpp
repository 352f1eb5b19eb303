// diff: what one copy holds otherwise than another one, another root or an export.
#include <algorithm>
#include <filesystem>
#include <string>
#include <vector>

#include <fmt/core.h>

#include "common/SystemPaths.h"
#include "exchange/Exchange.h"
#include "fileOperator/OperatorFactory.h"
#include "FileTable.h"
#include "Names.h"
#include "Session.h"
#include "ui/Output.h"
#include "verbs/Verb.h"

namespace fs = std::filesystem;

namespace td::dmctl {

namespace {

/// One side of a category: its values, of which some may not be given, or why there are none.
struct Side {
    std::vector<int> values;
    std::vector<bool> given; ///< empty: all are
    std::string trouble;

    bool has(std::size_t cell) const { return given.empty() || given[cell]; }
};

/// What the current copies are compared with.
class Other {
public:
    Other(const Session& session, const std::string& word) : m_session(session), m_word(word) {
        std::error_code error;
        for (const Copy copy : COPIES)
            m_kind = word == copyName(copy) ? Kind::Copy : m_kind;
        if (word == "defaults")
            m_kind = Kind::Defaults;
        else if (m_kind != Kind::Copy && fs::is_directory(word, error))
            m_kind = Kind::Root;
        else if (m_kind != Kind::Copy)
            readExport();
    }

    /// The categories to compare if none are named.
    std::vector<const CategoryLayout*> categories() const {
        if (m_kind != Kind::Export)
            return allLayouts();
        std::vector<const CategoryLayout*> layouts;
        for (const ExchangeCategory& category : m_export.categories)
            layouts.push_back(category.layout);
        return layouts;
    }
    Side side(const CategoryLayout& layout) const {
        switch (m_kind) {
        case Kind::Defaults:
            return {defaultTable(layout), {}, {}};
        case Kind::Copy:
            return fromFile(layout, m_session.path(layout, copyNamed(m_word)));
        case Kind::Root:
            return fromFile(layout, pathInRoot(layout));
        case Kind::Export:
            break;
        }
        for (const ExchangeCategory& category : m_export.categories) {
            if (category.layout == &layout)
                return {category.values, category.given, {}};
        }
        return {{}, {}, fmt::format("{} does not have it", m_word)};
    }
    static Side fromFile(const CategoryLayout& layout, const std::string& path) {
        FileTable table = readTable(layout, path);
        if (!table.isGood())
            return {{}, {}, fmt::format("{} {}", path, table.trouble)};
        return {std::move(table.values), {}, {}};
    }

private:
    enum class Kind { Copy, Defaults, Root, Export };

    void readExport() {
        std::error_code error;
        if (!fs::exists(m_word, error))
            throw UsageError(fmt::format("\"{}\" is neither current, backup, factory or defaults nor a directory or "
                                         "file that exists",
                                         m_word));
        std::string bytes;
        std::string reason;
        if (!readAny(m_word, bytes, reason))
            throw Failure(fmt::format("{} cannot be read: {}", m_word, reason));
        m_export = parseExchange(bytes);
        if (!m_export.faults.empty())
            throw Failure(fmt::format("{} is no export: {}: {} ({} in all)", m_word, m_export.faults.front().place,
                                      m_export.faults.front().text, counted(m_export.faults.size(), "fault")));
    }
    /// A root, or a directory with the files themselves.
    std::string pathInRoot(const CategoryLayout& layout) const {
        const std::string inRoot = m_word + paths::CURRENT_DIRECTORY + layout.file;
        std::error_code error;
        const bool isRoot = fs::is_directory(m_word + paths::CURRENT_DIRECTORY, error);
        return isRoot ? inRoot : m_word + "/" + layout.file;
    }

    const Session& m_session;
    const std::string m_word;
    Kind m_kind = Kind::Export;
    Exchange m_export;
};

struct Difference {
    int record = 0;
    const Field* field = nullptr;
    int left = 0;
    int right = 0;
};

struct Comparison {
    const CategoryLayout* layout = nullptr;
    std::vector<std::string> troubles; ///< why it could not be compared
    std::vector<Difference> differences;

    bool isEqual() const { return troubles.empty() && differences.empty(); }
    std::size_t records() const {
        std::size_t count = 0;
        int last = -1;
        for (const Difference& difference : differences) {
            count += difference.record != last ? 1 : 0;
            last = difference.record;
        }
        return count;
    }
};

Comparison compare(const CategoryLayout& layout, const Side& left, const Side& right) {
    Comparison result;
    result.layout = &layout;
    for (const Side* side : {&left, &right}) {
        if (!side->trouble.empty())
            result.troubles.push_back(side->trouble);
    }
    if (!result.troubles.empty())
        return result;
    for (int record = 0; record < layout.recordCount(); ++record) {
        for (const Field& field : layout.fields) {
            const std::size_t cell = cellOf(layout, record, field);
            if (right.has(cell) && left.values[cell] != right.values[cell])
                result.differences.push_back({record, &field, left.values[cell], right.values[cell]});
        }
    }
    return result;
}

void print(const std::vector<Comparison>& comparisons, const std::string& left, const std::string& right) {
    for (const Comparison& comparison : comparisons) {
        if (!comparison.differences.empty())
            fmt::print("{}: {} in {}\n", categoryName(*comparison.layout),
                       counted(comparison.differences.size(), "difference"), counted(comparison.records(), "record"));
        Rows rows;
        if (!comparison.differences.empty())
            rows.push_back(headings({"record", "field", left, right}));
        for (const Difference& difference : comparison.differences)
            rows.push_back({recordLabel(*comparison.layout, difference.record), difference.field->argumentName(),
                            std::to_string(difference.left), Cell(std::to_string(difference.right), Style::Changed)});
        printColumns(rows, 2);
    }
    for (const Comparison& comparison : comparisons) {
        for (const std::string& trouble : comparison.troubles)
            fmt::print(stderr, "dmctl diff: {} could not be compared: {}\n", categoryName(*comparison.layout), trouble);
    }
}

Json asJson(const std::vector<Comparison>& comparisons, const std::string& left, const std::string& right) {
    Json categories = Json::array();
    std::size_t count = 0;
    for (const Comparison& comparison : comparisons) {
        count += comparison.differences.size();
        if (comparison.isEqual())
            continue;
        Json differences = Json::array();
        for (const Difference& difference : comparison.differences)
            differences.push_back(
                {{"record", recordJson(*comparison.layout, indicesOf(*comparison.layout, difference.record))},
                 {"field", difference.field->argumentName()},
                 {"left", difference.left},
                 {"right", difference.right}});
        categories.push_back({{"category", categoryName(*comparison.layout)},
                              {"notCompared", comparison.troubles},
                              {"differences", differences}});
    }
    return {{"left", left}, {"right", right}, {"differences", count}, {"categories", categories}};
}

} // namespace

int runDiff(const Options& options, const Words& words) {
    const Copy copy = copyNamed(options.value("--copy", copyName(Copy::Current)));
    const std::string against = options.value("--against", copyName(Copy::Factory));
    const Session session(options);
    const Other other(session, against);
    std::vector<Comparison> comparisons;
    for (const CategoryLayout* layout : words.empty() ? other.categories() : categoriesNamed(words))
        comparisons.push_back(
            compare(*layout, Other::fromFile(*layout, session.path(*layout, copy)), other.side(*layout)));
    if (options.json)
        printJson(asJson(comparisons, copyName(copy), against));
    else
        print(comparisons, copyName(copy), against);
    const bool equal = std::all_of(comparisons.begin(), comparisons.end(),
                                   [](const Comparison& comparison) { return comparison.isEqual(); });
    return equal ? EXIT_FINE : EXIT_WRONG;
}

} // namespace td::dmctl
