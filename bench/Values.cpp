#include "Values.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <random>
#include <sstream>
#include <stdexcept>

#include <unistd.h>

#include <dataModule/common/CRC32Util.h>

#include "fileOperator/OperatorFactory.h"
#include "fileOperator/text/TextLayout.h"

namespace fs = std::filesystem;

namespace bench {

namespace {

constexpr const char* CURRENT = "/var/local/dataModule/current/";
constexpr const char* BACKUP = "/var/local/dataModule/backup/";
constexpr const char* FACTORY = "/ovdata/model/dataModule/manufactory/";

std::string fileText(const Table& table) {
    const td::CategoryLayout& layout = *table.layout;
    std::string contents;
    contents.reserve(static_cast<std::size_t>(layout.contentLength()));
    char section[td::text::SECTION_BUFFER];
    for (int record = 0; record < layout.recordCount(); ++record) {
        int indices[td::MAX_DIMENSIONS] = {};
        layout.indicesOf(record, indices);
        contents += td::text::sectionId(layout, indices) + "\n";
        td::text::formatSection(layout, table.record(record), section, sizeof section);
        contents += section;
    }
    td::CRC32Util& tool = *td::CRC32Util::instance();
    tool.init_crc_table();
    const unsigned int crc = tool.crc32(td::CRC32Util::INITIAL, reinterpret_cast<unsigned char*>(contents.data()),
                                        static_cast<unsigned int>(contents.size()));
    return td::text::commentBlock(layout) + td::text::summary("BENCH", layout.version, crc, true) + contents;
}

void writeFiles(const std::string& directory, const std::vector<Table>& tables) {
    fs::create_directories(directory);
    for (const Table& table : tables) {
        std::ofstream file(directory + table.layout->file, std::ios::binary);
        file << fileText(table);
        if (!file.flush())
            throw std::runtime_error("cannot write to " + directory);
    }
}

} // namespace

std::vector<Table> variedTables(std::uint32_t seed) {
    std::mt19937 random(seed);
    std::vector<Table> tables;
    for (const td::CategoryLayout* layout : td::allLayouts()) {
        Table table{layout, std::vector<int>(static_cast<std::size_t>(layout->recordCount() * layout->fieldCount()))};
        const bool mayBeNegative = layout->keyLine != td::KeyLineForm::Hexadecimal5;
        for (int& value : table.values) {
            // As on a set: mostly percentages, some large values, some negative ones.
            const auto kind = random() % 10;
            value = static_cast<int>(random() % (kind < 7 ? 101 : 4096));
            if (kind == 9 && mayBeNegative)
                value = -(value % 1000);
        }
        tables.push_back(std::move(table));
    }
    return tables;
}

std::int64_t sumOf(const std::vector<Table>& tables) {
    std::int64_t sum = 0;
    for (const Table& table : tables) {
        for (const int value : table.values)
            sum += value;
    }
    return sum;
}

RecordText textOf(const Table& table, int record) {
    const td::CategoryLayout& layout = *table.layout;
    int indices[td::MAX_DIMENSIONS] = {};
    layout.indicesOf(record, indices);
    const std::string id = td::text::sectionId(layout, indices);
    RecordText text{id.substr(1, id.size() - 2), {}};
    for (const td::Field& field : layout.fields) {
        char line[td::text::LINE_BUFFER];
        td::text::formatKeyLine(layout.keyLine, field.key, table.record(record)[field.position], line, sizeof line);
        std::string value = line;
        value.erase(0, value.find("= ") + 2);
        value.pop_back();
        text.values.push_back(value);
    }
    return text;
}

int valueOf(const std::string& text) {
    const bool hexadecimal = text.compare(0, 2, "0x") == 0;
    return static_cast<int>(std::strtol(text.c_str() + (hexadecimal ? 2 : 0), nullptr, hexadecimal ? 16 : 10));
}

std::string currentDirectory(const std::string& root) {
    return root + CURRENT;
}

void writeTelevision(const std::string& root, const std::vector<Table>& tables, const std::vector<Table>& factory) {
    writeFiles(root + CURRENT, tables);
    writeFiles(root + BACKUP, tables);
    writeFiles(root + FACTORY, factory);
}

void warm(const std::string& directory) {
    for (const auto& entry : fs::recursive_directory_iterator(directory)) {
        if (!entry.is_regular_file())
            continue;
        std::ostringstream contents;
        contents << std::ifstream(entry.path(), std::ios::binary).rdbuf();
    }
    sync();
}

} // namespace bench
