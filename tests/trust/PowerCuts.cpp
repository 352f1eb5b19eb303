#include "PowerCuts.h"

#include <algorithm>
#include <map>
#include <random>
#include <set>
#include <unordered_set>
#include <utility>

#include "fileOperator/text/TextLayout.h"

namespace td::test {
namespace {

using Random = std::mt19937_64;
using Fates = std::vector<Fate>;

constexpr std::size_t SECTOR = 512;
/// Writes up to this length are torn behind every byte.
constexpr std::size_t SMALL_WRITE = 64;
constexpr std::size_t MOST_TEARS = 16;
constexpr int SUMMARY_LINES = 4;

const Fate LOST{Fate::Kind::Lost};
const Fate DONE{Fate::Kind::Done};

std::size_t below(Random& random, std::size_t limit) {
    return static_cast<std::size_t>(random() % limit);
}

/// The ends of the lines of a settings file's summary: up to there a file may be taken for a whole one.
void addSummaryLines(const std::string& bytes, std::vector<std::size_t>& tears) {
    const std::size_t summary = bytes.find(text::SUMMARY_HEADER);
    if (summary == std::string::npos)
        return;
    std::size_t end = bytes.find('\n', summary);
    for (int line = 0; line < SUMMARY_LINES && end != std::string::npos && end + 1 < bytes.size(); ++line) {
        tears.push_back(end + 1);
        end = bytes.find('\n', end + 1);
    }
}

/// Where a write may be torn.
std::vector<std::size_t> tearsOf(const DiskEvent& write, Random& random) {
    const std::size_t size = write.bytes.size();
    std::vector<std::size_t> tears;
    if (size <= SMALL_WRITE) {
        for (std::size_t i = 1; i < size; ++i)
            tears.push_back(i);
        return tears;
    }
    for (std::size_t sector = (write.offset / SECTOR + 1) * SECTOR; sector < write.offset + size; sector += SECTOR)
        tears.push_back(sector - write.offset);
    std::shuffle(tears.begin(), tears.end(), random);
    tears.resize(std::min(tears.size(), MOST_TEARS / 2));
    tears.insert(tears.end(), {1, size / 2, size - 1});
    addSummaryLines(write.bytes, tears);
    while (tears.size() < MOST_TEARS)
        tears.push_back(1 + below(random, size - 1));
    return tears;
}

/// The ways in which a write may be there in part.
Fates tornFates(const DiskModel& model, const DiskEvent& write, Random& random) {
    Fates fates;
    if (write.kind != DiskEvent::Kind::Write)
        return fates;
    const std::size_t size = write.bytes.size();
    const bool grows = write.offset + size > model.sureSize(write.node);
    const std::vector<Fate::Growth> growths =
        grows ? std::vector{Fate::Growth::Zeros, Fate::Growth::Stale} : std::vector<Fate::Growth>{};
    for (const std::size_t tear : tearsOf(write, random)) {
        fates.push_back({Fate::Kind::Torn, {0, tear}});
        fates.push_back({Fate::Kind::Torn, {tear, size}});
        for (const Fate::Growth growth : growths)
            fates.push_back({Fate::Kind::Torn, {0, tear}, growth});
    }
    for (const Fate::Growth growth : growths)
        fates.push_back({Fate::Kind::Torn, {0, 0}, growth});
    const std::size_t third = size / 3;
    if (third > 0)
        fates.push_back({Fate::Kind::Holed, {third, 2 * third}, grows ? Fate::Growth::Stale : Fate::Growth::None});
    if (size > 2)
        fates.push_back({Fate::Kind::Holed, {1, size - 1}, grows ? Fate::Growth::Zeros : Fate::Growth::None});
    return fates;
}

Fate randomFate(const DiskModel& model, const DiskEvent& event, Random& random) {
    switch (below(random, 4)) {
    case 0:
        return LOST;
    case 1: {
        const Fates torn = tornFates(model, event, random);
        return torn.empty() ? DONE : torn[below(random, torn.size())];
    }
    default:
        return DONE;
    }
}

/// The subset with the given number, one bit per change.
Fates subset(std::size_t number, std::size_t count) {
    Fates fates(count);
    for (std::size_t i = 0; i < count; ++i)
        fates[i] = (number >> i & 1U) != 0 ? DONE : LOST;
    return fates;
}

/// All that is done in order up to some change, and all that lacks or has one change only.
void addOrdered(std::size_t count, std::vector<Fates>& all) {
    for (std::size_t i = 0; i < count; ++i) {
        Fates upTo(count, LOST);
        std::fill_n(upTo.begin(), i + 1, DONE);
        all.push_back(std::move(upTo));
        Fates only(count, LOST);
        only[i] = DONE;
        all.push_back(std::move(only));
        Fates allBut(count, DONE);
        allBut[i] = LOST;
        all.push_back(std::move(allBut));
    }
}

void addTorn(const DiskModel& model, std::vector<Fates>& all, Random& random) {
    const std::vector<Fates> whole = all;
    for (std::size_t i = 0; i < model.pending().size(); ++i) {
        for (const Fate& torn : tornFates(model, model.pending()[i], random)) {
            for (Fates fates : whole) {
                fates[i] = torn;
                all.push_back(std::move(fates));
            }
        }
    }
}

void addRandom(const DiskModel& model, std::size_t most, std::vector<Fates>& all, Random& random) {
    const std::vector<DiskEvent>& pending = model.pending();
    for (std::size_t i = 0; i < most; ++i) {
        // Half of them keep to the order up to some change.
        const std::size_t inOrder = i % 2 == 0 ? 0 : below(random, pending.size());
        Fates fates(pending.size(), DONE);
        for (std::size_t change = inOrder; change < pending.size(); ++change)
            fates[change] = randomFate(model, pending[change], random);
        all.push_back(std::move(fates));
    }
}

/// What may have become of the pending changes; first the two plain answers: all done, all lost.
std::vector<Fates> combinations(const DiskModel& model, const CutEffort& effort, std::uint64_t seed) {
    Random random(seed);
    const std::size_t count = model.pending().size();
    std::vector<Fates> all{Fates(count, DONE)};
    if (count == 0)
        return all;
    all.emplace_back(count, LOST);
    if (count <= effort.exhaustive) {
        for (std::size_t number = 1; number + 1 < std::size_t{1} << count; ++number)
            all.push_back(subset(number, count));
    } else if (count <= effort.ordered) {
        addOrdered(count, all);
    }
    if (count <= effort.exhaustive / 2)
        addTorn(model, all, random);
    else
        addRandom(model, effort.randomPerCut, all, random);
    return all;
}

Tree without(const Tree& tree, const std::string& directory) {
    Tree result = tree;
    for (auto entry = result.begin(); entry != result.end();) {
        if (entry->first.compare(0, directory.size(), directory) == 0)
            entry = result.erase(entry);
        else
            ++entry;
    }
    return result;
}

std::string textOf(const Fate& fate, std::size_t size) {
    if (fate.kind == Fate::Kind::Lost)
        return "lost: ";
    if (fate.kind == Fate::Kind::Done)
        return "done: ";
    const char* const growth = fate.growth == Fate::Growth::Zeros   ? " and the length"
                               : fate.growth == Fate::Growth::Stale ? " and the length, over old bytes,"
                                                                    : "";
    return (fate.kind == Fate::Kind::Holed ? "all but bytes " : "bytes ") + std::to_string(fate.part.begin) + " to " +
           std::to_string(fate.part.end) + " of " + std::to_string(size) + growth + " done: ";
}

} // namespace

std::string CutState::text() const {
    std::string text = "cut after " + std::to_string(events) + " events\n";
    for (std::size_t i = 0; i < pending.size(); ++i)
        text += "  " + textOf(fates[i], pending[i].bytes.size()) + pending[i].text + "\n";
    return text;
}

namespace {

/// Replays the events and hands out the states of the chosen combinations; no choice stands for all.
class CutWalk {
public:
    /// Numbers of combinations by events done.
    using Choice = std::map<std::size_t, std::set<std::size_t>>;

