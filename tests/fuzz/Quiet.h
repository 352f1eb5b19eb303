/// The library's log goes to nobody while this lives; its lines are made all the same, of whatever a file holds.
#pragma once

#include <dataModule/fileOperator/AbstractFileOperator.h>
#include <dataModule/platform/DebugOutput.h>

namespace td::fuzz {

class Quiet {
public:
    /// With detail every record that is read is logged too.
    explicit Quiet(bool withDetail = false) {
        DebugOutput::setSink([](DebugOutput::Level, const char*) {});
        DebugOutput::setLevel(withDetail ? DebugOutput::Level::Debug : DebugOutput::Level::Warning);
        AbstractFileOperator::setDebugLog(withDetail ? 1 : 0);
    }
    ~Quiet() {
        AbstractFileOperator::setDebugLog(0);
        DebugOutput::setLevel(DebugOutput::Level::Warning);
        DebugOutput::setSink({});
    }
    Quiet(const Quiet&) = delete;
    Quiet& operator=(const Quiet&) = delete;
};

} // namespace td::fuzz
