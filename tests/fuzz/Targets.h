/// What is fed with hostile bytes: one function per reader. Each checks more than that it survives them; what has to
/// hold stands beside its checks: invariant 6 of AbstractFileOperator.h, and the others as far as files go. The fuzzers
/// call them with bytes that they make up, an ordinary test with the inputs below corpus/ and with the seeds that are
/// made from the declarations.
///
/// A function leaves nothing behind, so that its result depends on its input alone. One thread at a time.
#pragma once

#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace td::fuzz {

/// Something does not hold for an input.
class PropertyBroken : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// Throws PropertyBroken unless it holds.
void require(bool holds, const std::string& property);

struct Target {
    const char* name; ///< also of its folder below corpus/
    void (*run)(std::string_view input);
};

const std::vector<Target>& targets();
/// Null when there is none.
const Target* targetNamed(std::string_view name);

/// The first byte picks the category, the second one how the rest becomes its file: SettingsFileInput.h.
void runSettingsFile(std::string_view input);
/// A file whose checksum line is rewritten.
void runChecksum(std::string_view input);
/// A redo record; the first byte says how the rest becomes one: RedoRecordTarget.cpp.
void runRedoRecord(std::string_view input);
/// What dmctl imports, of either format.
void runExchange(std::string_view input);
/// A configuration file of the platform.
void runConfigurationFile(std::string_view input);

} // namespace td::fuzz
