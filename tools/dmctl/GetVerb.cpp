// get: fields of one record, as a start of the television would read them.
#include <algorithm>
#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

#include <fmt/core.h>

#include "Names.h"
#include "Output.h"
#include "Session.h"
#include "Verb.h"

namespace td::dmctl {

namespace {

/// The fields that the words name, in their order, or all. A whole record is asked for by names too: its listing hides
/// some fields and leaves the names of others out.
std::vector<const Field*> fieldsNamed(const CategoryLayout& layout, const Words& words) {
    std::vector<const Field*> fields;
    for (const std::string& word : words)
        fields.push_back(&fieldNamed(layout, word));
    if (words.empty()) {
        for (const Field& field : layout.fields)
            fields.push_back(&field);
    }
    return fields;
}

std::vector<_Argument_t> readFields(Session& session, const CategoryLayout& layout, const std::vector<int>& record,
                                    const std::vector<const Field*>& fields) {
    std::vector<_Argument_t> values;
    values.reserve(fields.size());
    for (const Field* field : fields)
        values.push_back({field->argumentName(), 0});
    if (!session.manager().loadData(layout.category, record, values))
        throw Failure(fmt::format("{} could not be read", categoryName(layout)));
    return values;
}

void printValues(const std::vector<_Argument_t>& values) {
    std::size_t width = 0;
    for (const _Argument_t& value : values)
        width = std::max(width, std::strlen(value.name));
    for (const _Argument_t& value : values)
        fmt::print("{:<{}} = {}\n", value.name, width, value.value);
}

Json valuesJson(const CategoryLayout& layout, const std::vector<int>& record, const std::vector<_Argument_t>& values) {
    Json fields = Json::object();
    for (const _Argument_t& value : values)
        fields[value.name] = value.value;
    return {{"category", categoryName(layout)}, {"record", recordJson(layout, record)}, {"fields", fields}};
}

} // namespace

int runGet(const Options& options, const Words& words) {
    const CategoryLayout& layout = categoryNamed(words.empty() ? "" : words.front());
    const auto firstIndex = words.empty() ? words.end() : words.begin() + 1;
    const auto firstField = firstIndex + std::min<std::ptrdiff_t>(words.end() - firstIndex, layout.dimensionCount());
    const std::vector<int> record = recordNamed(layout, Words(firstIndex, firstField));
    const std::vector<const Field*> fields = fieldsNamed(layout, Words(firstField, words.end()));

    Session session(options);
    session.start();
    session.load(layout);
    if (!session.currentIsSound(layout))
        fmt::print(stderr, "dmctl get: {} loads but has faults; what is wrong says: dmctl {}verify {}\n",
                   session.path(layout, Copy::Current), session.rootOption(), categoryName(layout));
    const std::vector<_Argument_t> values = readFields(session, layout, record, fields);
    session.close();
    if (options.json)
        printJson(valuesJson(layout, record, values));
    else
        printValues(values);
    return EXIT_FINE;
}

} // namespace td::dmctl
