#include <dataModule/FileDataSeparateManager.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstddef>
#include <cstdio>
#include <cstring>
#include <exception>
#include <iterator>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include <dirent.h>
#include <pthread.h>

#ifdef __SANITIZE_THREAD__
#define BOOST_ASIO_DISABLE_FENCED_BLOCK // g++'s thread sanitizer refuses fences; the pool's mutex orders the same
#endif
#include <boost/asio/post.hpp>
#include <boost/asio/thread_pool.hpp>

#include <dataModule/common/CRC32Util.h>
#include <dataModule/common/Deadline.h>
#include <dataModule/common/FileLock.h>
#include <dataModule/common/FileUtil.h>
#include <dataModule/common/Fork.h>
#include <dataModule/common/Log.h>
#include <dataModule/common/Mutex.h>
#include <dataModule/common/NoCancel.h>
#include <dataModule/common/SystemPaths.h>
#include <dataModule/common/Thread.h>
#include <dataModule/fileOperator/AbstractFileOperator.h>
#include <dataModule/fileOperator/LoadBudget.h>
#include <dataModule/fileOperator/OperatorFactory.h>
#include <dataModule/fileOperator/PendingStores.h>
#include <dataModule/fileOperator/RedoRecord.h>
#include <dataModule/fileOperator/SummaryReader.h>
#include <dataModule/platform/ConfigReader.h>
#include <dataModule/platform/OsalThreads.h>
#include <dataModule/platform/RootPrefix.h>

#include "DetailLogSwitch.h"
#include "LiveManagers.h"

