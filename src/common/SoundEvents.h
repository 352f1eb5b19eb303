/// One event class per sound category, in category order; see RecordEvent.h.
#pragma once

#include <dataModule/common/RecordEvent.h>
#include <dataModule/SoundRecords.h>

namespace td {

class FileFactorySoundAMP;
class FileFactorySoundAVC;
class FileFactorySoundCurve;
class FileFactorySoundEQ;
class FileFactorySoundGlobal;
class FileFactorySoundPEQ;
class FileUserSoundDTS;
class FileUserSoundDbx;
class FileUserSoundDelay;
class FileUserSoundEQ;
class FileUserSoundGlobal;
class FileUserSoundMode;

class DATAMODULE_API UserSoundGlobalEvent : public GlobalEvent<FileUserSoundGlobal, SND_GLOBAL_FIELD_COUNT> {
    using GlobalEvent::GlobalEvent;
};
class DATAMODULE_API UserSoundModeEvent : public RecordEvent<FileUserSoundMode, _UsrSoundMode_t> {
    using RecordEvent::RecordEvent;
};
class DATAMODULE_API UserSoundEQEvent : public RecordEvent<FileUserSoundEQ, _UsrSoundEQ_t> {
    using RecordEvent::RecordEvent;
};
class DATAMODULE_API UserSoundDelayEvent : public RecordEvent<FileUserSoundDelay, _UsrSoundDelay_t> {
    using RecordEvent::RecordEvent;
};
class DATAMODULE_API UserSoundDbxEvent : public RecordEvent<FileUserSoundDbx, _UsrSoundDbx_t> {
    using RecordEvent::RecordEvent;
};
class DATAMODULE_API UserSoundDTSEvent : public RecordEvent<FileUserSoundDTS, _UsrSoundDTS_t> {
    using RecordEvent::RecordEvent;
};
class DATAMODULE_API FactorySoundAVCEvent : public RecordEvent<FileFactorySoundAVC, _FactorySoundAVC_t> {
    using RecordEvent::RecordEvent;
};
class DATAMODULE_API FactorySoundAMPEvent : public RecordEvent<FileFactorySoundAMP, _FactorySoundAMP_t> {
    using RecordEvent::RecordEvent;
};
class DATAMODULE_API FactorySoundPEQEvent : public RecordEvent<FileFactorySoundPEQ, _FactorySoundPEQ_t> {
    using RecordEvent::RecordEvent;
};
class DATAMODULE_API FactorySoundEQEvent : public RecordEvent<FileFactorySoundEQ, _FactorySoundEQ_t> {
    using RecordEvent::RecordEvent;
};
class DATAMODULE_API FactorySoundCurveEvent : public RecordEvent<FileFactorySoundCurve, _FactorySoundCurve_t> {
    using RecordEvent::RecordEvent;
};
class DATAMODULE_API FactorySoundGlobalEvent
    : public GlobalEvent<FileFactorySoundGlobal, SND_FACTORY_GLOBAL_FIELD_COUNT> {
    using GlobalEvent::GlobalEvent;
};

} // namespace td
