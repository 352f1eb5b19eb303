/// The library itself, as a client uses it: one television at a time.
#pragma once

#include <string>
#include <vector>

#include <dataModule/FileDataSeparateManager.h>

#include "Peer.h"

namespace bench {

/// Throws, with `what` it was that the library refused.
void check(bool done, const char* what);

class Library {
public:
    /// Initialises the manager for the television under `root`; in factory state, so that all calibration is in memory,
    /// if asked to.
    Library(const std::string& root, bool factoryState);
    ~Library();
    Library(const Library&) = delete;
    Library& operator=(const Library&) = delete;

    td::FileDataSeparateManager& manager() { return *m_manager; }
    /// Every value that the library answers, added up.
    std::int64_t sum(const std::vector<Table>& tables);
    /// Queues a store.
    void store(td::_DataCategory_t category, const std::vector<int>& dims, const std::vector<td::_Argument_t>& args);
    /// Until everything stored is on disk.
    void waitStored();

private:
    td::FileDataSeparateManager* m_manager;
};

std::vector<int> dimensionsOf(const td::CategoryLayout& layout, int record);

} // namespace bench
