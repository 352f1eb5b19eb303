#include "ui/Signals.h"

#include <atomic>
#include <cerrno>
#include <chrono>
#include <cstdint>
#include <cstring>
#include <thread>

#include <sys/ipc.h>
#include <sys/shm.h>

#include <fmt/core.h>

#include "common/ListenerNames.h"
#include "verbs/Verb.h"

namespace td::dmctl {

namespace {

using Clock = std::chrono::steady_clock;
constexpr auto POLL = std::chrono::milliseconds(2);

int valueOf(sem_t* semaphore) {
    int value = 0;
    return sem_getvalue(semaphore, &value) == 0 ? value : 0;
}

} // namespace

Semaphore::Semaphore(const std::string& name) : m_semaphore(sem_open(name.c_str(), 0)) {
    if (!isOpen() && errno != ENOENT)
        m_reason = fmt::format("the semaphore {} cannot be used: {}", name, std::strerror(errno));
}

Semaphore::~Semaphore() {
    if (isOpen())
        sem_close(m_semaphore);
}

bool Semaphore::postTaken(int milliseconds) {
    const int before = valueOf(m_semaphore);
    if (sem_post(m_semaphore) != 0)
        throw Failure(fmt::format("the semaphore cannot be posted: {}", std::strerror(errno)));
    const auto end = Clock::now() + std::chrono::milliseconds(milliseconds);
    while (valueOf(m_semaphore) > before) {
        if (Clock::now() >= end)
            return sem_trywait(m_semaphore) != 0; // gone meanwhile: it was taken after all
        std::this_thread::sleep_for(POLL);
    }
    return true;
}

LogWord::LogWord() : m_id(shmget(names::DETAIL_LOG_KEY, names::DETAIL_LOG_SIZE, 0)) {
    if (m_id < 0) {
        if (errno != ENOENT)
            m_reason = fmt::format("the shared-memory word cannot be used: {}", std::strerror(errno));
        return;
    }
    void* const address = shmat(m_id, nullptr, 0);
    if (reinterpret_cast<std::intptr_t>(address) == -1)
        m_reason = fmt::format("the shared-memory word cannot be attached: {}", std::strerror(errno));
    else
        m_word = static_cast<int*>(address);
}

LogWord::~LogWord() {
    if (m_word != nullptr)
        shmdt(m_word);
}

int LogWord::value() const {
    return std::atomic_ref<int>(*m_word).load();
}

void LogWord::write(int value) {
    std::atomic_ref<int>(*m_word).store(value);
}

int LogWord::listeners() const {
    shmid_ds status{};
    if (m_word == nullptr || shmctl(m_id, IPC_STAT, &status) != 0)
        return 0;
    return static_cast<int>(status.shm_nattch) - 1;
}

} // namespace td::dmctl
