/// Who works on the settings files besides this process. The root prefix has to be set.
#pragma once

#include <string>

#include <dataModule/common/FileLock.h>

namespace td::dmctl {

/// The processes of the library that are between their start and their end on this root, in words; empty if none is.
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
