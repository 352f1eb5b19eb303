#include "fileOperator/file/NewFile.h"

#include <cstring>

#include <dataModule/common/TimeUtil.h>
#include <dataModule/fileOperator/AbstractFileOperator.h>

#include "common/Log.h"
#include "fileOperator/file/CategoryState.h"

namespace td {

namespace {

bool writeWholeText(CategoryState& state, bool defaults) {
    FileUtil& stream = state.file.stream();
    const DeferredSync deferred(stream, true);
    const char* const path = state.file.path().load();
    if (!stream.resetStartPos()) {
        TD_WARNING("reset file position of [%s] failed.\n", path);
        return false;
    }
    state.file.forgetSummary();
    const char* failed = nullptr;
    if (!state.op.buildComments())
        failed = "comments";
    else if (!state.op.buildSummary(true))
        failed = "summary";
    else if (!state.op.buildContents(defaults))
        failed = "contents";
    if (failed != nullptr) {
        TD_WARNING("write file %s to file [%s] failed.\n", failed, path);
        state.logWhere();
        return false;
    }
    return rewriteSummary(state) && stream.syncFile();
}

/// Whether the new file may be made where the current copy is to be.
bool hasPlace(CategoryState& state, const std::string& path, bool defaults) {
    const std::string directory = paths::currentDirectory();
    if (!FileUtil::checkPath(directory.c_str(), true)) {
        TD_WARNING("init failed -- data path [%s] not exist and couldn't create.\n", directory.c_str());
        state.logWhere();
        return false;
    }
    if (!Copies::makeRoom(path, state.categoryName()))
        return false;
    if (defaults && FileUtil::checkFile(path.c_str())) {
        TD_WARNING("init failed -- file [%s] exist.\n", path.c_str());
        state.logWhere();
        return false;
    }
    return true;
}

} // namespace

bool makeNewFile(CategoryState& state, bool defaults) {
    // What is read to complete the table must still be so when it is written.
    state.takeFiles();
    if (!state.contents->prepareFile(defaults))
        return false;
    if (state.lock.filesUnsure()) {
        TD_WARNING("create file [%s] failed, for another process is at work on it.\n", state.name.file);
        return false;
    }
    state.closeFile();
    state.file.mode = NORMAL_LOAD;
    state.file.nameHasChanged();
    const std::string path = state.currentPath();
    state.file.path().set(path);
    TD_INFO("======================= start to init file =====================\n");
    TD_INFO("init file [%s] ...\n", path.c_str());
    if (!hasPlace(state, path, defaults))
        return false;
    const std::string temporary = path + FileUtil::TEMPORARY_SUFFIX;
    FileUtil::makeWay(temporary.c_str());
    if (!state.file.open(temporary, "w+x")) {
        TD_WARNING("create file [%s] failed.\n", path.c_str());
        state.logWhere();
        return false;
    }
    TimeUtil::instance()->start();
    bool written = writeWholeText(state, defaults) && state.file.stream().takeModeAndOwner(path.c_str());
    state.closeFile();
    written = written && FileUtil::commitTemporary(temporary.c_str(), path.c_str());
    TD_INFO("init file [%s] completely, elpased time = %d (ms).\n", path.c_str(), elapsedMilliseconds());
    if (!written) {
        state.logWhere();
        FileUtil::removeSingleFile(temporary.c_str());
        return false;
    }
    state.contents->fileMade(defaults);
    state.changedCurrent();
    state.op.backupFile(defaults);
    if (state.backupOutdated)
        state.backupRequest = true;
    return true;
}

Found scanFor(CategoryState& state, const char* id) {
    FileUtil& stream = state.file.stream();
    if (id == nullptr || !stream.isOpend() || !stream.resetStartPos()) {
        TD_WARNING("reset file [%s] pointer to start pos failed when searchSection(%s).\n", state.file.path().load(),
                   id != nullptr ? id : "");
        state.logWhere();
        return Found::Failed;
    }
    state.file.comment().clear();
    bool inComment = true;
    char line[text::LINE_BUFFER];
    while (stream.readLine(line, sizeof line)) {
        inComment = inComment && text::isComment(line);
        if (inComment) {
            state.file.comment() += line;
            continue;
        }
        if (std::strcmp(line, id) == 0)
            return Found::Yes;
        if (state.op.enableDebugLog() != 0)
            TD_DETAIL("[READ LINE]: %s", line);
    }
    return stream.reachEnd() ? Found::EndOfFile : Found::Failed;
}

bool rewriteSummary(CategoryState& state) {
    SettingsFile& file = state.file;
    const char* const path = file.path().load();
    // The lines are rewritten in place, so the ones that stand there must have the written widths (invariant 3).
    if (scanFor(state, text::SUMMARY_HEADER) != Found::Yes || file.summary().length != text::SUMMARY_LENGTH) {
        TD_WARNING("Update summay info for file [%s] failed because of finding section ID [%s] failed.\n", path,
                   text::SUMMARY_HEADER);
        state.logWhere();
        return false;
    }
    unsigned int crc = 0;
    if (!file.contentChecksum(crc)) {
        TD_WARNING("Update summay info for file [%s] failed because of crc code.\n", path);
        state.logWhere();
        return false;
    }
    file.crc = crc;
    const int linesPosition = static_cast<int>(file.comment().size() + std::strlen(text::SUMMARY_HEADER));
    if (file.stream().setPos(linesPosition) && state.op.buildSummary(false))
        return true;
    TD_WARNING("Update summay info for file [%s] failed because writting.\n", path);
    state.logWhere();
    return false;
}

} // namespace td
