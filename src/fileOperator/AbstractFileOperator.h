/// The life of one settings file, whatever its records: which copy is read, how a damaged or outdated copy is replaced,
/// summary and checksum, backups, removal, and the operator's locks. A category derives from TableOperator, which adds
/// the table.
///
/// What must always be true; code and tests refer to these by number:
///   1. A copy that verifies is never overwritten by one that was not verified.
///   2. At every instant, and after a cut of power at any instant, one of the three copies of a category loads.
///   3. A section write touches the bytes of that section and of the checksum line, in the current copy, its redo
///   record
///      and nothing else.
///   4. What a later write put in a section is never replaced by an earlier snapshot.
///   5. No lock is waited for while holding one that comes after it in the lock order (common/Mutex.h).
///   6. Nothing outside the record table, the caller's arrays and the stated buffers is ever touched, whatever a file
///      or a caller says.
///   7. A store that a cut of power, or the end of the process, divides is found done, or not begun: never in parts.
///
/// Threads: every operation may be called from any thread. Those that say "the caller holds the critical section" are
/// steps of others: inside an entered section they are part of it, outside one they hold it, and the lock between
/// processes, for their own length. All the rest take it themselves, at their outermost entry only, and are not called
/// from inside. It guards table and file.
/// Ownership: the manager owns the operator and is its parent. Whoever deletes an operator calls waitForMerge() first.
#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include <sys/stat.h>

#include <dataModule/common/FileUtil.h>
#include <dataModule/common/Mutex.h>
#include <dataModule/common/SystemPaths.h>
#include <dataModule/fileOperator/Copies.h>
#include <dataModule/fileOperator/CriticalSection.h>
#include <dataModule/fileOperator/KnownChecksum.h>
#include <dataModule/fileOperator/NextCopy.h>
#include <dataModule/fileOperator/RedoRecord.h>
#include <dataModule/fileOperator/SnapshotFloor.h>
#include <dataModule/fileOperator/SummaryReader.h>
#include <dataModule/fileOperator/VersionMerge.h>
#include <dataModule/IDataSeparateManagerInner.h>
#include <dataModule/IFileOperator.h>

namespace td {

class PendingStores;

class DATAMODULE_API AbstractFileOperator : public IFileOperator {
public:
    /// At most 255 characters of the name and 7 of the version are kept.
    AbstractFileOperator(const char* fileName, const char* version);
    ~AbstractFileOperator() override;
    AbstractFileOperator(const AbstractFileOperator&) = delete;
    AbstractFileOperator& operator=(const AbstractFileOperator&) = delete;

    // IFileOperator
    bool loadData(const std::vector<int>& dims, std::vector<_Argument_t>& args) override;
    bool restoreSetting(const std::vector<int>& dims) override;
    bool restoreSettingForAllSource(const std::vector<int>& dims) override;
    bool restoreSettingFromCurrent(const std::vector<int>& dims) override;
    bool refreshDataFromManufactory() override TD_EXCLUDES(m_criticalSection);
    bool refreshDataFromCurrent() override TD_EXCLUDES(m_criticalSection);
    bool applySettingForAllSources(const std::vector<int>& dims) override;
    bool applySettingForAllMode(const std::vector<int>& dims) override;
    bool initFile(bool defaults) override TD_EXCLUDES(m_criticalSection);
    bool loadFile() override TD_EXCLUDES(m_criticalSection);
    bool removeFile() override TD_EXCLUDES(m_criticalSection);
    bool backupFile(bool alsoFactory) override TD_REQUIRES(m_criticalSection);
    bool updateSummary() override TD_REQUIRES(m_criticalSection);
    bool updateCrcCode() override TD_REQUIRES(m_criticalSection);
    void setFileName(const char* name) override TD_EXCLUDES(m_criticalSection);
    const char* getFileFullPath() override;
    _DataCategory_t getDataCategory() override;
    void setBackupReq(bool requested) override TD_EXCLUDES(m_backupRequestMutex);
    bool getBackupReq() override TD_EXCLUDES(m_backupRequestMutex);
    void enterCriticalSection() override TD_ACQUIRE(m_criticalSection);
    void leaveCriticalSection() override TD_RELEASE(m_criticalSection);
    bool getStoreFileFlag() override;
    bool resetCurrentFileFromManufactoryFile() override TD_EXCLUDES(m_criticalSection);
    /// Valid until the category's next operation.
    FILE* getFileHandler() override;
    bool releaseFile() override TD_EXCLUDES(m_criticalSection);
    bool reloadFile() override;
    bool resetForLoadFile() override TD_EXCLUDES(m_criticalSection);
    bool loadFile(const char* path) override TD_EXCLUDES(m_criticalSection);
    bool recoverFile() override TD_REQUIRES(m_criticalSection);
    bool getApplySettingFlag(const _DataCategory_t& category, const char* field) override;
    bool restoreApplySettingFlag(const _DataCategory_t& category, const char* field) override;
    int getDataSize() override;
    bool buildSummary(bool withHeader) override TD_REQUIRES(m_criticalSection);
    bool loadSummary(_LOAD_FILE_MODE mode, bool& fatal) override TD_REQUIRES(m_criticalSection);
    bool loadSummary(const char* path) override TD_REQUIRES(m_criticalSection);
    bool searchSectionId(const char* id) override TD_REQUIRES(m_criticalSection);
    int enableDebugLog() override;
    bool removeCurrentFile() override TD_EXCLUDES(m_criticalSection);
    /// Also false while a merged file waits to be written, and while another process is at work on the category.
    bool tryEnterCriticalSection() override TD_TRY_ACQUIRE(true, m_criticalSection);

