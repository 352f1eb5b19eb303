// Which copy a load tries after another.

#include <iterator>

#include <gtest/gtest.h>

#include "fileOperator/file/NextCopy.h"

namespace td::test {
namespace {

constexpr Verdict EVERY[] = {Verdict::Good,       Verdict::Missing, Verdict::Damaged, Verdict::OtherVersion,
                             Verdict::Unreadable, Verdict::GivenUp, Verdict::Fatal};

TEST(NextCopy, FollowsFromWhatBecameOfTheOneBefore) {
    using Next = NextCopy;
    struct Case {
        const char* name;
        TriedCopy tried; ///< with every verdict
        Next next[std::size(EVERY)];
    };
    const Case cases[] = {
        {"current",
         {},
         {Next::Done, Next::Backup, Next::Backup, Next::Factory, Next::SameAgain, Next::SameAgain, Next::None}},
        {"current, again",
         {.wasTriedBefore = true},
         {Next::Done, Next::Backup, Next::Backup, Next::Factory, Next::None, Next::Backup, Next::None}},
        {"current, mended by another process",
         {.wasTriedBefore = true, .wasMended = true, .lockWasGivenUp = true, .awaitsWrite = true},
         {Next::Done, Next::SameAgain, Next::SameAgain, Next::SameAgain, Next::None, Next::SameAgain, Next::None}},
        {"current, locked by another process",
         {.wasTriedBefore = true, .lockWasGivenUp = true, .awaitsWrite = true},
         {Next::Done, Next::WithoutLock, Next::WithoutLock, Next::WithoutLock, Next::None, Next::WithoutLock,
          Next::None}},
        {"current, whole with a write that cannot be ended now",
         {.wasTriedBefore = true, .awaitsWrite = true},
         {Next::Done, Next::None, Next::None, Next::None, Next::None, Next::None, Next::None}},
        {"backup",
         {.copy = BACKUP_LOAD, .wasMended = true, .awaitsWrite = true},
         {Next::Done, Next::Factory, Next::Factory, Next::Factory, Next::SameAgain, Next::SameAgain, Next::None}},
        {"backup, again, while another process has the lock",
         {.copy = BACKUP_LOAD, .wasTriedBefore = true, .lockWasGivenUp = true},
         {Next::Done, Next::WithoutLock, Next::WithoutLock, Next::WithoutLock, Next::None, Next::WithoutLock,
          Next::None}},
        {"factory",
         {.copy = MANUFACTORY_LOAD},
         {Next::Done, Next::None, Next::None, Next::None, Next::SameAgain, Next::SameAgain, Next::None}},
    };
    for (Case one : cases) {
        for (std::size_t i = 0; i < std::size(EVERY); ++i) {
            one.tried.verdict = EVERY[i];
            EXPECT_EQ(nextCopy(one.tried), one.next[i]) << one.name << ", verdict " << i;
        }
    }
}

} // namespace
} // namespace td::test
