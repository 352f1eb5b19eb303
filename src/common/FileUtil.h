/// One open text file per object, read and written line by line, and stateless helpers for files and directories.
///
/// What changes a file goes to the system at once, at the object's own position: nothing is left for the end of the
/// process to write. No opening waits, whatever stands at the path; a FIFO, a socket or a directory is not opened.
///
/// An object belongs to one thread at a time; an operator's is guarded by its critical section. Null paths are answered
/// with the failure value. Only writeFile reports a failure in words, to the system log.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <string>

#include <dataModule/Export.h>

namespace td {

class DATAMODULE_API FileUtil {
public:
    FileUtil() = default;
    virtual ~FileUtil();
    FileUtil(const FileUtil&) = delete;
    FileUtil& operator=(const FileUtil&) = delete;

    // --- the open file; each returns false when none is open ---

    /// Opens `path` for reading and writing, empty. Does nothing, and succeeds, when a file is already open.
    bool createFile(const char* path);
    /// Opens `path` with fopen's `mode` and keeps the name (at most 255 characters). When a file is already open it
    /// stays as it is and only the name is taken.
    bool openFile(const char* path, const char* mode);
    /// Whether a file is open.
    bool isOpend() const;
    /// Writes the whole text at the current position and syncs. The flag is ignored. False, with a line in the system
    /// log, when either fails: the file then holds a part of the text or nothing of it, and nothing of it is written
    /// later.
    bool writeFile(const char* text, bool ignored);
    /// Reads one line as fgets does: at most `size` - 1 characters, newline kept. False at the end of the file.
    bool readLine(char* buffer, int size);
    /// Reads up to `size` bytes; fewer only at the end of the file or when reading fails.
    std::size_t readBytes(char* buffer, std::size_t size);
    /// To offset 0.
    bool resetStartPos();
    /// To `offset` bytes from the start.
    bool setPos(int offset);
    /// The current offset.
    bool getCurrentPos(long& position) const;
    /// True when no file is open or a read has met the end of the file.
    bool reachEnd() const;
    /// Whether any read since the file was opened ended in an error.
    bool readFailed() const;
    /// Closes the file, if any.
    bool closeFile();

    /// While deferred, writeFile leaves the sync to syncFile, so that many writes cost one sync.
    void deferSync(bool deferred);
    /// Syncs what was written.
    bool syncFile();
    /// Gives the open file the mode and owner of the one at `replaced`, if there is one; only a privileged process can
    /// give files away, which is no failure.
    bool takeModeAndOwner(const char* replaced);
    /// Forgets what was read ahead, so that the next read sees the file as it is now.
    bool dropReadAhead();
    /// For calls of the system; -1 when no file is open.
    int descriptor() const;
    /// An unbuffered stream for reading the open file, with a position of its own that begins at the current one. Made
    /// when it is asked for and closed with the file; null when none is open, or one that cannot be read.
    FILE* stream() const;

    // --- paths; no open file needed ---

    /// Whether `path` exists; with `create` makes the one directory (mode 0777) if not. Parents are not made.
    static bool checkPath(const char* path, bool create);
    /// Whether `path` exists.
    static bool checkFile(const char* path);
    /// Bytes of the file, or -1.
    static int getFileSize(const char* path);
    /// A regular file, or a directory; a symbolic link is neither.
    static bool isFile(const char* path);
    static bool isDir(const char* path);
    /// Exactly "." or "..".
    static bool isSpecialDir(const char* name);
    /// Writes `dir`, a '/' if it does not end in one, and `name` into `out` (at least 256 bytes) and returns `out`.
    /// What does not fit in 256 bytes leaves `out` an empty text.
    static char* getFilePath(const char* dir, const char* name, char* out);
    /// Copies the bytes of `from`, a regular file or a link to one, over `to` (made with mode 0666). 0 when both could
    /// be opened, -1 otherwise; read or write errors after that are not reported. Copying a file onto itself is
    /// refused. No sync.
    static int copySingleFile(const char* from, const char* to);
    /// Copies every regular file, or link to one, of the directory `from` into `to`, which is made if missing (one
    /// level). Not recursive; the results of the single copies are ignored.
    static bool copyDirFile(const char* from, const char* to);
    /// Removes a file (0 or -1), or a directory with all that is in it (0). Anything else is left alone (0).
    static int removeDirFile(const char* path);
    /// 0: removed; -1: null or not removable; -2: not readable.
    static int removeSingleFile(const char* path);
    /// Renames `from` to `to` unless `to` exists, which counts as success.
    static bool backup(const char* from, const char* to);
    /// Renames `from` to `to`, removing what is at `to` first.
    static bool recover(const char* from, const char* to);
    /// Strips leading spaces and trailing spaces, carriage returns and line feeds in place. Returns `text`.
    static char* trim(char* text);
    /// The local time as ctime writes it. A static text, shared by all threads.
    static char* getCurrentTime();

