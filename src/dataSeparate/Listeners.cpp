// The two listeners of the manager: for the suspend image and for the detail-log switch.
#include <atomic>
#include <cerrno>
#include <cstdint>
#include <ctime>

#include <fcntl.h>
#include <semaphore.h>
#include <sys/ipc.h>
#include <sys/shm.h>
#include <sys/stat.h>

#include <dataModule/FileDataSeparateManager.h>
#include <dataModule/fileOperator/AbstractFileOperator.h>
#include <dataModule/platform/OsalThreads.h>

#include "common/ListenerNames.h"
#include "common/Log.h"
#include "dataSeparate/DetailLogSwitch.h"
#include "dataSeparate/LiveManagers.h"

namespace td {

namespace {

/// The switch, attached; null before. Whoever reads it may do so at any time, so it is never detached.
std::atomic<int*> g_detailLogSwitch{nullptr};
std::atomic<bool> s_listening{true};
std::atomic<bool> s_detailLogListened{false};

constexpr const char* LISTENER_NAME = "DataModuleDetailLog";

constexpr long START_DELAY_MILLISECONDS = 500;
constexpr long RETRY_DELAY_MILLISECONDS = 300;
constexpr int OPEN_ATTEMPTS = 10;
/// How long a listener of the suspend image may wait on before it looks whether its manager still exists.
constexpr long WAIT_SLICE_MILLISECONDS = 500;

timespec inMilliseconds(clockid_t clock, long milliseconds) {
    timespec time = {};
    clock_gettime(clock, &time);
    const long nanoseconds = time.tv_nsec + milliseconds % 1000 * 1000000;
    time.tv_sec += milliseconds / 1000 + nanoseconds / 1000000000;
    time.tv_nsec = nanoseconds % 1000000000;
    return time;
}

void sleepMilliseconds(long milliseconds) {
    const timespec end = inMilliseconds(CLOCK_MONOTONIC, milliseconds);
    while (clock_nanosleep(CLOCK_MONOTONIC, TIMER_ABSTIME, &end, nullptr) == EINTR)
        continue;
}

/// A named semaphore, closed at the end of its block; the name stays in the system until it is removed.
class NamedSemaphore {
public:
    NamedSemaphore(const char* name, mode_t mode) : m_name(name), m_semaphore(sem_open(name, O_CREAT, mode, 0U)) {}
    ~NamedSemaphore() { close(); }
    NamedSemaphore(const NamedSemaphore&) = delete;
    NamedSemaphore& operator=(const NamedSemaphore&) = delete;

    bool isOpen() const { return m_semaphore != SEM_FAILED; }

    /// Waits for a post. False when that cannot be done.
    bool wait() {
        int result = sem_wait(m_semaphore);
        while (result != 0 && errno == EINTR)
            result = sem_wait(m_semaphore);
        return result == 0;
    }

    enum class Waited { Posted, TimedOut, Failed };
    Waited wait(long milliseconds) {
#if defined(__GLIBC__) && __GLIBC_PREREQ(2, 30)
        const timespec end = inMilliseconds(CLOCK_MONOTONIC, milliseconds);
        int result = sem_clockwait(m_semaphore, CLOCK_MONOTONIC, &end);
        while (result != 0 && errno == EINTR)
            result = sem_clockwait(m_semaphore, CLOCK_MONOTONIC, &end);
#else
        const timespec end = inMilliseconds(CLOCK_REALTIME, milliseconds);
        int result = sem_timedwait(m_semaphore, &end);
        while (result != 0 && errno == EINTR)
            result = sem_timedwait(m_semaphore, &end);
#endif
        if (result == 0)
            return Waited::Posted;
        return errno == ETIMEDOUT ? Waited::TimedOut : Waited::Failed;
    }

    void closeAndUnlink() {
        close();
        sem_unlink(m_name);
    }

private:
    void close() {
        if (isOpen())
            sem_close(m_semaphore);
        m_semaphore = SEM_FAILED;
    }

