/// From an input of the fuzzer to the file of a category. Two bytes steer, the rest are bytes of the file or of a part
/// of it, so that no input is wasted on what another one has shown.
#pragma once

#include <string>
#include <string_view>

#include "fileOperator/CategoryLayout.h"

namespace td::fuzz {

struct SettingsFileInput {
    /// Bits of the second byte.
    enum Steering : unsigned char {
        FRAMED = 0x01,    ///< the bytes are sections; comment block and summary are put before them
        MENDED = 0x02,    ///< the checksum line, if there is one, is made right
        OLD = 0x04,       ///< of a framed or patched one: another version, so that it is merged by key
        PATCHED = 0x08,   ///< a file of defaults, in which the bytes are edits: offset (2), length (1), new bytes
        BACKED_UP = 0x10, ///< a good backup stands beside it
        DETAILED = 0x20,  ///< every record that is read is logged
        AT_FACTORY = 0x40 ///< the set is in the factory's hands: white balance is read whole
    };

    explicit SettingsFileInput(std::string_view input);

    const CategoryLayout* layout = nullptr; ///< null: the input is too short
    std::string file;
    bool hasBackup = false;
    bool isDetailed = false;
    bool isAtFactory = false;
};

/// Whether a file of the category is small enough to be written whole for an input.
bool isSmall(const CategoryLayout& layout);
/// The bytes with the checksum that their contents ask for, if they have a checksum line of the usual length.
std::string withChecksumMended(const CategoryLayout& layout, std::string bytes);
/// A file with the defaults of the category; made once.
const std::string& defaultFile(const CategoryLayout& layout);

} // namespace td::fuzz
