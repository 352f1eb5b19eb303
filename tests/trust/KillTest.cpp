// A process that stores is killed at random moments, again and again: what the next one finds is all that was stored up
// to some store which is not older than the last one waited for, and nothing else (invariant 7 of
// AbstractFileOperator.h).

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <map>
#include <memory>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>

#include <dataModule/platform/DebugOutput.h>

#include "fileOperator/OperatorFactory.h"
#include "OneCategorySet.h"
#include "Options.h"
#include "Watchdog.h"

namespace td::test {
namespace {

constexpr int PATIENCE_MILLISECONDS = 60000;
constexpr int KILLS = 300;
constexpr int FULL_KILLS = 5000;
/// A boot and a hundred stores.
constexpr unsigned LONGEST_LIFE_MICROSECONDS = 8000;
/// Of a category those that are stored; the others must stay as the factory made them.
constexpr int STORED_RECORDS = 5;
constexpr int NO_SERIES = -1;

/// By their places: small, wide columns, hexadecimal, without dimensions.
const std::vector<Shape>& smallShapes() {
    static const std::vector<Shape> some(shapes().begin(), shapes().begin() + 4);
    return some;
}

using Clock = std::chrono::steady_clock;

/// A record, by its shape's place and its number.
using Place = std::pair<int, int>;
/// The series that each record is of.
using Values = std::map<Place, int>;

/// What the process that is to be killed tells of; small enough for the pipe to take it in one piece.
struct Message {
    enum Kind { Found, Booted, Storing, Stored, Ended, Complaint };
    Kind kind = Booted;
    int shape = 0;
    int record = 0;
    int series = 0;
    std::array<char, 200> text{};
};

// --- the process that is killed ---

class SmallSet final : public FileDataSeparateManager {
public:
    ~SmallSet() override { stop(); }

protected:
    IFileOperator* makeOperator(_DataCategory_t category) override {
        const bool isOne = std::any_of(smallShapes().begin(), smallShapes().end(),
                                       [&](const Shape& shape) { return shape.category == category; });
        return isOne ? createOperator(category) : nullptr;
    }
};

class Victim {
public:
    Victim(int pipe, std::uint64_t seed) : m_pipe(pipe), m_random(seed) {
        DebugOutput::setLevel(DebugOutput::Level::Info);
        DebugOutput::setSink([this](DebugOutput::Level level, const char* line) { listen(level, line); });
        FileDataSeparateManager::setListening(false);
    }

