#include "fileOperator/file/CategoryLock.h"

namespace td {

namespace {

/// The innermost of those that the thread has claimed files in; the others follow by their m_outer.
thread_local CategoryLock* t_claimed = nullptr;

} // namespace

void CategoryLock::claim(Claim kind, const std::string& lockFile) {
    lockOrder::shouldHold(&m_mutex);
    note(lockFile);
    m_claim = kind;
    const FileLock::Kind lock = kind == Claim::Shared ? FileLock::Kind::Shared : FileLock::Kind::Exclusive;
    m_wasGivenUp = m_files.lock(lockFile, lock, m_patience) == FileLock::Attempt::Busy;
}

void CategoryLock::note(const std::string& lockFile) {
    if (m_isNoted)
        return;
    m_lockFile = lockFile;
    m_isNoted = true;
    m_outer = t_claimed;
    t_claimed = this;
}

void CategoryLock::leaveFiles() {
    if (m_isNoted) {
        CategoryLock** link = &t_claimed;
        while (*link != this)
            link = &(*link)->m_outer;
        *link = m_outer;
        m_isNoted = false;
    }
    if (m_kept)
        return;
    m_files.unlock();
    m_wasGivenUp = false;
    m_claim = Claim::None;
}

CategoryLock* CategoryLock::claimedHere(const std::string& lockFile) {
    CategoryLock* section = t_claimed;
    while (section != nullptr && section->m_lockFile != lockFile)
        section = section->m_outer;
    return section;
}

} // namespace td
