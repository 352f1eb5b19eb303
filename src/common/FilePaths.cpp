// FileUtil's helpers for paths: no open file is needed.
#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <memory>

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <dataModule/common/FileUtil.h>

#include "common/Descriptor.h"
#include "common/SystemPaths.h"

namespace td {
namespace {

using paths::PATH_SIZE;

constexpr mode_t DIRECTORY_MODE = 0777;

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

} // namespace td
