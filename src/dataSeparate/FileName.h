/// An operator's file in log lines.
#pragma once

#include <cstdio>
#include <cstring>

#include <dataModule/IFileOperator.h>

#include "common/SystemPaths.h"

namespace td {

/// Gives a critical section back at the end of a block.
class EnteredSection {
public:
    explicit EnteredSection(IFileOperator& op) : m_operator(op) {}
    ~EnteredSection() { m_operator.leaveCriticalSection(); }
    EnteredSection(const EnteredSection&) = delete;
    EnteredSection& operator=(const EnteredSection&) = delete;

private:
    IFileOperator& m_operator;
};

/// The file name at the end of the operator's path.
inline const char* baseName(IFileOperator& op) {
    const char* const path = op.getFileFullPath();
    if (path == nullptr)
        return "";
    const char* const slash = std::strrchr(path, '/');
    return slash == nullptr ? path : slash + 1;
}

/// A copy of the file name, for log lines.
struct FileName {
    explicit FileName(IFileOperator& op) { std::snprintf(text, sizeof text, "%s", baseName(op)); }
    char text[paths::PATH_SIZE] = {};
};

} // namespace td
