/// An open file; every step that fails throws.
#pragma once

#include <stdexcept>
#include <string>

#include <fcntl.h>
#include <unistd.h>

namespace bench {

class Descriptor {
public:
    Descriptor(const std::string& path, int flags)
        : m_path(path), m_value(open(path.c_str(), flags | O_CLOEXEC, 0644)) {
        check(m_value >= 0, "open");
    }
    ~Descriptor() { close(m_value); }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;

    int get() const { return m_value; }
    void write(const char* bytes, std::size_t size, std::size_t offset) const {
        check(pwrite(m_value, bytes, size, static_cast<off_t>(offset)) == static_cast<ssize_t>(size), "write");
    }
    void sync() const { check(fsync(m_value) == 0, "sync"); }

private:
    void check(bool done, const char* what) const {
        if (!done)
            throw std::runtime_error(std::string("cannot ") + what + " " + m_path);
    }

    const std::string m_path;
    const int m_value;
};

} // namespace bench
