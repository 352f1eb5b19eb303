#include "fileOperator/SectionReader.h"

#include <algorithm>
#include <cstring>

#include "common/Log.h"
#include "fileOperator/table/RecordTable.h"
#include "fileOperator/text/TextLayout.h"
#include "fileOperator/text/WrittenSection.h"
#include "fileOperator/ValueDump.h"

namespace td {

namespace {

/// Contents are read in pieces of this many bytes, which hold the longest section many times.
constexpr std::size_t READ_PIECE = 16384;

} // namespace

bool SectionReader::readAll(Rows& rows) {
    int indices[MAX_DIMENSIONS] = {};
    return m_file.isOpend() && (readWritten(rows, indices) || readByLine(rows, indices));
}

bool SectionReader::readKeyLines(int* record) {
    int read[MAX_FIELDS] = {};
    char line[text::LINE_BUFFER];
    for (const Field& field : m_layout.fields) {
        if (!m_file.readLine(line, sizeof line))
            return false;
        read[field.position] = text::valueByColumns(m_layout.keyLine, line);
    }
    std::copy_n(read, m_layout.fieldCount(), record);
    return true;
}

bool SectionReader::readWritten(Rows& rows, int* indices) {
    long position = 0;
    if (!m_file.getCurrentPos(position))
        return false;
    const text::WrittenSection section(m_layout);
    const std::size_t length = static_cast<std::size_t>(section.length());
    char piece[READ_PIECE];
    std::size_t kept = 0;
    for (;;) {
        const std::size_t added = m_file.readBytes(piece + kept, sizeof piece - kept);
        const std::size_t count = kept + added;
        std::size_t read = 0;
        while (count - read >= length && readWritten(section, piece + read, rows, indices))
            read += length;
        position += static_cast<long>(read);
        kept = count - read;
        if (kept == 0 && m_file.reachEnd())
            return true;
        // Something else begins here, or the file ends within a section.
        if (kept >= length || added == 0)
            break;
        std::memmove(piece, piece + read, kept);
    }
    m_file.setPos(static_cast<int>(position));
    return false;
}

bool SectionReader::readWritten(const text::WrittenSection& section, const char* text, Rows& rows, int* last) {
    int indices[MAX_DIMENSIONS] = {};
    int record[MAX_FIELDS] = {};
    if (!section.read(text, indices, record))
        return false;
    std::copy_n(indices, MAX_DIMENSIONS, last);
    rows.put(m_layout.recordIndex(indices), record);
    dumpRecord(m_layout, indices, record);
    return true;
}

bool SectionReader::readByLine(Rows& rows, int* indices) {
    int record[MAX_FIELDS] = {};
    char line[text::LINE_BUFFER];
    while (m_file.isOpend() && m_file.readLine(line, sizeof line)) {
        if (std::strchr(line, '[') == nullptr) {
            TD_WARNING("read section [%s] from file [%s] failed, Maybe the file format is wrong !!!\n", line, m_path);
            return false;
        }
        if (!text::parseSectionId(m_layout, line, indices)) {
            TD_WARNING("parse section [%s] for file [%s] failed.\n", line, m_path);
            return false;
        }
        if (!m_layout.accepts(indices)) {
            TD_WARNING("The dimension value is invalid when load content.\n");
            return false;
        }
        if (!readKeyLines(record)) {
            TD_WARNING("read section [%s] from file [%s] failed, Maybe the file format is wrong !!!\n", line, m_path);
            return false;
        }
        rows.put(m_layout.recordIndex(indices), record);
        dumpRecord(m_layout, indices, record);
    }
    return m_file.isOpend() && m_file.reachEnd();
}

bool SectionReader::readAllByKey(Rows& rows) {
    int indices[MAX_DIMENSIONS] = {};
    int dropped[MAX_FIELDS] = {};
    char line[text::LINE_BUFFER];
    bool endOfFile = false;
    bool atHeader = false;
    while (!endOfFile) {
        if (!atHeader && !m_file.readLine(line, sizeof line))
            break;
        atHeader = std::strchr(line, '[') != nullptr;
        if (!atHeader)
            continue;
        if (!text::parseSectionId(m_layout, line, indices)) {
            TD_WARNING("parse section [%s] for file [%s] failed.\n", line, m_path);
            return false;
        }
        // A section outside the ranges of this version is read and dropped (invariant 6).
        const bool known = m_layout.accepts(indices);
        int* record = known ? rows.at(m_layout.recordIndex(indices)) : dropped;
        if (!readByKey(line, record, endOfFile))
            return false;
        if (known)
            dumpRecord(m_layout, indices, record);
    }
    return m_file.isOpend() && m_file.reachEnd();
}

bool SectionReader::readByKey(char* line, int* record, bool& endOfFile) {
    while (m_file.readLine(line, text::LINE_BUFFER)) {
        if (std::strchr(line, '[') != nullptr)
            return true;
        char key[text::KEY_WIDTH + 1];
        int value = 0;
        if (text::parseKeyLine(m_layout.keyLine, line, key, value))
            putFieldByKey(m_layout, key, value, record);
    }
    endOfFile = true;
    return m_file.isOpend() && m_file.reachEnd();
}

bool SectionReader::keysMatch() {
    if (!m_layout.dimensions.empty())
        return true;
    long position = 0;
    if (!m_file.getCurrentPos(position))
        return false;
    char line[text::LINE_BUFFER];
    for (const Field& field : m_layout.fields) {
        char key[text::KEY_WIDTH + 1] = {};
        int value = 0;
        if (!m_file.readLine(line, sizeof line) || !text::parseKeyLine(m_layout.keyLine, line, key, value) ||
            std::strcmp(key, field.key) != 0)
            return false;
    }
    return m_file.setPos(static_cast<int>(position));
}

bool SectionReader::holdsKeyLines() {
    long position = 0;
    return m_file.getCurrentPos(position) && position + m_layout.keyLinesLength() <= FileUtil::getFileSize(m_path);
}

void putFieldByKey(const CategoryLayout& layout, const char* key, int value, int* record) {
    const bool byKey = layout.mergeNames == MergeNames::Keys;
    const Field* const field = byKey ? layout.fieldByKey(key) : layout.fieldByArgument(key);
    if (field != nullptr)
        record[field->position] = value;
    else if (!byKey)
        TD_WARNING("The field [%s] is invalid for this version.\n", key != nullptr ? key : "");
}

} // namespace td
