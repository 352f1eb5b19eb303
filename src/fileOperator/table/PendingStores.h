/// What was stored in one category and is not in its file yet: per record the newest event, the fields that the stores
/// named, and how far the write has come. The only place that knows what a load keeps, what is tried again, and what
/// waitStored() waits for.
///
/// Any thread.
#pragma once

#include <atomic>
#include <ctime>
#include <functional>
#include <map>
#include <memory>
#include <vector>

#include "common/Mutex.h"
#include "fileOperator/table/RecordTable.h"

namespace td {

class StoreWait;

class PendingStores {
public:
    PendingStores() = default;
    PendingStores(const PendingStores&) = delete;
    PendingStores& operator=(const PendingStores&) = delete;

    // --- the way of a store ---

    /// The fields were stored; `event` is to write them.
    void stored(int record, int event, FieldSet fields) TD_EXCLUDES(m_mutex);
    /// The event's copy of the record is on the disk.
    void written(int record, int event) TD_EXCLUDES(m_mutex);
    /// It is not, and nobody is about to write it.
    void failed(int record, int event) TD_EXCLUDES(m_mutex);
    /// It is part of the table that a merge is about to write.
    void leftToMerge(int record, int event) TD_EXCLUDES(m_mutex);
    /// The merge could not write it.
    void mergeFailed() TD_EXCLUDES(m_mutex);
    /// The whole table is on the disk as it was before `event`.
    void allWrittenBefore(int event) TD_EXCLUDES(m_mutex);
    /// A call gave up what was stored: in all records, in one, or in those that `gives` picks; or what was stored in a
    /// record before `event` and not since.
    void drop() TD_EXCLUDES(m_mutex);
    void drop(int record) TD_EXCLUDES(m_mutex);
    void drop(const std::function<bool(int record)>& gives) TD_EXCLUDES(m_mutex);
    void dropBefore(int event) TD_EXCLUDES(m_mutex);

    // --- what is there ---

    struct Store {
        int record = 0;
        int event = 0; ///< the newest
        FieldSet fields = 0;
    };
    /// All of them, by record.
    std::vector<Store> all() const TD_EXCLUDES(m_mutex);
    /// The fields of the record's.
    FieldSet fieldsOf(int record) const TD_EXCLUDES(m_mutex);
    /// Those whose write failed, by record.
    std::vector<Store> failedOnes() const TD_EXCLUDES(m_mutex);
    bool hasFailed() const TD_EXCLUDES(m_mutex);

private:
    friend class StoreWait;

    enum class State { Queued, LeftToMerge, Failed };
    struct Pending {
        int since = 0; ///< no older event of the record is outstanding
        int event = 0;
        FieldSet fields = 0;
        State state = State::Queued;
    };

    using Records = std::map<int, Pending>;

    void setState(int record, int event, State state) TD_EXCLUDES(m_mutex);
    void change(Pending& pending, State state) TD_REQUIRES(m_mutex);
    Records::iterator remove(Records::iterator entry) TD_REQUIRES(m_mutex);
    Records::iterator giveUp(Records::iterator entry) TD_REQUIRES(m_mutex);

    mutable Mutex m_mutex; ///< all below
    Records m_records TD_GUARDED_BY(m_mutex);
    int m_failedCount TD_GUARDED_BY(m_mutex) = 0; ///< of m_records
    std::vector<StoreWait*> m_waits TD_GUARDED_BY(m_mutex);
};

/// One wait for what is pending in some categories when it begins. What is stored later is not waited for, unless it is
/// of the same record and on its way already.
class StoreWait {
public:
    explicit StoreWait(std::vector<std::shared_ptr<PendingStores>> categories);
    ~StoreWait();
    StoreWait(const StoreWait&) = delete;
    StoreWait& operator=(const StoreWait&) = delete;

    /// Waits until it is known. True: all is on the disk. False: something was dropped, or nothing but failed stores is
    /// left, or the time ran out.
    bool wait(const timespec& deadline);

private:
    friend class PendingStores;

    enum class Left { Nothing, OnlyFailed, OnTheWay };
    Left left() const;
    void leave();

    const int m_next;                ///< the first event that is not waited for
    std::atomic<bool> m_lost{false}; ///< something of it was dropped
    const std::vector<std::shared_ptr<PendingStores>> m_categories;
};

} // namespace td
