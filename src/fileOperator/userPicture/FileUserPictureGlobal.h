/// PICTURE_GLOBAL: the user's picture settings that are not tied to a picture mode; one record, among it the flags that
/// say whether a change goes to all sources.
#pragma once

#include <dataModule/common/UserPictureEvents.h>
#include <dataModule/fileOperator/CategoryOperator.h>
#include <dataModule/UserPictureRecords.h>

namespace td {

class DATAMODULE_API FileUserPictureGlobal
    : public CategoryOperator<FileUserPictureGlobal, int[PIC_GLOBAL_FIELD_COUNT], UserPictureGlobalEvent, 0> {
public:
    FileUserPictureGlobal();
    static const CategoryLayout& layout();
};

} // namespace td
