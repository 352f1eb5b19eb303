// FileUtil's writes that a cut of power leaves whole, and what stands where a file should.
#include <cerrno>
#include <cstdio>
#include <cstring>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <dataModule/common/FileUtil.h>

#include "common/Descriptor.h"
#include "common/SystemPaths.h"

namespace td {
namespace {

using paths::PATH_SIZE;

constexpr mode_t FILE_MODE = 0666;

/// By name; a symbolic link at the end of `path` is not followed.
bool isAt(const char* path, const struct stat& file) {
    struct stat found {};
    return lstat(path, &found) == 0 && isSameFile(found, file);
}

/// Whether an open file is one that is written without harm to others: a regular one without further names.
bool isNobodyElses(int descriptor) {
    struct stat status {};
    return fstat(descriptor, &status) == 0 && S_ISREG(status.st_mode) && status.st_nlink == 1;
}

/// `path` and TEMPORARY_SUFFIX, or an empty text when that does not fit.
void makeTemporaryName(const char* path, char (&out)[PATH_SIZE]) {
    const std::size_t length = std::strlen(path);
    const std::size_t suffix = std::strlen(FileUtil::TEMPORARY_SUFFIX);
    out[0] = '\0';
    if (length + suffix >= sizeof out)
        return;
    std::memcpy(out, path, length);
    std::memcpy(out + length, FileUtil::TEMPORARY_SUFFIX, suffix + 1);
}

/// The temporary file of one replacement, empty at first. An exclusive lock keeps other threads and processes off it
/// until it is closed; a process that dies leaves a file that the next one takes over.
class TemporaryFile {
public:
    explicit TemporaryFile(const char* path) : m_path(path), m_descriptor(openLocked(path)) {}
    TemporaryFile(const TemporaryFile&) = delete;
    TemporaryFile& operator=(const TemporaryFile&) = delete;

    bool isOpen() const { return m_descriptor.isOpen(); }

    /// Copies `from` into it, complete and on disk, with the mode and owner of what is at `replaced`.
    bool fill(const char* from, const char* replaced) const {
        const Descriptor source(openAtOnce(from, O_RDONLY, &isRegular));
        if (!source.isOpen())
            return false;
        // Not by name, where another file or a link may stand meanwhile.
        copyBytes(source.get(), m_descriptor.get());
        if (!isComplete(from))
            return false;
        return giveModeAndOwnerOf(replaced, m_descriptor.get()) && fsync(m_descriptor.get()) == 0;
    }

private:
    static constexpr int ATTEMPTS = 100;

    /// A locked and empty regular file at `path`, or -1.
    static int openLocked(const char* path) {
        for (int attempt = 0; attempt < ATTEMPTS; ++attempt) {
            const int descriptor = open(path, O_RDWR | O_CREAT | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC, FILE_MODE);
            if (descriptor >= 0 && isOurs(path, descriptor))
                return descriptor;
            if (descriptor >= 0)
                close(descriptor);
            else if (!removeObstacle(path))
                return -1;
        }
        return -1;
    }

    /// Takes the lock. Whoever had it before may have renamed or removed the file meanwhile, and a leftover that is
    /// another user's, has further names or is no regular file is not ours to empty: then another one is made.
    static bool isOurs(const char* path, int descriptor) {
        struct stat status {};
        if (!lock(descriptor) || fstat(descriptor, &status) != 0 || !isAt(path, status))
            return false;
        if (status.st_uid == geteuid() && isNobodyElses(descriptor))
            return ftruncate(descriptor, 0) == 0;
        unlink(path);
        return false;
    }

    static bool lock(int descriptor) {
        int result = flock(descriptor, LOCK_EX);
        while (result != 0 && errno == EINTR)
            result = flock(descriptor, LOCK_EX);
        return result == 0;
    }

    /// After a failed open: a symbolic link, or a leftover that may not be written, gives way to a new file.
    static bool removeObstacle(const char* path) {
        const bool isObstacle = errno == ELOOP || errno == EACCES || errno == ENXIO;
        return isObstacle && (unlink(path) == 0 || errno == ENOENT);
    }

