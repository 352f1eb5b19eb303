// watch: prints changes of fields as they reach the files of the current directory.
#include <cerrno>
#include <charconv>
#include <chrono>
#include <climits>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <map>
#include <set>
#include <string>
#include <vector>

#include <poll.h>
#include <sys/inotify.h>
#include <sys/signalfd.h>
#include <unistd.h>

#include <fmt/chrono.h>
#include <fmt/core.h>

#include "FileTable.h"
#include "Names.h"
#include "Session.h"
#include "ui/Output.h"
#include "verbs/Verb.h"

namespace td::dmctl {

namespace {

using Clock = std::chrono::steady_clock;
/// A file that was not sound is read again after this time, if nothing else asks for it before.
constexpr auto READ_AGAIN = std::chrono::milliseconds(100);
/// A file that stays unsound for this time is told of.
constexpr auto UNSOUND = std::chrono::seconds(3);

class Descriptor {
public:
    Descriptor(int descriptor, const char* what) : m_descriptor(descriptor) {
        if (descriptor < 0)
            throw Failure(fmt::format("{}: {}", what, std::strerror(errno)));
    }
    ~Descriptor() { close(m_descriptor); }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    int get() const { return m_descriptor; }

private:
    const int m_descriptor;
};

/// From now on SIGINT and SIGTERM can be read instead of ending the process.
int openSignals() {
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, SIGINT);
    sigaddset(&signals, SIGTERM);
    sigprocmask(SIG_BLOCK, &signals, nullptr);
    return signalfd(-1, &signals, SFD_CLOEXEC);
}

std::string timeOfDay(const char* format) {
    timespec now{};
    clock_gettime(CLOCK_REALTIME, &now);
    std::tm local{};
    localtime_r(&now.tv_sec, &local);
    char text[64];
    const std::size_t length = std::strftime(text, sizeof text, format, &local);
    return fmt::format("{}.{:03d}", std::string(text, length), now.tv_nsec / 1000000);
}

class Watch {
public:
    Watch(const Session& session, const Options& options, const std::vector<const CategoryLayout*>& layouts, int most)
        : m_session(session), m_json(options.json), m_most(most), m_signals(openSignals(), "signals cannot be awaited"),
          m_notices(inotify_init1(IN_NONBLOCK | IN_CLOEXEC), "changes of files cannot be awaited") {
        for (const CategoryLayout* layout : layouts)
            m_layouts[layout->file] = layout;
    }

    /// Until a signal or the last change that was asked for.
    void run() {
        // The directory is watched first, so that no change falls between the first reading and the watching.
        const std::string& directory = m_session.directory(Copy::Current);
        if (inotify_add_watch(m_notices.get(), directory.c_str(),
                              IN_CLOSE_WRITE | IN_MOVED_TO | IN_MODIFY | IN_DELETE_SELF | IN_MOVE_SELF | IN_ONLYDIR) <
            0)
            throw Failure(fmt::format("{} cannot be watched: {}", directory, std::strerror(errno)));
        for (const auto& [file, layout] : m_layouts)
            m_tables[layout] = readTable(*layout, m_session.path(*layout, Copy::Current)).values;
        fmt::print(stderr, "dmctl watch: watching {} in {}\n", counted(m_layouts.size(), "file"), directory);
        std::fflush(stderr);
        while (!isDone() && awaitSomething())
            readUnread();
    }

private:
    bool isDone() const { return m_most > 0 && m_count >= m_most; }

    /// False when a signal asks to end.
    bool awaitSomething() {
        pollfd sources[] = {{m_signals.get(), POLLIN, 0}, {m_notices.get(), POLLIN, 0}};
        const int timeout = m_unread.empty() ? -1 : static_cast<int>(READ_AGAIN.count());
        if (poll(sources, 2, timeout) < 0 && errno != EINTR)
            throw Failure(fmt::format("waiting for changes failed: {}", std::strerror(errno)));
        if (sources[0].revents != 0)
            return false;
        if (sources[1].revents != 0)
            takeNotices();
        return true;
    }

