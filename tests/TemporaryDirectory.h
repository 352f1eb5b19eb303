/// A directory of its own for one test, removed with all that is in it when the test ends.
#pragma once

#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>
#include <system_error>

#include <unistd.h>

namespace td::test {

/// In memory where the machine offers room for it: the library syncs all it writes, which is most of a test's time on a
/// disk.
inline std::filesystem::path temporaryPlace() {
    constexpr std::uintmax_t ROOM = 512U << 20U;
    const std::filesystem::path memory = "/dev/shm";
    std::error_code failed;
    const bool isThere = access(memory.c_str(), W_OK | X_OK) == 0;
    return isThere && std::filesystem::space(memory, failed).available >= ROOM && !failed
               ? memory
               : std::filesystem::temp_directory_path();
}

class TemporaryDirectory {
public:
    TemporaryDirectory() {
        std::string pattern = (temporaryPlace() / "dataModule-XXXXXX").string();
        if (mkdtemp(pattern.data()) == nullptr)
            throw std::runtime_error("no temporary directory at " + pattern);
        m_path = pattern;
    }
    ~TemporaryDirectory() {
        std::error_code ignored;
        std::filesystem::remove_all(m_path, ignored);
    }
    TemporaryDirectory(const TemporaryDirectory&) = delete;
    TemporaryDirectory& operator=(const TemporaryDirectory&) = delete;

    const std::filesystem::path& path() const { return m_path; }
    /// The directory, without a trailing '/'.
    std::string string() const { return m_path.string(); }
    /// The path of `name` in the directory; an absolute `name` is taken as relative to it.
    std::string file(const std::string& name) const {
        return (m_path / std::filesystem::path(name).relative_path()).string();
    }

    /// Writes a file in the directory, with the folders it needs, and returns its path.
    std::string write(const std::string& name, const std::string& text) const {
        const std::string target = file(name);
        std::filesystem::create_directories(std::filesystem::path(target).parent_path());
        std::ofstream stream(target, std::ios::binary | std::ios::trunc);
        stream << text;
        if (!stream.flush())
            throw std::runtime_error("cannot write " + target);
        return target;
    }
    /// The bytes of a file in the directory; throws when there is none.
    std::string read(const std::string& name) const {
        std::ifstream stream(file(name), std::ios::binary);
        if (!stream)
            throw std::runtime_error("cannot read " + file(name));
        return {std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
    }
    bool exists(const std::string& name) const { return std::filesystem::exists(file(name)); }

private:
    std::filesystem::path m_path;
};

} // namespace td::test
