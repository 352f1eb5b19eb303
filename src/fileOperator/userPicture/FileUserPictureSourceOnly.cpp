#include <dataModule/fileOperator/FileUserPictureSourceOnly.h>

#include <dataModule/common/FileUtil.h>

#include "common/Log.h"
#include "fileOperator/Axes.h"

namespace td {

namespace {

constexpr const char* SIGNAL_TYPES[] = {"SD", "NON_SD"};

Dimension signalType() {
    return {.name = "signaltype", .heading = "signaltype   scope:0~1", .count = 2, .valueNames = SIGNAL_TYPES};
}

/// Country codes with a factory file of their own.
enum Country { UK = 9, CROATIA = 40, NO_STANDARD_1A = 60, NO_STANDARD_1B = 138 };

/// The country's factory file, or null.
const char* factoryFileOf(int country) {
    switch (country) {
    case UK:
        return "pic_sourceonly_usr_uk.ini";
    case CROATIA:
        return "pic_sourceonly_usr_nostd.ini";
    case NO_STANDARD_1A:
    case NO_STANDARD_1B:
        return "pic_sourceonly_usr_nostd1.ini";
    default:
        return nullptr;
    }
}

/// The second blank before each text is part of it.
void logChoice(int country, const char* file) {
    switch (country) {
    case UK:
        TD_INFO(" user country is UK , and will used the source-only file:[%s] \n", file);
        break;
    case CROATIA:
        TD_INFO(" user country is CROTIA , and will used the source-only file:[%s] \n", file);
        break;
    default:
        TD_INFO(" user country is:%d, and will used the source-only file:[%s] \n", country, file);
        break;
    }
}

} // namespace

FileUserPictureSourceOnly::FileUserPictureSourceOnly() : CategoryOperator(layout()) {}

const CategoryLayout& FileUserPictureSourceOnly::layout() {
    using Record = _Usr_Pic_Source_Only_;
    static const CategoryLayout& layout = *new const CategoryLayout{
        .category = PICTURE_SOURCE_ONLY,
        .file = "pic_sourceonly_usr.ini",
        .version = "v0.1",
        .purpose = "The file is used to define the source only data for user picture",
        .dimensions = {axis::source("source       scope:0~16"), signalType()},
        .fields = {{"Aspect_Ratio", &Record::aspectRatio}, {"OverScanEnable", &Record::overScanEnable}},
        .storeMessages = {.refused = "The dimension value is invalid, source = %d, signalType = %d.\n",
                          .updated = "The dimension value info: source = %d, signalType = %d.\n",
                          .completed = "store data completely, elpased time = %d (ms).\n"},
        .searchSeparator = ",",
    };
    return layout;
}

bool FileUserPictureSourceOnly::switchToManufactory() {
    CategoryOperator::switchToManufactory();
    return true;
}

std::string FileUserPictureSourceOnly::factoryFileName() {
    const int country = parent() != nullptr ? parent()->getReservedValue() : 0;
    const char* file = factoryFileOf(country);
    if (file == nullptr)
        return CategoryOperator::factoryFileName();
    if (!FileUtil::checkFile((getWorkPath(MANUFACTORY_LOAD) + file).c_str())) {
        TD_INFO("source-only file [%s] isn't exist, and will used the ordinary one.\n", file);
        return CategoryOperator::factoryFileName();
    }
    logChoice(country, file);
    return file;
}

} // namespace td
