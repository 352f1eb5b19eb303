#include "common/Log.h"

#include <algorithm>
#include <cstdarg>
#include <cstddef>
#include <cstdio>
#include <cstring>
#include <memory>
#include <new>

#include "common/NoCancel.h"

namespace td::log {
namespace {

/// Nearly every line fits; longer ones cost an allocation.
constexpr std::size_t USUAL_SIZE = 1024;

struct Origin {
    const char* file;
    int line;
    const char* function;
};

const char* baseName(const char* path) {
    const char* const slash = std::strrchr(path, '/');
    return slash == nullptr ? path : slash + 1;
}

/// Writes the line, cut to `size`, and returns the length of the whole of it, or a negative value.
__attribute__((format(printf, 4, 0))) int formatLine(char* out, std::size_t size, const Origin& origin,
                                                     const char* format, va_list values) {
    const int prefix = std::snprintf(out, size, "%s:%d:%s(): %s ", baseName(origin.file), origin.line, origin.function,
                                     "[dataModule]");
    if (prefix < 0)
        return prefix;
    const std::size_t used = std::min(static_cast<std::size_t>(prefix), size);
    const int text = std::vsnprintf(out + used, size - used, format, values);
    return text < 0 ? text : prefix + text;
}

} // namespace

void print(DebugOutput::Level level, const char* file, int line, const char* function, const char* format, ...) {
    const NoCancel noCancel;
    const Origin origin{file, line, function};
    char usual[USUAL_SIZE] = {};
    va_list values;
    va_list again;
    va_start(values, format);
    va_copy(again, values);
    const int length = formatLine(usual, sizeof usual, origin, format, values);
    const char* text = usual;

    std::unique_ptr<char[]> longer;
    if (length >= static_cast<int>(sizeof usual)) {
        const std::size_t size = static_cast<std::size_t>(length) + 1;
        longer.reset(new (std::nothrow) char[size]);
        // Without memory the line goes out as far as it fitted.
        if (longer && formatLine(longer.get(), size, origin, format, again) >= 0)
            text = longer.get();
    }
    va_end(again);
    va_end(values);
    DebugOutput::write(level, text);
}

} // namespace td::log
