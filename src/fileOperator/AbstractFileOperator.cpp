#include <dataModule/fileOperator/AbstractFileOperator.h>

#include <cstdio>
#include <cstring>

#include <dataModule/common/Event.h>
#include <dataModule/common/TimeUtil.h>

#include "common/Log.h"
#include "fileOperator/file/CategoryState.h"
#include "fileOperator/file/ChecksumRepair.h"
#include "fileOperator/file/CopyCheck.h"
#include "fileOperator/file/CopySteps.h"
#include "fileOperator/file/LoadBudget.h"
#include "fileOperator/file/Loader.h"
#include "fileOperator/file/Loading.h"
#include "fileOperator/file/NewFile.h"
#include "fileOperator/ValueDump.h"

namespace td {

namespace {

const char* textOrEmpty(const char* text) {
    return text != nullptr ? text : "";
}

bool notOffered(const CategoryState& state) {
    TD_INFO("[%s]: module hasn't completed yet.\n", state.categoryName());
    return true;
}

/// Takes the values of the copy that `open` opens.
template <typename Open>
bool refresh(CategoryState& state, Open open) {
    TD_INFO("Load file from manufactory.\n");
    const bool loaded = loadContentsBy(state, Contents::Loaded::Dropped, [&] {
        return open() && state.file.stream().setPos(state.file.contentPosition()) && state.op.loadContents();
    });
    if (loaded) {
        TD_INFO("Load file from manufactory successfully.\n");
    } else {
        TD_WARNING("Load file from manufactory failed.\n");
        state.logWhere();
    }
    return loaded;
}

} // namespace

// --- construction, names and flags ---

AbstractFileOperator::AbstractFileOperator(const char* fileName, const char* version)
    : m_state(std::make_unique<CategoryState>(*this, fileName, version)) {}

AbstractFileOperator::~AbstractFileOperator() {
    AbstractFileOperator::waitForMerge();
}

void AbstractFileOperator::declare(_DataCategory_t category, int dataSize) {
    m_state->name.category = category;
    m_state->name.dataSize = dataSize;
}

void AbstractFileOperator::setParent(IDataSeparateManagerInner* parent) {
    m_state->parent = parent;
}

IDataSeparateManagerInner* AbstractFileOperator::parent() const {
    return m_state->parent;
}

void AbstractFileOperator::setFileName(const char* name) {
    // The name is put behind the directories and must not lead out of them.
    if (name == nullptr || std::strchr(name, '/') != nullptr) {
        TD_WARNING("file name [%s] is refused, for it is %s.\n", textOrEmpty(name),
                   name == nullptr ? "none" : "a path");
        return;
    }
    const SectionLock lock(m_state->lock);
    std::snprintf(m_state->name.file, sizeof m_state->name.file, "%s", name);
}

const char* AbstractFileOperator::getFileFullPath() {
    return m_state->file.path();
}

_DataCategory_t AbstractFileOperator::getDataCategory() {
    return m_state->name.category;
}

int AbstractFileOperator::getDataSize() {
    return m_state->name.dataSize;
}

FILE* AbstractFileOperator::getFileHandler() {
    const SectionStep step(m_state->lock);
    return m_state->file.stream().stream();
}

FileUtil& AbstractFileOperator::openedFile() {
    return m_state->file.stream();
}

std::string& AbstractFileOperator::commentText() {
    return m_state->file.comment();
}

int AbstractFileOperator::contentPosition() const {
    return m_state->file.contentPosition();
}

bool AbstractFileOperator::openForWriting() {
    m_state->takeFiles();
    return m_state->openCurrent();
}

void AbstractFileOperator::closeFile() {
    m_state->closeFile();
}

bool AbstractFileOperator::isLoaded() const {
    return m_state->isLoaded();
}

void AbstractFileOperator::setBackupReq(bool requested) {
    m_state->backupRequest = requested;
}

bool AbstractFileOperator::getBackupReq() {
    return m_state->backupRequest;
}

bool AbstractFileOperator::getStoreFileFlag() {
    return parent() == nullptr || parent()->getStoreFileFlag();
}

bool AbstractFileOperator::getApplySettingFlag(const _DataCategory_t& category, const char* field) {
    return parent() != nullptr && parent()->getApplySettingFlag(category, field);
}

bool AbstractFileOperator::restoreApplySettingFlag(const _DataCategory_t& category, const char* field) {
    const bool restored = parent() != nullptr && parent()->restoreApplySettingFlag(category, field);
    if (restored)
        TD_INFO("restore apply setting flag [%s] successfully.\n", textOrEmpty(field));
    return restored;
}

int AbstractFileOperator::enableDebugLog() {
    return detailLog();
}

void AbstractFileOperator::setDebugLog(int on) {
    setDetailLog(on);
}

const char* AbstractFileOperator::categoryName() const {
    return m_state->categoryName();
}

void AbstractFileOperator::logWhere() const {
    m_state->logWhere();
}

std::string AbstractFileOperator::getWorkPath(_LOAD_FILE_MODE mode) const {
    return m_state->directory(mode);
}

std::string AbstractFileOperator::factoryFileName() {
    return m_state->name.file;
}

// --- locks and events ---

void AbstractFileOperator::enterCriticalSection() {
    m_state->lock.lock();
    m_state->contents->enter();
}

void AbstractFileOperator::leaveCriticalSection() {
    m_state->contents->leave();
    m_state->lock.unlock();
    // The worker comes back at once when more is queued: a client waits for one write, not for all of them.
    m_state->lock.giveWay();
}

bool AbstractFileOperator::tryEnterCriticalSection() {
    if (!m_state->tryEnter())
        return false;
    // What had to be loaded without the files does not go over the backup.
    if (m_state->servesMemory) {
        m_state->lock.unlock();
        return false;
    }
    // A failed bulk restore leaves the factory copy open, which is no reason to go without a backup. After a failed
    // load the mode stays: what was not loaded does not go over the backup.
    if (isLoaded() && m_state->file.mode != NORMAL_LOAD) {
        m_state->closeFile();
        m_state->file.mode = NORMAL_LOAD;
        m_state->file.path().set(m_state->currentPath());
    }
    return true;
}

/// Under the lock of the files alone: who only reads, or stores, does not wait for a write.
void AbstractFileOperator::handleEvents(Event* const* events, bool* handled, int count) {
    for (int i = 0; i < count; ++i) {
        handled[i] = true;
        if (!getStoreFileFlag())
            continue;
        struct Handling {
            explicit Handling(CategoryState& category) : state(category) { state.lock.lock(); }
            ~Handling() {
                state.lock.unlock();
                state.lock.giveWay();
                state.op.setBackupReq(true);
            }
            Handling(const Handling&) = delete;
            Handling& operator=(const Handling&) = delete;
            CategoryState& state;
        } const handling(*m_state);
        handled[i] = syncSectionToFile(events[i]) && updateCrcCode();
    }
}

// --- what a category answers that does not do it otherwise ---

bool AbstractFileOperator::loadData(const std::vector<int>&, std::vector<_Argument_t>&) {
    if (isLoaded())
        return true;
    TD_WARNING("couldn't load data , for loading data from file [%s] not completed or failed.\n", getFileFullPath());
    logWhere();
    return false;
}

bool AbstractFileOperator::restoreSetting(const std::vector<int>&) {
    return notOffered(*m_state);
}

bool AbstractFileOperator::restoreSettingForAllSource(const std::vector<int>&) {
    return notOffered(*m_state);
}

bool AbstractFileOperator::restoreSettingFromCurrent(const std::vector<int>&) {
    return notOffered(*m_state);
}

bool AbstractFileOperator::applySettingForAllSources(const std::vector<int>&) {
    return notOffered(*m_state);
}

bool AbstractFileOperator::applySettingForAllMode(const std::vector<int>&) {
    return notOffered(*m_state);
}

// --- loading ---

bool AbstractFileOperator::checkReloadFile() const {
    const _DataCategory_t category = m_state->name.category;
    return category != PICTURE_SOURCE_ONLY && category != PICTURE_FACTORY_WB && category != PICTURE_FACTORY_OVERSCAN;
}

_LOAD_FILE_MODE AbstractFileOperator::stateChanged(_LOAD_FILE_MODE mode) const {
    return copyAfter(mode, m_state->merge.isUnderWay());
}

bool AbstractFileOperator::loadFile() {
    CategoryState& state = *m_state;
    TD_INFO("======================= start to load file =====================\n");
    TimeUtil::instance()->start();
    const timespec deadline = LoadBudget::deadline();
    // Asked before the lock too, which the thread that writes the merged file holds.
    if (!state.merge.isUnderWay()) {
        const SectionLock lock(state.lock);
        state.lock.limitWaits(deadline);
        if (checkReloadFile() && isLoaded()) {
            TD_INFO("file [%s] already load yet, NEEDN'T load again.\n", getFileFullPath());
            return true;
        }
        if (!state.merge.isUnderWay())
            return loadFromFiles(state);
    }
    TD_WARNING("Forbidden load flle [%s] in OTA LOAD STATUS.\n", getFileFullPath());
    logWhere();
    return false;
}

bool AbstractFileOperator::loadFile(const char* path) {
    const SectionLock lock(m_state->lock);
    return loadForeign(*m_state, path);
}

bool AbstractFileOperator::loadSummary(_LOAD_FILE_MODE mode, bool& fatal) {
    const SectionStep step(m_state->lock);
    const CopyState copy = CopyCheck(*m_state).verify(mode);
    if (copy.verdict == Verdict::OtherVersion)
        m_state->merge.begin();
    fatal = fatal || copy.verdict == Verdict::Fatal;
    return copy.isGood();
}

bool AbstractFileOperator::loadSummary(const char* path) {
    const SectionStep step(m_state->lock);
    return CopyCheck(*m_state).verify(path).isGood();
}

/// Only a load may begin a merge: nobody would write the file here and end it.
bool AbstractFileOperator::switchToNormal() {
    const SectionStep step(m_state->lock);
    return CopyCheck(*m_state).switchToCurrent().isGood();
}

bool AbstractFileOperator::switchToManufactory() {
    const SectionStep step(m_state->lock);
    return CopyCheck(*m_state).switchToFactory().isGood();
}

bool AbstractFileOperator::refreshDataFromManufactory() {
    const SectionLock lock(m_state->lock);
    const bool loaded = refresh(*m_state, [this] { return switchToManufactory(); });
    if (loaded)
        m_state->contents->refreshed();
    switchToNormal();
    m_state->closeIfReleased();
    return loaded;
}

bool AbstractFileOperator::refreshDataFromCurrent() {
    const SectionLock lock(m_state->lock);
    const bool loaded = refresh(*m_state, [this] { return m_state->openCurrent(); });
    m_state->closeIfReleased();
    return loaded;
}

bool AbstractFileOperator::releaseFile() {
    // Nobody writes a file that was released.
    waitForMerge();
    const SectionLock lock(m_state->lock);
    m_state->closeFile();
    if (isLoaded())
        m_state->presence = Presence::Released;
    return true;
}

bool AbstractFileOperator::reloadFile() {
    return true;
}

bool AbstractFileOperator::resetForLoadFile() {
    waitForMerge();
    const SectionLock lock(m_state->lock);
    if (isLoaded())
        m_state->presence = Presence::Reset;
    m_state->closeFile();
    TD_INFO("@@@@@@@@@@ close file [%s] when reset \n", getFileFullPath());
    return true;
}

// --- merging a copy of another version ---

bool AbstractFileOperator::loadCurrentFile() {
    const SectionStep step(m_state->lock);
    m_state->merge.acceptAnyVersion();
    VersionMerge::Attempt merge(m_state->merge);
    merge.goesOn();
    return Loader(*m_state, merge).mergeCurrent().isGood();
}

bool AbstractFileOperator::createFile() {
    const SectionStep step(m_state->lock);
    return writeMergedFile(*m_state);
}

void* AbstractFileOperator::createFileProc(void* self) {
    auto* const op = static_cast<AbstractFileOperator*>(self);
    if (op == nullptr || op->parent() == nullptr)
        return nullptr;
    const SectionStep step(op->m_state->lock);
    TD_INFO("################### start to create new current file in OTA mode ... ###################.\n");
    TD_INFO("@@@@@ start background thread to create NEW current file (%s) when load OTA data.\n",
            op->getFileFullPath());
    op->createFile();
    TD_INFO("@@@@@ background thread terminal to create NEW current file (%s) when load OTA data.\n",
            op->getFileFullPath());
    return nullptr;
}

void AbstractFileOperator::waitForMerge() {
    td::waitForMerge(*m_state);
}

// --- making, copying and removing copies ---

bool AbstractFileOperator::initFile(bool defaults) {
    const SectionLock lock(m_state->lock);
    return makeNewFile(*m_state, defaults);
}

bool AbstractFileOperator::recoverFile() {
    const SectionStep step(m_state->lock);
    return recoverCurrent(*m_state);
}

bool AbstractFileOperator::backupFile(bool alsoFactory) {
    const SectionStep step(m_state->lock);
    return backUp(*m_state, alsoFactory);
}

bool AbstractFileOperator::resetCurrentFileFromManufactoryFile() {
    const SectionLock lock(m_state->lock);
    resetFromFactory(*m_state);
    return true;
}

bool AbstractFileOperator::removeFile() {
    const SectionLock lock(m_state->lock);
    m_state->takeFiles();
    m_state->closeFile();
    m_state->contents->giveUpStores();
    return m_state->copies().removeAll(paths::defaultFactoryDirectory() + m_state->name.file);
}

bool AbstractFileOperator::removeCurrentFile() {
    const SectionLock lock(m_state->lock);
    m_state->takeFiles();
    m_state->closeFile();
    m_state->contents->giveUpStores();
    return m_state->copies().removeCurrent();
}

// --- summary and checksum ---

bool AbstractFileOperator::buildSummary(bool withHeader) {
    const SectionStep step(m_state->lock);
    const char* const tvType = parent() != nullptr ? parent()->getTvType() : "";
    const std::string lines = text::summary(tvType, m_state->name.version, m_state->file.crc, withHeader);
    if (withHeader)
        m_state->file.wroteSummary(static_cast<int>(lines.size()));
    return m_state->file.stream().writeFile(lines.c_str(), true);
}

bool AbstractFileOperator::searchSectionId(const char* id) {
    const SectionStep step(m_state->lock);
    return scanFor(*m_state, id) != Found::Failed;
}

bool AbstractFileOperator::updateSummary() {
    const SectionStep step(m_state->lock);
    TD_INFO("update summary info for file [%s] ...\n", getFileFullPath());
    m_state->takeFiles();
    if (!m_state->openCurrent()) {
        TD_WARNING("Update summay info for file [%s] failed because of finding section ID [%s] failed.\n",
                   getFileFullPath(), text::SUMMARY_HEADER);
        logWhere();
        return false;
    }
    const bool written = rewriteSummary(*m_state);
    m_state->changedCurrent();
    m_state->closeFile();
    return written;
}

bool AbstractFileOperator::updateCrcCode() {
    CategoryState& state = *m_state;
    const SectionStep step(state.lock);
    const bool hadNothingToWrite = state.write && state.write->isEmpty();
    if (hadNothingToWrite)
        state.write.reset();
    if (hadNothingToWrite || state.merge.isUnderWay())
        return true;
    SectionWrite write = state.write ? std::move(*state.write) : SectionWrite(state.file);
    state.write.reset();
    if (state.takeFiles())
        write.recordWasEnded();
    if (!state.openCurrent()) {
        TD_WARNING("Update summay info for file [%s] failed because of set pos.\n", getFileFullPath());
        logWhere();
        return false;
    }
    const bool updated = write.end();
    if (updated)
        state.changedCurrent();
    else
        logWhere();
    // With the file closed the next idle backup cannot mistake the new checksum for the backup's.
    state.closeFile();
    return updated;
}

unsigned int AbstractFileOperator::getCrcCode(const char* path) {
    const SectionStep step(m_state->lock);
    unsigned int crc = 0;
    return readStoredChecksum(m_state->file.stream(), path, crc) ? crc : 0;
}

bool AbstractFileOperator::generateCRC32(const char* path) {
    return repairChecksum(path);
}

} // namespace td