    CutWalk(const Tree& start, const std::vector<DiskEvent>& events, const CutRange& range, const CutEffort& effort)
        : m_start(start), m_events(events), m_range(range), m_effort(effort) {}

    void walk(const Choice* choice, const std::function<void(CutState)>& visit) const {
        // The same tree is another state in the next range, where something else is promised.
        std::unordered_set<std::size_t> known;
        forEachPoint([&](std::size_t done, const DiskModel& model, std::vector<Fates>& all) {
            for (std::size_t i = 0; i < all.size(); ++i) {
                if (choice != nullptr && (choice->count(done) == 0 || choice->at(done).count(i) == 0))
                    continue;
                Tree tree = model.treeAfterCut(all[i]);
                if (known.insert(fingerprint(without(tree, m_range.leftOut))).second)
                    visit({done, std::move(tree), model.pending(), std::move(all[i])});
            }
        });
    }

    /// At random, the plain combinations with preference.
    Choice choose(std::size_t most, Random& random) const {
        using Pick = std::pair<std::size_t, std::size_t>;
        std::vector<Pick> plain;
        std::vector<Pick> others;
        forEachPoint([&](std::size_t done, const DiskModel&, const std::vector<Fates>& all) {
            for (std::size_t i = 0; i < all.size(); ++i)
                (i < 2 ? plain : others).emplace_back(done, i);
        });
        std::shuffle(plain.begin(), plain.end(), random);
        std::shuffle(others.begin(), others.end(), random);
        plain.resize(std::min(plain.size(), most));
        others.resize(std::min(others.size(), 2 * most));
        Choice choice;
        for (const auto& picks : {plain, others}) {
            for (const auto& [done, number] : picks)
                choice[done].insert(number);
        }
        return choice;
    }

private:
    template <class Action>
    void forEachPoint(Action action) const {
        DiskModel model(m_start);
        for (std::size_t done = 0; done <= m_range.last; ++done) {
            if (done > 0)
                model.apply(m_events[done - 1]);
            if (done < m_range.first)
                continue;
            std::vector<Fates> all = combinations(model, m_effort, m_effort.seed * 1000003U + done);
            action(done, model, all);
        }
    }

    const Tree& m_start;
    const std::vector<DiskEvent>& m_events;
    const CutRange& m_range;
    const CutEffort& m_effort;
};

} // namespace

std::size_t forEachCut(const Tree& start, const std::vector<DiskEvent>& events, const CutRange& range,
                       const CutEffort& effort, const std::function<void(const CutState&)>& visit) {
    const CutWalk walk(start, events, range, effort);
    std::size_t visited = 0;
    if (effort.mostStates == 0) {
        walk.walk(nullptr, [&](const CutState& state) {
            visit(state);
            ++visited;
        });
        return visited;
    }
    Random random(effort.seed);
    const CutWalk::Choice choice = walk.choose(effort.mostStates, random);
    std::vector<CutState> states;
    walk.walk(&choice, [&](CutState state) { states.push_back(std::move(state)); });
    std::shuffle(states.begin(), states.end(), random);
    if (states.size() > effort.mostStates)
        states.erase(states.begin() + static_cast<std::ptrdiff_t>(effort.mostStates), states.end());
    for (const CutState& state : states)
        visit(state);
    return states.size();
}

} // namespace td::test