    /// Stores until the end.
    [[noreturn]] void live() {
        if (!m_set.setTvType("TVTYPE01") || !m_set.init(DS_SCOPE_ALL))
            complain("could not start");
        m_set.loadAllData();
        tellWhatIsFound();
        tell({.kind = Message::Booted});
        while (true)
            storeSome();
    }

private:
    void tellWhatIsFound() {
        for (std::size_t shape = 0; shape < smallShapes().size(); ++shape) {
            for (int record = 0; record < smallShapes()[shape].layout().recordCount(); ++record)
                tell({.kind = Message::Found,
                      .shape = static_cast<int>(shape),
                      .record = record,
                      .series = seriesOf(smallShapes()[shape], record)});
        }
    }
    int seriesOf(const Shape& shape, int record) {
        const CategoryLayout& layout = shape.layout();
        std::vector<_Argument_t> args;
        for (const Field& field : layout.fields)
            args.push_back({field.argumentName(), NO_SERIES});
        if (!m_set.loadData(shape.category, indicesOf(layout, record), args))
            return NO_SERIES;
        for (int series = 0; series < 10; ++series) {
            const std::vector<int> values = valuesOf(layout, series, record);
            bool areEqual = true;
            for (std::size_t i = 0; i < args.size(); ++i)
                areEqual = areEqual && args[i].value == values[static_cast<std::size_t>(layout.fields[i].position)];
            if (areEqual)
                return series;
        }
        return NO_SERIES;
    }
    void storeSome() {
        for (int left = 1 + below(6); left > 0; --left)
            store(below(static_cast<int>(smallShapes().size())));
        if (below(2) == 0)
            return;
        if (!m_set.waitStored(PATIENCE_MILLISECONDS))
            complain("could not wait for the stores");
        tell({.kind = Message::Stored});
        if (below(4) == 0)
            m_set.backupData();
    }
    void store(int shape) {
        const CategoryLayout& layout = smallShapes()[static_cast<std::size_t>(shape)].layout();
        const int record = below(std::min(STORED_RECORDS, layout.recordCount()));
        const int series = 1 + below(8);
        std::vector<_Argument_t> args;
        for (const Field& field : layout.fields)
            args.push_back(
                {field.argumentName(), valuesOf(layout, series, record)[static_cast<std::size_t>(field.position)]});
        tell({.kind = Message::Storing, .shape = shape, .record = record, .series = series});
        if (!m_set.storeData(layout.category, indicesOf(layout, record), args))
            complain("could not store");
    }
    int below(int end) { return static_cast<int>(m_random() % static_cast<unsigned>(end)); }
    void listen(DebugOutput::Level level, const char* line) {
        // The stop-watch for log lines is shared: loads and stores at the same time may take its points out of order.
        if (std::strstr(line, "time point record is invalid") != nullptr)
            return;
        if (level <= DebugOutput::Level::Warning)
            complain(line);
        else if (std::strstr(line, "has been ended") != nullptr)
            tell({.kind = Message::Ended});
    }
    void complain(const char* text) {
        Message message{.kind = Message::Complaint};
        std::snprintf(message.text.data(), message.text.size(), "%s", text);
        tell(message);
    }
    void tell(const Message& message) {
        if (::write(m_pipe, &message, sizeof message) != static_cast<ssize_t>(sizeof message))
            _exit(EXIT_FAILURE);
    }

    const int m_pipe;
    std::mt19937_64 m_random;
    SmallSet m_set;
};

// --- the one that kills ---

/// What may be found after a kill.
class Expectation {
public:
    explicit Expectation(Values values) : m_stored(std::move(values)) {}

    void heard(const Message& message) {
        if (message.kind == Message::Storing)
            m_later.emplace_back(Place{message.shape, message.record}, message.series);
        if (message.kind == Message::Stored) {
            for (const auto& [place, series] : m_later)
                m_stored[place] = series;
            m_later.clear();
        }
    }
    /// Whether this is what had been stored after one of the stores from the last awaited one on; from now on this is
    /// what has been stored.
    bool allows(const Values& found) {
        Values candidate = m_stored;
        bool isOne = candidate == found;
        for (const auto& [place, series] : m_later) {
            candidate[place] = series;
            isOne = isOne || candidate == found;
        }
        m_stored = found;
        m_later.clear();
        return isOne;
    }
    std::string text(const Values& found) const {
        std::string text;
        for (const auto& [place, series] : found) {
            if (m_stored.at(place) != series)
                text += std::string(smallShapes()[static_cast<std::size_t>(place.first)].name) + " record " +
                        std::to_string(place.second) + ": series " + std::to_string(series) + " instead of " +
                        std::to_string(m_stored.at(place)) + "\n";
        }
        for (const auto& [place, series] : m_later)
            text += "stored afterwards: shape " + std::to_string(place.first) + " record " +
                    std::to_string(place.second) + " series " + std::to_string(series) + "\n";
        return text;
    }

private:
    Values m_stored;
    std::vector<std::pair<Place, int>> m_later;
};

class KillTest : public testing::Test {
protected:
    KillTest() {
        Tree tree = emptyDirectories();
        Values values;
        for (std::size_t shape = 0; shape < smallShapes().size(); ++shape) {
            const CategoryLayout& layout = smallShapes()[shape].layout();
            const auto file = std::make_shared<const Content>(fileOf(layout, contentsOf(layout, 0)));
            tree[smallShapes()[shape].current()] = file;
            tree[smallShapes()[shape].backup()] = file;
            tree[smallShapes()[shape].factory()] = file;
            for (int record = 0; record < layout.recordCount(); ++record)
                values[{static_cast<int>(shape), record}] = 0;
        }
        m_root.write(tree);
        m_expected = Expectation(values);
    }

