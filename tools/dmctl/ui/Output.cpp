#include "ui/Output.h"

#include <algorithm>
#include <numeric>
#include <sstream>
#include <utility>

#include <fmt/core.h>

#include "Names.h"

namespace td::dmctl {

namespace {

constexpr std::size_t GAP = 2;
constexpr std::size_t NARROWEST = 8; ///< no column is made narrower than this

std::vector<std::size_t> columnWidths(const Rows& rows) {
    std::vector<std::size_t> widths;
    for (const auto& row : rows) {
        widths.resize(std::max(widths.size(), row.size()));
        for (std::size_t i = 0; i < row.size(); ++i)
            widths[i] = std::max(widths[i], row[i].text.size());
    }
    return widths;
}

std::size_t total(const std::vector<std::size_t>& widths) {
    return widths.empty() ? 0 : std::accumulate(widths.begin(), widths.end(), GAP * (widths.size() - 1));
}

/// The longest word of each column.
std::vector<std::size_t> wordWidths(const Rows& rows) {
    std::vector<std::size_t> widths;
    for (const auto& row : rows) {
        widths.resize(std::max(widths.size(), row.size()));
        for (std::size_t i = 0; i < row.size(); ++i) {
            std::istringstream words(row[i].text);
            for (std::string word; words >> word;)
                widths[i] = std::max(widths[i], word.size());
        }
    }
    return widths;
}

/// Takes from the widest columns that have more than they must until all fit.
void fit(std::vector<std::size_t>& widths, const std::vector<std::size_t>& least, std::size_t available) {
    while (total(widths) > available) {
        std::size_t widest = widths.size();
        for (std::size_t i = 0; i < widths.size(); ++i) {
            if (widths[i] > least[i] && (widest == widths.size() || widths[i] > widths[widest]))
                widest = i;
        }
        if (widest == widths.size())
            return;
        --widths[widest];
    }
}

/// The text in lines of at most `width`, folded at the last blank that fits, if any.
std::vector<std::string> folded(std::string text, std::size_t width) {
    std::vector<std::string> lines;
    while (text.size() > width) {
        std::size_t end = text.rfind(' ', width);
        if (end == std::string::npos || end == 0)
            end = width;
        lines.push_back(text.substr(0, end));
        text.erase(0, text.find_first_not_of(' ', end));
    }
    lines.push_back(text);
    return lines;
}

void printRow(const std::vector<Cell>& row, const std::vector<std::size_t>& widths, std::size_t margin) {
    std::vector<std::vector<std::string>> cells;
    std::size_t height = 1;
    for (std::size_t i = 0; i < row.size(); ++i) {
        cells.push_back(folded(row[i].text, widths[i]));
        height = std::max(height, cells.back().size());
    }
    for (std::size_t line = 0; line < height; ++line) {
        std::string text(margin, ' ');
        std::size_t blanks = 0; // owed before the next text, so that no line ends with any
        for (std::size_t i = 0; i < row.size(); ++i) {
            const std::string part = line < cells[i].size() ? cells[i][line] : "";
            if (!part.empty())
                text += std::string(std::exchange(blanks, 0), ' ') + terminal::painted(part, row[i].style);
            blanks += widths[i] - part.size() + GAP;
        }
        fmt::print("{}\n", text);
    }
}

} // namespace

std::string jsonText(const Json& document, int indent) {
    return document.dump(indent, ' ', false, Json::error_handler_t::replace);
}

void printJson(const Json& document) {
    fmt::print("{}\n", jsonText(document));
}

int widthOf(const Rows& rows, int margin) {
    return margin + static_cast<int>(total(columnWidths(rows)));
}

void printColumns(const Rows& rows, int margin) {
    std::vector<std::size_t> widths = columnWidths(rows);
    if (terminal::width() > margin) {
        const auto available = static_cast<std::size_t>(terminal::width() - margin);
        fit(widths, wordWidths(rows), available);
        fit(widths, std::vector<std::size_t>(widths.size(), NARROWEST), available); // words are cut where they must be
    }
    for (const auto& row : rows)
        printRow(row, widths, static_cast<std::size_t>(margin));
}

void printColumns(const std::vector<std::vector<std::string>>& rows, int margin) {
    Rows cells;
    for (const auto& row : rows)
        cells.emplace_back(row.begin(), row.end());
    printColumns(cells, margin);
}

std::vector<Cell> headings(const std::vector<std::string>& texts) {
    std::vector<Cell> row;
    for (const std::string& text : texts)
        row.emplace_back(text, Style::Heading);
    return row;
}

std::string counted(std::size_t count, const char* what) {
    return fmt::format("{} {}{}", count, what, count == 1 ? "" : "s");
}

std::string quotedText(const std::string& text) {
    std::string result = "\"";
    for (const char c : text)
        result += c >= 0x20 && c < 0x7F ? std::string(1, c) : fmt::format("\\x{:02x}", static_cast<unsigned char>(c));
    return result + "\"";
}

Json recordJson(const CategoryLayout& layout, const std::vector<int>& indices) {
    Json record = Json::object();
    for (std::size_t d = 0; d < indices.size(); ++d)
        record[layout.dimensions[d].name] = {{"number", indices[d]},
                                             {"name", valueName(layout.dimensions[d], indices[d])}};
    return record;
}

} // namespace td::dmctl
