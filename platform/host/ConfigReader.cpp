#include <dataModule/platform/ConfigReader.h>

#include <cerrno>
#include <climits>
#include <cstdlib>
#include <cstring>

#include <ini.h>

#include "InputFile.h"

namespace td {
namespace {

/// Holds any value: lines that are longer than the parser's buffer are passed over.
constexpr std::size_t VALUE_SIZE = 1024;

struct Search {
    const char* section;
    const char* key;
    bool found;
    char value[VALUE_SIZE];
};

/// Called for every key; the last one of its name wins.
int takeValue(void* user, const char* section, const char* key, const char* value) {
    auto& search = *static_cast<Search*>(user);
    if (std::strcmp(section, search.section) != 0 || std::strcmp(key, search.key) != 0)
        return 1;
    const std::size_t size = std::strlen(value) + 1;
    search.found = size <= sizeof search.value;
    if (search.found)
        std::memcpy(search.value, value, size);
    return 1;
}

/// Reads one line for the parser. Indentation is taken off, since the parser would take an indented key for a
/// continuation of the value above it. A line that does not fit, or has a zero byte, is passed over whole: cut in two,
/// its parts would be taken for lines of their own.
char* readConfigLine(char* buffer, int size, void* stream) {
    auto* const file = static_cast<InputFile*>(stream);
    const int room = size - 2; // for what stands before a newline and the terminator
    int length = 0;
    bool isTaken = true;
    int character = file->next();
    if (character == InputFile::END)
        return nullptr;
    for (; character != InputFile::END && character != '\n'; character = file->next()) {
        const bool isIndentation = length == 0 && (character == ' ' || character == '\t');
        isTaken = isTaken && character != '\0' && (isIndentation || length < room);
        if (isTaken && !isIndentation)
            buffer[length++] = static_cast<char>(character);
    }
    if (!isTaken)
        length = 0;
    buffer[length++] = '\n';
    buffer[length] = '\0';
    return buffer;
}

bool find(const char* path, Search& search) {
    if (path == nullptr || search.section == nullptr || search.key == nullptr)
        return false;
    InputFile file(path);
    // Lines in error are passed over, so its result, the number of the first of them, does not matter.
    ini_parse_stream(&readConfigLine, &file, &takeValue, &search);
    return search.found && !file.failed();
}

/// Decimal or, with 0x, hexadecimal; a leading zero does not make a number octal.
bool parseInt(const char* text, int& value) {
    const char* const digits = text + (text[0] == '-' || text[0] == '+' ? 1 : 0);
    const bool hexadecimal = digits[0] == '0' && (digits[1] == 'x' || digits[1] == 'X');
    char* end = nullptr;
    errno = 0;
    const long number = std::strtol(text, &end, hexadecimal ? 16 : 10);
    if (end == text || *end != '\0' || errno != 0 || number < INT_MIN || number > INT_MAX)
        return false;
    value = static_cast<int>(number);
    return true;
}

} // namespace

bool ConfigReader::readString(const char* path, const char* section, const char* key, char* value, int size) {
    Search search{section, key, false, {}};
    if (value == nullptr || size <= 0 || !find(path, search))
        return false;
    const std::size_t needed = std::strlen(search.value) + 1;
    if (needed > static_cast<std::size_t>(size))
        return false;
    std::memcpy(value, search.value, needed);
    return true;
}

bool ConfigReader::readInt(const char* path, const char* section, const char* key, int& value) {
    Search search{section, key, false, {}};
    return find(path, search) && parseInt(search.value, value);
}

} // namespace td
