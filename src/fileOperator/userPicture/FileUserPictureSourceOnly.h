/// PICTURE_SOURCE_ONLY: the aspect ratio and overscan of each source and signal type. The factory copy depends on the
/// country.
#pragma once

#include <string>

#include <dataModule/common/UserPictureEvents.h>
#include <dataModule/fileOperator/CategoryOperator.h>
#include <dataModule/UserPictureRecords.h>

namespace td {

class DATAMODULE_API FileUserPictureSourceOnly
    : public CategoryOperator<FileUserPictureSourceOnly, _Usr_Pic_Source_Only_, UserPictureSourceOnlyEvent, 2> {
public:
    FileUserPictureSourceOnly();
    static const CategoryLayout& layout();

    /// True even if no factory copy could be opened; then no file is open. The caller holds the critical section.
    bool switchToManufactory() override;

protected:
    /// The user's country has a factory copy of its own, if there is such a file.
    std::string factoryFileName() override;
};

} // namespace td
