/// Tables of settings read from their files without the library's loading, which would repair what it finds.
#pragma once

#include <cstddef>
#include <ctime>
#include <string>
#include <vector>

#include "fileOperator/CategoryLayout.h"
#include "inspect/FileInspection.h"
#include "Names.h"
#include "Selection.h"
#include "Session.h"

namespace td::dmctl {

/// One copy of a category's file.
struct FileTable {
    enum class State {
        Good,
        Missing,
        Unreadable,   ///< the system would not give its bytes
        OtherVersion, ///< and without other faults in its frame; the library takes it over when it loads
        Damaged,
    };
    State state = State::Missing;
    bool storeWasCut = false; ///< a damaged one that the library will end a store of, and which is good then
    std::string trouble;      ///< in words, where it is not good: "is missing", "is damaged: ..."
    std::string bytes;
    FileInspection inspection;
    std::vector<int> values; ///< row-major by record and position; of a good copy only
    std::time_t changed = 0; ///< when its contents changed last; 0: not known

    bool isGood() const { return state == State::Good; }

    /// Of a good copy: the integers of a record, in their places.
    int* at(const Record& record) { return values.data() + offset(record); }
    const int* at(const Record& record) const { return values.data() + offset(record); }
    int value(const Record& record, const Field& field) const { return at(record)[field.position]; }

    const CategoryLayout* layout = nullptr;

private:
    std::size_t offset(const Record& record) const {
        return static_cast<std::size_t>(layout->recordIndex(record.data())) * layout->fields.size();
    }
};

/// "is damaged: ", then the first fault with its place and how many more there are.
std::string faultText(const FileInspection& inspection);
/// Whether a store in the file was cut off and can still be ended, which the library does when it loads.
bool storeWasCut(const std::string& path);

/// Whether writers have to be kept away while a file is read, or are already.
enum class Writers { ToKeepAway, KeptAway };

FileTable readTable(const CategoryLayout& layout, const std::string& path, Writers writers = Writers::ToKeepAway);

/// A copy that has to be good. Throws Failure when it is missing or has faults.
FileTable goodTable(const Session& session, const CategoryLayout& layout, Copy copy);

/// The copy of that name. Throws UsageError.
Copy copyNamed(const std::string& word);
/// "2026-11-23 14:03:22", local time.
std::string timeText(std::time_t time);

/// Puts bytes at `path` so that at every instant one whole file is there, with the mode and owner of the one that it
/// replaces. False, and nothing has changed, when that fails.
bool putFile(const std::string& path, const std::string& bytes);

} // namespace td::dmctl
