/// Collects the library's log lines of all threads and levels while it lives; then the log is as at start-up again.
#pragma once

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

#include <dataModule/platform/DebugOutput.h>

namespace td::test {

class LogCapture {
public:
    struct Line {
        DebugOutput::Level level;
        std::string text;
    };

    LogCapture() {
        DebugOutput::setSink([this](DebugOutput::Level level, const char* line) {
            const std::lock_guard<std::mutex> lock(m_mutex);
            m_lines.push_back({level, line});
            m_added.notify_all();
        });
        DebugOutput::setLevel(DebugOutput::Level::Debug);
    }
    ~LogCapture() {
        DebugOutput::setLevel(DebugOutput::Level::Warning);
        DebugOutput::setSink({});
    }
    LogCapture(const LogCapture&) = delete;
    LogCapture& operator=(const LogCapture&) = delete;

    std::vector<Line> lines() const {
        const std::lock_guard<std::mutex> lock(m_mutex);
        return m_lines;
    }
    /// Lines that contain `text`.
    std::size_t count(const std::string& text) const {
        const std::lock_guard<std::mutex> lock(m_mutex);
        return static_cast<std::size_t>(std::count_if(m_lines.begin(), m_lines.end(), [&](const Line& line) {
            return line.text.find(text) != std::string::npos;
        }));
    }
    bool contains(const std::string& text) const { return count(text) > 0; }
    /// Waits until a line contains `text`; false after a minute without.
    bool waitFor(const std::string& text) const {
        std::unique_lock<std::mutex> lock(m_mutex);
        return m_added.wait_for(lock, std::chrono::minutes(1), [&] {
            return std::any_of(m_lines.begin(), m_lines.end(),
                               [&](const Line& line) { return line.text.find(text) != std::string::npos; });
        });
    }
    void clear() {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_lines.clear();
    }

private:
    mutable std::mutex m_mutex;
    mutable std::condition_variable m_added;
    std::vector<Line> m_lines;
};

} // namespace td::test
