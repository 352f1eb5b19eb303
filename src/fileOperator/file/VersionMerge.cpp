#include "fileOperator/file/VersionMerge.h"

#include <utility>

namespace td {

bool VersionMerge::startThread(OsalThreads::Entry entry, void* argument) {
    if (m_thread != OsalThreads::INVALID_HANDLE)
        OsalThreads::join(takeThread());
    return OsalThreads::create("DataModuleMerge", entry, argument, m_thread);
}

OsalThreads::Handle VersionMerge::takeThread() {
    return std::exchange(m_thread, OsalThreads::INVALID_HANDLE);
}

} // namespace td
