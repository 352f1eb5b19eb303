#include "inspect/FileInspection.h"

#include <algorithm>
#include <cstdio>
#include <cstring>

#include <dataModule/common/CRC32Util.h>

#include "fileOperator/text/TextLayout.h"
#include "inspect/Inspector.h"

namespace td {

namespace {

/// The bytes of a section, header and key lines.
std::string sectionText(const CategoryLayout& layout, const int* indices, const int* record) {
    char text[text::SECTION_BUFFER];
    const int header = text::formatSectionId(layout, indices, text, text::SECTION_BUFFER);
    text::formatSection(layout, record, text + header, text::SECTION_BUFFER - header);
    return text;
}

} // namespace

// --- salvage ---

/// For each record the offset of the key lines that its values are taken from, or -1. A section at its own place counts
/// more than one elsewhere, which may be another one's with a damaged header.
std::vector<int> Inspector::keyLinesOf() const {
    std::vector<int> offsets(m_firstLine.size(), -1);
    std::vector<int> standing(m_firstLine.size(), -1); // the record that is named at a record's place
    for (const InspectedSection& section : m_result.sections) {
        if (section.record < 0)
            continue;
        int& offset = offsets[static_cast<std::size_t>(section.record)];
        if (offset < 0 || section.offset == placeOf(section.record))
            offset = section.valuesAt;
        const int distance = section.offset - placeOf(0);
        const auto place = static_cast<std::size_t>(distance / m_layout.sectionLength());
        if (distance % m_layout.sectionLength() == 0 && place < standing.size())
            standing[place] = section.record;
    }
    for (std::size_t record = 0; record < offsets.size(); ++record) {
        const int named = standing[record];
        const bool isAnothers =
            named >= 0 && offsets[static_cast<std::size_t>(named)] != placeOf(named) + m_layout.headerLength();
        if (offsets[record] < 0 && !isAnothers)
            offsets[record] = placeOf(static_cast<int>(record)) + m_layout.headerLength();
    }
    return offsets;
}

void Inspector::salvageRecord(int record, int offset, SalvagedTable& table) const {
    const auto length = static_cast<std::size_t>(m_layout.lineLength());
    auto at = static_cast<std::size_t>(offset);
    for (int field = 0; field < m_layout.fieldCount() && at < m_bytes.size(); ++field, at += length) {
        Line line;
        line.text = m_bytes.substr(at, length);
        if (!isAsWritten(line, field))
            continue;
        const std::size_t cell = static_cast<std::size_t>(record) * m_layout.fields.size() +
                                 static_cast<std::size_t>(m_layout.fields[static_cast<std::size_t>(field)].position);
        table.values[cell] = text::valueByColumns(m_layout.keyLine, line.terminated().c_str());
        table.readable[cell] = true;
    }
}

void Inspector::salvage(SalvagedTable& table) const {
    if (m_result.contentOffset < 0)
        return;
    table.proven = m_result.hasChecksum && m_result.statedChecksum == m_result.computedChecksum;
    const std::vector<int> offsets = keyLinesOf();
    for (int record = 0; record < m_layout.recordCount(); ++record) {
        const int offset = offsets[static_cast<std::size_t>(record)];
        if (offset >= 0)
            salvageRecord(record, offset, table);
    }
}

int FileInspection::readableRecords() const {
    std::vector<int> records;
    for (const InspectedSection& section : sections) {
        if (section.readable && section.record >= 0)
            records.push_back(section.record);
    }
    std::sort(records.begin(), records.end());
    return static_cast<int>(std::unique(records.begin(), records.end()) - records.begin());
}

FileInspection inspectFile(const CategoryLayout& layout, std::string_view bytes) {
    FileInspection result;
    Inspector(layout, bytes, result).inspect();
    return result;
}

bool readInspected(const CategoryLayout& layout, std::string_view bytes, const InspectedSection& section, int* record) {
    const auto start = static_cast<std::size_t>(section.valuesAt);
    const auto lineLength = static_cast<std::size_t>(layout.lineLength());
    if (!section.readable || start + lineLength * layout.fields.size() > bytes.size())
        return false;
    for (std::size_t i = 0; i < layout.fields.size(); ++i) {
        const std::string line(bytes.substr(start + i * lineLength, lineLength));
        record[layout.fields[i].position] = text::valueByColumns(layout.keyLine, line.c_str());
    }
    return true;
}

int SalvagedTable::readableFields(const CategoryLayout& layout, int record) const {
    const auto first = readable.begin() + static_cast<std::ptrdiff_t>(record) * layout.fieldCount();
    return static_cast<int>(std::count(first, first + layout.fieldCount(), true));
}

SalvagedTable salvageFile(const CategoryLayout& layout, std::string_view bytes) {
    SalvagedTable table;
    table.values.resize(static_cast<std::size_t>(layout.recordCount()) * layout.fields.size());
    table.readable.resize(table.values.size());
    FileInspection inspection;
    Inspector inspector(layout, bytes, inspection, Inspector::OtherVersion::Taken);
    inspector.inspect();
    inspector.salvage(table);
    return table;
}

std::vector<int> defaultTable(const CategoryLayout& layout) {
    const std::size_t width = layout.fields.size();
    std::vector<int> table(static_cast<std::size_t>(layout.recordCount()) * width);
    for (std::size_t row = 0; row < table.size(); row += width) {
        for (const Field& field : layout.fields)
            table[row + static_cast<std::size_t>(field.position)] = field.defaultValue;
    }
    return table;
}

std::string wholeFile(const CategoryLayout& layout, const std::string& tvType, const std::vector<int>& table) {
    const std::size_t width = layout.fields.size();
    const auto fits = [&](int value) { return text::fitsColumns(layout.keyLine, value); };
    if (table.size() != static_cast<std::size_t>(layout.recordCount()) * width ||
        tvType.size() > static_cast<std::size_t>(text::TV_TYPE_WIDTH) || !std::all_of(table.begin(), table.end(), fits))
        return {};
    std::string contents;
    contents.reserve(static_cast<std::size_t>(layout.contentLength()));
    for (int record = 0; record < layout.recordCount(); ++record) {
        int indices[MAX_DIMENSIONS] = {};
        layout.indicesOf(record, indices);
        contents += sectionText(layout, indices, table.data() + static_cast<std::size_t>(record) * width);
    }
    return text::commentBlock(layout) + text::summary(tvType.c_str(), layout.version, checksumOf(contents), true) +
           contents;
}

} // namespace td
