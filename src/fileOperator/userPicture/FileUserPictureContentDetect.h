/// PICTURE_CONTENT_DETECT: what follows from the content that a source delivers, per source.
#pragma once

#include <dataModule/common/UserPictureEvents.h>
#include <dataModule/fileOperator/CategoryOperator.h>
#include <dataModule/UserPictureRecords.h>

namespace td {

class DATAMODULE_API FileUserPictureContentDetect
    : public CategoryOperator<FileUserPictureContentDetect, _Usr_Pic_Content_Detect_, UserPictureContentDetectEvent,
                              1> {
public:
    FileUserPictureContentDetect();
    static const CategoryLayout& layout();
};

} // namespace td