    const char* const m_name;
    sem_t* m_semaphore;
};

/// The manager of a suspend cycle. A manager of this library may be stopped and released before the listener's thread
/// runs or while it waits, and is not touched any more then; any other has to outlive the listener.
class SteeredManager {
public:
    explicit SteeredManager(IDataSeparateManager* manager)
        : m_manager(manager), m_known(LiveManagers::instance().knows(manager)) {}

    /// Waits for a post; false also when the manager is released meanwhile.
    bool waitFor(NamedSemaphore& semaphore) const {
        for (;;) {
            const auto waited = semaphore.wait(WAIT_SLICE_MILLISECONDS);
            if (waited != NamedSemaphore::Waited::TimedOut)
                return waited == NamedSemaphore::Waited::Posted;
            if (m_known && !LiveManagers::instance().has(m_manager))
                return false;
        }
    }

    /// Calls an operation; false when the manager has gone.
    bool call(bool (IDataSeparateManager::*operation)()) const {
        if (!m_known)
            return (m_manager->*operation)();
        if (!LiveManagers::instance().startUsing(m_manager))
            return false;
        const bool result = (m_manager->*operation)();
        LiveManagers::instance().stopUsing(m_manager);
        return result;
    }

private:
    IDataSeparateManager* const m_manager;
    const bool m_known;
};

bool releaseOnSignal(const SteeredManager& manager, NamedSemaphore& release) {
    TD_INFO("1.1 just waitting the received release sem from STD ...\n");
    if (!manager.waitFor(release)) {
        TD_WARNING("error occur when waitting release sem from STD.\n");
        return false;
    }
    TD_INFO("1.2 release data Module for STD...\n");
    if (!manager.call(&IDataSeparateManager::releaseFileSources)) {
        TD_WARNING("release dataModule failed for STD.\n");
        return false;
    }
    TD_INFO("1.2 release data Module for STD successfully.\n");
    return true;
}

bool resumeOnSignal(const SteeredManager& manager, NamedSemaphore& reload) {
    TD_INFO("2.1 just waitting the received reload sem from STD ...\n");
    if (!manager.waitFor(reload)) {
        TD_WARNING("error occur when waitting release sem from STD.\n"); // the same text as for the release
        return false;
    }
    TD_INFO("2.2 reload data Module for STD...\n");
    if (!manager.call(&IDataSeparateManager::resumeFileSources)) {
        TD_WARNING("reload dataModule failed for STD.\n");
        return false;
    }
    TD_INFO("2.2 reload data Module for STD successfully.\n");
    return true;
}

void takeSwitchValue() {
    const int* const word = g_detailLogSwitch;
    if (word == nullptr) {
        AbstractFileOperator::setDebugLog(0);
        TD_WARNING("error occur when set shm of log detail switch.\n");
        return;
    }
    const int value = __atomic_load_n(word, __ATOMIC_RELAXED); // other processes write it
    TD_INFO("received from shm values [%d].\n", value);
    AbstractFileOperator::setDebugLog(value != 0 ? 1 : 0);
    if (value != 0)
        TD_INFO("make the detail log switch 'OPEN'.\n");
    else
        TD_INFO("make the detail log switch 'OFF'.\n");
}

/// Follows the switch until the semaphore fails. False when there was no semaphore to be had.
bool followSwitch() {
    for (int attempt = 0; attempt < OPEN_ATTEMPTS; ++attempt) {
        NamedSemaphore switched(names::LOG_SEMAPHORE, names::LOG_SEMAPHORE_MODE);
        if (!switched.isOpen()) {
            TD_WARNING("create sem for detail log switch failed.\n");
            if (attempt + 1 < OPEN_ATTEMPTS)
                sleepMilliseconds(RETRY_DELAY_MILLISECONDS);
            continue;
        }
        for (;;) {
            TD_INFO("just waitting the received sem from user ...\n");
            if (!switched.wait())
                break;
            takeSwitchValue();
        }
        TD_WARNING("error occur when waitting sem for detail log switch.\n");
        TD_INFO(" listen thread is over ,so close the semphore.\n");
        switched.closeAndUnlink();
        return true;
    }
    return false;
}

/// The detail-log listener's thread. It ends only where there is no shared memory or no semaphore to be had.
void* listenUntilRefused(void* manager) {
    FileDataSeparateManager::listenDetailLogSwitch(manager);
    s_detailLogListened = false;
    TD_INFO("nobody listens for the detail log switch, the next manager starts it again.\n");
    return nullptr;
}

} // namespace

void startDetailLogListener(FileDataSeparateManager* manager) {
    if (!s_listening || s_detailLogListened.exchange(true))
        return;
    OsalThreads::Handle handle = OsalThreads::INVALID_HANDLE;
    if (OsalThreads::create(LISTENER_NAME, listenUntilRefused, manager, handle)) {
        OsalThreads::detach(handle);
        return;
    }
    TD_WARNING(" FileDataSeparateManager create listen detail log switch thread failed.\n");
    s_detailLogListened = false;
}

void leaveDetailLogSwitch() {
    s_detailLogListened = false;
    const int* const word = g_detailLogSwitch.exchange(nullptr);
    if (word != nullptr)
        shmdt(word);
}

void FileDataSeparateManager::setListening(bool listen) {
    s_listening = listen;
}

void* FileDataSeparateManager::listenSTDSignal(void* manager) {
    if (manager == nullptr)
        return nullptr;
    TD_INFO("start listen signal from STD ...\n");
    const SteeredManager steered(static_cast<IDataSeparateManager*>(manager));
    sleepMilliseconds(START_DELAY_MILLISECONDS);
    umask(0);
    NamedSemaphore release(names::RELEASE_SEMAPHORE, names::SUSPEND_SEMAPHORE_MODE);
    if (!release.isOpen()) {
        TD_WARNING("create sem for release data Module failed.\n");
        return nullptr;
    }
    if (!releaseOnSignal(steered, release))
        return nullptr;
    NamedSemaphore reload(names::RELOAD_SEMAPHORE, names::SUSPEND_SEMAPHORE_MODE);
    if (!reload.isOpen()) {
        TD_WARNING("create sem for reload data Module failed.\n");
        return nullptr;
    }
    umask(22); // decimal on purpose: 026
    if (!resumeOnSignal(steered, reload))
        return nullptr;
    TD_INFO("3.listen STD signal thread is over ,so close the semphore.\n");
    release.closeAndUnlink();
    reload.closeAndUnlink();
    return nullptr;
}

void* FileDataSeparateManager::listenDetailLogSwitch(void* manager) {
    TD_INFO("start listen detail log switch thread ...\n");
    if (manager == nullptr)
        return nullptr;
    if (!createDetailLogSwitchSHM()) {
        TD_WARNING("create shm for detail log switch failed.\n");
        return nullptr;
    }
    if (followSwitch())
        static_cast<void>(deleteDetailLogSwitchSHM());
    return nullptr;
}

bool FileDataSeparateManager::createDetailLogSwitchSHM() {
    TD_INFO("start to create log Shm ...\n");
    constexpr int KEY = names::DETAIL_LOG_KEY;
    const int id = shmget(KEY, names::DETAIL_LOG_SIZE, IPC_CREAT | static_cast<int>(names::DETAIL_LOG_MODE));
    if (id < 0) {
        TD_WARNING("shmget error with key = [%d].\n", KEY);
        return false;
    }
    TD_INFO("create log Shm shmid = %d\n", id);
    void* const address = shmat(id, nullptr, 0);
    if (reinterpret_cast<std::intptr_t>(address) == -1) {
        TD_WARNING("attach shm memory failed with shmid = [%d]", id);
        return false;
    }
    g_detailLogSwitch = static_cast<int*>(address);
    TD_INFO("create log Shm successfully, key = [%d],shmid = %d\n", KEY, id);
    return true;
}

bool FileDataSeparateManager::deleteDetailLogSwitchSHM() {
    // The key stands where the id belongs: the word outlives the listener, whose fellows in other processes use it.
    constexpr int KEY = names::DETAIL_LOG_KEY;
    if (shmctl(KEY, IPC_RMID, nullptr) == 0)
        return true;
    TD_WARNING("remove shm [%d] error.\n ", KEY);
    return false;
}

} // namespace td
