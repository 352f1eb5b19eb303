/// File descriptors: the guard that closes one, and the steps on open files that several classes share.
#pragma once

#include <cstddef>

#include <sys/stat.h>

namespace td {

/// Closes what it holds at the end of the block.
class Descriptor {
public:
    explicit Descriptor(int value) : m_value(value) {}
    ~Descriptor(); ///< leaves errno to what failed before
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;

    bool isOpen() const { return m_value >= 0; }
    int get() const { return m_value; }

private:
    const int m_value;
};

/// For openAtOnce().
bool isRegular(const struct stat& status);
bool isRegularOrDevice(const struct stat& status);

/// Opens what passes `isWanted`, or -1. Never waits, as it would for the other end of a FIFO.
int openAtOnce(const char* path, int flags, bool (*isWanted)(const struct stat&));
/// The directory that holds `path`.
Descriptor openParent(const char* path);
/// A file system that answers EINVAL keeps its directories without being asked.
bool syncDirectory(const Descriptor& directory);

bool isSameFile(const struct stat& one, const struct stat& other);
/// Gives an open file the mode and owner of the file at `replaced`, if there is one.
bool giveModeAndOwnerOf(const char* replaced, int descriptor);

/// Writes all of it.
bool writeBlock(int target, const char* block, std::size_t size);
/// To the end of the source, or to the first failure.
void copyBytes(int source, int target);

} // namespace td
