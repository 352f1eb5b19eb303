#include "fileOperator/file/SettingsFile.h"

#include <cstring>

#include <sys/stat.h>

#include "common/SystemPaths.h"

namespace td {

bool SettingsFile::open(const std::string& path, const char* how) {
    close();
    if (path.size() >= static_cast<std::size_t>(paths::PATH_SIZE) || !m_file.openFile(path.c_str(), how))
        return false;
    struct stat status = {};
    if (fstat(m_file.descriptor(), &status) != 0) {
        close();
        return false;
    }
    m_openPath = path;
    m_identity = {status.st_dev, status.st_ino};
    m_isWritable = how[1] == '+';
    return true;
}

void SettingsFile::close() {
    m_file.closeFile();
    m_openPath.clear();
    m_isWritable = false;
    m_lengthsRead = false;
}

bool SettingsFile::isReadyToWrite(const std::string& path) {
    return m_isWritable && m_lengthsRead && m_file.isOpend() && m_identity.isAt(path) && m_file.dropReadAhead();
}

SummaryState SettingsFile::readSummary(const char* ownVersion) {
    const SummaryState state = td::readSummary(m_file, m_summary);
    m_lengthsRead = state == SummaryState::Complete && std::strcmp(m_summary.version, ownVersion) == 0 &&
                    m_summary.crcLineLength == text::CRC_LINE_LENGTH;
    return state;
}

void SettingsFile::forgetSummary() {
    m_summary = Summary();
    m_lengthsRead = false;
}

void SettingsFile::wroteSummary(int length) {
    m_summary.length = length;
    m_summary.crcPosition = m_summary.contentPosition() - text::CRC_LINE_LENGTH;
    m_summary.crcLineLength = text::CRC_LINE_LENGTH;
}

bool SettingsFile::contentChecksum(unsigned int& computed) const {
    return td::contentChecksum(m_openPath.c_str(), contentPosition(), computed);
}

void SettingsFile::makeNameDurable() {
    if (!m_nameIsDurable)
        m_nameIsDurable = FileUtil::syncPath(paths::currentDirectory().c_str()) &&
                          FileUtil::syncPath(underRootPrefix(paths::DATA_DIRECTORY).c_str());
}

} // namespace td
