// Whatever fails, at whatever moment: the library goes on, loses nothing that was stored, and works again as soon as
// the failure is over (invariants 1, 2 and 7 of AbstractFileOperator.h).

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstdio>
#include <exception>
#include <functional>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "Cells.h"
#include "FileCalls.h"
#include "Options.h"
#include "Scarcity.h"
#include "Watchdog.h"

namespace td::test {
namespace {

constexpr std::size_t MOST_FAULTS = 3;
/// No operation does more than this before it meets no failure any more.
constexpr int MOST_USES = 100000;
/// Of the numbers a sample tries every fifth, and so many at most; of a large shape fewer.
constexpr int SAMPLE_STRIDE = 5;
constexpr int MOST_SAMPLES = 16;
constexpr int MOST_LARGE_SAMPLES = 1;
constexpr int MOST_LARGE_FULL = 5;

/// What fails: from the use with a number on, once or for ever.
class Failure {
public:
    virtual ~Failure() = default;
    virtual void begin(int number, bool forEver) = 0;
    /// Whether the number was reached.
    virtual bool end() = 0;
    /// What could have failed between begin and end.
    virtual int uses() const = 0;
    virtual std::string name() const = 0;
    /// Whether a store that was divided can be ended.
    virtual bool hasRecords() const { return true; }
};

/// File calls with an error, or writes that do less than they should.
class FailingCalls final : public Failure, public FileWatcher {
public:
    /// Without a record: no redo record can be written all the while.
    enum Kind { Error, Partial, PartialThenFull, PartialThenFullWithoutRecord };

    FailingCalls(Kind kind, int error, std::string name) : m_kind(kind), m_error(error), m_name(std::move(name)) {}

    void begin(int number, bool forEver) override {
        m_number = number;
        m_forEver = forEver;
        m_calls = 0;
        m_struck.clear();
        m_active = true;
    }
    bool end() override {
        m_active = false;
        return !m_struck.empty();
    }
    int uses() const override { return m_calls; }
    std::string name() const override { return m_name + " at " + m_struck; }
    bool hasRecords() const override { return m_kind != PartialThenFullWithoutRecord; }

    Verdict asked(FileCall call, const std::string& path) override {
        if (!m_active || (m_kind != Error && call != FileCall::Write))
            return {};
        if (!hasRecords() && isRedoRecord(path))
            return {ENOSPC, false};
        ++m_calls;
        const bool thenFull = m_kind == PartialThenFull || m_kind == PartialThenFullWithoutRecord;
        if (m_calls < m_number || (m_calls > m_number && !m_forEver && !thenFull))
            return {};
        if (m_struck.empty())
            m_struck = std::string(nameOf(call)) + " of " + path;
        if (m_kind == Error)
            return {m_error, false};
        if (thenFull && m_calls > m_number)
            return {m_calls == m_number + 1 || m_forEver ? ENOSPC : 0, false};
        return {0, true};
    }

private:
    const Kind m_kind;
    const int m_error;
    const std::string m_name;
    // Under the lock of the file calls while they are watched, and set only while nothing is running.
    int m_number = 0;
    bool m_forEver = false;
    int m_calls = 0;
    std::string m_struck;
    std::atomic<bool> m_active{false};
};

class Scarce final : public Failure {
public:
    Scarce(Shortage& shortage, std::string name) : m_shortage(shortage), m_name(std::move(name)) {}
    void begin(int number, bool forEver) override { m_shortage.begin(number, forEver); }
    bool end() override { return m_shortage.end(); }
    int uses() const override { return m_shortage.uses(); }
    std::string name() const override { return m_name; }

private:
    Shortage& m_shortage;
    const std::string m_name;
};

/// One operation on one shape, with one step that meets failures.
class FailingOperation {
public:
    FailingOperation(const Cell& cell, std::size_t step)
        : m_operation(*cell.operation), m_shape(*cell.shape), m_layout(m_shape.layout()), m_step(step),
          m_disk(m_operation.disk(m_shape)), m_backup(contentsOnDisk(m_shape.backup())) {
        rehearse();
    }

