/// Reads the comment block and the summary of an open settings file. Says nothing and verifies nothing.
#pragma once

#include <string>

#include <dataModule/common/FileUtil.h>

#include "fileOperator/text/TextLayout.h"

namespace td {

/// How far a summary could be read.
enum class SummaryState {
    NotReadable, ///< the file is not open, or its position cannot be had or set
    BadHeader,   ///< the first line without '#' is not the header, or there is none, or a comment has a zero byte
    BadTvType,   ///< the line where SN belongs is something else
    BadVersion,  ///< the same for Version
    BadCrc,      ///< the same for CRC
    EndOfFile,   ///< the file ends after the header, the SN or the Version line
    Complete,
};

struct Summary {
    std::string comment;     ///< the comment block as it stands
    bool hasTvType = false;  ///< the SN line was read
    bool hasVersion = false; ///< the Version line was read
    char tvType[text::TV_TYPE_WIDTH + 1] = {};
    char version[text::VERSION_WIDTH + 1] = {};
    unsigned int crc = 0;                 ///< as the CRC line states it
    int length = 0;                       ///< bytes of the summary lines read
    int crcPosition = 0;                  ///< offset of the CRC line
    int crcLineLength = 0;                ///< its bytes, newline included
    char badLine[text::LINE_BUFFER] = {}; ///< the line that was something else, or a CRC line of unusual length

    /// Offset of the first section.
    int contentPosition() const { return static_cast<int>(comment.size()) + length; }
};

/// Rewinds and reads `file`, which is left just after the last line read. A line without newline is no line: the file
/// was cut within it.
SummaryState readSummary(FileUtil& file, Summary& summary);

/// What log lines call the line that was something else, or null for the states without such a line.
const char* badPart(SummaryState state);

/// The checksum of the bytes of `path` from `offset` on. False, and `crc` untouched, when it cannot be computed: a
/// value left at its start over a range that is not empty means that the file could not be read.
bool contentChecksum(const char* path, int offset, unsigned int& crc);

/// Whether the file at `path` has no more bytes than are read of one.
bool hasReadableSize(const char* path);

/// Whether the file at `path` has a whole summary of `version` (null: any) whose checksum is that of its contents, and
/// a readable size.
bool fileVerifies(const char* path, const char* version);

} // namespace td
