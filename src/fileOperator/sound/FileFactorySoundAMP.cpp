#include <dataModule/fileOperator/FileFactorySoundAMP.h>

#include "fileOperator/CategoryLayout.h"

namespace td {

namespace {

constexpr const char* AMPLIFIERS[] = {"MAIN AMP", "SUB1 AMP", "SUB2 AMP", "SUB3 AMP", "SUB4 AMP"};

constexpr const char* REGISTERS[] = {"AMP-DRC L", "AMP-DRC H",       "AMP-DRC S",
                                     "AMP-DRC P", "AMP-Master Gain", "AMP-PA Gain"};

} // namespace

FileFactorySoundAMP::FileFactorySoundAMP() : CategoryOperator(layout()) {}

const CategoryLayout& FileFactorySoundAMP::layout() {
    using Record = _FactorySoundAMP_t;
    static const CategoryLayout& layout = *new const CategoryLayout{
        .category = SOUND_AMP,
        .file = "sound_amp_factory.ini",
        .version = "v0.3",
        .purpose = "The file is used to define the sound AMP data for factory sound",
        .dimensions = {{.name = "double amp", .heading = "double amp scope:0~1", .count = 5, .valueNames = AMPLIFIERS},
                       {.name = "amp", .heading = "amp  scope:0~5", .count = 6, .valueNames = REGISTERS}},
        .fields = {{"Data1", &Record::data1},
                   {"Data2", &Record::data2},
                   {"Data3", &Record::data3},
                   {"Data4", &Record::data4},
                   {"DataLength", &Record::dataLength},
                   {"Enable", &Record::enable}},
        .restoreForAllSources = {.kind = BulkRestore::Kind::PostEach},
        .restoresFromCurrent = false,
    };
    return layout;
}

} // namespace td
