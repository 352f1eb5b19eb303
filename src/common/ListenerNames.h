/// The names under which processes meet outside the file system. They are the system's own: no root prefix goes before
/// them.
#pragma once

namespace td::names {

/// Posted when the settings files must be closed for a suspend image.
constexpr const char* RELEASE_SEMAPHORE = "release.dataModule";
/// Posted when they may be opened again.
constexpr const char* RELOAD_SEMAPHORE = "reload.dataModule";
constexpr unsigned int SUSPEND_SEMAPHORE_MODE = 0666;

/// Posted after the word of the detail-log switch was written.
constexpr const char* LOG_SEMAPHORE = "log.dataModule";
constexpr unsigned int LOG_SEMAPHORE_MODE = 0600;
/// System V shared memory with the word of the detail-log switch, one int: 0 for off, anything else for on.
constexpr int DETAIL_LOG_KEY = 0x01020304;
constexpr unsigned int DETAIL_LOG_SIZE = 4;
constexpr unsigned int DETAIL_LOG_MODE = 0666;

} // namespace td::names
