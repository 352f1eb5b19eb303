#include <dataModule/fileOperator/CriticalSection.h>

namespace td {

namespace {

/// The innermost of those that the thread has claimed files in; the others follow by their m_outer.
thread_local CriticalSection* t_claimed = nullptr;

} // namespace

void CriticalSection::claim(Claim kind, const std::string& lockFile) {
    note(lockFile);
    m_claim = kind;
    const FileLock::Kind lock = kind == Claim::Shared ? FileLock::Kind::Shared : FileLock::Kind::Exclusive;
    m_wasGivenUp = m_files.lock(lockFile, lock, m_patience) == FileLock::Attempt::Busy;
}

void CriticalSection::note(const std::string& lockFile) {
    if (m_isNoted)
        return;
    m_lockFile = lockFile;
    m_isNoted = true;
    m_outer = t_claimed;
    t_claimed = this;
}

void CriticalSection::leaveFiles() {
    if (m_isNoted) {
        CriticalSection** link = &t_claimed;
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

CriticalSection* CriticalSection::claimedHere(const std::string& lockFile) {
    CriticalSection* section = t_claimed;
    while (section != nullptr && section->m_lockFile != lockFile)
        section = section->m_outer;
    return section;
}

} // namespace td
