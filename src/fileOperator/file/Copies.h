/// The three copies of one category: where they stand, and one of them taking the place of another. Says in the log
/// what it does, and what it cannot do. Its user keeps others off the files.
#pragma once

#include <atomic>
#include <set>
#include <string>
#include <utility>

namespace td {

/// The path of the copy that is read or written. May be asked for at any time from any thread: a path that it once had
/// stays where it is.
class CopyPath {
public:
    const char* load() const { return m_path; }
    operator const char*() const { return m_path; }
    /// One thread at a time.
    void set(const std::string& path) {
        if (path != m_path.load())
            m_path = m_paths.insert(path).first->c_str();
    }

private:
    std::atomic<const char*> m_path{""};
    std::set<std::string> m_paths; ///< every one ever set
};

class Copies {
public:
    struct Paths {
        std::string current;
        std::string backup;
        std::string factory;
    };

    /// `category` and `at` name category and file in log lines that name neither, and outlive this object.
    Copies(Paths paths, const char* category, CopyPath& at)
        : m_paths(std::move(paths)), m_category(category), m_at(at) {}

    /// Whether something stands there that will never be read as a file, which then is logged.
    static bool isNoFile(const std::string& path, const char* category);
    /// Moves such a thing aside, so that a copy can be made there; not followed, and its new name logged. False where
    /// it cannot be moved.
    static bool makeRoom(const std::string& path, const char* category);

    /// Puts the file at `from`, which was read, in the place of the current copy.
    bool recoverFrom(const std::string& from) const;
    /// Makes sure of the backup's directory.
    bool makeBackupDirectory() const;
    /// Puts the current copy in the place of the backup, if it verifies (invariant 1).
    bool backUp() const;
    /// Puts it in the place of the factory copy too.
    bool makeFactory() const;
    /// Puts the factory copy in the place of the current one, if it verifies and is of that version (invariant 1).
    bool resetFromFactory(const char* version) const;
    /// Deletes all three, the factory copy at `factory`; whether the current one is gone.
    bool removeAll(const std::string& factory) const;
    /// Deletes the current copy, with its redo record.
    bool removeCurrent() const;

private:
    bool remove(const std::string& path) const;
    void logWhere() const;

    const Paths m_paths;
    const char* const m_category;
    CopyPath& m_at;
};

} // namespace td
