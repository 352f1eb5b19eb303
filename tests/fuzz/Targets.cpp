#include "Targets.h"

namespace td::fuzz {

void require(bool holds, const std::string& property) {
    if (!holds)
        throw PropertyBroken(property);
}

const std::vector<Target>& targets() {
    static const std::vector<Target> all{
        {"settings_file", runSettingsFile},
        {"checksum", runChecksum},
        {"redo_record", runRedoRecord},
        {"exchange", runExchange},
        {"configuration_file", runConfigurationFile},
    };
    return all;
}

const Target* targetNamed(std::string_view name) {
    for (const Target& target : targets()) {
        if (name == target.name)
            return &target;
    }
    return nullptr;
}

} // namespace td::fuzz
