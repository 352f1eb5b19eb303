/// PICTURE_FACTORY_WB: the panel's two-point white balance per bin, source, dynamic range, signal and colour
/// temperature.
#pragma once

#include <dataModule/common/FactoryPictureEvents.h>
#include <dataModule/FactoryPictureRecords.h>
#include <dataModule/fileOperator/FactoryWhiteBalance.h>

namespace td {

class DATAMODULE_API FileFactoryPictureWB
    : public CategoryOperator<FileFactoryPictureWB, _factory_pic_wb, FactoryPictureWBEvent, 5, FactoryWhiteBalance> {
public:
    FileFactoryPictureWB();
    static const CategoryLayout& layout();
};

} // namespace td
