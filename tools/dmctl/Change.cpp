#include "Change.h"

#include <algorithm>

#include <fmt/core.h>

#include <dataModule/common/Thread.h>

#include "Names.h"

namespace td::dmctl {

namespace {

constexpr int STEP_MILLISECONDS = 200;
constexpr int PATIENCE_MILLISECONDS = 30000; ///< without anything written
constexpr std::size_t MOST_LINES = 40;       ///< on a terminal

FileTable soundTable(Session& session, const CategoryLayout& layout) {
    session.load(layout);
    try {
        return goodTable(session, layout, Copy::Current);
    } catch (const Failure& failure) {
        throw Failure(fmt::format("nothing was changed: {}", failure.what()));
    }
}

} // namespace

Change::Change(Session& session, const CategoryLayout& layout)
    : m_session(session), m_layout(layout), m_before(soundTable(session, layout)), m_after(m_before),
      m_touched(static_cast<std::size_t>(layout.recordCount())), m_asked(m_touched.size()) {}

std::size_t Change::numberOf(const Record& record) const {
    return static_cast<std::size_t>(m_layout.recordIndex(record.data()));
}

bool Change::changed(const Record& record, const Field& field) const {
    return m_before.value(record, field) != m_after.value(record, field);
}

void Change::put(const Record& record, const Field& field, int value) {
    m_touched[numberOf(record)] = true;
    m_asked[numberOf(record)] = true;
    if (m_before.value(record, field) == value)
        ++m_unchanged;
    m_after.at(record)[field.position] = value;
}

void Change::put(const Record& record, const FileTable& values) {
    for (const Field& field : m_layout.fields)
        put(record, field, values.value(record, field));
}

void Change::copyTo(const Record& record, const BulkCopy& copy, bool asked) {
    const int* const given = m_after.at(record);
    for (AxisSweep sweep(m_layout, record.data(), copy.axes); !sweep.done(); sweep.next()) {
        const Record visited(sweep.indices(), sweep.indices() + m_layout.dimensionCount());
        int* const other = m_after.at(visited);
        m_touched[numberOf(visited)] = true;
        if (other == given)
            continue;
        if (copy.equal == nullptr || !copy.equal(other, given))
            std::copy_n(given, m_layout.fieldCount(), other);
        if (!asked)
            continue;
        m_asked[numberOf(visited)] = true;
        for (const Field& field : m_layout.fields)
            m_unchanged += changed(visited, field) ? 0 : 1;
    }
}

void Change::waitStored() {
    FileDataSeparateManager& manager = m_session.manager();
    Progress progress("writing", static_cast<int>(std::count(m_touched.begin(), m_touched.end(), true)));
    _ThreadStaticInfo_t statistics = {};
    int idle = 0;
    while (!manager.waitStored(STEP_MILLISECONDS)) {
        const auto handled = statistics.handled;
        manager.getWorkerStatistics(statistics);
        progress.show(static_cast<int>(statistics.handled));
        idle = statistics.handled == handled ? idle + STEP_MILLISECONDS : 0;
        if (idle >= PATIENCE_MILLISECONDS)
            throw Failure(fmt::format("nothing was written to {} for {} s; it may hold a part of the change",
                                      m_session.path(m_layout, Copy::Current), PATIENCE_MILLISECONDS / 1000));
    }
    manager.getWorkerStatistics(statistics);
    if (statistics.failed != 0)
        throw Failure(fmt::format("the change could not be written to {}", m_session.path(m_layout, Copy::Current)));
}

void Change::prove() {
    waitStored();
    m_session.close();
    const FileTable held = goodTable(m_session, m_layout, Copy::Current);
    Record record(m_layout.dimensions.size());
    for (std::size_t i = 0; i < m_touched.size(); ++i) {
        m_layout.indicesOf(static_cast<int>(i), record.data());
        if (m_touched[i] &&
            !std::equal(m_after.at(record), m_after.at(record) + m_layout.fieldCount(), held.at(record)))
            throw Failure(fmt::format("{} does not hold the change of {}", m_session.path(m_layout, Copy::Current),
                                      record.empty() ? categoryName(m_layout) : recordText(m_layout, record)));
    }
}

std::vector<Record> Change::changedRecords() const {
    std::vector<Record> records;
    Record record(m_layout.dimensions.size());
    for (int i = 0; i < m_layout.recordCount(); ++i) {
        m_layout.indicesOf(i, record.data());
        if (!std::equal(m_after.at(record), m_after.at(record) + m_layout.fieldCount(), m_before.at(record)))
            records.push_back(record);
    }
    return records;
}

std::size_t Change::changedOthers() const {
    const std::vector<Record> records = changedRecords();
    return static_cast<std::size_t>(std::count_if(records.begin(), records.end(),
                                                  [this](const Record& record) { return !m_asked[numberOf(record)]; }));
}

void Change::report(const Options& options, const char* applied) const {
    if (options.json)
        printJson(asJson(applied));
    else
        print(applied);
}

Json Change::asJson(const char* applied) const {
    Json records = Json::array();
    std::size_t values = 0;
    for (const Record& record : changedRecords()) {
        Json fields = Json::object();
        for (const Field& field : m_layout.fields) {
            if (changed(record, field))
                fields[field.argumentName()] = {{"before", m_before.value(record, field)},
                                                {"after", m_after.value(record, field)}};
        }
        values += fields.size();
        records.push_back({{"record", recordJson(m_layout, record)}, {"fields", fields}});
    }
    return {{"category", categoryName(m_layout)},
            {"changed", records},
            {"changedValues", values},
            {"unchangedValues", m_unchanged},
            {"applied", applied != nullptr ? Json(applied) : Json()},
            {"changedOthers", changedOthers()}};
}

void Change::print(const char* applied) const {
    const bool alone = std::count(m_touched.begin(), m_touched.end(), true) == 1;
    std::vector<std::string> names;
    for (const Dimension& dimension : m_layout.dimensions)
        names.emplace_back(dimension.name);
    names.insert(names.end(), {"field", "change"});
    Rows rows;
    if (!alone)
        rows.push_back(headings(names));
    std::size_t values = 0;
    for (const Record& record : changedRecords()) {
        for (const Field& field : m_layout.fields) {
            if (!changed(record, field) || (++values > MOST_LINES && terminal::width() > 0))
                continue;
            std::vector<Cell>& row = rows.emplace_back();
            for (std::size_t d = 0; d < record.size() && !alone; ++d)
                row.emplace_back(valueName(m_layout.dimensions[d], record[d]));
            row.emplace_back(field.argumentName());
            row.emplace_back(fmt::format("{} -> {}", m_before.value(record, field), m_after.value(record, field)),
                             Style::Changed);
        }
    }
    if (values > 0)
        printColumns(rows);
    if (values > MOST_LINES && terminal::width() > 0)
        fmt::print("... and {} more; all of them are shown where the output is no terminal\n", values - MOST_LINES);
    fmt::print("{} changed, {} unchanged: {} holds all of it.\n", counted(values, "value"), m_unchanged, m_layout.file);
    if (applied != nullptr)
        fmt::print("{} is set: {} changed with it.\n", applied, counted(changedOthers(), "other record"));
}

} // namespace td::dmctl