namespace td {

namespace {

FileDataSeparateManager* s_instance = nullptr;
FileDataSeparateManager* s_inherited = nullptr; ///< a parent's that was forgotten, for checkers of leaks
std::atomic<bool> s_listening{true};
std::atomic<bool> s_detailLogListened{false};

constexpr const char* LISTENER_NAME = "DataModuleDetailLog";
constexpr const char* WORKER_NAME = "FileManagerSyncFileThread";
constexpr const char* LOADER_NAME = "DataModuleLoad";
constexpr std::size_t LOADING_THREADS = 8;
/// How long a reload waits for the stores queued before it.
constexpr int SETTLE_MILLISECONDS = 5000;
/// Characters that are kept of a TV type.
constexpr std::size_t TV_TYPE_LENGTH = 15;
/// Room that the factory directory leaves for a file name within the longest path.
constexpr std::size_t FILE_NAME_ROOM = 64;

// The orders in which the operators are made.
constexpr _DataCategory_t ALL_CATEGORIES[] = {PICTURE_MODE,
                                              PICTURE_MODE_EX,
                                              PICTURE_MODE_SELF,
                                              PICTURE_FACTORY_WB,
                                              PICTURE_GLOBAL,
                                              PICTURE_FACTORY_CURVE,
                                              PICTURE_WB_2_POINT,
                                              PICTURE_COLOR_TUNER,
                                              PICTURE_XVYCC,
                                              PICTURE_SOURCE_ONLY,
                                              PICTURE_WB_10_POINT_IDX,
                                              PICTURE_WB_10_POINT,
                                              PICTURE_YRANGE,
                                              SOUND_CURVE,
                                              SOUND_DELAY,
                                              SOUND_EQ_WALLMOUNT,
                                              SOUND_MODE,
                                              SOUND_AMP,
                                              SOUND_PEQ,
                                              SOUND_EQ,
                                              SOUND_DBX,
                                              SOUND_DTS,
                                              SOUND_AVC,
                                              SOUND_GLOBAL,
                                              PICTURE_FACTORY_OVERSCAN,
                                              PICTURE_FACTORY_ASPECT,
                                              PICTURE_FACTORY_SCALING,
                                              PICTURE_FACTORY_SCALING_PIP,
                                              PICTURE_FACTORY_SCALING_PIP_POS,
                                              PICTURE_WB_20_POINT,
                                              PICTURE_WB_20_POINT_IDX,
                                              PICTURE_WB_20_GAIN,
                                              PICTURE_WB_20_GAIN_IDX,
                                              PICTURE_LOW_BLUE_LIGHT,
                                              PICTURE_FACTORY_BACKLIGHT_CURVE,
                                              SOUND_GLOBAL_FACTORY,
                                              PICTURE_CONTENT_DETECT,
                                              PICTURE_ENHANCED_VIEWING_ANGLE,
                                              PICTURE_FACTORY_COLOR_TUNER,
                                              PICTURE_FACTORY_WB_SHIFT,
                                              PICTURE_FACTORY_WB_20_GAIN,
                                              PICTURE_FACTORY_WB_20_GAIN_IDX,
                                              PICTURE_FACTORY_WB_20_POINT,
                                              PICTURE_FACTORY_WB_20_POINT_IDX,
                                              PICTURE_USER_DOLBY_IQ_MODE,
                                              PICTURE_USER_DOLBY_IQ_INTENTED_WHITE_POINT,
                                              PICTURE_USER_LIGHT_SENSOR_LEVEL,
                                              PICTURE_USER_LIGHT_SENSOR_WB_20_GAIN,
                                              PICTURE_USER_LIGHT_SENSOR_PLC_POINT,
                                              PICTURE_USER_BACKLIGHT_WB,
                                              PICTURE_USER_CCT_WB,
                                              PICTURE_GAMMA_CALIBRATION_DARK_DETAIL};
constexpr _DataCategory_t BIZ_CATEGORIES[] = {PICTURE_MODE,
                                              PICTURE_MODE_EX,
                                              PICTURE_MODE_SELF,
                                              PICTURE_FACTORY_WB,
                                              PICTURE_GLOBAL,
                                              PICTURE_FACTORY_CURVE,
                                              PICTURE_FACTORY_BACKLIGHT_CURVE,
                                              PICTURE_WB_2_POINT,
                                              PICTURE_COLOR_TUNER,
                                              PICTURE_SOURCE_ONLY,
                                              PICTURE_WB_10_POINT_IDX,
                                              PICTURE_WB_10_POINT,
                                              PICTURE_YRANGE,
                                              PICTURE_WB_20_POINT,
                                              PICTURE_WB_20_POINT_IDX,
                                              PICTURE_WB_20_GAIN,
                                              PICTURE_WB_20_GAIN_IDX,
                                              SOUND_CURVE,
                                              SOUND_DELAY,
                                              SOUND_EQ_WALLMOUNT,
                                              SOUND_MODE,
                                              SOUND_AMP,
                                              SOUND_PEQ,
                                              SOUND_EQ,
                                              SOUND_DBX,
                                              SOUND_DTS,
                                              SOUND_AVC,
                                              SOUND_GLOBAL,
                                              SOUND_GLOBAL_FACTORY,
                                              PICTURE_CONTENT_DETECT,
                                              PICTURE_ENHANCED_VIEWING_ANGLE,
                                              PICTURE_FACTORY_COLOR_TUNER,
                                              PICTURE_FACTORY_WB_SHIFT,
                                              PICTURE_FACTORY_WB_20_GAIN,
                                              PICTURE_FACTORY_WB_20_GAIN_IDX,
                                              PICTURE_FACTORY_WB_20_POINT,
                                              PICTURE_FACTORY_WB_20_POINT_IDX,
                                              PICTURE_USER_DOLBY_IQ_MODE,
                                              PICTURE_USER_DOLBY_IQ_INTENTED_WHITE_POINT,
                                              PICTURE_USER_LIGHT_SENSOR_LEVEL,
                                              PICTURE_USER_LIGHT_SENSOR_WB_20_GAIN,
                                              PICTURE_USER_LIGHT_SENSOR_PLC_POINT,
                                              PICTURE_USER_BACKLIGHT_WB,
                                              PICTURE_USER_CCT_WB};
constexpr _DataCategory_t DVBMAIN_CATEGORIES[] = {PICTURE_FACTORY_OVERSCAN, PICTURE_FACTORY_ASPECT,
                                                  PICTURE_FACTORY_SCALING, PICTURE_FACTORY_SCALING_PIP,
                                                  PICTURE_FACTORY_SCALING_PIP_POS};
static_assert(std::size(ALL_CATEGORIES) == CATEGORY_COUNT, "every category is in the full scope");

// Typed operations go by these ranges and pass over the categories from 48 on.
bool isVideo(int value) {
    return (value >= 0 && value <= 15) || (value >= 27 && value <= 33) || (value >= 35 && value <= 47);
}

bool isSound(int value) {
    return (value >= 16 && value <= 26) || value == 34;
}

/// Runs `action` and returns its result; what it throws ends here, is logged under the caller's name and counts as a
/// failure.
template <typename Action>
bool attempt(Action action, const char* function = __builtin_FUNCTION(), int line = __builtin_LINE()) {
    try {
        return action();
    } catch (const std::exception& error) {
        log::print(DebugOutput::Level::Error, __FILE__, line, function, "unexpected exception: %s\n", error.what());
    } catch (...) {
        log::print(DebugOutput::Level::Error, __FILE__, line, function, "unexpected exception\n");
    }
    return false;
}

/// Gives a critical section back at the end of a block.
class EnteredSection {
public:
    explicit EnteredSection(IFileOperator& op) : m_operator(op) {}
    ~EnteredSection() { m_operator.leaveCriticalSection(); }
    EnteredSection(const EnteredSection&) = delete;
    EnteredSection& operator=(const EnteredSection&) = delete;

private:
    IFileOperator& m_operator;
};

/// The file name at the end of the operator's path. The caller has the critical section.
const char* baseName(IFileOperator& op) {
    const char* const path = op.getFileFullPath();
    if (path == nullptr)
        return "";
    const char* const slash = std::strrchr(path, '/');
    return slash == nullptr ? path : slash + 1;
}

/// A copy of the file name, for log lines outside the critical section.
struct FileName {
    explicit FileName(IFileOperator& op) {
        op.enterCriticalSection();
        const EnteredSection section(op);
        std::snprintf(text, sizeof text, "%s", baseName(op));
    }
    char text[paths::PATH_SIZE] = {};
};

/// A child has none of the listeners, and nobody uses a manager that it has.
void forgetListeners() {
    s_detailLogListened = false;
    leaveDetailLogSwitch();
    LiveManagers::instance().renew();
}

bool watchForks() {
    LiveManagers::instance();
    return pthread_atfork(nullptr, nullptr, forgetListeners) == 0;
}

/// Made when the library is loaded, as all that a child needs.
[[maybe_unused]] const bool s_watchingForks = watchForks();

/// The detail-log listener's thread. It ends only where there is no shared memory or no semaphore to be had.
void* listenUntilRefused(void* manager) {
    FileDataSeparateManager::listenDetailLogSwitch(manager);
    s_detailLogListened = false;
    TD_INFO("nobody listens for the detail log switch, the next manager starts it again.\n");
    return nullptr;
}

/// Whether a path of the value leads to another level than its text says.
bool leadsUpwards(std::string_view value) {
    while (true) {
        const std::size_t end = value.find('/');
        if (value.substr(0, end) == "..")
            return true;
        if (end == std::string_view::npos)
            return false;
        value.remove_prefix(end + 1);
    }
}

/// The factory directory that the model index file names, with the name; false when there is none to use.
bool readFactoryDirectory(char (&model)[paths::PATH_SIZE], std::string& directory) {
    if (!ConfigReader::readString(underRootPrefix(paths::MODEL_INDEX_FILE).c_str(), "ModuleData", "Path", model,
                                  paths::PATH_SIZE))
        return false;
    if (model[0] == '\0' || leadsUpwards(model))
        return false;
    const int length = std::snprintf(nullptr, 0, paths::FACTORY_DIRECTORY_FORMAT, model);
    if (length < 0)
        return false;
    std::string path(static_cast<std::size_t>(length) + 1, '\0');
    std::snprintf(path.data(), path.size(), paths::FACTORY_DIRECTORY_FORMAT, model);
    directory = underRootPrefix(path.c_str());
    return directory.size() + FILE_NAME_ROOM <= static_cast<std::size_t>(paths::PATH_SIZE);
}

/// Keeps all other processes off all files.
class AllFilesLock {
public:
    AllFilesLock() {
        std::size_t next = 0;
        for (const CategoryLayout* layout : allLayouts())
            m_locks[next++].lock(paths::lockFile(layout->file), FileLock::Kind::Exclusive);
    }

private:
    FileLock m_locks[CATEGORY_COUNT];
};

/// The names in a directory but "." and ".."; false when it cannot be listed. (The standard's iterators end the program
/// when they run out of memory.)
bool listNames(const char* directory, std::vector<std::string>& names) {
    const std::unique_ptr<DIR, int (*)(DIR*)> listing(opendir(directory), &closedir);
    if (!listing)
        return false;
    errno = 0;
    while (const dirent* const entry = readdir(listing.get())) {
        if (!FileUtil::isSpecialDir(entry->d_name))
            names.emplace_back(entry->d_name);
        errno = 0;
    }
    return errno == 0;
}

/// Copies files from one directory to another, which is made, so that each is there as a whole or not at all, whatever
/// cuts this short, and on the disk when this returns true. Like FileUtil::copyDirFile it goes on after one that cannot
/// be copied.
bool copyWholeFiles(const std::string& from, const std::vector<std::string>& names, const std::string& to) {
    if (!FileUtil::checkPath(to.c_str(), true))
        return false;
    for (const std::string& name : names)
        FileUtil::replaceFile((from + name).c_str(), (to + name).c_str());
    return FileUtil::syncPath(to.c_str());
}

/// Takes the settings files that do not verify out of `names` of files in `directory`; they are the result.
std::set<std::string> takeOutDamaged(const std::string& directory, std::vector<std::string>& names) {
    std::set<std::string> damaged;
    CRC32Util::instance()->init_crc_table(); // init() may still be to come
    for (const CategoryLayout* layout : allLayouts()) {
        const auto name = std::find(names.begin(), names.end(), layout->file);
        if (name == names.end() || fileVerifies((directory + *name).c_str(), nullptr))
            continue;
        TD_WARNING(" file [%s%s] is damaged, the files in use stay as they are.\n", directory.c_str(), layout->file);
        damaged.insert(*name);
        names.erase(name);
    }
    return damaged;
}

/// Removes the directory's files but those of that name, and their redo records.
void removeFilesBut(const std::set<std::string>& kept, const std::string& directory) {
    std::vector<std::string> names;
    if (kept.empty()) {
        FileUtil::removeDirFile(directory.c_str());
        return;
    }
    static_cast<void>(listNames(directory.c_str(), names));
    for (const std::string& name : names) {
        const bool isKept = std::any_of(
            kept.begin(), kept.end(), [&](const std::string& file) { return name == file || name == redoPath(file); });
        if (!isKept)
            FileUtil::removeDirFile((directory + name).c_str());
    }
}

/// Nothing is removed when there is nothing to put in its place.
bool replaceByFactoryFiles(const char* factory) {
    std::vector<std::string> names;
    if (!listNames(factory, names))
        return false;
    const std::set<std::string> damaged = takeOutDamaged(factory, names);
    const std::string current = paths::currentDirectory();
    const std::string backup = paths::backupDirectory();
    const std::string parent = underRootPrefix(paths::DATA_DIRECTORY);
    const AllFilesLock lock;
    // The backups go first, on the disk too: whatever cuts this short, no old backup takes the place of a newer current
    // file.
    removeFilesBut(damaged, backup);
    static_cast<void>(FileUtil::syncPath(damaged.empty() ? parent.c_str() : backup.c_str()));
    removeFilesBut(damaged, current);
    return copyWholeFiles(factory, names, current) && copyWholeFiles(factory, names, backup) &&
           FileUtil::syncPath(parent.c_str());
}

bool loadReported(IFileOperator& op, const FileName& name) {
    const bool loaded = attempt([&] { return op.loadFile(); });
    if (!loaded)
        TD_WARNING(" load file [%s] failed.\n", name.text);
    return loaded;
}

/// A pool of 8 threads, or as many as there are to be had: the pool makes one, the platform the others. Asked for more
/// than it can have, the pool's constructor would wait for ever for those that it got.
class LoadingPool {
public:
    LoadingPool() : m_pool(1) {}
    ~LoadingPool() { finish(); }
    LoadingPool(const LoadingPool&) = delete;
    LoadingPool& operator=(const LoadingPool&) = delete;

