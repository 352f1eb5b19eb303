#include "exchange/Csv.h"

#include <algorithm>
#include <charconv>
#include <climits>

#include <fmt/core.h>

#include "exchange/Collector.h"
#include "Names.h"
#include "ui/Output.h"

namespace td::dmctl {

namespace {

/// Cells of a row: category, indices, field, value.
constexpr std::size_t CELLS = MAX_DIMENSIONS + 3;

std::string csvCell(const std::string& text) {
    if (text.find_first_of(",\"\r\n") == std::string::npos)
        return text;
    std::string quoted = "\"";
    for (const char c : text)
        quoted += c == '"' ? std::string("\"\"") : std::string(1, c);
    return quoted + "\"";
}

std::vector<std::string> csvHeader() {
    std::vector<std::string> cells{"category"};
    for (int d = 1; d <= MAX_DIMENSIONS; ++d)
        cells.push_back(fmt::format("index{}", d));
    cells.emplace_back("field");
    cells.emplace_back("value");
    return cells;
}

std::string csvRow(const std::vector<std::string>& cells) {
    std::string row;
    for (const std::string& cell : cells) {
        row += row.empty() ? "" : ",";
        row += csvCell(cell);
    }
    return row + "\n";
}

void appendCsv(const ExchangeCategory& category, std::string& text) {
    const CategoryLayout& layout = *category.layout;
    const IndexTexts texts = indexTextsOf(layout);
    std::vector<std::string> cells(CELLS);
    cells.front() = categoryName(layout);
    for (int record = 0; record < layout.recordCount(); ++record) {
        const std::vector<int> indices = indicesOf(layout, record);
        for (std::size_t d = 0; d < indices.size(); ++d)
            cells[d + 1] = texts[d][static_cast<std::size_t>(indices[d])];
        forEachGiven(category, record, [&](const Field& field, int value) {
            cells[CELLS - 2] = field.argumentName();
            cells[CELLS - 1] = std::to_string(value);
            text += csvRow(cells);
        });
    }
}

/// The rows of a CSV.
class CsvRows {
public:
    explicit CsvRows(std::string_view bytes) : m_bytes(bytes) {}

    bool atEnd() const { return m_position >= m_bytes.size(); }
    /// Line on which the last row began, from 1.
    int line() const { return m_rowLine; }
    /// Takes one row. Throws UsageError when its quotes are wrong; the rest of that line is passed over.
    std::vector<std::string> take() {
        m_rowLine = m_line;
        std::vector<std::string> cells;
        do
            cells.push_back(takeCell());
        while (takeOne(','));
        takeOne('\r');
        if (atEnd())
            fail("the export ends within this line");
        if (!takeOne('\n'))
            fail("a cell ends without a comma behind it");
        ++m_line;
        return cells;
    }

private:
    bool takeOne(char c) {
        if (atEnd() || m_bytes[m_position] != c)
            return false;
        ++m_position;
        return true;
    }
    std::string takeCell() {
        if (takeOne('"'))
            return takeQuoted();
        const std::size_t end = std::min(m_bytes.find_first_of(",\r\n\"", m_position), m_bytes.size());
        std::string cell(m_bytes.substr(m_position, end - m_position));
        m_position = end;
        if (!atEnd() && m_bytes[m_position] == '"')
            fail("a quote stands within a cell");
        return cell;
    }
    std::string takeQuoted() {
        std::string cell;
        while (!atEnd()) {
            const char c = m_bytes[m_position++];
            if (c == '"' && !takeOne('"'))
                return cell;
            m_line += c == '\n' ? 1 : 0;
            cell += c;
        }
        fail("a quote is not closed");
    }
    [[noreturn]] void fail(const char* reason) {
        const std::size_t end = m_bytes.find('\n', m_position);
        m_position = end == std::string_view::npos ? m_bytes.size() : end + 1;
        ++m_line;
        throw UsageError(reason);
    }

    const std::string_view m_bytes;
    std::size_t m_position = 0;
    int m_line = 1;
    int m_rowLine = 1;
};

long long wholeNumber(const std::string& text, const Field& field) {
    long long value = 0;
    const char* const end = text.data() + text.size();
    const auto parsed = std::from_chars(text.data(), end, value);
    if (text.empty() || parsed.ptr != end)
        throw UsageError(fmt::format("\"{}\" is no whole number, which {} takes", text, field.argumentName()));
    return parsed.ec == std::errc() ? value : LLONG_MAX;
}

void takeRow(const std::vector<std::string>& cells, Collector& collector) {
    if (cells.size() != CELLS)
        throw UsageError(fmt::format("the row has {}; there have to be {}", counted(cells.size(), "cell"), CELLS));
    Collector::Known& known = collector.category(cells.front());
    const std::size_t dimensions = known.layout->dimensions.size();
    for (std::size_t d = dimensions; d < MAX_DIMENSIONS; ++d) {
        if (!cells[d + 1].empty())
            throw UsageError(fmt::format("index{} has to be empty: {} has {}", d + 1, categoryName(*known.layout),
                                         counted(dimensions, "dimension")));
    }
    const auto first = cells.begin() + 1;
    const int record = collector.record(known, Words(first, first + static_cast<std::ptrdiff_t>(dimensions)));
    const Field& field = collector.field(known, cells[CELLS - 2]);
    collector.put(known, record, field, wholeNumber(cells[CELLS - 1], field));
}

} // namespace

std::string csvText(const std::vector<ExchangeCategory>& categories) {
    std::string text = csvRow(csvHeader());
    for (const ExchangeCategory& category : categories)
        appendCsv(category, text);
    return text;
}

void parseCsv(std::string_view bytes, Collector& collector) {
    CsvRows rows(bytes);
    bool isHeader = true;
    while (!rows.atEnd() && !collector.isFull()) {
        try {
            const std::vector<std::string> cells = rows.take();
            if (cells == std::vector<std::string>(1)) // an empty line
                continue;
            if (!isHeader)
                takeRow(cells, collector);
            else if (cells != csvHeader())
                throw UsageError("the first line has to be " + csvRow(csvHeader()));
        } catch (const UsageError& error) {
            collector.fault(fmt::format("line {}", rows.line()), error.what());
            if (isHeader)
                return;
        }
        isHeader = false;
    }
    if (isHeader)
        collector.fault("line 1", "the export is empty");
}

} // namespace td::dmctl
