/// Remembers the checksum that a settings file's contents have after a write of the library's own, so that the next one
/// need not read the whole file again: a CRC is linear, so what a section changes in it follows from the section alone.
///
/// It counts only for the file as it was left: after every write the file gets a modification time of its own, exact to
/// the nanosecond, which no other write leaves behind. Where the file system does not keep such times, nothing is
/// known.
#pragma once

#include <cstdint>

#include "fileOperator/file/RedoRecord.h"

namespace td {

class KnownChecksum {
public:
    /// Marks the open file, whose contents from `contentPosition` on have the checksum `crc`. Nothing is written to it
    /// afterwards but by a caller who marks it again.
    void mark(int descriptor, int contentPosition, unsigned int crc);
    /// The checksum after the record's writes; false, and `crc` untouched, when it is not known or the writes are not
    /// in ascending order within the file.
    bool after(int descriptor, const RedoRecord& record, unsigned int& crc) const;

    void forget() { m_known = false; }

private:
    /// Of fixed widths: those of the system's types depend on a client's definitions where long has 32 bits.
    struct Stamp {
        std::uint64_t device = 0;
        std::uint64_t inode = 0;
        std::int64_t size = 0;
        std::int64_t modifiedSeconds = 0;
        std::int64_t modifiedNanoseconds = 0;
        std::int64_t changedSeconds = 0;
        std::int64_t changedNanoseconds = 0;

        bool operator==(const Stamp& other) const;
    };
    static bool readStamp(int descriptor, Stamp& stamp);

    bool m_known = false;
    Stamp m_stamp; ///< of the file when it was marked
    int m_contentPosition = 0;
    unsigned int m_crc = 0;
};

} // namespace td
