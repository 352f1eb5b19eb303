/// The text of a settings file, as pure functions over buffers: comment block, summary, section ids, key lines. Nothing
/// here knows of an open file. docs/file-format.md describes the whole file.
#pragma once

#include <string>

#include "fileOperator/CategoryLayout.h"

namespace td::text {

// --- widths and columns of the file; they stand here and nowhere else ---

constexpr int LINE_BUFFER = 128;        ///< a line with its newline and a terminator fits, or is split
constexpr int SECTION_BUFFER = 960;     ///< a section or summary block is formatted into one such buffer
constexpr int COMMENT_LINE_LENGTH = 76; ///< '#', 73 characters, '#', newline
constexpr int KEY_WIDTH = 24;           ///< longest key
constexpr int TV_TYPE_WIDTH = 16;       ///< of the SN value
constexpr int VERSION_WIDTH = 8;        ///< of the Version value
constexpr int CRC_LINE_LENGTH = 38;     ///< "%-24s = 0x%08x\n"
constexpr int SUMMARY_LENGTH = 128;     ///< the four lines as the program writes them
constexpr int CRC_LINE_OFFSET = SUMMARY_LENGTH - CRC_LINE_LENGTH; ///< of the CRC line within the summary
constexpr int MAX_FILE_SIZE = 4194304;                            ///< larger copies are not read
constexpr const char* SUMMARY_HEADER = "[Summary]\n";

/// Bytes of a key line, newline included.
constexpr int keyLineLength(KeyLineForm form) {
    return form == KeyLineForm::Hexadecimal5 ? 35 : 32;
}

/// Characters of the key in a key line.
constexpr int keyWidth(KeyLineForm form) {
    return form == KeyLineForm::Decimal5 ? KEY_WIDTH - 1 : KEY_WIDTH;
}

// --- comment block ---

/// Whether a line belongs to the comment block: it holds a '#' anywhere.
bool isComment(const char* line);
/// The whole comment block of a category.
std::string commentBlock(const CategoryLayout& layout);

// --- summary ---

/// The SN, Version and CRC lines, with the header line before them if asked for.
std::string summary(const char* tvType, const char* version, unsigned int crc, bool withHeader);
/// The CRC line.
std::string crcLine(unsigned int crc);
/// The value of a "key = value" summary line, at most `width` characters up to the first blank, into `out` (`width` + 1
/// bytes). An empty value is normal.
void parseSummaryText(const char* line, int width, char* out);
/// The value of the CRC line; any case of digits. False when there is none.
bool parseCrc(const char* line, unsigned int& crc);

// --- section ids ---

/// The character of an index in a section id.
char indexDigit(int index);
/// The id with brackets, such as "[3a7]" or "[Global]".
std::string sectionId(const CategoryLayout& layout, const int* indices);
/// Writes the header line into `out` as snprintf does and returns its full length.
int formatSectionId(const CategoryLayout& layout, const int* indices, char* out, int size);
/// Reads a header line. Every dimension must be matched; a "%1c" index that is neither digit nor letter leaves that
/// index as it was. Ranges are not checked. On failure some indices may have been set. A category without dimensions
/// takes any header line. Null is none.
bool parseSectionId(const CategoryLayout& layout, const char* line, int* indices);

// --- key lines ---

/// Writes one key line into `out` as snprintf does and returns its full length.
int formatKeyLine(KeyLineForm form, const char* key, int value, char* out, int size);
/// Whether the value's line has the fixed length.
bool fitsColumns(KeyLineForm form, int value);
/// Writes the key lines of a record in file order, as snprintf does, and returns the full length. The section has its
/// fixed size only if every value fits.
int formatSection(const CategoryLayout& layout, const int* record, char* out, int size);
/// The value of a key line by its fixed columns; the key is not looked at. Columns beyond the line's end are absent.
int valueByColumns(KeyLineForm form, const char* line);
/// Splits a key line of any width into key (KEY_WIDTH + 1 bytes) and value. False when it is no key line, and when the
/// number has more digits than its columns hold.
bool parseKeyLine(KeyLineForm form, const char* line, char* key, int& value);

} // namespace td::text
