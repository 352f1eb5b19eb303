/// What everything outside a category's own class knows of a category.
///
/// An operator is constructed, given its parent, loaded (or its file created), and only then used for data operations.
/// The manager owns operators; an Event only points to one. Every operation may be called from any thread unless it
/// says otherwise. Results are true for success; nothing is thrown.
#pragma once

#include <cstdio>
#include <vector>

#include <dataModule/DataTypes.h>
#include <dataModule/Export.h>

namespace td {

class Event;

/// The copy of a settings file that is or was last read.
enum _LOAD_FILE_MODE : int {
    NORMAL_LOAD = 0,      ///< the current copy
    BACKUP_LOAD = 1,      ///< the backup copy
    MANUFACTORY_LOAD = 2, ///< the factory copy
    INVALID_LOAD = 3,     ///< no further copy to try
};

/// The order of the virtual operations is part of the binary interface: only append.
class DATAMODULE_API IFileOperator {
public:
    virtual ~IFileOperator() = default;

    /// Reads fields of the record at `dims` from memory. An empty `args` is filled with the whole record; otherwise the
    /// named values are filled in place and unknown names are logged and left alone.
    virtual bool loadData(const std::vector<int>& dims, std::vector<_Argument_t>& args) = 0;
    /// Changes fields of the record at `dims` in memory and queues the write of its section. Never waits for the write.
    virtual bool storeData(const std::vector<int>& dims, const std::vector<_Argument_t>& args) = 0;
    /// Takes the record at `dims` back from the factory copy and queues its write.
    virtual bool restoreSetting(const std::vector<int>& dims) = 0;
    /// Takes the record back from the factory copy for every source.
    virtual bool restoreSettingForAllSource(const std::vector<int>& dims) = 0;
    /// Re-reads the record from the current copy, discarding changes that have not reached the disk.
    virtual bool restoreSettingFromCurrent(const std::vector<int>& dims) = 0;
    /// Re-reads the whole table from the factory copy into memory.
    virtual bool refreshDataFromManufactory() = 0;
    /// Re-reads the whole table from the current copy into memory.
    virtual bool refreshDataFromCurrent() = 0;
    /// Copies the record at `dims` to the other sources.
    virtual bool applySettingForAllSources(const std::vector<int>& dims) = 0;
    /// Copies the record at `dims` to the other picture modes.
    virtual bool applySettingForAllMode(const std::vector<int>& dims) = 0;
    /// Creates the current copy: with `defaults` from the default values, and only if there is none yet; otherwise from
    /// the table in memory, replacing it. Then makes the backup copy.
    virtual bool initFile(bool defaults) = 0;
    /// Loads the table: current copy, else backup, else factory.
    virtual bool loadFile() = 0;
    /// Deletes the factory, backup and current copies; the result is that of the last deletion.
    virtual bool removeFile() = 0;
    /// Writes the section of an event's record into the current copy. The caller holds the critical section.
    virtual bool syncSectionToFile(Event* event) = 0;
    /// Copies the current copy over the backup when they differ; with `alsoFactory` over the factory copy too. The
    /// caller holds the critical section.
    virtual bool backupFile(bool alsoFactory) = 0;
    /// Rewrites the summary block in place. The caller holds the critical section.
    virtual bool updateSummary() = 0;
    /// Recomputes the checksum and rewrites its line in place. The caller holds the critical section.
    virtual bool updateCrcCode() = 0;
    /// Sets the file name, at most 255 characters. A path, with a '/' in it, changes nothing.
    virtual void setFileName(const char* name) = 0;
    /// Full path of the copy being read or written. Owned by the operator.
    virtual const char* getFileFullPath() = 0;
    /// The category served.
    virtual _DataCategory_t getDataCategory() = 0;
    /// Asks for (or clears) a backup at the next idle time.
    virtual void setBackupReq(bool requested) = 0;
    /// Whether a backup is asked for.
    virtual bool getBackupReq() = 0;
    /// Takes the locks of the files and of the values in memory: until leaveCriticalSection() no other thread reads or
    /// changes either. Not recursive.
    virtual void enterCriticalSection() = 0;
    /// Gives it back.
    virtual void leaveCriticalSection() = 0;
    /// Whether writing files is allowed (true without a parent).
    virtual bool getStoreFileFlag() = 0;
    /// Copies the factory copy over the current one.
    virtual bool resetCurrentFileFromManufactoryFile() = 0;
    /// The open stream of the file, or null. Owned by the operator; for inspection only.
    virtual FILE* getFileHandler() = 0;
    /// Reads many records at once: the selected ones of all 16 sources.
    virtual bool loadDataForGroup(const std::vector<int>& dims, const std::vector<int>& list, GroupArray& data) = 0;
    /// Stores many records at once; each row goes to every value of the second list.
    virtual bool storeDataForGroup(const std::vector<int>& dims, const std::vector<int>& list,
                                   const std::vector<int>& list2, GroupArray& data) = 0;
    /// Reads the rectangle of records from `start` to `end`, both inclusive.
    virtual bool loadDataForSelfDefinedGroup(const std::vector<int>& start, const std::vector<int>& end,
                                             SelfDefinedGroupArray& data) = 0;
    /// Stores the rectangle of records from `start` to `end`, both inclusive.
    virtual bool storeDataForSelfDefinedGroup(const std::vector<int>& start, const std::vector<int>& end,
                                              SelfDefinedGroupArray& data) = 0;
    /// Closes the file; the category counts as not loaded until the next load.
    virtual bool releaseFile() = 0;
    /// Does nothing and returns true.
    virtual bool reloadFile() = 0;
    /// Closes the file and forgets that it was loaded.
    virtual bool resetForLoadFile() = 0;
    /// Loads the file at `path` into memory, without any fallback.
    virtual bool loadFile(const char* path) = 0;
    /// Copies the backup or factory copy that was just read over the current one. The caller holds the critical
    /// section.
    virtual bool recoverFile() = 0;
    /// Whether an apply flag is set (its value is exactly 1); answered by the parent.
    virtual bool getApplySettingFlag(const _DataCategory_t& category, const char* field) = 0;
    /// Clears an apply flag that is set; answered by the parent.
    virtual bool restoreApplySettingFlag(const _DataCategory_t& category, const char* field) = 0;
    /// Bytes of the table in memory.
    virtual int getDataSize() = 0;
    /// Writes the comment block at the current position of the file.
    virtual bool buildComments() = 0;
    /// Writes the summary lines at the current position; with `withHeader` the header line too.
    virtual bool buildSummary(bool withHeader) = 0;
    /// Writes every section; with `defaults` sets each record to its defaults first.
    virtual bool buildContents(bool defaults) = 0;
    /// Opens and verifies the copy that `mode` names. `fatal` is set when no other copy may be tried.
    virtual bool loadSummary(_LOAD_FILE_MODE mode, bool& fatal) = 0;
    /// Opens and verifies the file at `path`.
    virtual bool loadSummary(const char* path) = 0;
    /// Reads the sections by position.
    virtual bool loadContents() = 0;
    /// Reads the sections by key, as a file of another version is merged.
    virtual bool loadContents_OTA() = 0;
    /// Positions the file just after the line `id` by scanning. True also at the end of the file.
    virtual bool searchSectionId(const char* id) = 0;
    /// Positions the file at the first key line of a section by its computed offset.
    virtual bool searchSectionId(const std::vector<int>& dims) = 0;
    /// The process-wide detail-log switch.
    virtual int enableDebugLog() = 0;
    /// Deletes the current copy.
    virtual bool removeCurrentFile() = 0;

    /// Takes the lock of the files if that needs no waiting; leaveCriticalSection() gives it back. An idle backup uses
    /// it: it may never wait here, and a busy operator keeps its backup request.
    virtual bool tryEnterCriticalSection() {
        enterCriticalSection();
        return true;
    }
    /// Writes what the worker was given, events of this operator's in the order of their posting: one after the other,
    /// each as Event::handle() does. `handled`, of as many, becomes the results. Not owned.
    virtual void handleEvents(Event* const* events, bool* handled, int count);
};

} // namespace td
