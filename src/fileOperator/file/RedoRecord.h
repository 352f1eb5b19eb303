/// What a write in place is about to do to a settings file, kept beside the file ("<file>.redo") until it is done. A
/// cut of power within the write leaves a file that does not verify; with the record it becomes what it was to become.
///
/// The record is on the disk before the first byte of the settings file changes. It is a text, for people with a shell:
///   redo 1
///   contents <offset of the first section>
///   checksum <offset of the checksum line> 0x<checksum of the contents afterwards>
///   write <offset> <bytes>            one for each section, followed by its bytes and a newline
///   end 0x<CRC-32 of all before>
/// Anything else, and anything behind the last line, is no record. A file that starts with "done 1" holds a record
/// whose write is done; then, as without one, nothing is pending.
#pragma once

#include <string>
#include <vector>

namespace td {

struct RedoRecord {
    struct Write {
        int offset = 0;
        std::string bytes;
    };
    int contentPosition = 0;
    int crcPosition = 0;
    unsigned int crc = 0; ///< of the contents after the writes
    std::vector<Write> writes;
};

/// The record as a text.
std::string redoText(const RedoRecord& record);
/// Reads a record; false, and `record` unspecified, for anything that is not a whole one.
bool parseRedo(const std::string& text, RedoRecord& record);

/// The record's file for a settings file.
std::string redoPath(const std::string& settingsFile);
/// Whether a write may be pending; also when that cannot be told for now.
bool redoIsPending(const std::string& settingsFile);
/// Puts the record on the disk.
bool storeRedo(const std::string& settingsFile, const RedoRecord& record);
/// Nothing is pending any more. Not synced: a record that comes back after a cut of power is found to be done.
void clearRedo(const std::string& settingsFile);
/// Makes the record's writes to a file that they were divided in before, whatever checksum it states; `record.crc`
/// becomes that of its contents. The caller has the files for itself.
bool repeatWrite(const std::string& settingsFile, RedoRecord& record);
/// The checksum that the contents of the settings file would have after the record's writes. False when the file cannot
/// be read or does not reach as far.
bool checksumAfter(const std::string& settingsFile, const RedoRecord& record, unsigned int& crc);

/// Ends a pending write, if the file does not verify as it is and would with the record, which then is cleared. A file
/// that verifies keeps its contents; where the write is in them already it is made once more, as it may not be on the
/// disk. The caller has the files for itself. Whether the file was changed; `crc` is then the
/// checksum of its contents, and untouched otherwise. `failure`, if given, becomes 0, or errno's value when there is a
/// record that could not be read, or not be carried out, for now: then it is still there.
bool replayRedo(const std::string& settingsFile, unsigned int& crc, int* failure = nullptr);

} // namespace td
