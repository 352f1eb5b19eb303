/// Measures the library beside what people would use instead. scripts/bench runs it and makes the table.
/// usage: bench --data DIRECTORY [--short] [OPTION-OF-GOOGLE-BENCHMARK...]
///        bench --cold TASK SUBJECT DIRECTORY    what it starts for itself
#include <cstdio>
#include <cstring>
#include <exception>
#include <filesystem>
#include <fstream>
#include <stdexcept>

#include <benchmark/benchmark.h>

#include "Cold.h"
#include "Opened.h"
#include "Rows.h"

namespace fs = std::filesystem;

namespace {

constexpr std::uint32_t SEED = 1;
constexpr std::uint32_t FACTORY_SEED = 2;
/// In a directory of data that was made here and may go.
constexpr const char* MARK = "/made-by-bench";

/// Takes --data and --short out of the arguments.
bool takeArguments(int& count, char** arguments, bench::Setting& setting) {
    int kept = 1;
    for (int i = 1; i < count; ++i) {
        if (std::strcmp(arguments[i], "--short") == 0)
            setting.shortRun = true;
        else if (std::strcmp(arguments[i], "--data") == 0 && i + 1 < count)
            setting.directory = fs::absolute(arguments[++i]).string();
        else
            arguments[kept++] = arguments[i];
    }
    count = kept;
    return !setting.directory.empty();
}

void makeData(const bench::Setting& setting) {
    const bool isOthers = fs::exists(setting.directory) && !fs::exists(setting.directory + MARK);
    if (isOthers && !fs::is_empty(setting.directory))
        throw std::runtime_error(setting.directory + " holds files that are not of the bench");
    fs::remove_all(setting.directory);
    fs::create_directories(setting.directory);
    std::ofstream(setting.directory + MARK) << "The bench removes this directory.\n";
    const std::vector<bench::Table> factory = bench::variedTables(FACTORY_SEED);
    const std::string pristine = setting.directory + bench::PRISTINE;
    bench::writeTelevision(pristine, setting.tables, factory);
    bench::writeTelevision(setting.directory + bench::WORK, setting.tables, factory);
    for (const char* name : {"SQLite", "LMDB", "LevelDB"})
        bench::makePeer(name, pristine, "", setting.tables)->create();
    bench::warm(setting.directory);
}

int run(int count, char** arguments) {
    bench::Setting setting{"", bench::variedTables(SEED)};
    if (count == 5 && std::strcmp(arguments[1], "--cold") == 0)
        return bench::runColdTask(arguments[2], arguments[3], arguments[4], setting.tables);
    if (!takeArguments(count, arguments, setting)) {
        std::fprintf(stderr, "bench: --data DIRECTORY is missing\n");
        return 2;
    }
    benchmark::Initialize(&count, arguments);
    if (benchmark::ReportUnrecognizedArguments(count, arguments))
        return 2;
    makeData(setting);
    bench::registerColdRows(setting);
    bench::registerReadRows(setting);
    bench::registerMachineRows(setting);
    bench::registerStoreRows(setting);
    benchmark::RunSpecifiedBenchmarks();
    bench::closeAll();
    fs::remove_all(setting.directory);
    return 0;
}

} // namespace

int main(int count, char** arguments) {
    try {
        return run(count, arguments);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "bench: %s\n", error.what());
        return 1;
    }
}
