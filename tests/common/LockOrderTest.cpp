// The check of the lock order (invariant 5 of AbstractFileOperator.h).
#include <gtest/gtest.h>

#include "common/Mutex.h"

namespace td::test {
namespace {

#ifdef DATAMODULE_CHECK_LOCKS

void callUnder(LockRank rank) {
    Mutex mutex{rank};
    const MutexLock lock(mutex);
    lockOrder::willCallSystem();
}

TEST(LockOrderTest, TheOrderAndATryAgainstItAreLetPass) {
    Mutex section{LockRank::Category};
    Mutex queue{LockRank::Queue};
    Mutex leaf;
    {
        const MutexLock outer(section);
        const MutexLock inner(queue);
        const MutexLock innermost(leaf);
    }
    callUnder(LockRank::EnteredTable);
    const MutexLock outer(queue);
    ASSERT_TRUE(section.tryLock());
    leaf.lock();
    section.unlock();
    leaf.unlock();
}

void takeInTurn(LockRank first, LockRank second) TD_NO_THREAD_SAFETY_ANALYSIS {
    Mutex one{first};
    Mutex other{second};
    one.lock();
    other.lock();
    other.unlock();
    one.unlock();
}

TEST(LockOrderDeathTest, WhoeverGoesAgainstItIsEnded) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_DEATH(callUnder(LockRank::Table), "a call of the system under a lock that readers wait for");
    EXPECT_DEATH(takeInTurn(LockRank::Queue, LockRank::Category), "waiting for a category's files");
    EXPECT_DEATH(takeInTurn(LockRank::Category, LockRank::Category), "waiting for a category's files");
    EXPECT_DEATH(takeInTurn(LockRank::Leaf, LockRank::Leaf), "waiting for a leaf");
}

#endif

} // namespace
} // namespace td::test
