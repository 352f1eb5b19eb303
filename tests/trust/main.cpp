#include <cstdio>
#include <cstdlib>
#include <string>

#include <gtest/gtest.h>

#include <dataModule/FileDataSeparateManager.h>
#include <dataModule/platform/DebugOutput.h>

#include "Options.h"
#include "ProgramOptions.h"
#include "ReliabilityPage.h"

namespace td::test {

Options& options() {
    static Options all;
    return all;
}

namespace {

bool takeOption(const std::string& name, const char* value) {
    if (name == "--full")
        options().isFull = true;
    else if (name == "--log")
        options().showsLog = true;
    else if (name == "--seed")
        options().seed = std::strtoull(value, nullptr, 10);
    else if (name == "--only")
        options().onlyNumber = std::atoi(value);
    else if (name == "--kills")
        options().kills = std::atoi(value);
    else if (name == "--write-table")
        options().tablePage = value;
    else
        return false;
    return true;
}

} // namespace

} // namespace td::test

int main(int argc, char** argv) {
    if (!td::test::readCommandLine(argc, argv, td::test::takeOption))
        return EXIT_FAILURE;
    // The listeners' names are the same for every process of the machine, and no matter here.
    td::FileDataSeparateManager::setListening(false);
    // Thousands of damaged files are warned of.
    if (td::test::options().showsLog)
        td::DebugOutput::setLevel(td::DebugOutput::Level::Info);
    else
        td::DebugOutput::setSink([](td::DebugOutput::Level, const char*) {});
    const int result = RUN_ALL_TESTS();
    const std::string& page = td::test::options().tablePage;
    if (page.empty() || result != EXIT_SUCCESS)
        return result;
    if (td::test::writeLossTable(page))
        return EXIT_SUCCESS;
    std::fprintf(stderr, "no table was written: %s has none, or not all cells ran\n", page.c_str());
    return EXIT_FAILURE;
}
