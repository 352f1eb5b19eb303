/// Which managers exist, for threads that were given a pointer to one and may outlive it. All from any thread.
#pragma once

#include <new>
#include <set>

#include <dataModule/IDataSeparateManager.h>

#include "common/Mutex.h"

namespace td {

class LiveManagers {
public:
    static LiveManagers& instance();

    void add(IDataSeparateManager* manager) TD_EXCLUDES(m_mutex);
    /// After this nobody uses the manager any more: waits for the one that does. Not by a thread that does.
    void remove(IDataSeparateManager* manager) TD_EXCLUDES(m_mutex);
    bool has(IDataSeparateManager* manager) TD_EXCLUDES(m_mutex);
    /// Whether it exists or did exist.
    bool knows(IDataSeparateManager* manager) TD_EXCLUDES(m_mutex);
    /// Keeps a manager alive until stopUsing(). False when it is gone.
    bool startUsing(IDataSeparateManager* manager) TD_EXCLUDES(m_mutex);
    void stopUsing(IDataSeparateManager* manager) TD_EXCLUDES(m_mutex);

    /// In a child made by fork(): empty, and used by nobody. What it knew of is left where it is, perhaps half changed.
    void renew() { new (this) LiveManagers(); }

private:
    LiveManagers() = default;

    Mutex m_mutex; ///< the sets; nothing is called while it is held
    Condition m_unused;
    std::set<IDataSeparateManager*> m_live TD_GUARDED_BY(m_mutex);
    std::multiset<IDataSeparateManager*> m_used TD_GUARDED_BY(m_mutex);
    std::set<IDataSeparateManager*> m_gone TD_GUARDED_BY(m_mutex);
};

} // namespace td
