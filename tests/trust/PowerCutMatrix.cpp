#include "PowerCutMatrix.h"

#include <algorithm>
#include <cerrno>
#include <optional>
#include <utility>

#include "FileCalls.h"

namespace td::test {
namespace {

constexpr std::size_t MOST_FAULTS = 3;

/// What may be loaded after a cut between two states of the settings.
struct Promise {
    std::optional<std::string> before;
    std::optional<std::string> after;
    /// Before that, if the step before left it pending.
    std::optional<std::string> longBefore;
    std::vector<std::string> backups;
    Step::Pieces pieces;
};

/// What the recorded operation did.
struct Recording {
    struct Mark {
        std::size_t events; ///< done at the end of the step
        std::optional<std::string> contents;
        Step::Role role; ///< of the step
        Step::Pieces pieces = Step::Pieces::One;
        Trouble trouble = Trouble::None;
    };
    Tree start;
    std::vector<DiskEvent> events;
    std::vector<Mark> marks; ///< the first stands for the beginning
    std::vector<std::string> backups;
    std::string fault;
};

/// Records what happens on the disk, trouble included.
class TroubledRecorder final : public DiskRecorder {
public:
    using DiskRecorder::DiskRecorder;

    /// From the call with this number on, of those that are concerned. Nothing may be running.
    void begin(Trouble trouble, int number) {
        m_trouble = trouble;
        m_number = number;
        m_calls = 0;
    }
    /// Whether it was met.
    bool end() {
        m_trouble = Trouble::None;
        return m_calls >= m_number;
    }

    Verdict asked(FileCall call, const std::string& path) override {
        if (!isConcerned(call, path))
            return {m_trouble == Trouble::Killed && m_calls >= m_number ? EIO : 0, false};
        const bool isReached = ++m_calls >= m_number;
        switch (m_trouble) {
        case Trouble::Killed:
            return {isReached ? EIO : 0, false}; // The dead leave the disk as it is.
        case Trouble::FailedSync:
            if (m_calls != m_number)
                return {};
            failedSync(path);
            return {EIO, false};
        case Trouble::NoRecord:
            return {ENOSPC, false};
        case Trouble::None:
            break;
        }
        return {};
    }

private:
    bool isConcerned(FileCall call, const std::string& path) const {
        switch (m_trouble) {
        case Trouble::Killed:
            return call == FileCall::Write || call == FileCall::Truncate || call == FileCall::Sync ||
                   call == FileCall::Rename || call == FileCall::Remove || call == FileCall::MakeDirectory;
        case Trouble::FailedSync:
            return call == FileCall::Sync;
        case Trouble::NoRecord:
            return call == FileCall::Write && isRedoRecord(path);
        case Trouble::None:
            break;
        }
        return false;
    }

    // Under the lock of the file calls while they are watched, and set only while nothing is running.
    Trouble m_trouble = Trouble::None;
    int m_number = 1;
    int m_calls = 0;
};

/// Whether an event changes a settings file or a directory of settings files.
bool changesSettings(const DiskEvent& event) {
    return event.kind != DiskEvent::Kind::Sync && event.text.find(LOCK_DIRECTORY) == std::string::npos;
}

class Cell {
public:
    Cell(const Operation& operation, const Shape& shape, const CellEffort& effort)
        : m_operation(operation), m_shape(shape), m_layout(shape.layout()), m_effort(effort) {}

    CellResult run() {
        const bool isCounted = m_operation.trouble() == Trouble::Killed || m_operation.trouble() == Trouble::FailedSync;
        bool isMet = true;
        for (int number = 1; isMet && m_result.faults.empty(); ++number) {
            const Recording recording = record(number, isMet);
            m_trouble = isCounted ? "number " + std::to_string(number) + " in " + m_operation.name + ", " : "";
            if (isMet || number == 1)
                cutAll(recording);
            isMet = isMet && isCounted;
        }
        if (m_result.states == 0)
            m_result.faults.emplace_back("there is no state that a cut could leave");
        return m_result;
    }

private:
    void cutAll(const Recording& recording) {
        if (!recording.fault.empty()) {
            m_result.faults.push_back(m_trouble + recording.fault);
            return;
        }
        const auto factory = recording.start.find(m_shape.factory());
        m_factory = factory != recording.start.end() ? factory->second : nullptr;
        for (std::size_t step = 1; step < recording.marks.size(); ++step) {
            if (recording.marks[step].role != Step::Role::Preparation)
                cutStep(recording, step);
        }
    }

