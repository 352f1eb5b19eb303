#include <dataModule/platform/RootPrefix.h>

#include <atomic>
#include <cstddef>
#include <cstring>

namespace td {
namespace {

/// Bytes of every buffer that holds a path, terminator included, and what of them the longest path behind the prefix
/// may need.
constexpr std::size_t PATH_SIZE = 256;
constexpr std::size_t LONGEST_PATH = 96;
constexpr std::size_t LONGEST_PREFIX = PATH_SIZE - LONGEST_PATH;

// Plain memory without a destructor: threads that outlive main() still read it.
char g_prefix[LONGEST_PREFIX + 1] = {};
std::atomic<bool> g_held{false};

} // namespace

bool setRootPrefix(const char* prefix) {
    if (prefix == nullptr || g_held)
        return false;
    std::size_t length = std::strlen(prefix);
    while (length > 0 && prefix[length - 1] == '/')
        --length;
    if (length > LONGEST_PREFIX)
        return false;
    std::memmove(g_prefix, prefix, length); // the text may be the present prefix itself
    g_prefix[length] = '\0';
    return true;
}

const char* rootPrefix() {
    return g_prefix;
}

std::string underRootPrefix(const char* path) {
    std::string result = g_prefix;
    if (path != nullptr)
        result += path;
    return result;
}

void holdRootPrefix(bool hold) {
    g_held = hold;
}

} // namespace td
