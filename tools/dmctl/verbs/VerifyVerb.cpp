// verify: inspects every copy of every file without the library's loading, which would repair what it finds.
#include <string>
#include <vector>

#include <fmt/core.h>

#include "fileOperator/file/RedoRecord.h"
#include "FileTable.h"
#include "inspect/FileInspection.h"
#include "Names.h"
#include "Session.h"
#include "ui/Output.h"
#include "verbs/Verb.h"

namespace td::dmctl {

namespace {

enum class Verdict { Good, Damaged, Missing, NotMadeYet };

struct CheckedCopy {
    Copy copy = Copy::Current;
    std::string path;
    Verdict verdict = Verdict::Missing;
    std::string unreadable; ///< why it could not be read at all
    std::size_t size = 0;
    bool cutStore = false; ///< a record lies beside it with which the next load ends a store that was cut
    FileInspection inspection;
};

struct CheckedCategory {
    const CategoryLayout* layout = nullptr;
    std::vector<CheckedCopy> copies;
};

struct Counts {
    int good = 0;
    int damaged = 0;
    int missing = 0;
    int notMadeYet = 0;
};

const char* verdictName(Verdict verdict) {
    switch (verdict) {
    case Verdict::Good:
        return "good";
    case Verdict::Damaged:
        return "damaged";
    case Verdict::Missing:
        return "missing";
    case Verdict::NotMadeYet:
        break;
    }
    return "not made yet";
}

CheckedCopy check(const Session& session, const CategoryLayout& layout, Copy copy) {
    CheckedCopy checked;
    checked.copy = copy;
    checked.path = session.path(layout, copy);
    if (!session.exists(layout, copy)) {
        checked.verdict = copy == Copy::Backup ? Verdict::NotMadeYet : Verdict::Missing;
        return checked;
    }
    checked.verdict = Verdict::Damaged;
    std::string bytes;
    if (!readFile(checked.path, bytes, checked.unreadable))
        return checked;
    checked.size = bytes.size();
    checked.inspection = inspectFile(layout, bytes);
    if (checked.inspection.isGood())
        checked.verdict = Verdict::Good;
    else
        checked.cutStore = copy == Copy::Current && storeWasCut(checked.path);
    return checked;
}

std::vector<CheckedCategory> checkAll(const Session& session, const std::vector<const CategoryLayout*>& layouts) {
    std::vector<CheckedCategory> categories;
    Progress progress("checking", static_cast<int>(layouts.size()));
    for (const CategoryLayout* layout : layouts) {
        CheckedCategory& category = categories.emplace_back();
        category.layout = layout;
        for (const Copy copy : COPIES)
            category.copies.push_back(check(session, *layout, copy));
        progress.step();
    }
    return categories;
}

Counts countVerdicts(const std::vector<CheckedCategory>& categories) {
    Counts counts;
    for (const CheckedCategory& category : categories) {
        for (const CheckedCopy& copy : category.copies) {
            switch (copy.verdict) {
            case Verdict::Good:
                ++counts.good;
                break;
            case Verdict::Damaged:
                ++counts.damaged;
                break;
            case Verdict::Missing:
                ++counts.missing;
                break;
            case Verdict::NotMadeYet:
                ++counts.notMadeYet;
                break;
            }
        }
    }
    return counts;
}

std::string facts(const CategoryLayout& layout, const CheckedCopy& copy) {
    const FileInspection& inspection = copy.inspection;
    const std::string checksum = inspection.hasChecksum ? fmt::format("{:#010x}", inspection.statedChecksum) : "none";
    return fmt::format("{} bytes, SN {}, version {}, CRC {}, {} of {} sections", copy.size,
                       quotedText(inspection.tvType), quotedText(inspection.version), checksum,
                       inspection.readableRecords(), layout.recordCount());
}

void printProblems(const CheckedCopy& copy) {
    for (const FileProblem& problem : copy.inspection.problems)
        fmt::print("      line {}, byte {}: {}{}\n", problem.line, problem.offset,
                   problem.severity == FileProblem::Severity::Note ? "note: " : "", problem.text);
    const int left =
        copy.inspection.faultCount + copy.inspection.noteCount - static_cast<int>(copy.inspection.problems.size());
    if (left > 0)
        fmt::print("      and {} more\n", left);
}

void printCategory(const CheckedCategory& category) {
    fmt::print("{}  {}  {}\n", categoryName(*category.layout), category.layout->file, category.layout->version);
    for (const CheckedCopy& copy : category.copies) {
        const char* const name = copyName(copy.copy);
        if (copy.verdict == Verdict::Missing)
            fmt::print("  {:<8} {}  {}\n", name, terminal::painted("MISSING", Style::Bad), copy.path);
        else if (copy.verdict == Verdict::NotMadeYet)
            fmt::print("  {:<8} not made yet; the library makes it when it is idle\n", name);
        else if (!copy.unreadable.empty())
            fmt::print("  {:<8} {}  {} cannot be read: {}\n", name, terminal::painted("DAMAGED", Style::Bad), copy.path,
                       copy.unreadable);
        else
            fmt::print("  {:<8} {}  {}\n", name,
                       copy.verdict == Verdict::Good ? terminal::painted("good   ", Style::Good)
                                                     : terminal::painted("DAMAGED", Style::Bad),
                       facts(*category.layout, copy));
        if (copy.verdict == Verdict::Damaged)
            fmt::print("    {}\n", copy.path);
        printProblems(copy);
        if (copy.cutStore)
            fmt::print("      a store was cut off; its record {} lets the next load end it\n", redoPath(copy.path));
    }
}

const char* kindName(FileProblem::Kind kind) {
    constexpr const char* NAMES[] = {"size", "comment", "summary", "version", "checksum", "section", "keyLine"};
    return NAMES[static_cast<int>(kind)];
}

Json copyJson(const CheckedCopy& copy) {
    Json json{{"copy", copyName(copy.copy)}, {"path", copy.path}, {"verdict", verdictName(copy.verdict)}};
    if (copy.verdict == Verdict::Missing || copy.verdict == Verdict::NotMadeYet)
        return json;
    if (!copy.unreadable.empty()) {
        json["unreadable"] = copy.unreadable;
        return json;
    }
    const FileInspection& inspection = copy.inspection;
    Json problems = Json::array();
    for (const FileProblem& problem : inspection.problems)
        problems.push_back({{"kind", kindName(problem.kind)},
                            {"severity", problem.severity == FileProblem::Severity::Note ? "note" : "fault"},
                            {"line", problem.line},
                            {"byte", problem.offset},
                            {"text", problem.text}});
    json["size"] = copy.size;
    json["sn"] = inspection.tvType;
    json["version"] = inspection.version;
    json["statedCrc"] = inspection.hasChecksum ? Json(fmt::format("{:#010x}", inspection.statedChecksum)) : Json();
    json["computedCrc"] =
        inspection.contentOffset >= 0 ? Json(fmt::format("{:#010x}", inspection.computedChecksum)) : Json();
    json["sections"] = inspection.readableRecords();
    json["cutStore"] = copy.cutStore;
    json["faults"] = inspection.faultCount;
    json["notes"] = inspection.noteCount;
    json["problems"] = problems;
    return json;
}

Json resultJson(const std::vector<CheckedCategory>& categories, const Counts& counts) {
    Json list = Json::array();
    for (const CheckedCategory& category : categories) {
        Json copies = Json::array();
        for (const CheckedCopy& copy : category.copies)
            copies.push_back(copyJson(copy));
        list.push_back({{"category", categoryName(*category.layout)},
                        {"file", category.layout->file},
                        {"version", category.layout->version},
                        {"records", category.layout->recordCount()},
                        {"copies", copies}});
    }
    return {{"good", counts.good},
            {"damaged", counts.damaged},
            {"missing", counts.missing},
            {"notMadeYet", counts.notMadeYet},
            {"categories", list}};
}

void printResult(const std::vector<CheckedCategory>& categories, const Counts& counts) {
    for (const CheckedCategory& category : categories)
        printCategory(category);
    fmt::print("\n{} file{}: {} copies good, {} damaged, {} missing", categories.size(),
               categories.size() == 1 ? "" : "s", counts.good, counts.damaged, counts.missing);
    if (counts.notMadeYet > 0)
        fmt::print(", {} not made yet", counts.notMadeYet);
    fmt::print(".\n");
}

} // namespace

int runVerify(const Options& options, const Words& words) {
    const std::vector<const CategoryLayout*> layouts = categoriesNamed(words);
    Session session(options);
    const std::vector<CheckedCategory> categories = checkAll(session, layouts);
    const Counts counts = countVerdicts(categories);
    if (options.json)
        printJson(resultJson(categories, counts));
    else
        printResult(categories, counts);
    if (counts.missing > 0 && !options.json)
        fmt::print(stderr, "dmctl verify: run `dmctl {}init` to make the missing files\n",
                   session.rootOption().empty() ? "--root / " : session.rootOption());
    if (counts.damaged > 0)
        fmt::print(stderr, "dmctl verify: run `dmctl {}repair` to make the damaged copies good\n",
                   session.rootOption());
    return counts.damaged > 0 || counts.missing > 0 ? EXIT_WRONG : EXIT_FINE;
}

} // namespace td::dmctl
