/// A television's set with one category, on a root of its own: shapes of categories, their files as text, and one life
/// of the process.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <dataModule/FileDataSeparateManager.h>
#include <dataModule/fileOperator/AbstractFileOperator.h>

#include "DiskModel.h"
#include "fileOperator/CategoryLayout.h"

namespace td::test {

/// A kind of category that the tests go through.
struct Shape {
    const char* name;
    _DataCategory_t category;
    // What stands for the library's own under this category, if anything.
    const CategoryLayout& (*ownLayout)() = nullptr;
    AbstractFileOperator* (*makeOwn)() = nullptr;

    const CategoryLayout& layout() const;
    /// Whether all that a cut may leave can be tried.
    bool isSmall() const;
    /// Whether one load takes so long that only few can be tried.
    bool isLarge() const;
    /// Where its current, backup and factory copy stand in a tree.
    std::string current() const;
    std::string backup() const;
    std::string factory() const;
};

/// Small, wide columns, hexadecimal, without dimensions, written at once in bulk copies, stored in groups, 20 levels,
/// largest.
const std::vector<Shape>& shapes();

/// A root for settings files in memory, if the machine has such a place; the root prefix while it lives.
class MemoryRoot {
public:
    MemoryRoot();
    ~MemoryRoot();
    MemoryRoot(const MemoryRoot&) = delete;
    MemoryRoot& operator=(const MemoryRoot&) = delete;

    const std::string& path() const { return m_path; }
    Tree read() const { return readTree(m_path); }
    ContentPointer readFile(const std::string& path) const { return readFileIn(m_path, path); }
    void write(const Tree& tree) const { writeTree(m_path, tree); }

private:
    std::string m_path;
};

/// The directory of locks between processes: what is in it says nothing about settings.
constexpr const char* LOCK_DIRECTORY = "var/local/dataModule/lock";

/// Whether it is the path of a redo record.
bool isRedoRecord(const std::string& path);

/// Directories without files.
Tree emptyDirectories();
/// The contents of a complete file in which every record tells by its values from which series it is. One thread only.
const std::string& contentsOf(const CategoryLayout& layout, int series);
/// The checksum of contents, independent of the library's.
std::uint32_t checksumOf(const std::string& contents);
/// A file with these contents.
std::string fileOf(const CategoryLayout& layout, const std::string& contents);
/// The same of another version.
std::string fileOfVersion(const CategoryLayout& layout, const std::string& contents, const char* version);
/// The contents of a file, if it is one of this category and version whose checksum is right.
std::optional<std::string> verifiedContents(const CategoryLayout& layout, const ContentPointer& file);
/// The text of one record in contents.
std::string sectionIn(const CategoryLayout& layout, const std::string& contents, int record);
/// The text of one record with these values, by position.
std::string sectionOf(const CategoryLayout& layout, int record, const std::vector<int>& values);
/// The values of a record in a series.
std::vector<int> valuesOf(const CategoryLayout& layout, int series, int record);
/// The indices of a record.
std::vector<int> indicesOf(const CategoryLayout& layout, int record);

/// One life of a process with the one category.
class OneCategorySet final : public FileDataSeparateManager {
public:
    explicit OneCategorySet(const Shape& shape);
    ~OneCategorySet() override { stop(); }

    /// Starts and loads. Whether the category could be loaded.
    bool boot();
    /// As after unpacking or a factory reset: takes the factory's files, starts and loads.
    bool bootFromFactory();
    bool start() { return init(DS_SCOPE_ALL); }
    bool isLoaded();
    /// Stores the record's values in a series.
    bool storeRecord(int record, int series);
    /// Waits for stores and merges.
    bool settle();
    /// The values of a record in memory.
    std::vector<int> recordInMemory(int record);
    const CategoryLayout& layout() const;

protected:
    IFileOperator* makeOperator(_DataCategory_t category) override;

private:
    const Shape m_shape;
};

} // namespace td::test
