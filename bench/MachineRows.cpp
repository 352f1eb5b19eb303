/// What the machine itself takes for the steps that a store cannot do without.
#include <memory>
#include <thread>

#include <semaphore.h>

#include "Descriptor.h"
#include "Measured.h"
#include "Rows.h"

namespace bench {

namespace {

struct Semaphore {
    Semaphore() { sem_init(&value, 0, 0); }
    ~Semaphore() { sem_destroy(&value); }
    Semaphore(const Semaphore&) = delete;
    Semaphore& operator=(const Semaphore&) = delete;

    sem_t value;
};

/// A thread that sleeps until it is called.
class Sleeper {
public:
    ~Sleeper() {
        m_thread.request_stop();
        call();
    }
    void call() { sem_post(&m_called.value); }
    /// When it ran again after the call.
    Clock::time_point waitAwake() {
        sem_wait(&m_ran.value);
        return m_awake;
    }

private:
    void run(const std::stop_token& end) {
        while (!end.stop_requested()) {
            sem_wait(&m_called.value);
            m_awake = Clock::now();
            sem_post(&m_ran.value);
        }
    }

    Semaphore m_called;
    Semaphore m_ran;
    Clock::time_point m_awake;
    std::jthread m_thread{[this](const std::stop_token& end) { run(end); }};
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
