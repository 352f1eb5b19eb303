#include <dataModule/platform/DebugOutput.h>

#include <atomic>
#include <cstring>
#include <memory>
#include <mutex>
#include <new>
#include <utility>

#include <pthread.h>
#include <sys/uio.h>
#include <unistd.h>

namespace td {
namespace {

using Sink = std::function<void(DebugOutput::Level, const char* line)>;

std::atomic<DebugOutput::Level> g_level{DebugOutput::Level::Warning};

struct SinkHolder {
    std::mutex mutex; ///< guards the sink; held while it runs, so a sink that was replaced is not running any more
    std::unique_ptr<Sink> sink; ///< changes in one step: a child made by fork() meanwhile finds the old one or the new
};

SinkHolder* g_holder = nullptr;

/// A child has none of the threads that may have been logging.
void freeMutexInChild() {
    new (&g_holder->mutex) std::mutex;
}

/// Never destroyed: threads may log while the process exits.
SinkHolder& holder() {
    static auto* const instance = [] {
        g_holder = new SinkHolder;
        pthread_atfork(nullptr, nullptr, freeMutexInChild);
        return g_holder;
    }();
    return *instance;
}

/// Made when the library is loaded: a child made by fork() would not get over one that is half made.
[[maybe_unused]] const SinkHolder& g_madeEarly = holder();

/// One system call per line, so that the lines of several processes on one terminal do not mix.
void writeToStandardError(const char* line) {
    const std::size_t length = std::strlen(line);
    const bool ended = length > 0 && line[length - 1] == '\n';
    iovec parts[2] = {{const_cast<char*>(line), length}, {const_cast<char*>("\n"), 1}};
    // There is nobody to tell when the log itself cannot be written.
    [[maybe_unused]] const ssize_t written = writev(STDERR_FILENO, parts, ended ? 1 : 2);
}

} // namespace

void DebugOutput::setLevel(Level level) {
    g_level.store(level, std::memory_order_relaxed);
}

void DebugOutput::setSink(Sink sink) {
    auto changed = sink ? std::make_unique<Sink>(std::move(sink)) : nullptr;
    {
        const std::lock_guard<std::mutex> lock(holder().mutex);
        holder().sink.swap(changed);
    }
    // The sink from before dies here, outside the lock: its destructor is the program's code and may log.
}

bool DebugOutput::isEnabled(Level level) {
    return level <= g_level.load(std::memory_order_relaxed);
}

void DebugOutput::write(Level level, const char* line) {
    if (line == nullptr || !isEnabled(level))
        return;
    const std::lock_guard<std::mutex> lock(holder().mutex);
    if (!holder().sink) {
        writeToStandardError(line);
        return;
    }
    try {
        (*holder().sink)(level, line);
    } catch (...) {
        // A line that the program's sink could not take must not end the thread that logged it.
    }
}

} // namespace td
