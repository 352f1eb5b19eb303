/// The log of the platform. Every operation may be called from any thread at any time, also while the process exits.
#pragma once

#include <functional>

#include <dataModule/Export.h>

namespace td {

class DATAMODULE_API DebugOutput {
public:
    /// In rising order of detail.
    enum class Level { Error, Warning, Info, Debug };

    /// Lines above this level of detail are not made at all. Warning at first.
    static void setLevel(Level level);
    /// Takes over the lines that pass; an empty function brings back the platform's own output. The sink is called on
    /// the thread that logs, by one thread at a time; it must not log or set a sink itself.
    static void setSink(std::function<void(Level, const char* line)> sink);

    /// Whether a line of this level would be output.
    static bool isEnabled(Level level);
    /// Outputs one complete line, prefix included, if its level passes.
    static void write(Level level, const char* line);
};

} // namespace td
