// Definitions of the C library's own functions, which have to look as they do there.
#include "FileCalls.h"

#include <array>
#include <atomic>
#include <cerrno>
#include <cstdarg>
#include <cstdint>
#include <cstdio>
#include <map>
#include <mutex>
#include <string_view>
#include <utility>

#include <dirent.h>
#include <dlfcn.h>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <syslog.h>
#include <unistd.h>

#include "common/LockOrder.h"

#define SEEN_BY_THE_LIBRARY __attribute__((visibility("default")))

namespace td::test {
namespace {

constexpr std::size_t DESCRIPTORS = 4096;

/// Never destroyed: threads of the library may outlive main().
struct State {
    std::recursive_mutex mutex;
    std::string root; ///< with a slash at the end
    FileWatcher* watcher = nullptr;
    std::array<std::string, DESCRIPTORS> paths; ///< by watched descriptor
    std::map<DIR*, std::string> listings;
};

State& state() {
    static auto* const all = new State;
    return *all;
}

std::atomic<bool> g_watching{false};
std::array<std::atomic<bool>, DESCRIPTORS> g_isWatched{};
thread_local int t_unwatched = 0;

/// What the C library calls a function. Where long has 32 bits, those whose offsets, inode numbers or times have 64 go
/// by names of their own, for callers and for the definitions in this file alike.
const char* nameInTheLibrary(const char* name) {
    if (sizeof(long) == sizeof(std::int64_t))
        return name;
    static constexpr std::pair<std::string_view, const char*> OTHERS[] = {
        {"open", "open64"},          {"openat", "openat64"},        {"pwrite", "pwrite64"},
        {"lseek", "lseek64"},        {"ftruncate", "ftruncate64"},  {"readdir", "readdir64"},
        {"pread", "pread64"},        {"fcntl", "fcntl64"},          {"futimens", "__futimens64"},
        {"stat", "__stat64_time64"}, {"lstat", "__lstat64_time64"}, {"fstat", "__fstat64_time64"},
    };
    for (const auto& [function, other] : OTHERS) {
        if (function == name)
            return other;
    }
    return name;
}

/// The C library's function behind the definition in this file.
template <class Function>
Function* behind(Function*, const char* name) {
    return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, nameInTheLibrary(name)));
}
#define BEHIND(function) (td::test::behind(&::function, #function))

bool isWatched(int descriptor) {
    return descriptor >= 0 && static_cast<std::size_t>(descriptor) < DESCRIPTORS &&
           g_isWatched[static_cast<std::size_t>(descriptor)] && t_unwatched == 0;
}

/// One call on its way, under the lock if it concerns a watched file.
class Call {
public:
    Call(FileCall kind, const char* path) : m_kind(kind) {
        if (!g_watching || t_unwatched > 0 || path == nullptr)
            return;
        enter();
        m_path = path;
        const std::string& root = state().root;
        if (state().watcher == nullptr || m_path.compare(0, root.size(), root) != 0)
            leave();
        else
            m_path = relative(m_path);
    }
    Call(FileCall kind, int descriptor) : m_kind(kind) {
        if (!isWatched(descriptor))
            return;
        enter();
        if (state().watcher == nullptr)
            leave();
        else
            m_path = state().paths[static_cast<std::size_t>(descriptor)];
    }
    Call(FileCall kind, DIR* listing) : m_kind(kind) {
        if (!g_watching || t_unwatched > 0)
            return;
        enter();
        const auto found = state().listings.find(listing);
        if (state().watcher == nullptr || found == state().listings.end())
            leave();
        else
            m_path = found->second;
    }
    ~Call() { leave(); }
    Call(const Call&) = delete;
    Call& operator=(const Call&) = delete;

    bool seen() const { return m_entered; }
    /// Whether the watcher has the call fail; errno is set then.
    bool fails() {
        if (!m_entered)
            return false;
        m_verdict = state().watcher->asked(m_kind, m_path);
        if (m_verdict.error != 0)
            errno = m_verdict.error;
        return m_verdict.error != 0;
    }
    bool isPartial() const { return m_verdict.isPartial; }
    const std::string& path() const { return m_path; }
    FileWatcher& watcher() const { return *state().watcher; }
    /// Lets others go on during a call that may wait for them.
    void letOthersGoOn() { leave(); }

