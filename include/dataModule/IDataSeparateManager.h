/// What a client process asks of the settings store. See FileDataSeparateManager for the calling sequence.
#pragma once

#include <vector>

#include <dataModule/IAbstractDataSeparateManager.h>

namespace td {

/// Every operation returns true for success. `dims` addresses one record of the category: one index per dimension, in
/// the category's order, empty for a category without dimensions. Requests about an unregistered category are false.
/// The order of the virtual operations is part of the binary interface: only append.
class DATAMODULE_API IDataSeparateManager : public IAbstractDataSeparateManager {
public:
    virtual ~IDataSeparateManager() = default;

    /// Registers the scope's categories and starts the worker thread. Once; a second call only returns true.
    virtual bool init(_DS_Scope_t scope) = 0;
    /// Stops the worker, unwritten stores are lost, and deletes the operators.
    virtual bool stop() = 0;
    /// Creates every registered category's file with default values where there is none; the last one's result.
    virtual bool initAllData() = 0;
    /// Loads every registered category on 8 threads. Returns whether everything had been loaded before the call, so
    /// false after a fresh load; failures are in the log only.
    virtual bool loadAllData() = 0;
    /// Loads the categories of one type, one after another; false if one failed or there is none.
    virtual bool loadAllData(_DS_Type_t type) = 0;
    /// Creates one category's file with default values if there is none.
    virtual bool initData(const _DataCategory_t& category) = 0;
    /// Releases and loads one category again, after the stores queued so far have been written.
    virtual bool loadData(const _DataCategory_t& category) = 0;
    /// Loads one category's table from the file at `path`, without fallback.
    virtual bool loadData(const _DataCategory_t& category, const char* path) = 0;
    /// First boot or factory reset: empties the current and backup directories and fills both from the factory
    /// directory.
    virtual bool initCurrentFromManufactory() = 0;
    /// Deletes one category's files.
    virtual bool removeDataFile(const _DataCategory_t& category) = 0;
    /// Reads fields of one record from memory. Empty `args` is filled with the whole record.
    virtual bool loadData(const _DataCategory_t& category, const std::vector<int>& dims,
                          std::vector<_Argument_t>& args) = 0;
    /// Changes fields of one record in memory and queues the write of its section.
    virtual bool storeData(const _DataCategory_t& category, const std::vector<int>& dims,
                           const std::vector<_Argument_t>& args) = 0;
    /// Takes one record back from the factory copy.
    virtual bool restoreSetting(const _DataCategory_t& category, const std::vector<int>& dims) = 0;
    /// Takes one record back from the factory copy for every source.
    virtual bool restoreSettingForAllSource(const _DataCategory_t& category, const std::vector<int>& dims) = 0;
    /// Re-reads one record from the current copy.
    virtual bool restoreSettingFromCurrent(const _DataCategory_t& category, const std::vector<int>& dims) = 0;
    /// Takes the whole category back from the factory copy, in memory and on disk.
    virtual bool refreshDataFromManufactory(const _DataCategory_t& category) = 0;
    /// Re-reads the whole category from the current copy.
    virtual bool refreshDataFromCurrent(const _DataCategory_t& category) = 0;
    /// Copies one record to every other source.
    virtual bool applySettingForAllSources(const _DataCategory_t& category, const std::vector<int>& dims) = 0;
    /// Copies one record to the other picture modes.
    virtual bool applySettingForAllMode(const _DataCategory_t& category, const std::vector<int>& dims) = 0;
    /// Allows or forbids writing; while forbidden, stores are accepted and dropped.
    virtual bool setStoreFileFlag(bool allowed) = 0;
    /// Whether writing is allowed.
    virtual bool getStoreFileFlag() = 0;
    /// Group operations of the factory white balance; see IFileOperator.
    virtual bool loadDataForGroup(const _DataCategory_t& category, const std::vector<int>& dims,
                                  const std::vector<int>& list, GroupArray& data) = 0;
    virtual bool storeDataForGroup(const _DataCategory_t& category, const std::vector<int>& dims,
                                   const std::vector<int>& list, const std::vector<int>& list2, GroupArray& data) = 0;
    virtual bool loadDataForSelfDefinedGroup(const _DataCategory_t& category, const std::vector<int>& start,
                                             const std::vector<int>& end, SelfDefinedGroupArray& data) = 0;
    virtual bool storeDataForSelfDefinedGroup(const _DataCategory_t& category, const std::vector<int>& start,
                                              const std::vector<int>& end, SelfDefinedGroupArray& data) = 0;
    /// Closes every file before a suspend image, after the stores queued so far have been written.
    virtual bool releaseFileSources() = 0;
    /// Takes the files back into use after the image.
    virtual bool resumeFileSources() = 0;
    /// Makes the categories of one type loadable again.
    virtual bool resetForLoadAllData(_DS_Type_t type) = 0;
};

} // namespace td
