#include <dataModule/platform/FlashFieldStore.h>

#include <algorithm>
#include <cstring>
#include <string>

#include <dataModule/platform/RootPrefix.h>

#include "InputFile.h"

namespace td {
namespace {

/// A host has no flash fields of its own: each is a small text file here, named after the field.
constexpr const char* FIELD_DIRECTORY = "/var/local/flash/";
/// What is read of a field's file.
constexpr std::size_t FIELD_SIZE = 1024;

/// Whether the name stays inside the directory.
bool isFieldName(const char* name) {
    return name != nullptr && name[0] != '\0' && std::strchr(name, '/') == nullptr &&
           std::strstr(name, "..") == nullptr;
}

std::size_t lengthWithoutLineEnd(const char* text, std::size_t length) {
    while (length > 0 && (text[length - 1] == '\n' || text[length - 1] == '\r'))
        --length;
    return length;
}

} // namespace

bool FlashFieldStore::readField(const char* name, char* value, int size) {
    if (!isFieldName(name) || value == nullptr || size <= 0)
        return false;
    const std::string path = underRootPrefix(FIELD_DIRECTORY) + name;
    InputFile file(path.c_str());
    char field[FIELD_SIZE];
    std::size_t bytes = 0;
    for (int byte = 0; bytes < sizeof field && (byte = file.next()) != InputFile::END; ++bytes)
        field[bytes] = static_cast<char>(byte);
    if (file.failed())
        return false;
    const std::size_t length = std::min(lengthWithoutLineEnd(field, bytes), static_cast<std::size_t>(size) - 1);
    std::memcpy(value, field, length);
    value[length] = '\0';
    return true;
}

} // namespace td
