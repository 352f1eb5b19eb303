/// What a process may run out of, for the length of a block. The limits are the whole process's, so no other thread
/// may need what is limited.
#pragma once

#include <csignal>
#include <stdexcept>
#include <vector>

#include <fcntl.h>
#include <linux/capability.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace td::test {

/// No file grows beyond `bytes`: writing behaves as on a full disk, also within a file that is longer already.
class FullDisk {
public:
    explicit FullDisk(rlim_t bytes) : m_handler(std::signal(SIGXFSZ, SIG_IGN)) {
        getrlimit(RLIMIT_FSIZE, &m_before);
        const rlimit limit{bytes, m_before.rlim_max};
        setrlimit(RLIMIT_FSIZE, &limit);
    }
    ~FullDisk() {
        setrlimit(RLIMIT_FSIZE, &m_before);
        std::signal(SIGXFSZ, m_handler);
    }
    FullDisk(const FullDisk&) = delete;
    FullDisk& operator=(const FullDisk&) = delete;

private:
    rlimit m_before{};
    void (*m_handler)(int);
};

/// No more than `free` further files can be open at a time.
class NoMoreFiles {
public:
    explicit NoMoreFiles(int free = 0) {
        std::vector<int> opened;
        for (int i = 0; i <= free; ++i)
            opened.push_back(open("/dev/null", O_RDONLY | O_CLOEXEC));
        for (const int descriptor : opened)
            close(descriptor);
        if (opened.back() < 0)
            throw std::runtime_error("no descriptors left");
        getrlimit(RLIMIT_NOFILE, &m_before);
        const rlimit limit{static_cast<rlim_t>(opened.back()), m_before.rlim_max};
        setrlimit(RLIMIT_NOFILE, &limit);
    }
    ~NoMoreFiles() { setrlimit(RLIMIT_NOFILE, &m_before); }
    NoMoreFiles(const NoMoreFiles&) = delete;
    NoMoreFiles& operator=(const NoMoreFiles&) = delete;

private:
    rlimit m_before{};
};

/// What the modes of files say holds for root's thread too.
class ModesHold {
public:
    ModesHold() {
        syscall(SYS_capget, &m_header, m_before);
        __user_cap_data_struct rest[2] = {m_before[0], m_before[1]};
        rest[0].effective &= ~(1U << CAP_DAC_OVERRIDE | 1U << CAP_DAC_READ_SEARCH);
        syscall(SYS_capset, &m_header, rest);
    }
    ~ModesHold() { syscall(SYS_capset, &m_header, m_before); }
    ModesHold(const ModesHold&) = delete;
    ModesHold& operator=(const ModesHold&) = delete;

private:
    __user_cap_header_struct m_header{_LINUX_CAPABILITY_VERSION_3, 0};
    __user_cap_data_struct m_before[2] = {};
};

} // namespace td::test