    static std::string relative(const std::string& path) {
        std::string name = path.substr(state().root.size());
        while (!name.empty() && name.back() == '/')
            name.pop_back();
        return name;
    }

private:
    void enter() {
        // No call of the system under a lock that readers wait for (invariant 8).
        lockOrder::willCallSystem();
        ++t_unwatched;
        state().mutex.lock();
        m_entered = true;
    }
    void leave() {
        if (!m_entered)
            return;
        const int error = errno;
        state().mutex.unlock();
        --t_unwatched;
        m_entered = false;
        errno = error;
    }

    const FileCall m_kind;
    bool m_entered = false;
    std::string m_path;
    Verdict m_verdict;
};

bool exists(const char* path) {
    static const auto real = BEHIND(access);
    return real(path, F_OK) == 0;
}

void noteOpened(const Call& call, int descriptor, bool created, bool emptied) {
    const auto index = static_cast<std::size_t>(descriptor);
    if (index >= DESCRIPTORS)
        return;
    state().paths[index] = call.path();
    g_isWatched[index] = true;
    call.watcher().opened(descriptor, call.path(), created, emptied);
}

int openFile(const char* path, int flags, mode_t mode) {
    static const auto real = BEHIND(open);
    Call call(FileCall::Open, path);
    if (call.fails())
        return -1;
    const bool created = call.seen() && (flags & O_CREAT) != 0 && !exists(path);
    const int descriptor = real(path, flags, mode);
    if (call.seen() && descriptor >= 0)
        noteOpened(call, descriptor, created, !created && (flags & O_TRUNC) != 0);
    return descriptor;
}

/// `write` writes the given number of the bytes.
template <class Write>
ssize_t writeSeen(int descriptor, off_t offset, const void* bytes, std::size_t size, Write write) {
    Call call(FileCall::Write, descriptor);
    if (call.fails())
        return -1;
    const ssize_t written = write(call.isPartial() ? (size + 1) / 2 : size);
    if (call.seen() && written > 0)
        call.watcher().wrote(descriptor, offset, {static_cast<const char*>(bytes), static_cast<std::size_t>(written)});
    return written;
}

} // namespace

const char* nameOf(FileCall call) {
    static constexpr const char* NAMES[] = {"open",   "read",   "write", "truncate", "seek", "sync",   "close",
                                            "rename", "remove", "mkdir", "list",     "stat", "change", "lock"};
    return NAMES[static_cast<int>(call)];
}

WatchedFiles::WatchedFiles(const std::string& root, FileWatcher& watcher) {
    const std::lock_guard<std::recursive_mutex> lock(state().mutex);
    state().root = root + "/";
    state().watcher = &watcher;
    g_watching = true;
}

WatchedFiles::~WatchedFiles() {
    const std::lock_guard<std::recursive_mutex> lock(state().mutex);
    g_watching = false;
    state().watcher = nullptr;
    for (std::atomic<bool>& watched : g_isWatched)
        watched = false;
}

Unwatched::Unwatched() {
    ++t_unwatched;
}

Unwatched::~Unwatched() {
    --t_unwatched;
}

bool Unwatched::isActive() {
    return t_unwatched > 0;
}

} // namespace td::test

using td::test::Call;
using td::test::FileCall;

