/// Where exceptions of operators, and of the library's own steps, end.
#pragma once

#include <exception>

#include "common/Log.h"

namespace td {

/// Runs `action` and returns its result; what it throws ends here, is logged under the caller's name and counts as a
/// failure.
template <typename Action>
bool attempt(Action action, const char* file = __builtin_FILE(), const char* function = __builtin_FUNCTION(),
             int line = __builtin_LINE()) {
    try {
        return action();
    } catch (const std::exception& error) {
        log::print(DebugOutput::Level::Error, file, line, function, "unexpected exception: %s\n", error.what());
    } catch (...) {
        log::print(DebugOutput::Level::Error, file, line, function, "unexpected exception\n");
    }
    return false;
}

} // namespace td
