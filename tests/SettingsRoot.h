/// A television's directories for one test: a root of its own with the three directories of settings files, and the
/// means to damage the files in them. Checksums are computed here, independently of the library.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <stdexcept>
#include <string>
#include <vector>

#include <dataModule/common/CRC32Util.h>
#include <dataModule/FileDataSeparateManager.h>
#include <dataModule/IFileOperator.h>
#include <dataModule/platform/RootPrefix.h>

#include "common/SystemPaths.h"
#include "TemporaryDirectory.h"

namespace td::test {

enum class Copy { Current, Backup, Factory };

/// The checksum of a content block, bit by bit.
inline std::uint32_t checksum(const std::string& content) {
    std::uint32_t crc = 0xFFFFFFFFU;
    for (const char c : content) {
        crc ^= static_cast<unsigned char>(c);
        for (int bit = 0; bit < 8; ++bit)
            crc = (crc >> 1) ^ ((crc & 1U) != 0 ? 0xEDB88320U : 0U);
    }
    return crc;
}

/// Offset of the line that starts with `start`; throws when there is none.
inline std::size_t lineAt(const std::string& text, const std::string& start) {
    const std::size_t found = text.find("\n" + start);
    if (found == std::string::npos)
        throw std::runtime_error("no line " + start);
    return found + 1;
}

/// Offset of the first byte after the checksum line.
inline std::size_t contentAt(const std::string& text) {
    return text.find('\n', lineAt(text, "CRC ")) + 1;
}

/// The file text with the checksum line that its contents ask for.
inline std::string withChecksum(std::string text) {
    char digits[16];
    std::snprintf(digits, sizeof digits, "%08x", checksum(text.substr(contentAt(text))));
    return text.replace(text.find("0x", lineAt(text, "CRC ")) + 2, 8, digits);
}

/// Whether the checksum line states the checksum of the contents.
inline bool checksumIsRight(const std::string& text) {
    return withChecksum(text) == text;
}

/// `text` with the first `from` at or after `start` replaced; throws when there is none.
inline std::string replaced(std::string text, const std::string& from, const std::string& to, std::size_t start = 0) {
    const std::size_t found = text.find(from, start);
    if (found == std::string::npos)
        throw std::runtime_error("no text " + from);
    return text.replace(found, from.size(), to);
}

/// A key line of the standard form.
inline std::string keyLine(const std::string& key, const std::string& value) {
    return key + std::string(24 - key.size(), ' ') + " = " + value + "\n";
}

/// The file text with another value for the first `key` in the section with header line `header`.
inline std::string withValue(std::string text, const std::string& header, const std::string& key, int value) {
    const std::size_t line = text.find(key + " ", lineAt(text, header));
    char digits[16];
    std::snprintf(digits, sizeof digits, "%04d", value);
    return text.replace(text.find("= ", line) + 2, 4, digits);
}

class SettingsRoot {
public:
    SettingsRoot() {
        if (!setRootPrefix(m_directory.string().c_str()))
            throw std::runtime_error("the root prefix is held or too long");
        for (const Copy copy : {Copy::Current, Copy::Backup, Copy::Factory})
            std::filesystem::create_directories(directory(copy));
        CRC32Util::instance()->init_crc_table();
        FileDataSeparateManager::setListening(false);
    }
    ~SettingsRoot() { setRootPrefix(""); }
    SettingsRoot(const SettingsRoot&) = delete;
    SettingsRoot& operator=(const SettingsRoot&) = delete;

    static std::string directory(Copy copy) {
        switch (copy) {
        case Copy::Current:
            return paths::currentDirectory();
        case Copy::Backup:
            return paths::backupDirectory();
        case Copy::Factory:
            break;
        }
        return paths::defaultFactoryDirectory();
    }
    static std::string path(Copy copy, const std::string& file) { return directory(copy) + file; }

    std::string read(Copy copy, const std::string& file) const { return m_directory.read(inRoot(copy, file)); }
    /// Always makes a new file: an operator that has the old one open must notice.
    void write(Copy copy, const std::string& file, const std::string& text) const {
        remove(copy, file);
        m_directory.write(inRoot(copy, file), text);
    }
    bool exists(Copy copy, const std::string& file) const { return m_directory.exists(inRoot(copy, file)); }
    void remove(Copy copy, const std::string& file) const { std::filesystem::remove(path(copy, file)); }
    /// Every file below the root but lock files and redo records, relative to it and sorted.
    std::vector<std::string> files() const {
        std::vector<std::string> found;
        for (const auto& entry : std::filesystem::recursive_directory_iterator(m_directory.path())) {
            if (entry.is_regular_file() && entry.path().extension() != ".lock" && entry.path().extension() != ".redo")
                found.push_back(entry.path().lexically_relative(m_directory.path()).string());
        }
        std::sort(found.begin(), found.end());
        return found;
    }

private:
    std::string inRoot(Copy copy, const std::string& file) const {
        return path(copy, file).substr(m_directory.string().size());
    }

    TemporaryDirectory m_directory;
};

/// One value of a record in memory; -12345 when it cannot be read.
inline int valueOf(IFileOperator& op, const std::vector<int>& dims, const char* name) {
    std::vector<_Argument_t> args{{name, -12345}};
    return op.loadData(dims, args) ? args.front().value : -12345;
}

/// Stores one value.
inline bool storeValue(IFileOperator& op, const std::vector<int>& dims, const char* name, int value) {
    return op.storeData(dims, {{name, value}});
}

} // namespace td::test
