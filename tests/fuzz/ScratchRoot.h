/// A television's directories for one input: all inputs use the same ones, and each finds them empty.
#pragma once

#include <string>
#include <string_view>

#include "TemporaryDirectory.h"

namespace td::fuzz {

class ScratchRoot {
public:
    enum class Folder { Current, Backup, Factory };

    /// Empties the folders. While one exists there must be no other, and no other root prefix.
    ScratchRoot();
    ~ScratchRoot();
    ScratchRoot(const ScratchRoot&) = delete;
    ScratchRoot& operator=(const ScratchRoot&) = delete;

    static std::string path(Folder folder, const std::string& file);
    void write(Folder folder, const std::string& file, std::string_view bytes) const;
    /// Throws when there is none.
    std::string read(Folder folder, const std::string& file) const;
    /// Whether the set is in the factory's hands.
    void setAtFactory(bool atFactory) const;

private:
    void empty() const;
};

} // namespace td::fuzz
