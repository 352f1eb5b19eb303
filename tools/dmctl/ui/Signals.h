/// The semaphores and the shared-memory word over which the library's listeners are reached. The root prefix has to be
/// set.
#pragma once

#include <optional>
#include <string>

#include <semaphore.h>

namespace td::dmctl {

/// A named semaphore that a listener has made.
class Semaphore {
public:
    /// Opens it; it is never made here.
    explicit Semaphore(const std::string& name);
    ~Semaphore();
    Semaphore(const Semaphore&) = delete;
    Semaphore& operator=(const Semaphore&) = delete;

    /// Otherwise nobody listens, or reason() tells why it cannot be used.
    bool isOpen() const { return m_semaphore != SEM_FAILED; }
    const std::string& reason() const { return m_reason; }
    /// Posts once and waits, at most `milliseconds`, until a listener has taken it. A post that nobody takes is taken
    /// back: whoever listens later must not meet it. Throws Failure when the system refuses.
    bool postTaken(int milliseconds);

private:
    sem_t* m_semaphore;
    std::string m_reason;
};

/// The shared-memory word of the detail-log switch.
class LogWord {
public:
    /// Attaches it; it is never made here.
    LogWord();
    ~LogWord();
    LogWord(const LogWord&) = delete;
    LogWord& operator=(const LogWord&) = delete;

    /// Otherwise no listener has made it, or reason() tells why it cannot be used.
    bool isAttached() const { return m_word != nullptr; }
    const std::string& reason() const { return m_reason; }
    int value() const;
    void write(int value);
    /// Processes that have it attached besides this one: those that listen.
    int listeners() const;

private:
    int m_id = -1;
    int* m_word = nullptr;
    std::string m_reason;
};

} // namespace td::dmctl
