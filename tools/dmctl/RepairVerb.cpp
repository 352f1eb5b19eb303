// repair: makes a damaged copy good again, and keeps the damaged one.
#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include <fmt/core.h>

#include <dataModule/common/FileUtil.h>
#include <dataModule/fileOperator/AbstractFileOperator.h>
#include <dataModule/platform/RootPrefix.h>

#include "common/FileLock.h"
#include "common/SystemPaths.h"
#include "fileOperator/file/RedoRecord.h"
#include "fileOperator/text/TextLayout.h"
#include "FileTable.h"
#include "Names.h"
#include "Output.h"
#include "RootUse.h"
#include "Session.h"
#include "Verb.h"

namespace fs = std::filesystem;

namespace td::dmctl {

namespace {

constexpr const char* DAMAGED_DIRECTORY = "/var/local/dataModule/damaged/";
/// Sections not wholly saved are named up to this number unless all are asked for.
constexpr std::size_t NAMED_SECTIONS = 20;

enum class Mode { Newest, Checksum, Salvage };

struct RepairRequest {
    Mode mode = Mode::Newest;
    Copy copy = Copy::Current;
    std::optional<Copy> from; ///< the copy to take, whichever is newest
    bool dryRun = false;
};

/// Where the values of a salvaged file come from: copies by number, then the defaults.
constexpr std::size_t DEFAULTS = std::size(COPIES);
using FieldCounts = std::array<int, DEFAULTS + 1>;

const char* sourceName(std::size_t source) {
    return source == DEFAULTS ? "defaults" : copyName(COPIES[source]);
}

struct Salvage {
    std::vector<int> values;
    std::vector<FieldCounts> records; ///< fields of each record by where they come from
    bool proven = false;              ///< what comes from the damaged copy is what was written
};

/// What was found and done about one copy.
struct RepairOutcome {
    const CategoryLayout* layout = nullptr;
    std::string path;
    FileTable before;
    std::string action;  ///< what was done, in words; empty: nothing
    std::string failure; ///< why the copy is still not good; empty: it is
    std::string kept;    ///< where the damaged copy is now
    std::optional<Salvage> salvage;
    bool leftAlone = false; ///< not good, but nothing that a repair should touch
};

RepairRequest requestOf(const Options& options) {
    RepairRequest request;
    if (options.has("--crc") && options.has("--salvage"))
        throw UsageError("--crc and --salvage are two ways; choose one");
    request.mode = options.has("--crc") ? Mode::Checksum : options.has("--salvage") ? Mode::Salvage : Mode::Newest;
    request.copy = copyNamed(options.value("--copy", copyName(Copy::Current)));
    request.dryRun = options.has("--dry-run");
    if (!options.has("--from"))
        return request;
    if (request.mode != Mode::Newest)
        throw UsageError("--from names the copy to take, which neither --crc nor --salvage does");
    request.from = copyNamed(options.value("--from"));
    if (request.from == request.copy)
        throw UsageError("a copy cannot be repaired from itself");
    return request;
}

class Repair {
public:
    Repair(const Session& session, const RepairRequest& request, const CategoryLayout& layout)
        : m_session(session), m_request(request), m_layout(layout) {}

    RepairOutcome run() {
        // From the first reading to the last one nobody else reads or writes the copies of this category.
        std::optional<ReadLock> readLock;
        if (m_request.dryRun)
            readLock.emplace(m_layout.file);
        else
            m_lock.lock(paths::lockFile(m_layout.file), FileLock::Kind::Exclusive);
        m_outcome.layout = &m_layout;
        m_outcome.path = m_session.path(m_layout, m_request.copy);
        m_outcome.before = read(m_request.copy);
        if (!needsRepair())
            return std::move(m_outcome);
        if (!endStore())
            repair();
        if (m_outcome.failure.empty() && !m_request.dryRun)
            verify();
        return std::move(m_outcome);
    }

private:
    using State = FileTable::State;

    void repair() {
        switch (m_request.mode) {
        case Mode::Checksum:
            rewriteChecksum();
            break;
        case Mode::Salvage:
            salvage();
            break;
        case Mode::Newest:
            takeOther();
            break;
        }
    }
    /// The file becomes what it was to become; nothing else would give back as much.
    bool endStore() {
        unsigned int crc = 0;
        if (!m_outcome.before.storeWasCut || (!m_request.dryRun && !replayRedo(m_outcome.path, crc)))
            return false;
        m_outcome.action = "brought to the end of its store";
        return true;
    }

