/// What dmctl prints on standard output.
#pragma once

#include <string>
#include <vector>

#include <nlohmann/json.hpp>

#include "fileOperator/CategoryLayout.h"
#include "ui/Terminal.h"

namespace td::dmctl {

/// JSON objects keep the order in which their members were added.
using Json = nlohmann::ordered_json;

/// The document as text; bytes that are no text are replaced. A negative indent gives one line.
std::string jsonText(const Json& document, int indent = 2);
void printJson(const Json& document);

/// One place of a table.
struct Cell {
    std::string text;
    Style style = Style::Plain;

    Cell(std::string cellText, Style cellStyle = Style::Plain) : text(std::move(cellText)), style(cellStyle) {}
    Cell(const char* cellText) : text(cellText) {}
};
using Rows = std::vector<std::vector<Cell>>;

/// Columns that a table needs.
int widthOf(const Rows& rows, int margin = 0);
/// Prints rows in columns of their own widths, two blanks between, each line behind `margin` blanks. On a terminal
/// that is too narrow the widest columns are folded at blanks.
void printColumns(const Rows& rows, int margin = 0);
void printColumns(const std::vector<std::vector<std::string>>& rows, int margin = 0);
/// A row of headings.
std::vector<Cell> headings(const std::vector<std::string>& texts);

/// "1 record", "2 records".
std::string counted(std::size_t count, const char* what);
/// A text from a file between quotes, without bytes that a terminal would obey.
std::string quotedText(const std::string& text);
/// The record's indices by dimension name, each with number and name.
Json recordJson(const CategoryLayout& layout, const std::vector<int>& indices);

} // namespace td::dmctl
