#include "fileOperator/file/Copies.h"

#include <cerrno>
#include <cstring>

#include <dataModule/common/FileUtil.h>

#include "common/Log.h"
#include "fileOperator/file/RedoRecord.h"
#include "fileOperator/file/SummaryReader.h"

namespace td {

namespace {

std::string directoryOf(const std::string& path) {
    return path.substr(0, path.find_last_of('/') + 1);
}

} // namespace

bool Copies::isNoFile(const std::string& path, const char* category) {
    if (!FileUtil::isStray(path.c_str()))
        return false;
    TD_WARNING("[%s]: what stands at [%s] is no file.\n", category, path.c_str());
    return true;
}

bool Copies::makeRoom(const std::string& path, const char* category) {
    std::string aside;
    if (!FileUtil::isStray(path.c_str()))
        return true;
    if (!FileUtil::moveAside(path.c_str(), aside)) {
        TD_ERROR("[%s]: what stands at [%s] is no file and cannot be moved aside (%s), so none is made there.\n",
                 category, path.c_str(), std::strerror(errno));
        return false;
    }
    TD_WARNING("[%s]: what stood at [%s] is no file; it is [%s] now.\n", category, path.c_str(), aside.c_str());
    return true;
}

bool Copies::recoverFrom(const std::string& from) const {
    const std::string directory = directoryOf(m_paths.current);
    if (!FileUtil::checkPath(directory.c_str(), true)) {
        TD_WARNING("recover failed -- data path [%s] not exist and couldn't create.\n", directory.c_str());
        logWhere();
        return false;
    }
    if (hasReadableSize(from.c_str()) && makeRoom(m_paths.current, m_category) &&
        FileUtil::replaceFile(from.c_str(), m_paths.current.c_str())) {
        TD_INFO("recover file [%s] from file [%s] successfully.\n", m_paths.current.c_str(), from.c_str());
        return true;
    }
    TD_WARNING("recover file [%s] from file [%s] failed.\n", m_paths.current.c_str(), from.c_str());
    logWhere();
    return false;
}

bool Copies::makeBackupDirectory() const {
    const std::string directory = directoryOf(m_paths.backup);
    if (FileUtil::checkPath(directory.c_str(), true))
        return true;
    TD_WARNING("backup failed -- data path [%s] not exist and couldn't create.\n", directory.c_str());
    logWhere();
    return false;
}

bool Copies::backUp() const {
    if (fileVerifies(m_paths.current.c_str(), nullptr) && makeRoom(m_paths.backup, m_category) &&
        FileUtil::replaceFile(m_paths.current.c_str(), m_paths.backup.c_str()))
        return true;
    TD_WARNING("Backup file [%s] from file [%s] failed.\n", m_paths.backup.c_str(), m_paths.current.c_str());
    logWhere();
    return false;
}

bool Copies::makeFactory() const {
    if (!isNoFile(m_paths.factory, m_category) && FileUtil::checkPath(directoryOf(m_paths.factory).c_str(), true) &&
        FileUtil::replaceFile(m_paths.current.c_str(), m_paths.factory.c_str())) {
        TD_INFO("create file [%s] from file [%s] successfully.'\n", m_paths.factory.c_str(), m_paths.current.c_str());
        return true;
    }
    TD_WARNING("create file [%s] from file [%s] failed.\n", m_paths.factory.c_str(), m_paths.current.c_str());
    logWhere();
    return false;
}

bool Copies::resetFromFactory(const char* version) const {
    if (fileVerifies(m_paths.factory.c_str(), version) && makeRoom(m_paths.current, m_category) &&
        FileUtil::replaceFile(m_paths.factory.c_str(), m_paths.current.c_str()))
        return true;
    logWhere();
    return false;
}

bool Copies::removeAll(const std::string& factory) const {
    static_cast<void>(remove(factory));
    static_cast<void>(remove(m_paths.backup));
    return removeCurrent();
}

bool Copies::removeCurrent() const {
    FileUtil::removeSingleFile(redoPath(m_paths.current).c_str());
    return remove(m_paths.current);
}

bool Copies::remove(const std::string& path) const {
    m_at.set(path);
    if (FileUtil::removeSingleFile(path.c_str()) == 0)
        return true;
    TD_WARNING("remove file [%s] failed.\n", path.c_str());
    logWhere();
    return false;
}

void Copies::logWhere() const {
    TD_WARNING("[%s]: in file [%s].\n", m_category, m_at.load());
}

} // namespace td
