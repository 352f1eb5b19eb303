#include "FileTable.h"

#include <cerrno>
#include <cstring>
#include <utility>

#include <sys/stat.h>

#include <fmt/chrono.h>
#include <fmt/core.h>

#include <dataModule/common/FileUtil.h>

#include "fileOperator/file/RedoRecord.h"
#include "Names.h"

namespace td::dmctl {

namespace {

bool isOtherVersion(const CategoryLayout& layout, const FileInspection& inspection) {
    return inspection.faultCount == 1 && !inspection.version.empty() && inspection.version != layout.version;
}

FileTable tableOf(const CategoryLayout& layout, std::string bytes) {
    FileTable table;
    table.layout = &layout;
    table.bytes = std::move(bytes);
    table.inspection = inspectFile(layout, table.bytes);
    if (isOtherVersion(layout, table.inspection)) {
        table.state = FileTable::State::OtherVersion;
        table.trouble = fmt::format("is of version {} instead of {}", table.inspection.version, layout.version);
        return table;
    }
    if (!table.inspection.isGood()) {
        table.state = FileTable::State::Damaged;
        table.trouble = faultText(table.inspection);
        return table;
    }
    table.state = FileTable::State::Good;
    table.values.resize(static_cast<std::size_t>(layout.recordCount()) * layout.fields.size());
    for (const InspectedSection& section : table.inspection.sections)
        readInspected(layout, table.bytes, section,
                      table.values.data() + static_cast<std::size_t>(section.record) * layout.fields.size());
    return table;
}

} // namespace

std::string faultText(const FileInspection& inspection) {
    for (const FileProblem& problem : inspection.problems) {
        if (problem.severity != FileProblem::Severity::Fault)
            continue;
        const std::string first =
            fmt::format("is damaged: line {}, byte {}: {}", problem.line, problem.offset, problem.text);
        return inspection.faultCount > 1 ? fmt::format("{}, and {} more", first, inspection.faultCount - 1) : first;
    }
    return "is damaged";
}

FileTable readTable(const CategoryLayout& layout, const std::string& path, Writers writers) {
    struct stat status {};
    const std::string stray = strayText(path);
    if (!stray.empty()) {
        FileTable table;
        table.state = FileTable::State::Damaged;
        table.trouble = fmt::format("is no file: {}", stray);
        table.changed = lstat(path.c_str(), &status) == 0 ? status.st_mtime : 0;
        return table;
    }
    if (stat(path.c_str(), &status) != 0) {
        FileTable table;
        const bool isMissing = errno == ENOENT || errno == ENOTDIR;
        table.state = isMissing ? FileTable::State::Missing : FileTable::State::Unreadable;
        table.trouble = isMissing ? "is missing" : fmt::format("cannot be read: {}", std::strerror(errno));
        return table;
    }
    std::string bytes;
    std::string reason;
    const auto read = writers == Writers::KeptAway ? readUnlocked : readFile;
    if (!read(path, bytes, reason)) {
        FileTable table;
        table.state = FileTable::State::Unreadable;
        table.trouble = "cannot be read: " + reason;
        return table;
    }
    FileTable table = tableOf(layout, std::move(bytes));
    table.changed = status.st_mtime;
    table.storeWasCut = table.state == FileTable::State::Damaged && storeWasCut(path);
    if (table.storeWasCut)
        table.trouble = "holds a store that was cut off, which the library ends when it loads";
    return table;
}

FileTable goodTable(const Session& session, const CategoryLayout& layout, Copy copy) {
    const std::string path = session.path(layout, copy);
    std::string bytes;
    std::string reason;
    if (!readFile(path, bytes, reason))
        throw Failure(fmt::format("the {} copy {} cannot be read: {}", copyName(copy), path, reason));
    FileTable table = tableOf(layout, std::move(bytes));
    if (!table.isGood())
        throw Failure(fmt::format("the {} copy {} has faults; run `dmctl {}verify {}` to see what is wrong",
                                  copyName(copy), path, session.rootOption(), categoryName(layout)));
    return table;
}

bool storeWasCut(const std::string& path) {
    std::string text;
    std::string reason;
    RedoRecord record;
    unsigned int after = 0;
    return readUnlocked(redoPath(path), text, reason) && parseRedo(text, record) &&
           checksumAfter(path, record, after) && after == record.crc;
}

Copy copyNamed(const std::string& word) {
    std::vector<std::string> names;
    for (const Copy copy : COPIES) {
        if (word == copyName(copy))
            return copy;
        names.emplace_back(copyName(copy));
    }
    throw UsageError(unknownWord("copy", word, names, "the copies are"));
}

std::string timeText(std::time_t time) {
    std::tm local{};
    localtime_r(&time, &local);
    return fmt::format("{:%Y-%m-%d %H:%M:%S}", local);
}

bool putFile(const std::string& path, const std::string& bytes) {
    const std::string temporary = path + FileUtil::TEMPORARY_SUFFIX;
    FileUtil file;
    const bool written = !bytes.empty() && FileUtil::makeWay(temporary.c_str()) &&
                         file.openFile(temporary.c_str(), "w+x") && file.takeModeAndOwner(path.c_str()) &&
                         file.writeFile(bytes.c_str(), true);
    file.closeFile();
    if (written)
        return FileUtil::commitTemporary(temporary.c_str(), path.c_str());
    FileUtil::removeSingleFile(temporary.c_str());
    return false;
}

} // namespace td::dmctl
