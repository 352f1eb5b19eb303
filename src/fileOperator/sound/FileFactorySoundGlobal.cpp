#include <dataModule/fileOperator/FileFactorySoundGlobal.h>

#include "fileOperator/CategoryLayout.h"

namespace td {

FileFactorySoundGlobal::FileFactorySoundGlobal() : CategoryOperator(layout()) {}

const CategoryLayout& FileFactorySoundGlobal::layout() {
    static const CategoryLayout& layout = *new const CategoryLayout{
        .category = SOUND_GLOBAL_FACTORY,
        .file = "sound_global_factory.ini",
        .version = "v0.1",
        .purpose = "The file is used to define the global data for factory sound",
        .fields = {{"Hpf_Enable", SND_FACTORY_GLOBAL_HPF_ENABLE},
                   {"Hpf_Value", SND_FACTORY_GLOBAL_HPF_VALUE},
                   {"Lpf_Enable", SND_FACTORY_GLOBAL_LPF_ENABLE},
                   {"Lpf_Value", SND_FACTORY_GLOBAL_LPF_VALUE},
                   {"Soc_Drc_Enable", SND_FACTORY_GLOBAL_SOC_DRC_ENABLE},
                   {"Soc_Drc_Value", SND_FACTORY_GLOBAL_SOC_DRC_VALUE},
                   {"Hp_Drc_Enable", SND_FACTORY_GLOBAL_HP_DRC_ENABLE},
                   {"Hp_Drc_Value", SND_FACTORY_GLOBAL_HP_DRC_VALUE}},
        .keyLine = KeyLineForm::Decimal5,
    };
    return layout;
}

} // namespace td