    /// Whether the step's trouble was met is true where there is none.
    Recording record(int number, bool& isMet) {
        isMet = true;
        Recording recording;
        recording.start = m_operation.disk(m_shape);
        m_root.write(recording.start);
        TroubledRecorder recorder(recording.start, LOCK_DIRECTORY);
        recording.marks.push_back({0, m_operation.before(m_layout), Step::Role::Preparation});
        noteBackup(recording, recording.start);
        {
            const WatchedFiles watched(m_root.path(), recorder);
            Life life(m_shape);
            for (const Step& step : m_operation.steps) {
                recorder.begin(step.trouble, number);
                const bool hasSucceeded = step.act(life);
                if (step.trouble == Trouble::Killed)
                    life.end();
                const bool wasMet = recorder.end();
                isMet = isMet && (step.trouble == Trouble::None || wasMet);
                const bool mayFail = step.trouble == Trouble::Killed || step.trouble == Trouble::FailedSync;
                recording.fault = hasSucceeded || mayFail ? "" : std::string(step.name) + " failed";
                if (!recording.fault.empty())
                    return recording;
                const Unwatched unwatched;
                const Tree tree = m_root.read();
                std::optional<std::string> contents = contentsIn(tree, m_shape.current());
                if (step.trouble == Trouble::Killed || (mayFail && !contents))
                    contents = recording.marks.back().contents;
                recording.fault = changeError(step, recorder.events(), recording.marks.back().events);
                recording.marks.push_back({recorder.events().size(), contents, step.role, step.pieces, step.trouble});
                noteBackup(recording, tree);
            }
            life.end();
        }
        recording.events = recorder.events();
        recording.marks.push_back({recording.events.size(), recording.marks.back().contents, Step::Role::Own});
        if (recording.fault.empty())
            recording.fault = modelError(recording);
        return recording;
    }

    /// A step that writes nothing where it should shows nothing.
    std::string changeError(const Step& step, const std::vector<DiskEvent>& events, std::size_t first) const {
        const bool mayChangeNothing =
            m_operation.changesNothing || step.role != Step::Role::Own || m_operation.trouble() == Trouble::Killed;
        const auto begin = events.begin() + static_cast<std::ptrdiff_t>(first);
        return mayChangeNothing || std::any_of(begin, events.end(), changesSettings)
                   ? ""
                   : std::string(step.name) + " changed nothing";
    }

    /// Empty if the recorded events really lead to the files that are there.
    std::string modelError(const Recording& recording) const {
        DiskModel model(recording.start);
        for (const DiskEvent& event : recording.events)
            model.apply(event);
        const std::string error = difference(model.tree(), m_root.read());
        return error.empty() ? "" : "a change of the disk was not seen: " + error;
    }

    std::optional<std::string> contentsIn(const Tree& tree, const std::string& path) const {
        const auto found = tree.find(path);
        return found == tree.end() ? std::nullopt : verifiedContents(m_layout, found->second);
    }

    std::optional<std::string> contentsAt(const std::string& path) const {
        return verifiedContents(m_layout, m_root.readFile(path));
    }

    void noteBackup(Recording& recording, const Tree& tree) const {
        const std::optional<std::string> contents = contentsIn(tree, m_shape.backup());
        if (contents)
            recording.backups.push_back(*contents);
    }

    void cutStep(const Recording& recording, std::size_t step) {
        const Recording::Mark& before = recording.marks[step - 1];
        const Recording::Mark& after = recording.marks[step];
        if (!after.contents) {
            m_result.faults.push_back(m_trouble + "after the step there is no good current copy");
            return;
        }
        Promise promise{before.contents, after.contents, {}, recording.backups, after.pieces};
        const bool isAfterStart = step >= 2 && recording.marks[step - 2].trouble == Trouble::Killed;
        if (before.trouble == Trouble::FailedSync || isAfterStart)
            promise.longBefore = recording.marks[step - 2].contents;
        const auto cut = [&](std::size_t first, std::size_t last, Worst& worst) {
            const CutRange range{first, last, LOCK_DIRECTORY};
            m_result.states += forEachCut(recording.start, recording.events, range, m_effort.first,
                                          [&](const CutState& state) { checkState(state, promise, worst); });
        };
        if (after.events == before.events)
            return;
        Worst& during = after.role == Step::Role::Own ? m_result.during : m_result.later;
        cut(before.events, after.events - 1, during);
        // Even what is still pending when the step has returned must not take it back, if it was done: a failed store
        // was not, nor was what a process did that was killed, though the next one finds it.
        const bool isDone = after.trouble != Trouble::FailedSync && before.trouble != Trouble::Killed;
        cut(after.events, after.events, isDone ? m_result.after : during);
    }

    void checkState(const CutState& state, const Promise& promise, Worst& worst) {
        if (m_result.faults.size() >= MOST_FAULTS)
            return;
        const bool cutAgain = ++m_checked % m_effort.secondEvery == 0;
        std::vector<DiskEvent> events;
        check(state.tree, promise, worst, state.text(), cutAgain ? &events : nullptr);
        if (events.empty())
            return;
        const CutRange range{0, events.size(), LOCK_DIRECTORY};
        m_result.secondStates += forEachCut(state.tree, events, range, m_effort.second, [&](const CutState& second) {
            if (m_result.faults.size() < MOST_FAULTS)
                check(second.tree, promise, worst, state.text() + "then " + second.text(), nullptr);
        });
    }

    void check(const Tree& tree, const Promise& promise, Worst& worst, const std::string& state,
               std::vector<DiskEvent>* events) {
        m_root.write(tree);
        Loss loss = Loss::Nothing;
        const std::string fault = loadAndCompare(tree, promise, loss, events);
        if (loss > worst.loss)
            worst = {loss, m_trouble + state};
        if (!fault.empty())
            m_result.faults.push_back(fault + "\n" + m_trouble + state);
    }

