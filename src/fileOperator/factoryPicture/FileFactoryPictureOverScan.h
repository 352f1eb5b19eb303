/// PICTURE_FACTORY_OVERSCAN: the scaler's windows per overscan case.
#pragma once

#include <dataModule/common/FactoryPictureEvents.h>
#include <dataModule/FactoryPictureRecords.h>
#include <dataModule/fileOperator/CategoryOperator.h>

namespace td {

class DATAMODULE_API FileFactoryPictureOverScan
    : public CategoryOperator<FileFactoryPictureOverScan, _FactoryPicOverscan_t, FactoryPictureOverScanEvent, 1> {
public:
    FileFactoryPictureOverScan();
    static const CategoryLayout& layout();
};

} // namespace td
