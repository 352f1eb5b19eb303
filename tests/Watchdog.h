/// Ends the program when a test does not end, or crashes, with what it was doing and all stacks.
#pragma once

#include <string>

namespace td::test {

/// Watches the block in which it lives; one at a time.
class Watchdog {
public:
    explicit Watchdog(const std::string& activity, unsigned seconds = 60);
    ~Watchdog();
    Watchdog(const Watchdog&) = delete;
    Watchdog& operator=(const Watchdog&) = delete;
};

} // namespace td::test