    /// How often the step does what the failure may meet.
    int usesOf(Failure& failure, FileWatcher& watcher) const {
        m_root.write(m_disk);
        Life life(m_shape);
        const WatchedFiles watched(m_root.path(), watcher);
        prepare(life);
        failure.begin(MOST_USES, false);
        m_operation.steps[m_step].act(life);
        failure.end();
        return failure.uses();
    }

    /// Goes on until a run meets no failure; every `stride`th number is tried. What went wrong.
    std::vector<std::string> run(Failure& failure, FileWatcher& watcher, bool forEver, int first, int stride) {
        std::vector<std::string> faults;
        const int only = options().onlyNumber;
        const int last = only > 0 ? only : MOST_USES;
        for (int number = only > 0 ? only : first; number <= last && faults.size() < MOST_FAULTS; number += stride) {
            bool met = false;
            // Once with another store in the same process, once with a new start right away.
            for (const bool goOn : {false, true}) {
                bool metNow = false;
                const std::string fault = runOnce(failure, watcher, number, forEver, goOn, metNow);
                if (!fault.empty())
                    faults.push_back(fault + "\n" + m_case + ": " + failure.name());
                ++m_runs;
                met = met || metNow;
            }
            m_hasStruck = m_hasStruck || met;
            if (!met)
                return faults;
        }
        return faults;
    }
    int runs() const { return m_runs; }
    /// Whether a run met its failure.
    bool hasStruck() const { return m_hasStruck; }
    bool startsTheSet() const { return m_step == 0; }
    bool changesSettings() const { return m_before != m_after; }

private:
    /// What the step does when nothing fails.
    void rehearse() {
        m_root.write(m_disk);
        Life life(m_shape);
        m_before = m_operation.before(m_layout);
        for (std::size_t i = 0; i <= m_step; ++i) {
            if (!m_operation.steps[i].act(life))
                throw std::runtime_error(std::string(m_operation.steps[i].name) + " fails without a failure");
            if (i + 1 == m_step)
                m_before = contentsAt(m_shape.current());
        }
        m_after = contentsAt(m_shape.current());
    }

    void prepare(Life& life) const {
        for (std::size_t i = 0; i < m_step; ++i)
            m_operation.steps[i].act(life);
        life.set();
    }

    std::optional<std::string> contentsAt(const std::string& path) const {
        return verifiedContents(m_layout, m_root.readFile(path));
    }
    std::optional<std::string> contentsOnDisk(const std::string& path) const {
        const auto found = m_disk.find(path);
        return found != m_disk.end() ? verifiedContents(m_layout, found->second) : std::nullopt;
    }

    std::string runOnce(Failure& failure, FileWatcher& watcher, int number, bool forEver, bool goOn, bool& met) {
        m_case = std::string(m_operation.name) + ", " + m_operation.steps[m_step].name + ", " + m_shape.name +
                 ", number " + std::to_string(number) + (forEver ? " and all after it" : " only") +
                 (goOn ? ", then a store" : ", then a new start");
        const Watchdog watchdog(m_case);
        if (options().showsLog)
            std::fprintf(stderr, "--- %s\n", m_case.c_str());
        m_root.write(m_disk);
        Life life(m_shape);
        {
            const WatchedFiles watched(m_root.path(), watcher);
            prepare(life);
            failure.begin(number, forEver);
            std::string thrown;
            try {
                m_operation.steps[m_step].act(life);
            } catch (const std::exception& error) {
                thrown = error.what();
            }
            met = failure.end();
            if (!thrown.empty())
                return "an exception left the library: " + thrown;
            if (goOn) {
                std::string fault = storeNext(life);
                if (!fault.empty())
                    return fault;
            }
            life.end();
        }
        return check(goOn, failure.hasRecords());
    }