    /// The parent answers for names, directories and flags, and takes events; not owned. Set it before loading.
    void setParent(IDataSeparateManagerInner* parent);
    /// The directory of a copy, ending in '/'.
    std::string getWorkPath(_LOAD_FILE_MODE mode) const;
    /// The mode's name in log lines.
    static const char* getLoadMode(_LOAD_FILE_MODE mode);
    /// The copy to try after `mode`, or INVALID_LOAD.
    _LOAD_FILE_MODE stateChanged(_LOAD_FILE_MODE mode) const;
    /// Closes the file and opens and verifies the current copy. The caller holds the critical section.
    bool switchToNormal() TD_REQUIRES(m_criticalSection);
    /// The same for the factory copy.
    virtual bool switchToManufactory() TD_REQUIRES(m_criticalSection);
    /// Merges the current copy, of whatever version, by key into the table. The caller holds the critical section.
    bool loadCurrentFile() TD_REQUIRES(m_criticalSection);
    /// Writes the merged table as the new current copy. The caller holds the critical section.
    bool createFile() TD_REQUIRES(m_criticalSection);
    /// Entry of the thread that writes the merged file; takes no lock itself, its caller holds the critical section.
    static void* createFileProc(void* self);
    /// Whether a loaded category may be left as it is by loadFile().
    bool checkReloadFile() const;
    /// The checksum stated by a summary, unverified: `path` must exist, but the lines are read through the operator's
    /// own open file, whichever that is. 0 when there is none to read. The caller holds the critical section.
    unsigned int getCrcCode(const char* path) TD_REQUIRES(m_criticalSection);
    /// Recomputes and rewrites the checksum line of the file at `path`. Needs no operator.
    static bool generateCRC32(const char* path);

