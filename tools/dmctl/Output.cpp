#include "Output.h"

#include <algorithm>

#include <fmt/core.h>

#include "Names.h"

namespace td::dmctl {

void printJson(const Json& document) {
    fmt::print("{}\n", document.dump(2, ' ', false, Json::error_handler_t::replace));
}

void printColumns(const std::vector<std::vector<std::string>>& rows, int margin) {
    std::vector<std::size_t> widths;
    for (const auto& row : rows) {
        widths.resize(std::max(widths.size(), row.size()));
        for (std::size_t i = 0; i < row.size(); ++i)
            widths[i] = std::max(widths[i], row[i].size());
    }
    for (const auto& row : rows) {
        std::string line(static_cast<std::size_t>(margin), ' ');
        for (std::size_t i = 0; i < row.size(); ++i)
            line += fmt::format("{:<{}}  ", row[i], widths[i]);
        line.erase(line.find_last_not_of(' ') + 1);
        fmt::print("{}\n", line);
    }
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
