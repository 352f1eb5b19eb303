#include "inspect/Inspector.h"

#include <algorithm>
#include <cstdio>
#include <cstring>

#include <dataModule/common/CRC32Util.h>

#include "fileOperator/text/TextLayout.h"

namespace td {

namespace {

using Kind = FileProblem::Kind;
using Severity = FileProblem::Severity;

/// A piece of the file for a message: short, on one line, without bytes that a terminal would obey.
std::string shown(std::string_view text) {
    constexpr std::size_t SHOWN = 40;
    if (!text.empty() && text.back() == '\n')
        text.remove_suffix(1);
    std::string result = "\"";
    for (const char c : text.substr(0, SHOWN)) {
        const auto byte = static_cast<unsigned char>(c);
        if (byte >= 0x20 && byte < 0x7F) {
            result += c;
            continue;
        }
        char escaped[8];
        std::snprintf(escaped, sizeof escaped, "\\x%02x", byte);
        result += escaped;
    }
    return result + (text.size() > SHOWN ? "...\"" : "\"");
}

std::string inHexadecimal(unsigned int value) {
    char text[16];
    std::snprintf(text, sizeof text, "0x%08x", value);
    return text;
}

bool isDigits(std::string_view text) {
    return std::all_of(text.begin(), text.end(), [](char c) { return c >= '0' && c <= '9'; });
}

} // namespace

unsigned int checksumOf(std::string_view bytes) {
    CRC32Util* const util = CRC32Util::instance();
    util->init_crc_table();
    // The bytes are only read; the utility's signature predates const.
    auto* const start = reinterpret_cast<unsigned char*>(const_cast<char*>(bytes.data()));
    return util->crc32(CRC32Util::INITIAL, start, static_cast<unsigned int>(bytes.size()));
}

Inspector::Inspector(const CategoryLayout& layout, std::string_view bytes, FileInspection& result,
                     OtherVersion otherVersion)
    : m_layout(layout), m_bytes(bytes), m_result(result), m_otherVersion(otherVersion),
      m_firstLine(static_cast<std::size_t>(layout.recordCount()), 0) {
    for (const Field& field : layout.fields) {
        char line[text::LINE_BUFFER];
        text::formatKeyLine(layout.keyLine, field.key, 0, line, text::LINE_BUFFER);
        const std::string_view whole = line;
        m_keyParts.emplace_back(whole.substr(0, whole.rfind("= ") + 2));
    }
}

Line Inspector::peek() const {
    const std::size_t end = m_bytes.find('\n', m_position);
    const std::size_t length = end == std::string_view::npos ? std::string_view::npos : end + 1 - m_position;
    return {atEnd() ? std::string_view() : m_bytes.substr(m_position, length), m_lineNumber,
            static_cast<int>(m_position)};
}

Line Inspector::take() {
    const Line line = peek();
    m_position += line.text.size();
    ++m_lineNumber;
    return line;
}

void Inspector::add(Kind kind, Severity severity, const Line& line, const std::string& text) {
    ++(severity == Severity::Fault ? m_result.faultCount : m_result.noteCount);
    if (static_cast<int>(m_result.problems.size()) < FileInspection::MAX_PROBLEMS)
        m_result.problems.push_back({kind, severity, line.number, line.offset, text});
}

/// What explains a wrong length, if it can be seen.
std::string Inspector::ending(const Line& line) const {
    if (!line.ended())
        return "; the file ends within it";
    return line.text.size() > 1 && line.text[line.text.size() - 2] == '\r' ? "; it ends in a carriage return" : "";
}

void Inspector::inspect() {
    if (m_bytes.size() > static_cast<std::size_t>(text::MAX_FILE_SIZE)) {
        fault(Kind::Size, peek(),
              "the file has " + std::to_string(m_bytes.size()) + " bytes; more than " +
                  std::to_string(text::MAX_FILE_SIZE) + " are not read");
        return;
    }
    if (m_bytes.empty()) {
        fault(Kind::Size, peek(), "the file is empty");
        return;
    }
    inspectComment();
    if (inspectSummary())
        inspectContents();
}

// --- comment block ---

void Inspector::inspectComment() {
    while (!atEnd() && peek().text.find('#') != std::string_view::npos) {
        const Line line = take();
        if (line.length() >= text::LINE_BUFFER)
            fault(Kind::Comment, line,
                  "the comment line has " + std::to_string(line.length()) + " bytes; one of more than " +
                      std::to_string(text::LINE_BUFFER - 1) + " is read as several lines");
        if (line.text.find('\0') != std::string_view::npos)
            fault(Kind::Comment, line, "the comment line holds a zero byte, which ends it for a reader");
    }
    reportCommentDifference(m_bytes.substr(0, m_position));
}

void Inspector::reportCommentDifference(std::string_view comment) {
    const std::string expected = text::commentBlock(m_layout);
    if (comment == expected)
        return;
    const auto different = std::mismatch(comment.begin(), comment.end(), expected.begin(), expected.end()).first;
    const auto same = comment.substr(0, static_cast<std::size_t>(different - comment.begin()));
    Line line;
    line.number = 1 + static_cast<int>(std::count(same.begin(), same.end(), '\n'));
    line.offset = static_cast<int>(same.rfind('\n') + 1); // npos + 1 is 0
    note(Kind::Comment, line, comment.empty() ? "there is no comment block" : "from here on the comment block differs");
}

// --- summary ---

/// Whether the contents, if any, can be told apart from it and are of the category's version.
bool Inspector::inspectSummary() {
    const Line header = peek();
    if (header.text == text::SUMMARY_HEADER) {
        take();
    } else {
        fault(Kind::Summary, header, "[Summary] belongs here, not " + shown(header.text));
        if (!beginsSection(header) && !beginsSummaryLine(header))
            take();
    }
    inspectTvType();
    const bool sameVersion = inspectVersion();
    inspectChecksumLine();
    return sameVersion;
}

bool Inspector::beginsSection(const Line& line) const {
    int indices[MAX_DIMENSIONS] = {};
    if (m_layout.dimensions.empty())
        return line.text == text::sectionId(m_layout, indices) + '\n';
    return text::parseSectionId(m_layout, line.terminated().c_str(), indices) && m_layout.accepts(indices);
}

bool Inspector::beginsSummaryLine(const Line& line) {
    const std::string_view key = line.text.substr(0, line.text.find(' '));
    return key == "SN" || key == "Version" || key == "CRC";
}

/// Takes the next line unless another one's place begins there. Whether it is the one with `word`.
bool Inspector::takeSummaryLine(const char* word, Line& line) {
    line = peek();
    const std::string name = word;
    const bool found = line.text.find(word) != std::string_view::npos;
    if (atEnd() || line.opensSection() || (!found && beginsSummaryLine(line))) {
        fault(Kind::Summary, line, "the " + name + " line is missing" + (atEnd() ? "; the file ends here" : ""));
        return false;
    }
    take();
    if (found && line.ended() && line.length() < text::LINE_BUFFER)
        return true;
    fault(Kind::Summary, line, "the " + name + " line belongs here, not " + shown(line.text) + ending(line));
    return false;
}

void Inspector::inspectTvType() {
    Line line;
    if (!takeSummaryLine("SN", line))
        return;
    char value[text::TV_TYPE_WIDTH + 1] = {};
    text::parseSummaryText(line.terminated().c_str(), text::TV_TYPE_WIDTH, value);
    m_result.tvType = value;
    const std::string written = text::summary(value, "", 0, false);
    if (line.text != std::string_view(written).substr(0, written.find('\n') + 1))
        fault(Kind::Summary, line,
              "the SN line is " + shown(line.text) + " of " + std::to_string(line.length()) + " bytes; a rewrite of " +
                  "the summary would not put the same number of bytes there" + ending(line));
}

bool Inspector::inspectVersion() {
    Line line;
    if (!takeSummaryLine("Version", line))
        return true;
    char value[text::VERSION_WIDTH + 1] = {};
    text::parseSummaryText(line.terminated().c_str(), text::VERSION_WIDTH, value);
    m_result.version = value;
    if (m_result.version != m_layout.version) {
        fault(Kind::Version, line,
              "the version is " + shown(value) + ", this library's is " + shown(m_layout.version) +
                  "; the contents are not looked at");
        return m_otherVersion == OtherVersion::Taken;
    }
    const std::string lines = text::summary("", value, 0, false);
    const std::size_t start = lines.find('\n') + 1;
    if (line.text != std::string_view(lines).substr(start, lines.find('\n', start) + 1 - start))
        fault(Kind::Summary, line,
              "the Version line is " + shown(line.text) + " of " + std::to_string(line.length()) +
                  " bytes; a rewrite of the summary would not put the same number of bytes there" + ending(line));
    return true;
}

void Inspector::inspectChecksumLine() {
    Line line;
    const bool found = takeSummaryLine("CRC", line);
    m_result.contentOffset = static_cast<int>(m_position);
    m_result.contentLine = m_lineNumber;
    m_result.computedChecksum = checksumOf(m_bytes.substr(m_position));
    if (!found)
        return;
    m_result.checksumOffset = line.offset;
    m_result.hasChecksum = text::parseCrc(line.terminated().c_str(), m_result.statedChecksum);
    if (m_result.hasChecksum)
        compareChecksum(line);
    else
        fault(Kind::Checksum, line, "the CRC line states no checksum: " + shown(line.text));
}

void Inspector::compareChecksum(const Line& line) {
    if (line.length() != text::CRC_LINE_LENGTH)
        fault(Kind::Checksum, line,
              "the CRC line has " + std::to_string(line.length()) + " bytes instead of " +
                  std::to_string(text::CRC_LINE_LENGTH) + ending(line));
    else if (line.text != text::crcLine(m_result.statedChecksum))
        note(Kind::Checksum, line, "the CRC line is written " + shown(line.text));
    if (m_result.statedChecksum != m_result.computedChecksum)
        fault(Kind::Checksum, line,
              "the CRC line states " + inHexadecimal(m_result.statedChecksum) + ", but the contents have " +
                  inHexadecimal(m_result.computedChecksum));
}

// --- contents ---

void Inspector::inspectContents() {
    while (!atEnd()) {
        if (peek().opensSection()) {
            inspectSection();
            continue;
        }
        const Line line = take();
        fault(Kind::Section, line, shown(line.text) + " stands before the first section");
        while (!atEnd() && !peek().opensSection())
            take();
    }
    reportMissingSections();
}

void Inspector::inspectSection() {
    const Line header = take();
    const int record = recordOfHeader(header);
    if (record >= 0)
        noteRecord(record, header);
    const int valuesAt = static_cast<int>(m_position);
    const bool readable = inspectKeyLines(record >= 0 ? idOf(record) : shown(header.text));
    m_result.sections.push_back({record, header.number, header.offset, valuesAt, readable});
}

int Inspector::recordOfHeader(const Line& header) {
    int indices[MAX_DIMENSIONS];
    std::fill(std::begin(indices), std::end(indices), -1);
    const std::string line = header.terminated();
    if (!text::parseSectionId(m_layout, line.c_str(), indices) || !m_layout.accepts(indices)) {
        fault(Kind::Section, header, shown(header.text) + " is no section of this category");
        return -1;
    }
    const std::string id = text::sectionId(m_layout, indices);
    if (line == id + '\n')
        return m_layout.recordIndex(indices);
    if (header.length() != m_layout.headerLength() || !header.ended() || m_layout.dimensions.empty()) {
        fault(Kind::Section, header, "the header " + shown(header.text) + " is not " + shown(id) + ending(header));
        return m_layout.dimensions.empty() ? -1 : m_layout.recordIndex(indices);
    }
    note(Kind::Section, header, "the header is written " + shown(header.text) + " instead of " + shown(id));
    return m_layout.recordIndex(indices);
}

void Inspector::noteRecord(int record, const Line& header) {
    int& firstLine = m_firstLine[static_cast<std::size_t>(record)];
    if (firstLine != 0)
        fault(Kind::Section, header,
              "section " + idOf(record) + " stands here again, first at line " + std::to_string(firstLine));
    else if (record < m_previousRecord)
        fault(Kind::Section, header,
              "section " + idOf(record) + " stands after " + idOf(m_previousRecord) +
                  "; out of order it would be rewritten at another one's place");
    if (firstLine == 0)
        firstLine = header.number;
    m_previousRecord = record;
}

bool Inspector::inspectKeyLines(const std::string& id) {
    bool readable = true;
    int field = 0;
    while (!atEnd() && !peek().opensSection()) {
        const bool good = field < m_layout.fieldCount() ? inspectKeyLine(id, field) : takeSurplus(id);
        readable = readable && good;
    }
    if (field >= m_layout.fieldCount())
        return readable;
    fault(Kind::KeyLine, peek(),
          "section " + id + " ends here without " + fieldRange(field, m_layout.fieldCount() - 1) +
              (atEnd() ? "; the file ends" : ""));
    return false;
}

bool Inspector::takeSurplus(const std::string& id) {
    const Line line = take();
    fault(Kind::KeyLine, line, shown(line.text) + " follows the last key line of section " + id);
    while (!atEnd() && !peek().opensSection())
        take();
    return false;
}

/// Takes one line where the line of `field` belongs, and moves `field` on to what belongs after it.
bool Inspector::inspectKeyLine(const std::string& id, int& field) {
    const Line line = take();
    if (isAsWritten(line, field)) {
        ++field;
        return true;
    }
    const int named = fieldNamedBy(line);
    if (named > field) {
        fault(Kind::KeyLine, line, "section " + id + " lacks " + fieldRange(field, named - 1) + " before this line");
        field = named;
        if (!isAsWritten(line, field))
            reportKeyLine(line, id, field);
        ++field;
    } else if (named == field) {
        reportKeyLine(line, id, field);
        ++field;
    } else {
        fault(Kind::KeyLine, atFirstDifference(line, field),
              shown(line.text) + " stands in section " + id + " where " + fieldRange(field, field) + " belongs" +
                  ending(line));
        // One line too many, or one in the place of another: the next line tells.
        if (named < 0 && (atEnd() || fieldNamedBy(peek()) != field))
            ++field;
    }
    return false;
}

bool Inspector::isAsWritten(const Line& line, int field) const {
    const std::string& keyPart = m_keyParts[static_cast<std::size_t>(field)];
    if (line.length() != m_layout.lineLength() || !line.ended() || line.text.substr(0, keyPart.size()) != keyPart)
        return false;
    const std::string_view value = line.text.substr(keyPart.size(), line.text.size() - keyPart.size() - 1);
    if (m_layout.keyLine != KeyLineForm::Hexadecimal5 && isDigits(value)) // what nearly all lines are
        return true;
    return line.text == asWritten(line, field);
}

/// The key line of `field` with the value that is read from `line`.
std::string Inspector::asWritten(const Line& line, int field) const {
    char written[text::LINE_BUFFER];
    const int number = text::valueByColumns(m_layout.keyLine, line.terminated().c_str());
    text::formatKeyLine(m_layout.keyLine, m_layout.fields[static_cast<std::size_t>(field)].key, number, written,
                        text::LINE_BUFFER);
    return written;
}

/// The line with the offset of its first wrong byte, where its length is right and so its bytes are in place.
Line Inspector::atFirstDifference(const Line& line, int field) const {
    const std::string written = asWritten(line, field);
    Line place = line;
    if (line.text.size() == written.size())
        place.offset +=
            static_cast<int>(std::mismatch(written.begin(), written.end(), line.text.begin()).first - written.begin());
    return place;
}

int Inspector::fieldNamedBy(const Line& line) const {
    const std::string_view key = line.text.substr(0, line.text.find_first_of(" =\r\n"));
    for (int i = 0; i < m_layout.fieldCount(); ++i) {
        if (key == m_layout.fields[static_cast<std::size_t>(i)].key)
            return i;
    }
    return -1;
}

void Inspector::reportKeyLine(const Line& line, const std::string& id, int field) {
    const std::string what = "the line of " + fieldRange(field, field) + " in section " + id;
    if (line.length() != m_layout.lineLength())
        fault(Kind::KeyLine, line,
              what + " has " + std::to_string(line.length()) + " bytes instead of " +
                  std::to_string(m_layout.lineLength()) + ending(line));
    else
        fault(Kind::KeyLine, atFirstDifference(line, field),
              what + " is " + shown(line.text) + ", which is not how a value is written");
}

std::string Inspector::fieldRange(int first, int last) const {
    const std::string name = m_layout.fields[static_cast<std::size_t>(first)].key;
    return first == last ? name : name + " to " + m_layout.fields[static_cast<std::size_t>(last)].key;
}

void Inspector::reportMissingSections() {
    const int count = m_layout.recordCount();
    for (int first = 0; first < count; ++first) {
        if (m_firstLine[static_cast<std::size_t>(first)] != 0)
            continue;
        int last = first;
        while (last + 1 < count && m_firstLine[static_cast<std::size_t>(last) + 1] == 0)
            ++last;
        Line place;
        place.number = m_result.contentLine + first * (m_layout.fieldCount() + 1);
        place.offset = m_result.contentOffset + first * m_layout.sectionLength();
        fault(Kind::Section, place,
              first == last ? "section " + idOf(first) + " is missing"
                            : "sections " + idOf(first) + " to " + idOf(last) + " are missing (" +
                                  std::to_string(last - first + 1) + ")");
        first = last;
    }
}

std::string Inspector::idOf(int record) const {
    int indices[MAX_DIMENSIONS] = {};
    m_layout.indicesOf(record, indices);
    return text::sectionId(m_layout, indices);
}

} // namespace td
