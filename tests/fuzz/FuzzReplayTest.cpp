// Every input that is kept, and every seed that is made from the declarations, in every build: without a fuzzer.
#include <algorithm>
#include <exception>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

#include <gtest/gtest.h>

#include "Declarations.h"
#include "Targets.h"

namespace td::fuzz {
namespace {

std::string read(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

class FuzzReplay : public testing::TestWithParam<const char*> {
protected:
    void run(const std::string& input, const std::string& name) {
        try {
            targetNamed(GetParam())->run(input);
        } catch (const std::exception& error) {
            ADD_FAILURE() << name << ": " << error.what();
        }
    }
};

std::vector<const char*> targetNames() {
    std::vector<const char*> names;
    for (const Target& target : targets())
        names.push_back(target.name);
    return names;
}

} // namespace

TEST_P(FuzzReplay, KeptInputsHoldWhatIsPromised) {
    int count = 0;
    for (const auto& entry : std::filesystem::directory_iterator(std::filesystem::path(FUZZ_CORPUS) / GetParam())) {
        run(read(entry.path()), entry.path().filename().string());
        ++count;
    }
    EXPECT_GT(count, 0) << "a target without inputs is not replayed";
}

TEST_P(FuzzReplay, DeclaredSeedsHoldWhatIsPromised) {
    int number = 0;
    for (const std::string& seed : seedsOf(GetParam()))
        run(seed, "declared_" + std::to_string(number++));
    EXPECT_GT(number, 0);
}

INSTANTIATE_TEST_SUITE_P(All, FuzzReplay, testing::ValuesIn(targetNames()),
                         [](const auto& target) { return std::string(target.param); });

TEST(FuzzDictionary, HasWordsOfEveryDeclaration) {
    const std::string dictionary = dictionaryText(wordsOf("settings_file"));
    EXPECT_NE(dictionary.find("\"Contrast                 = 0050\\x0a\"\n"), std::string::npos);
    EXPECT_NE(dictionary.find("\"[Global]\\x0a\"\n"), std::string::npos);
    EXPECT_NE(dictionaryText(wordsOf("exchange")).find("\"PICTURE_MODE\"\n"), std::string::npos);
    EXPECT_EQ(dictionaryText({"a\"\\", std::string(65, 'x')}), "\"a\\x22\\x5c\"\n");
}

} // namespace td::fuzz
