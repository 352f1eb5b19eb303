#include "fileOperator/file/CategoryState.h"

#include <cstdio>
#include <exception>
#include <utility>

#include <dataModule/fileOperator/AbstractFileOperator.h>

#include "common/Log.h"
#include "common/SystemPaths.h"
#include "fileOperator/CategoryLayout.h"

namespace td {

namespace {

/// Of an operator without a table of the library's.
Contents g_noContents;

void copyBounded(const char* from, char* to, std::size_t size) {
    std::snprintf(to, size, "%s", from != nullptr ? from : "");
}

} // namespace

CategoryState::CategoryState(AbstractFileOperator& owner, const char* fileName, const char* version)
    : op(owner), contents(&g_noContents) {
    copyBounded(fileName, name.file, sizeof name.file);
    copyBounded(version, name.version, sizeof name.version);
    file.path().set(currentPath());
}

const char* CategoryState::categoryName() const {
    return parent != nullptr ? parent->getCategory_Str(name.category) : td::categoryName(name.category);
}

std::string CategoryState::directory(_LOAD_FILE_MODE mode) const {
    if (mode == BACKUP_LOAD)
        return paths::backupDirectory();
    if (mode == MANUFACTORY_LOAD)
        return parent != nullptr ? parent->getManufactoryPath() : paths::defaultFactoryDirectory();
    return paths::currentDirectory();
}

std::string CategoryState::factoryPath() const {
    return directory(MANUFACTORY_LOAD) + op.factoryFileName();
}

Copies CategoryState::copies(std::string factory) {
    return {{currentPath(), pathOf(BACKUP_LOAD), std::move(factory)}, categoryName(), file.path()};
}

void CategoryState::logWhere() const {
    TD_WARNING("[%s]: in file [%s].\n", categoryName(), file.path());
}

void CategoryState::shareFiles() {
    if (lock.shareFiles(paths::lockFile(name.file)) && file.unended().isLikely(currentPath()))
        takeFiles();
}

bool CategoryState::takeFiles() {
    const bool takesNow = lock.takeFiles(paths::lockFile(name.file));
    if (takesNow && !lock.gaveUpWaiting())
        endUnendedWrite();
    return takesNow;
}

void CategoryState::endUnendedWrite() {
    if (write)
        write->recordWasEnded();
    if (!file.unended().end(currentPath(), file.crc))
        return;
    file.stream().dropReadAhead();
    changedCurrent();
}

bool CategoryState::tryEnter() {
    if (!lock.tryLock())
        return false;
    bool entered = false;
    try {
        // A suspend image holds no open file.
        entered =
            !merge.isUnderWay() && presence != Presence::Released && lock.tryTakeFiles(paths::lockFile(name.file));
        if (entered)
            endUnendedWrite();
    } catch (const std::exception& error) {
        TD_WARNING("unexpected exception: %s\n", error.what());
        entered = false;
    }
    if (!entered)
        lock.unlock();
    return entered;
}

bool CategoryState::openCurrent() {
    if (merge.isUnderWay() || servesMemory)
        return false;
    shareFiles();
    if (write && write->isEmpty())
        write.reset();
    if (lock.filesUnsure())
        return false;
    const std::string path = currentPath();
    // With a new checksum what is half written would pass for whole (invariant 7).
    if (file.unended().error() != 0 && !fileVerifies(path.c_str(), nullptr))
        return false;
    file.mode = NORMAL_LOAD;
    file.path().set(path);
    if (file.isReadyToWrite(path))
        return true;
    if (!file.open(path, "r+"))
        return false;
    file.readSummary(name.version);
    if (file.hasLengths())
        return true;
    closeFile();
    return false;
}

} // namespace td
