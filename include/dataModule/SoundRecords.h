/// The records of the sound categories, the user's and the factory's: one integer per field, in record order. Values
/// are what the key lines hold: -999 to 9999 where nothing else is said; wider ones are kept in memory but never
/// written.
#pragma once

namespace td {

/// SOUND_GLOBAL: the user's settings that are not tied to a source, as an array by field number. The file holds them in
/// another order.
enum _UsrSoundGlobalField_t {
    SND_GLOBAL_VOLUME = 0,
    SND_GLOBAL_BALANCE,
    SND_GLOBAL_SPDIF, ///< format of the digital output
    SND_GLOBAL_SPEAKER,
    SND_GLOBAL_HEADPHONE_MODE,
    SND_GLOBAL_HEADPHONE_VOLUME,
    SND_GLOBAL_AUDIO_OUT,
    SND_GLOBAL_AUDIO_DESCRIPTION_ENABLE,
    SND_GLOBAL_AUDIO_DESCRIPTION_OUT_DEV,
    SND_GLOBAL_AUDIO_DESCRIPTION_VOLUME,
    SND_GLOBAL_WALL_MOUNT,           ///< the set hangs on a wall
    SND_GLOBAL_BT_VOLUME,            ///< of a Bluetooth device
    SND_GLOBAL_APPLY_MODE_TO_SOURCE, ///< not 0: a change of one source's sound mode settings is for all sources
    SND_GLOBAL_DOLBY_ATMOS_ENABLE,
    SND_GLOBAL_BT_HEADPHONE_VOLUME,
    SND_GLOBAL_EARC_SWITCH_VALUE, ///< enhanced audio return channel
    SND_GLOBAL_SELECT_SOUND_EFFECT,
    SND_GLOBAL_BASS_VOLUME,
    SND_GLOBAL_BT_WITH_SPEAKER, ///< Bluetooth device and speakers sound together
    SND_GLOBAL_WAVES_SWITCH,
    SND_GLOBAL_SOUND_DEVICE,
    SND_GLOBAL_TOP_VOLUME,
    SND_GLOBAL_CENTER_VOLUME,
    SND_GLOBAL_FIELD_COUNT,
};

/// SOUND_MODE: the mode chosen for a source, 0 to 7.
struct _UsrSoundMode_t {
    int soundMode;
};

/// SOUND_EQ: the band gains of the seven-band equaliser for a source and sound mode.
struct _UsrSoundEQ_t {
    int band100Hz;
    int band250Hz;
    int band600Hz;
    int band1kHz;
    int band2500Hz;
    int band6kHz;
    int band10kHz;
};

/// SOUND_DELAY: the delays for a source and video timing.
struct _UsrSoundDelay_t {
    int lipSync;
    int spdifDelay; ///< of the digital output
    int lipSyncOffset;
    int spdifDelayOffset;
};

/// SOUND_DBX: the DBX settings for a source and sound mode.
struct _UsrSoundDbx_t {
    int sonic;
    int surround;
    int volume;
};

/// SOUND_DTS: the DTS settings for a source and sound mode.
struct _UsrSoundDTS_t {
    int bassBoost;
    int surroundSound;
    int dialogClarity;
    int truVolume;
};

/// SOUND_GLOBAL_FACTORY: filters and dynamic range control, each a switch and a value, as an array by field number.
/// Values of -9999 to 99999 are written.
enum _FactorySoundGlobalField_t {
    SND_FACTORY_GLOBAL_HPF_ENABLE = 0, ///< high-pass filter
    SND_FACTORY_GLOBAL_HPF_VALUE,
    SND_FACTORY_GLOBAL_LPF_ENABLE, ///< low-pass filter
    SND_FACTORY_GLOBAL_LPF_VALUE,
    SND_FACTORY_GLOBAL_SOC_DRC_ENABLE, ///< dynamic range control of the main output
    SND_FACTORY_GLOBAL_SOC_DRC_VALUE,
    SND_FACTORY_GLOBAL_HP_DRC_ENABLE, ///< dynamic range control of the headphone
    SND_FACTORY_GLOBAL_HP_DRC_VALUE,
    SND_FACTORY_GLOBAL_FIELD_COUNT,
};

/// SOUND_AVC: automatic volume control for a source and sound mode.
struct _FactorySoundAVC_t {
    int avcEnable;
    int avcMode;
    int avcLevel;
    int attackTime;
    int releaseTime;
};

/// SOUND_AMP: one register of one amplifier.
struct _FactorySoundAMP_t {
    int data1; ///< data words; their meaning depends on the amplifier
    int data2;
    int data3;
    int data4;
    int dataLength; ///< how many of the data words are valid, 0 to 4
    int enable;     ///< whether the entry is used
};

/// SOUND_PEQ: one band of the parametric equaliser. Values of -9999 to 99999 are written.
struct _FactorySoundPEQ_t {
    int bandQ; ///< quality factor
    int bandGain;
    int bandFreq; ///< centre frequency
};

/// SOUND_EQ_WALLMOUNT: the band gains for a source and sound mode while the set hangs on a wall.
struct _FactorySoundEQ_t {
    int band100Hz;
    int band250Hz;
    int band600Hz;
    int band1kHz;
    int band2500Hz;
    int band6kHz;
    int band10kHz;
};

/// SOUND_CURVE: the volume curve of a source and the prescales.
struct _FactorySoundCurve_t {
    int curv0;
    int curv1;
    int curv2;
    int curv3;
    int curv4;
    int speakerPrescale;
    int hpPrescale; ///< of the headphone
};

} // namespace td
