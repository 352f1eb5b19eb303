#include "Library.h"

#include <filesystem>
#include <fstream>
#include <stdexcept>

#include <dataModule/platform/RootPrefix.h>

namespace fs = std::filesystem;

namespace bench {

namespace {

constexpr const char* FLASH_DIRECTORY = "/var/local/flash";
constexpr const char* CONFIGURATION_DIRECTORY = "/ovdata/factory/config";
constexpr int STORE_TIMEOUT_MS = 600'000;

void configure(const std::string& root, bool factoryState) {
    fs::create_directories(root + FLASH_DIRECTORY);
    fs::create_directories(root + CONFIGURATION_DIRECTORY);
    std::ofstream(root + FLASH_DIRECTORY + "/factory_mode") << (factoryState ? "On" : "Off");
    std::ofstream(root + CONFIGURATION_DIRECTORY + "/factorySrv.ini") << "[FactoryWB]\nBIN = 0\n";
}

} // namespace

void check(bool done, const char* what) {
    if (!done)
        throw std::runtime_error(std::string("the library failed to ") + what);
}

Library::Library(const std::string& root, bool factoryState) {
    configure(root, factoryState);
    check(td::setRootPrefix(root.c_str()), "take the root");
    m_manager = td::FileDataSeparateManager::instance();
    m_manager->setTvType("BENCH");
    check(m_manager->init(td::DS_SCOPE_ALL), "initialise");
}

Library::~Library() {
    td::FileDataSeparateManager::release();
    td::setRootPrefix("");
}

std::int64_t Library::sum(const std::vector<Table>& tables) {
    std::int64_t sum = 0;
    for (const Table& table : tables) {
        std::vector<td::_Argument_t> args;
        for (const td::Field& field : table.layout->fields)
            args.push_back({field.argumentName(), 0});
        for (int record = 0; record < table.layout->recordCount(); ++record) {
            check(m_manager->loadData(table.layout->category, dimensionsOf(*table.layout, record), args), "read");
            for (const td::_Argument_t& argument : args)
                sum += argument.value;
        }
    }
    return sum;
}

void Library::store(td::_DataCategory_t category, const std::vector<int>& dims,
                    const std::vector<td::_Argument_t>& args) {
    check(m_manager->storeData(category, dims, args), "store");
}

void Library::waitStored() {
    check(m_manager->waitStored(STORE_TIMEOUT_MS), "write what was stored");
}

std::vector<int> dimensionsOf(const td::CategoryLayout& layout, int record) {
    int indices[td::MAX_DIMENSIONS] = {};
    layout.indicesOf(record, indices);
    return {indices, indices + layout.dimensionCount()};
}

} // namespace bench
