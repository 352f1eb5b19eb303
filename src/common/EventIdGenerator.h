/// Numbers events, so that a later one has the higher number within the process. Any thread.
#pragma once

#include <cstdint>

#include <dataModule/common/Mutex.h>
#include <dataModule/Export.h>

namespace td {

class DATAMODULE_API EventIdGenerator {
public:
    /// The one instance of the process; never destroyed.
    static EventIdGenerator* instance();
    EventIdGenerator(const EventIdGenerator&) = delete;
    EventIdGenerator& operator=(const EventIdGenerator&) = delete;

    /// The next id, from 0.
    int createNextEventId() TD_EXCLUDES(m_mutex);
    /// The id that the next event will get.
    int peekNextEventId() TD_EXCLUDES(m_mutex);

private:
    friend class Fork;
    EventIdGenerator() = default;

    Mutex m_mutex;
    std::uint32_t m_counter TD_GUARDED_BY(m_mutex) = 0;
};

} // namespace td
