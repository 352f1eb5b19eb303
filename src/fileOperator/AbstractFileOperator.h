/// The life of one settings file, whatever its records: which copy is read, how a damaged or outdated copy is replaced,
/// summary and checksum, backups, removal, and the operator's locks. A category derives from TableOperator, which adds
/// the table; a client's own operator may derive from this one.
///
/// What must always be true; code and tests refer to these by number:
///   1. A copy that verifies is never overwritten by one that was not verified.
///   2. At every instant, and after a cut of power at any instant, one of the three copies of a category loads.
///   3. A section write touches the bytes of that section and of the checksum line, in the current copy, its redo
///   record
///      and nothing else.
///   4. What a later write put in a section is never replaced by an earlier snapshot.
///   5. No lock is waited for while holding one that comes after it in the lock order.
///   6. Nothing outside the record table, the caller's arrays and the stated buffers is ever touched, whatever a file
///      or a caller says.
///   7. A store that a cut of power, or the end of the process, divides is found done, or not begun: never in parts.
///   8. No thread holds the table's lock over a call of the system, but inside an entered critical section.
///   9. What a caller was told to be stored is on the disk; what was accepted and is not, is written later, or was
///      dropped by a call that says so.
///
/// Threads: every operation may be called from any thread. The files of a category have one lock, its values in memory
/// another; the critical section (enterCriticalSection()) is both. Operations that say "the caller holds the critical
/// section" are steps of others: inside an entered section they are part of it, outside one they hold the lock of the
/// files, and that between processes, for their own length. All the rest take what they need themselves and are not
/// called from inside.
/// Ownership: the manager owns the operator and is its parent. Whoever deletes an operator calls waitForMerge() first.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include <dataModule/IDataSeparateManagerInner.h>
#include <dataModule/IFileOperator.h>

namespace td {

struct CategoryState;
class FileUtil;

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
    bool refreshDataFromManufactory() override;
    bool refreshDataFromCurrent() override;
    bool applySettingForAllSources(const std::vector<int>& dims) override;
    bool applySettingForAllMode(const std::vector<int>& dims) override;
    bool initFile(bool defaults) override;
    bool loadFile() override;
    bool removeFile() override;
    bool backupFile(bool alsoFactory) override;
    bool updateSummary() override;
    bool updateCrcCode() override;
    void setFileName(const char* name) override;
    const char* getFileFullPath() override;
    _DataCategory_t getDataCategory() override;
    void setBackupReq(bool requested) override;
    bool getBackupReq() override;
    void enterCriticalSection() override;
    void leaveCriticalSection() override;
    bool getStoreFileFlag() override;
    bool resetCurrentFileFromManufactoryFile() override;
    /// Valid until the category's next operation.
    FILE* getFileHandler() override;
    bool releaseFile() override;
    bool reloadFile() override;
    bool resetForLoadFile() override;
    bool loadFile(const char* path) override;
    bool recoverFile() override;
    bool getApplySettingFlag(const _DataCategory_t& category, const char* field) override;
    bool restoreApplySettingFlag(const _DataCategory_t& category, const char* field) override;
    int getDataSize() override;
    bool buildSummary(bool withHeader) override;
    bool loadSummary(_LOAD_FILE_MODE mode, bool& fatal) override;
    bool loadSummary(const char* path) override;
    bool searchSectionId(const char* id) override;
    int enableDebugLog() override;
    bool removeCurrentFile() override;
    /// Also false while a merged file waits to be written, and while another process is at work on the category.
    bool tryEnterCriticalSection() override;
    void handleEvents(Event* const* events, bool* handled, int count) override;

    /// The parent answers for names, directories and flags, and takes events; not owned. Set it before loading.
    void setParent(IDataSeparateManagerInner* parent);
    /// The directory of a copy, ending in '/'.
    std::string getWorkPath(_LOAD_FILE_MODE mode) const;
    /// The mode's name in log lines.
    static const char* getLoadMode(_LOAD_FILE_MODE mode);
    /// The copy to try after `mode`, or INVALID_LOAD.
    _LOAD_FILE_MODE stateChanged(_LOAD_FILE_MODE mode) const;
    /// Closes the file and opens and verifies the current copy. The caller holds the critical section.
    bool switchToNormal();
    /// The same for the factory copy.
    virtual bool switchToManufactory();
    /// Merges the current copy, of whatever version, by key into the table. The caller holds the critical section.
    bool loadCurrentFile();
    /// Writes the merged table as the new current copy. The caller holds the critical section.
    bool createFile();
    /// Entry of the thread that writes the merged file; takes no lock itself, its caller holds the critical section.
    static void* createFileProc(void* self);
    /// Whether a loaded category may be left as it is by loadFile().
    bool checkReloadFile() const;
    /// The checksum stated by a summary, unverified: `path` must exist, but the lines are read through the operator's
    /// own open file, whichever that is. 0 when there is none to read. The caller holds the critical section.
    unsigned int getCrcCode(const char* path);
    /// Recomputes and rewrites the checksum line of the file at `path`. Needs no operator.
    static bool generateCRC32(const char* path);
    /// The name of the factory copy; differs from the file name where the factory has variants.
    virtual std::string factoryFileName();
    /// Waits until a merged file, if any, has been written. Hold no critical section.
    void waitForMerge();
    /// Sets the process-wide detail-log switch.
    static void setDebugLog(int on);

    /// The library's own.
    CategoryState& state() const { return *m_state; }

protected:
    // --- for an operator that reads and writes its sections itself; the caller holds the critical section ---

    /// The open file. The steps that read get it where the sections begin, the steps that build where it ends.
    FileUtil& openedFile();
    /// The comment block as last read; buildComments() writes a new one and leaves it here.
    std::string& commentText();
    /// Offset of the first section of the open file.
    int contentPosition() const;
    /// Makes sure that the open file is the current copy, open for writing, and keeps other processes off it. False
    /// when that cannot be had now.
    bool openForWriting();
    void closeFile();
    /// What the operator serves, and the bytes of its table; set by the constructor.
    void declare(_DataCategory_t category, int dataSize);

    bool isLoaded() const;
    /// The category's name, for log lines.
    const char* categoryName() const;
    IDataSeparateManagerInner* parent() const;
    /// One line with category and path after a message that names neither.
    void logWhere() const;

private:
    const std::unique_ptr<CategoryState> m_state;
};

} // namespace td