    /// Loads again what releaseFile() found loaded and nobody has loaded since. True when there is nothing to do.
    bool loadIfReleased() TD_EXCLUDES(m_criticalSection);
    /// Waits until a merged file, if any, has been written. Hold no critical section.
    void waitForMerge() TD_EXCLUDES(m_criticalSection);
    /// Gives up what was stored and is not on the disk: no load keeps it, and nothing of it is written any more.
    void dropStores() TD_EXCLUDES(m_criticalSection);
    /// What was stored and is not on the disk; shared with those who wait for it.
    const std::shared_ptr<PendingStores>& pendingStores() const { return m_pending; }
    /// Whether something is to be tried again: a store that could not be written, or a load that had to do without the
    /// files.
    bool hasFailed() const;
    /// Tries it, unless somebody is at work on the category. Never waits.
    void tryAgain() TD_EXCLUDES(m_criticalSection);
    /// Whoever waits for another process's lock on the category gives up, now and from now on: the operator is about to
    /// go.
    void abandonWaits() { m_criticalSection.abandonWaits(); }
    /// Sets the process-wide detail-log switch.
    static void setDebugLog(int on);

protected:
    /// Makes sure that the open file is the current copy, open for writing and with lengths read from it. Fails when
    /// that copy is of another version or cannot be written to now, and while a merged file waits to be written.
    bool openCurrent() TD_REQUIRES(m_criticalSection);
    void closeFile() TD_REQUIRES(m_criticalSection);
    /// From here until the critical section is left no other process changes the category's files. A write that a cut
    /// of power or a killed process left half done is ended first.
    void shareFiles() TD_REQUIRES(m_criticalSection);
    /// The same, and no other process reads them: before anything of them is written. True when a shared lock was given
    /// up for it, so that what was read under it may have changed since.
    bool takeFiles() TD_REQUIRES(m_criticalSection);
    /// Puts `text` from the current position of the open current copy on, when writeSections() is called.
    bool addSection(const std::string& text) TD_REQUIRES(m_criticalSection);
    /// Writes what was added, as one piece that a cut of power does or does not divide from its checksum: a redo record
    /// goes to the disk first, and updateCrcCode() syncs sections and checksum together and ends the record. Without a
    /// record the sections are synced here.
    bool writeSections() TD_REQUIRES(m_criticalSection);
    /// A released category leaves no file open.
    void closeIfReleased() TD_REQUIRES(m_criticalSection);
    /// The name of the factory copy; differs from the file name where the factory has variants.
    virtual std::string factoryFileName();
    /// Replaces the current copy by a new file made of the defaults or of the table, and makes the backup. For initFile
    /// and for the end of a merge.
    virtual bool writeNewFile(bool defaults) TD_REQUIRES(m_criticalSection);
    /// Posts again what was stored since the table was refreshed from the factory copy.
    virtual void postChangesSinceRefresh() TD_REQUIRES(m_criticalSection) {}
    /// The table was refreshed from the factory copy.
    virtual void tableRefreshed() TD_REQUIRES(m_criticalSection) {}

    /// Stored values that a load is to leave in the table, as they are before it.
    struct KeptStore {
        int record = 0;
        std::uint64_t fields = 0; ///< PendingStores::Fields
        std::vector<int> values;
    };
    /// What is stored and not on the disk.
    virtual std::vector<KeptStore> keptStores() TD_REQUIRES(m_criticalSection) { return {}; }
    /// Puts them over what was loaded; with `post` they are queued anew, in the records as they are now.
    virtual void putBack(const std::vector<KeptStore>& /*stores*/, bool /*post*/) TD_REQUIRES(m_criticalSection) {}
    /// No snapshot posted until now is written any more (invariant 4).
    void outdateSnapshots() TD_REQUIRES(m_criticalSection);
    /// The table is what a file holds now: what was stored before is given up.
    void giveUpStores() TD_REQUIRES(m_criticalSection);
    /// What syncSectionToFile() wrote is on the disk with its checksum, or is not.
    virtual void writeEnded(bool /*done*/) TD_REQUIRES(m_criticalSection) {}
    /// Says so at the end of a block, whatever ends it.
    struct WriteScope {
        explicit WriteScope(AbstractFileOperator& writing) : op(writing) {}
        ~WriteScope() TD_NO_THREAD_SAFETY_ANALYSIS { op.writeEnded(done); }
        WriteScope(const WriteScope&) = delete;
        WriteScope& operator=(const WriteScope&) = delete;

        AbstractFileOperator& op;
        bool done = false;
    };
    /// Writes the records whose writes failed, if there are any. Whether all is on the disk.
    virtual bool writeFailed() TD_REQUIRES(m_criticalSection) { return true; }

