#include <dataModule/FileDataSeparateManager.h>

#include <algorithm>
#include <cstddef>
#include <cstdio>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <pthread.h>

#include <dataModule/common/CRC32Util.h>
#include <dataModule/platform/RootPrefix.h>

#include "common/Deadline.h"
#include "common/Fork.h"
#include "common/Log.h"
#include "common/NoCancel.h"
#include "dataSeparate/Attempt.h"
#include "dataSeparate/DetailLogSwitch.h"
#include "dataSeparate/FileName.h"
#include "dataSeparate/LiveManagers.h"
#include "dataSeparate/ManagerState.h"
#include "dataSeparate/Scopes.h"
#include "fileOperator/file/Loading.h"
#include "fileOperator/OperatorFactory.h"
#include "fileOperator/table/PendingStores.h"

namespace td {

namespace {

FileDataSeparateManager* s_instance = nullptr;
FileDataSeparateManager* s_inherited = nullptr; ///< a parent's that was forgotten, for checkers of leaks

constexpr const char* WORKER_NAME = "FileManagerSyncFileThread";
/// How long a reload waits for the stores queued before it.
constexpr int SETTLE_MILLISECONDS = 5000;
/// Characters that are kept of a TV type.
constexpr std::size_t TV_TYPE_LENGTH = 15;

/// A child has none of the listeners, and nobody uses a manager that it has.
void forgetListeners() {
    leaveDetailLogSwitch();
    LiveManagers::instance().renew();
}

bool watchForks() {
    LiveManagers::instance();
    return pthread_atfork(nullptr, nullptr, forgetListeners) == 0;
}

/// Made when the library is loaded, as all that a child needs.
[[maybe_unused]] const bool s_watchingForks = watchForks();

} // namespace

FileDataSeparateManager::State::State()
    : generation(Fork::generation()), worker(std::make_unique<Thread>(WORKER_NAME)) {
    std::snprintf(manufactoryPath, sizeof manufactoryPath, "%s", paths::defaultFactoryDirectory().c_str());
}

FileDataSeparateManager::State::~State() {
    if (generation != Fork::generation())
        static_cast<void>(worker.release()); // its end would wait for a thread of the parent's
}

bool FileDataSeparateManager::State::isInherited(const char* file, const char* function, int line) const {
    if (generation == Fork::generation())
        return false;
    log::print(DebugOutput::Level::Warning, file, line, function,
               "the manager belongs to the parent of this process; release() and instance() make one for the child.\n");
    return true;
}

void FileDataSeparateManager::State::settleStores() const {
    if (!worker->waitHandled(SETTLE_MILLISECONDS))
        TD_WARNING("stores are still queued after %d ms, going on without them\n", SETTLE_MILLISECONDS);
}

void FileDataSeparateManager::State::dropStores() const {
    operators.forEachOwn([](AbstractFileOperator& op) { td::dropStores(op.state()); });
}

// --- life ---

FileDataSeparateManager* FileDataSeparateManager::instance() {
    if (s_instance == nullptr) {
        const NoCancel noCancel;
        holdRootPrefix(true);
        s_instance = new FileDataSeparateManager();
    }
    return s_instance;
}

void FileDataSeparateManager::release() {
    if (s_instance == nullptr)
        return;
    const NoCancel noCancel;
    if (s_instance->m_state->generation != Fork::generation()) {
        // Nothing of it can be ended here: its threads are the parent's, and its locks may be taken for good.
        s_inherited = s_instance;
    } else {
        // While it is still whole: a listener on a thread of the client's may be at work on it.
        LiveManagers::instance().remove(s_instance);
        delete s_instance;
    }
    s_instance = nullptr;
    holdRootPrefix(false);
}

FileDataSeparateManager::FileDataSeparateManager() : m_state(std::make_unique<State>()) {
    allLayouts(); // before a thread that registers them and one that forks can meet
    LiveManagers::instance().add(this);
}

FileDataSeparateManager::~FileDataSeparateManager() {
    if (m_state->generation != Fork::generation())
        return;
    LiveManagers::instance().remove(this);
    FileDataSeparateManager::stop();
    m_state->operators.clear();
}

bool FileDataSeparateManager::init(_DS_Scope_t scope) {
    if (m_state->isInherited())
        return false;
    const NoCancel noCancel;
    TD_INFO(" @@@@@ Init File Data Separate Manager ... @@@@@ \n");
    if (m_state->inited) {
        TD_INFO(" FileDataSeparateManager has already inited !\n");
        return true;
    }
    OperatorRegistry& operators = m_state->operators;
    const auto discard = [&] {
        operators.deleteOperators();
        operators.clear();
        return false;
    };
    const bool registered = attempt([&] {
        for (const _DataCategory_t category : categoriesIn(scope)) {
            if (operators.byCategory().count(category) == 0)
                registerOperator(makeOperator(category));
        }
        operators.setParent(this);
        return true;
    });
    if (!registered)
        return discard();
    CRC32Util::instance()->init_crc_table();

    TD_INFO(" FileDataSeparateManager create work thread ... \n");
    m_state->worker->setOwner(this);
    if (!m_state->worker->start()) {
        TD_ERROR(" FileDataSeparateManager start work thread failed.\n");
        return discard();
    }
    m_state->inited = true;
    static_cast<void>(
        attempt([this] { return m_state->processesLock.lock(paths::processesLockFile(), FileLock::Kind::Shared); }));
    startDetailLogListener(this);

    TD_INFO(" @@@@@ Init File Data Separate Manager sucessfully. @@@@@ \n");
    return true;
}

IFileOperator* FileDataSeparateManager::makeOperator(_DataCategory_t category) {
    return createOperator(category);
}

void FileDataSeparateManager::registerOperator(IFileOperator* op) {
    if (op != nullptr)
        m_state->operators.add(op);
}

bool FileDataSeparateManager::stop() {
    if (m_state->isInherited())
        return false;
    const NoCancel noCancel;
    if (m_state->stopped.exchange(true))
        return true;
    // Before anything of it goes: a listener on a thread of the client's may be at work on it.
    LiveManagers::instance().remove(this);
    // The worker may wait for a process that is stopped itself.
    m_state->operators.forEachOwn([](AbstractFileOperator& op) { op.state().lock.abandonWaits(); });
    m_state->worker->stop();
    m_state->operators.deleteOperators();
    m_state->processesLock.unlock();
    return true;
}

// --- accessors ---

const char* FileDataSeparateManager::getCategory_Str(const _DataCategory_t& category) {
    return categoryName(category);
}

const char* FileDataSeparateManager::getType_Str(const _DS_Type_t& type) {
    if (type == VIDEO)
        return "VIDEO";
    return type == SOUND ? "SOUND" : "UNKNOWN type";
}

bool FileDataSeparateManager::belongTo(IFileOperator* op, const _DS_Type_t& type) {
    return op != nullptr && isOfType(op->getDataCategory(), type);
}

bool FileDataSeparateManager::isInScope(_DataCategory_t category, _DS_Scope_t scope) {
    const auto list = categoriesIn(scope);
    return std::find(list.begin(), list.end(), category) != list.end();
}

char* FileDataSeparateManager::getManufactoryPath() {
    static char none[] = "";
    if (m_state->isInherited())
        return none;
    return m_state->manufactoryPath;
}

bool FileDataSeparateManager::setReservedFlag(bool flag) {
    if (m_state->isInherited())
        return false;
    m_state->told.reservedFlag = flag;
    return true;
}

bool FileDataSeparateManager::getReservedFlag() {
    if (m_state->isInherited())
        return false;
    return m_state->told.reservedFlag;
}

bool FileDataSeparateManager::setReservedValue(int value) {
    if (m_state->isInherited())
        return false;
    m_state->told.reservedValue = value;
    return true;
}

int FileDataSeparateManager::getReservedValue() {
    if (m_state->isInherited())
        return 0;
    return m_state->told.reservedValue;
}

bool FileDataSeparateManager::setTvType(const char* type) {
    if (type == nullptr || m_state->isInherited())
        return false;
    // The text becomes part of a line of every new file.
    std::size_t length = 0;
    while (length < TV_TYPE_LENGTH && static_cast<unsigned char>(type[length]) >= ' ')
        ++length;
    return attempt([&] {
        m_state->told.tvType.set(std::string(type, length));
        return true;
    });
}

const char* FileDataSeparateManager::getTvType() {
    return m_state->isInherited() ? "" : m_state->told.tvType.text();
}

bool FileDataSeparateManager::setStoreFileFlag(bool allowed) {
    if (m_state->isInherited())
        return false;
    m_state->told.storeFileFlag = allowed;
    if (!allowed)
        m_state->dropStores();
    return true;
}

void FileDataSeparateManager::retryFailedStores() {
    m_state->operators.forEachOwn([](AbstractFileOperator& op) { tryAgain(op.state()); });
}

bool FileDataSeparateManager::getStoreFileFlag() {
    if (m_state->isInherited())
        return false;
    return m_state->told.storeFileFlag;
}

int FileDataSeparateManager::postEvent(Event* event) {
    if (m_state->isInherited())
        return 0;
    return attempt([&] { return m_state->worker->post(event); }) ? 1 : 0;
}

bool FileDataSeparateManager::waitStored(int milliseconds) {
    if (m_state->isInherited())
        return false;
    if (m_state->worker->isCurrent())
        return true;
    return attempt([&] {
        const timespec deadline = deadlineIn(std::max(milliseconds, 0));
        StoreWait stores(m_state->operators.pendingStores());
        return m_state->worker->waitHandled(milliseconds) && stores.wait(deadline);
    });
}

void FileDataSeparateManager::getWorkerStatistics(_ThreadStaticInfo_t& info) {
    info = {};
    if (m_state->isInherited())
        return;
    m_state->worker->getStaticsInfo(info);
}

// --- routing ---

/// Hands a request to the operator of its category. Without one the failure is logged under the name of the calling
/// request, in addition to the line of getFileOperator.
template <typename Request>
bool FileDataSeparateManager::route(const _DataCategory_t& category, Request request, const char* function, int line) {
    if (m_state->isInherited(__FILE__, function, line))
        return false;
    IFileOperator* const op = getFileOperator(category);
    if (op == nullptr) {
        log::print(DebugOutput::Level::Warning, __FILE__, line, function, "find file operator failed for [%s]. \n",
                   categoryName(category));
        return false;
    }
    return attempt([&] { return request(*op); }, __FILE__, function, line);
}

IFileOperator* FileDataSeparateManager::getFileOperator(const _DataCategory_t& category) {
    if (m_state->isInherited())
        return nullptr;
    if (IFileOperator* const op = m_state->operators.find(category))
        return op;
    TD_WARNING("find file operator failed for [%s]. \n", categoryName(category));
    return nullptr;
}

FILE* FileDataSeparateManager::getFileHandler(const _DataCategory_t& category) {
    IFileOperator* const op = getFileOperator(category);
    return op == nullptr ? nullptr : op->getFileHandler();
}

bool FileDataSeparateManager::loadData(const _DataCategory_t& category, const std::vector<int>& dims,
                                       std::vector<_Argument_t>& args) {
    return route(category, [&](IFileOperator& op) { return op.loadData(dims, args); });
}

bool FileDataSeparateManager::storeData(const _DataCategory_t& category, const std::vector<int>& dims,
                                        const std::vector<_Argument_t>& args) {
    return route(category, [&](IFileOperator& op) { return op.storeData(dims, args); });
}

bool FileDataSeparateManager::initData(const _DataCategory_t& category) {
    return route(category, [](IFileOperator& op) { return op.initFile(true); });
}

bool FileDataSeparateManager::loadData(const _DataCategory_t& category) {
    std::optional<FileName> name;
    const bool loaded = route(category, [&](IFileOperator& op) {
        m_state->settleStores();
        name.emplace(op);
        static_cast<void>(op.releaseFile());
        return op.loadFile();
    });
    if (!loaded && name)
        TD_WARNING(" DataModule load data file [%s] failed.\n", name->text);
    return loaded;
}

bool FileDataSeparateManager::loadData(const _DataCategory_t& category, const char* path) {
    std::optional<FileName> name;
    const bool loaded = route(category, [&](IFileOperator& op) {
        name.emplace(op);
        return op.loadFile(path);
    });
    if (!name)
        return false;
    if (loaded)
        TD_INFO(" @@@@@@ load data file [%s] successfully.\n", name->text);
    else
        TD_WARNING(" ###### load data file [%s] failed.\n", name->text);
    return loaded;
}

bool FileDataSeparateManager::removeDataFile(const _DataCategory_t& category) {
    return route(category, [](IFileOperator& op) { return op.removeFile(); });
}

bool FileDataSeparateManager::restoreSetting(const _DataCategory_t& category, const std::vector<int>& dims) {
    return route(category, [&](IFileOperator& op) { return op.restoreSetting(dims); });
}

bool FileDataSeparateManager::restoreSettingForAllSource(const _DataCategory_t& category,
                                                         const std::vector<int>& dims) {
    return route(category, [&](IFileOperator& op) { return op.restoreSettingForAllSource(dims); });
}

bool FileDataSeparateManager::restoreSettingFromCurrent(const _DataCategory_t& category, const std::vector<int>& dims) {
    return route(category, [&](IFileOperator& op) { return op.restoreSettingFromCurrent(dims); });
}

bool FileDataSeparateManager::refreshDataFromManufactory(const _DataCategory_t& category) {
    return route(category, [](IFileOperator& op) {
        static_cast<void>(op.refreshDataFromManufactory());
        return op.resetCurrentFileFromManufactoryFile();
    });
}

bool FileDataSeparateManager::refreshDataFromCurrent(const _DataCategory_t& category) {
    return route(category, [this](IFileOperator& op) {
        m_state->settleStores();
        return op.refreshDataFromCurrent();
    });
}

bool FileDataSeparateManager::applySettingForAllSources(const _DataCategory_t& category, const std::vector<int>& dims) {
    return route(category, [&](IFileOperator& op) { return op.applySettingForAllSources(dims); });
}

bool FileDataSeparateManager::applySettingForAllMode(const _DataCategory_t& category, const std::vector<int>& dims) {
    return route(category, [&](IFileOperator& op) { return op.applySettingForAllMode(dims); });
}

bool FileDataSeparateManager::loadDataForGroup(const _DataCategory_t& category, const std::vector<int>& dims,
                                               const std::vector<int>& list, GroupArray& data) {
    return route(category, [&](IFileOperator& op) { return op.loadDataForGroup(dims, list, data); });
}

bool FileDataSeparateManager::storeDataForGroup(const _DataCategory_t& category, const std::vector<int>& dims,
                                                const std::vector<int>& list, const std::vector<int>& list2,
                                                GroupArray& data) {
    return route(category, [&](IFileOperator& op) { return op.storeDataForGroup(dims, list, list2, data); });
}

bool FileDataSeparateManager::loadDataForSelfDefinedGroup(const _DataCategory_t& category,
                                                          const std::vector<int>& start, const std::vector<int>& end,
                                                          SelfDefinedGroupArray& data) {
    return route(category, [&](IFileOperator& op) { return op.loadDataForSelfDefinedGroup(start, end, data); });
}

bool FileDataSeparateManager::storeDataForSelfDefinedGroup(const _DataCategory_t& category,
                                                           const std::vector<int>& start, const std::vector<int>& end,
                                                           SelfDefinedGroupArray& data) {
    return route(category, [&](IFileOperator& op) { return op.storeDataForSelfDefinedGroup(start, end, data); });
}

bool FileDataSeparateManager::getApplySettingFlag(const _DataCategory_t& category, const char* field) {
    if (m_state->isInherited())
        return false;
    std::vector<_Argument_t> args;
    const bool loaded = attempt([&] {
        args.push_back({field, 0});
        return loadData(category, {}, args);
    });
    if (!loaded || args.empty()) {
        TD_WARNING("Load apply setting for all Sources/Mode failed.\n");
        return false;
    }
    TD_INFO("Apply Setting Flag value is [%d] \n", args.front().value);
    return args.front().value == 1;
}

bool FileDataSeparateManager::restoreApplySettingFlag(const _DataCategory_t& category, const char* field) {
    if (!getApplySettingFlag(category, field))
        return false;
    if (!attempt([&] { return storeData(category, {}, {{field, 0}}); })) {
        TD_WARNING("Store Apply Setting flag For All Sources/Mode failed.\n");
        return false;
    }
    TD_INFO("Restore Apply Setting Flag value [%s] successfully \n", field == nullptr ? "" : field);
    return true;
}

} // namespace td