    /// Replaces `to` by a copy of `from` so that at every instant, and after a cut of power at any instant, one whole
    /// file is at `to`: copies to `to` + TEMPORARY_SUFFIX, compares the sizes, gives it the mode and owner of the file
    /// it replaces, syncs it, renames it over and syncs the directory. On failure the temporary file is removed and
    /// `to` stays as it was; only when the very last step fails `to` is new already, but may be old again after a cut
    /// of power. Calls for one target wait for each other, in all processes.
    static bool replaceFile(const char* from, const char* to);
    /// The last two steps of replaceFile for a temporary file that is complete and synced; the same on failure.
    static bool commitTemporary(const char* temporary, const char* to);
    /// Removes whatever is at `path` but a directory, so that a new file can be made there; of a symbolic link the
    /// link. False when something stays.
    static bool makeWay(const char* path);
    /// Makes `path` start with `bytes`, on the disk when this returns true; what the file held behind them stays. A
    /// file that is missing is made (mode 0666), its name synced too. Nothing is written, and false returned, where a
    /// symbolic link, a file with further names or no regular file stands.
    static bool writeDurably(const char* path, const std::string& bytes);
    /// Puts a file, or the names in a directory, on the disk.
    static bool syncPath(const char* path);
    /// Puts `bytes` in the place of the first ones of a file. No sync; false also when there is none.
    static bool overwriteStart(const char* path, const std::string& bytes);
    /// Whether the file at `path` starts with `bytes`. No symbolic link is followed.
    static bool startsWith(const char* path, const std::string& bytes);

    /// Whether what stands at `path` is neither a regular file nor a link to one, and so will never be read as a file.
    static bool isStray(const char* path);
    /// Gives what stands at `path`, never followed, another name in its directory, which becomes `newPath`.
    static bool moveAside(const char* path, std::string& newPath);
    /// Ends the name of what was moved aside, with a number.
    static constexpr const char* STRAY_SUFFIX = ".stray";
    /// Ends the name of every unfinished file.
    static constexpr const char* TEMPORARY_SUFFIX = ".tmp";

private:
    static constexpr std::size_t NAME_SIZE = 256;

    bool openDescriptor(const char* path, const char* mode);
    bool syncWritten();
    bool writeAll(const char* bytes, std::size_t count);
    /// Reads once at the position, which stays. 0 at the end or when reading fails.
    std::size_t readSome(char* bytes, std::size_t count);
    /// Fills the buffer from the position on; false when there is nothing to be had.
    bool readAhead();
    /// Moves what the buffer holds at the position, if anything.
    std::size_t takeReadAhead(char* buffer, std::size_t size, bool upToNewline);

    char m_name[NAME_SIZE] = {};
    mutable FILE* m_stream = nullptr; ///< for others, once asked for
    int m_descriptor = -1;            ///< -1: closed
    bool m_appends = false;           ///< every write goes to the end
    bool m_endMet = false;
    bool m_readFailed = false;
    bool m_syncDeferred = false;
    std::int64_t m_position = 0;
    std::unique_ptr<char[]> m_ahead; ///< bytes of the file for readLine; made when needed
    std::int64_t m_aheadOffset = 0;  ///< where they stand in the file
    std::size_t m_aheadCount = 0;
};

/// Defers an object's syncs for the length of a block, if asked to.
class DeferredSync {
public:
    DeferredSync(FileUtil& file, bool deferred) : m_file(file) { m_file.deferSync(deferred); }
    ~DeferredSync() { m_file.deferSync(false); }
    DeferredSync(const DeferredSync&) = delete;
    DeferredSync& operator=(const DeferredSync&) = delete;

private:
    FileUtil& m_file;
};

} // namespace td