    /// The category's name, for log lines.
    const char* categoryName() const;
    IDataSeparateManagerInner* parent() const { return m_parent; }
    bool isLoaded() const { return m_loaded; }
    /// Offset of the first section of the open file.
    int contentPosition() const TD_REQUIRES(m_criticalSection) {
        return static_cast<int>(m_commentText.size()) + m_summaryLength;
    }
    /// An event could be handled without touching the file; the checksum update that follows has nothing to do.
    void noteSectionSkipped() TD_REQUIRES(m_criticalSection) { m_sectionSkipped = true; }
    /// Loads the table again if the load had to do without the files. Whether it is that of the files now.
    bool makeUpForLoad() TD_REQUIRES(m_criticalSection) { return !m_servesMemory || loadAgain(); }
    /// Whether a merged table is still to be written as a file.
    bool mergePending() const { return m_merge.isUnderWay(); }
    /// Whether that failed once; the next store tries again.
    bool mergeUnwritten() const { return m_merge.isUnwritten(); }
    /// Whether another process has merged the file since, and may have stored in it: then nothing is left to write.
    bool mergedByOther() TD_REQUIRES(m_criticalSection);
    /// One line with category and path after a message that names neither.
    void logWhere() const;

    mutable CriticalSection m_criticalSection; ///< table and file
    const std::shared_ptr<PendingStores> m_pending;
    FileUtil m_file TD_GUARDED_BY(m_criticalSection); ///< the one open file
    SnapshotFloor m_snapshotFloor TD_GUARDED_BY(m_criticalSection);
    /// The comment block as last read or written.
    std::string m_commentText TD_GUARDED_BY(m_criticalSection);
    _DataCategory_t m_category = PICTURE_GLOBAL;
    int m_dataSize = 0;                       ///< bytes of the table
    char m_version[text::VERSION_WIDTH] = {}; ///< the operator's format version
    char m_fileName[paths::PATH_SIZE] = {};

private:
    /// The file that is open, so that a write never goes to another one.
    struct OpenFile {
        std::string path;
        // Of fixed width: the size of ino_t depends on a client's definitions where long has 32 bits.
        std::uint64_t device = 0;
        std::uint64_t inode = 0;
        bool writable = false;
        bool lengthsRead = false; ///< the lengths were read from this file
    };
    enum class Found { Yes, EndOfFile, Failed };
    struct CreatingScope;
    struct MemoryScope;
    friend class Loader;

    /// Once per critical section, as soon as it has the files for itself.
    void endPendingWrite() TD_REQUIRES(m_criticalSection);
    /// Whether it changed the file.
    bool endTornWrite(const std::string& current) TD_REQUIRES(m_criticalSection);
    void setPath(const std::string& path) TD_REQUIRES(m_criticalSection);
    bool openFile(const std::string& path, const char* mode) TD_REQUIRES(m_criticalSection);
    /// Whether the open file is still the one at `path`.
    bool isOpenFileAt(const std::string& path) const TD_REQUIRES(m_criticalSection);
    void adoptSummary(const Summary& summary, SummaryState state) TD_REQUIRES(m_criticalSection);
    void forgetLengths() TD_REQUIRES(m_criticalSection);

    /// What becomes of stored values that are not on the disk when the table was loaded anew.
    enum class Stores { Kept, Dropped };
    /// What loadFile() does once it may.
    bool loadFromFiles() TD_REQUIRES(m_criticalSection);
    /// Loads the table; after a failure it holds what was stored as before.
    template <typename Load>
    bool loadTable(Stores stores, Load load) TD_REQUIRES(m_criticalSection);
    /// Makes up for it. Whether the table is that of the files now.
    bool loadAgain() TD_REQUIRES(m_criticalSection);
    /// Whether the lock between processes could be had without waiting.
    bool tryEnterWithFiles() TD_TRY_ACQUIRE(true, m_criticalSection);
    void startMergeThread() TD_REQUIRES(m_criticalSection);
    /// Whatever is thrown on the way, the merge is then known to be written or not.
    void writeMerged() TD_REQUIRES(m_criticalSection);
    static void* mergeProc(void* self);

