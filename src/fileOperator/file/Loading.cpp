#include "fileOperator/file/Loading.h"

#include <cerrno>
#include <cstring>
#include <string>

#include <dataModule/common/TimeUtil.h>
#include <dataModule/fileOperator/AbstractFileOperator.h>

#include "common/Deadline.h"
#include "common/Log.h"
#include "fileOperator/file/Loader.h"
#include "fileOperator/file/NewFile.h"

namespace td {

namespace {

/// Values that are served from memory are until a load has taken their place.
struct MemoryScope {
    explicit MemoryScope(CategoryState& loading) : state(loading), wasServed(loading.servesMemory.exchange(false)) {}
    ~MemoryScope() {
        if (wasServed && !hasEnded)
            state.servesMemory = true;
    }
    MemoryScope(const MemoryScope&) = delete;
    MemoryScope& operator=(const MemoryScope&) = delete;

    CategoryState& state;
    const bool wasServed;
    bool hasEnded = false;
};

bool loadAgain(CategoryState& state) {
    // The worker's other categories would wait too.
    state.lock.limitWaits(deadlineIn(0));
    state.takeFiles();
    // What was released is loaded again by the resume.
    if (state.lock.filesUnsure() || !state.isLoaded()) {
        errno = EBUSY;
        return false;
    }
    const std::string current = state.currentPath();
    std::string aside;
    if (FileUtil::isStray(current.c_str())) {
        if (!FileUtil::moveAside(current.c_str(), aside))
            return false;
        TD_WARNING("[%s]: [%s] was moved out of the way and is [%s] now.\n", state.categoryName(), current.c_str(),
                   aside.c_str());
    }
    if (!loadFromFiles(state) || state.servesMemory)
        return false;
    TD_INFO("[%s]: file [%s] is loaded again.\n", state.categoryName(), state.file.path().load());
    return true;
}

void mergeFailed(CategoryState& state) {
    state.merge.failed();
    state.contents->mergeFailed();
}

/// Whatever is thrown on the way, the merge is then known to be written or not.
void writeMerged(CategoryState& state) {
    try {
        AbstractFileOperator::createFileProc(&state.op);
    } catch (...) {
        TD_ERROR("create file (%s) failed when load OTA data.\n", state.file.path().load());
        state.logWhere();
        mergeFailed(state);
    }
}

void* mergeProc(void* argument) {
    auto& state = *static_cast<CategoryState*>(argument);
    const SectionLock lock(state.lock);
    state.lock.keepFiles(false);
    writeMerged(state);
    return nullptr;
}

} // namespace

bool loadFromFiles(CategoryState& state) {
    // A merge that could not be written is in the table alone; if it still cannot be, it is made again.
    if (state.merge.isUnwritten() && !wasMergedByOther(state))
        writeMergedFile(state);
    {
        VersionMerge::Attempt merge(state.merge);
        MemoryScope memory(state);
        const Presence before = state.presence;
        const bool keepsStores = memory.wasServed || before == Presence::Released || before == Presence::Reset;
        const auto load = [&] { return Loader(state, merge).load(); };
        if (!loadContentsBy(state, keepsStores ? Contents::Loaded::Kept : Contents::Loaded::Dropped, load))
            return false;
        state.presence = Presence::Loaded;
        memory.hasEnded = true;
        merge.goesOn();
    }
    if (state.merge.isUnderWay())
        startMergeThread(state);
    return true;
}

bool loadForeign(CategoryState& state, const char* path) {
    const std::string before = state.file.path().load();
    bool loaded = state.op.loadSummary(path);
    if (!loaded) {
        TD_WARNING("load summary failed from file [%s].\n", path != nullptr ? path : "");
        state.logWhere();
    } else {
        loaded = loadContentsBy(state, Contents::Loaded::Dropped, [&state] { return state.op.loadContents(); });
        if (!loaded) {
            TD_WARNING("load contents failed from file [%s].\n", path);
            state.logWhere();
        }
    }
    state.closeFile();
    state.file.path().set(before);
    return loaded;
}

bool makeUpForLoad(CategoryState& state) {
    return !state.servesMemory || loadAgain(state);
}

bool hasFailed(const CategoryState& state) {
    return state.servesMemory || state.merge.isUnwritten() || state.contents->hasFailed();
}

void tryAgain(CategoryState& state) {
    if (!state.isLoaded() || !hasFailed(state) || !state.op.getStoreFileFlag() || !state.tryEnter())
        return;
    errno = 0;
    bool done = false;
    bool hadFailed = false;
    try {
        done = makeUpForLoad(state);
        hadFailed = state.merge.isUnwritten() || state.contents->hasFailed();
        if (done && state.merge.isUnwritten() && !wasMergedByOther(state))
            done = writeMergedFile(state);
        else
            done = done && state.contents->writeFailed();
    } catch (const std::exception& error) {
        done = false;
        TD_WARNING("unexpected exception: %s\n", error.what());
    }
    const int cause = done ? 0 : errno != 0 ? errno : EIO;
    const char* const path = state.file.path().load();
    if (done && hadFailed) {
        TD_INFO("[%s]: what could not be written to file [%s] is written now.\n", state.categoryName(), path);
        state.backupRequest = true;
    } else if (!done && cause != state.retryError) {
        TD_WARNING("[%s]: what was stored is not in file [%s] yet (%s), it is tried again from time to time.\n",
                   state.categoryName(), path, std::strerror(cause));
    }
    state.retryError = cause;
    state.lock.unlock();
}

bool loadIfReleased(CategoryState& state) {
    return state.presence != Presence::Released || state.op.loadFile();
}

void dropStores(CategoryState& state) {
    const SectionLock lock(state.lock);
    state.contents->giveUpStores();
}

// --- the file that a merge of versions makes ---

void startMergeThread(CategoryState& state) {
    TimeUtil::instance()->start();
    // No other process may merge the same file, or store in it, before this one has written what it read.
    state.lock.keepFiles(true);
    if (!state.merge.startThread(mergeProc, &state)) {
        state.lock.keepFiles(false);
        TD_WARNING("no thread to create NEW current file (%s), so create it at once.\n", state.file.path().load());
        state.logWhere();
        writeMerged(state);
    }
    TD_INFO("#################### load OTA data flow end. ###################.\n");
}

bool writeMergedFile(CategoryState& state) {
    TD_INFO("start to create NEW current file (%s) when load OTA data.\n", state.file.path().load());
    if (!makeNewFile(state, false)) {
        // The current copy is still of the other version: read again, it has to be merged again.
        mergeFailed(state);
        TD_WARNING("create file (%s) failed when load OTA data.\n", state.file.path().load());
        state.logWhere();
        return false;
    }
    state.merge.written();
    TD_INFO("#################### load OTA data flow end. ###################.\n");
    return true;
}

bool wasMergedByOther(CategoryState& state) {
    state.takeFiles();
    if (!fileVerifies(state.currentPath().c_str(), state.name.version))
        return false;
    state.merge.wasWrittenElsewhere();
    return true;
}

void waitForMerge(CategoryState& state) {
    const NoCancel noCancel;
    OsalThreads::Handle handle = OsalThreads::INVALID_HANDLE;
    {
        const SectionLock lock(state.lock);
        handle = state.merge.takeThread();
    }
    if (handle != OsalThreads::INVALID_HANDLE)
        OsalThreads::join(handle);
}

} // namespace td