    /// The failure is over: what was not loaded loads, and a store works.
    std::string storeNext(Life& life) const {
        if (!life.set().start())
            return "the set does not start";
        if (!life.set().isLoaded() && m_before && !life.set().loadData(m_shape.category))
            return "the category does not load once the failure is over";
        if (!life.set().isLoaded() && !life.set().initData(m_shape.category) && !life.set().loadData(m_shape.category))
            return "the file cannot be created once the failure is over";
        if (!life.set().isLoaded() && !life.set().loadData(m_shape.category))
            return "the created file does not load";
        // What failed goes with the next store.
        static_cast<void>(life.set().settle());
        return life.set().storeRecord(storedRecord(), LATER_STORE) && life.set().settle()
                   ? ""
                   : "a store fails once the failure is over";
    }

    std::string check(bool stored, bool hasRecords) const {
        Life life(m_shape);
        if (!life.set().boot())
            return m_before || stored ? "the category does not load" : "";
        life.end();
        const std::optional<std::string> contents = contentsAt(m_shape.current());
        if (!contents)
            return "after the load the current copy is not good";
        const ContentPointer factory = m_root.readFile(m_shape.factory());
        const auto factoryBefore = m_disk.find(m_shape.factory());
        if (factoryBefore != m_disk.end() && (factory == nullptr || factory->bytes != factoryBefore->second->bytes))
            return "the factory copy is not what it was";
        if (m_backup && !isAllowedInBackup(contentsAt(m_shape.backup()), stored))
            return "the backup is damaged, or gone: " + firstWrong(contentsAt(m_shape.backup()).value_or(""), stored);
        const std::string kept = sectionOf(m_layout, storedRecord(), valuesOf(m_layout, LATER_STORE, storedRecord()));
        if (stored && sectionIn(m_layout, *contents, storedRecord()) != kept)
            return "the store once the failure was over is lost";
        const bool isBackup = !hasRecords && m_backup && *contents == withStored(*m_backup, stored);
        return isBackup || isAllowed(*contents, stored)
                   ? ""
                   : "neither the old nor the new settings: " + firstWrong(*contents, stored);
    }

    /// Settings with what was stored once the failure was over.
    std::string withStored(std::string contents, bool stored) const {
        if (!stored)
            return contents;
        const std::string section =
            sectionOf(m_layout, storedRecord(), valuesOf(m_layout, LATER_STORE, storedRecord()));
        return contents.replace(static_cast<std::size_t>(storedRecord()) * section.size(), section.size(), section);
    }
    bool isAllowed(const std::string& contents, bool stored) const {
        const bool isOld = m_before && contents == withStored(*m_before, stored);
        const bool isNew = m_after && contents == withStored(*m_after, stored);
        const bool mayBeMixed = m_operation.steps[m_step].pieces != Step::Pieces::One;
        return isOld || isNew || (mayBeMixed && firstWrong(contents, stored).empty());
    }
    /// It is as it was, or one of the current copy.
    bool isAllowedInBackup(const std::optional<std::string>& contents, bool stored) const {
        if (!contents && m_operation.steps[m_step].removesBackup)
            return m_root.readFile(m_shape.backup()) == nullptr;
        return contents && (contents == m_backup || isAllowed(*contents, false) || isAllowed(*contents, stored));
    }
    std::string firstWrong(const std::string& contents, bool stored) const {
        for (int record = 0; record < m_layout.recordCount(); ++record) {
            std::string section = sectionIn(m_layout, contents, record);
            const bool isOld = m_before && section == sectionIn(m_layout, *m_before, record);
            const bool isNew = m_after && section == sectionIn(m_layout, *m_after, record);
            if (!isOld && !isNew && !(stored && record == storedRecord()))
                return section;
        }
        return "";
    }

    int storedRecord() const { return m_layout.recordCount() / 2; }

