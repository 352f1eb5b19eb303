#include <dataModule/common/FileUtil.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <new>
#include <utility>

#include <dirent.h>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <syslog.h>
#include <unistd.h>

namespace td {
namespace {

/// Bytes of a buffer for a path, terminator included.
constexpr std::size_t PATH_SIZE = 256;
constexpr std::size_t COPY_BLOCK_SIZE = 4096;
constexpr std::size_t READ_AHEAD_SIZE = 4096;
constexpr mode_t DIRECTORY_MODE = 0777;
constexpr mode_t FILE_MODE = 0666;
constexpr mode_t PERMISSIONS = 0777;

/// The flags of open() for a mode of fopen(), or -1.
int flagsOf(const char* mode) {
    const bool both = std::strchr(mode, '+') != nullptr;
    const int writing = both ? O_RDWR : O_WRONLY;
    const int exclusive = std::strchr(mode, 'x') != nullptr ? O_EXCL : 0;
    switch (mode[0]) {
    case 'r':
        return both ? O_RDWR : O_RDONLY;
    case 'w':
        return writing | O_CREAT | O_TRUNC | exclusive;
    case 'a':
        return writing | O_CREAT | O_APPEND | exclusive;
    default:
        return -1;
    }
}

bool isRegular(const struct stat& status) {
    return S_ISREG(status.st_mode);
}
bool isRegularOrDevice(const struct stat& status) {
    return isRegular(status) || S_ISCHR(status.st_mode) || S_ISBLK(status.st_mode);
}

/// Opens what passes `isWanted`, or -1. Never waits, as it would for the other end of a FIFO.
int openAtOnce(const char* path, int flags, bool (*isWanted)(const struct stat&)) {
    const int descriptor = open(path, flags | O_NONBLOCK | O_NOCTTY | O_CLOEXEC, FILE_MODE);
    struct stat status {};
    if (descriptor < 0)
        return -1;
    const bool isKnown = fstat(descriptor, &status) == 0;
    if (isKnown && isWanted(status))
        return descriptor;
    const int error = isKnown ? EINVAL : errno;
    close(descriptor);
    errno = error;
    return -1;
}

std::int64_t sizeOf(int descriptor) {
    struct stat status {};
    return fstat(descriptor, &status) == 0 ? std::int64_t{status.st_size} : 0;
}

/// pread(), made again when a signal came first.
ssize_t readAt(int descriptor, char* bytes, std::size_t count, std::int64_t offset) {
    ssize_t result = 0;
    do
        result = pread(descriptor, bytes, count, static_cast<off_t>(offset));
    while (result < 0 && errno == EINTR);
    return result;
}

/// Closes what it holds at the end of the block.
class Descriptor {
public:
    explicit Descriptor(int value) : m_value(value) {}
    ~Descriptor() {
        const int error = errno; // of what failed before
        if (m_value >= 0)
            close(m_value);
        errno = error;
    }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;

