// set: changes fields of one record and proves that they are in the file.
#include <algorithm>
#include <charconv>
#include <climits>
#include <cstdlib>
#include <string>
#include <vector>

#include <fmt/core.h>

#include <dataModule/common/Thread.h>
#include <dataModule/fileOperator/FileInspection.h>
#include <dataModule/fileOperator/OperatorFactory.h>
#include <dataModule/fileOperator/TextLayout.h>

#include "Names.h"
#include "Output.h"
#include "Session.h"
#include "Verb.h"

namespace td::dmctl {

namespace {

constexpr int STORE_MILLISECONDS = 30000;

struct Assignment {
    const Field* field = nullptr;
    int value = 0;
};

using Record = std::vector<int>;            ///< indices
using Rows = std::vector<std::vector<int>>; ///< values by field, one row per record

/// The value furthest from 0 towards `outside`, which does not fit, that a key line holds.
long long lastFitting(KeyLineForm form, long long outside) {
    long long inside = 0;
    while (std::llabs(outside - inside) > 1) {
        const long long middle = inside + (outside - inside) / 2;
        (text::fitsColumns(form, static_cast<int>(middle)) ? inside : outside) = middle;
    }
    return inside;
}

int valueOf(const CategoryLayout& layout, const Field& field, const std::string& word) {
    int value = 0;
    const char* const end = word.data() + word.size();
    const auto parsed = std::from_chars(word.data(), end, value);
    const std::string range =
        fmt::format("{} to {}", lastFitting(layout.keyLine, INT_MIN), lastFitting(layout.keyLine, INT_MAX));
    if (word.empty() || parsed.ptr != end)
        throw UsageError(fmt::format("\"{}\" is no value for {}; it takes a whole number from {}", word,
                                     field.argumentName(), range));
    if (parsed.ec != std::errc() || !text::fitsColumns(layout.keyLine, value))
        throw UsageError(fmt::format("{} is out of range for {}; its place in the file holds {}", word,
                                     field.argumentName(), range));
    return value;
}

Assignment parseAssignment(const CategoryLayout& layout, const std::string& word) {
    const std::size_t sign = word.find('=');
    const Field& field = fieldNamed(layout, word.substr(0, sign));
    return {&field, valueOf(layout, field, word.substr(sign + 1))};
}

std::vector<Assignment> parseAssignments(const CategoryLayout& layout, const Words& words) {
    if (words.empty())
        throw UsageError(fmt::format("nothing to set; add FIELD=VALUE, as in {}={}",
                                     layout.fields.front().argumentName(), layout.fields.front().defaultValue));
    std::vector<Assignment> assignments;
    for (const std::string& word : words) {
        if (word.find('=') == std::string::npos)
            throw UsageError(fmt::format("\"{}\" is no FIELD=VALUE", word));
        const Assignment parsed = parseAssignment(layout, word);
        if (std::any_of(assignments.begin(), assignments.end(),
                        [&](const Assignment& other) { return other.field == parsed.field; }))
            throw UsageError(fmt::format("{} is given twice", parsed.field->argumentName()));
        assignments.push_back(parsed);
    }
    return assignments;
}

/// The addressed record first, then those that its change goes to.
std::vector<Record> touchedRecords(const CategoryLayout& layout, const Record& given, bool applied) {
    std::vector<Record> records{given};
    if (!applied)
        return records;
    for (AxisSweep sweep(layout, given.data(), layout.applyToAllSources.axes); !sweep.done(); sweep.next()) {
        Record other(sweep.indices(), sweep.indices() + layout.dimensionCount());
        if (other != given)
            records.push_back(std::move(other));
    }
    return records;
}

bool appliesToOthers(Session& session, const CategoryLayout& layout) {
    if (layout.applyFlag == nullptr || layout.applyToAllSources.axes == 0)
        return false;
    session.load(*layoutOf(PICTURE_GLOBAL));
    return session.manager().getApplySettingFlag(PICTURE_GLOBAL, layout.applyFlag);
}

void store(Session& session, const CategoryLayout& layout, const Record& record,
           const std::vector<Assignment>& assignments) {
    std::vector<_Argument_t> args;
    args.reserve(assignments.size());
    for (const Assignment& assignment : assignments)
        args.push_back({assignment.field->argumentName(), assignment.value});
    if (!session.manager().storeData(layout.category, record, args))
        throw Failure("the library refused the change");
    if (!session.manager().waitStored(STORE_MILLISECONDS))
        throw Failure(fmt::format("the change was not written within {} s", STORE_MILLISECONDS / 1000));
    _ThreadStaticInfo_t statistics = {};
    session.manager().getWorkerStatistics(statistics);
    if (statistics.failed != 0)
        throw Failure(fmt::format("the change could not be written to {}", session.path(layout, Copy::Current)));
}

/// The records as the file on the disk holds them now.
Rows readFromFile(const Session& session, const CategoryLayout& layout, const std::vector<Record>& records) {
    const std::string path = session.path(layout, Copy::Current);
    std::string bytes;
    std::string reason;
    if (!readFile(path, bytes, reason))
        throw Failure(fmt::format("{} cannot be read again: {}", path, reason));
    const FileInspection inspection = inspectFile(layout, bytes);
    if (!inspection.isGood())
        throw Failure(fmt::format("{} is damaged after the change; what is wrong says: dmctl {}verify {}", path,
                                  session.rootOption(), categoryName(layout)));
    Rows rows;
    for (const Record& record : records) {
        // A file without faults has every section once and in order.
        const auto& section = inspection.sections.at(static_cast<std::size_t>(layout.recordIndex(record.data())));
        std::vector<int> values(layout.fields.size());
        readInspected(layout, bytes, section, values.data());
        std::vector<int>& row = rows.emplace_back();
        for (const Field& field : layout.fields)
            row.push_back(values[static_cast<std::size_t>(field.position)]);
    }
    return rows;
}

std::size_t numberOf(const CategoryLayout& layout, const Field& field) {
    return static_cast<std::size_t>(&field - layout.fields.data());
}

struct Change {
    const CategoryLayout* layout = nullptr;
    Record record;
    std::vector<Assignment> assignments;
    std::vector<int> before; ///< of the addressed record, by field
    bool applied = false;    ///< the flag made it go to others
    int changedOthers = 0;
};

void printChange(const Change& change) {
    std::vector<std::vector<std::string>> rows;
    for (const Assignment& assignment : change.assignments) {
        const int before = change.before[numberOf(*change.layout, *assignment.field)];
        rows.push_back({assignment.field->argumentName(), before == assignment.value
                                                              ? fmt::format("{} (unchanged)", before)
                                                              : fmt::format("{} -> {}", before, assignment.value)});
    }
    printColumns(rows);
    if (change.applied)
        fmt::print("{} is set: {} other record{} changed with it.\n", change.layout->applyFlag, change.changedOthers,
                   change.changedOthers == 1 ? "" : "s");
}

Json changeJson(const Change& change) {
    Json fields = Json::object();
    for (const Assignment& assignment : change.assignments)
        fields[assignment.field->argumentName()] = {
            {"before", change.before[numberOf(*change.layout, *assignment.field)]}, {"after", assignment.value}};
    return {{"category", categoryName(*change.layout)},
            {"record", recordJson(*change.layout, change.record)},
            {"fields", fields},
            {"applied", change.applied ? Json(change.layout->applyFlag) : Json()},
            {"changedOthers", change.changedOthers}};
}

/// Makes the change and checks that the file holds it; fills in what it found.
void perform(const Options& options, Change& change) {
    const CategoryLayout& layout = *change.layout;
    Session session(options);
    session.start();
    session.load(layout);
    if (!session.currentIsSound(layout))
        throw Failure(fmt::format("{} loads but has faults, so nothing was changed; what is wrong says: dmctl {}verify "
                                  "{}",
                                  session.path(layout, Copy::Current), session.rootOption(), categoryName(layout)));
    change.applied = appliesToOthers(session, layout);
    const std::vector<Record> records = touchedRecords(layout, change.record, change.applied);
    const Rows before = readRecords(session, layout, records);
    change.before = before.front();

    store(session, layout, change.record, change.assignments);
    session.close();

    const Rows after = readFromFile(session, layout, records);
    std::vector<int> expected = change.before;
    for (const Assignment& assignment : change.assignments)
        expected[numberOf(layout, *assignment.field)] = assignment.value;
    for (std::size_t i = 0; i < records.size(); ++i) {
        if (after[i] != expected)
            throw Failure(fmt::format("{} does not hold the change of {}", session.path(layout, Copy::Current),
                                      records[i].empty() ? categoryName(layout) : recordText(layout, records[i])));
        if (i > 0 && after[i] != before[i])
            ++change.changedOthers;
    }
}

} // namespace

int runSet(const Options& options, const Words& words) {
    Change change;
    change.layout = &categoryNamed(words.empty() ? "" : words.front());
    const auto firstIndex = words.empty() ? words.end() : words.begin() + 1;
    const auto firstField = std::find_if(firstIndex, words.end(),
                                         [](const std::string& word) { return word.find('=') != std::string::npos; });
    change.record = recordNamed(*change.layout, Words(firstIndex, firstField));
    change.assignments = parseAssignments(*change.layout, Words(firstField, words.end()));

    perform(options, change);
    if (options.json)
        printJson(changeJson(change));
    else
        printChange(change);
    return EXIT_FINE;
}

} // namespace td::dmctl