    const Operation& m_operation;
    const Shape& m_shape;
    const CategoryLayout& m_layout;
    const std::size_t m_step;
    const Tree m_disk;
    const std::optional<std::string> m_backup; ///< if there was a good one
    const MemoryRoot m_root;
    std::optional<std::string> m_before;
    std::optional<std::string> m_after;
    std::string m_case;
    int m_runs = 0;
    bool m_hasStruck = false;
};

class FailureTest : public testing::TestWithParam<Cell> {
protected:
    /// The operation's own steps; in a sample the first one only.
    std::vector<std::size_t> steps() const {
        std::vector<std::size_t> all;
        for (std::size_t i = 0; i < GetParam().operation->steps.size(); ++i) {
            if (GetParam().operation->steps[i].role == Step::Role::Own && (all.empty() || options().isFull))
                all.push_back(i);
        }
        return all;
    }
    using Condition = bool (*)(const FailingOperation&);
    static bool always(const FailingOperation&) { return true; }

    /// Tries the numbers from `first` on, all or a sample of them.
    void run(Failure& failure, FileWatcher& watcher, int first, bool all, Condition mustStrike) {
        for (const std::size_t step : steps()) {
            FailingOperation operation(GetParam(), step);
            const int stride = strideFor(operation.usesOf(failure, watcher), all);
            for (const bool forEver : {false, true}) {
                for (const std::string& fault : operation.run(failure, watcher, forEver, first, stride))
                    ADD_FAILURE() << fault;
            }
            m_runs += operation.runs();
            EXPECT_TRUE(operation.hasStruck() || !mustStrike(operation))
                << GetParam().operation->name << ": " << failure.name();
        }
    }
    int strideFor(int uses, bool all) const {
        if (GetParam().shape->isLarge())
            return std::max(all ? 1 : SAMPLE_STRIDE, uses / (options().isFull ? MOST_LARGE_FULL : MOST_LARGE_SAMPLES));
        return all ? 1 : std::max(SAMPLE_STRIDE, uses / MOST_SAMPLES);
    }
    void TearDown() override { std::printf("%d runs\n", m_runs); }

    int m_runs = 0;
    FileWatcher m_nobody;
};

TEST_P(FailureTest, OfFileCalls) {
    struct Kind {
        FailingCalls::Kind kind;
        int error;
        const char* name;
    };
    constexpr Kind KINDS[] = {{FailingCalls::Error, ENOSPC, "no space"},
                              {FailingCalls::Error, EIO, "an input/output error"},
                              {FailingCalls::Error, EMFILE, "too many open files"},
                              {FailingCalls::Error, EACCES, "no permission"},
                              {FailingCalls::Error, EROFS, "a read-only file system"},
                              {FailingCalls::Partial, 0, "a partial write"},
                              {FailingCalls::PartialThenFull, 0, "a partial write, then no space"},
                              {FailingCalls::PartialThenFullWithoutRecord, 0,
                               "no space for a redo record and a partial write, then no space"}};
    int first = 1;
    for (const Kind& kind : KINDS) {
        FailingCalls calls(kind.kind, kind.error, kind.name);
        // In a sample each number meets one of the errors, and the writes, being few, all.
        const bool all = options().isFull || kind.kind != FailingCalls::Error;
        run(
            calls, calls, all ? 1 : first++, all,
            kind.kind == FailingCalls::Error ? always : [](const FailingOperation& o) { return o.changesSettings(); });
    }
}

TEST_P(FailureTest, OfAllocations) {
    Scarce memory(memoryShortage(), "no memory");
    run(memory, m_nobody, 1, options().isFull, always);
}

TEST_P(FailureTest, OfThreadCreation) {
    Scarce threads(threadShortage(), "no thread");
    run(threads, m_nobody, 1, true, [](const FailingOperation& operation) { return operation.startsTheSet(); });
}

INSTANTIATE_TEST_SUITE_P(Cells, FailureTest, testing::ValuesIn(failureCells()), nameOfCell);

} // namespace
} // namespace td::test
