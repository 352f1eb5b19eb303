/// One use of the library on one root: the manager from its start to its release, its log on standard error, and the
/// places of the copies. One session at a time.
#pragma once

#include <initializer_list>
#include <string>
#include <vector>

#include <dataModule/FileDataSeparateManager.h>

#include "fileOperator/CategoryLayout.h"
#include "verbs/Verb.h"

namespace td::dmctl {

/// The copies of a category's file, in the order of the library's load modes.
enum class Copy { Current, Backup, Factory };
constexpr Copy COPIES[] = {Copy::Current, Copy::Backup, Copy::Factory};
const char* copyName(Copy copy);

class Session {
public:
    enum class Root { HasToExist, IsMade };

    /// Takes the root of the options. Throws when it is missing, no directory or too long, and RootInUse when a verb
    /// that writes meets a running process of the library and is not forced.
    explicit Session(const Options& options, Root root = Root::HasToExist);
    ~Session();
    Session(const Session&) = delete;
    Session& operator=(const Session&) = delete;

    FileDataSeparateManager& manager() { return *m_manager; }
    /// Registers the categories and starts the worker.
    void start();
    /// Loads one category, which may repair or update its files as any start of a television does. A current copy of
    /// another version has been rewritten on return.
    void load(const CategoryLayout& layout);
    /// Whether the current copy is as the library writes it. Loading does not notice everything: a loaded category may
    /// lack sections or have them out of order.
    bool currentIsSound(const CategoryLayout& layout) const;
    /// Lets what is still being written reach the disk, then releases the manager. No other call may follow but those
    /// below.
    void close();

    /// The directory of a copy, ending in '/'.
    const std::string& directory(Copy copy) const;
    /// Makes those directories that are missing, and returns them. Throws Failure when one cannot be made.
    std::vector<std::string> makeDirectories(std::initializer_list<Copy> copies) const;
    std::string path(const CategoryLayout& layout, Copy copy) const;
    /// Whether anything stands there.
    bool exists(const CategoryLayout& layout, Copy copy) const;
    /// The root for messages: the option that names it, with a blank behind it, or nothing.
    const std::string& rootOption() const { return m_rootOption; }
    /// States the television's type as the copies of this category do, if no load has done so before. A television
    /// states its type before it loads; here the files have to tell it, or a rewritten one would lose it.
    void adoptTvType(const CategoryLayout& layout);
    /// SN of the newest copy that has one: what a new copy has to state.
    std::string tvTypeOf(const CategoryLayout& layout) const;

private:
    std::string m_rootOption;
    FileDataSeparateManager* m_manager = nullptr;
    std::string m_directories[3];
    bool m_tvTypeKnown = false;
};

/// Reads a whole file, and keeps writers of a settings file of that name away meanwhile. False, with the reason in
/// words, when that cannot be done.
bool readFile(const std::string& path, std::string& bytes, std::string& reason);
/// The same for who has the lock of a settings file already.
bool readUnlocked(const std::string& path, std::string& bytes, std::string& reason);
/// The same for what a user names, which may be a pipe and take its time.
bool readAny(const std::string& path, std::string& bytes, std::string& reason);
/// What stands in place of a file and will never be read as one; empty when it is a file, or nothing.
std::string strayText(const std::string& path);

/// Named values of the given records, read from the loaded table; one row of fieldCount() per record, in the order of
/// the layout's fields.
std::vector<std::vector<int>> readRecords(Session& session, const CategoryLayout& layout,
                                          const std::vector<std::vector<int>>& records);

} // namespace td::dmctl
