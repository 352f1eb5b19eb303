#include <dataModule/fileOperator/Loader.h>

#include <cerrno>
#include <cstring>
#include <string>

#include <sys/stat.h>

#include <dataModule/common/Log.h>
#include <dataModule/common/TimeUtil.h>
#include <dataModule/fileOperator/AbstractFileOperator.h>

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

bool Loader::load() TD_NO_THREAD_SAFETY_ANALYSIS {
    m_op.shareFiles();
    if (m_op.m_criticalSection.gaveUpWaiting())
        return serveFromMemory();
    TriedCopy tried;
    for (bool loaded = false; !loaded;) {
        struct stat found = {};
        stat((m_op.getWorkPath(NORMAL_LOAD) + m_op.m_fileName).c_str(), &found);
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
            const _LOAD_FILE_MODE next = m_op.stateChanged(tried.copy);
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
    TD_INFO("load file [%s] completely, cache data size = %d, elpased time = %d (ms).\n", m_op.m_path.load(),
            m_op.m_dataSize, elapsedMilliseconds());
    if (m_op.m_loadMode == NORMAL_LOAD)
        return true;
    TD_INFO("it is necessary to switch to NORMAL_LOAD.\n");
    if (m_op.switchToNormal())
        return true;
    TD_WARNING("switch to normal load failed.\n");
    m_op.logWhere();
    return false;
}

NextCopy Loader::after(TriedCopy tried, const struct stat& found) TD_NO_THREAD_SAFETY_ANALYSIS {
    tried.lockWasGivenUp = m_op.m_criticalSection.gaveUpWaiting();
    NextCopy next = nextCopy(tried);
    const bool leaves = next == NextCopy::Backup || next == NextCopy::Factory || next == NextCopy::WithoutLock;
    if (tried.copy != NORMAL_LOAD || !leaves)
        return next;
    // Before another one takes the place of the current copy.
    tried.wasMended = currentWasMended(found);
    tried.lockWasGivenUp = m_op.m_criticalSection.gaveUpWaiting();
    tried.awaitsWrite = m_op.m_pendingError != 0 && m_op.m_pendingError != EIO;
    next = nextCopy(tried);
    if (next == NextCopy::SameAgain)
        m_merge.giveUp();
    return next;
}

bool Loader::currentWasMended(const struct stat& found) TD_NO_THREAD_SAFETY_ANALYSIS {
    m_op.takeFiles();
    const bool triesAgain = m_op.m_pendingError != 0;
    if (triesAgain)
        m_op.endPendingWrite();
    const std::string current = m_op.getWorkPath(NORMAL_LOAD) + m_op.m_fileName;
    struct stat now = {};
    const bool hasChanged = stat(current.c_str(), &now) == 0 && !isSame(found, now);
    return (hasChanged || (triesAgain && m_op.m_pendingError == 0)) && fileVerifies(current.c_str(), m_op.m_version);
}

void Loader::logWhyNone(_LOAD_FILE_MODE copy, const CopyState& state) const TD_NO_THREAD_SAFETY_ANALYSIS {
    if (state.verdict == Verdict::Fatal)
        return;
    const bool awaitsWrite = copy == NORMAL_LOAD && state.verdict != Verdict::Unreadable;
    if (awaitsWrite || state.verdict == Verdict::Unreadable) {
        logStays(awaitsWrite ? m_op.m_pendingError : state.error);
        return;
    }
    static_cast<void>(m_op.stateChanged(copy));
    TD_ERROR("load file [%s] failed.\n", m_op.m_path.load());
    m_op.logWhere();
}

void Loader::logStays(int error) const {
    TD_ERROR("file [%s] cannot be read now (%s) and stays as it is.\n", m_op.m_path.load(), std::strerror(error));
    m_op.logWhere();
}

CopyState Loader::tryCopy(_LOAD_FILE_MODE mode) TD_NO_THREAD_SAFETY_ANALYSIS {
    CopyState state = m_op.verifyCopy(mode);
    if (state.verdict == Verdict::OtherVersion)
        m_op.m_merge.begin();
    if (!state.isGood())
        return state;
    m_op.m_loadMode = mode;
    TD_INFO("Ready to load contents in [%s] ...\n", AbstractFileOperator::getLoadMode(mode));
    if (mode == MANUFACTORY_LOAD && m_op.m_merge.isUnderWay())
        return readForMerge();
    if (!m_op.loadContents()) {
        state = contentsFailed();
        TD_WARNING("load contents from file [%s] failed.\n", m_op.m_path.load());
        m_op.logWhere();
        return mode == MANUFACTORY_LOAD ? CopyState{Verdict::Fatal} : state;
    }
    return mode == NORMAL_LOAD ? CopyState() : recover(mode);
}

CopyState Loader::contentsFailed() const TD_NO_THREAD_SAFETY_ANALYSIS {
    const bool isUnreadable = m_op.m_file.isOpend() && m_op.m_file.readFailed();
    return isUnreadable ? CopyState::unreadable(EIO) : CopyState{Verdict::Damaged};
}

CopyState Loader::recover(_LOAD_FILE_MODE mode) TD_NO_THREAD_SAFETY_ANALYSIS {
    if (mode == MANUFACTORY_LOAD)
        TD_INFO("load file [%s] completely.\n", m_op.m_path.load());
    m_op.closeFile();
    if (m_op.recoverFile())
        return {};
    const std::string current = m_op.getWorkPath(NORMAL_LOAD) + m_op.m_fileName;
    if (FileUtil::isStray(current.c_str())) {
        TD_WARNING("[%s]: file [%s] cannot be made where something else stands, so its values are served from memory, "
                   "and nothing is written before that has gone.\n",
                   m_op.categoryName(), current.c_str());
        m_op.m_servesMemory = true;
        m_op.m_loadMode = NORMAL_LOAD;
        m_op.setPath(current);
        return {};
    }
    if (mode == MANUFACTORY_LOAD) {
        TD_WARNING("recover data from file [%s] failed , pause load data flow.!!!\n", m_op.m_path.load());
        m_op.logWhere();
    }
    return {Verdict::Fatal};
}

bool Loader::serveFromMemory() TD_NO_THREAD_SAFETY_ANALYSIS {
    m_merge.giveUp();
    TD_WARNING("[%s]: another process keeps the lock of file [%s], so the first good copy is read without it, and "
               "nothing is written before the lock can be had.\n",
               m_op.categoryName(), m_op.m_fileName);
    for (const _LOAD_FILE_MODE mode : {NORMAL_LOAD, BACKUP_LOAD, MANUFACTORY_LOAD}) {
        if (!m_op.verifyCopy(mode).isGood() || !m_op.loadContents())
            continue;
        TD_INFO("load file [%s] without its lock.\n", m_op.m_path.load());
        m_op.closeFile();
        m_op.m_loadMode = NORMAL_LOAD;
        m_op.setPath(m_op.getWorkPath(NORMAL_LOAD) + m_op.m_fileName);
        m_op.m_servesMemory = true;
        return true;
    }
    TD_ERROR("load file [%s] failed.\n", m_op.m_path.load());
    return false;
}

// --- a copy of another version ---

CopyState Loader::readForMerge() TD_NO_THREAD_SAFETY_ANALYSIS {
    TD_INFO("#################### load OTA data flow begin. ###################.\n");
    TD_INFO("1. load contents from file [%s] ...\n", m_op.m_path.load());
    if (!m_op.loadContents()) {
        TD_WARNING("1.load contents from file [%s] failed when load OTA data.\n", m_op.m_path.load());
        m_op.logWhere();
        return {Verdict::Fatal};
    }
    m_op.closeFile();
    TD_INFO("load contents from file [%s] completely elpased time = %d (ms).\n", m_op.m_path.load(),
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
        m_op.logWhere();
        const CopyState backup = twiceIfUnreadable(&Loader::mergeBackup);
        if (backup.verdict == Verdict::Unreadable)
            logStays(backup.error);
        if (backup.verdict == Verdict::Unreadable || (!backup.isGood() && !readFactoryTable()))
            return {Verdict::Fatal};
    }
    m_op.closeFile();
    m_op.m_loadMode = NORMAL_LOAD;
    m_op.setPath(m_op.getWorkPath(NORMAL_LOAD) + m_op.m_fileName);
    return {};
}

CopyState Loader::twiceIfUnreadable(CopyState (Loader::*read)()) {
    const CopyState state = (this->*read)();
    return state.isUnreadable() ? (this->*read)() : state;
}

CopyState Loader::mergeCurrent() TD_NO_THREAD_SAFETY_ANALYSIS {
    TD_INFO("start to load current file [%s] with Each line mode when load OTA data ...\n",
            (m_op.getWorkPath(NORMAL_LOAD) + m_op.m_fileName).c_str());
    CopyState state = m_op.openNormal(AbstractFileOperator::Versions::Any);
    if (!state.isGood()) {
        TD_WARNING("switch to normal failed when load OTA data.\n");
        m_op.logWhere();
        return state;
    }
    state = readByKey();
    if (!state.isGood()) {
        TD_WARNING("load contents from file [%s] failed when load OTA data.\n", m_op.m_path.load());
        m_op.logWhere();
    } else {
        TD_INFO("loading current file [%s] completely when load OTA data.  \n", m_op.m_path.load());
    }
    m_op.closeFile();
    return state;
}

CopyState Loader::mergeBackup() TD_NO_THREAD_SAFETY_ANALYSIS {
    const std::string backup = m_op.getWorkPath(BACKUP_LOAD) + m_op.m_fileName;
    CopyState state = m_op.lookFor(backup.c_str());
    if (state.isGood() && !readFactoryTable())
        state = {Verdict::Damaged};
    if (state.isGood())
        state = m_op.verifyFile(backup.c_str());
    if (state.isGood())
        state = readByKey();
    if (state.isGood())
        TD_INFO("load backup data file [%s] in OTA mode completely \n", backup.c_str());
    return state;
}

CopyState Loader::readByKey() TD_NO_THREAD_SAFETY_ANALYSIS {
    // A copy that ends before its checksum has not been verified and has nothing to merge.
    if (m_op.m_crcLineLength == 0)
        return {Verdict::Damaged};
    return m_op.loadContents_OTA() ? CopyState() : contentsFailed();
}

bool Loader::readFactoryTable() TD_NO_THREAD_SAFETY_ANALYSIS {
    return m_op.switchToManufactory() && m_op.loadContents();
}

} // namespace td
