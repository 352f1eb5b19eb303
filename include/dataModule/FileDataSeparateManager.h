/// The one object through which a client process reaches the settings.
///
/// The sequence: instance(); on first boot loadManufactoryPath() and initCurrentFromManufactory(); init(scope);
/// loadAllData(); then requests from any thread; at the end stop() and release(). The first instance() must come from
/// one thread before any other thread uses the library, and release() after all others have finished with it.
/// Requests take no lock of the manager: the registry is written only by init() and stop().
#pragma once

#include <memory>
#include <vector>

#include <dataModule/IDataSeparateManager.h>
#include <dataModule/IDataSeparateManagerInner.h>
#include <dataModule/IFileOperator.h>

namespace td {

struct _ThreadStaticInfo_t;

class DATAMODULE_API FileDataSeparateManager : public IDataSeparateManager, public IDataSeparateManagerInner {
public:
    /// The manager, made on the first call.
    static FileDataSeparateManager* instance();
    /// Destroys the manager, if any. Queued stores are lost; see waitStored(). In a child made by fork() it forgets the
    /// parent's manager, all other calls of which fail there, and instance() makes the child's own.
    static void release();

    // IAbstractDataSeparateManager
    const char* getCategory_Str(const _DataCategory_t& category) override;
    bool getApplySettingFlag(const _DataCategory_t& category, const char* field) override;
    bool restoreApplySettingFlag(const _DataCategory_t& category, const char* field) override;
    char* getManufactoryPath() override;
    bool setReservedFlag(bool flag) override;
    bool setTvType(const char* type) override;
    bool setReservedValue(int value) override;
    FILE* getFileHandler(const _DataCategory_t& category) override;

    // IDataSeparateManager
    bool init(_DS_Scope_t scope) override;
    bool stop() override;
    bool initAllData() override;
    bool loadAllData() override;
    bool loadAllData(_DS_Type_t type) override;
    bool initData(const _DataCategory_t& category) override;
    bool loadData(const _DataCategory_t& category) override;
    bool loadData(const _DataCategory_t& category, const char* path) override;
    bool initCurrentFromManufactory() override;
    bool removeDataFile(const _DataCategory_t& category) override;
    bool loadData(const _DataCategory_t& category, const std::vector<int>& dims,
                  std::vector<_Argument_t>& args) override;
    bool storeData(const _DataCategory_t& category, const std::vector<int>& dims,
                   const std::vector<_Argument_t>& args) override;
    bool restoreSetting(const _DataCategory_t& category, const std::vector<int>& dims) override;
    bool restoreSettingForAllSource(const _DataCategory_t& category, const std::vector<int>& dims) override;
    bool restoreSettingFromCurrent(const _DataCategory_t& category, const std::vector<int>& dims) override;
    bool refreshDataFromManufactory(const _DataCategory_t& category) override;
    bool refreshDataFromCurrent(const _DataCategory_t& category) override;
    bool applySettingForAllSources(const _DataCategory_t& category, const std::vector<int>& dims) override;
    bool applySettingForAllMode(const _DataCategory_t& category, const std::vector<int>& dims) override;
    bool setStoreFileFlag(bool allowed) override;
    bool getStoreFileFlag() override;
    bool loadDataForGroup(const _DataCategory_t& category, const std::vector<int>& dims, const std::vector<int>& list,
                          GroupArray& data) override;
    bool storeDataForGroup(const _DataCategory_t& category, const std::vector<int>& dims, const std::vector<int>& list,
                           const std::vector<int>& list2, GroupArray& data) override;
    bool loadDataForSelfDefinedGroup(const _DataCategory_t& category, const std::vector<int>& start,
                                     const std::vector<int>& end, SelfDefinedGroupArray& data) override;
    bool storeDataForSelfDefinedGroup(const _DataCategory_t& category, const std::vector<int>& start,
                                      const std::vector<int>& end, SelfDefinedGroupArray& data) override;
    bool releaseFileSources() override;
    bool resumeFileSources() override;
    bool resetForLoadAllData(_DS_Type_t type) override;

    // IDataSeparateManagerInner
    bool getReservedFlag() override;
    const char* getTvType() override;
    int getReservedValue() override;
    bool backupData() override;
    int postEvent(Event* event) override;
    void retryFailedStores() override;

    /// Takes the factory directory from key "Path" of "[ModuleData]" of the model index file; without it, or with a
    /// value that is empty, leads upwards ("..") or leaves a file name no room within 256 bytes, the path stays as it
    /// is. Call it before initCurrentFromManufactory(). Whether the path was taken.
    bool loadManufactoryPath();
    /// "VIDEO", "SOUND" or "UNKNOWN type".
    const char* getType_Str(const _DS_Type_t& type);
    /// Whether the operator's category belongs to the type; false for null.
    bool belongTo(IFileOperator* op, const _DS_Type_t& type);
    /// Whether init() with this scope registers the category.
    static bool isInScope(_DataCategory_t category, _DS_Scope_t scope);
    /// The operator of a registered category, or null with a log line. Owned by the manager.
    IFileOperator* getFileOperator(const _DataCategory_t& category);

    /// Serves one suspend cycle, on a thread of the client's: waits until the semaphore "release.dataModule" is posted,
    /// closes all files, waits for "reload.dataModule" and opens them again. `manager` is a manager's
    /// IDataSeparateManager face; null is answered at once. Ends, within a second, when the manager is stopped or
    /// released. Changes the umask of the process. Returns null.
    static void* listenSTDSignal(void* manager);
    /// Follows the detail-log switch: each post of "log.dataModule" makes it read the shared-memory word. init() starts
    /// it, once for the life of the process. Does nothing for null. Returns null.
    static void* listenDetailLogSwitch(void* manager);
    /// Makes, if missing, and attaches the shared-memory word of the switch. Whether that could be done.
    static bool createDetailLogSwitchSHM();
    /// Issues the removal of the word, with its key as the id; that seldom names a segment, and the result is false
    /// then.
    static bool deleteDetailLogSwitchSHM();
    /// Whether init() starts the listener of the detail-log switch, in the whole process; it does if not told otherwise
    /// before. For programs on a bench, which must not take the posts that a television's processes wait for.
    static void setListening(bool listen);

    /// Waits, at most `milliseconds`, until every store made so far is on the disk. Whether that came true: false when
    /// one of them failed or was dropped by another call, at once when nothing else is left to wait for. What was
    /// dropped before the call is not waited for.
    bool waitStored(int milliseconds);
    /// What the worker has done so far.
    void getWorkerStatistics(_ThreadStaticInfo_t& info);

protected:
    FileDataSeparateManager();
    /// Stops. A derived class that overrides backupData() stops in its own destructor.
    virtual ~FileDataSeparateManager();
    FileDataSeparateManager(const FileDataSeparateManager&) = delete;
    FileDataSeparateManager& operator=(const FileDataSeparateManager&) = delete;

    /// Enters an operator in both registries and owns it. A second one for the same category is deleted.
    void registerOperator(IFileOperator* op);
    /// A new operator for a category, or null for a category that has none. init() asks for one category after the
    /// other, except those already registered.
    virtual IFileOperator* makeOperator(_DataCategory_t category);

private:
    template <typename Request>
    bool route(const _DataCategory_t& category, Request request, const char* function = __builtin_FUNCTION(),
               int line = __builtin_LINE());

    struct State;
    const std::unique_ptr<State> m_state;
};

} // namespace td