    void takeNotices() {
        alignas(inotify_event) char buffer[16 * (sizeof(inotify_event) + NAME_MAX + 1)];
        ssize_t length = 0;
        while ((length = ::read(m_notices.get(), buffer, sizeof buffer)) > 0) {
            for (const char* at = buffer; at < buffer + length;) {
                const auto* const notice = reinterpret_cast<const inotify_event*>(at);
                take(*notice);
                at += sizeof(inotify_event) + notice->len;
            }
        }
    }

    void take(const inotify_event& notice) {
        if ((notice.mask & (IN_DELETE_SELF | IN_MOVE_SELF | IN_IGNORED)) != 0)
            throw Failure(fmt::format("{} is gone", m_session.directory(Copy::Current)));
        if ((notice.mask & IN_Q_OVERFLOW) != 0) {
            for (const auto& [file, layout] : m_layouts)
                m_unread.emplace(layout, Clock::now());
        }
        const auto entry = notice.len > 0 ? m_layouts.find(notice.name) : m_layouts.end();
        if (entry != m_layouts.end())
            m_unread.emplace(entry->second, Clock::now());
    }

    void readUnread() {
        for (auto entry = m_unread.begin(); entry != m_unread.end() && !isDone();) {
            const CategoryLayout& layout = *entry->first;
            const std::string path = m_session.path(layout, Copy::Current);
            FileTable table = readTable(layout, path);
            if (table.isGood()) {
                printChanges(layout, table.values);
                m_tables[&layout] = std::move(table.values);
                m_told.erase(&layout);
                entry = m_unread.erase(entry);
                continue;
            }
            if (Clock::now() - entry->second > UNSOUND && m_told.insert(&layout).second)
                fmt::print(stderr, "dmctl watch: {} {}\n", path, table.trouble);
            ++entry;
        }
    }

    void printChanges(const CategoryLayout& layout, const std::vector<int>& values) {
        const std::vector<int>& before = m_tables[&layout];
        for (int record = 0; record < layout.recordCount() && !before.empty(); ++record) {
            for (const Field& field : layout.fields) {
                const std::size_t cell = cellOf(layout, record, field);
                if (before[cell] != values[cell] && !isDone())
                    printChange(layout, record, field, before[cell], values[cell]);
            }
        }
        std::fflush(stdout);
    }

    void printChange(const CategoryLayout& layout, int record, const Field& field, int before, int after) {
        ++m_count;
        if (!m_json) {
            fmt::print("{}  {}  {}  {}  {} -> {}\n", timeOfDay("%H:%M:%S"), categoryName(layout),
                       recordLabel(layout, record), field.argumentName(), before, after);
            return;
        }
        const Json line{{"time", timeOfDay("%Y-%m-%dT%H:%M:%S")},
                        {"category", categoryName(layout)},
                        {"record", recordJson(layout, indicesOf(layout, record))},
                        {"field", field.argumentName()},
                        {"before", before},
                        {"after", after}};
        fmt::print("{}\n", jsonText(line, -1));
    }

    const Session& m_session;
    const bool m_json;
    const int m_most; ///< changes to print; 0: no limit
    const Descriptor m_signals;
    const Descriptor m_notices;
    int m_count = 0;
    std::map<std::string, const CategoryLayout*> m_layouts;      ///< by file name
    std::map<const CategoryLayout*, std::vector<int>> m_tables;  ///< as last read; empty: never sound so far
    std::map<const CategoryLayout*, Clock::time_point> m_unread; ///< changed since, and when first noticed
    std::set<const CategoryLayout*> m_told;                      ///< that it is unsound
};

int countAsked(const Options& options) {
    if (!options.has("--count"))
        return 0;
    const std::string word = options.value("--count");
    int count = 0;
    const char* const end = word.data() + word.size();
    const auto parsed = std::from_chars(word.data(), end, count);
    if (parsed.ec != std::errc() || parsed.ptr != end || count < 1)
        throw UsageError(fmt::format("--count takes a whole number from 1 on, not \"{}\"", word));
    return count;
}

} // namespace

int runWatch(const Options& options, const Words& words) {
    const std::vector<const CategoryLayout*> layouts = categoriesNamed(words);
    const int most = countAsked(options);
    const Session session(options);
    Watch(session, options, layouts, most).run();
    return EXIT_FINE;
}

} // namespace td::dmctl
