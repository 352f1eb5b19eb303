// The platform's INI files, as the port for a plain Linux reads them.
#include "Targets.h"

#include <cstring>

#include <dataModule/platform/ConfigReader.h>

#include "ScratchRoot.h"

namespace td::fuzz {

namespace {

constexpr auto FOLDER = ScratchRoot::Folder::Current;
constexpr const char* FILE_NAME = "config.ini";
constexpr const char* UNTOUCHED = "untouched";

struct Key {
    const char* section;
    const char* name;
};
constexpr Key KEYS[] = {{"ModuleData", "Path"}, {"FactoryWB", "BIN"}, {"Critical", "Country"}, {"", "Path"}};

void checkKey(const std::string& path, const Key& key) {
    char value[256];
    std::strcpy(value, UNTOUCHED);
    const bool found = ConfigReader::readString(path.c_str(), key.section, key.name, value, sizeof value);
    if (!found)
        require(std::strcmp(value, UNTOUCHED) == 0, "without a value the caller's buffer stays");
    else
        require(std::strchr(value, '\n') == nullptr, "a value is one line");

    const int length = static_cast<int>(std::strlen(value));
    char exact[256];
    if (found) {
        require(ConfigReader::readString(path.c_str(), key.section, key.name, exact, length + 1) &&
                    std::strcmp(exact, value) == 0,
                "a value is read where it just fits");
        std::strcpy(exact, UNTOUCHED);
        require(!ConfigReader::readString(path.c_str(), key.section, key.name, exact, length) &&
                    std::strcmp(exact, UNTOUCHED) == 0,
                "a value that does not fit is none");
    }
    constexpr int NUMBER = -4711;
    int number = NUMBER;
    const bool isNumber = ConfigReader::readInt(path.c_str(), key.section, key.name, number);
    require(isNumber || number == NUMBER, "without a number the caller's variable stays");
    require(!isNumber || !found || value[0] != '\0', "an empty value is no number");
}

} // namespace

void runConfigurationFile(std::string_view input) {
    const ScratchRoot root;
    root.write(FOLDER, FILE_NAME, input);
    const std::string path = ScratchRoot::path(FOLDER, FILE_NAME);
    for (const Key& key : KEYS)
        checkKey(path, key);

    // Whatever stands above, a section of its own is read.
    root.write(FOLDER, FILE_NAME, std::string(input) + "\n[ModuleData]\nPath = below\n");
    char value[16] = {};
    require(ConfigReader::readString(path.c_str(), "ModuleData", "Path", value, sizeof value) &&
                std::strcmp(value, "below") == 0,
            "what stands above a section does not hide it");
}

} // namespace td::fuzz
