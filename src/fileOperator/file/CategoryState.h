/// What the classes of this folder share of one category, and the steps that all of them take. Guarded by the
/// category's lock, but for what is atomic and what is set before use.
#pragma once

#include <atomic>
#include <optional>
#include <string>

#include <dataModule/IDataSeparateManagerInner.h>

#include "common/SystemPaths.h"
#include "fileOperator/file/CategoryLock.h"
#include "fileOperator/file/Contents.h"
#include "fileOperator/file/Copies.h"
#include "fileOperator/file/SectionWrite.h"
#include "fileOperator/file/SettingsFile.h"
#include "fileOperator/file/VersionMerge.h"

namespace td {

class AbstractFileOperator;

/// Whether a category's values are those of its files.
enum class Presence {
    Never, ///< not loaded yet
    Loaded,
    Released, ///< loaded once; no file is open for a suspend image
    Reset     ///< loaded once; the next load reads anew
};

struct CategoryState {
    CategoryState(AbstractFileOperator& owner, const char* fileName, const char* version);
    CategoryState(const CategoryState&) = delete;
    CategoryState& operator=(const CategoryState&) = delete;

    // --- names ---

    const char* categoryName() const;
    /// The directory of a copy, ending in '/'.
    std::string directory(_LOAD_FILE_MODE mode) const;
    std::string pathOf(_LOAD_FILE_MODE mode) const { return directory(mode) + name.file; }
    std::string currentPath() const { return pathOf(NORMAL_LOAD); }
    /// The factory copy in use; it has a name of its own where the factory has variants.
    std::string factoryPath() const;
    Copies copies(std::string factory = {});
    /// One line with category and path after a message that names neither.
    void logWhere() const;

    // --- the lock between processes, and the open file ---

    bool isLoaded() const { return presence == Presence::Loaded; }
    /// From here until the lock is given back no other process changes the category's files. A write that a cut of
    /// power or a killed process left half done is ended first.
    void shareFiles();
    /// The same, and no other process reads them: before anything of them is written. False when it was so already.
    bool takeFiles();
    void endUnendedWrite();
    /// Whether both locks could be had without waiting.
    bool tryEnter();
    /// Makes sure that the open file is the current copy, open for writing and with lengths read from it. Fails when
    /// that copy is of another version or cannot be written to now, and while a merged file waits to be written.
    bool openCurrent();
    void closeFile() { file.close(); }
    /// A released category leaves no file open.
    void closeIfReleased() {
        if (!isLoaded())
            closeFile();
    }
    /// The current copy has changed, and the backup is not made yet.
    void changedCurrent() { backupOutdated = true; }

    struct Name {
        char file[paths::PATH_SIZE] = {};
        char version[text::VERSION_WIDTH] = {}; ///< the operator's format version
        _DataCategory_t category = PICTURE_GLOBAL;
        int dataSize = 0; ///< bytes of the table
    };

    AbstractFileOperator& op; ///< for the steps that a category may make otherwise
    Name name;
    IDataSeparateManagerInner* parent = nullptr; ///< set before use
    Contents* contents;                          ///< set before use; never null
    CategoryLock lock;
    SettingsFile file;
    VersionMerge merge;
    std::atomic<Presence> presence{Presence::Never};
    /// The values are not known to be those of the current copy: nothing is written before it was loaded again.
    std::atomic<bool> servesMemory{false};
    std::atomic<bool> backupRequest{false};
    bool backupOutdated = false; ///< the current copy has changed since
    int retryError = 0;          ///< errno of the last retry that failed, once it was logged
    /// What syncSectionToFile() began and updateCrcCode() is to end. Without sections there was nothing to write.
    std::optional<SectionWrite> write;
};

} // namespace td
