/// A write in place that was cut before its checksum, by power or by a failing call. It is ended before anything else
/// is done with the files: by the redo record beside the settings file or, where there was none to be made, by what
/// this process still knows of it.
#pragma once

#include <string>

#include <sys/stat.h>

#include "fileOperator/file/RedoRecord.h"

namespace td {

/// Tells a file from the one that takes its place.
struct FileIdentity {
    dev_t device = 0;
    ino_t inode = 0;

    bool isAt(const std::string& path) const {
        struct stat status = {};
        return stat(path.c_str(), &status) == 0 && status.st_dev == device && status.st_ino == inode;
    }
};

/// Guarded by the category's lock.
class UnendedWrite {
public:
    /// Remembers a write that failed halfway and left no record.
    void keep(RedoRecord record, const FileIdentity& file);
    /// Whether there may be one for that file.
    bool isLikely(const std::string& settingsFile) const;
    /// Ends it, if there is one. Whether the file was changed; `crc` is then the checksum of its contents, else
    /// untouched. The caller has the files for itself.
    bool end(const std::string& settingsFile, unsigned int& crc);
    /// errno when the last end() could not be made for now, else 0.
    int error() const { return m_error; }

private:
    bool endKept(const std::string& settingsFile, unsigned int& crc);

    RedoRecord m_kept; ///< without writes: nothing is
    FileIdentity m_keptFor;
    int m_error = 0;
};

} // namespace td
