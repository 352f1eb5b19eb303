// set: changes fields of records and proves that they are in the file.
#include <algorithm>
#include <charconv>
#include <climits>
#include <cstdlib>
#include <string>
#include <vector>

#include <fmt/core.h>

#include "Change.h"
#include "fileOperator/OperatorFactory.h"
#include "fileOperator/text/TextLayout.h"
#include "Names.h"
#include "Selection.h"
#include "Session.h"
#include "verbs/Verb.h"

namespace td::dmctl {

namespace {

struct Assignment {
    const Field* field = nullptr;
    int value = 0;
};

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
}

} // namespace

int runSet(const Options& options, const Words& words) {
    const CategoryLayout& layout = categoryNamed(words.empty() ? "" : words.front());
    Words rest;
    const std::vector<Record> records = recordsNamed(layout, Words(words.begin() + 1, words.end()), rest);
    const std::vector<Assignment> assignments = parseAssignments(layout, rest);

    Session session(options);
    session.start();
    Change change(session, layout);
    const bool applied = appliesToOthers(session, layout);
    for (const Record& record : records) {
        for (const Assignment& assignment : assignments)
            change.put(record, *assignment.field, assignment.value);
        if (applied)
            change.copyTo(record, layout.applyToAllSources, false);
    }
    for (const Record& record : records)
        store(session, layout, record, assignments);
    change.prove();
    change.report(options, applied ? layout.applyFlag : nullptr);
    return EXIT_FINE;
}

} // namespace td::dmctl
