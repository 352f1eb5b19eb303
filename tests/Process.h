/// Runs test_process, the other process of tests that need one, beside the test.
#pragma once

#include <csignal>
#include <stdexcept>
#include <string>
#include <vector>

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>

#include "TemporaryDirectory.h"

extern char** environ;

namespace td::test {

class Process {
public:
    explicit Process(std::vector<std::string> words) {
        words.insert(words.begin(), TEST_PROCESS);
        std::vector<char*> arguments;
        for (std::string& word : words)
            arguments.push_back(word.data());
        arguments.push_back(nullptr);
        posix_spawn_file_actions_t files;
        posix_spawn_file_actions_init(&files);
        posix_spawn_file_actions_addopen(&files, 1, m_directory.file("out").c_str(), O_WRONLY | O_CREAT, 0600);
        posix_spawn_file_actions_addopen(&files, 2, m_directory.file("err").c_str(), O_WRONLY | O_CREAT, 0600);
        const int error = posix_spawn(&m_id, TEST_PROCESS, &files, nullptr, arguments.data(), environ);
        posix_spawn_file_actions_destroy(&files);
        if (error != 0)
            throw std::runtime_error("cannot start " TEST_PROCESS);
    }
    ~Process() {
        if (m_id > 0) {
            kill(m_id, SIGKILL);
            waitpid(m_id, nullptr, 0);
        }
    }
    Process(const Process&) = delete;
    Process& operator=(const Process&) = delete;

    /// Waits for the end; the exit code, -1 when it did not end by itself.
    int wait() {
        int status = 0;
        if (waitpid(m_id, &status, 0) != m_id)
            return -1;
        m_id = 0;
        return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    }
    std::string output() const { return m_directory.read("out"); }
    std::string errors() const { return m_directory.read("err"); }

    static int run(const std::vector<std::string>& words) { return Process(words).wait(); }

private:
    TemporaryDirectory m_directory;
    pid_t m_id = 0;
};

} // namespace td::test
