#include <dataModule/fileOperator/FileFactoryPictureWBShift.h>

#include <dataModule/platform/ConfigReader.h>

#include "common/Log.h"
#include "common/SystemPaths.h"
#include "fileOperator/Axes.h"
#include "fileOperator/factoryPicture/BinTable.h"
#include "fileOperator/factoryPicture/FactoryAxes.h"

namespace td {

namespace {

// The plain group store ends with the words of the white balance itself; logs have always read so.
constexpr WhiteBalanceMessages MESSAGES{
    .loadAllBins = "load factory-wb shift data in normal mode in factory state\n",
    .groupLoadStart = "load factory wb shift data begin in DATA MODULE start!!!\n",
    .groupLoadEnd = "store factory wb shift data begin in DATA MODULE end!!!\n",
    .groupStoreStart = "start to update factory wb shift data  ... \n",
    .groupStoreTime = "update factory wb data completely, elpased time = %d (ms).\n",
    .rangeLoadStart = "load factory wb shift data begin in DATA MODULE start!!!\n",
    .rangeLoadEnd = "load factory wb shift data begin in DATA MODULE end!!!\n",
    .rangeLoadTime = "load data completely, elpased time = %d (ms).\n",
    .rangeStoreStart = "start to update factory wb shift data ... \n",
    .rangeStoreTime = "update factory wb shift data completely, elpased time = %d (ms).\n",
};

constexpr int AU_COUNTRY = 1;
/// Set or not, the country is the same.
constexpr int COUNTRY_VARIANT = 1 << 4;

} // namespace

FileFactoryPictureWBShift::FileFactoryPictureWBShift() : CategoryOperator(layout(), MESSAGES) {}

const CategoryLayout& FileFactoryPictureWBShift::layout() {
    using Record = _factory_pic_wb_shift;
    static const CategoryLayout& layout = *new const CategoryLayout{
        .category = PICTURE_FACTORY_WB_SHIFT,
        .file = "pic_wb_shift_factory.ini",
        .version = "v0.1",
        .purpose = "The file is used to define the WB shift data for factory picture",
        .dimensions = {axis::bin("bin          scope:0~5"), axis::source("source       scope:0~15"),
                       axis::factoryDynamicRange("dr           scope:0~7"), axis::signal("2D/3D        scope:0~1"),
                       axis::colourTemperature("ColorTemperature_t scope:0~5")},
        .fields = {{"RGainShift", &Record::rGainShift},
                   {"GGainShift", &Record::gGainShift},
                   {"BGainShift", &Record::bGainShift},
                   {"ROffsetShift", &Record::rOffsetShift},
                   {"GOffsetShift", &Record::gOffsetShift},
                   {"BOffsetShift", &Record::bOffsetShift}},
        .dumpPrefix = " ",
        .dumpEnd = ".\n",
        .restoresFromCurrent = false,
    };
    return layout;
}

bool FileFactoryPictureWBShift::isAUCountry() const {
    const std::string path = underRootPrefix(paths::CRITICAL_FILE);
    int country = 0;
    if (!ConfigReader::readInt(path.c_str(), "Critical", "Country", country)) {
        TD_WARNING("load field -- 'Country' failed from file [%s] when load WB data.\n", path.c_str());
        return false;
    }
    if ((country & ~COUNTRY_VARIANT) != AU_COUNTRY)
        return false;
    TD_INFO("load manufactory country [%d] is AU country when load WB data, so will load AU WB data.\n", country);
    return true;
}

} // namespace td
