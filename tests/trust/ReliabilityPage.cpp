#include "ReliabilityPage.h"

#include <algorithm>
#include <cstddef>
#include <fstream>
#include <iterator>
#include <sstream>
#include <vector>

#include "Options.h"

namespace td::test {
namespace {

constexpr const char* BEGIN = "<!-- worst loss: begin -->\n";
constexpr const char* END = "<!-- worst loss: end -->\n";

std::map<std::pair<std::string, std::string>, CellResult>& results() {
    static std::map<std::pair<std::string, std::string>, CellResult> all;
    return all;
}

std::string readText(const std::string& path) {
    std::ifstream stream(path);
    return {std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
}

/// Where the table stands in the page; false when the marks are missing.
bool findTable(const std::string& page, std::size_t& begin, std::size_t& end) {
    begin = page.find(BEGIN);
    end = page.find(END);
    if (begin == std::string::npos || end == std::string::npos)
        return false;
    begin += std::char_traits<char>::length(BEGIN);
    return begin <= end;
}

/// The texts between the bars of a line.
std::vector<std::string> cellsOf(const std::string& line) {
    std::vector<std::string> cells;
    std::size_t bar = line.find('|');
    for (std::size_t next = 0; bar != std::string::npos; bar = next) {
        next = line.find('|', bar + 1);
        if (next == std::string::npos)
            break;
        const std::size_t first = line.find_first_not_of(' ', bar + 1);
        const std::size_t last = line.find_last_not_of(' ', next - 1);
        cells.push_back(first > last ? "" : line.substr(first, last - first + 1));
    }
    return cells;
}

/// The worst that is known of a cell: of a shape that is not small only a sample is tried, so what the others show
/// counts for it too.
Loss worstOf(const Operation& operation, const Shape& shape) {
    Loss worst = results().at({operation.name, shape.name}).during.loss;
    for (const Shape& other : shapes()) {
        const auto found = results().find({operation.name, other.name});
        if (!shape.isSmall() && found != results().end())
            worst = std::max(worst, found->second.during.loss);
    }
    return worst;
}

std::string tableText() {
    std::size_t states = 0;
    std::size_t secondStates = 0;
    for (const auto& [names, result] : results()) {
        states += result.states;
        secondStates += result.secondStates;
    }
    std::ostringstream text;
    text << "Found in " << states << " states after one cut and " << secondStates
         << " after a second one, with `--seed=" << options().seed << "`:\n\n| operation |";
    for (const Shape& shape : shapes())
        text << ' ' << shape.name << " |";
    text << "\n|---|";
    for (std::size_t i = 0; i < shapes().size(); ++i)
        text << "---|";
    for (const Operation& operation : operations()) {
        text << "\n| " << operation.name << " |";
        for (const Shape& shape : shapes()) {
            const bool isOffered = results().count({operation.name, shape.name}) != 0;
            text << ' ' << (isOffered ? textOf(worstOf(operation, shape)) : NOT_OFFERED) << " |";
        }
    }
    text << '\n';
    return text.str();
}

} // namespace

LossTable readLossTable() {
    LossTable table;
    const std::string page = readText(RELIABILITY_PAGE);
    std::size_t begin = 0;
    std::size_t end = 0;
    if (!findTable(page, begin, end))
        return table;
    std::istringstream lines(page.substr(begin, end - begin));
    std::vector<std::string> heads;
    for (std::string line; std::getline(lines, line);) {
        const std::vector<std::string> cells = cellsOf(line);
        if (heads.empty()) {
            heads = cells;
            continue;
        }
        for (std::size_t i = 1; i < std::min(cells.size(), heads.size()); ++i) {
            if (cells[0].front() != '-')
                table[{cells[0], heads[i]}] = cells[i];
        }
    }
    return table;
}

void noteResult(const Cell& cell, const CellResult& result) {
    results()[{cell.operation->name, cell.shape->name}] = result;
}

bool writeLossTable(const std::string& path) {
    std::string page = readText(path);
    std::size_t begin = 0;
    std::size_t end = 0;
    if (results().size() != allCells().size() || !findTable(page, begin, end))
        return false;
    page.replace(begin, end - begin, tableText());
    std::ofstream stream(path, std::ios::trunc);
    stream << page;
    return static_cast<bool>(stream.flush());
}

} // namespace td::test
