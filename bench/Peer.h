/// What the library is measured beside: other ways to keep the same values, each used as its own documentation
/// recommends.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "Values.h"

namespace bench {

/// One record to be stored: of which table, and its new values.
struct Change {
    int table;  ///< position in the tables
    int record; ///< number of the record
    const int* values;
    int fieldCount; ///< only this many, the layout's first ones, differ from what is stored
};

class Peer {
public:
    Peer() = default;
    virtual ~Peer() = default;
    Peer(const Peer&) = delete;
    Peer& operator=(const Peer&) = delete;

    /// Makes the peer's files, on disk when it returns. Nothing to do for those that read the settings files.
    virtual void create() {}
    /// Opens and reads every value into what the peer offers for it: rows for a database, its own structure for a
    /// parser of files. Leaves it open.
    virtual void load() = 0;
    /// The values that load() read, added up.
    virtual std::int64_t sum() = 0;
    /// Makes ready for the requests below.
    virtual void open() = 0;

    /// One field, by the name of its record and its own.
    virtual int readField(int table, const int* indices, const td::Field& field) = 0;
    /// A whole record, in the order of the fields.
    virtual void readRecord(int table, const int* indices, int* values) = 0;
    /// Whether several threads may read at once.
    virtual bool readsInParallel() const { return false; }

    /// Stores the changes, on disk when it returns.
    virtual void store(const std::vector<Change>& changes) = 0;
    /// Whether store() is offered.
    virtual bool stores() const { return true; }
};

/// Names of the peers, in the order of the table.
const std::vector<std::string>& peerNames();
/// A peer that keeps the tables in `directory`, or reads the settings files in `settings`.
std::unique_ptr<Peer> makePeer(const std::string& name, const std::string& directory, const std::string& settings,
                               const std::vector<Table>& tables);

// Each in a file of its own.
std::unique_ptr<Peer> makeSqlite(const std::string& directory, const std::vector<Table>& tables);
std::unique_ptr<Peer> makeLmdb(const std::string& directory, const std::vector<Table>& tables);
std::unique_ptr<Peer> makeLevelDb(const std::string& directory, const std::vector<Table>& tables);
std::unique_ptr<Peer> makeGKeyFile(const std::string& settings, const std::vector<Table>& tables);
std::unique_ptr<Peer> makePropertyTree(const std::string& settings, const std::vector<Table>& tables);
std::unique_ptr<Peer> makeInih(const std::string& settings, const std::vector<Table>& tables);

/// Section of a record in a settings file, without brackets.
inline std::string sectionOf(const td::CategoryLayout& layout, const int* indices) {
    if (layout.dimensions.empty())
        return td::GLOBAL_SECTION;
    std::string section;
    for (int d = 0; d < layout.dimensionCount(); ++d)
        section += static_cast<char>(indices[d] < 10 ? '0' + indices[d] : 'a' + (indices[d] - 10));
    return section;
}

} // namespace bench
