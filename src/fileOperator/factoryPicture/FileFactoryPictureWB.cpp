#include <dataModule/fileOperator/FileFactoryPictureWB.h>

#include "fileOperator/Axes.h"
#include "fileOperator/factoryPicture/BinTable.h"
#include "fileOperator/factoryPicture/FactoryAxes.h"

namespace td {

namespace {

constexpr WhiteBalanceMessages MESSAGES{
    .loadAllBins = "load factory-wb data in normal mode in factory state\n",
    .groupLoadStart = "load factory wb data begin in DATA MODULE start!!!\n",
    .groupLoadEnd = "store factory wb data begin in DATA MODULE end!!!\n",
    .groupStoreStart = "start to update factory wb data ... \n",
    .groupStoreTime = "update factory wb data completely, elpased time = %d (ms).\n",
    .rangeLoadStart = "load factory wb data begin in DATA MODULE start!!!\n",
    .rangeLoadEnd = "load factory wb data begin in DATA MODULE end!!!\n",
    .rangeLoadTime = " load data completely, elpased time = %d (ms).\n",
    .rangeStoreStart = "start to update factory wb data ... \n",
    .rangeStoreTime = "update factory wb data completely, elpased time = %d (ms).\n",
};

} // namespace

FileFactoryPictureWB::FileFactoryPictureWB() : CategoryOperator(layout(), MESSAGES) {}

const CategoryLayout& FileFactoryPictureWB::layout() {
    using Record = _factory_pic_wb;
    static const CategoryLayout& layout = *new const CategoryLayout{
        .category = PICTURE_FACTORY_WB,
        .file = "pic_wb_factory.ini",
        .version = "v0.3",
        .purpose = "The file is used to define the WB data for factory picture",
        .dimensions = {axis::bin("bin          scope:0~5"), axis::source("source       scope:0~15"),
                       axis::factoryDynamicRange("dr           scope:0~7"), axis::signal("2D/3D        scope:0~1"),
                       axis::colourTemperature("ColorTemperature_t scope:0~5")},
        .fields = {{"RGain", &Record::rGain},
                   {"GGain", &Record::gGain},
                   {"BGain", &Record::bGain},
                   {"ROffset", &Record::rOffset},
                   {"GOffset", &Record::gOffset},
                   {"BOffset", &Record::bOffset}},
        .dumpPrefix = " ",
        .dumpEnd = ".\n",
        .restoresFromCurrent = false,
    };
    return layout;
}

} // namespace td