    bool needsRepair() {
        const State state = m_outcome.before.state;
        // The library itself takes over an older version and makes a backup that is missing.
        m_outcome.leftAlone = state == State::OtherVersion ||
                              (state == State::Missing && m_request.copy == Copy::Backup && !m_request.from);
        if (state == State::Unreadable)
            m_outcome.failure = m_outcome.before.trouble;
        return state != State::Good && state != State::Unreadable && !m_outcome.leftAlone;
    }
    FileTable read(Copy copy) const { return readTable(m_layout, m_session.path(m_layout, copy), Writers::KeptAway); }
    void fail(const std::string& reason) { m_outcome.failure = reason; }
    void verify() {
        const FileTable after = read(m_request.copy);
        if (!after.isGood())
            fail(fmt::format("after the repair it {}", after.trouble));
    }

    /// Puts the damaged file where no process looks for one.
    bool keepDamaged() {
        if (m_request.dryRun || m_outcome.before.state == State::Missing)
            return true;
        if (!strayText(m_outcome.path).empty())
            return moveAside();
        const std::string directory = underRootPrefix(DAMAGED_DIRECTORY);
        std::error_code error;
        fs::create_directories(directory, error);
        for (int number = 1; number < 1000; ++number) {
            const std::string path =
                fmt::format("{}{}.damaged{}", directory, m_layout.file, number == 1 ? "" : fmt::format(".{}", number));
            if (fs::exists(path, error))
                continue;
            if (!FileUtil::replaceFile(m_outcome.path.c_str(), path.c_str()))
                break;
            m_outcome.kept = path;
            return true;
        }
        fail(fmt::format("the damaged file cannot be kept in {}, so nothing was done", directory));
        return false;
    }

    /// What is no file cannot be copied; it stays where it is, under another name.
    bool moveAside() {
        if (FileUtil::moveAside(m_outcome.path.c_str(), m_outcome.kept))
            return true;
        m_outcome.kept.clear();
        fail(fmt::format("what stands there cannot be moved aside: {}", std::strerror(errno)));
        return false;
    }

    // --- the ways ---

    void rewriteChecksum() {
        const FileInspection& inspection = m_outcome.before.inspection;
        if (inspection.checksumOffset < 0)
            return fail("there is no checksum line that could be rewritten");
        std::string bytes = m_outcome.before.bytes;
        bytes.replace(static_cast<std::size_t>(inspection.checksumOffset), text::CRC_LINE_LENGTH,
                      text::crcLine(inspection.computedChecksum));
        const FileInspection after = inspectFile(m_layout, bytes);
        if (!after.isGood())
            return fail(
                fmt::format("not only its checksum is wrong; with a new one the file still {}", faultText(after)));
        m_outcome.action = fmt::format("checksum rewritten, now {:#010x}", inspection.computedChecksum);
        if (m_request.dryRun || !keepDamaged())
            return;
        m_lock.unlock(); // the library takes it
        if (!AbstractFileOperator::generateCRC32(m_outcome.path.c_str()))
            fail("the checksum could not be rewritten");
        m_lock.lock(paths::lockFile(m_layout.file), FileLock::Kind::Exclusive);
    }

    void takeOther() {
        if (m_request.copy == Copy::Factory && !m_request.from)
            return fail("the other copies hold the user's values; to take them all the same, name one with --from");
        const std::optional<Copy> source = m_request.from ? m_request.from : newestGood();
        if (!source)
            return fail("no other copy is good; what can still be read saves: --salvage");
        const std::string from = m_session.path(m_layout, *source);
        const FileTable table = read(*source);
        if (!table.isGood())
            return fail(fmt::format("the {} copy {}", copyName(*source), table.trouble));
        m_outcome.action = fmt::format("taken from the {} copy of {}", copyName(*source), timeText(table.changed));
        if (m_request.dryRun || !keepDamaged())
            return;
        if (!FileUtil::replaceFile(from.c_str(), m_outcome.path.c_str()))
            fail(fmt::format("{} could not be copied there", from));
    }

    std::optional<Copy> newestGood() const {
        std::optional<Copy> newest;
        std::time_t changed = 0;
        for (const Copy copy : COPIES) {
            if (copy == m_request.copy)
                continue;
            const FileTable table = read(copy);
            if (table.isGood() && (!newest || table.changed > changed)) {
                newest = copy;
                changed = table.changed;
            }
        }
        return newest;
    }

