#include "fileOperator/file/CopySteps.h"

#include <string>

#include <dataModule/fileOperator/AbstractFileOperator.h>

#include "common/Log.h"
#include "fileOperator/file/CategoryState.h"
#include "fileOperator/ValueDump.h"

namespace td {

/// A missing or closed file is no failure here, it only means that a copy has to be made: the lines are progress.
bool readStoredChecksum(FileUtil& opened, const char* path, unsigned int& crc) {
    if (!FileUtil::checkFile(path) || FileUtil::isStray(path)) {
        TD_INFO("load file failed -- file [%s] isn't exist.\n", path != nullptr ? path : "");
        return false;
    }
    FileUtil asked;
    if (!asked.openFile(path, "r")) {
        TD_INFO("open file [%s] failed.\n", path);
        return false;
    }
    Summary summary;
    const SummaryState state = readSummary(opened, summary);
    if (state == SummaryState::NotReadable)
        TD_INFO("reset file position of [%s] failed.\n", path);
    if (const char* const part = badPart(state))
        TD_INFO("Summary section %s (%s) is invalid.\n", part, summary.badLine);
    if (state != SummaryState::Complete)
        return false;
    TD_INFO("read CRC Field [0x%08x] from data file '%s' successfully.\n", summary.crc, path);
    crc = summary.crc;
    return true;
}

bool recoverCurrent(CategoryState& state) {
    const _LOAD_FILE_MODE mode = state.file.mode;
    if (mode == NORMAL_LOAD) {
        TD_INFO("current load mode [%s] is 'NORMAL_LOAD' and needn't recover file.\n",
                AbstractFileOperator::getLoadMode(mode));
        return true;
    }
    if (mode != BACKUP_LOAD && mode != MANUFACTORY_LOAD) {
        TD_WARNING("recover file in invalid mode [%d].\n", static_cast<int>(mode));
        state.logWhere();
        return false;
    }
    state.takeFiles();
    TD_INFO("current load mode [%s] ISN'T 'NORMAL_LOAD' , so NEED to recover file ...\n",
            AbstractFileOperator::getLoadMode(mode));
    if (!state.copies().recoverFrom(state.file.path().load()))
        return false;
    if (mode == MANUFACTORY_LOAD)
        state.changedCurrent();
    return true;
}

bool backUp(CategoryState& state, bool alsoFactory) {
    if (state.file.mode != NORMAL_LOAD) {
        TD_WARNING("current load mode [%s] is not 'NORMAL_LOAD' when backup file.\n",
                   AbstractFileOperator::getLoadMode(state.file.mode));
        state.logWhere();
        return false;
    }
    state.takeFiles();
    const Copies copies = state.copies(state.pathOf(MANUFACTORY_LOAD));
    if (!copies.makeBackupDirectory())
        return false;
    const std::string backup = state.pathOf(BACKUP_LOAD);
    // The checksum is read from the open file, which may be the current copy, opened again since it was written.
    if (state.backupOutdated)
        state.closeFile();
    unsigned int stored = 0;
    if (readStoredChecksum(state.file.stream(), backup.c_str(), stored) && stored == state.file.crc) {
        TD_INFO("Backup file crc code [%s] is the same as current file and NEEDN'T generate backup file.\n",
                backup.c_str());
        return true;
    }
    if (!copies.backUp())
        return true;
    state.backupOutdated = false;
    if (detailLogIsOn())
        TD_DETAIL("backup file [%s] from file [%s] successfully.\n", backup.c_str(), state.currentPath().c_str());
    if (alsoFactory)
        static_cast<void>(copies.makeFactory());
    return true;
}

void resetFromFactory(CategoryState& state) {
    const std::string factory = state.factoryPath();
    const std::string current = state.currentPath();
    state.takeFiles();
    state.closeFile();
    state.file.path().set(current);
    state.file.nameHasChanged();
    if (state.copies(factory).resetFromFactory(state.name.version)) {
        state.changedCurrent();
        state.backupRequest = true;
        state.contents->currentWasReset();
    }
    TD_INFO("reset current file [%s] from Manufactory File [%s].\n", current.c_str(), factory.c_str());
}

} // namespace td
