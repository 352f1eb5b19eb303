/// PICTURE_FACTORY_WB_SHIFT: what is added to the panel's white balance, per bin, source, dynamic range, signal and
/// colour temperature.
#pragma once

#include <dataModule/common/FactoryPictureEvents.h>
#include <dataModule/FactoryPictureRecords.h>
#include <dataModule/fileOperator/FactoryWhiteBalance.h>

namespace td {

class DATAMODULE_API FileFactoryPictureWBShift
    : public CategoryOperator<FileFactoryPictureWBShift, _factory_pic_wb_shift, FactoryPictureWBShiftEvent, 5,
                              FactoryWhiteBalance> {
public:
    FileFactoryPictureWBShift();
    static const CategoryLayout& layout();
    /// Whether the set was made for Australia, read afresh; for clients, the library does not ask. False when the
    /// country is not configured.
    bool isAUCountry() const;
};

} // namespace td
