/// Reads the sections of an open settings file: all of them into rows, by position or by key, or one where it stands.
/// What stands as the library writes it is compared as a whole; anything else is read line by line.
#pragma once

#include <dataModule/common/FileUtil.h>

#include "fileOperator/CategoryLayout.h"

namespace td {

class Rows;
namespace text {
class WrittenSection;
} // namespace text

class SectionReader {
public:
    /// `path` names the file in log lines. All outlive the reader.
    SectionReader(const CategoryLayout& layout, FileUtil& file, const char* path)
        : m_layout(layout), m_file(file), m_path(path) {}

    /// Every section from the current position on, by position. False at the first that cannot be read.
    bool readAll(Rows& rows);
    /// The same by key, as a file of another version is merged: what it does not have stays as it is.
    bool readAllByKey(Rows& rows);

    /// The key lines at the current position, by their columns; `record` is untouched on failure.
    bool readKeyLines(int* record);
    /// Key lines by key, up to the next header line, which is left in `line` (LINE_BUFFER bytes), or the end of the
    /// file.
    bool readByKey(char* line, int* record, bool& endOfFile);
    /// Whether the file holds all key lines of the section whose key lines begin at the current position.
    bool holdsKeyLines();
    /// The one section of a category without dimensions has no id to tell it, so its keys are compared; else true.
    bool keysMatch();

private:
    /// As long as sections stand as they are written. Whether that was all; if not, the file stands at the first that
    /// is otherwise, and `indices` are those of the section before it.
    bool readWritten(Rows& rows, int* indices);
    bool readWritten(const text::WrittenSection& section, const char* text, Rows& rows, int* last);
    /// In whatever form. A header that leaves an index open takes that of the section before, at first from `indices`.
    bool readByLine(Rows& rows, int* indices);

    const CategoryLayout& m_layout;
    FileUtil& m_file;
    const char* const m_path;
};

/// Takes over one field by the key of its line, or by the name that the category's merges go by.
void putFieldByKey(const CategoryLayout& layout, const char* key, int value, int* record);

} // namespace td
