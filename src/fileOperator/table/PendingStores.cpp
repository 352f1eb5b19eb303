#include "fileOperator/table/PendingStores.h"

#include <algorithm>
#include <cerrno>
#include <iterator>
#include <new>
#include <utility>

#include <pthread.h>

#include <dataModule/common/EventIdGenerator.h>

namespace td {

namespace {

/// Ids wrap around.
bool isBefore(int id, int other) {
    return static_cast<int>(static_cast<unsigned int>(id) - static_cast<unsigned int>(other)) < 0;
}

int following(int id) {
    return static_cast<int>(static_cast<unsigned int>(id) + 1U);
}

/// Wakes the waits of the process whenever something became of a store. Never destroyed, as threads may use it while
/// the process exits, and made without memory, as it may be needed where there is none left.
class Changes {
public:
    static Changes& instance() {
        alignas(Changes) static unsigned char place[sizeof(Changes)];
        static auto& changes = *[] {
            // None of the threads waits in a child made by fork() that waited in its parent.
            pthread_atfork(nullptr, nullptr, [] { new (place) Changes; });
            return new (place) Changes;
        }();
        return changes;
    }

    void note() {
        ++m_count;
        if (m_waiting == 0)
            return;
        const MutexLock lock(m_mutex);
        m_noted.broadcast();
    }
    unsigned int count() const { return m_count; }
    /// Waits until there are more than `seen`; false when the time ran out.
    bool waitBeyond(unsigned int seen, const timespec& deadline) {
        const MutexLock lock(m_mutex);
        ++m_waiting;
        int result = 0;
        while (m_count == seen && result != ETIMEDOUT)
            result = m_noted.waitUntil(m_mutex, deadline);
        --m_waiting;
        return m_count != seen;
    }

private:
    std::atomic<unsigned int> m_count{0};
    std::atomic<int> m_waiting{0};
    Mutex m_mutex; ///< what m_noted needs
    Condition m_noted;
};

/// Made when the library is loaded: a child made by fork() would not get over one that is half made.
[[maybe_unused]] const Changes& g_changes = Changes::instance();

} // namespace

void PendingStores::stored(int record, int event, FieldSet fields) {
    const MutexLock lock(m_mutex);
    const auto [entry, isNew] = m_records.try_emplace(record);
    Pending& pending = entry->second;
    if (isNew)
        pending.since = event;
    pending.event = event;
    pending.fields |= fields;
    change(pending, State::Queued);
}

void PendingStores::written(int record, int event) {
    {
        const MutexLock lock(m_mutex);
        const auto entry = m_records.find(record);
        if (entry == m_records.end())
            return;
        if (entry->second.event == event)
            remove(entry);
        else if (isBefore(event, entry->second.event))
            entry->second.since = following(event);
    }
    Changes::instance().note();
}

void PendingStores::failed(int record, int event) {
    setState(record, event, State::Failed);
}

void PendingStores::leftToMerge(int record, int event) {
    setState(record, event, State::LeftToMerge);
}

void PendingStores::setState(int record, int event, State state) {
    {
        const MutexLock lock(m_mutex);
        const auto entry = m_records.find(record);
        if (entry == m_records.end() || entry->second.event != event)
            return;
        change(entry->second, state);
    }
    Changes::instance().note();
}

void PendingStores::mergeFailed() {
    {
        const MutexLock lock(m_mutex);
        for (auto& [record, pending] : m_records) {
            if (pending.state == State::LeftToMerge)
                change(pending, State::Failed);
        }
    }
    Changes::instance().note();
}

void PendingStores::allWrittenBefore(int event) {
    {
        const MutexLock lock(m_mutex);
        for (auto entry = m_records.begin(); entry != m_records.end();) {
            if (isBefore(entry->second.event, event)) {
                entry = remove(entry);
                continue;
            }
            if (isBefore(entry->second.since, event))
                entry->second.since = event;
            ++entry;
        }
    }
    Changes::instance().note();
}

void PendingStores::drop() {
    drop([](int) { return true; });
}

void PendingStores::drop(int record) {
    {
        const MutexLock lock(m_mutex);
        const auto entry = m_records.find(record);
        if (entry == m_records.end())
            return;
        giveUp(entry);
    }
    Changes::instance().note();
}

void PendingStores::drop(const std::function<bool(int record)>& gives) {
    {
        const MutexLock lock(m_mutex);
        for (auto entry = m_records.begin(); entry != m_records.end();)
            entry = gives(entry->first) ? giveUp(entry) : std::next(entry);
    }
    Changes::instance().note();
}

void PendingStores::dropBefore(int event) {
    {
        const MutexLock lock(m_mutex);
        for (auto entry = m_records.begin(); entry != m_records.end();)
            entry = isBefore(entry->second.since, event) ? giveUp(entry) : std::next(entry);
    }
    Changes::instance().note();
}

void PendingStores::change(Pending& pending, State state) {
    m_failedCount += (state == State::Failed ? 1 : 0) - (pending.state == State::Failed ? 1 : 0);
    pending.state = state;
}

PendingStores::Records::iterator PendingStores::remove(Records::iterator entry) {
    change(entry->second, State::Queued);
    return m_records.erase(entry);
}

PendingStores::Records::iterator PendingStores::giveUp(Records::iterator entry) {
    for (StoreWait* const wait : m_waits) {
        if (isBefore(entry->second.since, wait->m_next))
            wait->m_lost = true;
    }
    return remove(entry);
}

std::vector<PendingStores::Store> PendingStores::all() const {
    const MutexLock lock(m_mutex);
    std::vector<Store> stores;
    stores.reserve(m_records.size());
    for (const auto& [record, pending] : m_records)
        stores.push_back({record, pending.event, pending.fields});
    return stores;
}

FieldSet PendingStores::fieldsOf(int record) const {
    const MutexLock lock(m_mutex);
    const auto entry = m_records.find(record);
    return entry != m_records.end() ? entry->second.fields : 0;
}

std::vector<PendingStores::Store> PendingStores::failedOnes() const {
    const MutexLock lock(m_mutex);
    std::vector<Store> stores;
    if (m_failedCount == 0)
        return stores;
    for (const auto& [record, pending] : m_records) {
        if (pending.state == State::Failed)
            stores.push_back({record, pending.event, pending.fields});
    }
    return stores;
}

bool PendingStores::hasFailed() const {
    const MutexLock lock(m_mutex);
    return m_failedCount > 0;
}

StoreWait::StoreWait(std::vector<std::shared_ptr<PendingStores>> categories)
    : m_next(EventIdGenerator::instance()->peekNextEventId()), m_categories(std::move(categories)) {
    try {
        for (const auto& category : m_categories) {
            const MutexLock lock(category->m_mutex);
            category->m_waits.push_back(this);
        }
    } catch (...) {
        leave();
        throw;
    }
}

StoreWait::~StoreWait() {
    leave();
}

void StoreWait::leave() {
    for (const auto& category : m_categories) {
        const MutexLock lock(category->m_mutex);
        auto& waits = category->m_waits;
        waits.erase(std::remove(waits.begin(), waits.end(), this), waits.end());
    }
}

bool StoreWait::wait(const timespec& deadline) {
    for (;;) {
        const unsigned int seen = Changes::instance().count();
        if (m_lost)
            return false;
        const Left still = left();
        if (still != Left::OnTheWay)
            return still == Left::Nothing && !m_lost;
        if (!Changes::instance().waitBeyond(seen, deadline))
            return left() == Left::Nothing && !m_lost;
    }
}

StoreWait::Left StoreWait::left() const {
    Left worst = Left::Nothing;
    for (const auto& category : m_categories) {
        const MutexLock lock(category->m_mutex);
        for (const auto& [record, pending] : category->m_records) {
            if (!isBefore(pending.since, m_next))
                continue;
            if (pending.state != PendingStores::State::Failed)
                return Left::OnTheWay;
            worst = Left::OnlyFailed;
        }
    }
    return worst;
}

} // namespace td
