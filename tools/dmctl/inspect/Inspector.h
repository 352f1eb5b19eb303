/// Goes through the bytes of a settings file once and notes what it holds and what is wrong. Behind FileInspection.h.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "inspect/FileInspection.h"

namespace td {

/// One line of the file; the text has its newline, if there is one.
struct Line {
    std::string_view text;
    int number = 0;
    int offset = 0;

    int length() const { return static_cast<int>(text.size()); }
    bool ended() const { return !text.empty() && text.back() == '\n'; }
    bool opensSection() const { return !text.empty() && text.front() == '['; }
    /// The text as the functions over single lines take it.
    std::string terminated() const { return std::string(text); }
};

/// The checksum of a content block.
unsigned int checksumOf(std::string_view bytes);

class Inspector {
    using Kind = FileProblem::Kind;
    using Severity = FileProblem::Severity;

public:
    /// Whether the contents of a file of another version are looked at.
    enum class OtherVersion { Refused, Taken };

    Inspector(const CategoryLayout& layout, std::string_view bytes, FileInspection& result,
              OtherVersion otherVersion = OtherVersion::Refused);
    void inspect();
    /// After inspect().
    void salvage(SalvagedTable& table) const;

private:
    bool atEnd() const { return m_position >= m_bytes.size(); }
    Line peek() const;
    Line take();
    void note(Kind kind, const Line& line, const std::string& text) { add(kind, Severity::Note, line, text); }
    void fault(Kind kind, const Line& line, const std::string& text) { add(kind, Severity::Fault, line, text); }
    void add(Kind kind, Severity severity, const Line& line, const std::string& text);
    std::string ending(const Line& line) const;

    void inspectComment();
    void reportCommentDifference(std::string_view comment);
    bool inspectSummary();
    bool beginsSection(const Line& line) const;
    static bool beginsSummaryLine(const Line& line);
    bool takeSummaryLine(const char* word, Line& line);
    void inspectTvType();
    bool inspectVersion();
    void inspectChecksumLine();
    void compareChecksum(const Line& line);

    void inspectContents();
    void inspectSection();
    int recordOfHeader(const Line& header);
    void noteRecord(int record, const Line& header);
    bool inspectKeyLines(const std::string& id);
    bool takeSurplus(const std::string& id);
    bool inspectKeyLine(const std::string& id, int& field);
    bool isAsWritten(const Line& line, int field) const;
    int fieldNamedBy(const Line& line) const;
    std::string asWritten(const Line& line, int field) const;
    Line atFirstDifference(const Line& line, int field) const;
    void reportKeyLine(const Line& line, const std::string& id, int field);
    std::string fieldRange(int first, int last) const;
    void reportMissingSections();
    std::string idOf(int record) const;

    int placeOf(int record) const { return m_result.contentOffset + record * m_layout.sectionLength(); }
    std::vector<int> keyLinesOf() const;
    void salvageRecord(int record, int offset, SalvagedTable& table) const;

    const CategoryLayout& m_layout;
    const std::string_view m_bytes;
    FileInspection& m_result;
    const OtherVersion m_otherVersion;
    std::size_t m_position = 0;
    int m_lineNumber = 1;
    std::vector<std::string> m_keyParts; ///< each field's line up to its value
    std::vector<int> m_firstLine;        ///< of each record's section; 0: not seen yet
    int m_previousRecord = -1;
};

} // namespace td
