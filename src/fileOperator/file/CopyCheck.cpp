#include "fileOperator/file/CopyCheck.h"

#include <cerrno>
#include <cstring>
#include <string>

#include <dataModule/fileOperator/AbstractFileOperator.h>

#include "common/Log.h"
#include "fileOperator/file/CategoryState.h"

namespace td {

CopyState CopyCheck::verify(_LOAD_FILE_MODE mode, Versions versions) {
    if (m_state.parent == nullptr)
        return {Verdict::Missing};
    m_state.shareFiles();
    if (m_state.lock.filesUnsure() && !m_state.lock.gaveUpWaiting())
        return CopyState::unreadable(EMFILE);
    const std::string path = mode == MANUFACTORY_LOAD ? m_state.factoryPath() : m_state.pathOf(mode);
    m_state.closeFile();
    m_state.file.path().set(path);
    TD_INFO("current load mode is: [%s] and ready to load data file is: [%s] ...\n",
            AbstractFileOperator::getLoadMode(mode), path.c_str());
    const CopyState opened = openCopy(mode);
    if (opened.isGood())
        return verifyOpen(&mode, versions, FileUtil::getFileSize(path.c_str()));
    m_state.logWhere();
    return opened;
}

CopyState CopyCheck::openCopy(_LOAD_FILE_MODE mode) {
    const std::string path = m_state.file.path().load();
    const CopyState there =
        Copies::isNoFile(path, m_state.categoryName()) ? CopyState{Verdict::Missing} : lookFor(path.c_str());
    if (!there.isGood()) {
        TD_WARNING("load file failed -- file [%s] isn't exist.\n", path.c_str());
        return there;
    }
    errno = 0;
    const int size = FileUtil::getFileSize(path.c_str());
    const int error = size < 0 ? errno : 0;
    // A size beyond an int reads as -1.
    if (size > text::MAX_FILE_SIZE || size < 0) {
        TD_WARNING("the file [%s] size is [%d] and exception%s.\n", path.c_str(), size,
                   mode == MANUFACTORY_LOAD ? "" : ", so will RECOVER it from manufactory");
        return error != 0 ? CopyState::unreadable(error) : CopyState{Verdict::Damaged};
    }
    // What cannot be written to can be read at least.
    if (m_state.file.open(path, mode == MANUFACTORY_LOAD ? "r" : "r+") || m_state.file.open(path, "r"))
        return {};
    const CopyState refused = CopyState::unreadable(errno);
    TD_WARNING("open file [%s] failed.\n", path.c_str());
    return refused;
}

CopyState CopyCheck::lookFor(const char* path) {
    errno = 0;
    if (FileUtil::checkFile(path))
        return {};
    const int error = errno;
    if (error == ENOENT || error == ENOTDIR || FileUtil::isStray(path))
        return {Verdict::Missing};
    return CopyState::unreadable(error);
}

CopyState CopyCheck::verify(const char* path) {
    m_state.shareFiles();
    m_state.closeFile();
    if (path == nullptr || std::strlen(path) >= static_cast<std::size_t>(paths::PATH_SIZE))
        return {Verdict::Missing};
    m_state.file.path().set(path);
    CopyState there = Copies::isNoFile(path, m_state.categoryName()) ? CopyState{Verdict::Missing} : lookFor(path);
    if (!there.isGood()) {
        TD_WARNING("load file failed -- file [%s] isn't exist.\n", path);
    } else if (!m_state.file.open(path, "r")) {
        there = CopyState::unreadable(errno);
        TD_WARNING("open file [%s] failed.\n", path);
    } else {
        return verifyOpen(nullptr, Versions::Any, FileUtil::getFileSize(path));
    }
    m_state.logWhere();
    return there;
}

CopyState CopyCheck::switchTo(_LOAD_FILE_MODE mode, Versions versions, const char* name) {
    m_state.closeFile();
    m_state.file.mode = mode;
    const CopyState state = verify(mode, versions);
    if (!state.isGood()) {
        TD_WARNING("Load summary from %s file [%s] failed.\n", name, m_state.file.path().load());
        m_state.logWhere();
    }
    return state;
}

CopyState CopyCheck::switchToCurrent(Versions versions) {
    return switchTo(NORMAL_LOAD, versions, "current");
}

CopyState CopyCheck::switchToFactory() {
    return switchTo(MANUFACTORY_LOAD, Versions::OwnOnly, "manufactory");
}

CopyState CopyCheck::verifyOpen(const _LOAD_FILE_MODE* mode, Versions versions, int size) {
    const SummaryState lines = m_state.file.readSummary(m_state.name.version);
    const CopyState state = checkLines(lines, mode, versions);
    if (!state.isGood()) {
        m_state.logWhere();
        m_state.closeFile();
    } else if (lines == SummaryState::Complete) {
        TD_INFO("SummaryInfo -- SN:[%s] VER:[%s] SIZE:[%d].\n", m_state.file.summary().tvType, m_state.name.version,
                size);
    }
    return state;
}

CopyState CopyCheck::checkLines(SummaryState lines, const _LOAD_FILE_MODE* mode, Versions versions) {
    const Summary& summary = m_state.file.summary();
    const char* const path = m_state.file.path().load();
    const IDataSeparateManagerInner* const parent = m_state.parent;
    if (summary.hasTvType && parent != nullptr && std::strcmp(summary.tvType, m_state.parent->getTvType()) != 0)
        TD_WARNING("The Tv type [%s] of data file [%s] is not matched as defined [%s] .\n", summary.tvType, path,
                   m_state.parent->getTvType());
    if (summary.hasVersion && mode != nullptr && versions == Versions::OwnOnly && m_state.merge.comparesVersions() &&
        parent != nullptr && std::strcmp(summary.version, m_state.name.version) != 0)
        return otherVersion(*mode);
    if (lines == SummaryState::NotReadable) {
        const CopyState unreadable = CopyState::unreadable(errno);
        TD_WARNING("reset file position of [%s] failed.\n", path);
        return unreadable;
    }
    if (const char* const part = badPart(lines)) {
        TD_WARNING("Summary section %s (%s) is invalid.\n", part, summary.badLine);
        return {Verdict::Damaged};
    }
    if (lines == SummaryState::EndOfFile)
        return {};
    return checkChecksum(mode);
}

CopyState CopyCheck::otherVersion(_LOAD_FILE_MODE mode) {
    const char* const name = AbstractFileOperator::getLoadMode(mode);
    TD_WARNING("The Tv Version [%s] of data file [%s] is not matched defined of SW [%s] in [%s].\n",
               m_state.file.summary().version, m_state.file.path().load(), m_state.name.version, name);
    if (mode == MANUFACTORY_LOAD) {
        TD_ERROR("dataModule will terminal loading-data Flow because of  version not matched from manufactory data "
                 "files.\n");
        return {Verdict::Fatal};
    }
    TD_INFO("dataModule will load data as OTA Flow in [%s].\n", name);
    return {Verdict::OtherVersion};
}

CopyState CopyCheck::checkChecksum(const _LOAD_FILE_MODE* mode) {
    const char* const path = m_state.file.path().load();
    const unsigned int stated = m_state.file.summary().crc;
    unsigned int computed = 0;
    if (!m_state.file.contentChecksum(computed)) {
        const CopyState unreadable = CopyState::unreadable(errno);
        TD_WARNING("Failed to Calculate CRC code of data file [%s].\n", path);
        return unreadable;
    }
    if (computed == stated) {
        m_state.file.crc = computed;
        return {};
    }
    TD_WARNING("The CRC [0x%08x] of data file [%s] is not matched actually [0x%08x] ...\n", stated, path, computed);
    if (mode == nullptr)
        return {Verdict::Damaged};
    if (*mode == MANUFACTORY_LOAD) {
        TD_ERROR("dataModule will terminal loading-data Flow because of  CRC checking not passed from manufactory data "
                 "files.\n");
        return {Verdict::Fatal};
    }
    TD_WARNING("dataModule will load data as RECOVER flow in [%s].\n", AbstractFileOperator::getLoadMode(*mode));
    return {Verdict::Damaged};
}

} // namespace td
