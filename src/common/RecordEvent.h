/// Events that carry the record as it was when it was stored; each category derives its own from one of these.
#pragma once

#include <cstring>
#include <type_traits>
#include <vector>

#include <dataModule/common/Event.h>

namespace td {

/// The event of a category whose record is a structure.
template <class Operator, class Record>
class RecordEvent : public Event {
public:
    static_assert(std::is_trivially_copyable<Record>::value, "records are plain integers");

    RecordEvent(Operator* op, const std::vector<int>& dims, const Record& record) : Event(op, dims), m_record(record) {}
    /// The integers of the record.
    const int* values() const { return reinterpret_cast<const int*>(&m_record); }

private:
    Record m_record;
};

/// The event of a category without dimensions: a copy of its whole array of values.
template <class Operator, int COUNT>
class GlobalEvent : public Event {
public:
    GlobalEvent(Operator* op, const std::vector<int>& dims, const int* values) : Event(op, dims) {
        std::memcpy(m_values, values, sizeof m_values);
    }
    const int* values() const { return m_values; }

private:
    int m_values[COUNT];
};

} // namespace td
