// Where the factory files are, and the files in use begun anew from them.
#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <cstdio>
#include <memory>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include <dirent.h>

#include <dataModule/common/CRC32Util.h>
#include <dataModule/common/FileUtil.h>
#include <dataModule/platform/ConfigReader.h>
#include <dataModule/platform/RootPrefix.h>

#include "common/FileLock.h"
#include "common/Log.h"
#include "common/NoCancel.h"
#include "common/SystemPaths.h"
#include "dataSeparate/Attempt.h"
#include "dataSeparate/ManagerState.h"
#include "fileOperator/file/RedoRecord.h"
#include "fileOperator/file/SummaryReader.h"
#include "fileOperator/OperatorFactory.h"

namespace td {

namespace {

/// Room that the factory directory leaves for a file name within the longest path.
constexpr std::size_t FILE_NAME_ROOM = 64;

/// Whether a path of the value leads to another level than its text says.
bool leadsUpwards(std::string_view value) {
    while (true) {
        const std::size_t end = value.find('/');
        if (value.substr(0, end) == "..")
            return true;
        if (end == std::string_view::npos)
            return false;
        value.remove_prefix(end + 1);
    }
}

/// The factory directory that the model index file names, with the name; false when there is none to use.
bool readFactoryDirectory(char (&model)[paths::PATH_SIZE], std::string& directory) {
    if (!ConfigReader::readString(underRootPrefix(paths::MODEL_INDEX_FILE).c_str(), "ModuleData", "Path", model,
                                  paths::PATH_SIZE))
        return false;
    if (model[0] == '\0' || leadsUpwards(model))
        return false;
    const int length = std::snprintf(nullptr, 0, paths::FACTORY_DIRECTORY_FORMAT, model);
    if (length < 0)
        return false;
    std::string path(static_cast<std::size_t>(length) + 1, '\0');
    std::snprintf(path.data(), path.size(), paths::FACTORY_DIRECTORY_FORMAT, model);
    directory = underRootPrefix(path.c_str());
    return directory.size() + FILE_NAME_ROOM <= static_cast<std::size_t>(paths::PATH_SIZE);
}

/// Keeps all other processes off all files.
class AllFilesLock {
public:
    AllFilesLock() {
        std::size_t next = 0;
        for (const CategoryLayout* layout : allLayouts())
            m_locks[next++].lock(paths::lockFile(layout->file), FileLock::Kind::Exclusive);
    }

private:
    FileLock m_locks[CATEGORY_COUNT];
};

/// The names in a directory but "." and ".."; false when it cannot be listed. (The standard's iterators end the program
/// when they run out of memory.)
bool listNames(const char* directory, std::vector<std::string>& names) {
    const std::unique_ptr<DIR, int (*)(DIR*)> listing(opendir(directory), &closedir);
    if (!listing)
        return false;
    errno = 0;
    while (const dirent* const entry = readdir(listing.get())) {
        if (!FileUtil::isSpecialDir(entry->d_name))
            names.emplace_back(entry->d_name);
        errno = 0;
    }
    return errno == 0;
}

/// Copies files from one directory to another, which is made, so that each is there as a whole or not at all, whatever
/// cuts this short, and on the disk when this returns true. Like FileUtil::copyDirFile it goes on after one that cannot
/// be copied.
bool copyWholeFiles(const std::string& from, const std::vector<std::string>& names, const std::string& to) {
    if (!FileUtil::checkPath(to.c_str(), true))
        return false;
    for (const std::string& name : names)
        FileUtil::replaceFile((from + name).c_str(), (to + name).c_str());
    return FileUtil::syncPath(to.c_str());
}

/// Takes the settings files that do not verify out of `names` of files in `directory`; they are the result.
std::set<std::string> takeOutDamaged(const std::string& directory, std::vector<std::string>& names) {
    std::set<std::string> damaged;
    CRC32Util::instance()->init_crc_table(); // init() may still be to come
    for (const CategoryLayout* layout : allLayouts()) {
        const auto name = std::find(names.begin(), names.end(), layout->file);
        if (name == names.end() || fileVerifies((directory + *name).c_str(), nullptr))
            continue;
        TD_WARNING(" file [%s%s] is damaged, the files in use stay as they are.\n", directory.c_str(), layout->file);
        damaged.insert(*name);
        names.erase(name);
    }
    return damaged;
}

/// Removes the directory's files but those of that name, and their redo records.
void removeFilesBut(const std::set<std::string>& kept, const std::string& directory) {
    std::vector<std::string> names;
    if (kept.empty()) {
        FileUtil::removeDirFile(directory.c_str());
        return;
    }
    static_cast<void>(listNames(directory.c_str(), names));
    for (const std::string& name : names) {
        const bool isKept = std::any_of(
            kept.begin(), kept.end(), [&](const std::string& file) { return name == file || name == redoPath(file); });
        if (!isKept)
            FileUtil::removeDirFile((directory + name).c_str());
    }
}

/// Nothing is removed when there is nothing to put in its place.
bool replaceByFactoryFiles(const char* factory) {
    std::vector<std::string> names;
    if (!listNames(factory, names))
        return false;
    const std::set<std::string> damaged = takeOutDamaged(factory, names);
    const std::string current = paths::currentDirectory();
    const std::string backup = paths::backupDirectory();
    const std::string parent = underRootPrefix(paths::DATA_DIRECTORY);
    const AllFilesLock lock;
    // The backups go first, on the disk too: whatever cuts this short, no old backup takes the place of a newer current
    // file.
    removeFilesBut(damaged, backup);
    static_cast<void>(FileUtil::syncPath(damaged.empty() ? parent.c_str() : backup.c_str()));
    removeFilesBut(damaged, current);
    return copyWholeFiles(factory, names, current) && copyWholeFiles(factory, names, backup) &&
           FileUtil::syncPath(parent.c_str());
}

} // namespace

bool FileDataSeparateManager::loadManufactoryPath() {
    if (m_state->isInherited())
        return false;
    const NoCancel noCancel;
    char model[paths::PATH_SIZE] = {};
    std::string directory;
    if (!attempt([&] { return readFactoryDirectory(model, directory); })) {
        TD_WARNING(" load manufactory path from entry index file failed , use the default path:[%s]. \n",
                   m_state->manufactoryPath);
        return false;
    }
    std::snprintf(m_state->manufactoryPath, sizeof m_state->manufactoryPath, "%s", directory.c_str());
    TD_INFO(" load configuration manufactory path [%s] from entry index file successfully ,"
            "and the full path is:[%s].\n",
            model, m_state->manufactoryPath);
    return true;
}

bool FileDataSeparateManager::initCurrentFromManufactory() {
    if (m_state->isInherited())
        return false;
    const NoCancel noCancel;
    TD_INFO(" init 'current' data files from 'manufactory' -- [%s] ...\n", m_state->manufactoryPath);
    // What was stored before the reset does not come after it.
    m_state->settleStores();
    if (!attempt([this] { return replaceByFactoryFiles(m_state->manufactoryPath); })) {
        TD_ERROR(" init current dataModule files from manufactory path [%s] failed.\n", m_state->manufactoryPath);
        return false;
    }
    m_state->dropStores();
    TD_INFO(" init 'current' dataModule files from manufactory path [%s] successfully.\n", m_state->manufactoryPath);
    return true;
}

} // namespace td
