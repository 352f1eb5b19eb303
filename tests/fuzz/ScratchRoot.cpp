#include "ScratchRoot.h"

#include <stdexcept>

#include <dirent.h>
#include <fcntl.h>
#include <unistd.h>

#include <dataModule/common/CRC32Util.h>
#include <dataModule/platform/RootPrefix.h>

#include "common/SystemPaths.h"

namespace td::fuzz {

namespace {

constexpr ScratchRoot::Folder FOLDERS[] = {ScratchRoot::Folder::Current, ScratchRoot::Folder::Backup,
                                           ScratchRoot::Folder::Factory};

/// Where the platform's port for a plain Linux keeps its fields.
constexpr const char* FLASH_DIRECTORY = "/var/local/flash/";

/// Making a directory for each input would take longer than most inputs.
const test::TemporaryDirectory& directory() {
    static const test::TemporaryDirectory all;
    return all;
}

std::string folderPath(ScratchRoot::Folder folder) {
    switch (folder) {
    case ScratchRoot::Folder::Current:
        return paths::currentDirectory();
    case ScratchRoot::Folder::Backup:
        return paths::backupDirectory();
    case ScratchRoot::Folder::Factory:
        break;
    }
    return paths::defaultFactoryDirectory();
}

void removeFiles(const std::string& folder) {
    DIR* const listing = opendir(folder.c_str());
    if (listing == nullptr)
        throw std::runtime_error("cannot list " + folder);
    while (const dirent* entry = readdir(listing)) {
        const std::string name = entry->d_name;
        if (name != "." && name != "..")
            unlink((folder + name).c_str());
    }
    closedir(listing);
}

void writeFile(const std::string& path, std::string_view bytes) {
    const int descriptor = open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
    const bool written =
        descriptor >= 0 && write(descriptor, bytes.data(), bytes.size()) == static_cast<ssize_t>(bytes.size());
    if (descriptor >= 0)
        close(descriptor);
    if (!written)
        throw std::runtime_error("cannot write " + path);
}

} // namespace

ScratchRoot::ScratchRoot() {
    if (!setRootPrefix(directory().string().c_str()))
        throw std::runtime_error("the root prefix is held or too long");
    CRC32Util::instance()->init_crc_table();
    static bool made = false;
    for (const Folder folder : FOLDERS) {
        if (!made)
            std::filesystem::create_directories(folderPath(folder));
    }
    made = true;
    empty();
}

ScratchRoot::~ScratchRoot() {
    empty();
    setRootPrefix("");
}

void ScratchRoot::empty() const {
    for (const Folder folder : FOLDERS)
        removeFiles(folderPath(folder));
}

std::string ScratchRoot::path(Folder folder, const std::string& file) {
    return folderPath(folder) + file;
}

void ScratchRoot::write(Folder folder, const std::string& file, std::string_view bytes) const {
    writeFile(path(folder, file), bytes);
}

std::string ScratchRoot::read(Folder folder, const std::string& file) const {
    const std::string source = path(folder, file);
    const int descriptor = open(source.c_str(), O_RDONLY | O_CLOEXEC);
    if (descriptor < 0)
        throw std::runtime_error("cannot read " + source);
    std::string bytes;
    char block[65536];
    ssize_t count = 0;
    while ((count = ::read(descriptor, block, sizeof block)) > 0)
        bytes.append(block, static_cast<std::size_t>(count));
    close(descriptor);
    return bytes;
}

void ScratchRoot::setAtFactory(bool atFactory) const {
    static bool written = false;
    const std::string path = underRootPrefix(FLASH_DIRECTORY);
    if (!written)
        std::filesystem::create_directories(path);
    written = true;
    writeFile(path + "factory_mode", atFactory ? "On" : "Off");
}

} // namespace td::fuzz