extern "C" {

SEEN_BY_THE_LIBRARY int open(const char* path, int flags, ...) {
    va_list arguments;
    va_start(arguments, flags);
    const mode_t mode = (flags & O_CREAT) != 0 ? static_cast<mode_t>(va_arg(arguments, unsigned int)) : 0;
    va_end(arguments);
    return td::test::openFile(path, flags, mode);
}

/// Only std::filesystem opens so, and only directories, which it closes past this file: asked, but not followed.
SEEN_BY_THE_LIBRARY int openat(int directory, const char* path, int flags, ...) {
    static const auto real = BEHIND(openat);
    va_list arguments;
    va_start(arguments, flags);
    const mode_t mode = (flags & O_CREAT) != 0 ? static_cast<mode_t>(va_arg(arguments, unsigned int)) : 0;
    va_end(arguments);
    Call call(FileCall::Open, path);
    return call.fails() ? -1 : real(directory, path, flags, mode);
}

SEEN_BY_THE_LIBRARY ssize_t read(int descriptor, void* buffer, size_t size) {
    static const auto real = BEHIND(read);
    Call call(FileCall::Read, descriptor);
    return call.fails() ? -1 : real(descriptor, buffer, size);
}

SEEN_BY_THE_LIBRARY ssize_t pread(int descriptor, void* buffer, size_t size, off_t offset) {
    static const auto real = BEHIND(pread);
    Call call(FileCall::Read, descriptor);
    return call.fails() ? -1 : real(descriptor, buffer, size, offset);
}

SEEN_BY_THE_LIBRARY ssize_t write(int descriptor, const void* buffer, size_t size) {
    static const auto real = BEHIND(write);
    static const auto seek = BEHIND(lseek);
    return td::test::writeSeen(descriptor, seek(descriptor, 0, SEEK_CUR), buffer, size,
                               [&](size_t count) { return real(descriptor, buffer, count); });
}

SEEN_BY_THE_LIBRARY ssize_t pwrite(int descriptor, const void* buffer, size_t size, off_t offset) {
    static const auto real = BEHIND(pwrite);
    return td::test::writeSeen(descriptor, offset, buffer, size,
                               [&](size_t count) { return real(descriptor, buffer, count, offset); });
}

SEEN_BY_THE_LIBRARY off_t lseek(int descriptor, off_t offset, int whence) __THROW {
    static const auto real = BEHIND(lseek);
    Call call(FileCall::Seek, descriptor);
    return call.fails() ? -1 : real(descriptor, offset, whence);
}

SEEN_BY_THE_LIBRARY int ftruncate(int descriptor, off_t size) __THROW {
    static const auto real = BEHIND(ftruncate);
    Call call(FileCall::Truncate, descriptor);
    const int result = call.fails() ? -1 : real(descriptor, size);
    if (call.seen() && result == 0)
        call.watcher().truncated(descriptor, size);
    return result;
}

SEEN_BY_THE_LIBRARY int fsync(int descriptor) {
    static const auto real = BEHIND(fsync);
    Call call(FileCall::Sync, descriptor);
    const int result = call.fails() ? -1 : real(descriptor);
    if (call.seen() && result == 0)
        call.watcher().synced(descriptor);
    return result;
}

SEEN_BY_THE_LIBRARY int fdatasync(int descriptor) {
    static const auto real = BEHIND(fdatasync);
    Call call(FileCall::Sync, descriptor);
    const int result = call.fails() ? -1 : real(descriptor);
    if (call.seen() && result == 0)
        call.watcher().synced(descriptor);
    return result;
}

SEEN_BY_THE_LIBRARY int close(int descriptor) {
    static const auto real = BEHIND(close);
    Call call(FileCall::Close, descriptor);
    const bool fails = call.fails();
    const int error = errno;
    if (call.seen()) {
        td::test::g_isWatched[static_cast<size_t>(descriptor)] = false;
        call.watcher().closed(descriptor);
    }
    const int result = real(descriptor);
    if (!fails)
        return result;
    errno = error;
    return -1;
}

SEEN_BY_THE_LIBRARY int rename(const char* from, const char* to) __THROW {
    static const auto real = BEHIND(rename);
    Call call(FileCall::Rename, from);
    const int result = call.fails() ? -1 : real(from, to);
    if (call.seen() && result == 0)
        call.watcher().renamed(call.path(), Call::relative(to));
    return result;
}

SEEN_BY_THE_LIBRARY int unlink(const char* path) __THROW {
    static const auto real = BEHIND(unlink);
    Call call(FileCall::Remove, path);
    const int result = call.fails() ? -1 : real(path);
    if (call.seen() && result == 0)
        call.watcher().removed(call.path());
    return result;
}

SEEN_BY_THE_LIBRARY int rmdir(const char* path) __THROW {
    static const auto real = BEHIND(rmdir);
    Call call(FileCall::Remove, path);
    const int result = call.fails() ? -1 : real(path);
    if (call.seen() && result == 0)
        call.watcher().removedDirectory(call.path());
    return result;
}

SEEN_BY_THE_LIBRARY int remove(const char* path) __THROW {
    const int result = unlink(path);
    return result != 0 && errno == EISDIR ? rmdir(path) : result;
}

SEEN_BY_THE_LIBRARY int mkdir(const char* path, mode_t mode) __THROW {
    static const auto real = BEHIND(mkdir);
    Call call(FileCall::MakeDirectory, path);
    const int result = call.fails() ? -1 : real(path, mode);
    if (call.seen() && result == 0)
        call.watcher().madeDirectory(call.path());
    return result;
}

SEEN_BY_THE_LIBRARY int access(const char* path, int mode) __THROW {
    static const auto real = BEHIND(access);
    Call call(FileCall::Status, path);
    return call.fails() ? -1 : real(path, mode);
}

SEEN_BY_THE_LIBRARY int stat(const char* path, struct stat* status) __THROW {
    static const auto real = BEHIND(stat);
    Call call(FileCall::Status, path);
    return call.fails() ? -1 : real(path, status);
}

SEEN_BY_THE_LIBRARY int lstat(const char* path, struct stat* status) __THROW {
    static const auto real = BEHIND(lstat);
    Call call(FileCall::Status, path);
    return call.fails() ? -1 : real(path, status);
}

SEEN_BY_THE_LIBRARY int fstat(int descriptor, struct stat* status) __THROW {
    static const auto real = BEHIND(fstat);
    Call call(FileCall::Status, descriptor);
    return call.fails() ? -1 : real(descriptor, status);
}

SEEN_BY_THE_LIBRARY int fchmod(int descriptor, mode_t mode) __THROW {
    static const auto real = BEHIND(fchmod);
    Call call(FileCall::Change, descriptor);
    return call.fails() ? -1 : real(descriptor, mode);
}

SEEN_BY_THE_LIBRARY int fchown(int descriptor, uid_t owner, gid_t group) __THROW {
    static const auto real = BEHIND(fchown);
    Call call(FileCall::Change, descriptor);
    return call.fails() ? -1 : real(descriptor, owner, group);
}

SEEN_BY_THE_LIBRARY int futimens(int descriptor, const struct timespec* times) __THROW {
    static const auto real = BEHIND(futimens);
    Call call(FileCall::Change, descriptor);
    return call.fails() ? -1 : real(descriptor, times);
}

/// All commands have one argument or none.
SEEN_BY_THE_LIBRARY int fcntl(int descriptor, int command, ...) {
    static const auto real = BEHIND(fcntl);
    va_list arguments;
    va_start(arguments, command);
    void* const argument = va_arg(arguments, void*);
    va_end(arguments);
    Call call(FileCall::Change, descriptor);
    return call.fails() ? -1 : real(descriptor, command, argument);
}

SEEN_BY_THE_LIBRARY int flock(int descriptor, int operation) __THROW {
    static const auto real = BEHIND(flock);
    Call call(FileCall::Lock, descriptor);
    if (call.fails())
        return -1;
    call.letOthersGoOn();
    return real(descriptor, operation);
}

SEEN_BY_THE_LIBRARY DIR* opendir(const char* path) {
    static const auto real = BEHIND(opendir);
    Call call(FileCall::List, path);
    DIR* const listing = call.fails() ? nullptr : real(path);
    if (call.seen() && listing != nullptr)
        td::test::state().listings[listing] = call.path();
    return listing;
}

SEEN_BY_THE_LIBRARY dirent* readdir(DIR* listing) {
    static const auto real = BEHIND(readdir);
    Call call(FileCall::List, listing);
    return call.fails() ? nullptr : real(listing);
}

SEEN_BY_THE_LIBRARY int closedir(DIR* listing) {
    static const auto real = BEHIND(closedir);
    {
        const Call call(FileCall::List, listing);
        if (call.seen())
            td::test::state().listings.erase(listing);
    }
    return real(listing);
}

/// Many thousand failed writes are no news for this machine's log.
SEEN_BY_THE_LIBRARY void syslog(int, const char*, ...) {}

} // extern "C"