    void salvage() {
        m_outcome.salvage = saved();
        m_outcome.action = "salvaged";
        if (m_request.dryRun)
            return;
        const std::string bytes = wholeFile(m_layout, tvType(), m_outcome.salvage->values);
        if (bytes.empty())
            return fail("the salvaged values do not make a file");
        if (keepDamaged() && !putFile(m_outcome.path, bytes))
            fail("the salvaged file could not be written");
    }

    /// What the damaged copy does not tell comes from the next one in this order. The user's values are none of the
    /// factory's.
    std::vector<Copy> order() const {
        std::vector<Copy> copies{m_request.copy};
        for (const Copy copy : COPIES) {
            if (copy != m_request.copy && m_request.copy != Copy::Factory)
                copies.push_back(copy);
        }
        return copies;
    }

    Salvage saved() const {
        Salvage result;
        result.values = defaultTable(m_layout);
        result.records.resize(static_cast<std::size_t>(m_layout.recordCount()));
        std::vector<std::size_t> sources(result.values.size(), DEFAULTS);
        for (const Copy copy : order()) {
            const FileTable table = copy == m_request.copy ? m_outcome.before : read(copy);
            const SalvagedTable read = salvageFile(m_layout, table.bytes);
            if (copy == m_request.copy)
                result.proven = read.proven;
            for (std::size_t cell = 0; cell < sources.size(); ++cell) {
                if (sources[cell] != DEFAULTS || !read.readable[cell])
                    continue;
                sources[cell] = static_cast<std::size_t>(copy);
                result.values[cell] = read.values[cell];
            }
        }
        for (std::size_t cell = 0; cell < sources.size(); ++cell)
            ++result.records[cell / m_layout.fields.size()][sources[cell]];
        return result;
    }

    /// As a good copy states it, or else the first that states something.
    std::string tvType() const {
        std::string type;
        for (const Copy copy : COPIES) {
            const FileTable table = read(copy);
            if (table.isGood())
                return table.inspection.tvType;
            if (type.empty())
                type = table.inspection.tvType;
        }
        const bool isText = std::all_of(type.begin(), type.end(), [](char c) { return c > 0x20 && c < 0x7F; });
        return isText ? type : std::string();
    }

