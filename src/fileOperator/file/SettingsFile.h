/// The copy of a category that is open, or was last: where it stands, what its summary says, what is known of its
/// contents. Guarded by the category's lock, but for its path, which anybody may ask for.
#pragma once

#include <string>

#include <dataModule/common/FileUtil.h>
#include <dataModule/IFileOperator.h>

#include "fileOperator/file/Copies.h"
#include "fileOperator/file/KnownChecksum.h"
#include "fileOperator/file/SummaryReader.h"
#include "fileOperator/file/UnendedWrite.h"

namespace td {

class SettingsFile {
public:
    FileUtil& stream() { return m_file; }
    const FileUtil& stream() const { return m_file; }
    CopyPath& path() { return m_path; }
    const char* path() const { return m_path; }

    /// Closes what is open, and opens the file there; `how` as for fopen().
    bool open(const std::string& path, const char* how);
    void close();
    /// Whether it is open for writing, its lengths were read, and it is still the file at `path`. What was read ahead
    /// is forgotten.
    bool isReadyToWrite(const std::string& path);

    /// Reads the summary of the open file and takes its lengths over. A file of another version, or with a checksum
    /// line of another length, can be read but not be brought up to date after a section was written.
    SummaryState readSummary(const char* ownVersion);
    const Summary& summary() const { return m_summary; }
    /// A summary is about to be made in place of what was read.
    void forgetSummary();
    /// The comment block as read, or as it is being made.
    std::string& comment() { return m_summary.comment; }
    /// The summary was written behind the comment block, with the widths that the library writes.
    void wroteSummary(int length);
    bool hasLengths() const { return m_lengthsRead; }
    int contentPosition() const { return m_summary.contentPosition(); }
    /// The checksum of the open file's contents; false when it cannot be computed.
    bool contentChecksum(unsigned int& computed) const;

    /// Makes sure that the current copy is in its directory on the disk too: whoever put it there may have ended before
    /// that. Once for each file that was put there.
    void makeNameDurable();
    void nameHasChanged() { m_nameIsDurable = false; }

    const std::string& openPath() const { return m_openPath; }
    const FileIdentity& identity() const { return m_identity; }
    KnownChecksum& knownChecksum() { return m_knownChecksum; }
    UnendedWrite& unended() { return m_unended; }

    _LOAD_FILE_MODE mode = NORMAL_LOAD; ///< which copy it is
    unsigned int crc = 0;               ///< as last loaded or updated

private:
    FileUtil m_file;
    CopyPath m_path;
    std::string m_openPath;
    FileIdentity m_identity;
    bool m_isWritable = false;
    bool m_lengthsRead = false;
    bool m_nameIsDurable = false;
    Summary m_summary;
    KnownChecksum m_knownChecksum;
    UnendedWrite m_unended;
};

} // namespace td
