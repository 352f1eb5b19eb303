/// Who works on the settings files besides this process. The root prefix has to be set.
#pragma once

#include <string>
#include <vector>

#include "common/FileLock.h"

namespace td::dmctl {

struct RootUser {
    int pid = 0;
    std::string name; ///< of its program, or empty
};

/// The processes of the library that are between their start and their end on this root, as far as the kernel tells.
std::vector<RootUser> rootUsers();
/// The same in words, with what it does not tell; empty if there is none.
std::string usersOfRoot();

/// Keeps writers of a settings file of that name away while the object lives. Where no process of the library has ever
/// run, or no lock can be had, there is nobody to be kept away.
class ReadLock {
public:
    explicit ReadLock(const std::string& fileName);

private:
    FileLock m_lock;
};

} // namespace td::dmctl
