/// The values of one category in memory: rows of integers, by record number, and what has to be known of them to write
/// them. Guarded by its own lock; knows no file.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <vector>

#include "fileOperator/table/SnapshotFloor.h"
#include "fileOperator/table/TableLock.h"

namespace td {

/// Fields of a record, a bit for each by its position.
using FieldSet = std::uint64_t;
constexpr FieldSet ALL_FIELDS = ~FieldSet{0};
constexpr FieldSet fieldBit(int position) {
    return FieldSet{1} << static_cast<unsigned>(position);
}

/// Rows of integers, with a note of each whether it holds what its file is to hold. A table that is read whole always
/// does.
class Rows {
public:
    Rows(int records, int fields);

    int* at(int record) { return m_values.data() + static_cast<std::size_t>(record) * m_fields; }
    const int* at(int record) const { return m_values.data() + static_cast<std::size_t>(record) * m_fields; }
    bool holds(int record) const { return m_held[static_cast<std::size_t>(record)]; }
    bool holdsAll() const;
    void put(int record, const int* values);
    void put(int record, const int* values, FieldSet fields);
    /// Zeros, which no file is to hold.
    void forget(int record);
    void holdAll() { m_held.assign(m_held.size(), true); }
    void holdNone() { m_held.assign(m_held.size(), false); }
    int count() const { return static_cast<int>(m_held.size()); }
    std::size_t bytes() const { return m_values.size() * sizeof(int); }

private:
    std::size_t m_fields;
    std::vector<int> m_values;
    std::vector<bool> m_held;
};

struct RecordTable {
    RecordTable(int records, int fields) : rows(records, fields) {}

    TableMutex mutex; ///< all below
    Rows rows TD_GUARDED_BY(mutex);
    SnapshotFloor floor TD_GUARDED_BY(mutex);
    /// While a load reads into rows of its own: what was stored meanwhile.
    std::optional<std::map<int, FieldSet>> storedMeanwhile TD_GUARDED_BY(mutex);
    /// Between a refresh from the factory copy and the reset of the current one: the records stored meanwhile.
    std::optional<std::set<int>> storedSinceRefresh TD_GUARDED_BY(mutex);
};

} // namespace td
