#include "RootUse.h"

#include <filesystem>
#include <fstream>
#include <sstream>
#include <vector>

#include <sys/stat.h>
#include <sys/sysmacros.h>

#include <fmt/core.h>

#include <dataModule/common/SystemPaths.h>

#include "Names.h"

namespace fs = std::filesystem;

namespace td::dmctl {

namespace {

std::string processName(const std::string& pid) {
    std::ifstream file("/proc/" + pid + "/comm");
    std::string name;
    std::getline(file, name);
    return name.empty() ? fmt::format("process {}", pid) : fmt::format("{} (process {})", name, pid);
}

/// Who holds a lock on the file, as the kernel lists it: "1: FLOCK  ADVISORY  READ 1234 08:01:131 0 EOF". Some file
/// systems show programs another device than the kernel's; then the inode has to do.
std::vector<std::string> holdersOf(const std::string& path) {
    struct stat status = {};
    if (stat(path.c_str(), &status) != 0)
        return {};
    const std::string inode = fmt::format(":{}", status.st_ino);
    const std::string file = fmt::format("{:02x}:{:02x}{}", major(status.st_dev), minor(status.st_dev), inode);
    std::vector<std::string> holders;
    std::vector<std::string> likely;
    std::ifstream locks("/proc/locks");
    for (std::string line; std::getline(locks, line);) {
        std::istringstream words(line);
        std::string number;
        std::string kind;
        std::string strictness;
        std::string access;
        std::string pid;
        std::string place;
        if (!(words >> number >> kind >> strictness >> access >> pid >> place) || kind != "FLOCK")
            continue;
        if (place == file)
            holders.push_back(processName(pid));
        else if (place.size() > inode.size() && place.substr(place.size() - inode.size()) == inode)
            likely.push_back(processName(pid));
    }
    return holders.empty() ? likely : holders;
}

} // namespace

std::string usersOfRoot() {
    const std::string path = paths::processesLockFile();
    std::error_code error;
    if (!fs::exists(path, error))
        return {};
    FileLock lock;
    if (lock.tryLock(path, FileLock::Kind::Exclusive) != FileLock::Attempt::Busy)
        return {};
    const std::vector<std::string> holders = holdersOf(path);
    return holders.empty() ? "a process that cannot be seen from here" : joined(holders);
}

ReadLock::ReadLock(const std::string& fileName) {
    const std::string path = paths::lockFile(fileName);
    std::error_code error;
    if (fs::is_directory(fs::path(path).parent_path(), error))
        m_lock.lock(path, FileLock::Kind::Shared);
}

} // namespace td::dmctl
