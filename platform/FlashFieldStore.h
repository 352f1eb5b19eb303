/// Reads named fields kept in flash. Stateless; may be called from any thread.
#pragma once

#include <dataModule/Export.h>

namespace td {

class DATAMODULE_API FlashFieldStore {
public:
    /// Copies at most `size` - 1 characters of the field into `value` and terminates it. False, and `value` untouched,
    /// if there is no such field.
    static bool readField(const char* name, char* value, int size);
};

} // namespace td
