/// How the library writes log lines: TD_ERROR, TD_WARNING, TD_INFO and TD_DETAIL take a printf format and its values.
/// A line is "file:line:function(): [dataModule] " and the text, made only when the platform's level check passes.
/// Failures are Warning or Error, progress is Info. Dumps of values have a switch of their own, the detail log, which
/// whoever makes a dump asks first: they are Info, and where the platform's level keeps that back they go out as
/// Warning.
#pragma once

#include <dataModule/platform/DebugOutput.h>

namespace td::log {

/// Formats and outputs one line. `file` is shortened to its base name.
void print(DebugOutput::Level level, const char* file, int line, const char* function, const char* format, ...)
    __attribute__((format(printf, 5, 6)));

/// The level of a dump.
inline DebugOutput::Level detailLevel() {
    return DebugOutput::isEnabled(DebugOutput::Level::Info) ? DebugOutput::Level::Info : DebugOutput::Level::Warning;
}

} // namespace td::log

#define TD_LOG(level, ...)                                                      \
    do {                                                                        \
        if (::td::DebugOutput::isEnabled(level))                                \
            ::td::log::print(level, __FILE__, __LINE__, __func__, __VA_ARGS__); \
    } while (false)

#define TD_ERROR(...) TD_LOG(::td::DebugOutput::Level::Error, __VA_ARGS__)
#define TD_WARNING(...) TD_LOG(::td::DebugOutput::Level::Warning, __VA_ARGS__)
#define TD_INFO(...) TD_LOG(::td::DebugOutput::Level::Info, __VA_ARGS__)
#define TD_DETAIL(...) TD_LOG(::td::log::detailLevel(), __VA_ARGS__)
