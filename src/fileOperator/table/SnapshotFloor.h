/// Remembers which queued snapshots are out of date: after a section was read or written past the queue, older events
/// must not write it any more. Not locked: its table is.
#pragma once

#include <map>

namespace td {

class SnapshotFloor {
public:
    /// From now on only events from `id` on may write `section`.
    void raise(int section, int id) {
        m_sections[section] = id;
        m_newest = id;
    }
    /// The same for every section.
    void raiseAll(int id) {
        m_sections.clear();
        m_all = id;
        m_hasAll = true;
        m_newest = id;
    }
    /// Whether the queued event `id` is too old to write `section`. Queued events arrive in the order of their ids, so
    /// all that is remembered has done its work as soon as a younger event comes by.
    bool isStale(int section, int id) {
        if (!m_hasAll && m_sections.empty())
            return false;
        if (!before(id, m_newest)) {
            m_sections.clear();
            m_hasAll = false;
            return false;
        }
        if (m_hasAll && before(id, m_all))
            return true;
        const auto entry = m_sections.find(section);
        return entry != m_sections.end() && before(id, entry->second);
    }

private:
    /// Ids wrap around.
    static bool before(int id, int other) {
        return static_cast<int>(static_cast<unsigned int>(id) - static_cast<unsigned int>(other)) < 0;
    }

    std::map<int, int> m_sections;
    int m_all = 0;
    int m_newest = 0; ///< the last id noted; ids only grow
    bool m_hasAll = false;
};

} // namespace td
