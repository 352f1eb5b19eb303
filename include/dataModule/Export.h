#pragma once

/// DATAMODULE_API marks what leaves libdataModule.so; everything else is hidden.
#if defined(__GNUC__)
#define DATAMODULE_API __attribute__((visibility("default")))
#else
#define DATAMODULE_API
#endif