    /// `factory`: the path of the factory copy, where that counts.
    Copies copies(std::string factory = {}) TD_REQUIRES(m_criticalSection);
    /// Whether a copy of another version is refused.
    enum class Versions { OwnOnly, Any };
    /// Opens and verifies a copy; as the slots loadSummary() and switchToNormal().
    CopyState verifyCopy(_LOAD_FILE_MODE mode, Versions versions = Versions::OwnOnly) TD_REQUIRES(m_criticalSection);
    CopyState verifyFile(const char* path) TD_REQUIRES(m_criticalSection);
    CopyState openNormal(Versions versions = Versions::OwnOnly) TD_REQUIRES(m_criticalSection);
    /// Whether there is a file to open.
    CopyState lookFor(const char* path) const;
    CopyState openForSummary(_LOAD_FILE_MODE mode) TD_REQUIRES(m_criticalSection);
    /// `mode`: the copy that it is, if it is one.
    CopyState verifySummary(const _LOAD_FILE_MODE* mode, Versions versions) TD_REQUIRES(m_criticalSection);
    CopyState checkSummaryLines(const Summary& summary, SummaryState state, const _LOAD_FILE_MODE* mode,
                                Versions versions) TD_REQUIRES(m_criticalSection);
    CopyState otherVersion(const Summary& summary, _LOAD_FILE_MODE mode) TD_REQUIRES(m_criticalSection);
    CopyState checkChecksum(const Summary& summary, const _LOAD_FILE_MODE* mode) TD_REQUIRES(m_criticalSection);
    /// The checksum of the open file's contents; false when it cannot be computed.
    bool contentChecksum(unsigned int& crc) TD_REQUIRES(m_criticalSection);
    Found scanFor(const char* id) TD_REQUIRES(m_criticalSection);

    bool writeWholeText(bool defaults) TD_REQUIRES(m_criticalSection);
    bool rewriteChecksumLine() TD_REQUIRES(m_criticalSection);
    bool readStoredChecksum(const char* path, unsigned int& crc) TD_REQUIRES(m_criticalSection);
    std::string factoryPath();

    CopyPath m_path; ///< of the copy being read or written
    std::atomic<bool> m_loaded{false};
    bool m_wasLoaded TD_GUARDED_BY(m_criticalSection) = false; ///< it was loaded before, whatever it is now
    /// The table is not known to be that of the current copy: nothing is written before it was loaded again.
    std::atomic<bool> m_servesMemory{false};
    int m_retryError TD_GUARDED_BY(m_criticalSection) = 0; ///< errno of the last retry that failed, once it was logged
    std::atomic<bool> m_releasedLoaded{false};             ///< it was loaded when it was released
    char m_fileType[text::TV_TYPE_WIDTH + 1] TD_GUARDED_BY(m_criticalSection) = {}; ///< SN of the last summary
    int m_summaryLength TD_GUARDED_BY(m_criticalSection) = 0;
    int m_crcPosition TD_GUARDED_BY(m_criticalSection) = 0;
    int m_crcLineLength TD_GUARDED_BY(m_criticalSection) = 0;
    int m_fileSize TD_GUARDED_BY(m_criticalSection) = 0;
    unsigned int m_crc TD_GUARDED_BY(m_criticalSection) = 0; ///< as last loaded or updated
    _LOAD_FILE_MODE m_loadMode TD_GUARDED_BY(m_criticalSection) = NORMAL_LOAD;
    VersionMerge m_merge;
    mutable Mutex m_backupRequestMutex;
    bool m_backupRequest TD_GUARDED_BY(m_backupRequestMutex) = false;
    IDataSeparateManagerInner* m_parent = nullptr; ///< set before use

    RedoRecord m_redo TD_GUARDED_BY(m_criticalSection);         ///< of the sections added or written last
    bool m_redoStored TD_GUARDED_BY(m_criticalSection) = false; ///< it is on the disk; the checksum is still to follow
    RedoRecord
        m_torn TD_GUARDED_BY(m_criticalSection); ///< of writes that failed halfway and left no record on the disk
    OpenFile m_tornFile TD_GUARDED_BY(m_criticalSection); ///< what they were for
    bool
        m_nameSynced TD_GUARDED_BY(m_criticalSection) = false; ///< the current copy is in its directory on the disk too
    KnownChecksum m_knownChecksum TD_GUARDED_BY(m_criticalSection);
    OpenFile m_open TD_GUARDED_BY(m_criticalSection);
    bool m_creating TD_GUARDED_BY(m_criticalSection) = false; ///< the open file is being made
    int m_pendingError TD_GUARDED_BY(m_criticalSection) = 0;  ///< errno when a pending write could not be ended; else 0
    bool m_sectionSkipped TD_GUARDED_BY(m_criticalSection) = false;
    bool m_backupOutdated TD_GUARDED_BY(m_criticalSection) = false; ///< the current copy has changed since
};

} // namespace td
