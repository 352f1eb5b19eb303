#include <dataModule/DBDataSeparateManager.h>

namespace td {

bool DBDataSeparateManager::init(_DS_Scope_t) {
    return true;
}

bool DBDataSeparateManager::loadData(const _DataCategory_t&, const std::vector<int>&, std::vector<_Argument_t>&) {
    return true;
}

bool DBDataSeparateManager::storeData(const _DataCategory_t&, const std::vector<int>&,
                                      const std::vector<_Argument_t>&) {
    return true;
}

bool DBDataSeparateManager::loadAllData() {
    return true;
}

} // namespace td
