/// An operator without a file: it notes its calls by name and succeeds, unless a test says otherwise.
///
/// Any thread. A test may set what a call does before others use the operator.
#pragma once

#include <algorithm>
#include <atomic>
#include <cstddef>
#include <functional>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include <dataModule/IFileOperator.h>

#include "common/Mutex.h"

namespace td::test {

class FakeOperator : public IFileOperator {
public:
    using Action = std::function<bool()>;

    explicit FakeOperator(_DataCategory_t category)
        : m_category(category), m_path("/fake/" + std::to_string(category) + ".ini") {}
    ~FakeOperator() override {
        if (m_destroyed != nullptr)
            ++*m_destroyed;
    }
    FakeOperator(const FakeOperator&) = delete;
    FakeOperator& operator=(const FakeOperator&) = delete;

    /// What the call of this name does and results in; it runs on the calling thread, after the call was noted.
    void on(const std::string& call, Action action) { m_actions[call] = std::move(action); }
    void fail(const std::string& call) {
        on(call, [] { return false; });
    }
    /// Counts destructions of all operators that share the counter.
    void countDestruction(std::atomic<int>& destroyed) { m_destroyed = &destroyed; }

    /// The names of the calls so far, in order.
    std::vector<std::string> calls() const {
        const MutexLock lock(m_mutex);
        return m_calls;
    }
    std::ptrdiff_t count(const std::string& call) const {
        const std::vector<std::string> all = calls();
        return std::count(all.begin(), all.end(), call);
    }
    /// The only record: it answers loadData and takes storeData.
    int value(const std::string& field) const {
        const MutexLock lock(m_mutex);
        const auto entry = m_values.find(field);
        return entry == m_values.end() ? 0 : entry->second;
    }
    void setValue(const std::string& field, int value) {
        const MutexLock lock(m_mutex);
        m_values[field] = value;
    }
    /// Whether nobody is in the critical section.
    bool isFree() {
        if (!m_criticalSection.tryLock())
            return false;
        m_criticalSection.unlock();
        return true;
    }
    /// The file name at the end of the path.
    std::string fileName() const { return std::to_string(m_category) + ".ini"; }

    std::atomic<bool> storeAllowed{true};
    std::atomic<int> dataSize{0};

