/// The manager as operators see it, without a worker: posted events wait here until the test delivers them.
///
/// A test sets the answers before operators use it; posting and delivering may be done by any thread.
#pragma once

#include <atomic>
#include <cstdio>
#include <memory>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include <dataModule/common/Event.h>
#include <dataModule/IDataSeparateManagerInner.h>
#include <dataModule/IFileOperator.h>

#include "common/Mutex.h"
#include "common/SystemPaths.h"
#include "fileOperator/CategoryLayout.h"

namespace td::test {

class FakeParent final : public IDataSeparateManagerInner {
public:
    FakeParent() = default;
    virtual ~FakeParent() = default;
    FakeParent(const FakeParent&) = delete;
    FakeParent& operator=(const FakeParent&) = delete;

    std::atomic<bool> storeAllowed{true};
    std::atomic<bool> refusePosts{false};
    std::string tvType = "TVTYPE01";
    std::string factoryPath = paths::defaultFactoryDirectory(); ///< ends in '/'
    int reservedValue = 0;
    std::set<std::string> applyFlags; ///< "CATEGORY/field" of the flags that are set

    /// Handles what was posted so far, in order, as the worker does. How many events succeeded.
    int deliver() {
        int succeeded = 0;
        for (const std::unique_ptr<Event>& event : takePosted()) {
            Event* const events[] = {event.get()};
            bool handled = false;
            event->op()->handleEvents(events, &handled, 1);
            succeeded += handled ? 1 : 0;
        }
        return succeeded;
    }
    /// Takes the events posted so far.
    std::vector<std::unique_ptr<Event>> takePosted() {
        const MutexLock lock(m_mutex);
        return std::exchange(m_posted, {});
    }
    std::size_t posted() const {
        const MutexLock lock(m_mutex);
        return m_posted.size();
    }

    const char* getCategory_Str(const _DataCategory_t& category) override { return categoryName(category); }
    bool getApplySettingFlag(const _DataCategory_t& category, const char* field) override {
        return applyFlags.count(flagName(category, field)) != 0;
    }
    bool restoreApplySettingFlag(const _DataCategory_t& category, const char* field) override {
        return applyFlags.erase(flagName(category, field)) != 0;
    }
    char* getManufactoryPath() override { return factoryPath.data(); }
    bool setReservedFlag(bool) override { return true; }
    bool setTvType(const char* type) override {
        tvType = type;
        return true;
    }
    bool setReservedValue(int value) override {
        reservedValue = value;
        return true;
    }
    FILE* getFileHandler(const _DataCategory_t&) override { return nullptr; }
    bool getReservedFlag() override { return false; }
    const char* getTvType() override { return tvType.c_str(); }
    int getReservedValue() override { return reservedValue; }
    bool backupData() override { return true; }
    int postEvent(Event* event) override {
        if (refusePosts)
            return 0;
        const MutexLock lock(m_mutex);
        m_posted.emplace_back(event);
        return 1;
    }
    bool getStoreFileFlag() override { return storeAllowed; }

private:
    std::string flagName(const _DataCategory_t& category, const char* field) {
        return std::string(getCategory_Str(category)) + "/" + field;
    }

    mutable Mutex m_mutex;
    std::vector<std::unique_ptr<Event>> m_posted TD_GUARDED_BY(m_mutex);
};

} // namespace td::test
