#include "fileOperator/file/UnendedWrite.h"

#include <cerrno>
#include <utility>

#include "fileOperator/file/SummaryReader.h"

namespace td {

void UnendedWrite::keep(RedoRecord record, const FileIdentity& file) {
    m_kept = std::move(record);
    m_keptFor = file;
}

bool UnendedWrite::isLikely(const std::string& settingsFile) const {
    return !m_kept.writes.empty() || redoIsPending(settingsFile);
}

bool UnendedWrite::end(const std::string& settingsFile, unsigned int& crc) {
    m_error = 0;
    const bool changed = endKept(settingsFile, crc);
    // What lies there as a record does not make good what was kept and could not be ended.
    if (changed || m_error != 0)
        return changed;
    return redoIsPending(settingsFile) && replayRedo(settingsFile, crc, &m_error);
}

bool UnendedWrite::endKept(const std::string& settingsFile, unsigned int& crc) {
    if (m_kept.writes.empty())
        return false;
    const bool isThere = m_keptFor.isAt(settingsFile) && !fileVerifies(settingsFile.c_str(), nullptr);
    errno = 0;
    if (isThere && !repeatWrite(settingsFile, m_kept)) {
        m_error = errno != 0 ? errno : EIO;
        return false;
    }
    m_kept.writes.clear();
    if (isThere)
        crc = m_kept.crc;
    return isThere;
}

} // namespace td
