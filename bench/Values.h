/// The values that the library and its peers keep: every record of all 52 categories, and their settings files.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "fileOperator/CategoryLayout.h"

namespace bench {

/// One category's records, row by row.
struct Table {
    const td::CategoryLayout* layout;
    std::vector<int> values;

    int* record(int number) { return values.data() + static_cast<std::size_t>(number * layout->fieldCount()); }
    const int* record(int number) const {
        return values.data() + static_cast<std::size_t>(number * layout->fieldCount());
    }
};

/// All categories in ascending order, filled with varied values; another seed gives other values.
std::vector<Table> variedTables(std::uint32_t seed);

/// The values of `tables` added up: what every reader of them must find.
std::int64_t sumOf(const std::vector<Table>& tables);

/// A record as its settings file writes it.
struct RecordText {
    std::string section; ///< without brackets
    std::vector<std::string> values;
};
RecordText textOf(const Table& table, int record);
/// The number that a value of a settings file stands for.
int valueOf(const std::string& text);

/// The directory of a television's current copies.
std::string currentDirectory(const std::string& root);

/// Makes a television under `root` that stores the tables: current, backup and factory copies. The factory copies hold
/// `factory`.
void writeTelevision(const std::string& root, const std::vector<Table>& tables, const std::vector<Table>& factory);

/// Has the operating system hold all files below `directory` in memory, and nothing left to write.
void warm(const std::string& directory);

} // namespace bench