    bool isOpen() const { return m_value >= 0; }
    int get() const { return m_value; }

private:
    const int m_value;
};

using Directory = std::unique_ptr<DIR, int (*)(DIR*)>;

Directory openDirectory(const char* path) {
    return {opendir(path), &closedir};
}

/// The next entry's name but "." and "..", or null at the end.
const char* nextName(const Directory& directory) {
    const dirent* entry = readdir(directory.get());
    while (entry != nullptr && FileUtil::isSpecialDir(entry->d_name))
        entry = readdir(directory.get());
    return entry == nullptr ? nullptr : entry->d_name;
}

bool exists(const char* path) {
    return access(path, F_OK) == 0;
}

bool isSameFile(const struct stat& one, const struct stat& other) {
    return one.st_dev == other.st_dev && one.st_ino == other.st_ino;
}

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

bool writeBlock(int target, const char* block, std::size_t size) {
    while (size > 0) {
        const ssize_t written = write(target, block, size);
        if (written < 0)
            return false;
        block += written;
        size -= static_cast<std::size_t>(written);
    }
    return true;
}

void copyBytes(int source, int target) {
    char block[COPY_BLOCK_SIZE];
    for (;;) {
        const ssize_t bytes = read(source, block, sizeof block);
        if (bytes <= 0 || !writeBlock(target, block, static_cast<std::size_t>(bytes)))
            return;
    }
}

/// Empties an open target, unless it is the file that is to be copied. What is no regular file has nothing to empty.
bool emptyTarget(int source, int target) {
    struct stat sourceStatus {};
    struct stat targetStatus {};
    if (fstat(source, &sourceStatus) != 0 || fstat(target, &targetStatus) != 0)
        return false;
    if (isSameFile(sourceStatus, targetStatus))
        return false;
    return !S_ISREG(targetStatus.st_mode) || ftruncate(target, 0) == 0;
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

/// The directory that holds `path`.
Descriptor openParent(const char* path) {
    char parent[PATH_SIZE] = ".";
    const char* const slash = std::strrchr(path, '/');
    if (slash != nullptr) {
        const std::size_t length = slash == path ? 1 : static_cast<std::size_t>(slash - path);
        if (length >= sizeof parent)
            return Descriptor(-1);
        std::memcpy(parent, path, length);
        parent[length] = '\0';
    }
    return Descriptor(open(parent, O_RDONLY | O_DIRECTORY | O_CLOEXEC));
}

/// A file system that answers EINVAL keeps its directories without being asked.
bool syncDirectory(const Descriptor& directory) {
    return fsync(directory.get()) == 0 || errno == EINVAL;
}

/// Gives an open file the mode and owner of the file at `replaced`, if there is one.
bool giveModeAndOwnerOf(const char* replaced, int descriptor) {
    struct stat status {};
    if (lstat(replaced, &status) != 0)
        return errno == ENOENT;
    if (!S_ISREG(status.st_mode))
        return true;
    // Only a privileged process may give files away; for the others the file stays their own.
    [[maybe_unused]] const int ignored = fchown(descriptor, status.st_uid, status.st_gid);
    return fchmod(descriptor, status.st_mode & PERMISSIONS) == 0;
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

bool copyDirectoryEntry(const char* from, const char* to, const char* name) {
    char source[PATH_SIZE];
    char target[PATH_SIZE];
    FileUtil::getFilePath(from, name, source);
    FileUtil::getFilePath(to, name, target);
    return source[0] != '\0' && target[0] != '\0' && FileUtil::copySingleFile(source, target) == 0;
}

void emptyDirectory(const char* path) {
    const Directory directory = openDirectory(path);
    if (!directory)
        return;
    char entry[PATH_SIZE];
    while (const char* const name = nextName(directory)) {
        if (FileUtil::getFilePath(path, name, entry)[0] == '\0')
            continue;
        FileUtil::removeDirFile(entry);
        if (FileUtil::isDir(entry))
            rmdir(entry);
    }
}

} // namespace

// --- the stream ---

FileUtil::~FileUtil() {
    closeFile();
}

bool FileUtil::openDescriptor(const char* path, const char* mode) {
    const int flags = flagsOf(mode);
    if (flags < 0) {
        errno = EINVAL;
        return false;
    }
    m_descriptor = openAtOnce(path, flags, &isRegularOrDevice);
    if (m_descriptor < 0)
        return false;
    m_appends = (flags & O_APPEND) != 0;
    m_position = m_appends && (flags & O_ACCMODE) == O_WRONLY ? sizeOf(m_descriptor) : 0;
    m_endMet = false;
    m_readFailed = false;
    return true;
}

bool FileUtil::createFile(const char* path) {
    if (path == nullptr)
        return false;
    return isOpend() || openDescriptor(path, "w+");
}

bool FileUtil::openFile(const char* path, const char* mode) {
    if (path == nullptr || mode == nullptr)
        return false;
    if (!isOpend() && !openDescriptor(path, mode))
        return false;
    std::memset(m_name, 0, sizeof m_name);
    std::strncpy(m_name, path, sizeof m_name - 1);
    return true;
}

bool FileUtil::isOpend() const {
    return m_descriptor >= 0;
}

bool FileUtil::writeFile(const char* text, bool /*ignored*/) {
    if (!isOpend() || text == nullptr)
        return false;
    const bool isWhole = writeAll(text, std::strlen(text));
    if (syncWritten() && isWhole)
        return true;
    syslog(LOG_ERR, "write file [%s] failed.\n", m_name);
    return false;
}

bool FileUtil::writeAll(const char* bytes, std::size_t count) {
    dropReadAhead();
    std::size_t done = 0;
    while (done < count) {
        const ssize_t written = pwrite(m_descriptor, bytes + done, count - done, static_cast<off_t>(m_position));
        if (written < 0 && errno == EINTR)
            continue;
        if (written <= 0)
            break;
        done += static_cast<std::size_t>(written);
        m_position += written;
    }
    if (m_appends && done > 0)
        m_position = sizeOf(m_descriptor);
    return done == count;
}

std::size_t FileUtil::takeReadAhead(char* buffer, std::size_t size, bool upToNewline) {
    const std::int64_t skipped = m_position - m_aheadOffset;
    if (skipped < 0 || skipped >= static_cast<std::int64_t>(m_aheadCount))
        return 0;
    const char* const first = m_ahead.get() + skipped;
    std::size_t count = std::min(size, m_aheadCount - static_cast<std::size_t>(skipped));
    const void* const newline = upToNewline ? std::memchr(first, '\n', count) : nullptr;
    if (newline != nullptr)
        count = static_cast<std::size_t>(static_cast<const char*>(newline) - first) + 1;
    std::memcpy(buffer, first, count);
    m_position += static_cast<std::int64_t>(count);
    return count;
}

bool FileUtil::readAhead() {
    m_aheadCount = 0;
    if (!m_ahead)
        m_ahead.reset(new (std::nothrow) char[READ_AHEAD_SIZE]);
    if (!m_ahead) {
        errno = ENOMEM;
        m_readFailed = true;
        return false;
    }
    m_aheadOffset = m_position;
    m_aheadCount = readSome(m_ahead.get(), READ_AHEAD_SIZE);
    return m_aheadCount > 0;
}

std::size_t FileUtil::readSome(char* bytes, std::size_t count) {
    const ssize_t result = readAt(m_descriptor, bytes, count, m_position);
    m_endMet = m_endMet || result == 0;
    m_readFailed = m_readFailed || result < 0;
    return result > 0 ? static_cast<std::size_t>(result) : 0;
}

bool FileUtil::readLine(char* buffer, int size) {
    if (!isOpend() || buffer == nullptr || size <= 0)
        return false;
    const auto room = static_cast<std::size_t>(size) - 1;
    const bool failedBefore = std::exchange(m_readFailed, false);
    std::size_t length = 0;
    while (length < room && (length == 0 || buffer[length - 1] != '\n')) {
        const std::size_t added = takeReadAhead(buffer + length, room - length, true);
        length += added;
        if (added == 0 && !readAhead())
            break;
    }
    const bool failed = std::exchange(m_readFailed, m_readFailed || failedBefore);
    if ((length == 0 && room > 0) || failed)
        return false;
    buffer[length] = '\0';
    return true;
}

std::size_t FileUtil::readBytes(char* buffer, std::size_t size) {
    if (!isOpend() || buffer == nullptr)
        return 0;
    std::size_t count = takeReadAhead(buffer, size, false);
    // Past the buffer, which would only cost another copy.
    while (count < size) {
        const std::size_t added = readSome(buffer + count, size - count);
        if (added == 0)
            break;
        count += added;
        m_position += static_cast<std::int64_t>(added);
    }
    return count;
}

bool FileUtil::resetStartPos() {
    return setPos(0);
}

bool FileUtil::setPos(int offset) {
    if (!isOpend() || offset < 0)
        return false;
    m_position = offset;
    m_endMet = false;
    return true;
}

bool FileUtil::getCurrentPos(long& position) const {
    if (!isOpend() || m_position > LONG_MAX)
        return false;
    position = static_cast<long>(m_position);
    return true;
}

bool FileUtil::reachEnd() const {
    return !isOpend() || m_endMet;
}

bool FileUtil::readFailed() const {
    return m_readFailed;
}

bool FileUtil::closeFile() {
    if (!isOpend())
        return false;
    if (m_stream != nullptr)
        std::fclose(m_stream);
    m_stream = nullptr;
    m_ahead.reset();
    m_aheadCount = 0;
    return close(std::exchange(m_descriptor, -1)) == 0;
}

void FileUtil::deferSync(bool deferred) {
    m_syncDeferred = deferred;
}

bool FileUtil::takeModeAndOwner(const char* replaced) {
    return isOpend() && replaced != nullptr && giveModeAndOwnerOf(replaced, m_descriptor);
}

bool FileUtil::syncFile() {
    return isOpend() && fsync(m_descriptor) == 0;
}

bool FileUtil::syncWritten() {
    return m_syncDeferred || syncFile();
}

bool FileUtil::dropReadAhead() {
    if (!isOpend())
        return false;
    m_aheadCount = 0;
    m_endMet = false;
    return true;
}

int FileUtil::descriptor() const {
    return m_descriptor;
}

FILE* FileUtil::stream() const {
    if (!isOpend() || m_stream != nullptr)
        return m_stream;
    const int beside = fcntl(m_descriptor, F_DUPFD_CLOEXEC, 0);
    m_stream = beside < 0 ? nullptr : fdopen(beside, "r");
    if (m_stream == nullptr) {
        if (beside >= 0)
            close(beside);
        return nullptr;
    }
    // With a buffer it would show what was written since as it was before.
    std::setvbuf(m_stream, nullptr, _IONBF, 0);
    fseeko(m_stream, static_cast<off_t>(m_position), SEEK_SET);
    return m_stream;
}

// --- paths ---

bool FileUtil::checkPath(const char* path, bool create) {
    if (path == nullptr)
        return false;
    if (exists(path))
        return true;
    if (!create)
        return false;
    // Several loaders make the same directory at once; one of them does, the others find it made.
    if (mkdir(path, DIRECTORY_MODE) != 0)
        return errno == EEXIST && exists(path);
    // What is put into it is to be found again.
    char name[PATH_SIZE] = {};
    std::snprintf(name, sizeof name, "%s", path);
    for (std::size_t last = std::strlen(name); last > 1 && name[last - 1] == '/'; --last)
        name[last - 1] = '\0';
    const Descriptor parent = openParent(name);
    static_cast<void>(parent.isOpen() && syncDirectory(parent));
    return true;
}

bool FileUtil::checkFile(const char* path) {
    return path != nullptr && exists(path);
}

int FileUtil::getFileSize(const char* path) {
    struct stat status {};
    if (path == nullptr || stat(path, &status) != 0 || status.st_size > INT_MAX)
        return -1;
    return static_cast<int>(status.st_size);
}

bool FileUtil::isFile(const char* path) {
    struct stat status {};
    return path != nullptr && lstat(path, &status) == 0 && S_ISREG(status.st_mode);
}

bool FileUtil::isDir(const char* path) {
    struct stat status {};
    return path != nullptr && lstat(path, &status) == 0 && S_ISDIR(status.st_mode);
}

bool FileUtil::isSpecialDir(const char* name) {
    return name != nullptr && (std::strcmp(name, ".") == 0 || std::strcmp(name, "..") == 0);
}

char* FileUtil::getFilePath(const char* dir, const char* name, char* out) {
    if (out == nullptr)
        return out;
    out[0] = '\0';
    if (dir == nullptr || name == nullptr)
        return out;
    const std::size_t dirLength = std::strlen(dir);
    const std::size_t nameLength = std::strlen(name);
    const std::size_t slash = dirLength > 0 && dir[dirLength - 1] == '/' ? 0 : 1;
    if (dirLength + slash + nameLength >= PATH_SIZE)
        return out;
    std::memcpy(out, dir, dirLength);
    if (slash == 1)
        out[dirLength] = '/';
    std::memcpy(out + dirLength + slash, name, nameLength + 1);
    return out;
}

int FileUtil::copySingleFile(const char* from, const char* to) {
    if (from == nullptr || to == nullptr)
        return -1;
    // The target is emptied only when the source is open and another file.
    const Descriptor source(openAtOnce(from, O_RDONLY, &isRegular));
    if (!source.isOpen())
        return -1;
    const Descriptor target(openAtOnce(to, O_WRONLY | O_CREAT, &isRegularOrDevice));
    if (!target.isOpen() || !emptyTarget(source.get(), target.get()))
        return -1;
    copyBytes(source.get(), target.get());
    return 0;
}

bool FileUtil::copyDirFile(const char* from, const char* to) {
    if (!checkPath(from, false) || !checkPath(to, true))
        return false;
    const Directory directory = openDirectory(from);
    if (!directory)
        return false;
    while (const char* const name = nextName(directory))
        copyDirectoryEntry(from, to, name);
    return true;
}

int FileUtil::removeDirFile(const char* path) {
    if (path == nullptr)
        return -1;
    if (isFile(path))
        return unlink(path);
    if (!isDir(path))
        return 0;
    emptyDirectory(path);
    rmdir(path);
    return 0;
}

int FileUtil::removeSingleFile(const char* path) {
    if (path == nullptr)
        return -1;
    if (access(path, R_OK) != 0)
        return -2;
    return std::remove(path) == 0 ? 0 : -1;
}

bool FileUtil::backup(const char* from, const char* to) {
    if (!checkFile(from) || to == nullptr)
        return false;
    return exists(to) || std::rename(from, to) == 0;
}

bool FileUtil::recover(const char* from, const char* to) {
    if (!checkFile(from) || to == nullptr)
        return false;
    if (exists(to))
        removeDirFile(to);
    return std::rename(from, to) == 0;
}

char* FileUtil::trim(char* text) {
    if (text == nullptr)
        return text;
    const char* const first = text + std::strspn(text, " ");
    std::size_t length = std::strlen(first);
    while (length > 0 && std::strchr(" \r\n", first[length - 1]) != nullptr)
        --length;
    std::memmove(text, first, length);
    text[length] = '\0';
    return text;
}

char* FileUtil::getCurrentTime() {
    const std::time_t now = std::time(nullptr);
    return std::ctime(&now);
}

// --- replacing ---

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