    /// Starts from what the cut left. Empty, or what is wrong with it.
    std::string loadAndCompare(const Tree& tree, const Promise& promise, Loss& found, std::vector<DiskEvent>* events) {
        Life life(m_shape);
        if (!boot(life, tree, events))
            return promise.before ? "the category does not load" : "";
        const std::optional<std::string> contents = contentsAt(m_shape.current());
        if (!contents)
            return "after the load the current copy is not good";
        const ContentPointer factory = m_root.readFile(m_shape.factory());
        if (m_factory != nullptr && (factory == nullptr || factory->bytes != m_factory->bytes))
            return "the factory copy is not what it was";
        const std::optional<Loss> loss = lossOf(*contents, promise);
        if (!loss)
            return "neither the old nor the new settings: " + firstWrong(*contents, promise);
        found = *loss;
        for (const int record : {0, m_layout.recordCount() / 2, m_layout.recordCount() - 1}) {
            if (isInMemory(record) && !isInFile(life.set().recordInMemory(record), *contents, record))
                return "the table differs from the file";
        }
        return m_shape.isLarge() ? "" : storeLater(life, *contents);
    }

    bool boot(Life& life, const Tree& tree, std::vector<DiskEvent>* events) const {
        if (events == nullptr)
            return life.set().boot() && life.set().settle();
        DiskRecorder recorder(tree, LOCK_DIRECTORY);
        bool loaded = false;
        {
            const WatchedFiles watched(m_root.path(), recorder);
            loaded = life.set().boot() && life.set().settle();
        }
        if (std::any_of(recorder.events().begin(), recorder.events().end(), changesSettings))
            *events = recorder.events();
        return loaded;
    }

    /// A set in user state has one bin of the factory white balance in memory.
    bool isInMemory(int record) const {
        return m_shape.category != PICTURE_FACTORY_WB || indicesOf(m_layout, record)[0] == 0;
    }

    bool isInFile(const std::vector<int>& values, const std::string& contents, int record) const {
        return !values.empty() && sectionOf(m_layout, record, values) == sectionIn(m_layout, contents, record);
    }

    std::optional<Loss> lossOf(const std::string& contents, const Promise& promise) const {
        if (contents == promise.after)
            return Loss::Nothing;
        if (contents == promise.before || contents == promise.longBefore)
            return Loss::LastStore;
        if (promise.pieces == Step::Pieces::Records && promise.before && firstWrong(contents, promise).empty())
            return Loss::LastStore;
        if (std::find(promise.backups.begin(), promise.backups.end(), contents) != promise.backups.end())
            return Loss::LastBackup;
        return std::nullopt;
    }

    /// The first record that is neither old nor new, if there is one.
    std::string firstWrong(const std::string& contents, const Promise& promise) const {
        for (int record = 0; record < m_layout.recordCount(); ++record) {
            std::string section = sectionIn(m_layout, contents, record);
            const bool isOld = promise.before && section == sectionIn(m_layout, *promise.before, record);
            if (!isOld && section != sectionIn(m_layout, *promise.after, record))
                return section;
        }
        return "";
    }

    /// What is stored after the recovery is there after another start, and nothing else changed.
    std::string storeLater(Life& life, std::string contents) const {
        const int record = m_layout.recordCount() / 2;
        if (!life.set().storeRecord(record, LATER_STORE) || !life.set().settle())
            return "a later store failed";
        const std::string stored = sectionOf(m_layout, record, valuesOf(m_layout, LATER_STORE, record));
        contents.replace(static_cast<std::size_t>(record) * static_cast<std::size_t>(m_layout.sectionLength()),
                         stored.size(), stored);
        life.end();
        Life next(m_shape);
        if (!next.set().boot())
            return "the category does not load after a later store";
        next.end();
        return contentsAt(m_shape.current()) == contents ? "" : "a later store is not kept";
    }

    const Operation& m_operation;
    const Shape& m_shape;
    const CategoryLayout& m_layout;
    const CellEffort& m_effort;
    const MemoryRoot m_root;
    ContentPointer m_factory;
    std::string m_trouble; ///< which one, for messages
    CellResult m_result;
    std::size_t m_checked = 0;
};

} // namespace

const char* textOf(Loss loss) {
    switch (loss) {
    case Loss::Nothing:
        return "nothing";
    case Loss::LastStore:
        return "the last store not yet durable";
    case Loss::LastBackup:
        break;
    }
    return "back to the last backup";
}

std::ostream& operator<<(std::ostream& stream, const Worst& worst) {
    return stream << textOf(worst.loss) << '\n' << worst.state;
}

Loss lossOf(const std::string& text) {
    for (const Loss loss : {Loss::LastStore, Loss::LastBackup}) {
        if (text == textOf(loss))
            return loss;
    }
    return Loss::Nothing;
}

CellResult runCell(const Operation& operation, const Shape& shape, const CellEffort& effort) {
    return Cell(operation, shape, effort).run();
}

} // namespace td::test
