/// Placeholder for a database back end: accepts everything, holds nothing. Abstract, so the library never makes one.
#pragma once

#include <dataModule/IDataSeparateManager.h>

namespace td {

class DATAMODULE_API DBDataSeparateManager : public IDataSeparateManager {
public:
    bool init(_DS_Scope_t scope) override;
    using IDataSeparateManager::loadData;
    bool loadData(const _DataCategory_t& category, const std::vector<int>& dims,
                  std::vector<_Argument_t>& args) override;
    bool storeData(const _DataCategory_t& category, const std::vector<int>& dims,
                   const std::vector<_Argument_t>& args) override;
    using IDataSeparateManager::loadAllData;
    bool loadAllData() override;
};

} // namespace td
