// The worker thread, its events and their ids, on operators without files.

#include <atomic>
#include <climits>
#include <fstream>
#include <functional>
#include <memory>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include <unistd.h>

#include <gtest/gtest.h>

#include <dataModule/common/Event.h>
#include <dataModule/common/EventIdGenerator.h>
#include <dataModule/common/Thread.h>
#include <dataModule/IDataSeparateManagerInner.h>

#include "FakeOperator.h"
#include "Gate.h"
#include "LogCapture.h"

namespace td::test {
namespace {

/// Long enough that a test that waits for it has failed.
constexpr int NEVER_SECONDS = 3600;
constexpr int PATIENCE_MILLISECONDS = 60000;

/// An event that counts its destructions.
class CountedEvent : public Event {
public:
    CountedEvent(IFileOperator* op, std::atomic<int>& destroyed) : Event(op, {}), m_destroyed(destroyed) {}
    ~CountedEvent() override { ++m_destroyed; }

private:
    std::atomic<int>& m_destroyed;
};

/// The manager as a worker and an event see it.
class FakeOwner final : public IDataSeparateManagerInner {
public:
    const char* getCategory_Str(const _DataCategory_t&) override { return ""; }
    bool getApplySettingFlag(const _DataCategory_t&, const char*) override { return false; }
    bool restoreApplySettingFlag(const _DataCategory_t&, const char*) override { return false; }
    char* getManufactoryPath() override { return nullptr; }
    bool setReservedFlag(bool) override { return true; }
    bool setTvType(const char*) override { return true; }
    bool setReservedValue(int) override { return true; }
    FILE* getFileHandler(const _DataCategory_t&) override { return nullptr; }
    bool getReservedFlag() override { return false; }
    const char* getTvType() override { return ""; }
    int getReservedValue() override { return 0; }
    bool backupData() override {
        ++backups;
        if (onBackup)
            onBackup();
        return true;
    }
    int postEvent(Event* event) override { return worker != nullptr && worker->post(event) ? 1 : 0; }
    bool getStoreFileFlag() override { return true; }

    std::atomic<int> backups{0};
    std::function<void()> onBackup;
    Thread* worker = nullptr;
};

/// Waits until a thread that has published its id waits for something.
void waitUntilAsleep(const std::atomic<pid_t>& thread) {
    std::string state;
    while (state.rfind(") S", std::string::npos) == std::string::npos) {
        std::this_thread::yield();
        std::ifstream file("/proc/self/task/" + std::to_string(thread) + "/stat");
        std::getline(file, state);
    }
}

_ThreadStaticInfo_t statistics(Thread& worker) {
    _ThreadStaticInfo_t info{};
    worker.getStaticsInfo(info);
    return info;
}

class ThreadTest : public testing::Test {
protected:
    Event* newEvent() { return new CountedEvent(&m_operator, m_destroyed); }

