#include <dataModule/fileOperator/AbstractFileOperator.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <exception>
#include <utility>

#include <sys/stat.h>

#include <dataModule/common/CRC32Util.h>
#include <dataModule/common/Deadline.h>
#include <dataModule/common/EventIdGenerator.h>
#include <dataModule/common/Log.h>
#include <dataModule/common/TimeUtil.h>
#include <dataModule/fileOperator/CategoryLayout.h>
#include <dataModule/fileOperator/ChecksumRepair.h>
#include <dataModule/fileOperator/LoadBudget.h>
#include <dataModule/fileOperator/Loader.h>
#include <dataModule/fileOperator/PendingStores.h>

namespace td {

namespace {

std::atomic<int> g_debugLog{0};

const char* textOrEmpty(const char* text) {
    return text != nullptr ? text : "";
}

void copyBounded(const char* from, char* to, std::size_t size) {
    std::snprintf(to, size, "%s", textOrEmpty(from));
}

} // namespace

// --- construction, names and flags ---

AbstractFileOperator::AbstractFileOperator(const char* fileName, const char* version)
    : m_pending(std::make_shared<PendingStores>()) {
    copyBounded(fileName, m_fileName, sizeof m_fileName);
    copyBounded(version, m_version, sizeof m_version);
    SectionLock lock(m_criticalSection);
    setPath(getWorkPath(NORMAL_LOAD) + m_fileName);
}

AbstractFileOperator::~AbstractFileOperator() {
    waitForMerge();
}

void AbstractFileOperator::setParent(IDataSeparateManagerInner* parent) {
    m_parent = parent;
}

void AbstractFileOperator::setFileName(const char* name) {
    // The name is put behind the directories and must not lead out of them.
    if (name == nullptr || std::strchr(name, '/') != nullptr) {
        TD_WARNING("file name [%s] is refused, for it is %s.\n", textOrEmpty(name),
                   name == nullptr ? "none" : "a path");
        return;
    }
    SectionLock lock(m_criticalSection);
    copyBounded(name, m_fileName, sizeof m_fileName);
}

const char* AbstractFileOperator::getFileFullPath() {
    return m_path;
}

_DataCategory_t AbstractFileOperator::getDataCategory() {
    return m_category;
}

int AbstractFileOperator::getDataSize() {
    return m_dataSize;
}

FILE* AbstractFileOperator::getFileHandler() TD_NO_THREAD_SAFETY_ANALYSIS {
    const SectionStep step(m_criticalSection);
    return m_file.stream();
}

void AbstractFileOperator::setBackupReq(bool requested) {
    MutexLock lock(m_backupRequestMutex);
    m_backupRequest = requested;
}

bool AbstractFileOperator::getBackupReq() {
    MutexLock lock(m_backupRequestMutex);
    return m_backupRequest;
}

void AbstractFileOperator::enterCriticalSection() {
    m_criticalSection.lock();
}

void AbstractFileOperator::leaveCriticalSection() {
    m_criticalSection.unlock();
    // The worker comes back at once when more is queued: a client waits for one write, not for all of them.
    m_criticalSection.giveWay();
}

bool AbstractFileOperator::tryEnterCriticalSection() {
    if (!tryEnterWithFiles())
        return false;
    // What had to be loaded without the files does not go over the backup.
    if (m_servesMemory) {
        m_criticalSection.unlock();
        return false;
    }
    // A failed bulk restore leaves the factory copy open, which is no reason to go without a backup. After a failed
    // load the mode stays: what was not loaded does not go over the backup.
    if (m_loaded && m_loadMode != NORMAL_LOAD) {
        closeFile();
        m_loadMode = NORMAL_LOAD;
        setPath(getWorkPath(NORMAL_LOAD) + m_fileName);
    }
    return true;
}

bool AbstractFileOperator::tryEnterWithFiles() {
    if (!m_criticalSection.tryLock())
        return false;
    bool entered = false;
    try {
        // A suspend image holds no open file.
        entered =
            !m_merge.isUnderWay() && !m_releasedLoaded && m_criticalSection.tryTakeFiles(paths::lockFile(m_fileName));
        if (entered)
            endPendingWrite();
    } catch (const std::exception& error) {
        TD_WARNING("unexpected exception: %s\n", error.what());
        entered = false;
    }
    if (!entered)
        m_criticalSection.unlock();
    return entered;
}

bool AbstractFileOperator::getStoreFileFlag() {
    return m_parent == nullptr || m_parent->getStoreFileFlag();
}

bool AbstractFileOperator::getApplySettingFlag(const _DataCategory_t& category, const char* field) {
    return m_parent != nullptr && m_parent->getApplySettingFlag(category, field);
}

bool AbstractFileOperator::restoreApplySettingFlag(const _DataCategory_t& category, const char* field) {
    if (m_parent == nullptr || !m_parent->restoreApplySettingFlag(category, field))
        return false;
    TD_INFO("restore apply setting flag [%s] successfully.\n", textOrEmpty(field));
    return true;
}

int AbstractFileOperator::enableDebugLog() {
    return g_debugLog;
}

void AbstractFileOperator::setDebugLog(int on) {
    g_debugLog = on;
}

const char* AbstractFileOperator::categoryName() const {
    return m_parent != nullptr ? m_parent->getCategory_Str(m_category) : td::categoryName(m_category);
}

void AbstractFileOperator::logWhere() const {
    TD_WARNING("[%s]: in file [%s].\n", categoryName(), m_path.load());
}

std::string AbstractFileOperator::getWorkPath(_LOAD_FILE_MODE mode) const {
    if (mode == BACKUP_LOAD)
        return paths::backupDirectory();
    if (mode == MANUFACTORY_LOAD)
        return m_parent != nullptr ? m_parent->getManufactoryPath() : paths::defaultFactoryDirectory();
    return paths::currentDirectory();
}

const char* AbstractFileOperator::getLoadMode(_LOAD_FILE_MODE mode) {
    switch (mode) {
    case NORMAL_LOAD:
        return "NORMAL_LOAD";
    case BACKUP_LOAD:
        return "BACKUP_LOAD";
    case MANUFACTORY_LOAD:
        return "MANUFACTORY_LOAD";
    case INVALID_LOAD:
        break;
    }
    return "INVALID_LOAD";
}

std::string AbstractFileOperator::factoryFileName() {
    return m_fileName;
}

std::string AbstractFileOperator::factoryPath() {
    return getWorkPath(MANUFACTORY_LOAD) + factoryFileName();
}

// --- what a category answers that does not do it otherwise ---

bool AbstractFileOperator::loadData(const std::vector<int>&, std::vector<_Argument_t>&) {
    if (m_loaded)
        return true;
    TD_WARNING("couldn't load data , for loading data from file [%s] not completed or failed.\n", m_path.load());
    logWhere();
    return false;
}

bool AbstractFileOperator::restoreSetting(const std::vector<int>&) {
    TD_INFO("[%s]: module hasn't completed yet.\n", categoryName());
    return true;
}

bool AbstractFileOperator::restoreSettingForAllSource(const std::vector<int>&) {
    TD_INFO("[%s]: module hasn't completed yet.\n", categoryName());
    return true;
}

bool AbstractFileOperator::restoreSettingFromCurrent(const std::vector<int>&) {
    TD_INFO("[%s]: module hasn't completed yet.\n", categoryName());
    return true;
}

bool AbstractFileOperator::applySettingForAllSources(const std::vector<int>&) {
    TD_INFO("[%s]: module hasn't completed yet.\n", categoryName());
    return true;
}

bool AbstractFileOperator::applySettingForAllMode(const std::vector<int>&) {
    TD_INFO("[%s]: module hasn't completed yet.\n", categoryName());
    return true;
}

// --- the open file ---

void AbstractFileOperator::setPath(const std::string& path) {
    m_path.set(path);
}

bool AbstractFileOperator::openFile(const std::string& path, const char* mode) {
    closeFile();
    if (path.size() >= static_cast<std::size_t>(paths::PATH_SIZE) || !m_file.openFile(path.c_str(), mode))
        return false;
    struct stat status = {};
    if (fstat(m_file.descriptor(), &status) != 0) {
        closeFile();
        return false;
    }
    m_open = {path, status.st_dev, status.st_ino, mode[1] == '+', false};
    return true;
}

void AbstractFileOperator::closeFile() {
    m_file.closeFile();
    m_redo.writes.clear();
    m_open = OpenFile();
}

void AbstractFileOperator::shareFiles() {
    if (!m_criticalSection.shareFiles(paths::lockFile(m_fileName)))
        return;
    if (!m_torn.writes.empty() || redoIsPending(getWorkPath(NORMAL_LOAD) + m_fileName))
        takeFiles();
}

bool AbstractFileOperator::takeFiles() {
    const CriticalSection::Taken taken = m_criticalSection.takeFiles(paths::lockFile(m_fileName));
    if (taken != CriticalSection::Taken::Before && !m_criticalSection.gaveUpWaiting())
        endPendingWrite();
    return taken == CriticalSection::Taken::AfterSharing;
}

void AbstractFileOperator::endPendingWrite() {
    const std::string current = getWorkPath(NORMAL_LOAD) + m_fileName;
    m_redoStored = false;
    m_redo.writes.clear(); // of a copy that was given up
    m_pendingError = 0;
    bool changed = endTornWrite(current);
    // What lies there in place of the record of a torn write does not make its failure good.
    if (!changed && m_pendingError == 0)
        changed = redoIsPending(current) && replayRedo(current, m_crc, &m_pendingError);
    if (!changed)
        return;
    m_file.dropReadAhead();
    m_backupOutdated = true;
}

bool AbstractFileOperator::endTornWrite(const std::string& current) {
    if (m_torn.writes.empty())
        return false;
    struct stat status = {};
    const bool isThere = stat(current.c_str(), &status) == 0 && status.st_dev == m_tornFile.device &&
                         status.st_ino == m_tornFile.inode && !fileVerifies(current.c_str(), nullptr);
    errno = 0;
    if (isThere && !repeatWrite(current, m_torn)) {
        m_pendingError = errno != 0 ? errno : EIO;
        return false;
    }
    m_torn.writes.clear();
    if (isThere)
        m_crc = m_torn.crc;
    return isThere;
}

void AbstractFileOperator::closeIfReleased() {
    if (!m_loaded)
        closeFile();
}

bool AbstractFileOperator::isOpenFileAt(const std::string& path) const {
    struct stat status = {};
    return m_file.isOpend() && stat(path.c_str(), &status) == 0 && status.st_dev == m_open.device &&
           status.st_ino == m_open.inode;
}

void AbstractFileOperator::forgetLengths() {
    m_commentText.clear();
    m_summaryLength = 0;
    m_crcPosition = 0;
    m_crcLineLength = 0;
    m_open.lengthsRead = false;
}

void AbstractFileOperator::adoptSummary(const Summary& summary, SummaryState state) {
    m_commentText = summary.comment;
    m_summaryLength = summary.length;
    m_crcPosition = summary.crcPosition;
    m_crcLineLength = summary.crcLineLength;
    // With a checksum line of another length the file can be read, but not brought up to date after a section write.
    m_open.lengthsRead = state == SummaryState::Complete && std::strcmp(summary.version, m_version) == 0 &&
                         summary.crcLineLength == text::CRC_LINE_LENGTH;
    if (summary.hasTvType)
        copyBounded(summary.tvType, m_fileType, sizeof m_fileType);
}

bool AbstractFileOperator::openCurrent() {
    if (m_merge.isUnderWay() || m_servesMemory)
        return false;
    shareFiles();
    m_sectionSkipped = false;
    if (m_criticalSection.filesUnsure())
        return false;
    const std::string path = getWorkPath(NORMAL_LOAD) + m_fileName;
    // With a new checksum what is half written would pass for whole (invariant 7).
    if (m_pendingError != 0 && !fileVerifies(path.c_str(), nullptr))
        return false;
    m_loadMode = NORMAL_LOAD;
    setPath(path);
    if (m_open.writable && m_open.lengthsRead && isOpenFileAt(path) && m_file.dropReadAhead())
        return true;
    if (!openFile(path, "r+"))
        return false;
    Summary summary;
    const SummaryState state = readSummary(m_file, summary);
    adoptSummary(summary, state);
    if (m_open.lengthsRead)
        return true;
    closeFile();
    return false;
}

// --- reading and verifying a summary ---

bool AbstractFileOperator::loadSummary(_LOAD_FILE_MODE mode, bool& fatal) {
    const SectionStep step(m_criticalSection);
    const CopyState copy = verifyCopy(mode);
    if (copy.verdict == Verdict::OtherVersion)
        m_merge.begin();
    fatal = fatal || copy.verdict == Verdict::Fatal;
    return copy.isGood();
}

CopyState AbstractFileOperator::verifyCopy(_LOAD_FILE_MODE mode, Versions versions) {
    if (m_parent == nullptr)
        return {Verdict::Missing};
    shareFiles();
    if (m_criticalSection.filesUnsure() && !m_criticalSection.gaveUpWaiting())
        return CopyState::unreadable(EMFILE);
    const std::string path = mode == MANUFACTORY_LOAD ? factoryPath() : getWorkPath(mode) + m_fileName;
    closeFile();
    setPath(path);
    TD_INFO("current load mode is: [%s] and ready to load data file is: [%s] ...\n", getLoadMode(mode), path.c_str());
    const CopyState opened = openForSummary(mode);
    if (opened.isGood())
        return verifySummary(&mode, versions);
    logWhere();
    return opened;
}

CopyState AbstractFileOperator::openForSummary(_LOAD_FILE_MODE mode) {
    const std::string path = m_path.load();
    const CopyState there =
        Copies::isNoFile(path, categoryName()) ? CopyState{Verdict::Missing} : lookFor(path.c_str());
    if (!there.isGood()) {
        TD_WARNING("load file failed -- file [%s] isn't exist.\n", path.c_str());
        return there;
    }
    errno = 0;
    m_fileSize = FileUtil::getFileSize(path.c_str());
    const int error = m_fileSize < 0 ? errno : 0;
    // A size beyond an int reads as -1.
    if (m_fileSize > text::MAX_FILE_SIZE || m_fileSize < 0) {
        TD_WARNING("the file [%s] size is [%d] and exception%s.\n", path.c_str(), m_fileSize,
                   mode == MANUFACTORY_LOAD ? "" : ", so will RECOVER it from manufactory");
        return error != 0 ? CopyState::unreadable(error) : CopyState{Verdict::Damaged};
    }
    // What cannot be written to can be read at least.
    if (openFile(path, mode == MANUFACTORY_LOAD ? "r" : "r+") || openFile(path, "r"))
        return {};
    const CopyState refused = CopyState::unreadable(errno);
    TD_WARNING("open file [%s] failed.\n", path.c_str());
    return refused;
}

CopyState AbstractFileOperator::lookFor(const char* path) const {
    errno = 0;
    if (FileUtil::checkFile(path))
        return {};
    const int error = errno;
    if (error == ENOENT || error == ENOTDIR || FileUtil::isStray(path))
        return {Verdict::Missing};
    return CopyState::unreadable(error);
}

Copies AbstractFileOperator::copies(std::string factory) {
    return {{getWorkPath(NORMAL_LOAD) + m_fileName, getWorkPath(BACKUP_LOAD) + m_fileName, std::move(factory)},
            categoryName(),
            m_path};
}

bool AbstractFileOperator::loadSummary(const char* path) {
    const SectionStep step(m_criticalSection);
    return verifyFile(path).isGood();
}

CopyState AbstractFileOperator::verifyFile(const char* path) {
    shareFiles();
    closeFile();
    if (path == nullptr || std::strlen(path) >= static_cast<std::size_t>(paths::PATH_SIZE))
        return {Verdict::Missing};
    setPath(path);
    CopyState state = Copies::isNoFile(path, categoryName()) ? CopyState{Verdict::Missing} : lookFor(path);
    if (!state.isGood()) {
        TD_WARNING("load file failed -- file [%s] isn't exist.\n", path);
        logWhere();
        return state;
    }
    if (!openFile(path, "r")) {
        state = CopyState::unreadable(errno);
        TD_WARNING("open file [%s] failed.\n", path);
        logWhere();
        return state;
    }
    return verifySummary(nullptr, Versions::Any);
}

CopyState AbstractFileOperator::verifySummary(const _LOAD_FILE_MODE* mode, Versions versions) {
    forgetLengths();
    Summary summary;
    const SummaryState lines = readSummary(m_file, summary);
    adoptSummary(summary, lines);
    const CopyState state = checkSummaryLines(summary, lines, mode, versions);
    if (!state.isGood()) {
        logWhere();
        closeFile();
    } else if (lines == SummaryState::Complete) {
        TD_INFO("SummaryInfo -- SN:[%s] VER:[%s] SIZE:[%d].\n", m_fileType, m_version, m_fileSize);
    }
    return state;
}

CopyState AbstractFileOperator::checkSummaryLines(const Summary& summary, SummaryState state,
                                                  const _LOAD_FILE_MODE* mode, Versions versions) {
    if (summary.hasTvType && m_parent != nullptr && std::strcmp(summary.tvType, m_parent->getTvType()) != 0)
        TD_WARNING("The Tv type [%s] of data file [%s] is not matched as defined [%s] .\n", summary.tvType,
                   m_path.load(), m_parent->getTvType());
    if (summary.hasVersion && mode != nullptr && versions == Versions::OwnOnly && m_merge.comparesVersions() &&
        m_parent != nullptr && std::strcmp(summary.version, m_version) != 0)
        return otherVersion(summary, *mode);
    if (state == SummaryState::NotReadable) {
        const CopyState unreadable = CopyState::unreadable(errno);
        TD_WARNING("reset file position of [%s] failed.\n", m_path.load());
        return unreadable;
    }
    if (const char* const part = badPart(state)) {
        TD_WARNING("Summary section %s (%s) is invalid.\n", part, summary.badLine);
        return {Verdict::Damaged};
    }
    if (state == SummaryState::EndOfFile)
        return {};
    return checkChecksum(summary, mode);
}

CopyState AbstractFileOperator::otherVersion(const Summary& summary, _LOAD_FILE_MODE mode) {
    TD_WARNING("The Tv Version [%s] of data file [%s] is not matched defined of SW [%s] in [%s].\n", summary.version,
               m_path.load(), m_version, getLoadMode(mode));
    if (mode == MANUFACTORY_LOAD) {
        TD_ERROR("dataModule will terminal loading-data Flow because of  version not matched from manufactory data "
                 "files.\n");
        return {Verdict::Fatal};
    }
    TD_INFO("dataModule will load data as OTA Flow in [%s].\n", getLoadMode(mode));
    return {Verdict::OtherVersion};
}

CopyState AbstractFileOperator::checkChecksum(const Summary& summary, const _LOAD_FILE_MODE* mode) {
    unsigned int computed = 0;
    if (!contentChecksum(computed)) {
        const CopyState unreadable = CopyState::unreadable(errno);
        TD_WARNING("Failed to Calculate CRC code of data file [%s].\n", m_path.load());
        return unreadable;
    }
    if (computed == summary.crc) {
        m_crc = computed;
        return {};
    }
    TD_WARNING("The CRC [0x%08x] of data file [%s] is not matched actually [0x%08x] ...\n", summary.crc, m_path.load(),
               computed);
    if (mode == nullptr)
        return {Verdict::Damaged};
    if (*mode == MANUFACTORY_LOAD) {
        TD_ERROR("dataModule will terminal loading-data Flow because of  CRC checking not passed from manufactory data "
                 "files.\n");
        return {Verdict::Fatal};
    }
    TD_WARNING("dataModule will load data as RECOVER flow in [%s].\n", getLoadMode(*mode));
    return {Verdict::Damaged};
}

bool AbstractFileOperator::contentChecksum(unsigned int& crc) {
    return td::contentChecksum(m_open.path.c_str(), contentPosition(), crc);
}

unsigned int AbstractFileOperator::getCrcCode(const char* path) {
    const SectionStep step(m_criticalSection);
    unsigned int crc = 0;
    return readStoredChecksum(path, crc) ? crc : 0;
}

/// A missing or closed file is no failure here, it only means that a copy has to be made: the lines are progress.
bool AbstractFileOperator::readStoredChecksum(const char* path, unsigned int& crc) {
    if (!FileUtil::checkFile(path) || FileUtil::isStray(path)) {
        TD_INFO("load file failed -- file [%s] isn't exist.\n", textOrEmpty(path));
        return false;
    }
    FileUtil asked;
    if (!asked.openFile(path, "r")) {
        TD_INFO("open file [%s] failed.\n", path);
        return false;
    }
    Summary summary;
    const SummaryState state = readSummary(m_file, summary);
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

// --- loading ---

bool AbstractFileOperator::checkReloadFile() const {
    return m_category != PICTURE_SOURCE_ONLY && m_category != PICTURE_FACTORY_WB &&
           m_category != PICTURE_FACTORY_OVERSCAN;
}

_LOAD_FILE_MODE AbstractFileOperator::stateChanged(_LOAD_FILE_MODE mode) const {
    _LOAD_FILE_MODE next = INVALID_LOAD;
    switch (mode) {
    case NORMAL_LOAD:
        next = m_merge.isUnderWay() ? MANUFACTORY_LOAD : BACKUP_LOAD;
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
    TD_INFO("@@@@@ The state is changed from [%s] to [%s] @@@@@ .\n", getLoadMode(mode), getLoadMode(next));
    return next;
}

/// A table that is served from memory is until a load has taken its place.
struct AbstractFileOperator::MemoryScope {
    explicit MemoryScope(AbstractFileOperator& loading) : op(loading), wasServed(op.m_servesMemory.exchange(false)) {}
    ~MemoryScope() {
        if (wasServed && !hasEnded)
            op.m_servesMemory = true;
    }
    MemoryScope(const MemoryScope&) = delete;
    MemoryScope& operator=(const MemoryScope&) = delete;

    AbstractFileOperator& op;
    const bool wasServed;
    bool hasEnded = false;
};

bool AbstractFileOperator::loadFile() {
    TD_INFO("======================= start to load file =====================\n");
    TimeUtil::instance()->start();
    const timespec deadline = LoadBudget::deadline();
    // Asked before the lock too, which the thread that writes the merged file holds.
    if (!m_merge.isUnderWay()) {
        SectionLock lock(m_criticalSection);
        m_criticalSection.limitWaits(deadline);
        if (checkReloadFile() && m_loaded) {
            TD_INFO("file [%s] already load yet, NEEDN'T load again.\n", m_path.load());
            return true;
        }
        if (!m_merge.isUnderWay())
            return loadFromFiles();
    }
    TD_WARNING("Forbidden load flle [%s] in OTA LOAD STATUS.\n", m_path.load());
    logWhere();
    return false;
}

bool AbstractFileOperator::loadFromFiles() {
    // A merge that could not be written is in the table alone; if it still cannot be, it is made again.
    if (m_merge.isUnwritten() && !mergedByOther())
        createFile();
    {
        VersionMerge::Attempt merge(m_merge);
        MemoryScope memory(*this);
        const bool wasServed = memory.wasServed;
        const Stores stores = wasServed || (m_wasLoaded && !m_loaded) ? Stores::Kept : Stores::Dropped;
        const auto load = [this, &merge]() TD_REQUIRES(m_criticalSection) {
            if (!Loader(*this, merge).load())
                return false;
            m_loaded = true;
            return true;
        };
        if (!loadTable(stores, load))
            return false;
        memory.hasEnded = true;
        merge.goesOn();
    }
    m_wasLoaded = true;
    m_releasedLoaded = false;
    if (m_merge.isUnderWay())
        startMergeThread();
    return true;
}

// Whoever loads has waited for the stores before, but others may have stored since, and a write may have failed. What
// was stored before there ever was a table to change is no change of it.
template <typename Load>
bool AbstractFileOperator::loadTable(Stores stores, Load load) {
    const std::vector<KeptStore> kept = m_wasLoaded ? keptStores() : std::vector<KeptStore>();
    bool loaded = false;
    try {
        loaded = load();
    } catch (...) {
        putBack(kept, false);
        throw;
    }
    if (loaded && stores == Stores::Dropped)
        giveUpStores();
    else
        putBack(kept, loaded);
    return loaded;
}

void AbstractFileOperator::outdateSnapshots() {
    m_snapshotFloor.raiseAll(EventIdGenerator::instance()->peekNextEventId());
}

void AbstractFileOperator::giveUpStores() {
    outdateSnapshots();
    m_pending->drop();
}

void AbstractFileOperator::dropStores() {
    SectionLock lock(m_criticalSection);
    giveUpStores();
}

bool AbstractFileOperator::loadAgain() {
    // Whoever reads the table meanwhile would wait too, and so would the worker's other categories.
    m_criticalSection.limitWaits(deadlineIn(0));
    takeFiles();
    // What was released is loaded again by the resume.
    if (m_criticalSection.filesUnsure() || !m_loaded) {
        errno = EBUSY;
        return false;
    }
    const std::string current = getWorkPath(NORMAL_LOAD) + m_fileName;
    std::string aside;
    if (FileUtil::isStray(current.c_str())) {
        if (!FileUtil::moveAside(current.c_str(), aside))
            return false;
        TD_WARNING("[%s]: [%s] was moved out of the way and is [%s] now.\n", categoryName(), current.c_str(),
                   aside.c_str());
    }
    if (!loadFromFiles() || m_servesMemory)
        return false;
    TD_INFO("[%s]: file [%s] is loaded again.\n", categoryName(), m_path.load());
    return true;
}

bool AbstractFileOperator::hasFailed() const {
    return m_servesMemory || m_merge.isUnwritten() || m_pending->hasFailed();
}

void AbstractFileOperator::tryAgain() {
    if (!m_loaded || !hasFailed() || !getStoreFileFlag() || !tryEnterWithFiles())
        return;
    errno = 0;
    bool done = false;
    bool hadFailed = false;
    try {
        done = makeUpForLoad();
        hadFailed = m_merge.isUnwritten() || m_pending->hasFailed();
        done = done && writeFailed();
    } catch (const std::exception& error) {
        done = false;
        TD_WARNING("unexpected exception: %s\n", error.what());
    }
    const int cause = done ? 0 : errno != 0 ? errno : EIO;
    if (done && hadFailed) {
        TD_INFO("[%s]: what could not be written to file [%s] is written now.\n", categoryName(), m_path.load());
        setBackupReq(true);
    } else if (!done && cause != m_retryError) {
        TD_WARNING("[%s]: what was stored is not in file [%s] yet (%s), it is tried again from time to time.\n",
                   categoryName(), m_path.load(), std::strerror(cause));
    }
    m_retryError = cause;
    m_criticalSection.unlock();
}

// --- merging a copy of another version ---

bool AbstractFileOperator::loadCurrentFile() {
    const SectionStep step(m_criticalSection);
    m_merge.acceptAnyVersion();
    VersionMerge::Attempt merge(m_merge);
    merge.goesOn();
    return Loader(*this, merge).mergeCurrent().isGood();
}

/// Called last by the load, which still holds the critical section: the thread starts writing when that is given back.
void AbstractFileOperator::startMergeThread() {
    TimeUtil::instance()->start();
    // No other process may merge the same file, or store in it, before this one has written what it read.
    m_criticalSection.keepFiles(true);
    if (!m_merge.startThread(mergeProc, this)) {
        m_criticalSection.keepFiles(false);
        TD_WARNING("no thread to create NEW current file (%s), so create it at once.\n", m_path.load());
        logWhere();
        writeMerged();
    }
    TD_INFO("#################### load OTA data flow end. ###################.\n");
}

void* AbstractFileOperator::mergeProc(void* self) {
    auto* op = static_cast<AbstractFileOperator*>(self);
    SectionLock lock(op->m_criticalSection);
    op->m_criticalSection.keepFiles(false);
    op->writeMerged();
    return nullptr;
}

void AbstractFileOperator::writeMerged() {
    try {
        createFileProc(this);
    } catch (...) {
        TD_ERROR("create file (%s) failed when load OTA data.\n", m_path.load());
        logWhere();
        m_merge.failed();
        m_pending->mergeFailed();
    }
}

void* AbstractFileOperator::createFileProc(void* self) TD_NO_THREAD_SAFETY_ANALYSIS {
    auto* op = static_cast<AbstractFileOperator*>(self);
    if (op == nullptr || op->m_parent == nullptr)
        return nullptr;
    const SectionStep step(op->m_criticalSection);
    TD_INFO("################### start to create new current file in OTA mode ... ###################.\n");
    TD_INFO("@@@@@ start background thread to create NEW current file (%s) when load OTA data.\n", op->m_path.load());
    op->createFile();
    TD_INFO("@@@@@ background thread terminal to create NEW current file (%s) when load OTA data.\n",
            op->m_path.load());
    return nullptr;
}

bool AbstractFileOperator::createFile() {
    const SectionStep step(m_criticalSection);
    TD_INFO("start to create NEW current file (%s) when load OTA data.\n", m_path.load());
    if (!writeNewFile(false)) {
        // The current copy is still of the other version: read again, it has to be merged again.
        m_merge.failed();
        m_pending->mergeFailed();
        TD_WARNING("create file (%s) failed when load OTA data.\n", m_path.load());
        logWhere();
        return false;
    }
    m_merge.written();
    TD_INFO("#################### load OTA data flow end. ###################.\n");
    return true;
}

bool AbstractFileOperator::mergedByOther() {
    takeFiles();
    if (!fileVerifies((getWorkPath(NORMAL_LOAD) + m_fileName).c_str(), m_version))
        return false;
    m_merge.wasWrittenElsewhere();
    return true;
}

void AbstractFileOperator::waitForMerge() {
    const NoCancel noCancel;
    OsalThreads::Handle handle = OsalThreads::INVALID_HANDLE;
    {
        SectionLock lock(m_criticalSection);
        handle = m_merge.takeThread();
    }
    if (handle != OsalThreads::INVALID_HANDLE)
        OsalThreads::join(handle);
}

// --- switching copies ---

/// Only a load may begin a merge: nobody would write the file here and end it.
bool AbstractFileOperator::switchToNormal() {
    const SectionStep step(m_criticalSection);
    return openNormal().isGood();
}

CopyState AbstractFileOperator::openNormal(Versions versions) {
    closeFile();
    m_loadMode = NORMAL_LOAD;
    const CopyState state = verifyCopy(NORMAL_LOAD, versions);
    if (!state.isGood()) {
        TD_WARNING("Load summary from current file [%s] failed.\n", m_path.load());
        logWhere();
    }
    return state;
}

bool AbstractFileOperator::switchToManufactory() {
    const SectionStep step(m_criticalSection);
    closeFile();
    m_loadMode = MANUFACTORY_LOAD;
    const bool loaded = verifyCopy(MANUFACTORY_LOAD).isGood();
    if (!loaded) {
        TD_WARNING("Load summary from manufactory file [%s] failed.\n", m_path.load());
        logWhere();
    }
    return loaded;
}

bool AbstractFileOperator::loadFile(const char* path) {
    SectionLock lock(m_criticalSection);
    const std::string before = m_path.load();
    bool loaded = loadSummary(path);
    if (!loaded) {
        TD_WARNING("load summary failed from file [%s].\n", textOrEmpty(path));
        logWhere();
    } else {
        loaded = loadTable(Stores::Dropped, [this]() TD_REQUIRES(m_criticalSection) { return loadContents(); });
        if (!loaded) {
            TD_WARNING("load contents failed from file [%s].\n", path);
            logWhere();
        }
    }
    closeFile();
    setPath(before);
    return loaded;
}

bool AbstractFileOperator::refreshDataFromManufactory() {
    SectionLock lock(m_criticalSection);
    TD_INFO("Load file from manufactory.\n");
    const bool loaded = loadTable(Stores::Dropped, [this]() TD_REQUIRES(m_criticalSection) {
        return switchToManufactory() && m_file.setPos(contentPosition()) && loadContents();
    });
    if (loaded) {
        TD_INFO("Load file from manufactory successfully.\n");
        tableRefreshed();
    } else {
        TD_WARNING("Load file from manufactory failed.\n");
        logWhere();
    }
    switchToNormal();
    closeIfReleased();
    return loaded;
}

bool AbstractFileOperator::refreshDataFromCurrent() {
    SectionLock lock(m_criticalSection);
    TD_INFO("Load file from manufactory.\n");
    const bool loaded = loadTable(Stores::Dropped, [this]() TD_REQUIRES(m_criticalSection) {
        return openCurrent() && m_file.setPos(contentPosition()) && loadContents();
    });
    if (loaded)
        TD_INFO("Load file from manufactory successfully.\n");
    else {
        TD_WARNING("Load file from manufactory failed.\n");
        logWhere();
    }
    closeIfReleased();
    return loaded;
}

bool AbstractFileOperator::releaseFile() {
    // Nobody writes a file that was released.
    waitForMerge();
    SectionLock lock(m_criticalSection);
    closeFile();
    m_releasedLoaded = m_loaded || m_releasedLoaded;
    m_loaded = false;
    return true;
}

bool AbstractFileOperator::reloadFile() {
    return true;
}

bool AbstractFileOperator::loadIfReleased() {
    return !m_releasedLoaded || loadFile();
}

bool AbstractFileOperator::resetForLoadFile() {
    waitForMerge();
    SectionLock lock(m_criticalSection);
    m_loaded = false;
    closeFile();
    TD_INFO("@@@@@@@@@@ close file [%s] when reset \n", m_path.load());
    return true;
}

// --- making, copying and removing copies ---

bool AbstractFileOperator::initFile(bool defaults) {
    SectionLock lock(m_criticalSection);
    return writeNewFile(defaults);
}

bool AbstractFileOperator::writeNewFile(bool defaults) {
    takeFiles();
    if (m_criticalSection.filesUnsure()) {
        TD_WARNING("create file [%s] failed, for another process is at work on it.\n", m_fileName);
        return false;
    }
    closeFile();
    m_loadMode = NORMAL_LOAD;
    m_nameSynced = false;
    const std::string directory = getWorkPath(NORMAL_LOAD);
    const std::string path = directory + m_fileName;
    setPath(path);
    TD_INFO("======================= start to init file =====================\n");
    TD_INFO("init file [%s] ...\n", path.c_str());
    if (!FileUtil::checkPath(directory.c_str(), true)) {
        TD_WARNING("init failed -- data path [%s] not exist and couldn't create.\n", directory.c_str());
        logWhere();
        return false;
    }
    if (!Copies::makeRoom(path, categoryName()))
        return false;
    if (defaults && FileUtil::checkFile(path.c_str())) {
        TD_WARNING("init failed -- file [%s] exist.\n", path.c_str());
        logWhere();
        return false;
    }
    const std::string temporary = path + FileUtil::TEMPORARY_SUFFIX;
    FileUtil::makeWay(temporary.c_str());
    if (!openFile(temporary, "w+x")) {
        TD_WARNING("create file [%s] failed.\n", path.c_str());
        logWhere();
        return false;
    }
    TimeUtil::instance()->start();
    bool written = writeWholeText(defaults) && m_file.takeModeAndOwner(path.c_str());
    closeFile();
    written = written && FileUtil::commitTemporary(temporary.c_str(), path.c_str());
    TD_INFO("init file [%s] completely, elpased time = %d (ms).\n", path.c_str(), elapsedMilliseconds());
    if (!written) {
        logWhere();
        FileUtil::removeSingleFile(temporary.c_str());
        return false;
    }
    // The table is on disk as it is now (invariant 4).
    outdateSnapshots();
    if (defaults)
        m_pending->drop();
    else
        m_pending->allWritten();
    m_backupOutdated = true;
    backupFile(defaults);
    if (m_backupOutdated)
        setBackupReq(true);
    return true;
}

/// Back to the usual way of writing, whatever ends the making of a file.
struct AbstractFileOperator::CreatingScope {
    explicit CreatingScope(AbstractFileOperator& making) TD_NO_THREAD_SAFETY_ANALYSIS : op(making),
                                                                                        deferred(making.m_file, true) {
        op.m_creating = true;
    }
    ~CreatingScope() TD_NO_THREAD_SAFETY_ANALYSIS { op.m_creating = false; }
    CreatingScope(const CreatingScope&) = delete;
    CreatingScope& operator=(const CreatingScope&) = delete;

    AbstractFileOperator& op;
    DeferredSync deferred;
};

bool AbstractFileOperator::writeWholeText(bool defaults) {
    const CreatingScope creating(*this);
    if (!m_file.resetStartPos()) {
        TD_WARNING("reset file position of [%s] failed.\n", m_path.load());
        return false;
    }
    forgetLengths();
    if (!buildComments()) {
        TD_WARNING("write file comments to file [%s] failed.\n", m_path.load());
        logWhere();
        return false;
    }
    if (!buildSummary(true)) {
        TD_WARNING("write file summary to file [%s] failed.\n", m_path.load());
        logWhere();
        return false;
    }
    if (!buildContents(defaults)) {
        TD_WARNING("write file contents to file [%s] failed.\n", m_path.load());
        logWhere();
        return false;
    }
    return updateSummary() && m_file.syncFile();
}

bool AbstractFileOperator::recoverFile() {
    const SectionStep step(m_criticalSection);
    if (m_loadMode == NORMAL_LOAD) {
        TD_INFO("current load mode [%s] is 'NORMAL_LOAD' and needn't recover file.\n", getLoadMode(m_loadMode));
        return true;
    }
    if (m_loadMode != BACKUP_LOAD && m_loadMode != MANUFACTORY_LOAD) {
        TD_WARNING("recover file in invalid mode [%d].\n", static_cast<int>(m_loadMode));
        logWhere();
        return false;
    }
    takeFiles();
    TD_INFO("current load mode [%s] ISN'T 'NORMAL_LOAD' , so NEED to recover file ...\n", getLoadMode(m_loadMode));
    if (!copies().recoverFrom(m_path.load()))
        return false;
    m_backupOutdated = m_backupOutdated || m_loadMode == MANUFACTORY_LOAD;
    return true;
}

bool AbstractFileOperator::backupFile(bool alsoFactory) {
    const SectionStep step(m_criticalSection);
    if (m_loadMode != NORMAL_LOAD) {
        TD_WARNING("current load mode [%s] is not 'NORMAL_LOAD' when backup file.\n", getLoadMode(m_loadMode));
        logWhere();
        return false;
    }
    takeFiles();
    const Copies copies = this->copies(getWorkPath(MANUFACTORY_LOAD) + m_fileName);
    if (!copies.makeBackupDirectory())
        return false;
    const std::string backup = getWorkPath(BACKUP_LOAD) + m_fileName;
    const std::string current = getWorkPath(NORMAL_LOAD) + m_fileName;
    // The checksum is read from the open file, which may be the current copy, opened again since it was written.
    if (m_backupOutdated)
        closeFile();
    unsigned int stored = 0;
    if (readStoredChecksum(backup.c_str(), stored) && stored == m_crc) {
        TD_INFO("Backup file crc code [%s] is the same as current file and NEEDN'T generate backup file.\n",
                backup.c_str());
        return true;
    }
    if (!copies.backUp())
        return true;
    m_backupOutdated = false;
    if (enableDebugLog() != 0)
        TD_DETAIL("backup file [%s] from file [%s] successfully.\n", backup.c_str(), current.c_str());
    if (alsoFactory)
        static_cast<void>(copies.makeFactory());
    return true;
}

bool AbstractFileOperator::resetCurrentFileFromManufactoryFile() {
    SectionLock lock(m_criticalSection);
    const std::string factory = factoryPath();
    const std::string current = getWorkPath(NORMAL_LOAD) + m_fileName;
    takeFiles();
    closeFile();
    setPath(current);
    m_nameSynced = false;
    if (copies(factory).resetFromFactory(m_version)) {
        outdateSnapshots();
        m_backupOutdated = true;
        setBackupReq(true);
        postChangesSinceRefresh();
    }
    TD_INFO("reset current file [%s] from Manufactory File [%s].\n", current.c_str(), factory.c_str());
    return true;
}

bool AbstractFileOperator::removeFile() {
    SectionLock lock(m_criticalSection);
    takeFiles();
    closeFile();
    giveUpStores();
    return copies().removeAll(paths::defaultFactoryDirectory() + m_fileName);
}

bool AbstractFileOperator::removeCurrentFile() {
    SectionLock lock(m_criticalSection);
    takeFiles();
    closeFile();
    giveUpStores();
    return copies().removeCurrent();
}

// --- summary and checksum ---

bool AbstractFileOperator::buildSummary(bool withHeader) {
    const SectionStep step(m_criticalSection);
    const char* tvType = m_parent != nullptr ? m_parent->getTvType() : "";
    const std::string lines = text::summary(tvType, m_version, m_crc, withHeader);
    if (withHeader) {
        m_summaryLength = static_cast<int>(lines.size());
        m_crcPosition = static_cast<int>(m_commentText.size()) + m_summaryLength - text::CRC_LINE_LENGTH;
        m_crcLineLength = text::CRC_LINE_LENGTH;
    }
    return m_file.writeFile(lines.c_str(), true);
}

AbstractFileOperator::Found AbstractFileOperator::scanFor(const char* id) {
    if (id == nullptr || !m_file.isOpend() || !m_file.resetStartPos()) {
        TD_WARNING("reset file [%s] pointer to start pos failed when searchSection(%s).\n", m_path.load(),
                   textOrEmpty(id));
        logWhere();
        return Found::Failed;
    }
    m_commentText.clear();
    bool inComment = true;
    char line[text::LINE_BUFFER];
    while (m_file.readLine(line, sizeof line)) {
        inComment = inComment && text::isComment(line);
        if (inComment) {
            m_commentText += line;
            continue;
        }
        if (std::strcmp(line, id) == 0)
            return Found::Yes;
        if (enableDebugLog() != 0)
            TD_DETAIL("[READ LINE]: %s", line);
    }
    return m_file.reachEnd() ? Found::EndOfFile : Found::Failed;
}

bool AbstractFileOperator::searchSectionId(const char* id) {
    const SectionStep step(m_criticalSection);
    return scanFor(id) != Found::Failed;
}

bool AbstractFileOperator::updateSummary() {
    const SectionStep step(m_criticalSection);
    TD_INFO("update summary info for file [%s] ...\n", m_path.load());
    takeFiles();
    // The lines are rewritten in place, so the ones that stand there must have the written widths (invariant 3).
    if ((!m_creating && !openCurrent()) || scanFor(text::SUMMARY_HEADER) != Found::Yes ||
        m_summaryLength != text::SUMMARY_LENGTH) {
        TD_WARNING("Update summay info for file [%s] failed because of finding section ID [%s] failed.\n",
                   m_path.load(), text::SUMMARY_HEADER);
        logWhere();
        return false;
    }
    unsigned int crc = 0;
    if (!contentChecksum(crc)) {
        TD_WARNING("Update summay info for file [%s] failed because of crc code.\n", m_path.load());
        logWhere();
        return false;
    }
    m_crc = crc;
    const int linesPosition = static_cast<int>(m_commentText.size() + std::strlen(text::SUMMARY_HEADER));
    const bool written = m_file.setPos(linesPosition) && buildSummary(false);
    if (!written) {
        TD_WARNING("Update summay info for file [%s] failed because writting.\n", m_path.load());
        logWhere();
    }
    if (!m_creating) {
        m_backupOutdated = true;
        closeFile();
    }
    return written;
}

bool AbstractFileOperator::updateCrcCode() {
    const SectionStep step(m_criticalSection);
    if (std::exchange(m_sectionSkipped, false) || m_merge.isUnderWay())
        return true;
    WriteScope write(*this);
    takeFiles();
    const bool opened = openCurrent();
    if (!opened) {
        TD_WARNING("Update summay info for file [%s] failed because of set pos.\n", m_path.load());
        logWhere();
    }
    const bool updated = opened && rewriteChecksumLine();
    // A record whose end failed stays, for the next time that the files are taken.
    if (std::exchange(m_redoStored, false) && updated)
        clearRedo(m_open.path);
    write.done = updated;
    // With the file closed the next idle backup cannot mistake the new checksum for the backup's.
    closeFile();
    return updated;
}

bool AbstractFileOperator::addSection(const std::string& text) {
    long position = 0;
    if (!m_file.getCurrentPos(position))
        return false;
    m_redo.writes.push_back({static_cast<int>(position), text});
    return true;
}

bool AbstractFileOperator::writeSections() {
    m_redoStored = false;
    if (m_redo.writes.empty())
        return true;
    std::sort(m_redo.writes.begin(), m_redo.writes.end(),
              [](const RedoRecord::Write& one, const RedoRecord::Write& other) { return one.offset < other.offset; });
    m_redo.contentPosition = contentPosition();
    m_redo.crcPosition = m_crcPosition;
    m_redoStored = (m_knownChecksum.after(m_file.descriptor(), m_redo, m_redo.crc) ||
                    checksumAfter(m_open.path, m_redo, m_redo.crc)) &&
                   storeRedo(m_open.path, m_redo);
    if (!m_redoStored)
        TD_INFO("no redo record for file [%s], the store goes on without.\n", m_open.path.c_str());
    // Whoever put the file in its place may have ended before the directory was on the disk.
    if (!m_nameSynced)
        m_nameSynced = FileUtil::syncPath(getWorkPath(NORMAL_LOAD).c_str()) &&
                       FileUtil::syncPath(underRootPrefix(paths::DATA_DIRECTORY).c_str());
    const std::vector<RedoRecord::Write> writes = std::exchange(m_redo.writes, {});
    const DeferredSync deferred(m_file, true);
    for (const RedoRecord::Write& write : writes) {
        if (m_file.setPos(write.offset) && m_file.writeFile(write.bytes.c_str(), true))
            continue;
        // A file that failed once is not to be trusted with another write.
        const OpenFile torn = m_open;
        closeFile();
        if (!m_redoStored) {
            m_torn = m_redo;
            m_torn.writes = writes;
            m_tornFile = torn;
        }
        m_redoStored = false;
        return false;
    }
    return m_redoStored || m_file.syncFile();
}

bool AbstractFileOperator::rewriteChecksumLine() {
    unsigned int crc = m_redo.crc;
    if (!m_redoStored && !contentChecksum(crc)) {
        TD_WARNING("Update summay info for file [%s] failed because of crc code.\n", m_path.load());
        logWhere();
        return false;
    }
    if (m_crcLineLength != text::CRC_LINE_LENGTH || !m_file.setPos(m_crcPosition)) {
        TD_WARNING("Update summay info for file [%s] failed because of set pos.\n", m_path.load());
        logWhere();
        return false;
    }
    const DeferredSync deferred(m_file, true);
    if (!m_file.writeFile(text::crcLine(crc).c_str(), true))
        return false;
    m_knownChecksum.mark(m_file.descriptor(), contentPosition(), crc);
    if (!m_file.syncFile()) {
        // Whether the system keeps what it could not write to the disk is not known.
        m_knownChecksum.forget();
        return false;
    }
    m_crc = crc;
    m_backupOutdated = true;
    return true;
}

bool AbstractFileOperator::generateCRC32(const char* path) {
    return repairChecksum(path);
}

} // namespace td