    boost::asio::thread_pool& pool() { return m_pool; }

    /// After everything was posted.
    void addThreads() {
        while (m_added < LOADING_THREADS - 1 && OsalThreads::create(LOADER_NAME, work, this, m_threads[m_added]))
            ++m_added;
    }
    /// Waits until everything is done.
    void finish() {
        m_pool.join();
        while (m_added > 0)
            OsalThreads::join(m_threads[--m_added]);
    }

private:
    static void* work(void* self) {
        static_cast<LoadingPool*>(self)->m_pool.attach();
        return nullptr;
    }

    boost::asio::thread_pool m_pool;
    OsalThreads::Handle m_threads[LOADING_THREADS - 1] = {};
    std::size_t m_added = 0;
};

/// Loads one file with its time in the log. Returns the bytes of its table.
int loadTimed(IFileOperator& op) {
    const double start = OsalThreads::uptime();
    // Read before: after a load a merge in the background may hold the critical section for long.
    const FileName name(op);
    static_cast<void>(loadReported(op, name));
    TD_INFO(" load file [%s] and consume time %f.\n", name.text, OsalThreads::uptime() - start);
    return op.getDataSize();
}

} // namespace

/// Texts of which each stays where it is, once it was the one that counts.
class FileDataSeparateManager::TvType {
public:
    const char* text() const { return m_text; }
    void set(const std::string& text) TD_EXCLUDES(m_mutex) {
        const MutexLock lock(m_mutex);
        m_text = m_texts.insert(text).first->c_str();
    }

private:
    std::atomic<const char*> m_text{""};
    Mutex m_mutex; ///< one change at a time
    std::set<std::string> m_texts TD_GUARDED_BY(m_mutex);
};

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
    if (s_instance->m_generation != Fork::generation()) {
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

FileDataSeparateManager::FileDataSeparateManager()
    : m_generation(Fork::generation()), m_tvType(std::make_unique<TvType>()),
      m_worker(std::make_unique<Thread>(WORKER_NAME)), m_processesLock(std::make_unique<FileLock>()),
      m_loadingMutex(std::make_unique<Mutex>(LockRank::Loading)) {
    static_assert(PATH_SIZE == paths::PATH_SIZE, "a buffer of the interface");
    std::snprintf(m_manufactoryPath, sizeof m_manufactoryPath, "%s", paths::defaultFactoryDirectory().c_str());
    allLayouts(); // before a thread that registers them and one that forks can meet
    LiveManagers::instance().add(this);
}

FileDataSeparateManager::~FileDataSeparateManager() {
    if (m_generation != Fork::generation()) {
        static_cast<void>(m_worker.release()); // its end would wait for a thread of the parent's
        return;
    }
    LiveManagers::instance().remove(this);
    FileDataSeparateManager::stop();
    m_operatorSet.clear();
}

bool FileDataSeparateManager::isInherited(const char* function, int line) const {
    if (m_generation == Fork::generation())
        return false;
    log::print(DebugOutput::Level::Warning, __FILE__, line, function,
               "the manager belongs to the parent of this process; release() and instance() make one for the child.\n");
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
    if (op == nullptr)
        return false;
    const int value = op->getDataCategory();
    return (type == VIDEO && isVideo(value)) || (type == SOUND && isSound(value));
}

bool FileDataSeparateManager::isInScope(_DataCategory_t category, _DS_Scope_t scope) {
    const auto has = [&](const auto& list) {
        return std::find(std::begin(list), std::end(list), category) != std::end(list);
    };
    if (scope == DS_SCOPE_BIZ)
        return has(BIZ_CATEGORIES);
    return scope == DS_SCOPE_DVBMAIN ? has(DVBMAIN_CATEGORIES) : has(ALL_CATEGORIES);
}

char* FileDataSeparateManager::getManufactoryPath() {
    static char none[] = "";
    if (isInherited())
        return none;
    return m_manufactoryPath;
}

bool FileDataSeparateManager::setReservedFlag(bool flag) {
    if (isInherited())
        return false;
    m_reservedFlag = flag;
    return true;
}

bool FileDataSeparateManager::getReservedFlag() {
    if (isInherited())
        return false;
    return m_reservedFlag;
}

bool FileDataSeparateManager::setReservedValue(int value) {
    if (isInherited())
        return false;
    m_reservedValue = value;
    return true;
}

int FileDataSeparateManager::getReservedValue() {
    if (isInherited())
        return 0;
    return m_reservedValue;
}

bool FileDataSeparateManager::setTvType(const char* type) {
    if (type == nullptr || isInherited())
        return false;
    // The text becomes part of a line of every new file.
    std::size_t length = 0;
    while (length < TV_TYPE_LENGTH && static_cast<unsigned char>(type[length]) >= ' ')
        ++length;
    return attempt([&] {
        m_tvType->set(std::string(type, length));
        return true;
    });
}

const char* FileDataSeparateManager::getTvType() {
    return isInherited() ? "" : m_tvType->text();
}

bool FileDataSeparateManager::setStoreFileFlag(bool allowed) {
    if (isInherited())
        return false;
    m_storeFileFlag = allowed;
    if (!allowed)
        dropStores();
    return true;
}

void FileDataSeparateManager::dropStores() {
    forEachOwn([](AbstractFileOperator& op) { op.dropStores(); });
}

void FileDataSeparateManager::retryFailedStores() {
    forEachOwn([](AbstractFileOperator& op) { op.tryAgain(); });
}

bool FileDataSeparateManager::getStoreFileFlag() {
    if (isInherited())
        return false;
    return m_storeFileFlag;
}

int FileDataSeparateManager::postEvent(Event* event) {
    if (isInherited())
        return 0;
    return attempt([&] { return m_worker->post(event); }) ? 1 : 0;
}

bool FileDataSeparateManager::waitStored(int milliseconds) {
    if (isInherited())
        return false;
    if (m_worker->isCurrent())
        return true;
    return attempt([&] {
        const timespec deadline = deadlineIn(std::max(milliseconds, 0));
        StoreWait stores(m_pendingStores);
        return m_worker->waitHandled(milliseconds) && stores.wait(deadline);
    });
}

void FileDataSeparateManager::getWorkerStatistics(_ThreadStaticInfo_t& info) {
    info = {};
    if (isInherited())
        return;
    m_worker->getStaticsInfo(info);
}

// --- routing ---

/// Hands a request to the operator of its category. Without one the failure is logged under the name of the calling
/// request, in addition to the line of getFileOperator.
template <typename Request>
bool FileDataSeparateManager::route(const _DataCategory_t& category, Request request, const char* function, int line) {
    if (isInherited(function, line))
        return false;
    IFileOperator* const op = getFileOperator(category);
    if (op == nullptr) {
        log::print(DebugOutput::Level::Warning, __FILE__, line, function, "find file operator failed for [%s]. \n",
                   categoryName(category));
        return false;
    }
    return attempt([&] { return request(*op); }, function, line);
}

IFileOperator* FileDataSeparateManager::getFileOperator(const _DataCategory_t& category) {
    if (isInherited())
        return nullptr;
    const auto entry = m_fileOperators.find(category);
    if (entry != m_fileOperators.end() && entry->second != nullptr)
        return entry->second;
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
        settleStores();
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
        settleStores();
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
    if (isInherited())
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

// --- start and end ---

bool FileDataSeparateManager::init(_DS_Scope_t scope) {
    if (isInherited())
        return false;
    const NoCancel noCancel;
    TD_INFO(" @@@@@ Init File Data Separate Manager ... @@@@@ \n");
    if (m_inited) {
        TD_INFO(" FileDataSeparateManager has already inited !\n");
        return true;
    }
    const bool registered = attempt([&] {
        registerScope(scope);
        setParents();
        return true;
    });
    if (!registered) {
        discardOperators();
        return false;
    }
    CRC32Util::instance()->init_crc_table();

    TD_INFO(" FileDataSeparateManager create work thread ... \n");
    m_worker->setOwner(this);
    if (!m_worker->start()) {
        TD_ERROR(" FileDataSeparateManager start work thread failed.\n");
        discardOperators();
        return false;
    }
    m_inited = true;
    static_cast<void>(
        attempt([this] { return m_processesLock->lock(paths::processesLockFile(), FileLock::Kind::Shared); }));
    if (s_listening)
        startDetailLogListener(this);

    TD_INFO(" @@@@@ Init File Data Separate Manager sucessfully. @@@@@ \n");
    return true;
}

void FileDataSeparateManager::setListening(bool listen) {
    s_listening = listen;
}

void FileDataSeparateManager::startDetailLogListener(FileDataSeparateManager* manager) {
    // The thread needs no manager and outlives this one; a later one finds it running.
    if (s_detailLogListened.exchange(true))
        return;
    OsalThreads::Handle handle = OsalThreads::INVALID_HANDLE;
    if (OsalThreads::create(LISTENER_NAME, listenUntilRefused, manager, handle)) {
        OsalThreads::detach(handle);
        return;
    }
    TD_WARNING(" FileDataSeparateManager create listen detail log switch thread failed.\n");
    s_detailLogListened = false;
}

bool FileDataSeparateManager::registerScope(_DS_Scope_t scope) {
    if (scope == DS_SCOPE_BIZ)
        initForBiz();
    else if (scope == DS_SCOPE_DVBMAIN)
        initForDvbmain();
    else
        initForAll();
    return true;
}

void FileDataSeparateManager::initForAll() {
    registerCategories(ALL_CATEGORIES, static_cast<int>(std::size(ALL_CATEGORIES)));
}

void FileDataSeparateManager::initForBiz() {
    registerCategories(BIZ_CATEGORIES, static_cast<int>(std::size(BIZ_CATEGORIES)));
}

void FileDataSeparateManager::initForDvbmain() {
    registerCategories(DVBMAIN_CATEGORIES, static_cast<int>(std::size(DVBMAIN_CATEGORIES)));
}

void FileDataSeparateManager::registerCategories(const _DataCategory_t* categories, int count) {
    for (int i = 0; i < count; ++i) {
        if (m_fileOperators.count(categories[i]) == 0)
            registerOperator(makeOperator(categories[i]));
    }
}

IFileOperator* FileDataSeparateManager::makeOperator(_DataCategory_t category) {
    return createOperator(category);
}

void FileDataSeparateManager::registerOperator(IFileOperator* op) {
    if (op == nullptr)
        return;
    std::unique_ptr<IFileOperator> owned(op);
    const auto [entry, inserted] = m_fileOperators.emplace(op->getDataCategory(), op);
    if (!inserted && entry->second != op)
        return;
    static_cast<void>(owned.release());
    m_operatorSet.insert(op);
}

void FileDataSeparateManager::setParents() {
    for (const auto& [category, op] : m_fileOperators) {
        if (auto* const child = dynamic_cast<AbstractFileOperator*>(op)) {
            child->setParent(this);
            m_pendingStores.push_back(child->pendingStores());
        }
    }
}

bool FileDataSeparateManager::stop() {
    if (isInherited())
        return false;
    const NoCancel noCancel;
    if (m_stopped.exchange(true))
        return true;
    // Before anything of it goes: a listener on a thread of the client's may be at work on it.
    LiveManagers::instance().remove(this);
    // The worker may wait for a process that is stopped itself.
    forEachOwn([](AbstractFileOperator& op) { op.abandonWaits(); });
    m_worker->stop();
    deleteOperators();
    m_processesLock->unlock();
    return true;
}

void FileDataSeparateManager::deleteOperators() {
    // A merge asks its own operator and, through the manager, others: none may go while one runs.
    forEachOwn([](AbstractFileOperator& op) { op.waitForMerge(); });
    // What a merge did not write goes with the queue; those who wait for it hear of it.
    for (const auto& stores : m_pendingStores)
        stores->drop();
    for (auto& [category, op] : m_fileOperators) {
        delete op;
        op = nullptr;
    }
    m_fileOperators.clear();
}

void FileDataSeparateManager::discardOperators() {
    deleteOperators();
    m_operatorSet.clear();
    m_pendingStores.clear();
}

// --- the factory files ---

bool FileDataSeparateManager::loadManufactoryPath() {
    if (isInherited())
        return false;
    const NoCancel noCancel;
    char model[paths::PATH_SIZE] = {};
    std::string directory;
    if (!attempt([&] { return readFactoryDirectory(model, directory); })) {
        TD_WARNING(" load manufactory path from entry index file failed , use the default path:[%s]. \n",
                   m_manufactoryPath);
        return false;
    }
    std::snprintf(m_manufactoryPath, sizeof m_manufactoryPath, "%s", directory.c_str());
    TD_INFO(" load configuration manufactory path [%s] from entry index file successfully ,"
            "and the full path is:[%s].\n",
            model, m_manufactoryPath);
    return true;
}

bool FileDataSeparateManager::initCurrentFromManufactory() {
    if (isInherited())
        return false;
    const NoCancel noCancel;
    TD_INFO(" init 'current' data files from 'manufactory' -- [%s] ...\n", m_manufactoryPath);
    // What was stored before the reset does not come after it.
    settleStores();
    if (!attempt([this] { return replaceByFactoryFiles(m_manufactoryPath); })) {
        TD_ERROR(" init current dataModule files from manufactory path [%s] failed.\n", m_manufactoryPath);
        return false;
    }
    dropStores();
    TD_INFO(" init 'current' dataModule files from manufactory path [%s] successfully.\n", m_manufactoryPath);
    return true;
}

// --- all files ---

bool FileDataSeparateManager::initAllData() {
    if (isInherited())
        return false;
    bool result = false;
    for (const auto& [category, op] : m_fileOperators) {
        result = attempt([file = op] { return file->initFile(true); });
        if (!result)
            TD_WARNING(" init file [%s] failed.\n", FileName(*op).text);
    }
    return result;
}

bool FileDataSeparateManager::loadAllData() {
    if (isInherited())
        return false;
    const NoCancel noCancel;
    TD_INFO(" @@@@@ File Data Separate Manager start to load data file ... @@@@@ \n");
    const MutexLock lock(*m_loadingMutex);
    const bool loadedBefore = m_allLoaded;
    if (loadedBefore) {
        TD_INFO(" FileDataSeparateManager has already load all data. !\n");
        return true;
    }
    settleStores();
    int dataSize = 0;
    static_cast<void>(attempt([&] { return loadInParallel(dataSize); }));
    TD_INFO(" @@@@@ File Data Separate Manager start to load data file successfully, cache data size = %d.@@@@@\n",
            dataSize);

    TD_INFO(" @@@@@ File Data Separate send backup request to work thread ... @@@@@ \n");
    forEachInSet([](IFileOperator& op) { op.setBackupReq(true); });
    // Before init() there is nothing to load; a later call is to load it.
    m_allLoaded = !m_fileOperators.empty();
    return loadedBefore;
}

bool FileDataSeparateManager::loadInParallel(int& dataSize) {
    std::vector<IFileOperator*> operators;
    operators.reserve(m_fileOperators.size());
    for (const auto& [category, op] : m_fileOperators)
        operators.push_back(op);

    const timespec deadline = deadlineIn(LoadBudget::MILLISECONDS);
    std::atomic<std::size_t> next{0};
    std::atomic<int> size{0};
    const auto loadNext = [&] {
        const LoadBudget budget(deadline);
        const std::size_t index = next++;
        if (index >= operators.size())
            return false;
        size += loadTimed(*operators[index]);
        return true;
    };
    const bool pooled = attempt([&] {
        LoadingPool pool;
        for (std::size_t i = 0; i < operators.size(); ++i)
            boost::asio::post(pool.pool(), loadNext);
        pool.addThreads();
        pool.finish();
        return true;
    });
    // Without a pool the calling thread loads what is left.
    while (!pooled && loadNext())
        continue;
    dataSize = size;
    return true;
}

bool FileDataSeparateManager::loadAllData(_DS_Type_t type) {
    if (isInherited())
        return false;
    TD_INFO(" @@@@@ File Data Separate Manager start to load data file for [%s]... @@@@@ \n", getType_Str(type));
    if (m_allLoaded) {
        TD_INFO(" FileDataSeparateManager has already load all data. !\n");
        return true;
    }
    settleStores();
    const LoadBudget budget(deadlineIn(LoadBudget::MILLISECONDS));
    int loaded = 0;
    int failed = 0;
    for (const auto& [category, op] : m_fileOperators) {
        if (belongTo(op, type))
            ++(loadReported(*op, FileName(*op)) ? loaded : failed);
    }
    TD_INFO(" @@@@@ File Data Separate Manager start to load data file for [%s] successfully.@@@@@\n",
            getType_Str(type));

    TD_INFO(" @@@@@ File Data Separate send backup request to work thread ... @@@@@ \n");
    forEachInSet([&](IFileOperator& op) {
        if (belongTo(&op, type))
            op.setBackupReq(true);
    });
    TD_INFO(" @@@@@ File Data Separate send backup request to work thread successfully. @@@@@ \n");
    return loaded > 0 && failed == 0;
}

bool FileDataSeparateManager::resetForLoadAllData(_DS_Type_t type) {
    if (isInherited())
        return false;
    TD_INFO(" Reset the flag for FileDataSeparateManager reload all data. \n");
    const MutexLock lock(*m_loadingMutex);
    m_allLoaded = false;
    settleStores();
    for (const auto& [category, op] : m_fileOperators) {
        if (belongTo(op, type))
            static_cast<void>(attempt([file = op] { return file->resetForLoadFile(); }));
    }
    return true;
}

bool FileDataSeparateManager::releaseFileSources() {
    if (isInherited())
        return false;
    settleStores();
    bool result = false;
    for (const auto& [category, op] : m_fileOperators) {
        result = attempt([file = op] { return file->releaseFile(); });
        if (!result)
            TD_WARNING(" release file [%s] failed.\n", FileName(*op).text);
    }
    TD_INFO("release all opend data files successfully when before making STD image. \n");
    return result;
}

bool FileDataSeparateManager::resumeFileSources() {
    if (isInherited())
        return false;
    bool result = false;
    for (const auto& [category, op] : m_fileOperators) {
        result = attempt([file = op] { return file->reloadFile(); });
        if (!result)
            TD_WARNING(" reload file [%s] failed.\n", FileName(*op).text);
    }
    const LoadBudget budget(deadlineIn(LoadBudget::MILLISECONDS));
    // The walk does nothing to a file: what a suspend image had closed is loaded again here.
    for (const auto& [category, op] : m_fileOperators) {
        auto* const released = dynamic_cast<AbstractFileOperator*>(op);
        if (released != nullptr && !attempt([=] { return released->loadIfReleased(); })) {
            TD_WARNING(" reload file [%s] failed.\n", FileName(*op).text);
            result = false;
        }
    }
    TD_INFO("resume all data files successfully when before making STD image. \n");
    return result;
}

void FileDataSeparateManager::settleStores() {
    if (!m_worker->waitHandled(SETTLE_MILLISECONDS))
        TD_WARNING("stores are still queued after %d ms, going on without them\n", SETTLE_MILLISECONDS);
}

// --- backups, on the worker ---

bool FileDataSeparateManager::backupData() {
    if (isInherited())
        return false;
    if (m_stopped)
        return false;
    forEachInSet([this](IFileOperator& op) { static_cast<void>(attempt([&] { return backupIfRequested(op); })); });
    return true;
}

// The worker holds its queue mutex here, so an operator is never waited for: a busy one keeps its request.
bool FileDataSeparateManager::backupIfRequested(IFileOperator& op) {
    if (m_stopped || !op.getBackupReq() || !op.tryEnterCriticalSection())
        return false;
    const EnteredSection section(op);
    TD_INFO("[%s]:Handle one backup request for file [%s] ... \n", categoryName(op.getDataCategory()), baseName(op));
    const bool result = op.backupFile(false);
    op.setBackupReq(false);
    return result;
}

template <typename Action>
void FileDataSeparateManager::forEachOwn(Action action) {
    for (const auto& [category, op] : m_fileOperators) {
        if (auto* const own = dynamic_cast<AbstractFileOperator*>(op))
            action(*own);
    }
}

template <typename Action>
void FileDataSeparateManager::forEachInSet(Action action) {
    if (m_stopped)
        return;
    // The set is an index over operators that the manager owns and may change.
    for (const IFileOperator* op : m_operatorSet)
        action(const_cast<IFileOperator&>(*op));
}

} // namespace td
