// Writes what a fuzzer starts from, made from the declarations: a dictionary and a folder of inputs.
// usage: fuzz_prepare TARGET DICTIONARY FOLDER
#include <cstdio>
#include <exception>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>

#include "fuzz/Declarations.h"
#include "fuzz/Targets.h"

namespace {

void writeFile(const std::filesystem::path& path, const std::string& bytes) {
    std::ofstream file(path, std::ios::binary);
    if (!(file << bytes).flush())
        throw std::runtime_error("cannot write " + path.string());
}

void prepare(const std::string& target, const std::filesystem::path& dictionary, const std::filesystem::path& folder) {
    if (td::fuzz::targetNamed(target) == nullptr)
        throw std::runtime_error("no target " + target);
    writeFile(dictionary, td::fuzz::dictionaryText(td::fuzz::wordsOf(target)));
    std::filesystem::create_directories(folder);
    int number = 0;
    for (const std::string& seed : td::fuzz::seedsOf(target))
        writeFile(folder / ("declared_" + std::to_string(number++)), seed);
}

} // namespace

int main(int count, char** words) {
    if (count != 4) {
        std::fputs("usage: fuzz_prepare TARGET DICTIONARY FOLDER\n", stderr);
        return 2;
    }
    try {
        prepare(words[1], words[2], words[3]);
        return 0;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "fuzz_prepare: %s\n", error.what());
        return 1;
    }
}
