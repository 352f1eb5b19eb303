#include "Opened.h"

#include <filesystem>
#include <map>

#include <benchmark/benchmark.h>

#include "Cold.h"

namespace fs = std::filesystem;

namespace bench {

namespace {

std::unique_ptr<Library> g_library;
std::map<std::string, std::unique_ptr<Peer>> g_peers;

} // namespace

Library& library(const Setting& setting) {
    if (!g_library) {
        g_library = std::make_unique<Library>(setting.directory + WORK, true);
        g_library->manager().loadAllData();
    }
    return *g_library;
}

Peer& peer(const std::string& name, const Setting& setting) {
    std::unique_ptr<Peer>& found = g_peers[name];
    if (!found) {
        const std::string directory = setting.directory + "/" + name + "/";
        fs::create_directories(directory);
        fs::copy(currentDirectory(setting.directory + PRISTINE), directory, fs::copy_options::recursive);
        found = makePeer(name, directory, directory, setting.tables);
        found->create();
        found->open();
    }
    return *found;
}

int tableOf(td::_DataCategory_t category) {
    return static_cast<int>(category);
}

void closeAll() {
    // The rows hold on to what they measure.
    benchmark::ClearRegisteredBenchmarks();
    g_peers.clear();
    g_library.reset();
}

} // namespace bench
