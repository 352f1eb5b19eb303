#include "Watchdog.h"

#include <algorithm>
#include <atomic>
#include <csignal>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <iterator>

#include <execinfo.h>
#include <fcntl.h>
#include <sys/syscall.h>
#include <unistd.h>

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

void dumpStackOf(const char* thread) {
    writeText("thread ");
    writeText(thread);
    writeText("\n");
    g_dumped = false;
    if (syscall(SYS_tgkill, getpid(), std::strtol(thread, nullptr, 10), SIGUSR2) != 0)
        return;
    for (int wait = 0; wait < 1000 && !g_dumped; ++wait)
        usleep(1000);
}

/// One thread after the other writes its own stack. By the kernel's calls: a test may have the C library's fail, and a
/// handler must not allocate.
void dumpAllStacks() {
    /// An entry as the kernel gives it.
    struct Entry {
        std::uint64_t inode;
        std::int64_t offset;
        std::uint16_t length;
        std::uint8_t type;
        char name[1];
    };
    const long tasks = syscall(SYS_openat, AT_FDCWD, "/proc/self/task", O_RDONLY | O_DIRECTORY);
    alignas(Entry) char buffer[4096];
    for (long size = 0; (size = syscall(SYS_getdents64, tasks, buffer, sizeof buffer)) > 0;) {
        for (long at = 0; at < size; at += reinterpret_cast<const Entry*>(buffer + at)->length) {
            const char* const name = reinterpret_cast<const Entry*>(buffer + at)->name;
            if (*name != '.')
                dumpStackOf(name);
        }
    }
    syscall(SYS_close, tasks);
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
