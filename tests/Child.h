/// A child of the test itself, made by fork(), for what a fork does to the library.
#pragma once

#include <functional>

#include <sys/wait.h>
#include <unistd.h>

namespace td::test {

/// The thread sanitizer ends a child that starts one, when its parent had several; so does the emulator.
#if defined(__SANITIZE_THREAD__) || defined(TESTS_ARE_EMULATED)
constexpr bool CHILDREN_MAY_START_THREADS = false;
#else
constexpr bool CHILDREN_MAY_START_THREADS = true;
#endif

/// Starts a child that ends with what `life` returns, or by an alarm when it hangs.
inline pid_t startChild(const std::function<int()>& life) {
    constexpr unsigned PATIENCE_SECONDS = 60;
    const pid_t child = fork();
    if (child == 0) {
        alarm(PATIENCE_SECONDS);
        _exit(life());
    }
    return child;
}

/// The exit code; negative, the signal's number, when a signal ended it.
inline int endOf(pid_t child) {
    int status = 0;
    if (child < 0 || waitpid(child, &status, 0) != child)
        return -1000;
    return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
}

} // namespace td::test
