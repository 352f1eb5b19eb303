// What a manager does with all its files: loads on a pool of threads, closing and opening, idle backups.
#include <atomic>
#include <cstddef>
#include <vector>

#ifdef __SANITIZE_THREAD__
#define BOOST_ASIO_DISABLE_FENCED_BLOCK // g++'s thread sanitizer refuses fences; the pool's mutex orders the same
#endif
#include <boost/asio/post.hpp>
#include <boost/asio/thread_pool.hpp>

#include "common/Deadline.h"
#include "common/Log.h"
#include "common/NoCancel.h"
#include "fileOperator/file/LoadBudget.h"
#include "fileOperator/file/Loading.h"
#include <dataModule/platform/OsalThreads.h>

#include "dataSeparate/Attempt.h"
#include "dataSeparate/FileName.h"
#include "dataSeparate/ManagerState.h"

namespace td {

namespace {

constexpr const char* LOADER_NAME = "DataModuleLoad";
constexpr std::size_t LOADING_THREADS = 8;

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

/// Loads every file and sums up the bytes of the tables.
bool loadInParallel(const OperatorRegistry::ByCategory& registered, int& dataSize) {
    std::vector<IFileOperator*> operators;
    operators.reserve(registered.size());
    for (const auto& [category, op] : registered)
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

// The worker holds its queue mutex here, so an operator is never waited for: a busy one keeps its request.
bool backupIfRequested(IFileOperator& op) {
    if (!op.getBackupReq() || !op.tryEnterCriticalSection())
        return false;
    const EnteredSection section(op);
    TD_INFO("[%s]:Handle one backup request for file [%s] ... \n", categoryName(op.getDataCategory()), baseName(op));
    const bool result = op.backupFile(false);
    op.setBackupReq(false);
    return result;
}

} // namespace

bool FileDataSeparateManager::initAllData() {
    if (m_state->isInherited())
        return false;
    bool result = false;
    for (const auto& [category, op] : m_state->operators.byCategory()) {
        result = attempt([file = op] { return file->initFile(true); });
        if (!result)
            TD_WARNING(" init file [%s] failed.\n", FileName(*op).text);
    }
    return result;
}

bool FileDataSeparateManager::loadAllData() {
    if (m_state->isInherited())
        return false;
    const NoCancel noCancel;
    TD_INFO(" @@@@@ File Data Separate Manager start to load data file ... @@@@@ \n");
    const MutexLock lock(m_state->loadingMutex);
    const bool loadedBefore = m_state->allLoaded;
    if (loadedBefore) {
        TD_INFO(" FileDataSeparateManager has already load all data. !\n");
        return true;
    }
    m_state->settleStores();
    int dataSize = 0;
    static_cast<void>(attempt([&] { return loadInParallel(m_state->operators.byCategory(), dataSize); }));
    TD_INFO(" @@@@@ File Data Separate Manager start to load data file successfully, cache data size = %d.@@@@@\n",
            dataSize);

    TD_INFO(" @@@@@ File Data Separate send backup request to work thread ... @@@@@ \n");
    m_state->forEachInSet([](IFileOperator& op) { op.setBackupReq(true); });
    // Before init() there is nothing to load; a later call is to load it.
    m_state->allLoaded = !m_state->operators.byCategory().empty();
    return loadedBefore;
}

bool FileDataSeparateManager::loadAllData(_DS_Type_t type) {
    if (m_state->isInherited())
        return false;
    TD_INFO(" @@@@@ File Data Separate Manager start to load data file for [%s]... @@@@@ \n", getType_Str(type));
    if (m_state->allLoaded) {
        TD_INFO(" FileDataSeparateManager has already load all data. !\n");
        return true;
    }
    m_state->settleStores();
    const LoadBudget budget(deadlineIn(LoadBudget::MILLISECONDS));
    int loaded = 0;
    int failed = 0;
    for (const auto& [category, op] : m_state->operators.byCategory()) {
        if (belongTo(op, type))
            ++(loadReported(*op, FileName(*op)) ? loaded : failed);
    }
    TD_INFO(" @@@@@ File Data Separate Manager start to load data file for [%s] successfully.@@@@@\n",
            getType_Str(type));

    TD_INFO(" @@@@@ File Data Separate send backup request to work thread ... @@@@@ \n");
    m_state->forEachInSet([&](IFileOperator& op) {
        if (belongTo(&op, type))
            op.setBackupReq(true);
    });
    TD_INFO(" @@@@@ File Data Separate send backup request to work thread successfully. @@@@@ \n");
    return loaded > 0 && failed == 0;
}

bool FileDataSeparateManager::resetForLoadAllData(_DS_Type_t type) {
    if (m_state->isInherited())
        return false;
    TD_INFO(" Reset the flag for FileDataSeparateManager reload all data. \n");
    const MutexLock lock(m_state->loadingMutex);
    m_state->allLoaded = false;
    m_state->settleStores();
    for (const auto& [category, op] : m_state->operators.byCategory()) {
        if (belongTo(op, type))
            static_cast<void>(attempt([file = op] { return file->resetForLoadFile(); }));
    }
    return true;
}

bool FileDataSeparateManager::releaseFileSources() {
    if (m_state->isInherited())
        return false;
    m_state->settleStores();
    bool result = false;
    for (const auto& [category, op] : m_state->operators.byCategory()) {
        result = attempt([file = op] { return file->releaseFile(); });
        if (!result)
            TD_WARNING(" release file [%s] failed.\n", FileName(*op).text);
    }
    TD_INFO("release all opend data files successfully when before making STD image. \n");
    return result;
}

bool FileDataSeparateManager::resumeFileSources() {
    if (m_state->isInherited())
        return false;
    bool result = false;
    for (const auto& [category, op] : m_state->operators.byCategory()) {
        result = attempt([file = op] { return file->reloadFile(); });
        if (!result)
            TD_WARNING(" reload file [%s] failed.\n", FileName(*op).text);
    }
    const LoadBudget budget(deadlineIn(LoadBudget::MILLISECONDS));
    // The walk does nothing to a file: what a suspend image had closed is loaded again here.
    for (const auto& [category, op] : m_state->operators.byCategory()) {
        auto* const released = dynamic_cast<AbstractFileOperator*>(op);
        if (released != nullptr && !attempt([=] { return loadIfReleased(released->state()); })) {
            TD_WARNING(" reload file [%s] failed.\n", FileName(*op).text);
            result = false;
        }
    }
    TD_INFO("resume all data files successfully when before making STD image. \n");
    return result;
}

bool FileDataSeparateManager::backupData() {
    if (m_state->isInherited())
        return false;
    if (m_state->stopped)
        return false;
    m_state->forEachInSet([this](IFileOperator& op) {
        static_cast<void>(attempt([&] { return !m_state->stopped && backupIfRequested(op); }));
    });
    return true;
}

} // namespace td
