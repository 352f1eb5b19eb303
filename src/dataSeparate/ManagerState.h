/// What a manager keeps behind its one pointer.
#pragma once

#include <atomic>
#include <memory>
#include <set>
#include <string>

#include <dataModule/common/Thread.h>
#include <dataModule/FileDataSeparateManager.h>

#include "common/FileLock.h"
#include "common/Mutex.h"
#include "common/SystemPaths.h"
#include "dataSeparate/OperatorRegistry.h"

namespace td {

/// Texts of which each stays where it is, once it was the one that counts.
class TvType {
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

struct FileDataSeparateManager::State {
    State();
    ~State();

    /// Whether a parent process made the manager, from which this one was forked: with a line under the caller's name.
    bool isInherited(const char* file = __builtin_FILE(), const char* function = __builtin_FUNCTION(),
                     int line = __builtin_LINE()) const;
    /// Lets what was queued until now reach the files, so that no load reads older ones.
    void settleStores() const;
    void dropStores() const;
    /// Walks the set; nothing after stop().
    template <typename Action>
    void forEachInSet(Action action) const {
        if (stopped)
            return;
        // The set is an index over operators that the manager owns and may change.
        for (const IFileOperator* op : operators.set())
            action(const_cast<IFileOperator&>(*op));
    }

    const unsigned int generation; ///< of forks, when it was made
    OperatorRegistry operators;
    std::unique_ptr<Thread> worker;
    FileLock processesLock; ///< held from init() to stop(), for tools to see
    std::atomic<bool> inited{false};
    std::atomic<bool> stopped{false};
    Mutex loadingMutex{LockRank::Loading}; ///< a load of all files is not reset in its middle
    std::atomic<bool> allLoaded{false};
    char manufactoryPath[paths::PATH_SIZE] = {};

    /// What a client told, for all operators.
    struct Told {
        TvType tvType;
        std::atomic<bool> reservedFlag{false};
        std::atomic<int> reservedValue{0};
        std::atomic<bool> storeFileFlag{true};
    } told;
};

} // namespace td
