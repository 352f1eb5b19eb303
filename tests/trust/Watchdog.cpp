#include "Watchdog.h"

#include <algorithm>
#include <atomic>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <iterator>

#include <dirent.h>
#include <execinfo.h>
#include <sys/syscall.h>
#include <unistd.h>

#include "FileCalls.h"

namespace td::test {
namespace {

constexpr std::size_t TEXT_SIZE = 512;
char g_activity[TEXT_SIZE];

void writeText(const char* text) {
    [[maybe_unused]] const ssize_t ignored = ::write(STDERR_FILENO, text, std::strlen(text));
}

constexpr int SIGNALS[] = {SIGALRM, SIGSEGV, SIGBUS, SIGABRT};
struct sigaction g_before[std::size(SIGNALS)];

/// Those who handled the signals before, a sanitizer for instance, do their work afterwards.
void handBack() {
    for (std::size_t i = 0; i < std::size(SIGNALS); ++i)
        sigaction(SIGNALS[i], &g_before[i], nullptr);
}

std::atomic<bool> g_dumped{false};

void dumpOwnStack(int) {
    constexpr int DEPTH = 64;
    void* frames[DEPTH];
    backtrace_symbols_fd(frames, backtrace(frames, DEPTH), STDERR_FILENO);
    g_dumped = true;
}

/// One thread after the other writes its own stack.
void dumpAllStacks() {
    const Unwatched unwatched;
    DIR* const tasks = opendir("/proc/self/task");
    if (tasks == nullptr)
        return;
    while (const dirent* const entry = readdir(tasks)) {
        const long thread = std::strtol(entry->d_name, nullptr, 10);
        if (thread == 0)
            continue;
        writeText("thread ");
        writeText(entry->d_name);
        writeText("\n");
        g_dumped = false;
        if (syscall(SYS_tgkill, getpid(), thread, SIGUSR2) != 0)
            continue;
        for (int wait = 0; wait < 1000 && !g_dumped; ++wait)
            usleep(1000);
    }
    closedir(tasks);
}

void onSignal(int signal) {
    writeText(signal == SIGALRM ? "\nstill running: " : "\ncrashed in: ");
    writeText(g_activity);
    writeText("\n");
    handBack();
    if (signal == SIGALRM) {
        dumpAllStacks();
        std::abort();
    }
    std::raise(signal);
}

} // namespace

Watchdog::Watchdog(const std::string& activity, unsigned seconds) {
    const std::size_t length = std::min(activity.size(), TEXT_SIZE - 1);
    std::memcpy(g_activity, activity.data(), length);
    g_activity[length] = '\0';
    // The first call loads a library, for which there is no time in a handler.
    void* frame[1];
    backtrace(frame, 1);
    std::signal(SIGUSR2, dumpOwnStack);
    struct sigaction action = {};
    action.sa_handler = onSignal;
    for (std::size_t i = 0; i < std::size(SIGNALS); ++i)
        sigaction(SIGNALS[i], &action, &g_before[i]);
    alarm(seconds);
}

Watchdog::~Watchdog() {
    alarm(0);
    handBack();
}

} // namespace td::test
