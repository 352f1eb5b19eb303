/// One event class per user picture category: an event that carries the record as it was when it was stored.
#pragma once

#include <dataModule/common/RecordEvent.h>
#include <dataModule/UserPictureRecords.h>

namespace td {

class FileUserPictureGlobal;
class FileUserPictureMode;

class DATAMODULE_API UserPictureGlobalEvent : public GlobalEvent<FileUserPictureGlobal, PIC_GLOBAL_FIELD_COUNT> {
    using GlobalEvent::GlobalEvent;
};
class DATAMODULE_API UserPictureModeEvent : public RecordEvent<FileUserPictureMode, _UsrPicMode_t> {
    using RecordEvent::RecordEvent;
};

} // namespace td
