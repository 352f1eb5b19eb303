/// What the machine itself takes for the steps that a store cannot do without.
#include <condition_variable>
#include <memory>
#include <mutex>
#include <thread>

#include "Descriptor.h"
#include "Measured.h"
#include "Rows.h"

namespace bench {

namespace {

/// A thread that sleeps until it is called.
class Sleeper {
public:
    Sleeper() : m_thread([this] { run(); }) {}
    ~Sleeper() {
        {
            const std::lock_guard<std::mutex> lock(m_mutex);
            m_ends = true;
        }
        call();
        m_thread.join();
    }
    Sleeper(const Sleeper&) = delete;
    Sleeper& operator=(const Sleeper&) = delete;

    void call() {
        {
            const std::lock_guard<std::mutex> lock(m_mutex);
            m_called = true;
        }
        m_condition.notify_one();
    }
    /// When it ran again after the call.
    Clock::time_point waitAwake() {
        std::unique_lock<std::mutex> lock(m_mutex);
        m_answer.wait(lock, [this] { return !m_called; });
        return m_awake;
    }

private:
    void run() {
        std::unique_lock<std::mutex> lock(m_mutex);
        while (!m_ends) {
            m_condition.wait(lock, [this] { return m_called; });
            m_awake = Clock::now();
            m_called = false;
            m_answer.notify_one();
        }
    }

    std::mutex m_mutex;
    std::condition_variable m_condition;
    std::condition_variable m_answer;
    Clock::time_point m_awake;
    bool m_called = false;
    bool m_ends = false;
    std::thread m_thread;
};

Take wake(bool untilItRuns) {
    return [=, sleeper = std::make_shared<Sleeper>()](Sample& sample) {
        sample.start();
        sleeper->call();
        sample.stop();
        const Clock::time_point awake = sleeper->waitAwake();
        if (untilItRuns)
            sample.stop(awake);
    };
}

Take syncOfBlock(const std::string& path) {
    const auto file = std::make_shared<Descriptor>(path, O_RDWR | O_CREAT);
    return [file, block = std::string(4096, 'x')](Sample& sample) mutable {
        ++block[0];
        file->write(block.data(), block.size(), 0);
        sample.start();
        file->sync();
        sample.stop();
    };
}

} // namespace

void registerMachineRows(const Setting& setting) {
    const int samples = setting.shortRun ? 20 : 200;
    addMeasured("wake of a sleeping thread, call/bound", samples, wake(false));
    addMeasured("wake of a sleeping thread, until it runs/bound", samples, wake(true));
    addMeasured("sync of one written block/bound", samples, syncOfBlock(setting.directory + "/block"));
}

} // namespace bench
