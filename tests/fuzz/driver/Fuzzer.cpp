// One target behind libFuzzer's entry. A property that does not hold ends the process, as every crash does.
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <exception>
#include <string_view>

#include "fuzz/Targets.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const td::fuzz::Target* const target = td::fuzz::targetNamed(FUZZ_TARGET);
    try {
        target->run({reinterpret_cast<const char*>(data), size});
    } catch (const std::exception& error) {
        std::fprintf(stderr, "does not hold: %s\n", error.what());
        std::terminate();
    }
    return 0;
}
