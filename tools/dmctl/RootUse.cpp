#include "RootUse.h"

#include <filesystem>
#include <fstream>
#include <sstream>

#include <sys/stat.h>
#include <sys/sysmacros.h>

#include <fmt/core.h>

#include "common/SystemPaths.h"
#include "Names.h"

namespace fs = std::filesystem;

namespace td::dmctl {

namespace {

std::string programOf(int pid) {
    std::ifstream file(fmt::format("/proc/{}/comm", pid));
    std::string name;
    std::getline(file, name);
    return name;
}

std::string userText(const RootUser& user) {
    return user.name.empty() ? fmt::format("process {}", user.pid)
                             : fmt::format("{} (process {})", user.name, user.pid);
}

} // namespace

/// Who holds a lock the kernel lists so: "1: FLOCK  ADVISORY  READ 1234 08:01:131 0 EOF"; those who wait have an arrow
/// behind the number. Some file systems show programs another device than the kernel's; then the inode has to do.
std::vector<RootUser> rootUsers() {
    struct stat status = {};
    if (stat(paths::processesLockFile().c_str(), &status) != 0)
        return {};
    const std::string inode = fmt::format(":{}", status.st_ino);
    const std::string file = fmt::format("{:02x}:{:02x}{}", major(status.st_dev), minor(status.st_dev), inode);
    std::vector<RootUser> users;
    std::vector<RootUser> likely;
    std::ifstream locks("/proc/locks");
    for (std::string line; std::getline(locks, line);) {
        std::istringstream words(line);
        std::string number;
        std::string kind;
        std::string strictness;
        std::string access;
        int pid = 0;
        std::string place;
        if (!(words >> number >> kind >> strictness >> access >> pid >> place) || kind != "FLOCK")
            continue;
        if (place == file)
            users.push_back({pid, programOf(pid)});
        else if (place.size() > inode.size() && place.substr(place.size() - inode.size()) == inode)
            likely.push_back({pid, programOf(pid)});
    }
    return users.empty() ? likely : users;
}

std::string usersOfRoot() {
    const std::string path = paths::processesLockFile();
    std::error_code error;
    if (!fs::exists(path, error))
        return {};
    FileLock lock;
    if (lock.tryLock(path, FileLock::Kind::Exclusive) != FileLock::Attempt::Busy)
        return {};
    std::vector<std::string> texts;
    for (const RootUser& user : rootUsers())
        texts.push_back(userText(user));
    return texts.empty() ? "a process that cannot be seen from here" : joined(texts);
}

ReadLock::ReadLock(const std::string& fileName) {
    const std::string path = paths::lockFile(fileName);
    std::error_code error;
    if (fs::is_directory(fs::path(path).parent_path(), error))
        m_lock.lock(path, FileLock::Kind::Shared);
}

} // namespace td::dmctl
