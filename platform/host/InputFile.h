/// A regular file, or a link to one, opened for reading; of anything else nothing is read. Opening does not wait, as it
/// would for the other end of a FIFO.
#pragma once

#include <cerrno>
#include <cstddef>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace td {

class InputFile {
public:
    explicit InputFile(const char* path) : m_descriptor(open(path, O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC)) {
        struct stat status {};
        m_failed = m_descriptor < 0 || fstat(m_descriptor, &status) != 0 || !S_ISREG(status.st_mode);
    }
    ~InputFile() {
        if (m_descriptor >= 0)
            close(m_descriptor);
    }
    InputFile(const InputFile&) = delete;
    InputFile& operator=(const InputFile&) = delete;

    /// Whether it could not be opened, or a read failed.
    bool failed() const { return m_failed; }
    /// The next byte; END at the end and after a failure.
    int next() {
        if (m_read == m_count && !fill())
            return END;
        return static_cast<unsigned char>(m_block[m_read++]);
    }
    static constexpr int END = -1;

private:
    bool fill() {
        m_read = 0;
        m_count = 0;
        if (m_failed)
            return false;
        ssize_t count = 0;
        do
            count = read(m_descriptor, m_block, sizeof m_block);
        while (count < 0 && errno == EINTR);
        m_failed = count < 0;
        m_count = m_failed ? 0 : static_cast<std::size_t>(count);
        return m_count > 0;
    }

    const int m_descriptor;
    bool m_failed = false;
    char m_block[1024];
    std::size_t m_count = 0;
    std::size_t m_read = 0;
};

} // namespace td
