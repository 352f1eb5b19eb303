/// What a whole settings file holds and what is wrong with it, and a whole file made from a table: pure functions over
/// a buffer with the file's bytes. Loading stops at the first thing that is wrong; an inspection finds all of it, and
/// what can still be read. Any thread.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "fileOperator/CategoryLayout.h"

namespace td {

/// One thing that is wrong, in words, and where.
struct FileProblem {
    enum class Kind { Size, Comment, Summary, Version, Checksum, Section, KeyLine };
    enum class Severity {
        Note,  ///< not as the library writes it, but it reads the file and rewrites its sections all the same
        Fault, ///< the file does not load, or loads something else, or would be rewritten at a wrong place
    };
    Kind kind;
    Severity severity;
    int line;   ///< from 1; of something missing: where it belongs
    int offset; ///< of the first wrong byte if it can be told, else of that line's first, from 0
    std::string text;
};

/// A section as it stands in the file.
struct InspectedSection {
    int record;    ///< row-major number, or -1 where the header names none
    int line;      ///< of the header, from 1
    int offset;    ///< of the header's first byte
    int valuesAt;  ///< offset of the first key line
    bool readable; ///< every key line has its key, width and value, in order
};

struct FileInspection {
    /// Most problems that are kept in words; the rest is only counted.
    static constexpr int MAX_PROBLEMS = 200;

    std::string tvType;  ///< the SN value; empty is normal
    std::string version; ///< empty: there is none
    bool hasChecksum = false;
    unsigned int statedChecksum = 0;
    unsigned int computedChecksum = 0; ///< of the contents as they are
    int checksumOffset = -1;           ///< of the CRC line; -1: there is none
    int contentOffset = -1;            ///< of the first section; -1: none was looked for
    int contentLine = 0;
    std::vector<InspectedSection> sections; ///< as they stand in the file; none of a file of another version
    std::vector<FileProblem> problems;      ///< from the file's start to its end, then the missing sections
    int noteCount = 0;
    int faultCount = 0;

    bool isGood() const { return faultCount == 0; }
    /// Different records that have a readable section.
    int readableRecords() const;
};

/// Inspects the bytes of one copy of the category's file.
FileInspection inspectFile(const CategoryLayout& layout, std::string_view bytes);
/// Reads a readable section of the inspected bytes into `record` (fieldCount() integers). False, and nothing is
/// touched, for any other.
bool readInspected(const CategoryLayout& layout, std::string_view bytes, const InspectedSection& section, int* record);

/// What a damaged copy still tells, value by value: both lists are row-major by record and position, as a table is.
struct SalvagedTable {
    std::vector<int> values;
    std::vector<bool> readable; ///< whether the value was read; the others are 0
    /// Whether the stated checksum is that of the contents, so that every value read is the one that was written.
    bool proven = false;

    /// Readable values of a record.
    int readableFields(const CategoryLayout& layout, int record) const;
};

/// Reads every value whose key line stands whole where it belongs in its section, whatever is wrong around it, the
/// version included. A section is looked for by its header; one whose header is damaged, at its place in the file.
SalvagedTable salvageFile(const CategoryLayout& layout, std::string_view bytes);

/// The table of a new file: every record with its defaults, row-major.
std::vector<int> defaultTable(const CategoryLayout& layout);
/// The bytes of a file with this table. Empty when the table's size is not the category's, a value does not fit its
/// columns or `tvType` does not fit the SN line.
std::string wholeFile(const CategoryLayout& layout, const std::string& tvType, const std::vector<int>& table);

} // namespace td
