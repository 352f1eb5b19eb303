/// Reads single keys of INI files. Stateless; may be called from any thread. Files are read, never written.
#pragma once

#include <dataModule/Export.h>

namespace td {

class DATAMODULE_API ConfigReader {
public:
    /// Copies the value of `key` in "[section]" of the file at `path` into `value` (`size` bytes, terminated). False,
    /// and `value` untouched, if the file, section or key is missing or the value does not fit.
    static bool readString(const char* path, const char* section, const char* key, char* value, int size);
    /// The same for a whole number in decimal or, with 0x, hexadecimal. False for anything else.
    static bool readInt(const char* path, const char* section, const char* key, int& value);
};

} // namespace td
