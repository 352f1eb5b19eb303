// get: fields of records, as the current file holds them after a load.
#include <algorithm>
#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

#include <fmt/core.h>

#include "FileTable.h"
#include "Names.h"
#include "Selection.h"
#include "Session.h"
#include "ui/Output.h"
#include "verbs/Verb.h"

namespace td::dmctl {

namespace {

using Fields = std::vector<const Field*>;
using Values = std::vector<std::vector<int>>; ///< a row per record, in the order of the fields asked for

Values fromTable(const FileTable& table, const std::vector<Record>& records, const Fields& fields) {
    Values values;
    for (const Record& record : records) {
        std::vector<int>& row = values.emplace_back();
        for (const Field* field : fields)
            row.push_back(table.value(record, *field));
    }
    return values;
}

/// What the library loaded, which it does even where the file is not quite as it should be.
Values fromMemory(Session& session, const CategoryLayout& layout, const std::vector<Record>& records,
                  const Fields& fields) {
    Values values;
    for (const Record& record : records) {
        std::vector<_Argument_t> args;
        for (const Field* field : fields)
            args.push_back({field->argumentName(), 0});
        if (!session.manager().loadData(layout.category, record, args))
            throw Failure(fmt::format("{} could not be read", categoryName(layout)));
        std::vector<int>& row = values.emplace_back();
        for (const _Argument_t& arg : args)
            row.push_back(arg.value);
    }
    return values;
}

Values read(const Options& options, const CategoryLayout& layout, const std::vector<Record>& records,
            const Fields& fields) {
    Session session(options);
    session.start();
    session.load(layout);
    if (session.currentIsSound(layout))
        return fromTable(goodTable(session, layout, Copy::Current), records, fields);
    fmt::print(stderr, "dmctl get: {} loads but has faults; run `dmctl {}verify {}` to see what is wrong\n",
               session.path(layout, Copy::Current), session.rootOption(), categoryName(layout));
    return fromMemory(session, layout, records, fields);
}

void printRecord(const Fields& fields, const std::vector<int>& values, int margin = 0) {
    std::size_t width = 0;
    for (const Field* field : fields)
        width = std::max(width, std::strlen(field->argumentName()));
    for (std::size_t i = 0; i < fields.size(); ++i)
        fmt::print("{:{}}{:<{}} = {}\n", "", margin, fields[i]->argumentName(), width, values[i]);
}

/// One line per record, or, where a terminal is too narrow for that, one per value.
void printRecords(const CategoryLayout& layout, const std::vector<Record>& records, const Fields& fields,
                  const Values& values) {
    std::vector<std::string> names;
    for (const Dimension& dimension : layout.dimensions)
        names.emplace_back(dimension.name);
    for (const Field* field : fields)
        names.emplace_back(field->argumentName());
    Rows rows{headings(names)};
    for (std::size_t i = 0; i < records.size(); ++i) {
        std::vector<Cell>& row = rows.emplace_back();
        for (std::size_t d = 0; d < records[i].size(); ++d)
            row.emplace_back(valueName(layout.dimensions[d], records[i][d]));
        for (const int value : values[i])
            row.emplace_back(std::to_string(value));
    }
    if (terminal::width() == 0 || widthOf(rows) <= terminal::width()) {
        printColumns(rows);
        return;
    }
    for (std::size_t i = 0; i < records.size(); ++i) {
        fmt::print("{}\n", terminal::painted(recordText(layout, records[i]), Style::Heading));
        printRecord(fields, values[i], 2);
    }
}

Json valuesJson(const CategoryLayout& layout, const std::vector<Record>& records, const Fields& fields,
                const Values& values) {
    Json list = Json::array();
    for (std::size_t i = 0; i < records.size(); ++i) {
        Json row = Json::object();
        for (std::size_t f = 0; f < fields.size(); ++f)
            row[fields[f]->argumentName()] = values[i][f];
        list.push_back({{"record", recordJson(layout, records[i])}, {"fields", row}});
    }
    return {{"category", categoryName(layout)}, {"records", list}};
}

} // namespace

int runGet(const Options& options, const Words& words) {
    const CategoryLayout& layout = categoryNamed(words.empty() ? "" : words.front());
    Words rest;
    const std::vector<Record> records = recordsNamed(layout, Words(words.begin() + 1, words.end()), rest);
    const Fields fields = fieldsNamed(layout, rest);
    const Values values = read(options, layout, records, fields);
    if (options.json)
        printJson(valuesJson(layout, records, fields, values));
    else if (records.size() == 1)
        printRecord(fields, values.front());
    else
        printRecords(layout, records, fields, values);
    return EXIT_FINE;
}

} // namespace td::dmctl
