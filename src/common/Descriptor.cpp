#include "common/Descriptor.h"

#include <cerrno>
#include <cstring>

#include <fcntl.h>
#include <unistd.h>

#include "common/SystemPaths.h"

namespace td {

namespace {

constexpr std::size_t COPY_BLOCK_SIZE = 4096;
constexpr mode_t FILE_MODE = 0666;
constexpr mode_t PERMISSIONS = 0777;

} // namespace

Descriptor::~Descriptor() {
    const int error = errno;
    if (m_value >= 0)
        close(m_value);
    errno = error;
}

bool isRegular(const struct stat& status) {
    return S_ISREG(status.st_mode);
}

bool isRegularOrDevice(const struct stat& status) {
    return isRegular(status) || S_ISCHR(status.st_mode) || S_ISBLK(status.st_mode);
}

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

Descriptor openParent(const char* path) {
    char parent[paths::PATH_SIZE] = ".";
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

bool syncDirectory(const Descriptor& directory) {
    return fsync(directory.get()) == 0 || errno == EINVAL;
}

bool isSameFile(const struct stat& one, const struct stat& other) {
    return one.st_dev == other.st_dev && one.st_ino == other.st_ino;
}

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

} // namespace td
