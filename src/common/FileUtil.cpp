#include <dataModule/common/FileUtil.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstring>
#include <new>
#include <utility>

#include <fcntl.h>
#include <sys/stat.h>
#include <syslog.h>
#include <unistd.h>

#include "common/Descriptor.h"

namespace td {
namespace {

constexpr std::size_t READ_AHEAD_SIZE = 4096;

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

} // namespace

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

} // namespace td