    bool loadData(const std::vector<int>&, std::vector<_Argument_t>& args) override {
        for (_Argument_t& argument : args)
            argument.value = value(argument.name);
        return called("loadData");
    }
    bool storeData(const std::vector<int>&, const std::vector<_Argument_t>& args) override {
        for (const _Argument_t& argument : args)
            setValue(argument.name, argument.value);
        return called("storeData");
    }
    bool restoreSetting(const std::vector<int>&) override { return called("restoreSetting"); }
    bool restoreSettingForAllSource(const std::vector<int>&) override { return called("restoreSettingForAllSource"); }
    bool restoreSettingFromCurrent(const std::vector<int>&) override { return called("restoreSettingFromCurrent"); }
    bool refreshDataFromManufactory() override { return called("refreshDataFromManufactory"); }
    bool refreshDataFromCurrent() override { return called("refreshDataFromCurrent"); }
    bool applySettingForAllSources(const std::vector<int>&) override { return called("applySettingForAllSources"); }
    bool applySettingForAllMode(const std::vector<int>&) override { return called("applySettingForAllMode"); }
    bool initFile(bool defaults) override { return called(defaults ? "initFile(true)" : "initFile(false)"); }
    bool loadFile() override { return called("loadFile"); }
    bool removeFile() override { return called("removeFile"); }
    bool syncSectionToFile(Event*) override { return called("syncSectionToFile"); }
    bool backupFile(bool alsoFactory) override {
        return called(alsoFactory ? "backupFile(true)" : "backupFile(false)");
    }
    bool updateSummary() override { return called("updateSummary"); }
    bool updateCrcCode() override { return called("updateCrcCode"); }
    void setFileName(const char*) override { called("setFileName"); }
    const char* getFileFullPath() override { return m_path.c_str(); }
    _DataCategory_t getDataCategory() override { return m_category; }
    void setBackupReq(bool requested) override {
        m_backupRequested = requested;
        called(requested ? "setBackupReq(true)" : "setBackupReq(false)");
    }
    bool getBackupReq() override { return m_backupRequested; }
    void enterCriticalSection() override TD_ACQUIRE(m_criticalSection) {
        m_criticalSection.lock();
        called("enterCriticalSection");
    }
    bool tryEnterCriticalSection() override TD_TRY_ACQUIRE(true, m_criticalSection) {
        called("tryEnterCriticalSection");
        return m_criticalSection.tryLock();
    }
    void leaveCriticalSection() override TD_RELEASE(m_criticalSection) {
        called("leaveCriticalSection");
        m_criticalSection.unlock();
    }
    bool getStoreFileFlag() override { return storeAllowed; }
    bool resetCurrentFileFromManufactoryFile() override { return called("resetCurrentFileFromManufactoryFile"); }
    FILE* getFileHandler() override { return stdout; }
    bool loadDataForGroup(const std::vector<int>&, const std::vector<int>&, GroupArray&) override {
        return called("loadDataForGroup");
    }
    bool storeDataForGroup(const std::vector<int>&, const std::vector<int>&, const std::vector<int>&,
                           GroupArray&) override {
        return called("storeDataForGroup");
    }
    bool loadDataForSelfDefinedGroup(const std::vector<int>&, const std::vector<int>&,
                                     SelfDefinedGroupArray&) override {
        return called("loadDataForSelfDefinedGroup");
    }
    bool storeDataForSelfDefinedGroup(const std::vector<int>&, const std::vector<int>&,
                                      SelfDefinedGroupArray&) override {
        return called("storeDataForSelfDefinedGroup");
    }
    bool releaseFile() override { return called("releaseFile"); }
    bool reloadFile() override { return called("reloadFile"); }
    bool resetForLoadFile() override { return called("resetForLoadFile"); }
    bool loadFile(const char*) override { return called("loadFile(path)"); }
    bool recoverFile() override { return called("recoverFile"); }
    bool getApplySettingFlag(const _DataCategory_t&, const char*) override { return called("getApplySettingFlag"); }
    bool restoreApplySettingFlag(const _DataCategory_t&, const char*) override {
        return called("restoreApplySettingFlag");
    }
    int getDataSize() override { return dataSize; }
    bool buildComments() override { return called("buildComments"); }
    bool buildSummary(bool) override { return called("buildSummary"); }
    bool buildContents(bool) override { return called("buildContents"); }
    bool loadSummary(_LOAD_FILE_MODE, bool&) override { return called("loadSummary"); }
    bool loadSummary(const char*) override { return called("loadSummary(path)"); }
    bool loadContents() override { return called("loadContents"); }
    bool loadContents_OTA() override { return called("loadContents_OTA"); }
    bool searchSectionId(const char*) override { return called("searchSectionId"); }
    bool searchSectionId(const std::vector<int>&) override { return called("searchSectionId(dims)"); }
    int enableDebugLog() override { return 0; }
    bool removeCurrentFile() override { return called("removeCurrentFile"); }

private:
    bool called(const std::string& call) {
        {
            const MutexLock lock(m_mutex);
            m_calls.push_back(call);
        }
        const auto action = m_actions.find(call);
        return action == m_actions.end() || action->second();
    }

    const _DataCategory_t m_category;
    const std::string m_path;
    std::map<std::string, Action> m_actions; ///< set before use, then only read
    std::atomic<bool> m_backupRequested{false};
    std::atomic<int>* m_destroyed = nullptr;
    Mutex m_criticalSection{LockRank::Category};

    mutable Mutex m_mutex;
    std::vector<std::string> m_calls TD_GUARDED_BY(m_mutex);
    std::map<std::string, int> m_values TD_GUARDED_BY(m_mutex);
};

} // namespace td::test
