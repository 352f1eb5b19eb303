#include "fileOperator/file/ChecksumRepair.h"

#include <string>

#include <dataModule/common/CRC32Util.h>
#include <dataModule/common/FileUtil.h>

#include "common/FileLock.h"
#include "common/Log.h"
#include "common/NoCancel.h"
#include "common/SystemPaths.h"
#include "fileOperator/file/CategoryLock.h"
#include "fileOperator/file/RedoRecord.h"
#include "fileOperator/file/SummaryReader.h"

namespace td {

namespace {

/// Whether the file has a place for a checksum: whole lines as every reader takes them, and a last one of the length
/// of the one that is to stand there (invariant 3). What stands in that one does not matter.
bool hasChecksumLine(const Summary& summary, SummaryState state) {
    const char* const part = state == SummaryState::NotReadable ? badPart(SummaryState::BadHeader) : badPart(state);
    if (state == SummaryState::EndOfFile) {
        TD_WARNING("read line failed for tv %s.\n", !summary.hasTvType    ? "type"
                                                    : !summary.hasVersion ? "version"
                                                                          : "crc");
        return false;
    }
    if (part != nullptr && state != SummaryState::BadCrc) {
        TD_WARNING("Summary section %s (%s) is invalid.\n", part, summary.badLine);
        return false;
    }
    if (summary.crcLineLength == text::CRC_LINE_LENGTH)
        return true;
    TD_WARNING("Summary section %s (%s) is invalid.\n", badPart(SummaryState::BadCrc), summary.badLine);
    return false;
}

/// Keeps all others off the files: as part of the critical section in which the calling thread is at work on them, or
/// with `lock`. False when that cannot be had for now.
bool takeFilesOf(const std::string& lockFile, FileLock& lock) TD_NO_THREAD_SAFETY_ANALYSIS {
    CategoryLock* const section = CategoryLock::claimedHere(lockFile);
    if (section == nullptr)
        return lock.lock(lockFile, FileLock::Kind::Exclusive) || !lock.failedForNow();
    section->takeFiles(lockFile);
    return !section->filesUnsure();
}

bool rewriteCrcOf(FileUtil& file, const char* path) {
    Summary summary;
    const SummaryState state = readSummary(file, summary);
    if (!hasChecksumLine(summary, state))
        return false;
    unsigned int crc = 0;
    if (!contentChecksum(path, summary.contentPosition(), crc)) {
        TD_WARNING("Failed to Calculate CRC code of data file [%s].\n", path);
        return false;
    }
    if (!file.setPos(summary.crcPosition)) {
        TD_WARNING("Failed to set pos when write CRC code of data file [%s].\n", path);
        return false;
    }
    if (!file.writeFile(text::crcLine(crc).c_str(), true)) {
        TD_WARNING("Failed to write CRC code of data file [%s].\n", path);
        return false;
    }
    return true;
}

} // namespace

bool repairChecksum(const char* path) {
    const NoCancel noCancel;
    if (path == nullptr || !FileUtil::checkFile(path)) {
        TD_WARNING("load file failed -- file [%s] isn't exist.\n", path != nullptr ? path : "");
        return false;
    }
    const std::string name = path;
    const std::string lockFile = paths::lockFile(name.substr(name.find_last_of('/') + 1));
    FileLock lock;
    if (!takeFilesOf(lockFile, lock)) {
        TD_WARNING("the lock of file [%s] cannot be had now, so its CRC code stays as it is.\n", path);
        return false;
    }
    CRC32Util::instance()->init_crc_table();
    // With a right checksum a store that was cut short would pass for a whole one (invariant 7).
    unsigned int ended = 0;
    int failure = 0;
    if (redoIsPending(name))
        replayRedo(name, ended, &failure);
    if (failure != 0) {
        TD_WARNING("a store in file [%s] was cut short and could not be ended.\n", path);
        return false;
    }
    FileUtil file;
    if (!file.openFile(path, "r+")) {
        TD_WARNING("open file [%s] failed.\n", path);
        return false;
    }
    return rewriteCrcOf(file, path);
}

} // namespace td