    const Session& m_session;
    const RepairRequest& m_request;
    const CategoryLayout& m_layout;
    FileLock m_lock;
    RepairOutcome m_outcome;
};

// --- what is said ---

bool isWholly(const FieldCounts& counts, std::size_t source) {
    for (std::size_t other = 0; other < counts.size(); ++other) {
        if (other != source && counts[other] > 0)
            return false;
    }
    return true;
}

std::string fieldsText(const FieldCounts& counts, std::size_t fields) {
    std::vector<std::string> parts;
    for (std::size_t source = 0; source < counts.size(); ++source) {
        if (counts[source] > 0)
            parts.push_back(static_cast<std::size_t>(counts[source]) == fields
                                ? sourceName(source)
                                : fmt::format("{} of {} fields {}", counts[source], fields, sourceName(source)));
    }
    return joined(parts);
}

/// Sections by where they come from; the last number counts those that come from several.
std::array<int, DEFAULTS + 2> sectionCounts(const Salvage& salvage) {
    std::array<int, DEFAULTS + 2> sections{};
    for (const FieldCounts& counts : salvage.records) {
        std::size_t source = 0;
        while (source <= DEFAULTS && !isWholly(counts, source))
            ++source;
        ++sections[source];
    }
    return sections;
}

void printSalvage(const RepairOutcome& outcome, Copy repaired, bool all) {
    const Salvage& salvage = *outcome.salvage;
    const auto sections = sectionCounts(salvage);
    std::vector<std::string> parts;
    for (std::size_t source = 0; source < sections.size(); ++source) {
        if (sections[source] > 0)
            parts.push_back(
                fmt::format("{} {}", sections[source],
                            source > DEFAULTS ? "from several" : fmt::format("from {}", sourceName(source))));
    }
    fmt::print("    {}: {}\n", counted(salvage.records.size(), "section"), joined(parts));
    if (!salvage.proven)
        fmt::print("    the checksum does not fit, so a value that was read may still be a wrong one\n");
    std::vector<std::vector<std::string>> rows;
    std::size_t left = 0;
    for (std::size_t record = 0; record < salvage.records.size(); ++record) {
        const bool whole = isWholly(salvage.records[record], static_cast<std::size_t>(repaired));
        if (whole && !all)
            continue;
        if (rows.size() < NAMED_SECTIONS || all)
            rows.push_back({recordLabel(*outcome.layout, static_cast<int>(record)),
                            fieldsText(salvage.records[record], outcome.layout->fields.size())});
        else
            ++left;
    }
    printColumns(rows, 4);
    if (left > 0)
        fmt::print("    and {} more, which --verbose shows\n", left);
}

void print(const std::vector<RepairOutcome>& outcomes, const RepairRequest& request, bool verbose) {
    std::size_t good = 0;
    std::size_t repaired = 0;
    std::size_t failed = 0;
    for (const RepairOutcome& outcome : outcomes) {
        if (outcome.action.empty() && outcome.failure.empty() && !outcome.leftAlone) {
            ++good;
            continue;
        }
        fmt::print("{}: the {} copy {}\n", categoryName(*outcome.layout), copyName(request.copy),
                   outcome.before.trouble);
        if (!outcome.action.empty() && outcome.failure.empty()) {
            ++repaired;
            fmt::print("  {}{}\n", request.dryRun ? "would be " : "", outcome.action);
        }
        if (outcome.leftAlone)
            fmt::print("  left alone; the library sees to that itself\n");
        if (outcome.salvage)
            printSalvage(outcome, request.copy, verbose);
        if (!outcome.kept.empty())
            fmt::print("  the damaged file is kept as {}\n", outcome.kept);
        if (!outcome.failure.empty()) {
            ++failed;
            fmt::print("  NOT repaired: {}\n", outcome.failure);
        }
    }
    fmt::print("{}: {} good before, {} {}, {} not.\n", counted(outcomes.size(), "file"), good, repaired,
               request.dryRun ? "could be repaired" : "repaired", failed);
}

Json salvageJson(const RepairOutcome& outcome) {
    const auto sections = sectionCounts(*outcome.salvage);
    Json summary = Json::object();
    for (std::size_t source = 0; source < sections.size(); ++source)
        summary[source > DEFAULTS ? "several" : sourceName(source)] = sections[source];
    Json list = Json::array();
    for (std::size_t record = 0; record < outcome.salvage->records.size(); ++record) {
        Json fields = Json::object();
        for (std::size_t source = 0; source <= DEFAULTS; ++source) {
            if (outcome.salvage->records[record][source] > 0)
                fields[sourceName(source)] = outcome.salvage->records[record][source];
        }
        list.push_back({{"record", recordJson(*outcome.layout, indicesOf(*outcome.layout, static_cast<int>(record)))},
                        {"fields", fields}});
    }
    return {{"checksumFits", outcome.salvage->proven}, {"summary", summary}, {"sections", list}};
}

Json asJson(const std::vector<RepairOutcome>& outcomes, const RepairRequest& request) {
    Json list = Json::array();
    for (const RepairOutcome& outcome : outcomes) {
        const bool done = !outcome.action.empty() && outcome.failure.empty();
        Json json{{"category", categoryName(*outcome.layout)},
                  {"copy", copyName(request.copy)},
                  {"path", outcome.path},
                  {"found", outcome.before.isGood() ? "good" : outcome.before.trouble},
                  {"repaired", done && !request.dryRun},
                  {"action", done ? Json(outcome.action) : Json()},
                  {"failure", outcome.failure.empty() ? Json() : Json(outcome.failure)},
                  {"kept", outcome.kept.empty() ? Json() : Json(outcome.kept)}};
        if (outcome.salvage)
            json["salvage"] = salvageJson(outcome);
        list.push_back(std::move(json));
    }
    return {{"dryRun", request.dryRun}, {"categories", list}};
}

std::vector<RepairOutcome> repairAll(const Session& session, const RepairRequest& request,
                                     const std::vector<const CategoryLayout*>& layouts) {
    std::vector<RepairOutcome> outcomes;
    outcomes.reserve(layouts.size());
    Progress progress("repairing", static_cast<int>(layouts.size()));
    for (const CategoryLayout* layout : layouts) {
        outcomes.push_back(Repair(session, request, *layout).run());
        progress.step();
    }
    return outcomes;
}

} // namespace

int runRepair(const Options& options, const Words& words) {
    const std::vector<const CategoryLayout*> layouts = categoriesNamed(words);
    const RepairRequest request = requestOf(options);
    Options access = options;
    access.writes = !request.dryRun;
    const Session session(access);
    const std::vector<RepairOutcome> outcomes = repairAll(session, request, layouts);
    if (options.json)
        printJson(asJson(outcomes, request));
    else
        print(outcomes, request, options.verbose);
    const bool fine = std::all_of(outcomes.begin(), outcomes.end(),
                                  [](const RepairOutcome& outcome) { return outcome.failure.empty(); });
    return fine ? EXIT_FINE : EXIT_WRONG;
}

} // namespace td::dmctl