    /// Lets a process boot and store, and kills it: at any moment, or when it has come to store. What it told until
    /// then.
    std::vector<Message> killOne(bool afterBoot) {
        int ends[2];
        if (pipe(ends) != 0)
            return {};
        const std::uint64_t seed = m_random();
        const pid_t process = fork();
        if (process == 0) {
            close(ends[0]);
            Victim(ends[1], seed).live();
        }
        close(ends[1]);
        std::vector<Message> messages;
        while (afterBoot && readMessage(ends[0], messages) && messages.back().kind != Message::Booted)
            continue;
        readUntil(Clock::now() + std::chrono::microseconds(m_random() % LONGEST_LIFE_MICROSECONDS), ends[0], messages);
        kill(process, SIGKILL);
        int status = 0;
        EXPECT_EQ(waitpid(process, &status, 0), process);
        EXPECT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == SIGKILL) << "it ended by itself: " << status;
        while (readMessage(ends[0], messages))
            continue;
        close(ends[0]);
        return messages;
    }
    /// A full pipe would have the process wait.
    static void readUntil(Clock::time_point end, int pipe, std::vector<Message>& messages) {
        while (true) {
            const auto left = std::chrono::duration_cast<std::chrono::nanoseconds>(end - Clock::now()).count();
            const timespec patience{0, static_cast<long>(std::max<std::int64_t>(left, 0))};
            pollfd readable{pipe, POLLIN, 0};
            if (left <= 0 || ppoll(&readable, 1, &patience, nullptr) <= 0 || !readMessage(pipe, messages))
                return;
        }
    }
    static bool readMessage(int pipe, std::vector<Message>& messages) {
        Message message;
        ssize_t count = 0;
        do
            count = read(pipe, &message, sizeof message);
        while (count < 0 && errno == EINTR);
        if (count != static_cast<ssize_t>(sizeof message))
            return false;
        messages.push_back(message);
        return true;
    }
    /// Whether all was as it should be.
    bool check(const std::vector<Message>& messages) {
        Values found;
        for (const Message& message : messages) {
            EXPECT_NE(message.kind, Message::Complaint) << message.text.data();
            if (message.kind == Message::Found)
                found[{message.shape, message.record}] = message.series;
            if (message.kind == Message::Booted) {
                const std::string difference = m_expected.text(found);
                EXPECT_TRUE(m_expected.allows(found)) << difference;
                ++m_boots;
            }
            m_ended += message.kind == Message::Ended ? 1 : 0;
            m_expected.heard(message);
        }
        return !HasFailure();
    }

    MemoryRoot m_root;
    std::mt19937_64 m_random{options().seed};
    Expectation m_expected{Values()};
    int m_boots = 0;
    int m_ended = 0;
};

TEST_F(KillTest, FindsWhatWasStoredAndNothingElse) {
    const int kills = options().kills > 0 ? options().kills : (options().isFull ? FULL_KILLS : KILLS);
    for (int number = 1; number <= kills; ++number) {
        const Watchdog watchdog("kill " + std::to_string(number));
        SCOPED_TRACE("kill " + std::to_string(number) + " with --seed=" + std::to_string(options().seed));
        // Half of them are killed in whatever a boot does, the others while they store.
        if (!check(killOne(m_random() % 2 == 0)))
            break;
    }
    check(killOne(true));
    std::printf("%d kills with --seed=%llu; %d processes came to store, %d found a store that was cut short\n", kills,
                static_cast<unsigned long long>(options().seed), m_boots, m_ended);
    EXPECT_GT(m_boots, 0);
    if (options().isFull) {
        EXPECT_GT(m_ended, 0) << "no process was killed within a store";
    }
    const Tree tree = m_root.read();
    for (const Shape& shape : smallShapes()) {
        EXPECT_TRUE(verifiedContents(shape.layout(), tree.at(shape.factory()))) << shape.name;
        EXPECT_TRUE(verifiedContents(shape.layout(), tree.at(shape.backup()))) << shape.name;
    }
}

} // namespace
} // namespace td::test
