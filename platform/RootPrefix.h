/// The directory under which the library sees the television's absolute paths; empty on a set. Tests, the demo and
/// tools put a whole television under a directory of their own with it.
#pragma once

#include <string>

#include <dataModule/Export.h>

namespace td {

/// Sets the prefix. False, and nothing changes, for null, for a text so long that the longest path of the library would
/// not fit behind it, or once a manager exists. Call it from one thread before anything else of the library.
DATAMODULE_API bool setRootPrefix(const char* prefix);
/// The prefix, without a trailing '/'. Valid until the next setRootPrefix.
DATAMODULE_API const char* rootPrefix();

/// `path`, an absolute path of the television, as this process finds it.
DATAMODULE_API std::string underRootPrefix(const char* path);
/// The manager holds the prefix still while it exists.
DATAMODULE_API void holdRootPrefix(bool hold);

} // namespace td
