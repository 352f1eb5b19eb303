#include "PowerCutMatrix.h"

#include <algorithm>
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
    std::vector<std::string> backups;
};

/// What the recorded operation did.
struct Recording {
    struct Mark {
        std::size_t events; ///< done at the end of the step
        std::optional<std::string> contents;
        Step::Role role; ///< of the step
    };
    Tree start;
    std::vector<DiskEvent> events;
    std::vector<Mark> marks; ///< the first stands for the beginning
    std::vector<std::string> backups;
    std::string fault;
};

class Cell {
public:
    Cell(const Operation& operation, const Shape& shape, const CellEffort& effort)
        : m_operation(operation), m_shape(shape), m_layout(shape.layout()), m_effort(effort) {}

    CellResult run() {
        const Recording recording = record();
        if (!recording.fault.empty()) {
            m_result.faults.push_back(recording.fault);
            return m_result;
        }
        for (std::size_t step = 1; step < recording.marks.size(); ++step) {
            if (recording.marks[step].role != Step::Role::Preparation)
                cutStep(recording, step);
        }
        return m_result;
    }

private:
    Recording record() {
        Recording recording;
        recording.start = m_operation.disk(m_shape);
        m_root.write(recording.start);
        DiskRecorder recorder(recording.start, LOCK_DIRECTORY);
        recording.marks.push_back({0, m_operation.before(m_layout), Step::Role::Preparation});
        noteBackup(recording, recording.start);
        {
            const WatchedFiles watched(m_root.path(), recorder);
            Life life(m_shape);
            for (const Step& step : m_operation.steps) {
                if (!step.act(life)) {
                    recording.fault = std::string(step.name) + " failed";
                    return recording;
                }
                const Unwatched unwatched;
                const Tree tree = m_root.read();
                recording.marks.push_back({recorder.events().size(), contentsIn(tree, m_shape.current()), step.role});
                noteBackup(recording, tree);
            }
            life.end();
        }
        recording.events = recorder.events();
        recording.marks.push_back({recording.events.size(), recording.marks.back().contents, Step::Role::Own});
        recording.fault = modelError(recording);
        return recording;
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
            m_result.faults.push_back("after the step there is no good current copy");
            return;
        }
        const auto cut = [&](std::size_t first, std::size_t last, const Promise& promise, Loss& worst) {
            const CutRange range{first, last, LOCK_DIRECTORY};
            m_result.states += forEachCut(recording.start, recording.events, range, m_effort.first,
                                          [&](const CutState& state) { checkState(state, promise, worst); });
        };
        if (after.events == before.events)
            return;
        cut(before.events, after.events - 1, {before.contents, after.contents, recording.backups},
            after.role == Step::Role::Own ? m_result.during : m_result.later);
        // Even what is still pending when the step has returned must not take it back.
        cut(after.events, after.events, {before.contents, after.contents, recording.backups}, m_result.after);
    }

    void checkState(const CutState& state, const Promise& promise, Loss& worst) {
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

    void check(const Tree& tree, const Promise& promise, Loss& worst, const std::string& state,
               std::vector<DiskEvent>* events) {
        m_root.write(tree);
        const std::string fault = loadAndCompare(tree, promise, worst, events);
        if (!fault.empty())
            m_result.faults.push_back(fault + "\n" + state);
    }

    /// Starts from what the cut left. Empty, or what is wrong with it.
    std::string loadAndCompare(const Tree& tree, const Promise& promise, Loss& worst, std::vector<DiskEvent>* events) {
        Life life(m_shape);
        if (!boot(life, tree, events))
            return promise.before ? "the category does not load" : "";
        const std::optional<std::string> contents = contentsAt(m_shape.current());
        if (!contents)
            return "after the load the current copy is not good";
        if (contentsIn(tree, m_shape.factory()) != contentsAt(m_shape.factory()))
            return "the load changed the factory copy";
        const std::optional<Loss> loss = lossOf(*contents, promise);
        if (!loss)
            return "a record is neither old nor new: " + firstWrong(*contents, promise);
        worst = std::max(worst, *loss);
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
        for (const DiskEvent& event : recorder.events()) {
            const bool changes =
                event.kind != DiskEvent::Kind::Sync && event.text.find(LOCK_DIRECTORY) == std::string::npos;
            if (changes) {
                *events = recorder.events();
                break;
            }
        }
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
        if (contents == promise.before)
            return Loss::LastStore;
        if (promise.before && firstWrong(contents, promise).empty())
            return Loss::LastStore;
        if (std::find(promise.backups.begin(), promise.backups.end(), contents) != promise.backups.end())
            return Loss::LastBackup;
        return std::nullopt;
    }

    /// The first record that is neither old nor new.
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