    bool isComplete(const char* from) const {
        struct stat source {};
        struct stat copy {};
        if (stat(from, &source) != 0 || !S_ISREG(source.st_mode) || fstat(m_descriptor.get(), &copy) != 0)
            return false;
        return source.st_size == copy.st_size && isAt(m_path, copy);
    }

    const char* const m_path;
    const Descriptor m_descriptor;
};

} // namespace

bool FileUtil::replaceFile(const char* from, const char* to) {
    if (!checkFile(from) || to == nullptr)
        return false;
    char temporary[PATH_SIZE];
    makeTemporaryName(to, temporary);
    struct stat source {};
    if (temporary[0] == '\0' || stat(from, &source) != 0 || isAt(temporary, source))
        return false;
    const TemporaryFile file(temporary);
    if (!file.isOpen())
        return false;
    if (!file.fill(from, to)) {
        unlink(temporary);
        return false;
    }
    return commitTemporary(temporary, to);
}

bool FileUtil::commitTemporary(const char* temporary, const char* to) {
    if (temporary == nullptr || to == nullptr)
        return false;
    // The directory is opened first, so that of the steps after the renaming only the sync itself can fail.
    const Descriptor directory = openParent(to);
    if (!directory.isOpen() || std::rename(temporary, to) != 0) {
        unlink(temporary);
        return false;
    }
    return syncDirectory(directory);
}

bool FileUtil::makeWay(const char* path) {
    return path != nullptr && (unlink(path) == 0 || errno == ENOENT);
}

bool FileUtil::writeDurably(const char* path, const std::string& bytes) {
    if (path == nullptr)
        return false;
    constexpr int FLAGS = O_WRONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC;
    int opened = open(path, FLAGS);
    const bool isNew = opened < 0 && errno == ENOENT;
    if (isNew)
        opened = open(path, FLAGS | O_CREAT | O_EXCL, FILE_MODE);
    const Descriptor file(opened);
    if (!file.isOpen() || !isNobodyElses(file.get()) || !writeBlock(file.get(), bytes.data(), bytes.size()) ||
        fsync(file.get()) != 0)
        return false;
    if (!isNew)
        return true;
    const Descriptor directory = openParent(path);
    return directory.isOpen() && syncDirectory(directory);
}

bool FileUtil::syncPath(const char* path) {
    if (path == nullptr)
        return false;
    const Descriptor file(open(path, O_RDONLY | O_NONBLOCK | O_CLOEXEC));
    return file.isOpen() && syncDirectory(file);
}

bool FileUtil::overwriteStart(const char* path, const std::string& bytes) {
    if (path == nullptr)
        return false;
    const Descriptor file(openAtOnce(path, O_WRONLY | O_NOFOLLOW, &isRegular));
    return file.isOpen() && writeBlock(file.get(), bytes.data(), bytes.size());
}

bool FileUtil::startsWith(const char* path, const std::string& bytes) {
    if (path == nullptr)
        return false;
    const Descriptor file(open(path, O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
    std::string start(bytes.size(), '\0');
    return file.isOpen() && read(file.get(), start.data(), start.size()) == static_cast<ssize_t>(start.size()) &&
           start == bytes;
}

// --- what is no file ---

bool FileUtil::isStray(const char* path) {
    struct stat status {};
    if (path == nullptr || lstat(path, &status) != 0 || S_ISREG(status.st_mode))
        return false;
    if (!S_ISLNK(status.st_mode))
        return true;
    if (stat(path, &status) == 0)
        return !S_ISREG(status.st_mode);
    // Anything else may be over soon.
    return errno == ENOENT || errno == ENOTDIR || errno == ELOOP;
}

bool FileUtil::moveAside(const char* path, std::string& newPath) {
    constexpr int MOST = 1000;
    if (path == nullptr)
        return false;
    struct stat status {};
    for (int number = 1; number <= MOST; ++number) {
        newPath = std::string(path) + STRAY_SUFFIX + std::to_string(number);
        if (lstat(newPath.c_str(), &status) != 0)
            return errno == ENOENT && std::rename(path, newPath.c_str()) == 0;
    }
    errno = EEXIST;
    return false;
}

} // namespace td
