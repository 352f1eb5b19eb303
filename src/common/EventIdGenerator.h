/// Numbers events, so that a later one has the higher number within the process. Any thread.
#pragma once

#include <atomic>
#include <cstdint>

#include <dataModule/Export.h>

namespace td {

class DATAMODULE_API EventIdGenerator {
public:
    /// The one instance of the process; never destroyed.
    static EventIdGenerator* instance();
    EventIdGenerator(const EventIdGenerator&) = delete;
    EventIdGenerator& operator=(const EventIdGenerator&) = delete;

    /// The next id, from 0.
    int createNextEventId();
    /// The id that the next event will get.
    int peekNextEventId();

private:
    EventIdGenerator() = default;

    std::atomic<std::uint32_t> m_counter{0};
};

} // namespace td
