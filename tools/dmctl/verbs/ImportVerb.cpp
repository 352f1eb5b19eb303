// import: stores the values of an export and proves that the files hold them.
#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <numeric>
#include <string>
#include <vector>

#include <fmt/core.h>

#include <dataModule/common/Thread.h>
#include <dataModule/platform/DebugOutput.h>

#include "exchange/Exchange.h"
#include "FileTable.h"
#include "Names.h"
#include "Session.h"
#include "ui/Output.h"
#include "verbs/Verb.h"

namespace td::dmctl {

namespace {

/// The worker may be busy for long, but never so long without finishing anything.
constexpr int STALL_MILLISECONDS = 30000;
constexpr int PROGRESS_MILLISECONDS = 500;

/// What is done to one category.
struct Plan {
    const ExchangeCategory* wanted = nullptr;
    std::vector<int> before; ///< the table as the file holds it
    std::size_t changed = 0; ///< values that become others
    int changedRecords = 0;

    const CategoryLayout& layout() const { return *wanted->layout; }
    bool changes(std::size_t cell) const { return wanted->given[cell] && wanted->values[cell] != before[cell]; }
    std::vector<int> after() const {
        std::vector<int> table = before;
        for (std::size_t cell = 0; cell < table.size(); ++cell)
            table[cell] = wanted->given[cell] ? wanted->values[cell] : table[cell];
        return table;
    }
};

/// Standard input for "-".
std::string readExport(const std::string& name) {
    const std::string path = name == "-" ? "/dev/stdin" : name;
    std::string bytes;
    std::string reason;
    if (!readAny(path, bytes, reason))
        throw Failure(fmt::format("{} cannot be read: {}", name, reason));
    return bytes;
}

/// Categories with flags that make other stores go to all sources come last: flags that are not loaded have no effect,
/// and an import changes what it names and nothing else.
bool holdsFlags(const CategoryLayout& layout) {
    return layout.category == PICTURE_GLOBAL || layout.category == SOUND_GLOBAL;
}

void countChanges(Plan& plan) {
    const std::size_t width = plan.layout().fields.size();
    for (std::size_t row = 0; row < plan.before.size(); row += width) {
        const std::size_t others = plan.changed;
        for (std::size_t cell = row; cell < row + width; ++cell)
            plan.changed += plan.changes(cell) ? 1 : 0;
        plan.changedRecords += plan.changed > others ? 1 : 0;
    }
}

std::vector<Plan> makePlans(const Session& session, const Exchange& exchange) {
    std::vector<Plan> plans;
    std::string troubles;
    for (const ExchangeCategory& category : exchange.categories) {
        Plan plan;
        plan.wanted = &category;
        const std::string path = session.path(plan.layout(), Copy::Current);
        FileTable table = readTable(plan.layout(), path);
        if (!table.isGood()) {
            troubles += fmt::format("\n  {} {}", path, table.trouble);
            continue;
        }
        plan.before = std::move(table.values);
        countChanges(plan);
        plans.push_back(std::move(plan));
    }
    if (!troubles.empty())
        throw Failure("nothing was changed, because these files have to be repaired first:" + troubles);
    std::stable_partition(plans.begin(), plans.end(), [](const Plan& plan) { return !holdsFlags(plan.layout()); });
    return plans;
}

void storeRecords(Session& session, const Plan& plan) {
    const CategoryLayout& layout = plan.layout();
    for (int record = 0; record < layout.recordCount(); ++record) {
        std::vector<_Argument_t> args;
        for (const Field& field : layout.fields) {
            const std::size_t cell = cellOf(layout, record, field);
            if (plan.changes(cell))
                args.push_back({field.argumentName(), plan.wanted->values[cell]});
        }
        if (!args.empty() && !session.manager().storeData(layout.category, indicesOf(layout, record), args))
            throw Failure(fmt::format("the library refused to store {} of {}", recordLabel(layout, record),
                                      categoryName(layout)));
    }
}

void awaitStores(Session& session, const CategoryLayout& layout, Progress& progress) {
    _ThreadStaticInfo_t statistics = {};
    std::uint32_t handled = 0;
    for (int waited = 0; !session.manager().waitStored(PROGRESS_MILLISECONDS); waited += PROGRESS_MILLISECONDS) {
        session.manager().getWorkerStatistics(statistics);
        if (statistics.handled != handled)
            waited = 0;
        handled = statistics.handled;
        progress.show(static_cast<int>(handled));
        if (waited >= STALL_MILLISECONDS)
            throw Failure(fmt::format("the values of {} are not being written", categoryName(layout)));
    }
    session.manager().getWorkerStatistics(statistics);
    if (statistics.failed != 0)
        throw Failure(fmt::format("values of {} could not be written", categoryName(layout)));
}

/// The records go to their places only, because no flag is loaded; the library warns of that at every store.
class QuietStores {
public:
    explicit QuietStores(bool quiet) : m_quiet(quiet) {
        if (m_quiet)
            DebugOutput::setLevel(DebugOutput::Level::Error);
    }
    ~QuietStores() {
        if (m_quiet)
            DebugOutput::setLevel(DebugOutput::Level::Warning);
    }
    QuietStores(const QuietStores&) = delete;
    QuietStores& operator=(const QuietStores&) = delete;

private:
    const bool m_quiet;
};

void perform(Session& session, const std::vector<Plan>& plans, bool verbose) {
    session.start();
    Progress progress("storing", std::accumulate(plans.begin(), plans.end(), 0,
                                                 [](int sum, const Plan& plan) { return sum + plan.changedRecords; }));
    for (const Plan& plan : plans) {
        if (plan.changed == 0)
            continue;
        session.load(plan.layout());
        const QuietStores quiet(plan.layout().applyFlag != nullptr && !verbose);
        storeRecords(session, plan);
        awaitStores(session, plan.layout(), progress);
    }
    session.close();
    for (const Plan& plan : plans) {
        const std::string path = session.path(plan.layout(), Copy::Current);
        const FileTable table = readTable(plan.layout(), path);
        if (!table.isGood())
            throw Failure(fmt::format("after the import {} {}", path, table.trouble));
        if (table.values != plan.after())
            throw Failure(fmt::format("{} does not hold what was imported", path));
    }
}

[[noreturn]] void refuse(const Options& options, const std::string& name, const Exchange& exchange) {
    if (options.json) {
        Json faults = Json::array();
        for (const ExchangeFault& fault : exchange.faults)
            faults.push_back({{"place", fault.place}, {"text", fault.text}});
        printJson({{"file", name}, {"faults", faults}, {"cutShort", exchange.cutShort}});
    } else {
        for (const ExchangeFault& fault : exchange.faults)
            fmt::print(stderr, "{}: {}{}{}\n", name, fault.place, fault.place.empty() ? "" : ": ", fault.text);
    }
    throw Failure(fmt::format("nothing was changed: {}{} in {}", exchange.cutShort ? "more than " : "",
                              counted(exchange.faults.size(), "fault"), name));
}

void printPlans(const std::vector<Plan>& plans, bool dryRun, bool verbose) {
    std::vector<std::vector<std::string>> rows;
    std::size_t given = 0;
    std::size_t changed = 0;
    for (const Plan& plan : plans) {
        given += plan.wanted->count;
        changed += plan.changed;
        rows.push_back({categoryName(plan.layout()), counted(plan.wanted->count, "value"),
                        plan.changed == 0 ? "nothing to change" : fmt::format("{} changed", plan.changed)});
    }
    printColumns(rows);
    if (verbose) {
        std::vector<std::vector<std::string>> changes;
        for (const Plan& plan : plans) {
            for (int record = 0; record < plan.layout().recordCount(); ++record) {
                for (const Field& field : plan.layout().fields) {
                    const std::size_t cell = cellOf(plan.layout(), record, field);
                    if (plan.changes(cell))
                        changes.push_back({categoryName(plan.layout()), recordLabel(plan.layout(), record),
                                           field.argumentName(),
                                           fmt::format("{} -> {}", plan.before[cell], plan.wanted->values[cell])});
                }
            }
        }
        printColumns(changes);
    }
    fmt::print("{}, of which {} {}.\n", counted(given, "value"), changed,
               dryRun         ? "would be changed"
               : changed == 1 ? "was changed"
                              : "were changed");
}

Json plansJson(const std::string& name, const std::vector<Plan>& plans, bool dryRun) {
    Json categories = Json::array();
    std::size_t changed = 0;
    for (const Plan& plan : plans) {
        changed += plan.changed;
        categories.push_back(
            {{"category", categoryName(plan.layout())}, {"values", plan.wanted->count}, {"changed", plan.changed}});
    }
    return {{"file", name},
            {"faults", Json::array()},
            {"dryRun", dryRun},
            {"changed", changed},
            {"categories", categories}};
}

} // namespace

int runImport(const Options& options, const Words& words) {
    if (words.size() != 1)
        throw UsageError(words.empty() ? "name the file to import, or - for standard input"
                                       : "one file is imported at a time");
    const std::string& name = words.front();
    const Exchange exchange = parseExchange(readExport(name));
    if (!exchange.faults.empty())
        refuse(options, name, exchange);
    const bool dryRun = options.has("--dry-run");
    Options access = options;
    access.writes = !dryRun;
    Session session(access);
    const std::vector<Plan> plans = makePlans(session, exchange);
    if (!dryRun)
        perform(session, plans, options.verbose);
    if (options.json)
        printJson(plansJson(name, plans, dryRun));
    else
        printPlans(plans, dryRun, options.verbose);
    return EXIT_FINE;
}

} // namespace td::dmctl
