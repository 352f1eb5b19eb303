/// Every absolute path of the television that the library uses, and the longest ones it accepts.
#pragma once

#include <string>

#include <dataModule/platform/RootPrefix.h>

namespace td::paths {

/// Bytes of every buffer that holds a path, terminator included. What does not fit is refused.
constexpr int PATH_SIZE = 256;

constexpr const char* DATA_DIRECTORY = "/var/local/dataModule/";
constexpr const char* CURRENT_DIRECTORY = "/var/local/dataModule/current/";
constexpr const char* BACKUP_DIRECTORY = "/var/local/dataModule/backup/";
constexpr const char* LOCK_DIRECTORY = "/var/local/dataModule/lock/";
constexpr const char* DEFAULT_FACTORY_DIRECTORY = "/ovdata/model/dataModule/manufactory/";
constexpr const char* FACTORY_DIRECTORY_FORMAT = "/ovdata/model/%s/manufactory/";
constexpr const char* MODEL_INDEX_FILE = "/ovdata/model/config/ov_characteristic_index.ini";
constexpr const char* FACTORY_SERVICE_FILE = "/ovdata/factory/config/factorySrv.ini";
constexpr const char* CRITICAL_FILE = "/ovdata/critical/config/critical.ini";

/// The directories as this process finds them, each ending in '/'.
inline std::string currentDirectory() {
    return underRootPrefix(CURRENT_DIRECTORY);
}
inline std::string backupDirectory() {
    return underRootPrefix(BACKUP_DIRECTORY);
}
inline std::string defaultFactoryDirectory() {
    return underRootPrefix(DEFAULT_FACTORY_DIRECTORY);
}

/// The file that processes lock while they work on the copies of a category.
inline std::string lockFile(const std::string& settingsFile) {
    return underRootPrefix(LOCK_DIRECTORY) + settingsFile + ".lock";
}
/// The file that every process locks, shared, from init() to stop().
inline std::string processesLockFile() {
    return underRootPrefix(LOCK_DIRECTORY) + "processes.lock";
}

} // namespace td::paths