    std::atomic<int> m_destroyed{0};
    FakeOperator m_operator{PICTURE_MODE};
};

TEST(EventTest, IdsAreConsecutiveAndTellEventsApart) {
    const Event first(nullptr, {1, 2});
    EXPECT_EQ(EventIdGenerator::instance()->peekNextEventId(), first.id() + 1);
    Event second(nullptr, {3});
    EXPECT_EQ(second.id(), first.id() + 1);
    EXPECT_FALSE(first == second);

    const Event copy(first);
    EXPECT_TRUE(copy == first);
    EXPECT_EQ(copy.dimensions(), (std::vector<int>{1, 2}));

    second = first;
    EXPECT_TRUE(second == first);
    EXPECT_EQ(second.dimensions(), (std::vector<int>{3})) << "an assigned event keeps its own dimensions";
}

TEST(EventTest, AssignmentTakesTheOperatorOver) {
    FakeOperator op(PICTURE_MODE);
    Event event(nullptr, {});
    EXPECT_FALSE(event.handle()) << "there is no operator";
    event = Event(&op, {});
    EXPECT_TRUE(event.handle());
    EXPECT_EQ(op.count("syncSectionToFile"), 1);
}

TEST(EventTest, WritesUnderTheCriticalSectionAndThenAsksForABackup) {
    FakeOperator op(PICTURE_MODE);
    EXPECT_TRUE(Event(&op, {}).handle());
    EXPECT_EQ(op.calls(), (std::vector<std::string>{"enterCriticalSection", "syncSectionToFile", "updateCrcCode",
                                                    "leaveCriticalSection", "setBackupReq(true)"}));
}

TEST(EventTest, AFailedSectionLeavesTheChecksumAloneAndStillAsksForABackup) {
    FakeOperator op(PICTURE_MODE);
    op.fail("syncSectionToFile");
    EXPECT_FALSE(Event(&op, {}).handle());
    EXPECT_EQ(op.count("updateCrcCode"), 0);
    EXPECT_TRUE(op.getBackupReq());

    FakeOperator badChecksum(PICTURE_MODE);
    badChecksum.fail("updateCrcCode");
    EXPECT_FALSE(Event(&badChecksum, {}).handle());
    EXPECT_TRUE(badChecksum.getBackupReq());
}

TEST(EventTest, IsDroppedAsASuccessWhileStoringIsForbidden) {
    FakeOperator op(PICTURE_MODE);
    op.storeAllowed = false;
    EXPECT_TRUE(Event(&op, {}).handle());
    EXPECT_TRUE(op.calls().empty());
}

TEST(EventTest, GivesTheCriticalSectionBackWhenTheOperatorThrows) {
    FakeOperator op(PICTURE_MODE);
    op.on("syncSectionToFile", []() -> bool { throw std::runtime_error("no section"); });
    EXPECT_THROW(Event(&op, {}).handle(), std::runtime_error);
    EXPECT_TRUE(op.isFree());
    EXPECT_TRUE(op.getBackupReq()) << "half a section may have been written";
}

TEST_F(ThreadTest, PostOrDeleteDeletesWhatNobodyTakes) {
    EXPECT_FALSE(Event::postOrDelete(nullptr, newEvent()));
    EXPECT_EQ(m_destroyed, 1);

    FakeOwner owner;
    EXPECT_FALSE(Event::postOrDelete(&owner, newEvent()));
    EXPECT_EQ(m_destroyed, 2);

    Thread worker("test");
    owner.worker = &worker;
    EXPECT_TRUE(Event::postOrDelete(&owner, newEvent()));
    EXPECT_EQ(m_destroyed, 2) << "the worker owns it";
}

TEST_F(ThreadTest, HandlesEventsInTheOrderOfPosting) {
    // Each event is for an operator of its own, so the order of handling shows.
    std::vector<int> handled;
    std::vector<std::unique_ptr<FakeOperator>> operators;
    for (int i = 0; i < 20; ++i) {
        operators.push_back(std::make_unique<FakeOperator>(PICTURE_MODE));
        operators.back()->on("syncSectionToFile", [&handled, i] {
            handled.push_back(i);
            return true;
        });
    }

    Thread worker("test");
    ASSERT_TRUE(worker.post(new Event(operators[0].get(), {}))) << "events may be posted before the start";
    ASSERT_TRUE(worker.start());
    for (std::size_t i = 1; i < operators.size(); ++i)
        ASSERT_TRUE(worker.post(new Event(operators[i].get(), {})));
    ASSERT_TRUE(worker.waitHandled(PATIENCE_MILLISECONDS));
    worker.stop();

    std::vector<int> expected(operators.size());
    for (std::size_t i = 0; i < expected.size(); ++i)
        expected[i] = static_cast<int>(i);
    EXPECT_EQ(handled, expected);
}

TEST_F(ThreadTest, CountsWhatItHandled) {
    FakeOperator broken(PICTURE_MODE);
    broken.fail("syncSectionToFile");
    FakeOperator throwing(PICTURE_MODE);
    throwing.on("syncSectionToFile", []() -> bool { throw std::runtime_error("no section"); });
    const LogCapture log;

    Thread worker("test");
    auto* const failing = new Event(&broken, {});
    const int failingId = failing->id();
    for (Event* event : {newEvent(), failing, newEvent(), newEvent()})
        ASSERT_TRUE(worker.post(event));
    ASSERT_TRUE(worker.post(nullptr)) << "a null entry is taken and skipped";
    ASSERT_TRUE(worker.start());
    ASSERT_TRUE(worker.waitHandled(PATIENCE_MILLISECONDS));

    _ThreadStaticInfo_t info = statistics(worker);
    EXPECT_EQ(info.handled, 4U);
    EXPECT_EQ(info.succeeded, 3U);
    EXPECT_EQ(info.failed, 1U);
    EXPECT_EQ(info.queued, 0U);
    EXPECT_EQ(m_destroyed, 3);
    EXPECT_EQ(log.count("work thread handle event (id = " + std::to_string(failingId) + ") failed! \n"), 1U);

    ASSERT_TRUE(worker.post(new Event(&throwing, {})));
    ASSERT_TRUE(worker.post(newEvent()));
    ASSERT_TRUE(worker.waitHandled(PATIENCE_MILLISECONDS));
    info = statistics(worker);
    EXPECT_EQ(info.failed, 2U) << "an exception is a failure";
    EXPECT_EQ(info.succeeded, 4U) << "and the worker goes on";
}

TEST_F(ThreadTest, StopDeletesWhatIsQueuedAndRefusesMore) {
    Gate entered;
    Gate proceed;
    m_operator.on("syncSectionToFile", [&] {
        entered.open();
        proceed.pass();
        return true;
    });
    Thread worker("test");
    for (int i = 0; i < 4; ++i)
        ASSERT_TRUE(worker.post(newEvent()));
    ASSERT_TRUE(worker.start());
    entered.pass();

    std::thread stopping([&] { worker.stop(); });
    while (!worker.isExit())
        std::this_thread::yield();
    const std::unique_ptr<Event> refused(newEvent());
    EXPECT_FALSE(worker.post(refused.get()));
    EXPECT_EQ(m_destroyed, 0) << "a refused event stays with the caller";
    proceed.open();
    stopping.join();

    EXPECT_EQ(m_operator.count("syncSectionToFile"), 1) << "the event in hand is finished, the queued ones are not";
    EXPECT_EQ(m_destroyed, 4);
    const _ThreadStaticInfo_t info = statistics(worker);
    EXPECT_EQ(info.handled, 1U);
    EXPECT_EQ(info.queued, 3U) << "as counted when the event was taken";
}

TEST_F(ThreadTest, StopWorksWithoutAStartAndTwice) {
    Thread worker("test");
    ASSERT_TRUE(worker.post(newEvent()));
    EXPECT_TRUE(worker.stop());
    EXPECT_EQ(m_destroyed, 1);
    EXPECT_TRUE(worker.stop());
    EXPECT_TRUE(worker.isExit());

    const LogCapture log;
    EXPECT_FALSE(worker.start()) << "a stopped worker stays stopped";
    EXPECT_TRUE(log.contains("Create pthread [test] failed.\n"));
}

TEST_F(ThreadTest, StopIsPromptWhenIdle) {
    FakeOwner owner;
    Thread worker("test", NEVER_SECONDS);
    worker.setOwner(&owner);
    const LogCapture log;
    ASSERT_TRUE(worker.start());
    EXPECT_TRUE(worker.start()) << "a second start has no effect";
    EXPECT_EQ(log.count("Create pthread [test] success ,id = "), 1U);
    ASSERT_TRUE(worker.post(newEvent()));
    ASSERT_TRUE(worker.waitHandled(PATIENCE_MILLISECONDS));

    std::thread other([&] { worker.stop(); });
    worker.stop();
    other.join();
    EXPECT_EQ(owner.backups, 0);
}

TEST_F(ThreadTest, AsksForABackupInEveryIdlePeriod) {
    Gate second;
    FakeOwner owner;
    Thread worker("test", 1);
    owner.onBackup = [&] {
        if (owner.backups == 2)
            second.open();
        throw std::runtime_error("an owner's failure does not end the worker");
    };
    worker.setOwner(&owner);
    ASSERT_TRUE(worker.start());
    second.pass();
    ASSERT_TRUE(worker.post(newEvent()));
    EXPECT_TRUE(worker.waitHandled(PATIENCE_MILLISECONDS));
}

TEST_F(ThreadTest, WaitHandledWaitsForWhatWasQueuedOnEntry) {
    Thread worker("test");
    ASSERT_TRUE(worker.post(newEvent()));
    EXPECT_TRUE(worker.waitHandled(PATIENCE_MILLISECONDS)) << "no thread runs";

    Gate proceed;
    std::atomic<bool> waitedInside{false};
    m_operator.on("syncSectionToFile", [&] {
        proceed.pass();
        waitedInside = worker.waitHandled(PATIENCE_MILLISECONDS);
        return true;
    });
    ASSERT_TRUE(worker.start());
    EXPECT_FALSE(worker.waitHandled(1)) << "the event waits at the gate";
    EXPECT_FALSE(worker.waitHandled(-1));
    proceed.open();
    EXPECT_TRUE(worker.waitHandled(PATIENCE_MILLISECONDS));
    EXPECT_EQ(m_destroyed, 1);
    EXPECT_TRUE(waitedInside) << "the worker does not wait for itself";
}

TEST_F(ThreadTest, AWaiterIsReleasedByStop) {
    Gate proceed;
    m_operator.on("syncSectionToFile", [&] {
        proceed.pass();
        return true;
    });
    Thread worker("test");
    ASSERT_TRUE(worker.start());
    ASSERT_TRUE(worker.post(newEvent()));
    ASSERT_TRUE(worker.post(newEvent()));
    std::atomic<pid_t> waiter{0};
    std::thread waiting([&] {
        waiter = gettid();
        EXPECT_TRUE(worker.waitHandled(INT_MAX));
    });
    waitUntilAsleep(waiter);
    std::thread stopping([&] { worker.stop(); });
    while (!worker.isExit())
        std::this_thread::yield();
    proceed.open();
    stopping.join();
    waiting.join();
    EXPECT_EQ(m_destroyed, 2);
}

TEST_F(ThreadTest, EveryEventIsDeletedOnceWhilePostsRaceWithStop) {
    // Only a poster that is late for the last look at the queue could leave something in it, so many race, and often.
    constexpr int ROUNDS = 200;
    constexpr int POSTERS = 8;
    for (int round = 0; round < ROUNDS; ++round) {
        FakeOwner owner;
        Thread worker("test");
        owner.worker = &worker;
        ASSERT_TRUE(worker.start());
        Gate start;
        std::atomic<int> made{0};
        m_destroyed = 0;
        std::vector<std::thread> posters;
        for (int i = 0; i < POSTERS; ++i) {
            posters.emplace_back([&] {
                start.pass();
                do
                    ++made;
                while (Event::postOrDelete(&owner, newEvent()));
            });
        }
        start.open();
        while (made < POSTERS)
            std::this_thread::yield();
        worker.stop();
        for (std::thread& poster : posters)
            poster.join();
        ASSERT_EQ(m_destroyed, made) << round;
    }
}

} // namespace
} // namespace td::test
