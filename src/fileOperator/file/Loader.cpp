#include "fileOperator/file/Loader.h"

#include <cerrno>
#include <cstring>
#include <string>

#include <sys/stat.h>

#include <dataModule/common/TimeUtil.h>
#include <dataModule/fileOperator/AbstractFileOperator.h>

#include "common/Log.h"
#include "fileOperator/file/CategoryState.h"
#include "fileOperator/file/CopyCheck.h"

namespace td {

namespace {

bool isSame(const struct stat& one, const struct stat& other) {
    const auto sameTime = [](const timespec& first, const timespec& second) {
        return first.tv_sec == second.tv_sec && first.tv_nsec == second.tv_nsec;
    };
    return one.st_dev == other.st_dev && one.st_ino == other.st_ino && one.st_size == other.st_size &&
           sameTime(one.st_mtim, other.st_mtim) && sameTime(one.st_ctim, other.st_ctim);
}

} // namespace

const char* AbstractFileOperator::getLoadMode(_LOAD_FILE_MODE mode) {
    static constexpr const char* NAMES[] = {"NORMAL_LOAD", "BACKUP_LOAD", "MANUFACTORY_LOAD"};
    return mode >= NORMAL_LOAD && mode < INVALID_LOAD ? NAMES[mode] : "INVALID_LOAD";
}

_LOAD_FILE_MODE copyAfter(_LOAD_FILE_MODE mode, bool merges) {
    _LOAD_FILE_MODE next = INVALID_LOAD;
    switch (mode) {
    case NORMAL_LOAD:
        next = merges ? MANUFACTORY_LOAD : BACKUP_LOAD;
        break;
    case BACKUP_LOAD:
        next = MANUFACTORY_LOAD;
        break;
    case MANUFACTORY_LOAD:
        TD_ERROR("The state changed is invalid, for the 'MANUFACTORY_LOAD' is only as end state.!\n");
        TD_ERROR("The manufactory data file version is NOT matched with SW version. SO NEED SW engineer ( reponsible "
                 "for audio or video ) to confirm this fatal problem !!!! \n");
        return INVALID_LOAD;
    case INVALID_LOAD:
    default:
        TD_ERROR("The state is wrong to go here.\n");
        return INVALID_LOAD;
    }
    TD_INFO("@@@@@ The state is changed from [%s] to [%s] @@@@@ .\n", AbstractFileOperator::getLoadMode(mode),
            AbstractFileOperator::getLoadMode(next));
    return next;
}

bool Loader::load() {
    m_state.shareFiles();
    if (m_state.lock.gaveUpWaiting())
        return serveFromMemory();
    TriedCopy tried;
    for (bool loaded = false; !loaded;) {
        struct stat found = {};
        stat(m_state.currentPath().c_str(), &found);
        const CopyState state = tryCopy(tried.copy);
        tried.verdict = state.verdict;
        switch (after(tried, found)) {
        case NextCopy::Done:
            loaded = true;
            break;
        case NextCopy::SameAgain:
            tried.wasTriedBefore = tried.wasTriedBefore || state.isUnreadable();
            break;
        case NextCopy::Backup:
        case NextCopy::Factory: {
            const _LOAD_FILE_MODE next = m_state.op.stateChanged(tried.copy);
            tried = TriedCopy();
            tried.copy = next;
            break;
        }
        case NextCopy::WithoutLock:
            return serveFromMemory();
        case NextCopy::None:
            logWhyNone(tried.copy, state);
            return false;
        }
    }
    TD_INFO("load file [%s] completely, cache data size = %d, elpased time = %d (ms).\n", m_state.file.path().load(),
            m_state.name.dataSize, elapsedMilliseconds());
    if (m_state.file.mode == NORMAL_LOAD)
        return true;
    TD_INFO("it is necessary to switch to NORMAL_LOAD.\n");
    if (m_state.op.switchToNormal())
        return true;
    TD_WARNING("switch to normal load failed.\n");
    m_state.logWhere();
    return false;
}

NextCopy Loader::after(TriedCopy tried, const struct stat& found) {
    tried.lockWasGivenUp = m_state.lock.gaveUpWaiting();
    NextCopy next = nextCopy(tried);
    const bool leaves = next == NextCopy::Backup || next == NextCopy::Factory || next == NextCopy::WithoutLock;
    if (tried.copy != NORMAL_LOAD || !leaves)
        return next;
    // Before another one takes the place of the current copy.
    tried.wasMended = currentWasMended(found);
    tried.lockWasGivenUp = m_state.lock.gaveUpWaiting();
    tried.awaitsWrite = m_state.file.unended().error() != 0 && m_state.file.unended().error() != EIO;
    next = nextCopy(tried);
    if (next == NextCopy::SameAgain)
        m_merge.giveUp();
    return next;
}

bool Loader::currentWasMended(const struct stat& found) {
    m_state.takeFiles();
    const bool triesAgain = m_state.file.unended().error() != 0;
    if (triesAgain)
        m_state.endUnendedWrite();
    const std::string current = m_state.currentPath();
    struct stat now = {};
    const bool hasChanged = stat(current.c_str(), &now) == 0 && !isSame(found, now);
    return (hasChanged || (triesAgain && m_state.file.unended().error() == 0)) &&
           fileVerifies(current.c_str(), m_state.name.version);
}

void Loader::logWhyNone(_LOAD_FILE_MODE copy, const CopyState& state) const {
    if (state.verdict == Verdict::Fatal)
        return;
    const bool awaitsWrite = copy == NORMAL_LOAD && state.verdict != Verdict::Unreadable;
    if (awaitsWrite || state.verdict == Verdict::Unreadable) {
        logStays(awaitsWrite ? m_state.file.unended().error() : state.error);
        return;
    }
    static_cast<void>(m_state.op.stateChanged(copy));
    TD_ERROR("load file [%s] failed.\n", m_state.file.path().load());
    m_state.logWhere();
}

void Loader::logStays(int error) const {
    TD_ERROR("file [%s] cannot be read now (%s) and stays as it is.\n", m_state.file.path().load(),
             std::strerror(error));
    m_state.logWhere();
}

CopyState Loader::tryCopy(_LOAD_FILE_MODE mode) {
    CopyState state = CopyCheck(m_state).verify(mode);
    if (state.verdict == Verdict::OtherVersion)
        m_state.merge.begin();
    if (!state.isGood())
        return state;
    m_state.file.mode = mode;
    TD_INFO("Ready to load contents in [%s] ...\n", AbstractFileOperator::getLoadMode(mode));
    if (mode == MANUFACTORY_LOAD && m_state.merge.isUnderWay())
        return readForMerge();
    if (!m_state.op.loadContents()) {
        state = contentsFailed();
        TD_WARNING("load contents from file [%s] failed.\n", m_state.file.path().load());
        m_state.logWhere();
        return mode == MANUFACTORY_LOAD ? CopyState{Verdict::Fatal} : state;
    }
    return mode == NORMAL_LOAD ? CopyState() : recover(mode);
}

CopyState Loader::contentsFailed() const {
    const bool isUnreadable = m_state.file.stream().isOpend() && m_state.file.stream().readFailed();
    return isUnreadable ? CopyState::unreadable(EIO) : CopyState{Verdict::Damaged};
}

CopyState Loader::recover(_LOAD_FILE_MODE mode) {
    if (mode == MANUFACTORY_LOAD)
        TD_INFO("load file [%s] completely.\n", m_state.file.path().load());
    m_state.closeFile();
    if (m_state.op.recoverFile())
        return {};
    const std::string current = m_state.currentPath();
    if (FileUtil::isStray(current.c_str())) {
        TD_WARNING("[%s]: file [%s] cannot be made where something else stands, so its values are served from memory, "
                   "and nothing is written before that has gone.\n",
                   m_state.categoryName(), current.c_str());
        m_state.servesMemory = true;
        m_state.file.mode = NORMAL_LOAD;
        m_state.file.path().set(current);
        return {};
    }
    if (mode == MANUFACTORY_LOAD) {
        TD_WARNING("recover data from file [%s] failed , pause load data flow.!!!\n", m_state.file.path().load());
        m_state.logWhere();
    }
    return {Verdict::Fatal};
}

bool Loader::serveFromMemory() {
    m_merge.giveUp();
    TD_WARNING("[%s]: another process keeps the lock of file [%s], so the first good copy is read without it, and "
               "nothing is written before the lock can be had.\n",
               m_state.categoryName(), m_state.name.file);
    for (const _LOAD_FILE_MODE mode : {NORMAL_LOAD, BACKUP_LOAD, MANUFACTORY_LOAD}) {
        if (!CopyCheck(m_state).verify(mode).isGood() || !m_state.op.loadContents())
            continue;
        TD_INFO("load file [%s] without its lock.\n", m_state.file.path().load());
        m_state.closeFile();
        m_state.file.mode = NORMAL_LOAD;
        m_state.file.path().set(m_state.currentPath());
        m_state.servesMemory = true;
        return true;
    }
    TD_ERROR("load file [%s] failed.\n", m_state.file.path().load());
    return false;
}

// --- a copy of another version ---

CopyState Loader::readForMerge() {
    TD_INFO("#################### load OTA data flow begin. ###################.\n");
    TD_INFO("1. load contents from file [%s] ...\n", m_state.file.path().load());
    if (!m_state.op.loadContents()) {
        TD_WARNING("1.load contents from file [%s] failed when load OTA data.\n", m_state.file.path().load());
        m_state.logWhere();
        return {Verdict::Fatal};
    }
    m_state.closeFile();
    TD_INFO("load contents from file [%s] completely elpased time = %d (ms).\n", m_state.file.path().load(),
            elapsedMilliseconds());
    TD_INFO("load manufactory data file completely.\n");

    TD_INFO("2. load current data file in OTA mode ... \n");
    const CopyState current = twiceIfUnreadable(&Loader::mergeCurrent);
    if (current.isGood()) {
        TD_INFO("load current data file in OTA mode completely \n");
    } else if (current.verdict == Verdict::Unreadable) {
        logStays(current.error);
        return {Verdict::Fatal};
    } else {
        TD_WARNING("load current data file failed in OTA mode, just ignore current file content !!! \n");
        m_state.logWhere();
        const CopyState backup = twiceIfUnreadable(&Loader::mergeBackup);
        if (backup.verdict == Verdict::Unreadable)
            logStays(backup.error);
        if (backup.verdict == Verdict::Unreadable || (!backup.isGood() && !readFactoryTable()))
            return {Verdict::Fatal};
    }
    m_state.closeFile();
    m_state.file.mode = NORMAL_LOAD;
    m_state.file.path().set(m_state.currentPath());
    return {};
}

CopyState Loader::twiceIfUnreadable(CopyState (Loader::*read)()) {
    const CopyState state = (this->*read)();
    return state.isUnreadable() ? (this->*read)() : state;
}

CopyState Loader::mergeCurrent() {
    TD_INFO("start to load current file [%s] with Each line mode when load OTA data ...\n",
            m_state.currentPath().c_str());
    CopyState state = CopyCheck(m_state).switchToCurrent(CopyCheck::Versions::Any);
    if (!state.isGood()) {
        TD_WARNING("switch to normal failed when load OTA data.\n");
        m_state.logWhere();
        return state;
    }
    state = readByKey();
    if (!state.isGood()) {
        TD_WARNING("load contents from file [%s] failed when load OTA data.\n", m_state.file.path().load());
        m_state.logWhere();
    } else {
        TD_INFO("loading current file [%s] completely when load OTA data.  \n", m_state.file.path().load());
    }
    m_state.closeFile();
    return state;
}

CopyState Loader::mergeBackup() {
    const std::string backup = m_state.pathOf(BACKUP_LOAD);
    CopyState state = CopyCheck::lookFor(backup.c_str());
    if (state.isGood() && !readFactoryTable())
        state = {Verdict::Damaged};
    if (state.isGood())
        state = CopyCheck(m_state).verify(backup.c_str());
    if (state.isGood())
        state = readByKey();
    if (state.isGood())
        TD_INFO("load backup data file [%s] in OTA mode completely \n", backup.c_str());
    return state;
}

CopyState Loader::readByKey() {
    // A copy that ends before its checksum has not been verified and has nothing to merge.
    if (m_state.file.summary().crcLineLength == 0)
        return {Verdict::Damaged};
    return m_state.op.loadContents_OTA() ? CopyState() : contentsFailed();
}

bool Loader::readFactoryTable() {
    return m_state.op.switchToManufactory() && m_state.op.loadContents();
}

} // namespace td
