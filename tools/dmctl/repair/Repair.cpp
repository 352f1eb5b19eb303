#include "repair/Repair.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <utility>

#include <fmt/core.h>

#include <dataModule/common/FileUtil.h>
#include <dataModule/fileOperator/AbstractFileOperator.h>
#include <dataModule/platform/RootPrefix.h>

#include "common/FileLock.h"
#include "common/SystemPaths.h"
#include "fileOperator/file/RedoRecord.h"
#include "fileOperator/text/TextLayout.h"
#include "Names.h"
#include "RootUse.h"
#include "ui/Output.h"

namespace fs = std::filesystem;

namespace td::dmctl {

namespace {

constexpr const char* DAMAGED_DIRECTORY = "/var/local/dataModule/damaged/";

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
        case RepairMode::Checksum:
            rewriteChecksum();
            break;
        case RepairMode::Salvage:
            salvage();
            break;
        case RepairMode::Newest:
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

} // namespace

RepairOutcome repairCopy(const Session& session, const RepairRequest& request, const CategoryLayout& layout) {
    return Repair(session, request, layout).run();
}

} // namespace td::dmctl
