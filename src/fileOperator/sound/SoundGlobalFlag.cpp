#include "fileOperator/sound/SoundGlobalFlag.h"

#include <vector>

#include <dataModule/IDataSeparateManager.h>
#include <dataModule/IDataSeparateManagerInner.h>

#include "common/Log.h"

namespace td {

namespace {

constexpr const char* FLAG = "ApplyModeToSource";

bool loadFlag(IDataSeparateManagerInner* manager, int& value) {
    if (manager == nullptr)
        return false;
    auto* const client = dynamic_cast<IDataSeparateManager*>(manager);
    if (client == nullptr) {
        value = manager->getApplySettingFlag(SOUND_GLOBAL, FLAG) ? 1 : 0;
        return true;
    }
    std::vector<_Argument_t> args{{FLAG, 0}};
    if (!client->loadData(SOUND_GLOBAL, {}, args))
        return false;
    value = args.front().value;
    return true;
}

} // namespace

bool applyModeToSource(IDataSeparateManagerInner* manager) {
    int value = 0;
    if (!loadFlag(manager, value)) {
        TD_WARNING("load [%s] from sound_global failed.\n", FLAG);
        return false;
    }
    if (value == 0) {
        TD_INFO(" load [%s] value is 0.\n", FLAG);
        return false;
    }
    TD_INFO("Apply Setting For All Sources successfully.\n");
    return true;
}

} // namespace td
